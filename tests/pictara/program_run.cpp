#include "tests/pictara/program_run.h"

#include <QFile>
#include <QJsonDocument>
#include <QProcess>
#include <limits>

namespace {
constexpr int kLongestRunMs = 280'000;
} // namespace

ProgramRun::ProgramRun(QStringList arguments, QString const& folder)
    : m_output(folder.isEmpty() ? m_folder.path() : folder) {
    // A recording is replayed in a folder of the program's own.
    if (!arguments.contains(QStringLiteral("--replay")))
        arguments << QStringLiteral("--output") << m_output;
    QProcess process;
    process.start(QStringLiteral(PICTARA_SIM), arguments);
    m_ended = process.waitForFinished(kLongestRunMs) && process.exitStatus() == QProcess::NormalExit;
    m_exitCode = process.exitCode();
    // Lines end as the system's do.
    m_messages = QString::fromLocal8Bit(process.readAllStandardError()).remove(QLatin1Char('\r'));
    auto const written = [this](char const* names) {
        return contents(QDir(m_output).entryList({QLatin1String(names)}, QDir::Files).value(0, "none"));
    };
    m_summary = QString::fromUtf8(written("*summary.txt")).remove(QLatin1Char('\r'));
    m_json = QJsonDocument::fromJson(written("*summary.json")).object();
}

QByteArray ProgramRun::contents(QString const& name) const { return contentsOf(file(name)); }

QString ProgramRun::value(char const* name) const {
    return ('\n' + m_summary)
        .section(QStringLiteral("\n%1: ").arg(QLatin1String(name)), 1, 1)
        .section('\n', 0, 0);
}

double ProgramRun::figure(char const* name) const {
    bool ok = false;
    double const number = value(name).section(QLatin1Char(' '), 0, 0).toDouble(&ok);
    return ok ? number : std::numeric_limits<double>::quiet_NaN();
}

QByteArray contentsOf(QString const& name) {
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeFile(QString const& name, QByteArray const& contents) {
    QFile file(name);
    return file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size();
}
