#pragma once

#include <QDir>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// One run of the program with its results in a folder of its own, unless one is given. The summary of
/// a replay or a script is that run's summary.
class ProgramRun {
public:
    explicit ProgramRun(QStringList arguments, QString const& folder = {});

    /// -1 when it crashed or did not end.
    [[nodiscard]] int exitCode() const { return m_ended ? m_exitCode : -1; }
    [[nodiscard]] QString const& messages() const { return m_messages; }
    [[nodiscard]] QString const& summary() const { return m_summary; }
    [[nodiscard]] QString file(QString const& name) const { return QDir(m_output).filePath(name); }
    /// What a file of that name holds; empty when there is none.
    [[nodiscard]] QByteArray contents(QString const& name) const;
    /// The summary for scripts; `kind` is what stands before its name.
    [[nodiscard]] QJsonObject json(QString const& kind = {}) const;
    /// Fails the test when the report is no well-formed page.
    void expectPage(QString const& kind = {}) const;
    /// What a line of the summary says.
    [[nodiscard]] QString value(char const* name) const;
    /// The figure of a line of the summary, or one that no comparison likes.
    [[nodiscard]] double figure(char const* name) const;

private:
    QTemporaryDir m_folder;
    QString m_output;
    bool m_ended = false;
    int m_exitCode = 0;
    QString m_messages, m_summary;
};

/// False when the file cannot be written.
[[nodiscard]] bool writeFile(QString const& name, QByteArray const& contents);

#define ASSERT_EXIT_CODE(run, code) ASSERT_EQ((run).exitCode(), code)

#define EXPECT_EXIT_CODE(run, code)                                                                          \
    EXPECT_EQ((run).exitCode(), code) << (run).messages().toStdString() << (run).summary().toStdString()
