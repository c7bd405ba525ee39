// Contents of the headboard's EEPROM, however broken, under changes and faults. Beside no crash and no hang:
// an operation changes the chain of records as it says and no further, and what a flush reported as written
// is on the device.

#include "hardening/fuzz/fuzz_target.h"
#include "headboard/eeprom_chain.h"
#include "headboard/record_format.h"
#include "headboard/register_set.h"
#include "tests/support/fake_headboard.h"
#include "tests/support/input_reader.h"

#include <optional>
#include <utility>

using namespace kestra;

namespace {
enum Path : uint8_t { kRaw, kBus, kBridge };
using Bytes = std::vector<uint8_t>;
/// The records of a chain, byte for byte; empty for a broken one.
using Chain = std::optional<std::vector<Bytes>>;

constexpr size_t kUsedSize = 8176;
constexpr int32_t kCapacity = 1024;

vy_SensorDescription description{};

// A reader of its own, so that it can disagree with the one under test.
Chain chainOf(Bytes const& bytes) {
    if (bytes.size() < kUsedSize || !std::equal(bytes.begin(), bytes.begin() + 4, "VYEE"))
        return std::nullopt;
    std::vector<Bytes> records;
    for (size_t at = 5; at + 1 < kUsedSize;) {
        if (bytes[at] == kRecordEnd)
            return records;
        size_t const next = at + 3 + (size_t{bytes[at + 1]} << 8 | bytes[at + 2]);
        if (at + 3 > kUsedSize || next >= kUsedSize)
            return std::nullopt;
        records.emplace_back(bytes.begin() + ptrdiff_t(at), bytes.begin() + ptrdiff_t(next));
        at = next;
    }
    return records; // the last byte is never read: it counts as erased
}

#ifdef __clang__
[[clang::no_sanitize("address", "undefined", "coverage")]]
#endif
// Instrumented, this loop would take most of a run.
void overlay(uint8_t* bytes, uint8_t const* image, ByteState const* state, size_t size) {
    for (size_t i = 0; i < size; ++i)
        bytes[i] = state[i] == ByteState::NotRead ? bytes[i] : image[i];
}

class Session {
public:
    Session(FakeHeadboard& board, InputReader& input)
        : m_board(board),
          m_path(std::array{kRaw, kRaw, kRaw, kRaw, kRaw, kRaw, kBus, kBridge}[input.byte() % 8]) {
        constexpr DeviceFault kFaults[] = {DeviceFault::None,          DeviceFault::None,
                                           DeviceFault::NoAcknowledge, DeviceFault::TransportFailed,
                                           DeviceFault::IgnoredWrite,  DeviceFault::BusyForEver};
        m_fault = input.pick(kFaults);
        bool const lasts = input.chance(2);
        board.plan(m_fault, input.byte(), lasts);
        board.clock.advance(std::chrono::seconds(1)); // the cycle of an earlier write is over
        board.registers.clear();
        if (m_path == kBridge)
            board.addBridge();
        if (m_path == kBus)
            board.add("DMA_CTRL", 0, 0, 0x3110, 2);
        description.sensorKind = m_path == kRaw ? 33 : 71;
        description.registerAddressWidth = description.registerDataWidth = 16;
        m_eeprom = HeadboardEepromCreate(board.camera());
    }

    void step(std::array<uint8_t, 4> const& bytes) {
        auto const [what, type, length, fill] = bytes;
        auto record = [&, t = type, l = length, f = fill] {
            EepromRecord made = recordPayload(t) == RecordPayload::RegisterSet
                                    ? makeRegisterSet(t, kCapacity, "Fuzz")
                                    : EepromNewRecord(t, kCapacity, 0);
            (void)made.append(Bytes(l, f));
            return made;
        };
        switch (what % 8) {
        case 0:
            return readAll();
        case 1:
            // An end in the middle is no record.
            return type == kRecordEnd ? readAll() : append(record());
        case 2:
            return type == kRecordEnd ? readAll() : replace(record());
        case 3:
            return remove(type == kRecordIdent ? 0 : type, fill);
        case 4:
            return remove(0, fill);
        case 5:
            return flush();
        case 6:
            return HeadboardEepromRelease(*m_eeprom);
        default:
            MUST_HOLD(EepromFreeSpace(*m_eeprom) <= int32_t(kUsedSize));
            MUST_HOLD(EepromFindRecord(*m_eeprom, type, "Fuzz", 0) < int32_t(kUsedSize));
            if (type == length)
                (void)EepromFormat(*m_eeprom, fill);
        }
    }

private:
    void readAll() {
        Bytes bytes;
        int steps = 0;
        for (int32_t at = EepromNextRecord(*m_eeprom, 0); at >= 0; at = EepromNextRecord(*m_eeprom, at)) {
            MUST_HOLD(++steps < int(kUsedSize / 3));
            int32_t const size = std::max(EepromReadRecord(*m_eeprom, at, {}), 0);
            MUST_HOLD(size < int32_t(kUsedSize) - at);
            bytes.resize(size_t(size));
            (void)EepromReadRecord(*m_eeprom, at, bytes);
            // Some readers get a record without its end.
            bytes = Bytes(bytes.begin(), bytes.end() - (steps % 2 == 0 ? std::min(size, steps) : 0));
            (void)EepromRecordText(*m_eeprom, at);
            RegisterEntry entry;
            std::string line;
            for (int32_t const n : {0, 3, INT32_MAX}) {
                (void)EepromGetEntry(*m_eeprom, bytes, n, entry);
                (void)EepromGetLine(bytes, n, &line);
            }
        }
    }

