#include "plugin/library_lifetime.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace {
bool unloading = false;
} // namespace

#ifdef _WIN32

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID processEnds) {
    if (reason == DLL_PROCESS_DETACH && !processEnds)
        unloading = true;
    return TRUE;
}

#else

// At unload a library's finalisers run before the destructors of its static objects, which its start-up code
// put first into the list that is worked off backwards. At process exit those destructors run on their own,
// before any finaliser. So a static destructor that finds the mark set belongs to an unload.
[[gnu::destructor]] static void markUnloading() {
    unloading = true;
}

#endif

bool isLibraryBeingUnloaded() {
    return unloading;
}
