#include "headboard/register_record.h"

#include "common/sensor.h"
#include "common/system.h"
#include "headboard/eeprom_chain.h"
#include "headboard/record_format.h"
#include "headboard/register_names.h"
#include "headboard/register_set.h"

#include <algorithm>
#include <string_view>

namespace {

constexpr uint32_t kAnyVariant = UINT32_MAX;

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

struct ModelRange {
    uint32_t sensorKind;
    uint32_t firstVariant;
    uint32_t lastVariant;

    [[nodiscard]] bool holds(SensorModel model) const {
        return model.sensorKind == sensorKind && model.variant >= firstVariant &&
               model.variant <= lastVariant;
    }
};
constexpr ModelRange kKind68 = {68, 0, kAnyVariant};
constexpr ModelRange kKind68First = {68, 1, 1};
constexpr ModelRange kKind68Later = {68, 2, kAnyVariant};
constexpr ModelRange kKind76Later = {76, 2, kAnyVariant};

// Registers that a model has but does not replay. A trailing "*" stands for any rest of the name. Of kind 68,
// P_CR_Q5 and P_CB_Q5 are replayed, deliberately: only the terms of the four planes are left out.
struct LeftOut {
    ModelRange models;
    std::string_view pattern;
};
constexpr LeftOut kLeftOut[] = {
    {kKind68, "P_GR_Q5"},          {kKind68, "P_RD_Q5"},
    {kKind68, "P_BL_Q5"},          {kKind68, "P_GB_Q5"},
    {kKind68, "PGASETUP_LEFT_*"},  {kKind68, "PGASETUP_MIDDLE_*"},
    {kKind68, "PGASETUP_RIGHT_*"}, {kKind76Later, "P_*"},
    {kKind76Later, "CENTER_ROW"},  {kKind76Later, "CENTER_COLUMN"},
};

// Fixed entries that make a model's firmware take over the tables, in the order of their replay. With
// `onlyWith`, an entry is stored where that register exists, too.
struct FixedEntry {
    ModelRange models;
    char const* onlyWith;
    char const* reg;
    char const* bitfield;
    uint32_t value;
};
constexpr char kObject[] = "SEQUENCERSETUP_MANUALOBJ";
constexpr char kCommand[] = "SEQUENCERSETUP_CMD";
constexpr FixedEntry kBeforeEnable[] = {
    {kKind68, kObject, kObject, "", 0x153},
    {kKind68, kObject, kCommand, "", 255},
    {kKind68, kObject, kObject, "", 0x253},
    {kKind68, kObject, kCommand, "", 255},
    {kKind68, kObject, kObject, "", 0x353},
    {kKind68, kObject, kCommand, "", 255},
    {kKind68First, nullptr, "PGASETUP_MODE", "", 1},
    {kKind68First, nullptr, kObject, "", 0x152},
    {kKind68First, nullptr, kCommand, "", 255},
    {kKind68Later, nullptr, "PGAOUTPUT_CURZONE", "", 4},
    {kKind76Later, nullptr, "CAM_PGA_PGA_CONTROL", "CAM_PGA_AUTO_PGA_ENABLE", 1},
};
constexpr FixedEntry kAfterEnable[] = {
    {kKind76Later, nullptr, "PGA_CURRENT_ZONE", "", 255},
};

// Asked anew for each use: the library may have reopened the sensor meanwhile.
SensorModel modelOf(HeadboardEeprom const& eeprom, SensorModel fallback) {
    std::optional<SensorInfo> const info = Sensor(eeprom->camera).info();
    return info ? SensorModel{info->sensorKind, info->variant} : fallback;
}

bool isLeftOut(std::string_view name, SensorModel model) {
    return std::any_of(std::begin(kLeftOut), std::end(kLeftOut), [&](LeftOut const& row) {
        std::string_view const pattern = row.pattern;
        bool const matches = pattern.ends_with('*') ? name.starts_with(pattern.substr(0, pattern.size() - 1))
                                                    : name == pattern;
        return matches && row.models.holds(model);
    });
}

// Entries are added without a look at the result: what the sensor lacks is not stored.
void addFixed(HeadboardEeprom const& eeprom, EepromRecord& record, std::span<FixedEntry const> entries,
              SensorModel model) {
    for (FixedEntry const& entry : entries) {
        bool const isWanted = entry.models.holds(model) &&
                              (!entry.onlyWith || Sensor(eeprom->camera).existsRegister(entry.onlyWith));
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
    Sensor m_sensor;
    EnablePair m_pair;
    bool m_wasOn;
};

void addTables(HeadboardEeprom const& eeprom, EepromRecord& record, SensorModel fallback) {
    SensorModel const model = modelOf(eeprom, fallback);
    for (std::string const& name : shadingRegisterNames())
        if (!isLeftOut(name, model))
            (void)EepromAddRegisterCurrent(eeprom, record, name.c_str(), "");
    addFixed(eeprom, record, kBeforeEnable, modelOf(eeprom, fallback));
}

void addBracketedTables(HeadboardEeprom const& eeprom, EepromRecord& record, SensorModel fallback) {
    Sensor const sensor(eeprom->camera);
    EnablePair const* const pair = findEnablePair(sensor);
    if (!pair)
        return addTables(eeprom, record, fallback);
    (void)EepromAddRegister(eeprom, record, pair->reg, pair->bitfield, 0);
    CorrectionOff const off(sensor, *pair);
    addTables(eeprom, record, fallback);
    (void)EepromAddRegister(eeprom, record, pair->reg, pair->bitfield, 1);
}

} // namespace

int32_t saveShadingRegisters(HeadboardEeprom eeprom, char const* name, SensorModel fallback) {
    int32_t const status = EepromCheckHeader(eeprom);
    if (status != kEepromOk)
        return status;
    EepromRecord record = makeRegisterSet(kRecordPga, eeprom->deviceSize - kReservedBytes, name);
    addBracketedTables(eeprom, record, fallback);
    addFixed(eeprom, record, kAfterEnable, modelOf(eeprom, fallback));
    return EepromReplaceRecord(eeprom, record);
}

int32_t saveCcmRegisters(HeadboardEeprom eeprom, char const* name) {
    int32_t const status = EepromCheckHeader(eeprom);
    if (status != kEepromOk)
        return status;
    EepromRecord record = makeRegisterSet(kRecordCcm, eeprom->deviceSize - kReservedBytes, name);
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
