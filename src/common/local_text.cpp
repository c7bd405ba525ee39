#include "common/local_text.h"

#ifdef _WIN32
#include <windows.h>
#endif

bool beginsTwoByteLetter([[maybe_unused]] char byte) {
#ifdef _WIN32
    return IsDBCSLeadByte(BYTE(byte)) != 0;
#else
    return false;
#endif
}
