#include "headboard/eeprom_chain.h"

#include "headboard/record_format.h"

#include <algorithm>
#include <array>
#include <string>

namespace kestra {
namespace {
constexpr std::array<uint8_t, 4> kMagic = {'V', 'Y', 'E', 'E'};
constexpr int32_t kUsualVersion = 1;
constexpr int32_t kHeaderSize = 5;

// The image's bytes from an offset on, at most `count`; fewer at its end. Loading them leaves out the image's
// last byte, where the chain may end.
std::span<uint8_t const> bytesAt(HeadboardEeprom& eeprom, int64_t offset, int64_t count) {
    std::span<uint8_t const> const image = eeprom.image;
    auto const begin = std::min(size_t(offset), image.size());
    return image.subspan(begin, std::min(size_t(count), image.size() - begin));
}

// A record's place as its head tells it; what lies outside of the image counts as erased.
struct RecordHead {
    EepromStatus status;
    int64_t offset;
    uint8_t type = kRecordEnd;
    int32_t length = 0;

    [[nodiscard]] int64_t end() const { return offset + kRecordHead + length; }
};

RecordHead loadHead(HeadboardEeprom& eeprom, int64_t offset) {
    // Always all three bytes: the first may have come in behind a short record's name, the others not.
    EepromStatus const status = HeadboardEepromLoad(eeprom, int32_t(offset), kRecordHead);
    std::array<uint8_t, kRecordHead> head = {kErased, kErased, kErased};
    std::ranges::copy(bytesAt(eeprom, offset, kRecordHead), head.begin());
    return {status, offset, head[0], int32_t(getU16Be(head, 1))};
}

// The head of a record that lies in the image as a whole; else its status is a failure, `kEepromNoRecord` for
// the end of the chain.
RecordHead loadWholeHead(HeadboardEeprom& eeprom, int32_t offset) {
    HeadboardEepromEnsureImage(eeprom);
    if (offset < kHeaderSize || offset >= eeprom.imageSize())
        return {kEepromFailed, offset};
    RecordHead head = loadHead(eeprom, offset);
    if (head.status == kEepromOk && head.type == kRecordEnd)
        head.status = kEepromNoRecord;
    else if (head.status == kEepromOk && head.end() >= eeprom.imageSize())
        head.status = kEepromFailed;
    return head;
}

// Loads the name or text of a record into `text`: of a register set the name and the kind of its first block
// of entries, of named data the name, of the others everything.
EepromStatus loadText(HeadboardEeprom& eeprom, RecordHead const& head, std::string_view& text) {
    RecordPayload const payload = recordPayload(head.type);
    int64_t const count = payload == RecordPayload::RegisterSet ? kRecordHead + kRecordName + 1
                          : payload == RecordPayload::NamedData ? kRecordHead + kNamedDataName
                                                                : head.end() - head.offset;
    EepromStatus const status = HeadboardEepromLoad(eeprom, int32_t(head.offset), int32_t(count));
    if (status == kEepromOk)
        text = recordText(head.type, bytesAt(eeprom, head.offset + kRecordHead, head.length));
    return status;
}

// kEepromOk when the record carries the name.
EepromStatus matchName(HeadboardEeprom& eeprom, RecordHead const& head, char const* name) {
    if (!name || recordNameWidth(head.type) == 0)
        return kEepromOk;
    std::string_view found;
    EepromStatus const status = loadText(eeprom, head, found);
    return status != kEepromOk || equalWithoutCase(found, name) ? status : kEepromNoRecord;
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
    std::vector<uint8_t> header(kMagic.begin(), kMagic.end());
    header.insert(header.end(), {uint8_t(version == -1 ? kUsualVersion : version), kRecordEnd});
    return HeadboardEepromPut(eeprom, 0, int32_t(header.size()), header.data());
}

EepromStatus EepromCheckHeader(HeadboardEeprom& eeprom) {
    EepromStatus const status = HeadboardEepromLoad(eeprom, 0, kHeaderSize);
    bool const isOther = !std::ranges::equal(bytesAt(eeprom, 0, kMagic.size()), kMagic);
    return status == kEepromOk && isOther ? kEepromNotFormatted : status;
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
    int32_t const checked = start < 0 ? start : EepromCheckHeader(eeprom);
    if (checked != kEepromOk)
        return checked;
    if (type == kRecordIdent)
        return 0;
    for (int64_t offset = std::max(start, kHeaderSize); offset < eeprom.imageSize();) {
        RecordHead const head = loadHead(eeprom, offset);
        if (head.status != kEepromOk)
            return head.status;
        EepromStatus const match = head.type == type ? matchName(eeprom, head, name) : kEepromNoRecord;
        if (match != kEepromNoRecord)
            return match == kEepromOk ? int32_t(offset) : match;
        if (head.type == kRecordEnd)
            break;
        offset = head.end();
    }
    return kEepromNoRecord;
}

int32_t EepromNextRecord(HeadboardEeprom& eeprom, int32_t offset) {
    int32_t const checked = offset < 0 ? offset : EepromCheckHeader(eeprom);
    if (checked != kEepromOk)
        return checked;
    if (offset == 0)
        return kHeaderSize;
    if (offset >= eeprom.imageSize())
        return kEepromNoRecord;
    RecordHead const head = loadHead(eeprom, offset);
    if (head.status != kEepromOk)
        return head.status;
    bool const follows = head.type != kRecordEnd && head.end() < eeprom.imageSize();
    return follows ? int32_t(head.end()) : kEepromNoRecord;
}

int32_t EepromReadRecord(HeadboardEeprom& eeprom, int32_t offset, std::span<uint8_t> buffer) {
    if (offset < 0)
        return offset;
    HeadboardEepromEnsureImage(eeprom);
    int32_t size = kHeaderSize;
    if (offset > 0) {
        RecordHead const head = loadWholeHead(eeprom, offset);
        if (head.status != kEepromOk)
            return head.status;
        size = int32_t(head.end() - offset);
    }
    if (!buffer.data())
        return size;
    if (buffer.size() < size_t(size))
        return kEepromBufferTooSmall;
    EepromStatus const status = HeadboardEepromLoad(eeprom, offset, size, buffer.data());
    return status == kEepromOk ? size : status;
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
    RecordHead const head = loadWholeHead(eeprom, offset);
    if (head.status != kEepromOk)
        return head.status == kEepromNoRecord ? kEepromFailed : head.status;
    auto const rest = int32_t(head.end());
    int32_t const end = EepromFindRecord(eeprom, kRecordEnd, nullptr, rest);
    if (end < 0)
        return EepromStatus(end);
    EepromStatus const status = HeadboardEepromLoad(eeprom, rest, end + 1 - rest);
    if (status != kEepromOk)
        return status;
    std::span<uint8_t const> const bytes = bytesAt(eeprom, rest, end + 1 - rest);
    std::vector<uint8_t> const moved(bytes.begin(), bytes.end());
    return HeadboardEepromPut(eeprom, offset, int32_t(moved.size()), moved.data());
}

EepromStatus EepromDeleteNth(HeadboardEeprom& eeprom, int32_t type, char const* name, int32_t n) {
    int32_t const offset = nthRecord(eeprom, type, name, n);
    return offset < 0 ? EepromStatus(offset) : EepromDeleteRecord(eeprom, offset);
}

EepromStatus EepromReplaceRecord(HeadboardEeprom& eeprom, EepromRecord const& record) {
    std::string const name(record.name());
    EepromStatus const deleted = EepromDeleteNth(eeprom, record.type(), name.c_str(), 0);
    // Behind an older record that could not be read the new one would never be found.
    if (deleted != kEepromOk && deleted != kEepromNoRecord)
        return deleted;
    return EepromAppendRecord(eeprom, record);
}

std::string_view EepromRecordText(HeadboardEeprom& eeprom, int32_t offset) {
    RecordHead const head = loadWholeHead(eeprom, offset);
    std::string_view text;
    if (head.status == kEepromOk && recordPayload(head.type) != RecordPayload::Opaque)
        (void)loadText(eeprom, head, text);
    return text;
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
