#include "headboard/register_record.h"

#include "common/sensor.h"
#include "common/sensor_kinds.h"
#include "common/system.h"
#include "headboard/eeprom_chain.h"
#include "headboard/record_format.h"
#include "headboard/register_names.h"
#include "headboard/register_set.h"

#include <QScopeGuard>
#include <algorithm>
#include <string_view>

namespace kestra {
namespace {
constexpr LensCorrection kCorrections[] = {
    {"CAM_PGA_PGA_CONTROL", "CAM_PGA_PGA_ENABLE"},
    {"POLY_SC_ENABLE", "ENABLE"},
    {"COLOR_PIPELINE_CONTROL", "PGA_ENABLE"},
    {"COLOR_PIPELINE_CONTROL", "LENS_SHADING"},
    {"LENS_CORRECTION", "ENABLE"},
    {"LENS_CORRECTION_CONTROL", "ENABLE"},
};

// Asked anew for each use: the library may have reopened the sensor meanwhile.
SensorModel modelOf(HeadboardEeprom& eeprom, SensorModel fallback) {
    std::optional<SensorInfo> const info = eeprom.sensor.info();
    return info ? SensorModel{info->sensorKind, info->variant} : fallback;
}

bool isLeftOut(std::string_view name, SensorKind const& kind) {
    return std::ranges::any_of(kind.leftOut, [&](std::string_view pattern) {
        return pattern.ends_with('*') ? name.starts_with(pattern.substr(0, pattern.size() - 1))
                                      : name == pattern;
    });
}

// Entries are added without a look at the result: what the sensor lacks is not stored.
void addFixed(HeadboardEeprom& eeprom, EepromRecord& record, SensorModel fallback,
              std::span<FixedEntry const> SensorKind::*entries) {
    SensorModel const model = modelOf(eeprom, fallback);
    for (FixedEntry const& entry : sensorKind(model.sensorKind, model.variant).*entries) {
        bool const isWanted = entry.variants.holds(model.variant) &&
                              (!entry.onlyWith || eeprom.sensor.existsRegister(entry.onlyWith));
        if (isWanted)
            (void)EepromAddRegister(eeprom, record, entry.reg, entry.bitfield, entry.value);
    }
}

void addTables(HeadboardEeprom& eeprom, EepromRecord& record, SensorModel fallback) {
    SensorModel const model = modelOf(eeprom, fallback);
    SensorKind const& kind = sensorKind(model.sensorKind, model.variant);
    for (std::string const& name : shadingRegisterNames())
        if (!isLeftOut(name, kind))
            (void)EepromAddRegisterCurrent(eeprom, record, name.c_str(), "");
    addFixed(eeprom, record, fallback, &SensorKind::beforeEnable);
}

// The correction is off while the tables are read, and afterwards on again if it was.
void addBracketedTables(HeadboardEeprom& eeprom, EepromRecord& record, SensorModel fallback) {
    Sensor const& sensor = eeprom.sensor;
    auto const found = std::ranges::find_if(kCorrections, [&](LensCorrection const& correction) {
        return sensor.existsBitfield(correction.lensCorrectionRegister, correction.lensCorrectionBitfield);
    });
    if (found == std::end(kCorrections))
        return addTables(eeprom, record, fallback);
    char const* const reg = found->lensCorrectionRegister;
    char const* const bitfield = found->lensCorrectionBitfield;
    (void)EepromAddRegister(eeprom, record, reg, bitfield, 0);
    bool const wasOn = sensor.readRegister(reg, bitfield) != 0;
    auto const on = qScopeGuard([&] {
        if (wasOn)
            (void)sensor.writeRegister(reg, bitfield, 1);
    });
    if (wasOn)
        (void)sensor.writeRegister(reg, bitfield, 0);
    sensor.invalidateCache();
    addTables(eeprom, record, fallback);
    (void)EepromAddRegister(eeprom, record, reg, bitfield, 1);
}
} // namespace

EepromStatus saveShadingRegisters(HeadboardEeprom& eeprom, char const* name, SensorModel fallback) {
    EepromStatus const status = EepromCheckHeader(eeprom);
    if (status != kEepromOk)
        return status;
    EepromRecord record = makeRegisterSet(kRecordPga, eeprom.registerRoom(), name);
    addBracketedTables(eeprom, record, fallback);
    addFixed(eeprom, record, fallback, &SensorKind::afterEnable);
    return EepromReplaceRecord(eeprom, record);
}

EepromStatus saveCcmRegisters(HeadboardEeprom& eeprom, char const* name) {
    EepromStatus const status = EepromCheckHeader(eeprom);
    if (status != kEepromOk)
        return status;
    EepromRecord record = makeRegisterSet(kRecordCcm, eeprom.registerRoom(), name);
    for (std::string const& reg : ccmRegisterNames())
        (void)EepromAddRegisterCurrent(eeprom, record, reg.c_str(), "");
    return EepromReplaceRecord(eeprom, record);
}

EepromRecord makeTimeStamp() {
    std::string const text = currentUtcTime().toString(QStringLiteral("yyyy/MM/dd HH:mm:ss")).toStdString();
    auto const length = int32_t(text.size() + 1);
    EepromRecord record = EepromNewRecord(kRecordTimeStamp, length, length);
    std::copy_n(text.c_str(), length, record.payload().begin());
    return record;
}
} // namespace kestra
