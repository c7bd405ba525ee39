#pragma once

#include "simulator/host/session/boundary.h"

#include <QStringList>

namespace pictara {
/// As long as this object stands, an observer is told of every call across the boundary, those on the
/// stand-in libraries included. Libraries of another make cannot be watched; their calls go unseen.
class Watching {
public:
    /// `pluginFile` as in the options; beside the plug-in lie its libraries. The observer outlives this.
    Watching(BoundaryObserver& observer, QString const& pluginFile);
    ~Watching();
    Watching(Watching const&) = delete;
    Watching& operator=(Watching const&) = delete;

    /// Names of the libraries that cannot be watched.
    [[nodiscard]] static QStringList unwatched();

private:
    BoundaryObserver& m_observer;
};
} // namespace pictara
