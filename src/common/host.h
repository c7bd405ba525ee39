#pragma once

#include "published/host_records.h"

#include <QByteArray>
#include <array>

namespace kestra {
/// The host's service table as the plug-in uses it: one method a slot. A null slot is never called; writes
/// then do nothing, reads answer 0, the given default or an empty text. A value with its own copy of the
/// table.
class Host {
public:
    Host() = default;
    explicit Host(HostServices const& services) : m_services(services) {}

    /// Slot 0: value of a register, or of one of its bitfields; an empty bitfield name means the whole
    /// register.
    [[nodiscard]] uint32_t readRegister(char const* reg, char const* bitfield) const {
        return call(m_services.readRegister, reg, bitfield, 1U);
    }
    /// Slot 2.
    void writeRegister(char const* reg, char const* bitfield, uint32_t value) const {
        call(m_services.writeRegister, reg, bitfield, value);
    }
    /// Slot 3: one register of a calibration solution, by page or id and address.
    void writeListEntry(uint32_t id, uint32_t address, uint32_t value) const {
        call(m_services.writeListEntry, address, 0U, id, 0U, value);
    }
    /// Slots 4 and 5: one byte of a device on the camera's serial bus, at a 16-bit address of the device's
    /// own. What a read answers is the host's, and need not fit a byte when the device is silent.
    [[nodiscard]] uint32_t readBusByte(uint32_t device, uint32_t address) const {
        return call(m_services.readBusByte, device, address, kBusAddressBits, kBusDataBits);
    }
    void writeBusByte(uint32_t device, uint32_t address, uint8_t value) const {
        call(m_services.writeBusByte, device, address, value, kBusAddressBits, kBusDataBits);
    }
    /// Slot 7: tells the host which register switches lens correction.
    void announceRegister(char const* reg) const { call(m_services.announceRegister, reg, 0U, 0U); }
    /// Slot 8: a modal dialog of the plug-in's own; use `ModalBracket`.
    void openModalDialog() const { call(m_services.modalDialog, 1U); }
    void closeModalDialog() const { call(m_services.modalDialog, 0U); }
    /// Slots 9 and 10: host-state variables.
    [[nodiscard]] int32_t readState(char const* variable) const {
        return call(m_services.readState, variable);
    }
    void setState(char const* variable, int32_t value) const { call(m_services.setState, variable, value); }
    /// Slots 14 and 15: text options of the host, in the local code page.
    [[nodiscard]] QByteArray readOption(char const* option) const {
        return call(m_services.readOption, option); // the text stays the host's; null gives an empty one
    }
    void writeOption(char const* option, char const* value) const {
        call(m_services.writeOption, option, value);
    }
    /// Slot 16: applies a preset of the host's ini file by name.
    void applyPreset(char const* preset) const { call(m_services.applyPreset, 0U, preset); }
    /// Slots 18 to 21: the host's settings store.
    [[nodiscard]] int32_t readIntSetting(char const* key, int32_t fallback) const {
        return m_services.readIntSetting ? m_services.readIntSetting(key, fallback) : fallback;
    }
    void writeIntSetting(char const* key, int32_t value) const {
        call(m_services.writeIntSetting, key, value);
    }
    /// The text up to 259 bytes long, in the local code page; the default is an empty text.
    [[nodiscard]] QByteArray readTextSetting(char const* key) const {
        std::array<char, 260> buffer{};
        call(m_services.readTextSetting, key, buffer.data(), uint32_t(buffer.size()), "");
        buffer.back() = '\0'; // also when the host filled the buffer to the brim
        return buffer.data();
    }
    void writeTextSetting(char const* key, char const* value) const {
        call(m_services.writeTextSetting, key, value);
    }
    /// Slot 23: sets up the host's analysis graph for a picture of the given half width in pixels.
    void setupAnalysis(uint32_t halfWidth) const {
        call(m_services.setupAnalysis, 1U, 0U, halfWidth, 0U, halfWidth);
    }
    /// Slots 25 and 26; use `ChangeGroup`.
    void beginChanges() const { call(m_services.beginChanges); }
    void endChanges() const { call(m_services.endChanges); }

private:
    // How the headboard's devices are addressed, in bits.
    static constexpr uint32_t kBusAddressBits = 16;
    static constexpr uint32_t kBusDataBits = 8;

    template <typename Result, typename... Parameters, typename... Arguments>
    static Result call(Result (*slot)(Parameters...), Arguments... arguments) {
        return slot ? slot(arguments...) : Result();
    }

    HostServices m_services{};
};

/// Two calls to the host around whatever happens while it lives. It copies the host: what was opened there is
/// closed there, whatever becomes of the original.
template <void (Host::*open)() const, void (Host::*close)() const>
class HostBracket {
public:
    explicit HostBracket(Host const& host) : m_host(host) { (m_host.*open)(); }
    ~HostBracket() { (m_host.*close)(); }
    Q_DISABLE_COPY(HostBracket)

private:
    Host const m_host;
};

/// A sequence of changes to the host's sensor state (slots 25 and 26).
using ChangeGroup = HostBracket<&Host::beginChanges, &Host::endChanges>;

/// A modal dialog of the plug-in's own (slot 8).
using ModalBracket = HostBracket<&Host::openModalDialog, &Host::closeModalDialog>;
} // namespace kestra
