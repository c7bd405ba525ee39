#include "simulator/host/refusal.h"

namespace pictara {
namespace {

struct Refusal {
    char const* told; ///< part of the library's message
    ExitCode code;
};

constexpr Refusal kRefusals[] = {
    {"too dark", kExitTooDark},         {"clipped", kExitClipped},      {"not flat", kExitNotFlat},
    {"lamp is not even", kExitNotFlat}, {"image size", kExitWrongSize},
};

} // namespace

ExitCode exitCodeOfRefusal(QString const& solverMessage) {
    for (Refusal const& refusal : kRefusals)
        if (solverMessage.contains(QLatin1String(refusal.told)))
            return refusal.code;
    return kExitNotCalibrated;
}

} // namespace pictara
