#pragma once

#include "simulator/camera/headboard_bus.h"
#include "simulator/camera/register_map.h"

#include <cstdint>
#include <optional>

namespace simulator {
/// The sensor's bridge to the headboard's bus: five registers through which a host has one or two bytes moved
/// at a time. A written command starts a transfer; the status register says busy until it is over, after a
/// write until the device has stored the bytes, and then whether the device acknowledged. Bytes in different
/// pages are written one after the other. A new command
/// drops one that still runs. Without a device the bridge works and nobody acknowledges.
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
        std::optional<CameraClock::Duration> endsAt; ///< none: it never ends
        bool isAcknowledged = false;
        std::optional<uint32_t> data;    ///< what a read brings
        uint32_t nextAddress = 0;        ///< of the next page
        std::optional<uint8_t> nextByte; ///< to be written there
    };

    [[nodiscard]] int start(uint32_t command);
    [[nodiscard]] BusAnswer move(uint32_t command, Transfer& transfer) const;
    [[nodiscard]] BusAnswer read(size_t count, Transfer& transfer) const;
    [[nodiscard]] BusAnswer write(size_t count, Transfer& transfer) const;
    void goOnInNextPage();
    /// The transfer takes its time from now on.
    void schedule(BusAnswer answer, Transfer& transfer) const;

    HeadboardBus* m_bus;
    RegisterMap::Register* m_deviceAddress;
    RegisterMap::Register* m_address;
    RegisterMap::Register* m_command;
    RegisterMap::Register* m_status;
    RegisterMap::Register* m_data;
    bool m_isThere;
    std::optional<Transfer> m_transfer;
};
} // namespace simulator
