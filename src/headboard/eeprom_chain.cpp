#include "headboard/eeprom_chain.h"

#include "headboard/record_format.h"

#include <algorithm>
#include <array>
#include <string>

namespace kestra {

namespace {

constexpr std::array<uint8_t, 4> kMagic = {'V', 'Y', 'E', 'E'};
constexpr uint8_t kUsualVersion = 1;
constexpr int32_t kHeaderSize = 5;

// The image's bytes from an offset on, at most `count`; fewer at its end.
std::span<uint8_t const> bytesAt(HeadboardEeprom& eeprom, int64_t offset, int64_t count) {
    std::span<uint8_t const> const image = eeprom.image;
    auto const begin = std::min(size_t(offset), image.size());
    return image.subspan(begin, std::min(size_t(count), image.size() - begin));
}

// Type and length of the record at an offset; what lies outside of the image counts as erased.
struct RecordHead {
    EepromStatus status;
    uint8_t type;
    int32_t length;

    [[nodiscard]] int64_t size() const { return int64_t{length} + kRecordHead; }
};

RecordHead loadHead(HeadboardEeprom& eeprom, int64_t offset) {
    // Always all three bytes: the first may have come in behind a short record's name, the others not.
    EepromStatus const status = HeadboardEepromLoad(eeprom, int32_t(offset), kRecordHead);
    std::array<uint8_t, kRecordHead> head = {kErased, kErased, kErased};
    std::span<uint8_t const> const bytes = bytesAt(eeprom, offset, kRecordHead);
    std::copy(bytes.begin(), bytes.end(), head.begin());
    return {status, head[0], int32_t(getU16Be(head, 1))};
}

bool endsInside(HeadboardEeprom& eeprom, int64_t offset, RecordHead const& head) {
    return offset + head.size() < eeprom.imageSize();
}

// Loads what a record's name or text is taken from: of a register set the name and the kind of its first
// block of entries, of named data the name, of the others everything.
EepromStatus loadText(HeadboardEeprom& eeprom, int64_t offset, RecordHead const& head) {
    constexpr int32_t kRegisterSetBytes = kRecordHead + kRecordName + 1;
    constexpr int32_t kNamedDataBytes = kRecordHead + kNamedDataName;
    auto count = int32_t(head.size());
    if (recordPayload(head.type) == RecordPayload::RegisterSet)
        count = kRegisterSetBytes;
    else if (recordPayload(head.type) == RecordPayload::NamedData)
        count = kNamedDataBytes;
    return HeadboardEepromLoad(eeprom, int32_t(offset), count);
}

// kEepromOk when the record at the offset carries the name.
EepromStatus matchName(HeadboardEeprom& eeprom, int64_t offset, RecordHead const& head, char const* name) {
    if (!name || recordNameWidth(head.type) == 0)
        return kEepromOk;
    EepromStatus const status = loadText(eeprom, offset, head);
    if (status != kEepromOk)
        return status;
    std::string_view const found = recordName(head.type, bytesAt(eeprom, offset + kRecordHead, head.length));
    return equalWithoutCase(found, name) ? kEepromOk : kEepromNoRecord;
}

int32_t nthRecord(HeadboardEeprom& eeprom, int32_t type, char const* name, int32_t n) {
    // A search includes the record that it starts at, so searching on from a found one stays there: every n
    // gives the first of a type. All writers ask for 0.
    if (type != kAnyRecordType)
        return EepromFindRecord(eeprom, uint8_t(type), name, 0);
    int32_t offset = EepromNextRecord(eeprom, 0);
    for (int32_t i = 0; i < n && offset >= 0; ++i)
        offset = EepromNextRecord(eeprom, offset);
    return offset;
}

} // namespace

EepromStatus EepromFormat(HeadboardEeprom& eeprom, int32_t version) {
    std::array<uint8_t, kHeaderSize + 1> header{};
    std::copy(kMagic.begin(), kMagic.end(), header.begin());
    header[4] = version == -1 ? kUsualVersion : uint8_t(version);
    header[5] = kRecordEnd;
    return HeadboardEepromPut(eeprom, 0, int32_t(header.size()), header.data());
}

EepromStatus EepromCheckHeader(HeadboardEeprom& eeprom) {
    EepromStatus const status = HeadboardEepromLoad(eeprom, 0, kHeaderSize);
    if (status != kEepromOk)
        return status;
    std::span<uint8_t const> const magic = bytesAt(eeprom, 0, kMagic.size());
    return std::equal(kMagic.begin(), kMagic.end(), magic.begin(), magic.end()) ? kEepromOk
                                                                                : kEepromNotFormatted;
}

int32_t EepromFreeSpace(HeadboardEeprom& eeprom, int32_t* used) {
    if (used)
        *used = 0;
    int32_t const end = EepromFindRecord(eeprom, kRecordEnd, nullptr, 0);
    if (end == kEepromNotFormatted)
        return eeprom.deviceSize - kHeaderSize;
    if (end < 0)
        return end;
    if (used)
        *used = end - kHeaderSize;
    return eeprom.deviceSize - end;
}

int32_t EepromFindRecord(HeadboardEeprom& eeprom, uint8_t type, char const* name, int32_t start) {
    if (start < 0)
        return start;
    EepromStatus const status = EepromCheckHeader(eeprom);
    if (status != kEepromOk)
        return status;
    if (type == kRecordIdent)
        return 0;
    for (int64_t offset = std::max(start, kHeaderSize); offset < eeprom.imageSize();) {
        RecordHead const head = loadHead(eeprom, offset);
        if (head.status != kEepromOk)
            return head.status;
        if (head.type == type) {
            EepromStatus const match = matchName(eeprom, offset, head, name);
            if (match != kEepromNoRecord)
                return match == kEepromOk ? int32_t(offset) : match;
        }
        if (head.type == kRecordEnd)
            break;
        offset += head.size();
    }
    return kEepromNoRecord;
}

int32_t EepromNextRecord(HeadboardEeprom& eeprom, int32_t offset) {
    if (offset < 0)
        return offset;
    EepromStatus const status = EepromCheckHeader(eeprom);
    if (status != kEepromOk)
        return status;
    if (offset == 0)
        return kHeaderSize;
    if (offset >= eeprom.imageSize())
        return kEepromNoRecord;
    RecordHead const head = loadHead(eeprom, offset);
    if (head.status != kEepromOk)
        return head.status;
    bool const follows = head.type != kRecordEnd && endsInside(eeprom, offset, head);
    return follows ? int32_t(offset + head.size()) : kEepromNoRecord;
}

int32_t EepromReadRecord(HeadboardEeprom& eeprom, int32_t offset, std::span<uint8_t> buffer) {
    if (offset < 0)
        return offset;
    HeadboardEepromEnsureImage(eeprom);
    int64_t size = kHeaderSize;
    if (offset > 0) {
        if (offset < kHeaderSize || offset >= eeprom.imageSize())
            return kEepromFailed;
        RecordHead const head = loadHead(eeprom, offset);
        if (head.status != kEepromOk)
            return head.status;
        if (head.type == kRecordEnd)
            return kEepromNoRecord;
        if (!endsInside(eeprom, offset, head))
            return kEepromFailed;
        size = head.size();
    }
    if (!buffer.data())
        return int32_t(size);
    if (int64_t(buffer.size()) < size)
        return kEepromBufferTooSmall;
    EepromStatus const status = HeadboardEepromLoad(eeprom, offset, int32_t(size), buffer.data());
    return status == kEepromOk ? int32_t(size) : status;
}

int32_t EepromReadNth(HeadboardEeprom& eeprom, int32_t type, char const* name, int32_t n,
                      std::span<uint8_t> buffer) {
    return EepromReadRecord(eeprom, nthRecord(eeprom, type, name, n), buffer);
}

EepromStatus EepromAppendRecord(HeadboardEeprom& eeprom, EepromRecord const& record) {
    int32_t const end = EepromFindRecord(eeprom, kRecordEnd, nullptr, 0);
    if (end < 0)
        return EepromStatus(end);
    std::span<uint8_t const> const bytes = record.bytes();
    if (int64_t{end} + int64_t(bytes.size()) >= eeprom.deviceSize)
        return kEepromNoRoom;
    auto const size = int32_t(bytes.size());
    EepromStatus const status = HeadboardEepromPut(eeprom, end, size, bytes.data());
    return status == kEepromOk ? HeadboardEepromPut(eeprom, end + size, 1, &kErased) : status;
}

EepromStatus EepromDeleteRecord(HeadboardEeprom& eeprom, int32_t offset) {
    HeadboardEepromEnsureImage(eeprom);
    if (offset < kHeaderSize || offset >= eeprom.imageSize())
        return kEepromFailed;
    RecordHead const head = loadHead(eeprom, offset);
    if (head.status != kEepromOk)
        return head.status;
    if (head.type == kRecordEnd || !endsInside(eeprom, offset, head))
        return kEepromFailed;
    auto const rest = int32_t(offset + head.size());
    int32_t const end = EepromFindRecord(eeprom, kRecordEnd, nullptr, rest);
    if (end < 0)
        return EepromStatus(end);
    int32_t const count = end + 1 - rest;
    EepromStatus const status = HeadboardEepromLoad(eeprom, rest, count);
    if (status != kEepromOk)
        return status;
    // Not by the load: it leaves out the last byte of the image, where the chain may end.
    std::span<uint8_t const> const bytes = bytesAt(eeprom, rest, count);
    std::vector<uint8_t> const moved(bytes.begin(), bytes.end());
    return HeadboardEepromPut(eeprom, offset, int32_t(moved.size()), moved.data());
}

EepromStatus EepromDeleteNth(HeadboardEeprom& eeprom, int32_t type, char const* name, int32_t n) {
    int32_t const offset = nthRecord(eeprom, type, name, n);
    return offset < 0 ? EepromStatus(offset) : EepromDeleteRecord(eeprom, offset);
}

EepromStatus EepromReplaceRecord(HeadboardEeprom& eeprom, EepromRecord const& record) {
    std::string const name(record.name());
    bool const isNamed = recordNameWidth(record.type()) > 0;
    EepromStatus const deleted = EepromDeleteNth(eeprom, record.type(), isNamed ? name.c_str() : nullptr, 0);
    // Behind an older record that could not be read the new one would never be found.
    if (deleted != kEepromOk && deleted != kEepromNoRecord)
        return deleted;
    return EepromAppendRecord(eeprom, record);
}

std::string_view EepromRecordText(HeadboardEeprom& eeprom, int32_t offset) {
    HeadboardEepromEnsureImage(eeprom);
    if (offset < kHeaderSize || offset >= eeprom.imageSize())
        return {};
    RecordHead const head = loadHead(eeprom, offset);
    bool const hasText = recordPayload(head.type) != RecordPayload::Opaque;
    if (head.status != kEepromOk || !hasText || !endsInside(eeprom, offset, head))
        return {};
    if (loadText(eeprom, offset, head) != kEepromOk)
        return {};
    std::span<uint8_t const> const payload = bytesAt(eeprom, offset + kRecordHead, head.length);
    if (recordPayload(head.type) != RecordPayload::Text)
        return recordName(head.type, payload);
    std::string_view const text(reinterpret_cast<char const*>(payload.data()), payload.size());
    return text.substr(0, text.find('\0'));
}

EepromState probeEeprom(HeadboardEeprom& eeprom) {
    EepromStatus status = EepromCheckHeader(eeprom);
    if (status == kEepromNotFormatted) {
        status = EepromFormat(eeprom, -1);
        if (status == kEepromOk)
            status = HeadboardEepromFlush(eeprom);
        return status == kEepromOk ? EepromState::Present : EepromState::Absent;
    }
    if (status == kEepromOk)
        return EepromState::Present;
    return status == kEepromNoAnswer ? EepromState::Absent : EepromState::Unknown;
}

} // namespace kestra
