#include "common/directory.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/stat.h>
#endif

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
