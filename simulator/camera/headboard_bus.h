#pragma once

#include "simulator/camera/eeprom_device.h"
#include "simulator/camera/profile.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace simulator {
/// Bytes on their way to the device, those of different pages apart from each other.
struct PagedWrite {
    uint32_t address = 0;
    std::array<uint8_t, 2> bytes{}; ///< big byte first
    size_t left = 0;                ///< of the bytes; the first ones are done

    /// Writes those that lie in the address's page and goes on behind them.
    [[nodiscard]] BusAnswer next(EepromDevice& device);
};

/// The serial bus of the headboard with its EEPROM, and the ways from the library to it. An EEPROM answers
/// on the one way that its profile wires; on the others nothing acknowledges. All is answered as by the
/// library's functions.
class HeadboardBus {
public:
    /// Borrows the profile.
    explicit HeadboardBus(Profile const& profile);
    // The device borrows the clock.
    Q_DISABLE_COPY(HeadboardBus)

    /// Modes 1 and 2 set the bits of an address and of a word in raw transfers; 3 is the bridge's and needs
    /// nothing here. The widths come up as the sensor's own.
    [[nodiscard]] int setMode(uint32_t mode, uint32_t value);
    /// Raw transfers. A width or length that is none of the device's is a bad argument.
    [[nodiscard]] int readRaw(uint32_t busAddress, uint32_t start, std::span<uint32_t> words);
    [[nodiscard]] int writeRaw(uint32_t busAddress, uint32_t start, std::span<uint32_t const> words);
    /// One location of one or two bytes, big byte first, behind a transient description. The sensor's bus
    /// master does the transfer, bytes in different pages apart from each other; after each write it asks the
    /// device until that has stored the bytes.
    [[nodiscard]] int readDescribed(vy_RegisterDescription const& location, uint32_t& value);
    [[nodiscard]] int writeDescribed(vy_RegisterDescription const& location, uint32_t value);

    /// The device when it is wired so and lies at that bus address; null otherwise.
    [[nodiscard]] EepromDevice* find(EepromWiring wiring, uint32_t busAddress);

    CameraClock clock;
    EepromDevice device; ///< blank and out of everybody's reach on a headboard without an EEPROM

private:
    [[nodiscard]] bool fits(uint32_t start, size_t count) const;

    EepromSection const& m_section;
    uint32_t m_addressBits, m_wordBits;
};

/// The sensor's bridge to the headboard's bus: five registers through which a host has one or two bytes moved
/// at a time. A written command starts a transfer; the status register says busy until it is over, after a
/// write until the device has stored the bytes, and then whether the device acknowledged. Bytes in different
/// pages are written one after the other. A new command drops one that still runs. Without a device the
/// bridge works and nobody acknowledges.
class EepromBridge {
public:
    /// Borrows both. On a sensor without all five registers the bridge is not there and does nothing.
    EepromBridge(RegisterMap& registers, HeadboardBus& bus);

    /// Brings status and data up to the present time; called before registers are read.
    void refresh();
    /// A host wrote a register; called after every write. Answers as the library's functions do.
    [[nodiscard]] int written(RegisterMap::Register const& reg);

private:
    /// A transfer whose end the host has not seen yet.
    struct Transfer {
        EepromDevice* device = nullptr;
        BusAnswer answer = BusAnswer::NotAcknowledged; ///< busy: it never ends
        CameraClock::Duration endsAt{};
        std::optional<uint32_t> data{}; ///< what a read brings
        PagedWrite write{};             ///< what a write has still to do
    };

    [[nodiscard]] BusAnswer begin(uint32_t command, Transfer& transfer) const;
    /// The transfer takes its time from now on.
    void schedule(BusAnswer answer, Transfer& transfer) const;

    HeadboardBus& m_bus;
    std::array<RegisterMap::Register*, kBridgeRegisters.size()> m_registers{};
    bool m_isThere;
    std::optional<Transfer> m_transfer;
};

/// The records of the EEPROM's chain for whoever looks at it, with the names of the registers that lie where
/// an entry says. It stops at the first record that runs over the end, and tells so as that record's fault.
[[nodiscard]] std::vector<StoredRecord> storedRecords(EepromContents const& contents, Profile& profile);

/// Writes the entries of the first record of shading registers, or of the first one with that name (in upper
/// or lower case) when the name is not null, in their order; all of them or, with an `error`, none.
[[nodiscard]] bool replayRecord(EepromContents const& contents, QString const& name, Profile& profile,
                                QString* error);
} // namespace simulator

/// What the library's functions know of an open camera: its profile with the registers, and the bus of its
/// headboard. Nothing of the scene or the frames is reachable from here.
struct vy_Camera {
    /// Borrows the profile.
    explicit vy_Camera(simulator::Profile& sensor);
    ~vy_Camera();
    Q_DISABLE_COPY(vy_Camera)

    /// The masked bits of a register, as the library's functions answer and take them.
    [[nodiscard]] uint32_t read(simulator::RegisterMap::Register& reg, uint32_t mask = 0xFFFFFFFF);
    [[nodiscard]] int write(simulator::RegisterMap::Register& reg, uint32_t value,
                            uint32_t mask = 0xFFFFFFFF);

    /// False for null and for handles of cameras that are closed, so that no function follows a stale one.
    [[nodiscard]] static bool isOpen(vy_Camera const* camera);

    simulator::Profile& profile;
    simulator::HeadboardBus bus{profile};
    simulator::EepromBridge bridge{profile.registers, bus};
};
