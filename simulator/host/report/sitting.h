#pragma once

#include "simulator/host/report/report.h"

namespace pictara {
class Session;

/// What a report tells of a sitting, as it is now.

/// The camera, and what lies before it.
[[nodiscard]] Section sceneSection(Session& session);
/// The state of the registers, and how many were written.
[[nodiscard]] Section registerSection(Session& session);
/// What the sitting did to the camera's EEPROM. When the plug-in wrote a solution, another camera starts up
/// from what the EEPROM holds, by the record of that label; `lack` tells why that one does not correct with
/// the same solution, and is empty otherwise.
[[nodiscard]] Section eepromSection(Session& session, QString const& label, QString* lack);
} // namespace pictara
