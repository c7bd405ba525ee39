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

/// The rows of a page that takes a picture under each of several lights, as a person reads and serves them.
class CaptureRows {
public:
    explicit CaptureRows(DialogPage const& page) : m_page(page) {}

    /// In the order in which the page takes them; empty on a page that calibrates under one light.
    [[nodiscard]] std::vector<CaptureRow> read() const;

    /// Does what a row that waits asks for: brings its light before the camera and presses its button. A
    /// light is not changed while another row still takes its picture.
    void serve(std::function<void(CaptureRow const&)> const& bringLight);

private:
    DialogPage m_page;
};
} // namespace pictara
