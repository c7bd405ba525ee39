#pragma once

#include "tests/support/small_profile.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <limits>

/// What a file holds; empty when there is none.
[[nodiscard]] inline QByteArray contentsOf(QString const& name) {
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// One run of the program with its results in a folder of its own, unless one is given.
class ProgramRun {
public:
    explicit ProgramRun(QStringList arguments, QString const& folder = {})
        : m_output(folder.isEmpty() ? m_folder.path() : folder) {
        // A recording is replayed in a folder of the program's own.
        if (!arguments.contains("--replay"))
            arguments << "--output" << m_output.path();
        QProcess process;
        process.start(PICTARA_SIM, arguments);
        bool const ended = process.waitForFinished(280'000) && process.exitStatus() == QProcess::NormalExit;
        exitCode = ended ? process.exitCode() : -1;
        // Lines end as the system's do.
        messages = QString::fromLocal8Bit(process.readAllStandardError()).remove('\r');
        auto const written = [this](char const* names) {
            return contents(m_output.entryList({names}, QDir::Files).value(0, "none"));
        };
        summary = QString::fromUtf8(written("*summary.txt")).remove('\r');
        json = QJsonDocument::fromJson(written("*summary.json")).object();
    }

    /// What a line of the summary says.
    [[nodiscard]] QString value(char const* name) const {
        return ('\n' + summary).section(QString("\n%1: ").arg(name), 1, 1).section('\n', 0, 0);
    }
    /// The figure of a line of the summary, or one that no comparison likes.
    [[nodiscard]] double figure(char const* name) const {
        bool ok = false;
        double const number = value(name).section(' ', 0, 0).toDouble(&ok);
        return ok ? number : std::numeric_limits<double>::quiet_NaN();
    }
    [[nodiscard]] QString file(QString const& name) const { return m_output.filePath(name); }
    /// What a file among the results, or one of that path, holds; empty when there is none.
    [[nodiscard]] QByteArray contents(QString const& name) const { return contentsOf(file(name)); }

    int exitCode; ///< -1 when it crashed or did not end
    QString messages;
    QString summary;  ///< for people, whatever kind of run it was; empty when none was written
    QJsonObject json; ///< the same for scripts

private:
    QTemporaryDir m_folder;
    QDir m_output;
};

#define EXPECT_EXIT_CODE(run, code)                                                                          \
    EXPECT_EQ((run).exitCode, code) << (run).messages.toStdString() << (run).summary.toStdString()

/// Tests of the program, each with a folder for the files that it is handed.
struct Program : testing::Test, TestFiles {};
