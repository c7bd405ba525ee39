#include "headboard/eeprom_record.h"

#include "headboard/big_endian.h"
#include "headboard/record_types.h"

#include <algorithm>

namespace {

constexpr uint8_t kUnused = 0xFF;
constexpr size_t kHeadSize = 3;
constexpr size_t kMostPayload = 0xFFFF;
constexpr size_t kNameField = 9;
constexpr size_t kNameLength = 8;
constexpr char kNoName[] = "DEFAULT";

} // namespace

EepromRecord::EepromRecord(uint8_t type, int32_t capacity, int32_t initialLength) : m_capacity(capacity) {
    auto const length = size_t(std::clamp<int64_t>(initialLength, 0, kMostPayload));
    m_bytes.assign(kHeadSize + length, kUnused);
    m_bytes[0] = type;
    putU16Be(m_bytes, 1, uint32_t(length));
}

int32_t EepromRecord::length() const {
    return int32_t(m_bytes.size() - kHeadSize);
}

std::span<uint8_t const> EepromRecord::bytes() const {
    return m_bytes;
}

std::span<uint8_t> EepromRecord::payload() {
    return std::span(m_bytes).subspan(kHeadSize);
}

bool EepromRecord::append(std::span<uint8_t const> bytes) {
    size_t const length = m_bytes.size() - kHeadSize;
    if (bytes.size() > kMostPayload - length)
        return false;
    m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
    putU16Be(m_bytes, 1, uint32_t(length + bytes.size()));
    return true;
}

void EepromRecord::setName(char const* name) {
    if (payload().size() < kNameField)
        return;
    std::string_view const text = std::string_view(name ? name : kNoName).substr(0, kNameLength);
    std::span<uint8_t> const field = payload().subspan(0, kNameField);
    std::fill(field.begin(), field.end(), uint8_t{0});
    std::copy(text.begin(), text.end(), field.begin());
}

std::string_view EepromRecord::name() const {
    return recordName(type(), payload());
}

std::string_view recordName(uint8_t type, std::span<uint8_t const> payload) {
    size_t const width = std::min(recordNameWidth(type), payload.size());
    std::string_view const field(reinterpret_cast<char const*>(payload.data()), width);
    return field.substr(0, field.find('\0'));
}

EepromRecord EepromNewRecord(uint8_t type, int32_t capacity, int32_t initialLength) {
    return {type, capacity, initialLength};
}

EepromRecord makeRegisterSet(uint8_t type, int32_t capacity, char const* name) {
    EepromRecord record = EepromNewRecord(type, capacity, kNameField);
    record.setName(name);
    return record;
}
