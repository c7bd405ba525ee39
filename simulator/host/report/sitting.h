#pragma once

#include "simulator/host/report/certificate.h"

namespace pictara {
class Session;

/// Tells what a sitting is about as it is now: sensor, serial number, lamps (kelvin), registers and EEPROM.
/// When the plug-in wrote a solution, another camera starts up from what the EEPROM holds, by the
/// record of that label. Returns why that one does not correct with the same solution; empty otherwise.
[[nodiscard]] QString tellSitting(Session& session, QString const& label, std::vector<double> const& lamps,
                                  Certificate& certificate);
} // namespace pictara
