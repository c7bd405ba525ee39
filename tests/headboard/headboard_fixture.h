#pragma once

#include "headboard/eeprom_chain.h"
#include "headboard/record_format.h"
#include "headboard/register_set.h"
#include "tests/support/fake_host.h"
#include "tests/support/fake_libraries.h"

#include <gtest/gtest.h>

namespace kestra {
enum class Path { Raw, Bridge, BusDescription };
constexpr Path kPaths[] = {Path::Raw, Path::Bridge, Path::BusDescription};

/// A headboard whose EEPROM is reached in one of the three ways, with the library's calls in `host.log`.
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

    /// Fills the image as if it had been read, so that nothing asks the device.
    void setImage(std::vector<uint8_t> const& bytes) {
        eeprom->image = bytes;
        eeprom->state.assign(bytes.size(), ByteState::Current);
    }

    FakeHost host;
    FakeLibraries fake;
    FakeHeadboard& board = fake.headboard;
    EepromShare eeprom;
};

/// A record of any type with these payload bytes.
inline EepromRecord recordOf(uint8_t type, std::vector<uint8_t> const& payload) {
    EepromRecord record = EepromNewRecord(type, 8112, 0);
    EXPECT_TRUE(record.append(payload));
    return record;
}

/// The bytes of a record where it stands in the EEPROM; empty when it cannot be read.
inline std::vector<uint8_t> readRecord(EepromShare const& eeprom, int32_t offset) {
    int32_t const size = EepromReadRecord(*eeprom, offset, {});
    std::vector<uint8_t> bytes(size_t(std::max(size, 0)));
    return EepromReadRecord(*eeprom, offset, bytes) < 0 ? std::vector<uint8_t>() : bytes;
}

/// The entries of a register set.
inline std::vector<RegisterEntry> entriesOf(EepromShare const& eeprom, std::vector<uint8_t> const& record) {
    std::vector<RegisterEntry> found;
    RegisterEntry entry;
    while (EepromGetEntry(*eeprom, record, int32_t(found.size()), entry) == kEepromOk)
        found.push_back(entry);
    return found;
}

inline std::vector<uint8_t> bytesOf(EepromRecord const& record) {
    return {record.bytes().begin(), record.bytes().end()};
}
} // namespace kestra
