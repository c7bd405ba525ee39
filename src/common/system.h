#pragma once

#include <QByteArray>
#include <QDateTime>
#include <chrono>
#include <functional>

/// Whether a path, in the local 8-bit encoding, names an existing directory. An empty path does not.
[[nodiscard]] bool directoryExists(QByteArray const& path);

/// True for a byte that begins a letter of two bytes in the local 8-bit encoding. Some of Windows' code pages
/// have them, and the second byte may look like "\" or "|". Elsewhere it is never true: no byte of a longer
/// letter looks like another letter there.
[[nodiscard]] bool beginsTwoByteLetter(char byte);

/// Every wait of the plug-in: the calling thread sleeps.
void pauseFor(std::chrono::milliseconds duration);

/// Puts another function in the place of the sleep, for example a counter of virtual time; an empty one
/// restores the sleep.
void installPause(std::function<void(std::chrono::milliseconds)> pause);

/// The current time in UTC.
[[nodiscard]] QDateTime currentUtcTime();

/// Puts another clock in the place of the system's; an empty one restores it.
void installUtcClock(std::function<QDateTime()> clock);
