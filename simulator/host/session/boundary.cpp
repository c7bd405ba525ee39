#include "simulator/host/session/boundary.h"

#include "simulator/host/session/words.h"

#include <algorithm>

namespace pictara {
namespace {
QByteArray utf8(QByteArray const& local8Bit) { return QString::fromLocal8Bit(local8Bit).toUtf8(); }
} // namespace

Boundary& Boundary::instance() {
    static Boundary boundary;
    return boundary;
}

void Boundary::add(BoundaryObserver& observer) { m_observers.push_back(&observer); }
void Boundary::remove(BoundaryObserver& observer) { std::erase(m_observers, &observer); }

void Boundary::doing(QStringList const& words) {
    QByteArray const input = m_observers.empty() ? QByteArray() : lineOf(words).toUtf8();
    for (BoundaryObserver* const observer : m_observers)
        observer->doing(input);
}

void Boundary::begin(CallSource source, char const* name, QByteArray const& arguments) {
    m_open.push_back({source, name, utf8(arguments)});
    // A copy: a call that an observer leads to would move the original.
    BoundaryCall const call = m_open.back();
    for (BoundaryObserver* const observer : m_observers)
        observer->began(call, int(m_open.size()) - 1);
}

void Boundary::end(QByteArray const& result) {
    if (m_open.empty())
        return;
    BoundaryCall const call = m_open.back();
    m_open.pop_back();
    for (BoundaryObserver* const observer : m_observers)
        observer->ended(call, int(m_open.size()), utf8(result));
}
} // namespace pictara
