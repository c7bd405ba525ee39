#include "common/system.h"

#include <thread>

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/stat.h>
#endif

namespace kestra {
namespace {
// A system's sleep may end early, and a device does not answer before its write cycle is over.
void sleepAtLeast(std::chrono::milliseconds duration) {
    using Clock = std::chrono::steady_clock;
    Clock::time_point const end = Clock::now() + duration;
    for (auto now = Clock::now(); now < end; now = Clock::now())
        std::this_thread::sleep_for(std::chrono::ceil<std::chrono::milliseconds>(end - now));
}
} // namespace

bool directoryExists(QByteArray const& path) {
    if (path.isEmpty())
        return false;
#ifdef _WIN32
    DWORD const attributes = GetFileAttributesA(path.constData());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
#else
    struct stat status {};
    return ::stat(path.constData(), &status) == 0 && S_ISDIR(status.st_mode);
#endif
}

bool beginsTwoByteLetter([[maybe_unused]] char byte) {
#ifdef _WIN32
    return IsDBCSLeadByte(BYTE(byte)) != 0;
#else
    return false;
#endif
}

Replaceable<void(std::chrono::milliseconds)> pauseFor(sleepAtLeast);

Replaceable<QDateTime()> currentUtcTime(QDateTime::currentDateTimeUtc);
} // namespace kestra
