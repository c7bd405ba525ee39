#include "tests/pictara/program_run.h"

#include <QFile>
#include <QJsonDocument>
#include <QProcess>
#include <QRegularExpression>
#include <QXmlStreamReader>
#include <gtest/gtest.h>
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
    m_summary = QString::fromUtf8(contents("summary.txt") + contents("replay-summary.txt") +
                                  contents("script-summary.txt"))
                    .remove(QLatin1Char('\r'));
}

QByteArray ProgramRun::contents(QString const& name) const {
    QFile file(this->file(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QJsonObject ProgramRun::json(QString const& kind) const {
    return QJsonDocument::fromJson(contents(kind + "summary.json")).object();
}

void ProgramRun::expectPage(QString const& kind) const {
    QByteArray const page = contents(kind + "report.html");
    EXPECT_GT(page.size(), 1000);
    EXPECT_LT(page.size(), 2'000'000);
    for (char const* outside : {"http:", "https:", "url(", "@import"})
        EXPECT_FALSE(page.contains(outside)) << outside;
    QXmlStreamReader reader(page);
    while (!reader.atEnd())
        if (reader.readNext() == QXmlStreamReader::StartElement) {
            auto const source =
                reader.attributes().value("src").toString() + reader.attributes().value("srcset").toString();
            EXPECT_TRUE(source.isEmpty() || source.startsWith("data:")) << source.left(80).toStdString();
        }
    EXPECT_FALSE(reader.hasError()) << qPrintable(reader.errorString());
}

bool writeFile(QString const& name, QByteArray const& contents) {
    QFile file(name);
    return file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size();
}

QString ProgramRun::value(char const* name) const {
    QRegularExpression const line(QStringLiteral("^%1: (.*)$").arg(QString::fromLatin1(name)),
                                  QRegularExpression::MultilineOption);
    return line.match(m_summary).captured(1);
}

double ProgramRun::figure(char const* name) const {
    bool ok = false;
    double const number = value(name).section(QLatin1Char(' '), 0, 0).toDouble(&ok);
    return ok ? number : std::numeric_limits<double>::quiet_NaN();
}
