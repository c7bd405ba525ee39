#include "hoststate/pipeline.h"

#include "common/ini_section.h"

#include <array>

namespace kestra {
namespace {
struct StateSetting {
    char const* variable;
    int32_t value;
};

constexpr StateSetting kRawPipeline[] = {
    {kAutoExposure, 0},
    {kWhiteBalance, 0},
    {"Color Correction", 0},
    {"Saturation", 10},
    {"Gamma", 20},
    {"Contrast", 20},
    {"Black Correct", 0},
    {"Aperture Enable", 0},
    {"Black CCM Kill Enable", 0},
    {"Green Balance Enable", 0},
    {"Auto Exposure Inner Zone", 40},
    {"Auto Exposure Outer Zone", 40},
    {"Auto Exposure Target", 50},
    {"Auto Exposure Stability", 1},
    {"Auto Exposure Speed", 10},
    {"Auto Exposure Minimum FPS", 0},
    {"Auto Exposure Flicker Filter", 0},
    {"Auto Exposure Soft Limit", 1},
    {"Auto Exposure Soft Gain Limit", 10},
    {"Auto Exposure Software Gain Limit", 100},
    {"Auto Exposure Freeze Gains", 0},
    {"Auto Exposure Fade Saturation", 0},
    {"Auto Exposure Fade Aperture", 0},
    {"Noise Removal", 0},
    {"Lens Correction Enable", 0},
    {"Lens Sim Enable Pwq", 0},
    {"Lens Sim Enable Poly", 0},
};

constexpr StateSetting kVerifyPipeline[] = {
    {"Color Correction", 1},
    {kWhiteBalance, 2},
    {"Saturation", 10},
    {"Gamma", 9}, // a display gamma here, linear in the raw list
    {"Contrast", 20},
    {"Black Correct", 5},
    {"WB Adjust Gains", 0},
    {"WB Manual Left", 0},
    {"WB Manual Right", 3},
    {"WB Manual Position", 100},
    {"WB Manual RedGreen", 100},
    {"WB Manual BlueGreen", 100},
    {"WB Interpolate Saturation", 1},
    {"WB Normalize Matrix", 1},
};

constexpr int32_t kUnityGain = 1000; // thousandths

void setAll(Host const& host, auto const& settings) {
    for (StateSetting const& setting : settings)
        host.setState(setting.variable, setting.value);
}

constexpr LensCorrection kSensorDefault = {"POLY_SC_ENABLE", "ENABLE"};
constexpr LensCorrection kSystemOnChipDefault = {"COLOR_PIPELINE_CONTROL", "PGA_ENABLE"};

// Value of a whole register that is the switch.
constexpr uint32_t kWholeRegisterOn = 0x8000;

bool isWholeRegister(LensCorrection const& correction) { return *correction.lensCorrectionBitfield == '\0'; }

bool exists(Sensor const& sensor, LensCorrection const& correction) {
    return isWholeRegister(correction) ||
           sensor.existsBitfield(correction.lensCorrectionRegister, correction.lensCorrectionBitfield);
}
} // namespace

void setRawPipeline(Host const& host, Sensor const& sensor, LensCorrection const& correction,
                    bool autoExposure, bool resetWhiteBalanceGains) {
    ChangeGroup const group(host);
    setAll(host, kRawPipeline);
    if (resetWhiteBalanceGains) {
        host.setState(kRelativeRedGain, kUnityGain);
        host.setState(kRelativeBlueGain, kUnityGain);
    }
    // The list has forced the automatic exposure off with the rest; only now may it run again on the new
    // state.
    host.setState(kAutoExposure, autoExposure ? 1 : 0);
    host.setState(kWhiteBalance, 0);
    setLensCorrection(host, sensor, correction, false);
}

void setVerifyPipeline(Host const& host, Sensor const& sensor, LensCorrection const& correction) {
    // No bracket: the host shows each of these as it is set.
    setAll(host, kVerifyPipeline);
    (void)applyPreset(host, kVerifyPreset);
    setLensCorrection(host, sensor, correction, true);
}

bool presetExists(Host const& host, char const* name) {
    QByteArray const iniFile = host.readTextSetting("IniFileName");
    if (iniFile.isEmpty())
        return false;
    std::array<char, 32> section; // only whether it exists counts
    return readIniSection(name, section.data(), section.size(), iniFile.constData()) >= 1;
}

char const* findPreset(Host const& host, PresetNames names) {
    for (char const* name : names)
        if (presetExists(host, name))
            return name;
    return nullptr;
}

bool applyPreset(Host const& host, PresetNames names) {
    char const* const name = findPreset(host, names);
    if (name)
        host.applyPreset(name);
    return name != nullptr;
}

LensCorrection chooseLensCorrection(PageKind page, SensorKind const& kind, Sensor const& sensor) {
    bool const isKnown = kind.correctionOnlyOn.value_or(page) == page;
    if (isKnown && *kind.correction.lensCorrectionRegister)
        return kind.correction;
    return sensor.isSystemOnChip() ? kSystemOnChipDefault : kSensorDefault;
}

void setLensCorrection(Host const& host, Sensor const& sensor, LensCorrection const& correction,
                       bool enabled) {
    if (!exists(sensor, correction))
        return;
    ChangeGroup const group(host);
    uint32_t const on = isWholeRegister(correction) ? kWholeRegisterOn : 1;
    host.writeRegister(correction.lensCorrectionRegister, correction.lensCorrectionBitfield,
                       enabled ? on : 0);
}

bool lensCorrectionEnabled(Host const& host, Sensor const& sensor, LensCorrection const& correction) {
    return exists(sensor, correction) &&
           host.readRegister(correction.lensCorrectionRegister, correction.lensCorrectionBitfield) != 0;
}
} // namespace kestra
