#include "simulator/host/run/capture_rows.h"

#include <algorithm>

namespace pictara {
namespace {
struct RowWidgets {
    char const* button;
    char const* temperature;
    char const* status;
};

constexpr RowWidgets kRows[] = {
    {"Incandescent_Image", "Incandescent_Temp", "Incandescent_Status"},
    {"Fluorescent_Image", "Fluorescent_Temp", "Fluorescent_Status"},
    {"Daylight_Image", "Daylight_Temp", "Daylight_Status"},
};

bool isWaiting(CaptureRow const& row) { return row.status.startsWith(QLatin1String("Waiting")); }
bool isCapturing(CaptureRow const& row) { return row.status.startsWith(QLatin1String("In progress")); }
} // namespace

std::vector<CaptureRow> captureRows(DialogPage const& page) {
    std::vector<CaptureRow> rows;
    for (RowWidgets const& widgets : kRows)
        if (QString const button = page.text(widgets.button); !button.isEmpty())
            rows.push_back({.name = widgets.button,
                            .button = button,
                            .kelvin = page.text(widgets.temperature).toDouble(),
                            .status = page.text(widgets.status).trimmed()});
    return rows;
}

void serveCaptureRows(DialogPage& page, std::function<void(CaptureRow const&)> const& bringLight) {
    std::vector<CaptureRow> const rows = captureRows(page);
    auto const waiting = std::find_if(rows.begin(), rows.end(), isWaiting);
    if (waiting == rows.end() || std::any_of(rows.begin(), rows.end(), isCapturing) ||
        !page.isEnabled(waiting->name))
        return;
    bringLight(*waiting);
    page.press(waiting->name);
}
} // namespace pictara
