#include "headboard/register_record.h"
#include "tests/headboard/headboard_fixture.h"

#include <functional>
#include <memory>

namespace {

// Operations as the pages make them, on a device with two records.
using Operation = std::function<int32_t(HeadboardEeprom const&)>;
struct NamedOperation {
    char const* name;
    Operation run;
};

std::vector<NamedOperation> operations() {
    auto const record = [] { return makeRegisterSet(kRecordPga, 8112, "New"); };
    return {
        {"load", [](auto const& e) { return HeadboardEepromLoad(e, 0, 200); }},
        {"flush",
         [](auto const& e) {
             int32_t const status = EepromFormat(e, 3);
             return status == kEepromOk ? HeadboardEepromFlush(e) : status;
         }},
        {"find", [](auto const& e) { return EepromFindRecord(e, kRecordPga, "second", 0); }},
        {"free space", [](auto const& e) { return EepromFreeSpace(e); }},
        {"read", [](auto const& e) { return EepromReadNth(e, kAnyRecordType, nullptr, 1, {}); }},
        {"append", [=](auto const& e) { return EepromAppendRecord(e, record()); }},
        {"replace", [=](auto const& e) { return EepromReplaceRecord(e, record()); }},
        {"delete", [](auto const& e) { return EepromDeleteNth(e, kRecordPga, "second", 0); }},
        {"text", [](auto const& e) { return int32_t(EepromRecordText(e, 5).size()); }},
        {"verify",
         [](auto const& e) {
             int32_t const status = HeadboardEepromLoad(e, 0, 64);
             return status == kEepromOk ? HeadboardEepromVerify(e, 0, -1) : status;
         }},
        {"save registers", [](auto const& e) { return saveShadingRegisters(e, "second", {}); }},
    };
}

struct Device : Headboard {
    explicit Device(Path path) : Headboard(path) {
        Headboard::board.add("P_GR_P0Q0", 0, 0, 0x3600, 2, 7);
        Headboard::board.add("POLY_SC_ENABLE", 0, 0, 0x3780, 2, 1);
        Headboard::board.addBitfield("POLY_SC_ENABLE", "ENABLE", 1);
        // Written past the paths, for the bridge loses bytes.
        EXPECT_EQ(EepromFormat(eeprom, -1), kEepromOk);
        EXPECT_EQ(EepromAppendRecord(eeprom, makeRegisterSet(kRecordPga, 8112, "first")), kEepromOk);
        EXPECT_EQ(EepromAppendRecord(eeprom, makeRegisterSet(kRecordPga, 8112, "second")), kEepromOk);
        std::copy(eeprom->image.begin(), eeprom->image.end(), board.device.begin());
        HeadboardEepromRelease(eeprom);
    }
};

enum class Interruption { None, Delete, Replace, Release };

// Runs an operation on the process-wide EEPROM and interrupts it inside the library call of that number.
// False when the operation made fewer calls.
bool runInterrupted(Path path, Operation const& operation, Interruption what, size_t call, int32_t& result) {
    Device device(path);
    auto processWide = std::make_unique<HeadboardEeprom>(device.eeprom);
    device.eeprom = HeadboardEeprom();
    size_t calls = 0;
    device.host.onCall = [&](std::string const&) {
        if (calls++ != call)
            return;
        if (what == Interruption::Delete)
            processWide.reset();
        else if (what == Interruption::Replace)
            processWide = std::make_unique<HeadboardEeprom>(HeadboardEepromCreate(nullptr));
        else if (what == Interruption::Release)
            HeadboardEepromRelease(*processWide);
    };
    result = operation(HeadboardEeprom(*processWide));
    device.host.onCall = nullptr;
    return calls > call;
}

TEST(Reentry, OperationOutlivesItsEeprom) {
    int cases = 0;
    for (Path const path : kPaths)
        for (auto const& [name, run] : operations()) {
            int32_t expected = 0;
            (void)runInterrupted(path, run, Interruption::None, 0, expected);
            // Every call at first, then samples: the record builder asks for each of its registers.
            for (size_t call = 0;; call += call < 100 ? 1 : 41) {
                int32_t deleted = 0, replaced = 0, released = 0;
                bool const reached = runInterrupted(path, run, Interruption::Delete, call, deleted);
                (void)runInterrupted(path, run, Interruption::Replace, call, replaced);
                (void)runInterrupted(path, run, Interruption::Release, call, released);
                EXPECT_EQ(deleted, expected) << name << ", call " << call;
                EXPECT_EQ(replaced, expected) << name << ", call " << call;
                ++cases;
                if (!reached)
                    break;
            }
        }
    EXPECT_GT(cases, 300);
}

// A direct call on the process-wide object, without a copy of the caller's.
TEST(Reentry, OperationHoldsAShareOfItsOwn) {
    Device device(Path::Raw);
    auto processWide = std::make_unique<HeadboardEeprom>(device.eeprom);
    device.eeprom = HeadboardEeprom();
    device.host.onCall = [&](std::string const&) { processWide.reset(); };
    EXPECT_EQ(EepromFindRecord(*processWide, kRecordPga, "second", 0), 17);
    EXPECT_EQ(processWide, nullptr);
}

TEST(Reentry, ByteChangedDuringItsWriteStaysChanged) {
    Headboard h;
    uint8_t const first[] = {1, 2}, second[] = {3};
    ASSERT_EQ(HeadboardEepromPut(h.eeprom, 0, 2, first), kEepromOk);
    h.host.onCall = [&](std::string const& call) {
        if (call.starts_with("writeBus")) {
            EXPECT_EQ(HeadboardEepromPut(h.eeprom, 1, 1, second), kEepromOk);
        }
    };
    EXPECT_EQ(HeadboardEepromFlush(h.eeprom), kEepromOk);
    h.host.onCall = nullptr;
    EXPECT_EQ(h.eeprom->state[0], ByteState::Current);
    EXPECT_EQ(h.eeprom->state[1], ByteState::Changed);
    EXPECT_EQ(HeadboardEepromFlush(h.eeprom), kEepromOk);
    EXPECT_EQ(h.board.device[1], 3);
}

} // namespace
