#include "simulator/host/session/state_variables.h"

#include <cmath>

namespace pictara {
namespace {
struct Default {
    char const* name;
    int32_t value;
};

// All others are 0.
constexpr Default kDefaults[] = {{"Auto Exposure", 1},
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
                                 {"Lens Correction Falloff", 100},
                                 {"Lens Correction Coeff Prec", 16},
                                 {"WB Manual Right", 3},
                                 {"WB Manual Position", 100},
                                 {"WB Manual RedGreen", 100},
                                 {"WB Manual BlueGreen", 100},
                                 {"WB Interpolate Saturation", 1},
                                 {"WB Normalize Matrix", 1}};
} // namespace

StateVariables::StateVariables(simulator::CameraDescription const& camera) {
    for (Default const& row : kDefaults)
        m_values[row.name] = row.value;
    bool const ycbcr = camera.rawType == simulator::FrameType::Ycbcr;
    int32_t const low = ycbcr ? int32_t(std::lround(camera.blackLevel)) : 0;
    int32_t const high = ycbcr ? int32_t(std::lround(camera.whiteLevel)) : 255;
    for (char const* name : {"Luma Lo", "Luma Clip Lo"})
        m_values[name] = low;
    for (char const* name : {"Luma Hi", "Luma Clip Hi"})
        m_values[name] = high;
    m_ofCamera = {{"X Offset", int32_t(camera.bayerPhase & 1)},
                  {"Y Offset", int32_t(camera.bayerPhase >> 1 & 1)},
                  {"Sensor Orientation", int32_t(camera.orientation)}};
}

int32_t StateVariables::read(QByteArray const& name) const {
    for (auto const* table : {&m_ofCamera, &m_values})
        if (auto const found = table->find(name); found != table->end())
            return found->second;
    return 0;
}

void StateVariables::set(QByteArray const& name, int32_t value) {
    if (!m_ofCamera.count(name))
        m_values[name] = value;
}

} // namespace pictara
