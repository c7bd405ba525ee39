#include "headboard/record_format.h"

#include <algorithm>
#include <string>

namespace kestra {
namespace {
struct RecordTypeRow {
    uint32_t type = 0;
    char const* name = nullptr;
    RecordPayload payload = RecordPayload::Opaque;
};

constexpr RecordTypeRow kRecordTypes[] = {
    {kRecordIdent, "EE_IDENT", RecordPayload::Opaque},
    {kRecordSensorData, "SENSOR_DATA", RecordPayload::Opaque},
    {kRecordRegisterData, "REG_DATA", RecordPayload::Opaque},
    {kRecordVariableData, "VAR_DATA", RecordPayload::Opaque},
    {kRecordSfrData, "SFR_DATA", RecordPayload::Opaque},
    {kRecordCustomerData, "CUSTOMER_DATA", RecordPayload::Opaque},
    {kRecordPga, "PGA", RecordPayload::RegisterSet},
    {kRecordSwPga, "SWPGA", RecordPayload::RegisterSet},
    {kRecordSensorId, "Sensor ID", RecordPayload::Text},
    {kRecordHeadboardId, "Headboard ID", RecordPayload::Text},
    {kRecordCcm, "CCM", RecordPayload::RegisterSet},
    {kRecordSwCcm, "SWCCM", RecordPayload::RegisterSet},
    {kRecordSwStereo, "SWSTEREO", RecordPayload::RegisterSet},
    {kRecordDefectMap, "Defect Map", RecordPayload::Opaque},
    {kRecordLensType, "Lens Type", RecordPayload::Text},
    {kRecordTimeStamp, "Time Stamp", RecordPayload::Text},
    {kRecordScratchpad, "Scratchpad", RecordPayload::NamedData},
    {kRecordEnd, "END_OF_RECORDS", RecordPayload::Opaque},
};

RecordTypeRow rowOf(uint32_t type) {
    auto const row = std::ranges::find(kRecordTypes, type, &RecordTypeRow::type);
    return row == std::end(kRecordTypes) ? RecordTypeRow{} : *row;
}

constexpr size_t kMostPayload = 0xFFFF;
} // namespace

RecordPayload recordPayload(uint32_t type) { return rowOf(type).payload; }

size_t recordNameWidth(uint32_t type) {
    RecordPayload const payload = recordPayload(type);
    return payload == RecordPayload::RegisterSet ? kRecordName
           : payload == RecordPayload::NamedData ? kNamedDataName
                                                 : 0;
}

char const* recordTypeName(uint32_t type) { return rowOf(type).name; }

uint8_t recordTypeNamed(char const* name) {
    for (RecordTypeRow const& row : kRecordTypes)
        if (equalWithoutCase(row.name, name))
            return uint8_t(row.type);
    return 0;
}

EepromRecord::EepromRecord(uint8_t type, int32_t capacity, int32_t initialLength) : m_capacity(capacity) {
    auto const length = size_t(std::clamp<int64_t>(initialLength, 0, kMostPayload));
    m_bytes.assign(kRecordHead + length, kErased);
    m_bytes[0] = type;
    putU16Be(m_bytes, 1, uint32_t(length));
}

bool EepromRecord::append(std::span<uint8_t const> bytes) {
    size_t const length = m_bytes.size() - kRecordHead;
    if (bytes.size() > kMostPayload - length)
        return false;
    m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
    putU16Be(m_bytes, 1, uint32_t(length + bytes.size()));
    return true;
}

void EepromRecord::setName(char const* name) {
    if (payload().size() < kRecordName)
        return;
    std::string field(std::string_view(name ? name : "DEFAULT").substr(0, kRecordName - 1));
    field.resize(kRecordName, '\0');
    std::ranges::copy(field, payload().begin());
}

std::string_view recordText(uint8_t type, std::span<uint8_t const> payload) {
    bool const isText = recordPayload(type) == RecordPayload::Text;
    size_t const width = isText ? payload.size() : std::min(recordNameWidth(type), payload.size());
    std::string_view const field(reinterpret_cast<char const*>(payload.data()), width);
    return field.substr(0, field.find('\0'));
}

EepromRecord makeRegisterSet(uint8_t type, int32_t capacity, char const* name) {
    EepromRecord record = EepromNewRecord(type, capacity, kRecordName);
    record.setName(name);
    return record;
}
} // namespace kestra
