#pragma once

#include "published/veyra2.h"

#include <QByteArray>
#include <QHash>
#include <cstdint>
#include <vector>

namespace simulator {
/// What the transfer functions of the library answer.
enum TransferStatus : int {
    kDone = 0,
    kNoSuchRegister = 1,
    kNoSuchBitfield = 2,
    kBadArgument = 3,
    kNoAnswer = 12
};

/// Named bits of a register.
struct Bitfield {
    QByteArray name;
    uint32_t mask = 0;
};

/// One register as a sensor's data sheet tells it.
struct RegisterDefinition {
    QByteArray name;
    vy_RegisterDescription description{}; ///< all but the name
    uint32_t reset = 0;
    std::vector<Bitfield> bitfields;
};

/// Bytes of a data type: 0 and 1 are 8 bits wide, 2 and 3 16 bits, 4 and 5 32 bits (the odd ones signed).
/// 0 for codes that do not exist.
[[nodiscard]] uint32_t dataTypeSize(uint32_t dataType);

/// The registers of one sensor: where they lie, what they hold, and the library's cache of what was last
/// seen of them. Writes go through the cache to the sensor; reads stop at the cache until it is dropped.
class RegisterMap {
public:
    struct Register {
        QByteArray name;
        vy_RegisterDescription description{};
        std::vector<Bitfield> bitfields;
        std::vector<vy_BitfieldDescription> bitfieldDescriptions; ///< in the order of `bitfields`
        uint32_t value = 0;                                       ///< what the sensor holds
        uint32_t cached = 0;                                      ///< what the library last saw
        bool isCached = false;
        bool isVolatile = false; ///< the sensor changes it by itself: never answered from the cache
    };

    explicit RegisterMap(std::vector<RegisterDefinition> const& definitions);
    // The descriptions point into the names.
    RegisterMap(RegisterMap const&) = delete;
    RegisterMap& operator=(RegisterMap const&) = delete;

    /// Null when there is none. What is found stays valid and in place as long as the map.
    [[nodiscard]] Register* find(char const* name);
    [[nodiscard]] Register* find(uint32_t addressSpace, uint32_t id, uint32_t address);
    [[nodiscard]] static vy_BitfieldDescription const* findBitfield(Register const& reg, char const* name);

    /// The bits of `mask`, moved down to bit 0.
    [[nodiscard]] static uint32_t read(Register& reg, uint32_t mask = 0xFFFFFFFF);
    /// Changes the bits of `mask` only.
    void write(Register& reg, uint32_t value, uint32_t mask = 0xFFFFFFFF);
    void dropCache();
    [[nodiscard]] uint64_t writes() const { return m_writes; }

private:
    std::vector<Register> m_registers;
    QHash<QByteArray, size_t> m_byName;
    QHash<quint64, size_t> m_byAddress;
    uint64_t m_writes = 0;
};
} // namespace simulator
