#pragma once

#include <QDateTime>
#include <functional>

/// The current time in UTC.
[[nodiscard]] QDateTime currentUtcTime();

/// Puts another clock in the place of the system's; an empty one restores it.
void installUtcClock(std::function<QDateTime()> clock);
