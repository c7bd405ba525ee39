#pragma once

#include "calibration/calibration_flow.h"

/// What only the lens-shading page does: it solves from one frame inside the frame handler, and loads the
/// solution at the next tick.
class LensAssistFlow : public CalibrationFlow {
public:
    LensAssistFlow(SensorRecord const& sensor, HostServices const& services, EepromSlot& eepromSlot);

protected:
    [[nodiscard]] QString eepromLabel() const override;
    [[nodiscard]] ShadingHandle createCalibration() override;
    void calibrationTick() override;
    void captureFrame(Frame const& frame) override;
    [[nodiscard]] int skippedRows() const override;
    [[nodiscard]] int32_t storeInEeprom(HeadboardEeprom const& eeprom, QByteArray const& label) override;

private:
    void loadWhenSolved();
    void solve(Frame const& frame);
    [[nodiscard]] bool isCalibrationInput(Frame const& frame) const;

    bool m_solving = false; // a frame that arrives inside a library call must not start another
};
