#pragma once

#include <span>

class CalibrationPage;

/// Tells the calibration pages, absent ones being null, that the user edited the headboard's serial number.
/// Without a number no results file can be saved; with another one what was saved or refused is open again. A
/// file step that is ready already stays so as long as every page's is.
void tellSerialNumberEdited(std::span<CalibrationPage* const> pages, bool isEmpty);
