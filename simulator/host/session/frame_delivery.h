#pragma once

#include "simulator/boundary/plugin_library.h"
#include "simulator/host/session/sensor_registers.h"
#include "simulator/host/session/state_variables.h"
#include "simulator/pictures/block_report.h"
#include "simulator/pictures/colour_pipeline.h"

namespace pictara {
/// The host's display loop, one frame a call: the camera exposes, the exposure loop steps, the plug-in sees
/// the raw frame and then the picture that is displayed.
class FrameDelivery {
public:
    /// What is handed in outlives this object.
    FrameDelivery(simulator::SimulatedCamera& camera, StateVariables const& states,
                  SensorRegisters& registers, PluginLibrary const& plugin);

    void deliverNext();
    /// Number of the last frame, from 1.
    [[nodiscard]] uint64_t frameNumber() const { return m_frameNumber; }
    /// What the sensor's exposure register holds, in rows.
    [[nodiscard]] uint32_t exposure() const;
    /// The last frame as the sensor delivered it, and how the host showed it.
    [[nodiscard]] simulator::Frame const& frame() const { return m_frame; }
    [[nodiscard]] ColourSettings const& settings() const { return m_settings; }
    /// The picture of the last frame, with what the plug-in painted into it.
    [[nodiscard]] QImage const& picture() const { return m_picture; }
    /// The picture of the last frame without it.
    [[nodiscard]] QImage unmarkedPicture();
    /// How even the last frame is, without the rows that hold no picture.
    [[nodiscard]] BlockReport blocks() const;

private:
    void stepExposure();

    simulator::SimulatedCamera& m_camera;
    StateVariables const& m_states;
    SensorRegisters& m_registers;
    PluginLibrary const& m_plugin;
    ColourPipeline m_pipeline;
    simulator::Frame m_frame;
    uint64_t m_frameNumber = 0;
    ColourSettings m_settings;
    QImage m_picture;
};
} // namespace pictara
