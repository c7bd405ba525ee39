#include "simulator/host/session/state_variables.h"

#include <cmath>

namespace pictara {
// All others are 0.
StateVariables::StateVariables(simulator::CameraDescription const& camera)
    : m_values{{"Auto Exposure", 1},
               {"Auto Exposure Inner Zone", 40},
               {"Auto Exposure Outer Zone", 40},
               {"Auto Exposure Target", 50},
               {"Auto Exposure Stability", 1},
               {"Auto Exposure Speed", 10},
               {"Auto Exposure Soft Limit", 1},
               {"Auto Exposure Soft Gain Limit", 10},
               {"Auto Exposure Software Gain Limit", 100},
               {"White Balance", 2},
               {"Relative Red Gain", 1000},
               {"Relative Blue Gain", 1000},
               {"Color Correction", 1},
               {"Saturation", 10},
               {"Gamma", 9},
               {"Contrast", 20},
               {"Black Correct", 5},
               {"WB Manual Right", 3},
               {"WB Manual Position", 100},
               {"WB Manual RedGreen", 100},
               {"WB Manual BlueGreen", 100},
               {"WB Interpolate Saturation", 1},
               {"WB Normalize Matrix", 1}} {
    bool const ycbcr = camera.rawType == simulator::FrameType::Ycbcr;
    m_values["Luma Lo"] = m_values["Luma Clip Lo"] = ycbcr ? int32_t(std::lround(camera.blackLevel)) : 0;
    m_values["Luma Clip Hi"] = ycbcr ? int32_t(std::lround(camera.whiteLevel)) : 255;
    m_ofCamera = {{"X Offset", int32_t(camera.bayerPhase & 1)},
                  {"Y Offset", int32_t(camera.bayerPhase >> 1 & 1)},
                  {"Sensor Orientation", int32_t(camera.orientation)}};
}

void StateVariables::set(QByteArray const& name, int32_t value) {
    if (!m_ofCamera.contains(name))
        m_values[name] = value;
}
} // namespace pictara
