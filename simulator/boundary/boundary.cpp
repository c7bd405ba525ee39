#include "simulator/boundary/boundary.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLibrary>
#include <QtDebug>
#include <utility>

namespace pictara {
namespace {
QByteArray utf8(QByteArray const& local8Bit) { return QString::fromLocal8Bit(local8Bit).toUtf8(); }

template <CallSource Source>
void began(void*, char const* function, char const* arguments) {
    if (!Boundary::instance().isHostAtWork())
        Boundary::instance().begin(Source, function, arguments);
}

void ended(void*, char const* result) {
    if (!Boundary::instance().isHostAtWork())
        Boundary::instance().end(result);
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
} // namespace

Boundary& Boundary::instance() {
    static Boundary boundary;
    return boundary;
}

void Boundary::doing(QStringList const& words) {
    if (m_observer)
        m_observer->doing(words);
}

void Boundary::begin(CallSource source, char const* name, QByteArray const& arguments) {
    int const depth = m_depth++;
    if (m_observer)
        m_observer->began({source, name, utf8(arguments)}, depth);
}

void Boundary::end(QByteArray const& result) {
    --m_depth;
    if (m_observer)
        m_observer->ended(m_depth, utf8(result));
}

Watching::Watching(BoundaryObserver& observer, QString const& pluginFile) {
    QString const folder =
        pluginFile.isEmpty() ? QCoreApplication::applicationDirPath() : QFileInfo(pluginFile).absolutePath();
    for (Tap& tap : taps) {
        tap.connected = find(tap, folder);
        if (tap.connected)
            tap.connected(&tap.observer);
        else
            qWarning("pictara: the calls on the library %s are not seen", tap.library);
    }
    Boundary::instance().m_observer = &observer;
}

Watching::~Watching() {
    Boundary::instance().m_observer = nullptr;
    for (Tap& tap : taps)
        if (ObserveCalls const connected = std::exchange(tap.connected, nullptr))
            connected(nullptr);
}
} // namespace pictara
