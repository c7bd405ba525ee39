#pragma once

#include <QString>

namespace pictara {

class Session;

/// Why a camera of that profile that starts up from what this one's EEPROM holds now, by the record of that
/// label, does not correct with the solution that this one's registers hold; empty when it does.
[[nodiscard]] QString lackOfStoredSolution(Session& session, QString const& profile, QString const& label);

} // namespace pictara
