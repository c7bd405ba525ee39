#pragma once

#include "headboard/eeprom_chain.h"
#include "headboard/record_format.h"
#include "headboard/register_set.h"
#include "tests/support/fake_host.h"
#include "tests/support/fake_libraries.h"

#include <gtest/gtest.h>
#include <utility>

namespace kestra {
using Bytes = std::vector<uint8_t>;
enum class Path { Raw, Bridge, BusDescription };

/// A headboard whose EEPROM is reached in one of the three ways, with the library's calls in `host.log`, and
/// the operations on its EEPROM.
struct Headboard {
    explicit Headboard(Path path = Path::Raw) {
        fake.description.sensorKind = path == Path::Raw ? 33 : 71;
        fake.description.registerAddressWidth = 9; // the fewest bits without pages
        fake.description.registerDataWidth = 16;
        if (path == Path::Bridge)
            board.addBridge();
        if (path == Path::BusDescription)
            board.add("DMA_CTRL", 0, 0, 0x3110, 2);
        eeprom = HeadboardEepromCreate(fake.camera());
        host.log.clear();
    }

    EepromStatus load(int32_t offset, int32_t count) { return HeadboardEepromLoad(*eeprom, offset, count); }
    EepromStatus put(int32_t offset, Bytes const& bytes) {
        return HeadboardEepromPut(*eeprom, offset, int32_t(bytes.size()), bytes.data());
    }
    EepromStatus flush() { return HeadboardEepromFlush(*eeprom); }
    EepromStatus verify() { return HeadboardEepromVerify(*eeprom, 0, -1); }

    void format() { ASSERT_EQ(EepromFormat(*eeprom, -1), kEepromOk); }
    EepromStatus append(EepromRecord const& record) { return EepromAppendRecord(*eeprom, record); }
    int32_t find(uint8_t type, char const* name = nullptr, int32_t start = 0) {
        return EepromFindRecord(*eeprom, type, name, start);
    }
    int32_t end() { return find(kRecordEnd); }
    /// The bytes of a record where it stands; empty when it cannot be read.
    [[nodiscard]] Bytes record(int32_t offset) {
        Bytes bytes(size_t(std::max(EepromReadRecord(*eeprom, offset, {}), 0)));
        return EepromReadRecord(*eeprom, offset, bytes) < 0 ? Bytes() : bytes;
    }
    /// The entries of a register set.
    [[nodiscard]] std::vector<RegisterEntry> entries(std::span<uint8_t const> record) {
        std::vector<RegisterEntry> found;
        for (RegisterEntry entry; EepromGetEntry(*eeprom, record, int32_t(found.size()), entry) == kEepromOk;)
            found.push_back(entry);
        return found;
    }

    /// The device's bytes from an offset on.
    [[nodiscard]] Bytes onDevice(ptrdiff_t offset, ptrdiff_t count) const {
        return {board.device.begin() + offset, board.device.begin() + offset + count};
    }
    /// The calls so far, with "; " between them; the log then begins anew.
    [[nodiscard]] std::string takeLog() {
        std::string joined;
        for (std::string const& call : std::exchange(host.log, {}))
            joined += (joined.empty() ? "" : "; ") + call;
        return joined;
    }

    FakeHost host;
    FakeLibraries fake;
    FakeHeadboard& board = fake.headboard;
    EepromShare eeprom;
};

/// A record of any type with these payload bytes.
inline EepromRecord recordOf(uint8_t type, Bytes const& payload) {
    EepromRecord record = EepromNewRecord(type, 8112, 0);
    EXPECT_TRUE(record.append(payload));
    return record;
}

inline EepromRecord registerSet(char const* name, int32_t capacity = 8112) {
    return makeRegisterSet(kRecordPga, capacity, name);
}
} // namespace kestra
