#include "common/sensor_kinds.h"

#include <algorithm>

namespace kestra {
namespace {
using enum DialogPage;

constexpr LensCorrection kPgaControl = {"CAM_PGA_PGA_CONTROL", "CAM_PGA_PGA_ENABLE"};
constexpr LensCorrection kPipelineShading = {"COLOR_PIPELINE_CONTROL", "LENS_SHADING"};
constexpr LensCorrection kCorrectionControl = {"LENS_CORRECTION_CONTROL", "ENABLE"};
constexpr LensCorrection kCorrection = {"LENS_CORRECTION", "ENABLE"};
constexpr LensCorrection kWholeRegister = {"POLY_SC_ENABLE", ""};

constexpr VariantRange kAny = {};
constexpr VariantRange kFirst = {1, 1};
constexpr VariantRange kLater = {2, UINT32_MAX};

// P_CR_Q5 and P_CB_Q5 of kind 68 are replayed, deliberately: only the terms of the four planes are left out.
constexpr std::string_view kLeftOut68[] = {
    "P_GR_Q5", "P_RD_Q5", "P_BL_Q5", "P_GB_Q5", "PGASETUP_LEFT_*", "PGASETUP_MIDDLE_*", "PGASETUP_RIGHT_*"};
constexpr std::string_view kLeftOut76[] = {"P_*", "CENTER_ROW", "CENTER_COLUMN"};

constexpr char kObject[] = "SEQUENCERSETUP_MANUALOBJ";
constexpr char kCommand[] = "SEQUENCERSETUP_CMD";
constexpr FixedEntry kBeforeEnable68[] = {
    {kAny, kObject, kObject, "", 0x153},       {kAny, kObject, kCommand, "", 255},
    {kAny, kObject, kObject, "", 0x253},       {kAny, kObject, kCommand, "", 255},
    {kAny, kObject, kObject, "", 0x353},       {kAny, kObject, kCommand, "", 255},
    {kFirst, nullptr, "PGASETUP_MODE", "", 1}, {kFirst, nullptr, kObject, "", 0x152},
    {kFirst, nullptr, kCommand, "", 255},      {kLater, nullptr, "PGAOUTPUT_CURZONE", "", 4},
};
constexpr FixedEntry kBeforeEnable76[] = {
    {kAny, nullptr, "CAM_PGA_PGA_CONTROL", "CAM_PGA_AUTO_PGA_ENABLE", 1}};
constexpr FixedEntry kAfterEnable76[] = {{kAny, nullptr, "PGA_CURRENT_ZONE", "", 255}};

// The first row that fits counts. The pages differ in the switches of kinds 72, 76 and 154 on purpose: each
// knows only those of the sensors that it is made for. Bus addresses are fixed because the boards are.
constexpr SensorKind kSensorKinds[] = {
    {.kind = 16, .calibratesFromRgb = true, .correction = kPipelineShading},
    {.kind = 22, .correction = kCorrectionControl},
    {.kind = 23, .correction = kPipelineShading},
    {.kind = 25, .correction = kCorrection},
    {.kind = 27, .correction = kCorrection},
    {.kind = 33, .unusableTopRows = 2},
    {.kind = 36, .page = NoDialog},
    {.kind = 40, .correction = kCorrectionControl},
    {.kind = 46, .unusableTopRows = 2},
    {.kind = 56, .unusableTopRows = 2},
    {.kind = 66, .unusableTopRows = 2},
    {.kind = 68,
     .page = AutomaticPga,
     .resultFileFormat = 2,
     .leftOut = kLeftOut68,
     .beforeEnable = kBeforeEnable68},
    {.kind = 71, .eepromBridgeOnly = true},
    {.kind = 72,
     .variants = kFirst,
     .page = AdaptivePga,
     .correction = kPgaControl,
     .correctionOnlyOn = PageKind::Apga,
     .keepsWhiteBalanceGains = true},
    {.kind = 72, .page = AdaptivePga, .correction = kPgaControl, .correctionOnlyOn = PageKind::Apga},
    {.kind = 76,
     .variants = kLater,
     .page = AutomaticPga,
     .correction = kPgaControl,
     .correctionOnlyOn = PageKind::Apga,
     .leftOut = kLeftOut76,
     .beforeEnable = kBeforeEnable76,
     .afterEnable = kAfterEnable76},
    {.kind = 76, .page = AdaptivePga, .correction = kPgaControl, .correctionOnlyOn = PageKind::Apga},
    {.kind = 95, .correction = kPgaControl, .eepromAddress = 0xAA},
    {.kind = 97, .page = EmptyDialog},
    {.kind = 99, .eepromAddress = 0xAA},
    {.kind = 103, .eepromBridgeOnly = true},
    {.kind = 111, .eepromBridgeOnly = true},
    {.kind = 115, .correction = kPgaControl},
    {.kind = 154, .correction = kWholeRegister, .correctionOnlyOn = PageKind::LensShading},
    {.kind = 193, .eepromAddress = 0xAC},
    {.kind = 198, .eepromAddress = 0xAC},
    {.kind = 199, .eepromAddress = 0xAC},
};
constexpr SensorKind kUnknown = {};
} // namespace

SensorKind const& sensorKind(uint32_t kind, uint32_t variant) {
    auto const* const row = std::ranges::find_if(kSensorKinds, [&](SensorKind const& candidate) {
        return candidate.kind == kind && candidate.variants.holds(variant);
    });
    return row == std::end(kSensorKinds) ? kUnknown : *row;
}

SensorKind const& unknownSensorKind() { return kUnknown; }
} // namespace kestra
