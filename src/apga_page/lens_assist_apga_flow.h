#pragma once

#include "apga_page/capture_rows.h"
#include "apga_page/illuminant_solution.h"
#include "calibration/calibration_flow.h"

/// What only the three-illuminant page does: it captures one frame under each light, solves from all three
/// at a tick, and keeps the white balance of the three lights in the EEPROM.
class LensAssistApgaFlow : public CalibrationFlow {
public:
    LensAssistApgaFlow(SensorRecord const& sensor, HostServices const& services, EepromSlot& eepromSlot);

    void setMode(PgaMode mode) { m_mode = mode; }
    [[nodiscard]] CaptureDisplay& captureDisplay() { return m_display; }
    [[nodiscard]] CapturedFrames const& captured() const { return m_captured; }

    /// The button of a row. Under a light that the user has changed during Run All, exposure and colour
    /// balance are done again before the frame is taken.
    void captureImage(Illuminant illuminant);

protected:
    [[nodiscard]] QString eepromLabel() const override;
    void dropInputs() override;
    void makeInputsReady() override;
    [[nodiscard]] bool takeInputs() override;
    void loadOwnSettings() override;
    void storeOwnSettings() override;
    [[nodiscard]] ShadingHandle createCalibration() override;
    void calibrationTick() override;
    [[nodiscard]] bool passesOverFailure() const override { return true; }
    void showLoaded() override;
    void captureFrame(Frame const& frame) override;
    [[nodiscard]] int skippedRows() const override;
    [[nodiscard]] ResultFile resultFile() const override;
    [[nodiscard]] int32_t storeInEeprom(HeadboardEeprom const& eeprom, QByteArray const& label) override;

private:
    void takeFrame(Frame const& frame);
    void solve();
    void loadWhenSolved();
    void showStatus();
    void arm(CaptureRow& row);

    PgaMode m_mode;
    CapturedFrames m_captured;
    CaptureDisplay m_display;
};
