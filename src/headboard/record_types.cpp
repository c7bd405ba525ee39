#include "headboard/record_types.h"

#include "headboard/plain_text.h"

#include <algorithm>

namespace {

struct RecordTypeRow {
    EepromRecordType type;
    char const* name;
    RecordPayload payload;
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

constexpr size_t kRegisterSetNameWidth = 9;
constexpr size_t kNamedDataNameWidth = 15;

RecordTypeRow const* rowOf(uint32_t type) {
    auto const* const found = std::find_if(std::begin(kRecordTypes), std::end(kRecordTypes),
                                           [&](RecordTypeRow const& row) { return row.type == type; });
    return found == std::end(kRecordTypes) ? nullptr : found;
}

} // namespace

RecordPayload recordPayload(uint32_t type) {
    RecordTypeRow const* const row = rowOf(type);
    return row ? row->payload : RecordPayload::Opaque;
}

size_t recordNameWidth(uint32_t type) {
    switch (recordPayload(type)) {
    case RecordPayload::RegisterSet:
        return kRegisterSetNameWidth;
    case RecordPayload::NamedData:
        return kNamedDataNameWidth;
    case RecordPayload::Opaque:
    case RecordPayload::Text:
        break;
    }
    return 0;
}

char const* recordTypeName(uint32_t type) {
    RecordTypeRow const* const row = rowOf(type);
    return row ? row->name : nullptr;
}

uint8_t recordTypeNamed(char const* name) {
    for (RecordTypeRow const& row : kRecordTypes)
        if (equalWithoutCase(row.name, name))
            return row.type;
    return 0;
}
