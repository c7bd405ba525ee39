#pragma once

#include "common/libraries.h"

namespace kestra {
/// The functions of the sensor-access library that this test program is linked with, for `installVeyra2`.
[[nodiscard]] inline Veyra2 linkedLibrary() {
#define KESTRA_LINKED(name, absent) ::name,
    return {KESTRA_VEYRA2(KESTRA_LINKED)};
#undef KESTRA_LINKED
}
} // namespace kestra
