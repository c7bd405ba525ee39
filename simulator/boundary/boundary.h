#pragma once

#include "simulator/boundary/observed_call.h"

#include <QByteArray>
#include <QStringList>

namespace pictara {
enum class CallSource {
    Host,   ///< a service of the host, called by the plug-in
    Camera, ///< a function of `veyra2`, called by the plug-in
    Solver, ///< a function of `shadefit`, called by the plug-in
    Plugin, ///< a function of the plug-in, called by the host
};

/// A call that crosses the boundary of the plug-in. Texts are UTF-8.
struct BoundaryCall {
    CallSource source = CallSource::Host;
    QByteArray name;
    QByteArray arguments;
};

/// Whoever watches the boundary. Calls nest: the host may notify the plug-in while that is in a service.
class BoundaryObserver {
public:
    virtual ~BoundaryObserver() = default;
    /// The host, or a person at it, is about to do something from which calls may come: a frame, a tick, a
    /// button. The words are those of a line of a script.
    virtual void doing(QStringList const& words) = 0;
    virtual void began(BoundaryCall const& call, int depth) = 0;
    /// The innermost open call. The result is empty when there is none.
    virtual void ended(int depth, QByteArray const& result) = 0;
};

/// The boundary between host and plug-in, which is the process's: services and library functions have no
/// context. Its observer is told on the GUI thread; without one nothing is written down.
class Boundary {
public:
    [[nodiscard]] static Boundary& instance();

    [[nodiscard]] bool isObserved() const { return m_observer != nullptr; }
    /// The host's own calls of the camera library are not the plug-in's and are not told.
    [[nodiscard]] bool isHostAtWork() const { return m_hostDepth > 0; }

    void doing(QStringList const& words);
    void begin(CallSource source, char const* name, QByteArray const& local8BitArguments);
    void end(QByteArray const& local8BitResult);

private:
    friend class Watching;
    friend class HostAtWork;
    Boundary() = default;

    BoundaryObserver* m_observer = nullptr;
    int m_depth = 0; ///< open calls
    int m_hostDepth = 0;
};

/// Tells the boundary of calls from one source, for `simulator::observed`.
struct SourceWatch {
    [[nodiscard]] bool isWatching() const { return Boundary::instance().isObserved(); }
    void began(char const* name, QByteArray const& arguments) const {
        Boundary::instance().begin(source, name, arguments);
    }
    void ended(QByteArray const& result) const { Boundary::instance().end(result); }

    CallSource source;
};

/// Brackets a call of the host's own.
class HostAtWork {
public:
    HostAtWork() { ++Boundary::instance().m_hostDepth; }
    ~HostAtWork() { --Boundary::instance().m_hostDepth; }
    Q_DISABLE_COPY(HostAtWork)
};

/// As long as this object stands, its observer is told of every call across the boundary, those on the
/// stand-in libraries included. Libraries of another make cannot be watched, which is logged.
class Watching {
public:
    /// `pluginFile` as a host's user names it, empty for that beside the program; beside the plug-in lie its
    /// libraries. The observer outlives this, and is the only one meanwhile.
    Watching(BoundaryObserver& observer, QString const& pluginFile);
    ~Watching();
    Q_DISABLE_COPY(Watching)
};
} // namespace pictara
