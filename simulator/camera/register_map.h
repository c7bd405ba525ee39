#pragma once

#include "published/veyra2.h"

#include <QByteArray>
#include <QHash>
#include <QMap>
#include <cstdint>
#include <deque>
#include <optional>
#include <tuple>

namespace simulator {
/// What the transfer functions of the library answer.
enum TransferStatus : int { kDone, kNoSuchRegister, kNoSuchBitfield, kBadArgument, kNoAnswer = 12 };

/// Bytes of a data type: 0 and 1 are 8 bits wide, 2 and 3 16 bits, 4 and 5 32 bits (the odd ones signed).
/// 0 for codes that do not exist.
[[nodiscard]] uint32_t dataTypeSize(uint32_t dataType);

/// The registers of one sensor: where they lie, what they hold, and the library's cache of what was last
/// seen of them. Writes go through the cache to the sensor; reads stop at the cache until it is dropped.
class RegisterMap {
public:
    struct Register {
        QByteArray name;
        vy_RegisterDescription description{}; ///< name and access size are the map's to fill in
        QMap<QByteArray, vy_BitfieldDescription> bitfields{}; ///< each points into its name
        uint32_t value = 0;               ///< what the sensor holds; at first, after reset
        std::optional<uint32_t> cached{}; ///< what the library last saw
        bool isVolatile = false;          ///< the sensor changes it by itself: never answered from the cache
    };

    RegisterMap() = default;
    RegisterMap(RegisterMap&&) = default; // a copy would find the registers of the original

    /// Takes one whose name and place are still free.
    void add(Register reg);
    [[nodiscard]] size_t size() const { return m_registers.size(); }

    /// Null when there is none. What is found stays valid and in place, even when the map is moved.
    [[nodiscard]] Register* find(char const* name);
    [[nodiscard]] Register* find(uint32_t addressSpace, uint32_t id, uint32_t address);
    [[nodiscard]] static vy_BitfieldDescription const* findBitfield(Register const& reg, char const* name);

    /// The bits of `mask`, which is not 0, moved down to bit 0.
    [[nodiscard]] static uint32_t read(Register& reg, uint32_t mask = 0xFFFFFFFF);
    /// Changes the bits of `mask` only.
    void write(Register& reg, uint32_t value, uint32_t mask = 0xFFFFFFFF);
    void dropCache();
    [[nodiscard]] uint64_t writes() const { return m_writes; }

private:
    std::deque<Register> m_registers;
    QHash<QByteArray, Register*> m_byName;
    QMap<std::tuple<uint32_t, uint32_t, uint32_t>, Register*> m_byPlace; ///< address space, id, address
    uint64_t m_writes = 0;
};
} // namespace simulator
