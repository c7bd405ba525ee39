#pragma once

#include "simulator/host/session/dialog_page.h"

#include <functional>
#include <vector>

namespace pictara {
/// What a row says that takes a picture under a light of its own.
struct CaptureRow {
    char const* name; ///< its button's object name
    QString button;   ///< its text
    double kelvin;    ///< colour temperature that the row is for; 0 when it tells none
    QString status;
};

/// In the order in which the page takes them; empty on a page that calibrates under one light.
[[nodiscard]] std::vector<CaptureRow> captureRows(DialogPage const& page);

/// Does as a person what a row that waits asks for: brings its light before the camera and presses its
/// button. A light is not changed while another row still takes its picture.
void serveCaptureRows(DialogPage& page, std::function<void(CaptureRow const&)> const& bringLight);
} // namespace pictara
