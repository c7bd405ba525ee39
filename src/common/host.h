#pragma once

#include "published/host_records.h"

#include <QByteArray>

namespace kestra {

/// The host's service table as the plug-in uses it: one method a slot. A null slot is never called; writes
/// then do nothing, reads answer 0, the given default or an empty text. A value with its own copy of the table.
class Host {
public:
    Host() = default;
    explicit Host(HostServices const& services) : m_services(services) {}

    /// Slot 0: value of a register, or of one of its bitfields; an empty bitfield name means the whole
    /// register.
    [[nodiscard]] uint32_t readRegister(char const* reg, char const* bitfield) const;
    /// Slot 2.
    void writeRegister(char const* reg, char const* bitfield, uint32_t value) const;
    /// Slot 3: one register of a calibration solution, by page or id and address.
    void writeListEntry(uint32_t id, uint32_t address, uint32_t value) const;
    /// Slots 4 and 5: one byte of a device on the camera's serial bus, at a 16-bit address of the device's
    /// own. What a read answers is the host's, and need not fit a byte when the device is silent.
    [[nodiscard]] uint32_t readBusByte(uint32_t device, uint32_t address) const;
    void writeBusByte(uint32_t device, uint32_t address, uint8_t value) const;
    /// Slot 7: tells the host which register switches lens correction.
    void announceRegister(char const* reg) const;
    /// Slot 8: brackets a modal dialog of the plug-in's own; use `ModalBracket`.
    void modalDialog(bool opening) const;
    /// Slots 9 and 10: host-state variables.
    [[nodiscard]] int32_t readState(char const* variable) const;
    void setState(char const* variable, int32_t value) const;
    /// Slots 14 and 15: text options of the host, in the local code page.
    [[nodiscard]] QByteArray readOption(char const* option) const;
    void writeOption(char const* option, char const* value) const;
    /// Slot 16: applies a preset of the host's ini file by name.
    void applyPreset(char const* preset) const;
    /// Slots 18 to 21: the host's settings store.
    [[nodiscard]] int32_t readIntSetting(char const* key, int32_t fallback) const;
    void writeIntSetting(char const* key, int32_t value) const;
    /// The text up to 259 bytes long, in the local code page; the default is an empty text.
    [[nodiscard]] QByteArray readTextSetting(char const* key) const;
    void writeTextSetting(char const* key, char const* value) const;
    /// Slot 23: sets up the host's analysis graph for a picture of the given half width in pixels.
    void setupAnalysis(uint32_t halfWidth) const;
    /// Slots 25 and 26; use `ChangeGroup`.
    void beginChanges() const;
    void endChanges() const;

private:
    HostServices m_services{};
};

/// Brackets a sequence of changes to the host's sensor state (slots 25 and 26). It copies the host: what was
/// opened there is closed there, whatever becomes of the original.
class ChangeGroup {
public:
    explicit ChangeGroup(Host const& host) : m_host(host) { m_host.beginChanges(); }
    ~ChangeGroup() { m_host.endChanges(); }
    ChangeGroup(ChangeGroup const&) = delete;
    ChangeGroup& operator=(ChangeGroup const&) = delete;

private:
    Host const m_host;
};

/// Brackets a modal dialog of the plug-in's own (slot 8). It copies the host, like `ChangeGroup`.
class ModalBracket {
public:
    explicit ModalBracket(Host const& host) : m_host(host) { m_host.modalDialog(true); }
    ~ModalBracket() { m_host.modalDialog(false); }
    ModalBracket(ModalBracket const&) = delete;
    ModalBracket& operator=(ModalBracket const&) = delete;

private:
    Host const m_host;
};

} // namespace kestra
