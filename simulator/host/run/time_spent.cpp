#include "simulator/host/run/time_spent.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <ctime>
#endif

namespace pictara {
#ifdef _WIN32

// The C function of the same purpose tells the time by the clock there.
double processorTime() {
    constexpr double kSecondsPerTick = 100e-9;
    auto const seconds = [](FILETIME const& time) {
        return (double(time.dwHighDateTime) * 0x1p32 + double(time.dwLowDateTime)) * kSecondsPerTick;
    };
    FILETIME begun, ended, inSystem, inProgram;
    if (!GetProcessTimes(GetCurrentProcess(), &begun, &ended, &inSystem, &inProgram))
        return 0;
    return seconds(inSystem) + seconds(inProgram);
}

#else

double processorTime() { return double(std::clock()) / CLOCKS_PER_SEC; }

#endif
} // namespace pictara
