#pragma once

#include <QDir>
#include <QStringList>

/// Writes one picture for each named state of the configuration page, or for those of `names` when there are
/// any.
[[nodiscard]] bool writeConfigStates(QDir const& folder, QStringList const& names);
