#pragma once

#include "simulator/boundary/boundary.h"

#include <QByteArray>
#include <QString>
#include <functional>
#include <utility>
#include <vector>

namespace pictara {
struct Options;

/// Names for what differs from machine to machine, so that recordings can be compared.
class Placeholders {
public:
    /// The UTF-8 path, in the system's and in Qt's way of writing it, is shown as `name`.
    void add(QString const& path, QByteArray const& name);
    [[nodiscard]] QByteArray hide(QByteArray text) const;
    [[nodiscard]] QByteArray reveal(QByteArray text) const;

private:
    std::vector<std::pair<QByteArray, QByteArray>> m_names; ///< longest path first
};

/// Of a session with these options: "<output>", "<ini>" and "<program>".
[[nodiscard]] Placeholders placeholdersOf(Options const& options);

/// Writes what happens at the boundary as the lines of a recording: an input stands at the beginning of a
/// line, and the calls that came from it below, four blanks for each depth. A line is one call with its
/// result; where another call came up meanwhile, the result has a line of its own. Two kinds of calls in
/// succession share a line: bus writes that go on from one another, each with a group of digits, and reads of
/// one register that is polled, with its last value, because their number is a matter of time.
class SeenLines : public BoundaryObserver {
public:
    using Sink = std::function<void(QByteArray const& line)>;
    SeenLines(Placeholders placeholders, Sink sink);

    void doing(QStringList const& words) override;
    void began(BoundaryCall const& call, int depth) override;
    void ended(int depth, QByteArray const& result) override;

    /// Hands over what waits for a call that may share its line.
    void flush();

private:
    struct OpenCall {
        QByteArray line;
        bool isWritten = false;
    };

    void writeOpenCalls();
    void write(QByteArray const& line);

    Placeholders const m_placeholders;
    Sink const m_sink;
    std::vector<OpenCall> m_open;
    QByteArray m_waiting;
};

/// The line that stands for two calls in succession; empty when each has its own.
[[nodiscard]] QByteArray sharedLine(QByteArray const& first, QByteArray const& second);

/// How a line is written: a long bus write in several, and the time of day in what is read and written
/// without its digits.
[[nodiscard]] std::vector<QByteArray> shownLines(QByteArray const& line);
} // namespace pictara
