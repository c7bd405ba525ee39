#include "headboard/register_record.h"

#include "common/sensor.h"
#include "common/sensor_kinds.h"
#include "common/system.h"
#include "headboard/eeprom_chain.h"
#include "headboard/record_format.h"
#include "headboard/register_names.h"
#include "headboard/register_set.h"

#include <algorithm>
#include <string_view>

namespace kestra {

namespace {

struct EnablePair {
    char const* reg;
    char const* bitfield;
};
constexpr EnablePair kEnablePairs[] = {
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

SensorKind const& kindOf(SensorModel model) {
    return sensorKind(model.sensorKind, model.variant);
}

bool isLeftOut(std::string_view name, SensorKind const& kind) {
    return std::ranges::any_of(kind.leftOut, [&](std::string_view pattern) {
        return pattern.ends_with('*') ? name.starts_with(pattern.substr(0, pattern.size() - 1))
                                      : name == pattern;
    });
}

// Entries are added without a look at the result: what the sensor lacks is not stored.
void addFixed(HeadboardEeprom& eeprom, EepromRecord& record, std::span<FixedEntry const> entries,
              uint32_t variant) {
    for (FixedEntry const& entry : entries) {
        bool const isWanted = entry.variants.holds(variant) &&
                              (!entry.onlyWith || eeprom.sensor.existsRegister(entry.onlyWith));
        if (isWanted)
            (void)EepromAddRegister(eeprom, record, entry.reg, entry.bitfield, entry.value);
    }
}

EnablePair const* findEnablePair(Sensor const& sensor) {
    auto const* const found =
        std::find_if(std::begin(kEnablePairs), std::end(kEnablePairs),
                     [&](EnablePair const& pair) { return sensor.existsBitfield(pair.reg, pair.bitfield); });
    return found == std::end(kEnablePairs) ? nullptr : found;
}

// The correction is off while this lives, and afterwards on again if it was.
class CorrectionOff {
public:
    CorrectionOff(Sensor const& sensor, EnablePair const& pair)
        : m_sensor(sensor), m_pair(pair), m_wasOn(sensor.readRegister(pair.reg, pair.bitfield) != 0) {
        if (m_wasOn)
            (void)m_sensor.writeRegister(m_pair.reg, m_pair.bitfield, 0);
        m_sensor.invalidateCache();
    }
    ~CorrectionOff() {
        if (m_wasOn)
            (void)m_sensor.writeRegister(m_pair.reg, m_pair.bitfield, 1);
    }
    CorrectionOff(CorrectionOff const&) = delete;
    CorrectionOff& operator=(CorrectionOff const&) = delete;

private:
    Sensor const& m_sensor;
    EnablePair m_pair;
    bool m_wasOn;
};

void addTables(HeadboardEeprom& eeprom, EepromRecord& record, SensorModel fallback) {
    SensorKind const& kind = kindOf(modelOf(eeprom, fallback));
    for (std::string const& name : shadingRegisterNames())
        if (!isLeftOut(name, kind))
            (void)EepromAddRegisterCurrent(eeprom, record, name.c_str(), "");
    SensorModel const model = modelOf(eeprom, fallback);
    addFixed(eeprom, record, kindOf(model).beforeEnable, model.variant);
}

void addBracketedTables(HeadboardEeprom& eeprom, EepromRecord& record, SensorModel fallback) {
    Sensor const& sensor = eeprom.sensor;
    EnablePair const* const pair = findEnablePair(sensor);
    if (!pair)
        return addTables(eeprom, record, fallback);
    (void)EepromAddRegister(eeprom, record, pair->reg, pair->bitfield, 0);
    CorrectionOff const off(sensor, *pair);
    addTables(eeprom, record, fallback);
    (void)EepromAddRegister(eeprom, record, pair->reg, pair->bitfield, 1);
}

} // namespace

EepromStatus saveShadingRegisters(HeadboardEeprom& eeprom, char const* name, SensorModel fallback) {
    EepromStatus const status = EepromCheckHeader(eeprom);
    if (status != kEepromOk)
        return status;
    EepromRecord record = makeRegisterSet(eeprom, kRecordPga, name);
    addBracketedTables(eeprom, record, fallback);
    SensorModel const model = modelOf(eeprom, fallback);
    addFixed(eeprom, record, kindOf(model).afterEnable, model.variant);
    return EepromReplaceRecord(eeprom, record);
}

EepromStatus saveCcmRegisters(HeadboardEeprom& eeprom, char const* name) {
    EepromStatus const status = EepromCheckHeader(eeprom);
    if (status != kEepromOk)
        return status;
    EepromRecord record = makeRegisterSet(eeprom, kRecordCcm, name);
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
