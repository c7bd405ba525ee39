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
        text = QString::fromLocal8Bit(process.readAllStandardOutput());
        json = QJsonDocument::fromJson(
                   contents(m_output.entryList({"*summary.json"}, QDir::Files).value(0, "none")))
                   .object();
    }

    /// What the summary has at a path of keys, apart by dots.
    [[nodiscard]] QJsonValue at(char const* path) const {
        QJsonValue value = json;
        for (QString const& key : QString(path).split('.'))
            value = value[key];
        return value;
    }
    [[nodiscard]] QString value(char const* path) const { return at(path).toString(); }
    /// A figure, or one that no comparison likes.
    [[nodiscard]] double figure(char const* path) const {
        return at(path).toDouble(std::numeric_limits<double>::quiet_NaN());
    }
    /// The dialog's, without the correction and with it.
    [[nodiscard]] double before() const { return figure("uncorrected.dialog_colour_deviation_ab"); }
    [[nodiscard]] double after() const { return figure("corrected.dialog_colour_deviation_ab"); }
    [[nodiscard]] QString file(QString const& name) const { return m_output.filePath(name); }
    /// What a file among the results, or one of that path, holds; empty when there is none.
    [[nodiscard]] QByteArray contents(QString const& name) const { return contentsOf(file(name)); }

    int exitCode; ///< -1 when it crashed or did not end
    QString messages;
    QString text;     ///< on the terminal
    QJsonObject json; ///< the summary for scripts, whatever kind of run it was; empty when none was written

private:
    QTemporaryDir m_folder;
    QDir m_output;
};

#define EXPECT_EXIT_CODE(run, code)                                                                          \
    EXPECT_EQ((run).exitCode, code) << (run).messages.toStdString() << (run).text.toStdString()

/// Tests of the program, each with a folder for the files that it is handed.
struct Program : testing::Test, TestFiles {};
