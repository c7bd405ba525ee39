#include "tests/pictara/fake_sensor.h"

namespace {

FakeSensor* current = nullptr;

constexpr int kNoAnswer = 12;
constexpr int kBadArgument = 1;
constexpr uint32_t kModeAddressBits = 1, kModeDataBits = 2;
constexpr uint32_t kEnableMask = 0x8000; // of the one bitfield that every register has

// The one device on the bus: addresses of 16 bits, bytes.
int answerOfBus(uint32_t device) {
    if (device != 0xA0)
        return kNoAnswer;
    bool const fits = current->m_modes[kModeAddressBits] == 16 && current->m_modes[kModeDataBits] == 8;
    return fits ? 0 : kBadArgument;
}

} // namespace

FakeSensor::FakeSensor() {
    current = this;
}

FakeSensor::~FakeSensor() {
    current = nullptr;
}

void FakeSensor::add(std::string const& name, uint32_t space, uint32_t id, uint32_t address) {
    m_values[name] = 0;
    vy_RegisterDescription& reg = m_descriptions[name];
    reg = {nullptr, space, id, address, 16, 16, 2, 0, 0};
    reg.name = m_descriptions.find(name)->first.c_str();
}

extern "C" {

int vy_ReadSensorRegStr(vy_Camera*, char const* reg, char const* bitfield, uint32_t* value) {
    auto const found = current->m_values.find(reg);
    if (found == current->m_values.end())
        return -1;
    *value = *bitfield ? (found->second & kEnableMask) != 0 : found->second;
    return 0;
}

int vy_WriteSensorRegStr(vy_Camera*, char const* reg, char const* bitfield, uint32_t value) {
    auto const found = current->m_values.find(reg);
    if (found == current->m_values.end() || (*bitfield && std::string(bitfield) != "ENABLE"))
        return -1;
    found->second = *bitfield ? (found->second & ~kEnableMask) | (value ? kEnableMask : 0) : value;
    return 0;
}

vy_RegisterDescription const* vy_FindRegisterAddr(vy_Camera*, uint32_t address, uint32_t space, uint32_t id) {
    for (auto const& [name, reg] : current->m_descriptions)
        if (reg.address == address && reg.addressSpace == space && reg.id == id)
            return &reg;
    return nullptr;
}

int vy_ReadSensorReg(vy_Camera*, vy_RegisterDescription const* reg, uint32_t* value) {
    *value = current->m_values.at(reg->name);
    return 0;
}

int vy_WriteSensorReg(vy_Camera*, vy_RegisterDescription const* reg, uint32_t value) {
    current->m_values.at(reg->name) = value;
    return 0;
}

int vy_setMode(vy_Camera*, uint32_t mode, uint32_t value) {
    current->m_modes[mode] = value;
    return 0;
}

int vy_readRegisters(vy_Camera*, uint32_t device, uint32_t start, uint32_t count, uint32_t* words) {
    if (int const answer = answerOfBus(device); answer != 0)
        return answer;
    for (uint32_t i = 0; i < count; ++i)
        words[i] = current->m_busBytes[start + i];
    return 0;
}

int vy_writeRegisters(vy_Camera*, uint32_t device, uint32_t start, uint32_t count, uint32_t const* words) {
    if (int const answer = answerOfBus(device); answer != 0)
        return answer;
    for (uint32_t i = 0; i < count; ++i)
        current->m_busBytes[start + i] = uint8_t(words[i]);
    return 0;
}

} // extern "C"
