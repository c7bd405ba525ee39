#include "simulator/host/session/watching.h"

#include "simulator/boundary/call_observer.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLibrary>

namespace pictara {
namespace {
template <CallSource Source>
void began(void*, char const* function, char const* arguments) {
    Boundary& boundary = Boundary::instance();
    if (!boundary.isHostAtWork())
        boundary.begin(Source, function, arguments);
}

void ended(void*, char const* result) {
    Boundary& boundary = Boundary::instance();
    if (!boundary.isHostAtWork())
        boundary.end(result);
}

/// The export by which a library is watched, and what it is handed.
struct Tap {
    char const* library;
    char const* function;
    CallObserver observer;
    ObserveCalls connected = nullptr;
};

Tap taps[] = {
    {"veyra2", "vy_ObserveCalls", {nullptr, began<CallSource::Camera>, ended}},
    {"shadefit", "sf_ObserveCalls", {nullptr, began<CallSource::Solver>, ended}},
};

// The very file that the plug-in loads: the loader gives out one library a file.
ObserveCalls find(Tap const& tap, QString const& folder) {
    QString const name = QString::fromLatin1(tap.library);
    QLibrary library;
    library.setLoadHints(QLibrary::PreventUnloadHint);
    for (QString const& place : {folder + QLatin1Char('/') + name, name}) {
        library.setFileName(place);
        if (library.load())
            return reinterpret_cast<ObserveCalls>(library.resolve(tap.function));
    }
    return nullptr;
}

QString folderOf(QString const& pluginFile) {
    return pluginFile.isEmpty() ? QCoreApplication::applicationDirPath()
                                : QFileInfo(pluginFile).absolutePath();
}
} // namespace

Watching::Watching(BoundaryObserver& observer, QString const& pluginFile) : m_observer(observer) {
    if (!Boundary::instance().isObserved())
        for (Tap& tap : taps) {
            tap.connected = find(tap, folderOf(pluginFile));
            if (tap.connected)
                tap.connected(&tap.observer);
        }
    Boundary::instance().add(m_observer);
}

Watching::~Watching() {
    Boundary::instance().remove(m_observer);
    if (!Boundary::instance().isObserved())
        for (Tap& tap : taps)
            if (ObserveCalls const connected = std::exchange(tap.connected, nullptr))
                connected(nullptr);
}

QStringList Watching::unwatched() {
    QStringList names;
    for (Tap const& tap : taps)
        if (!tap.connected)
            names.append(QString::fromLatin1(tap.library));
    return names;
}
} // namespace pictara
