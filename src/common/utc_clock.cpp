#include "common/utc_clock.h"

namespace {

std::function<QDateTime()>& installedClock() {
    static std::function<QDateTime()> clock;
    return clock;
}

} // namespace

QDateTime currentUtcTime() {
    auto const& clock = installedClock();
    return clock ? clock() : QDateTime::currentDateTimeUtc();
}

void installUtcClock(std::function<QDateTime()> clock) {
    installedClock() = std::move(clock);
}
