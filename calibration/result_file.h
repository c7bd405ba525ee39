#pragma once

#include "calibration/page_core.h"

/// Tests whether the directory for results files exists, when that is not known: `fileState` becomes ready or
/// failed.
void checkSaveDirectory(PageCore& core);

/// Writes the calibration's results file through the library, in its file format `format`. Does nothing
/// without a calibration or after a failed one.
void saveResultFile(PageCore& core, uint32_t format);

/// A label with the characters replaced that a file name cannot bear.
[[nodiscard]] QByteArray sanitisedLabel(QByteArray label);
