#include "simulator/host/session/frame_delivery.h"

#include "simulator/boundary/boundary.h"
#include "simulator/host/session/exposure_loop.h"

#include <QtDebug>
#include <algorithm>

namespace pictara {
namespace {
// Gains in thousandths, "Saturation" in tenths, "Gamma" and "Contrast" in twentieths, "Black Correct" in
// thousandths of full scale.
ColourSettings colourSettings(StateVariables const& states) {
    auto const share = [&](char const* name, double unit, double low, double high) {
        return std::clamp(states.read(name) / unit, low, high);
    };
    return {.redGain = share("Relative Red Gain", 1000, 0, 64),
            .blueGain = share("Relative Blue Gain", 1000, 0, 64),
            .colourCorrection = states.read("Color Correction") == 1,
            .saturation = share("Saturation", 10, 0, 10),
            .displayExponent = share("Gamma", 20, 0.05, 5),
            .contrast = share("Contrast", 20, 0, 10),
            .blackLift = share("Black Correct", 1000, 0, 0.5)};
}

constexpr char kExposureRegister[] = "COARSE_INTEGRATION_TIME";
} // namespace

FrameDelivery::FrameDelivery(simulator::SimulatedCamera& camera, StateVariables const& states,
                             SensorRegisters& registers, PluginLibrary const& plugin)
    : m_camera(camera), m_states(states), m_registers(registers), m_plugin(plugin),
      m_pipeline(camera.description()) {}

void FrameDelivery::deliverNext() {
    m_frame = m_camera.grab();
    ++m_frameNumber;
    Boundary::instance().doing({"frame", QString::number(m_frameNumber)});
    if (m_states.read("Auto Exposure") == 1)
        stepExposure();
    if (!m_camera.description().calibratesFromRgb)
        m_plugin.imageData(m_frame.pixels.constData(), uint32_t(m_frame.type), m_frame.width, m_frame.height,
                           m_frame.pitch);
    m_settings = colourSettings(m_states);
    m_pipeline.render(m_frame, m_settings, m_picture);
    if (!m_picture.isNull())
        m_plugin.rgbImageData(m_picture.bits(), uint32_t(simulator::FrameType::Rgb32),
                              uint32_t(m_picture.width()), uint32_t(m_picture.height()),
                              m_picture.bytesPerLine());
}

QImage FrameDelivery::unmarkedPicture() {
    QImage picture;
    m_pipeline.render(m_frame, m_settings, picture);
    return picture;
}

BlockReport FrameDelivery::blocks() const {
    return measureBlocks(m_frame, m_camera.description(), m_settings);
}

uint32_t FrameDelivery::exposure() const { return m_registers.read(kExposureRegister, ""); }

void FrameDelivery::stepExposure() {
    CentreZone const centre =
        measureCentre(m_frame, m_camera.description(), m_states.read("Auto Exposure Inner Zone"));
    uint32_t const present = exposure();
    uint32_t const next = nextExposure(present, centre, m_states.read("Auto Exposure Target") / 100.0);
    if (next != present && !m_registers.write(kExposureRegister, "", next))
        qWarning("pictara: the sensor does not take an exposure of %u rows", next);
}
} // namespace pictara