    void append(EepromRecord const& record) {
        Chain expected = chainOf(known());
        int32_t const status = EepromAppendRecord(*m_eeprom, record);
        MUST_HOLD(expected || status < 0);
        if (status == kEepromOk)
            expected->emplace_back(record.bytes().begin(), record.bytes().end());
        else
            MUST_HOLD(status == kEepromNoRoom || m_fault != DeviceFault::None || !expected);
        MUST_HOLD(chainOf(known()) == expected);
    }

    void remove(uint8_t type, int32_t n) {
        bool const isAny = type == 0;
        Chain expected = chainOf(known());
        int32_t const status = EepromDeleteNth(*m_eeprom, isAny ? kAnyRecordType : type, nullptr, n);
        MUST_HOLD(expected ? status <= kEepromOk : status < 0);
        if (status == kEepromOk) {
            auto const found = std::find_if(expected->begin(), expected->end(), [&](Bytes const& record) {
                return isAny ? n-- == 0 : record[0] == type;
            });
            MUST_HOLD(found != expected->end());
            expected->erase(found);
        }
        MUST_HOLD(chainOf(known()) == expected);
    }

    void replace(EepromRecord const& record) {
        Chain const before = chainOf(known());
        int32_t const status = EepromReplaceRecord(*m_eeprom, record);
        Chain after = chainOf(known());
        if (status == kEepromOk) {
            MUST_HOLD(before && after && !after->empty() &&
                      std::ranges::equal(after->back(), record.bytes()));
            after->pop_back();
        }
        if (after == before)
            return;
        // One record at most has gone, and it was of this type.
        MUST_HOLD(before && after && after->size() + 1 == before->size());
        auto const gone = std::mismatch(before->begin(), before->end(), after->begin(), after->end()).first;
        MUST_HOLD((*gone)[0] == record.type());
        MUST_HOLD(
            std::equal(gone + 1, before->end(), after->begin() + (gone - before->begin()), after->end()));
    }

    void flush() {
        Bytes wanted = known();
        bool const isWritten = HeadboardEepromFlush(*m_eeprom) == kEepromOk;
        bool const isVerified = isWritten && HeadboardEepromVerify(*m_eeprom, 0, -1) == kEepromOk;
        // The bridge writes one byte of two, a pair of the bus path may wrap in a page of the device, and a
        // device may ignore a write: there only reading again tells, and only of bytes that the image holds.
        bool const flushTells = m_path == kRaw && m_fault != DeviceFault::IgnoredWrite;
        if (!isVerified && !(isWritten && flushTells))
            return;
        if (m_path != kRaw) {
            Bytes const held = std::exchange(wanted, {m_board.device.begin(), m_board.device.end()});
            overlay(wanted.data(), held.data(), m_eeprom->state.data(), m_eeprom->image.size());
        }
        MUST_HOLD(std::equal(wanted.begin(), wanted.begin() + kUsedSize - 1, m_board.device.begin()));
    }

    // The device's bytes with what the image knows better.
    [[nodiscard]] Bytes known() const {
        Bytes bytes(m_board.device.begin(), m_board.device.begin() + kUsedSize);
        bytes.back() = 0xFF;
        overlay(bytes.data(), m_eeprom->image.data(), m_eeprom->state.data(), m_eeprom->image.size());
        return bytes;
    }

    FakeHeadboard& m_board;
    EepromShare m_eeprom;
    Path m_path;
    DeviceFault m_fault;
};
} // namespace

int LLVMFuzzerInitialize(int*, char***) {
    Veyra2 table;
    FakeHeadboard::fillIn(table);
    table.vy_SensorInfo = [](vy_Camera*) -> vy_SensorDescription const* { return &description; };
    installVeyra2(table);
    return 0;
}

int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    static FakeHeadboard board;
    InputReader input({data, size});
    Session session(board, input);
    std::vector<std::array<uint8_t, 4>> steps(1 + input.byte() % 4);
    for (std::array<uint8_t, 4>& step : steps)
        step = {input.byte(), input.byte(), input.byte(), input.byte()};
    board.device.fill(0xFF);
    auto const content = input.rest(board.registers.empty() ? 1024 : 64);
    std::copy(content.begin(), content.end(), board.device.begin());
    for (std::array<uint8_t, 4> const& step : steps)
        session.step(step);
    return 0;
}
