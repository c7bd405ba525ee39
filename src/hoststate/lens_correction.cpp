#include "hoststate/lens_correction.h"

namespace {

constexpr LensCorrection kSensorDefault = {"POLY_SC_ENABLE", "ENABLE"};
constexpr LensCorrection kSystemOnChipDefault = {"COLOR_PIPELINE_CONTROL", "PGA_ENABLE"};

// Value of a whole register that is the switch.
constexpr uint32_t kWholeRegisterOn = 0x8000;

bool isWholeRegister(LensCorrection const& correction) {
    return *correction.lensCorrectionBitfield == '\0';
}

bool exists(Sensor const& sensor, LensCorrection const& correction) {
    return isWholeRegister(correction) ||
           sensor.existsBitfield(correction.lensCorrectionRegister, correction.lensCorrectionBitfield);
}

} // namespace

LensCorrection chooseLensCorrection(PageKind page, SensorKind const& kind, Sensor const& sensor) {
    bool const isKnown =
        page == PageKind::Apga ? kind.correctionKnownToApga : kind.correctionKnownToLensShading;
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
