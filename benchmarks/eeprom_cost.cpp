#include "benchmarks/eeprom_cost.h"

#include "tests/support/fake_libraries.h"
#include "tests/support/least_transfers.h"

#include <cstdlib>

using namespace kestra;

namespace {
struct Way {
    char const* name;
    uint32_t sensorKind;
    char const* reg; // that offers the way
    Transfer read, write;
};
constexpr Way kWays[] = {
    {"raw transfers", 33, nullptr, Transfer::RawRead, Transfer::RawWrite},
    {"bridge registers", 71, "IO_EEPROM_I2C_ADDR", Transfer::Pair, Transfer::Pair},
    {"bus description", 71, "DMA_CTRL", Transfer::Pair, Transfer::Pair},
};
// A calibration of a hundred registers; pairs at odd addresses would wrap at the end of a page.
constexpr int32_t kRecordOffset = 6;
constexpr int32_t kRecordSize = 472;

class Board {
public:
    explicit Board(Way const& way) : m_way(way) {
        m_libraries.description.sensorKind = way.sensorKind;
        if (way.read == Transfer::Pair && way.reg[0] == 'I')
            m_libraries.headboard.addBridge();
        else if (way.read == Transfer::Pair)
            m_libraries.headboard.add(way.reg, 0, 0, 0x3110, 2);
        eeprom = HeadboardEepromCreate(m_libraries.camera());
        HeadboardEepromEnsureImage(*eeprom);
    }

    template <typename Operation>
    EepromCost measure(char const* what, ByteState moved, Transfer transfer, size_t end,
                       Operation operation) {
        FakeHeadboard const& board = m_libraries.headboard;
        int64_t const least = leastTransfers(eeprom->state, moved, 0, end, transfer);
        int64_t const before = board.operations;
        auto const start = board.clock.now();
        if (operation() != kEepromOk)
            std::abort(); // the simulated device does not fail
        return {m_way.name, what, double(board.operations - before), double(least),
                std::chrono::duration<double>(board.clock.now() - start).count()};
    }

    EepromShare eeprom;

private:
    Way const& m_way;
    FakeLibraries m_libraries;
};
} // namespace

std::vector<EepromCost> measureEeprom() {
    std::vector<EepromCost> costs;
    for (Way const& way : kWays) {
        Board board(way);
        EepromShare const eeprom = board.eeprom;
        auto const size = size_t(eeprom->imageSize());
        costs.push_back(board.measure("load of the whole device", ByteState::NotRead, way.read, size - 1,
                                      [&] { return HeadboardEepromLoad(*eeprom, 0, eeprom->imageSize()); }));
        // Zeros, of which the bridge loses none.
        std::vector<uint8_t> const record(kRecordSize, 0);
        if (HeadboardEepromPut(*eeprom, kRecordOffset, kRecordSize, record.data()) != kEepromOk)
            std::abort();
        costs.push_back(board.measure("save of 472 bytes", ByteState::Changed, way.write, size,
                                      [&] { return HeadboardEepromFlush(*eeprom); }));
        costs.push_back(board.measure("verification of the whole device", ByteState::Current, way.read, size,
                                      [&] { return HeadboardEepromVerify(*eeprom, 0, -1); }));
    }
    return costs;
}
