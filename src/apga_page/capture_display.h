#pragma once

#include "apga_page/captured_frames.h"
#include "calibration/page_core.h"

/// The widgets of the three capture rows; guarded and borrowed, like `PageWidgets`.
class CaptureDisplay {
public:
    template <typename Form>
    void bind(Form const& form) {
        m_rows = {
            Row{form.Incandescent_Image,
                form.Incandescent_Temp,
                form.Incandescent_Status,
                form.Incandescent_Bullet,
                {}},
            Row{form.Fluorescent_Image,
                form.Fluorescent_Temp,
                form.Fluorescent_Status,
                form.Fluorescent_Bullet,
                {}},
            Row{form.Daylight_Image, form.Daylight_Temp, form.Daylight_Status, form.Daylight_Bullet, {}}};
    }

    /// Shows each row's status; the bullet of a waiting row is left to `blink`.
    void show(CapturedFrames const& captured, Wizard const* wizard);
    /// The capture buttons accept input while no step adjusts the picture, also during Run All.
    void enable(PageState const& state);
    /// Shows the other one of a waiting row's two bullets.
    void blink(size_t illuminant, Wizard const* wizard);

    /// The colour temperature that a row's text begins with, kelvin, with its fraction; 0 without a number.
    [[nodiscard]] double temperature(size_t illuminant) const;
    void showTemperature(size_t illuminant, int32_t kelvin);

private:
    struct Row {
        QPointer<QPushButton> button;
        QPointer<QLineEdit> temperature;
        QPointer<QLabel> status;
        QPointer<QLabel> bullet;
        std::optional<Bullet> shownBullet;
    };
    static void showBullet(Row& row, Bullet bullet, Wizard const* wizard);

    std::array<Row, kIlluminants> m_rows;
    uint32_t m_blinks = 0; // the lowest bit tells which bullet a waiting row shows
};
