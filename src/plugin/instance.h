#pragma once

#include "published/entries.h"

/// The one instance.
[[nodiscard]] KestraMfr& kestraMfr();

/// Whether the library is being unloaded from a process that goes on, as opposed to a process that exits:
/// true only inside the destructors of static objects. In the latter case nothing of Qt may be touched any
/// more.
[[nodiscard]] bool isLibraryBeingUnloaded();
