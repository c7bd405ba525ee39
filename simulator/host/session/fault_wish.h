#pragma once

#include <QString>
#include <cstdint>
#include <optional>

namespace pictara {
/// Something that shall go wrong with the camera's EEPROM.
struct FaultWish {
    QString name;
    std::optional<uint64_t> operation; ///< of the EEPROM since the dialog opened, from 1 (of a power cut:
                                       ///< stored bytes, from 0); none: when a run saves
    bool forEver = false;              ///< from there on; else once
};

/// How it is typed: NAME, NAME@N, NAME+ or NAME@N+. The name is not looked at.
[[nodiscard]] std::optional<FaultWish> parseFaultWish(QString const& text);
/// False for an operation 0: they are counted from 1, and only power can fail before a first byte is stored.
[[nodiscard]] bool canStrike(FaultWish const& wish);
[[nodiscard]] QString textOf(FaultWish const& wish);
} // namespace pictara
