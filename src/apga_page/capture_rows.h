#pragma once

#include "calibration/page_core.h"
#include "pictures/frame.h"

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace kestra {

/// The three illuminants of a calibration, in the order in which everything here has them: also the sensor's
/// left, middle and right.
enum Illuminant : size_t { kIncandescent, kFluorescent, kDaylight, kIlluminants };

/// State of a capture row.
enum CaptureState : uint32_t {
    kNotCaptured = 0,
    kArmed = 1,
    kWaiting = 2, ///< for the user, who changes the light and presses the row's button
    kCapturing = 3,
    kCaptured = 4,
    kIncompatibleSize = 5,
    kCaptureFailed = 6,
};

/// Samples of a captured frame, rows from the top. Shared, so that a reset inside a library call takes no
/// frame from under it.
using CapturedSamples = std::shared_ptr<std::vector<uint16_t> const>;

struct CaptureRow {
    CaptureState state = kNotCaptured;
    int32_t progress = 0; ///< 0 to 100
    CapturedSamples samples;
    int32_t width = 0;   ///< pixels of the captured frame
    int32_t height = 0;  ///< rows of the captured frame
    double redGain = 0;  ///< the host's relative gain at the last capture that recorded it; 0: none did
    double blueGain = 0; ///< the same for blue
};

/// The frames that a calibration is made from, one an illuminant. They share one buffer size.
class CapturedFrames {
public:
    [[nodiscard]] CaptureRow& operator[](size_t illuminant) { return m_rows[illuminant]; }
    [[nodiscard]] CaptureRow const& operator[](size_t illuminant) const { return m_rows[illuminant]; }
    [[nodiscard]] auto begin() const { return m_rows.begin(); }
    [[nodiscard]] auto end() const { return m_rows.end(); }

    /// The first row that is capturing; null when there is none.
    [[nodiscard]] CaptureRow* capturing();
    /// Whether all rows hold a frame; their states do not matter.
    [[nodiscard]] bool haveAllFrames() const;

    /// Copies a frame into a row, which is then captured. A frame larger than those before drops all three
    /// first; the rows keep their states. A null frame or one without bytes changes nothing. `imagePixels` is
    /// the sensor's image size: a buffer never holds less, and is zero where the frame has nothing.
    void capture(CaptureRow& row, Frame const& frame, size_t imagePixels);

    /// Drops all frames, gains and states.
    void reset() { *this = {}; }

private:
    std::array<CaptureRow, kIlluminants> m_rows;
    int64_t m_frameBytes = 0; // height x pitch of the largest frame so far
};

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

} // namespace kestra
