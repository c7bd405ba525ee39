#pragma once

#include "simulator/host/run/run_all.h"

#include <cstdio>

namespace pictara {
/// Shows how a run gets on: one bar that is redrawn on a terminal, else a line whenever a step begins or
/// ends. Steps are named as the dialog names them.
class ProgressReport {
public:
    /// The stream stays the caller's.
    ProgressReport(std::FILE* stream, DialogPage const& page);
    ~ProgressReport();
    ProgressReport(ProgressReport const&) = delete;
    ProgressReport& operator=(ProgressReport const&) = delete;

    void show(RunProgress const& progress);
    /// A line of its own.
    void say(QString const& text);

private:
    void showLines(RunProgress const& progress);
    void showBar(RunProgress const& progress);

    std::FILE* m_stream;
    DialogPage m_page;
    bool m_terminal;
    QStringList m_shown;
};

/// Share of a run's work that is done, 0 to 1.
[[nodiscard]] double shareDone(QStringList const& statusTexts);
} // namespace pictara
