#pragma once

#include <cstddef>
#include <cstdint>

/// Record types of the EEPROM by their numbers. 6 is unused.
enum EepromRecordType : uint8_t {
    kRecordIdent = 1, ///< the identification header itself, at offset 0
    kRecordSensorData = 2,
    kRecordRegisterData = 3,
    kRecordVariableData = 4,
    kRecordSfrData = 5,
    kRecordCustomerData = 7,
    kRecordPga = 8,
    kRecordSwPga = 9,
    kRecordSensorId = 10,
    kRecordHeadboardId = 11,
    kRecordCcm = 12,
    kRecordSwCcm = 13,
    kRecordDefectMap = 14,
    kRecordLensType = 15,
    kRecordTimeStamp = 16,
    kRecordScratchpad = 17,
    kRecordSwStereo = 18,
    kRecordEnd = 255, ///< ends the chain; no length follows
};

/// What this system knows of a type's payload.
enum class RecordPayload : uint8_t {
    Opaque,      ///< kept byte for byte
    Text,        ///< up to a NUL
    RegisterSet, ///< 9 bytes of name, then register entries or lines of text
    NamedData,   ///< 15 bytes of name, then opaque bytes
};

/// The payload of a type; `Opaque` for unknown ones.
[[nodiscard]] RecordPayload recordPayload(uint32_t type);

/// Width in bytes of the name that the payload begins with; 0 for types without.
[[nodiscard]] size_t recordNameWidth(uint32_t type);

/// The name under which a type is shown; null for an unknown type.
[[nodiscard]] char const* recordTypeName(uint32_t type);

/// The type of that name, compared without case; 0 for an unknown name.
[[nodiscard]] uint8_t recordTypeNamed(char const* name);
