#include "calibration/serial_number_edits.h"

#include "calibration/calibration_page.h"

#include <algorithm>

void tellSerialNumberEdited(std::span<CalibrationPage* const> pages, bool isEmpty) {
    bool const allReady = std::ranges::all_of(
        pages, [](CalibrationPage const* page) { return !page || page->state().fileState == kReady; });
    if (!isEmpty && allReady)
        return;
    for (CalibrationPage* const page : pages)
        if (page)
            page->setFileState(isEmpty ? kFailed : kNotEvaluated);
}
