#pragma once

#include <QString>
#include <QUrl>

/// Where the host's folder has the user guide. The folder is what the sensor-access library calls its home,
/// or, where it tells none, that of the running program.
[[nodiscard]] QString userGuidePath();

/// The path as the desktop takes it; signs that mean something in an address stay a part of the name.
[[nodiscard]] QUrl userGuideUrl(QString const& path);
