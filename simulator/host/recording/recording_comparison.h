#pragma once

#include "simulator/host/recording/recording.h"

#include <optional>

namespace pictara {
/// Where a replay differs from its recording first.
struct Difference {
    int line = 0;        ///< of the recording's file, from 1
    QByteArray recorded; ///< empty: nothing more
    QByteArray replayed; ///< empty: nothing
    int inputLine = 0;
    QByteArray input; ///< that was being replayed
};

/// Compares a replay with its recording, line by line.
class RecordingComparison {
public:
    /// The recording outlives this object.
    explicit RecordingComparison(Recording const& recording) : m_recording(recording) {}

    /// The input to be replayed next; empty when all were, or a difference was found.
    [[nodiscard]] QByteArray nextInput();
    /// A line that the replay made.
    void compare(QByteArray const& replayed);
    /// The input that was asked for last could not be given, for that cause.
    void refuse(QByteArray const& cause) { differ(cause); }

    [[nodiscard]] std::optional<Difference> const& difference() const { return m_difference; }
    [[nodiscard]] int inputs() const { return m_inputs; }
    [[nodiscard]] int calls() const { return int(m_next) - m_inputs; }

private:
    void differ(QByteArray const& replayed);

    Recording const& m_recording;
    size_t m_next = 0;
    size_t m_input = 0;
    int m_inputs = 0;
    std::optional<Difference> m_difference;
};

/// Some lines for the user.
[[nodiscard]] QString textOf(Difference const& difference, QString const& file);
} // namespace pictara
