#pragma once

#include "simulator/camera/simulated_camera.h"

#include <QString>
#include <QStringList>
#include <cstdint>
#include <optional>

/// What people and scripts write: lines of words, numbers, faults, lights.
namespace pictara {
/// The words of a line of a script, apart by blanks; a word with blanks stands in quotes, in which two quotes
/// are one. A word that begins with "#" begins a comment. Empty with the cause when a quote is not closed.
[[nodiscard]] std::optional<QStringList> wordsOf(QString const& line, QString* error);
/// The line of which `wordsOf` makes these words.
[[nodiscard]] QString lineOf(QStringList const& words);

struct Range {
    double low;
    double high;
};

/// What the lamp can be set to. The exposure loop copes with a level from about 0.002 to 1000; beyond lie
/// pictures that stay too dark or clipped.
inline constexpr Range kColourTemperatures{2000, 12000}; ///< kelvin
inline constexpr Range kLevels{0.001, 10000};            ///< relative to the lamp's normal level
inline constexpr Range kGradients{-1, 1};

inline constexpr Range kUniformityLimits{0, 100}; ///< distance in a*, b*
inline constexpr Range kLuminanceLimits{0, 100};  ///< percent

/// The number that a text tells, when it is one in the range.
[[nodiscard]] std::optional<double> numberIn(Range const& range, QString const& text);

/// A light as a line of a script tells it: "light KELVIN LEVEL GRADIENT [object]".
[[nodiscard]] QStringList lightWords(simulator::Light const& light);
/// Changes what the words behind "light" tell and leaves the rest: KELVIN [LEVEL [GRADIENT [object]]]; an
/// object goes when there is a gradient without it. False when a number is none, or beyond its range.
[[nodiscard]] bool readLight(QStringList const& words, simulator::Light& light);

/// Something that shall go wrong with the camera's EEPROM.
struct FaultWish {
    QString name;
    std::optional<uint64_t> operation; ///< of the EEPROM since the dialog opened, from 1 (of a power cut:
                                       ///< stored bytes, from 0); none: when a run saves
    bool forEver = false;              ///< from there on; else once
};

/// How it is typed: NAME, NAME@N, NAME+ or NAME@N+. None for a name that no fault has, and for an operation
/// 0: they are counted from 1, and only power can fail before a first byte is stored.
[[nodiscard]] std::optional<FaultWish> parseFaultWish(QString const& text);
[[nodiscard]] QString textOf(FaultWish const& wish);
} // namespace pictara
