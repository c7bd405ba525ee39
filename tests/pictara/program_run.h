#pragma once

#include <QDir>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// One run of the program with its results in a folder of its own, unless one is given.
class ProgramRun {
public:
    explicit ProgramRun(QStringList arguments, QString const& folder = {});

    /// -1 when it crashed or did not end.
    [[nodiscard]] int exitCode() const { return m_ended ? m_exitCode : -1; }
    [[nodiscard]] QString const& messages() const { return m_messages; }
    /// The summary for people, whatever kind of run it was; empty when none was written.
    [[nodiscard]] QString const& summary() const { return m_summary; }
    /// The same for scripts.
    [[nodiscard]] QJsonObject const& json() const { return m_json; }
    /// What a line of the summary says.
    [[nodiscard]] QString value(char const* name) const;
    /// The figure of a line of the summary, or one that no comparison likes.
    [[nodiscard]] double figure(char const* name) const;
    [[nodiscard]] QString file(QString const& name) const { return QDir(m_output).filePath(name); }
    /// What a file among the results, or one of that path, holds; empty when there is none.
    [[nodiscard]] QByteArray contents(QString const& name) const;

private:
    QTemporaryDir m_folder;
    QString m_output;
    bool m_ended = false;
    int m_exitCode = 0;
    QString m_messages, m_summary;
    QJsonObject m_json;
};

/// What a file holds; empty when there is none.
[[nodiscard]] QByteArray contentsOf(QString const& name);
/// False when the file cannot be written.
[[nodiscard]] bool writeFile(QString const& name, QByteArray const& contents);

#define EXPECT_EXIT_CODE(run, code)                                                                          \
    EXPECT_EQ((run).exitCode(), code) << (run).messages().toStdString() << (run).summary().toStdString()
