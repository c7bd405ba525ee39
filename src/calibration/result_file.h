#pragma once

#include "calibration/page_core.h"

/// Tests whether the directory for results files exists, when that is not known: `fileState` becomes ready or
/// failed.
void checkSaveDirectory(PageCore& core);

/// What a page wants of its results file.
struct ResultFile {
    uint32_t format = 0;         ///< one of the library's
    bool sanitisesNames = false; ///< of the sensor, in the file's name; else they are taken byte for byte
};

/// Writes the calibration's results file through the library. Does nothing without a calibration or after a
/// failed one.
void saveResultFile(PageCore& core, ResultFile const& file);

/// A label with the characters replaced that a file name cannot bear.
[[nodiscard]] QByteArray sanitisedLabel(QByteArray label);
