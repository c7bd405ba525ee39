#pragma once

#include <span>

class CalibrationPage;

/// Tells the calibration pages, absent ones being null, that the headboard's serial number is another one,
/// entered by the user or filled in. An empty one refuses the results file of every page. Any other opens the
/// file step of every page again, whatever became of it; only when all of them are ready they stay so.
void tellSerialNumberEdited(std::span<CalibrationPage* const> pages, bool isEmpty);
