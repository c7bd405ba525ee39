#include "common/host.h"

#include <array>

namespace kestra {

namespace {

// How the headboard's devices are addressed, in bits.
constexpr uint32_t kBusAddressBits = 16;
constexpr uint32_t kBusDataBits = 8;

} // namespace

uint32_t Host::readRegister(char const* reg, char const* bitfield) const {
    return m_services.readRegister ? m_services.readRegister(reg, bitfield, 1) : 0;
}

void Host::writeRegister(char const* reg, char const* bitfield, uint32_t value) const {
    if (m_services.writeRegister)
        m_services.writeRegister(reg, bitfield, value);
}

void Host::writeListEntry(uint32_t id, uint32_t address, uint32_t value) const {
    if (m_services.writeListEntry)
        m_services.writeListEntry(address, 0, id, 0, value);
}

uint32_t Host::readBusByte(uint32_t device, uint32_t address) const {
    return m_services.readBusByte ? m_services.readBusByte(device, address, kBusAddressBits, kBusDataBits)
                                  : 0;
}

void Host::writeBusByte(uint32_t device, uint32_t address, uint8_t value) const {
    if (m_services.writeBusByte)
        m_services.writeBusByte(device, address, value, kBusAddressBits, kBusDataBits);
}

void Host::announceRegister(char const* reg) const {
    if (m_services.announceRegister)
        m_services.announceRegister(reg, 0, 0);
}

void Host::modalDialog(bool opening) const {
    if (m_services.modalDialog)
        m_services.modalDialog(opening ? 1 : 0);
}

int32_t Host::readState(char const* variable) const {
    return m_services.readState ? m_services.readState(variable) : 0;
}

void Host::setState(char const* variable, int32_t value) const {
    if (m_services.setState)
        m_services.setState(variable, value);
}

QByteArray Host::readOption(char const* option) const {
    // The text stays the host's; null gives an empty one.
    return m_services.readOption ? QByteArray(m_services.readOption(option)) : QByteArray();
}

void Host::writeOption(char const* option, char const* value) const {
    if (m_services.writeOption)
        m_services.writeOption(option, value);
}

void Host::applyPreset(char const* preset) const {
    if (m_services.applyPreset)
        m_services.applyPreset(0, preset);
}

int32_t Host::readIntSetting(char const* key, int32_t fallback) const {
    return m_services.readIntSetting ? m_services.readIntSetting(key, fallback) : fallback;
}

void Host::writeIntSetting(char const* key, int32_t value) const {
    if (m_services.writeIntSetting)
        m_services.writeIntSetting(key, value);
}

QByteArray Host::readTextSetting(char const* key) const {
    std::array<char, 260> buffer{};
    if (m_services.readTextSetting)
        m_services.readTextSetting(key, buffer.data(), uint32_t(buffer.size()), "");
    buffer.back() = '\0'; // also when the host filled the buffer to the brim
    return QByteArray(buffer.data());
}

void Host::writeTextSetting(char const* key, char const* value) const {
    if (m_services.writeTextSetting)
        m_services.writeTextSetting(key, value);
}

void Host::setupAnalysis(uint32_t halfWidth) const {
    if (m_services.setupAnalysis)
        m_services.setupAnalysis(1, 0, halfWidth, 0, halfWidth);
}

void Host::beginChanges() const {
    if (m_services.beginChanges)
        m_services.beginChanges();
}

void Host::endChanges() const {
    if (m_services.endChanges)
        m_services.endChanges();
}

} // namespace kestra
