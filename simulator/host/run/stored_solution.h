#pragma once

#include <QString>

namespace pictara {
class Session;

/// Whether a camera of that profile that starts up from what this one's EEPROM holds now, by the record of
/// that label, corrects with the solution that this one's registers hold; otherwise `error` tells the reason.
[[nodiscard]] bool isSolutionStored(Session& session, QString const& profile, QString const& label,
                                    QString* error);
} // namespace pictara
