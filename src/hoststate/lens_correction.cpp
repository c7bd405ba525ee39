#include "hoststate/lens_correction.h"

namespace {

enum class KnownTo { BothPages, LensShadingOnly, ApgaOnly };

struct SwitchRow {
    uint32_t sensorKind;
    KnownTo pages;
    LensCorrection correction;
};

// The pages differ in three kinds on purpose: each knows only the switch of the sensors that it is made for.
constexpr SwitchRow kSwitches[] = {
    {16, KnownTo::BothPages, {"COLOR_PIPELINE_CONTROL", "LENS_SHADING"}},
    {23, KnownTo::BothPages, {"COLOR_PIPELINE_CONTROL", "LENS_SHADING"}},
    {22, KnownTo::BothPages, {"LENS_CORRECTION_CONTROL", "ENABLE"}},
    {40, KnownTo::BothPages, {"LENS_CORRECTION_CONTROL", "ENABLE"}},
    {25, KnownTo::BothPages, {"LENS_CORRECTION", "ENABLE"}},
    {27, KnownTo::BothPages, {"LENS_CORRECTION", "ENABLE"}},
    {72, KnownTo::ApgaOnly, {"CAM_PGA_PGA_CONTROL", "CAM_PGA_PGA_ENABLE"}},
    {76, KnownTo::ApgaOnly, {"CAM_PGA_PGA_CONTROL", "CAM_PGA_PGA_ENABLE"}},
    {95, KnownTo::BothPages, {"CAM_PGA_PGA_CONTROL", "CAM_PGA_PGA_ENABLE"}},
    {115, KnownTo::BothPages, {"CAM_PGA_PGA_CONTROL", "CAM_PGA_PGA_ENABLE"}},
    {154, KnownTo::LensShadingOnly, {"POLY_SC_ENABLE", ""}},
};

constexpr LensCorrection kSensorDefault = {"POLY_SC_ENABLE", "ENABLE"};
constexpr LensCorrection kSystemOnChipDefault = {"COLOR_PIPELINE_CONTROL", "PGA_ENABLE"};

// Value of a whole register that is the switch.
constexpr uint32_t kWholeRegisterOn = 0x8000;

bool knows(PageKind page, KnownTo pages) {
    switch (pages) {
    case KnownTo::LensShadingOnly:
        return page == PageKind::LensShading;
    case KnownTo::ApgaOnly:
        return page == PageKind::Apga;
    case KnownTo::BothPages:
        break;
    }
    return true;
}

bool isWholeRegister(LensCorrection const& correction) {
    return *correction.lensCorrectionBitfield == '\0';
}

bool exists(Sensor const& sensor, LensCorrection const& correction) {
    return isWholeRegister(correction) ||
           sensor.existsBitfield(correction.lensCorrectionRegister, correction.lensCorrectionBitfield);
}

} // namespace

LensCorrection chooseLensCorrection(PageKind page, uint32_t sensorKind, Sensor const& sensor) {
    for (SwitchRow const& row : kSwitches)
        if (row.sensorKind == sensorKind && knows(page, row.pages))
            return row.correction;
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
