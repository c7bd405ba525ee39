#pragma once

#include <QDir>
#include <QStringList>

/// Writes one picture for each named state of the stand-in host's window with the plug-in's dialog, or for
/// those of `names` when there are any. They need a screen that both fit on.
[[nodiscard]] bool writeBenchStates(QDir const& folder, QStringList const& names);
