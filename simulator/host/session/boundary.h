#pragma once

#include <QByteArray>
#include <QString>
#include <vector>

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
    /// button. The text is one of recorded_input.h.
    virtual void doing(QByteArray const& input) = 0;
    virtual void began(BoundaryCall const& call, int depth) = 0;
    /// Of the innermost open call. The result is empty when there is none.
    virtual void ended(BoundaryCall const& call, int depth, QByteArray const& result) = 0;
};

/// The boundary between host and plug-in, which is the process's: services and library functions have no
/// context. Observers are told on the GUI thread, in the order in which they were added, and outlive their
/// watching; without one nothing is written down.
class Boundary {
public:
    [[nodiscard]] static Boundary& instance();

    void add(BoundaryObserver& observer);
    void remove(BoundaryObserver& observer);
    [[nodiscard]] bool isObserved() const { return !m_observers.empty(); }

    void doing(QString const& input);
    void begin(CallSource source, char const* name, QByteArray const& local8BitArguments);
    void end(QByteArray const& local8BitResult);

    /// The host's own calls of the camera library are not the plug-in's and are not told.
    void enterHost() { ++m_hostDepth; }
    void leaveHost() { --m_hostDepth; }
    [[nodiscard]] bool isHostAtWork() const { return m_hostDepth > 0; }

private:
    Boundary() = default;

    std::vector<BoundaryObserver*> m_observers;
    std::vector<BoundaryCall> m_open;
    int m_hostDepth = 0;
};

/// Brackets a call. Nothing is told when nobody watched at its beginning.
class Crossing {
public:
    /// `arguments()` gives the text of the arguments, in the local code page.
    template <typename Arguments>
    Crossing(CallSource source, char const* name, Arguments arguments)
        : m_isTold(Boundary::instance().isObserved()) {
        if (m_isTold)
            Boundary::instance().begin(source, name, arguments());
    }
    ~Crossing() {
        if (m_isTold)
            Boundary::instance().end(m_result);
    }
    Crossing(Crossing const&) = delete;
    Crossing& operator=(Crossing const&) = delete;

    [[nodiscard]] bool isTold() const { return m_isTold; }
    void setResult(QByteArray const& local8Bit) { m_result = local8Bit; }

private:
    bool const m_isTold;
    QByteArray m_result;
};

/// Brackets a call of the host's own.
class HostAtWork {
public:
    HostAtWork() { Boundary::instance().enterHost(); }
    ~HostAtWork() { Boundary::instance().leaveHost(); }
    HostAtWork(HostAtWork const&) = delete;
    HostAtWork& operator=(HostAtWork const&) = delete;
};
} // namespace pictara
