#include "hardening/power_cuts/random_save.h"

#include "headboard/eeprom_chain.h"
#include "headboard/record_format.h"
#include "headboard/register_set.h"
#include "tests/support/fake_headboard.h"

#include <algorithm>
#include <random>
#include <string>

using namespace kestra;

namespace power_cuts {
namespace {
constexpr int32_t kCapacity = 8112;
constexpr size_t kStoreSize = 8176; // behind it lie the bytes that say what the headboard is

class Dice {
public:
    explicit Dice(uint32_t seed) : m_random(seed) {}
    /// 0 to `count` - 1. Not by a distribution of the library: those differ from system to system.
    uint32_t below(uint32_t count) { return uint32_t(m_random() % count); }
    uint32_t between(uint32_t least, uint32_t most) { return least + below(most - least + 1); }

private:
    std::mt19937 m_random;
};

EepromRecord textRecord(uint8_t type, std::string const& text) {
    EepromRecord record = EepromNewRecord(type, kCapacity, 0);
    (void)record.append({reinterpret_cast<uint8_t const*>(text.c_str()), text.size() + 1});
    return record;
}

EepromRecord randomText(Dice& dice, uint8_t type) {
    std::string text(dice.between(1, 24), ' ');
    std::ranges::generate(text, [&] { return char('0' + dice.below(75)); });
    return textRecord(type, text);
}

EepromRecord timeStamp(Dice& dice) {
    std::string const minute = std::to_string(dice.between(10, 59));
    return textRecord(kRecordTimeStamp, "2024/05/31 23:" + minute + ":07");
}

// The coefficients of a sensor's shading or colour correction, then a few switches.
EepromRecord registerSet(Dice& dice, uint8_t type, char const* name, uint32_t count) {
    EepromShare const noDevice = HeadboardEepromCreate(nullptr);
    EepromRecord record = makeRegisterSet(type, kCapacity, name);
    RegisterEntry entry;
    for (uint32_t i = 0; i < count; ++i) {
        entry.address = 0x3600 + 2 * i;
        entry.value = dice.below(0x10000);
        (void)EepromAddEntry(*noDevice, record, entry);
    }
    entry.mask = 0x8000;
    entry.value = 1;
    for (uint32_t i = dice.below(3); i > 0; --i)
        (void)EepromAddEntry(*noDevice, record, entry);
    return record;
}

EepromRecord stateLines(Dice& dice) {
    EepromRecord record = makeRegisterSet(kRecordSwPga, kCapacity, "Lens Correction");
    for (char const* const colour : {"Red", "Green1", "Green2", "Blue"})
        (void)EepromAddLine(record,
                            std::string("Lens Curve ") + colour + ',' + std::to_string(dice.below(1000)));
    return record;
}

EepromRecord customerData(Dice& dice) {
    EepromRecord record = EepromNewRecord(kRecordCustomerData, kCapacity, int32_t(dice.between(1, 200)));
    std::ranges::generate(record.payload(), [&] { return uint8_t(dice.below(256)); });
    return record;
}

// A polynomial correction has about 120 registers, a table of gains more; a sensor's own set keeps its size
// from save to save, so sizes repeat.
Save randomSave(Dice& dice) {
    constexpr char const* kLabels[] = {"FACTORY", "Lens Correction", "A"};
    constexpr uint32_t kCounts[] = {40, 106, 118, 118, 118, 242};
    switch (dice.below(10)) {
    case 0:
        return {randomText(dice, kRecordHeadboardId)};
    case 1:
        return {randomText(dice, kRecordLensType)};
    case 2:
        return {registerSet(dice, kRecordCcm, nullptr, dice.between(12, 40))};
    case 3:
        return {dice.below(2) == 0 ? stateLines(dice) : customerData(dice)};
    default:
        break;
    }
    char const* const label = kLabels[dice.below(std::size(kLabels))];
    Save save = {registerSet(dice, kRecordPga, label, kCounts[dice.below(std::size(kCounts))])};
    if (label == kLabels[0])
        save.insert(save.begin(), timeStamp(dice));
    return save;
}
} // namespace

int32_t store(EepromShare const& eeprom, Save const& save) {
    for (EepromRecord const& record : save) {
        int32_t const status = EepromReplaceRecord(*eeprom, record);
        if (status != kEepromOk)
            return status;
    }
    return HeadboardEepromFlush(*eeprom);
}

Scene randomScene(uint32_t number) {
    Dice dice(number);
    FakeHeadboard board(simulator::formattedContents());
    EepromShare const eeprom = HeadboardEepromCreate(board.camera());
    for (uint32_t saves = dice.between(1, 14); saves > 0; --saves)
        (void)store(eeprom, randomSave(dice));
    Scene scene{board.device, randomSave(dice)};
    auto const identity = std::span(scene.before).subspan(kStoreSize);
    std::ranges::generate(identity, [&] { return uint8_t(dice.below(256)); });
    return scene;
}
} // namespace power_cuts
