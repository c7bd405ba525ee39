#include "simulator/host/run/verdict.h"

#include "simulator/host/session/message_log.h"

#include <QPainter>
#include <QRegularExpression>

namespace pictara {
namespace {
// By a part of the library's message.
constexpr std::pair<char const*, ExitCode> kRefusals[] = {
    {"too dark", kExitTooDark},         {"clipped", kExitClipped},      {"not flat", kExitNotFlat},
    {"lamp is not even", kExitNotFlat}, {"image size", kExitWrongSize},
};

// Of a run that shows no error. Only the EEPROM holds the dialog before the first step: it goes on once that
// answers or is certain not to be there.
constexpr char kStands[] = "Run All stands still without an error, as it does where it waits for a person.";
constexpr char kStandsAtFirst[] =
    "Run All stands still before its first step: it asks for the EEPROM and does not learn whether there is "
    "one.";
} // namespace

QString resultsFile(QString const& status) {
    // One page cuts the name at "/" alone, so that what lies before "\\" stays.
    static QRegularExpression const name(QStringLiteral("^Done: (?:.*[/\\\\])?(.*)"));
    return name.match(status).captured(1);
}

QString causeOf(RunResult const& run, std::vector<CaptureRow> const& captures, bool hasEeprom) {
    QStringList causes;
    if (run.end == RunEnd::TimedOut)
        causes.append(QStringLiteral("The run did not end in %1 frames.").arg(run.last.frames));
    for (int i = 0; i < run.last.statusTexts.size(); ++i) {
        QString const status = run.last.statusTexts[i].trimmed();
        if (status.startsWith(QLatin1String("Error")) || status.startsWith(QLatin1String("Warning")) ||
            (run.end == RunEnd::TimedOut && isInProgress(status)) ||
            (hasEeprom && status == QLatin1String("No EEPROM.")))
            causes.append(QString::fromLatin1(kSteps[i].label) + QLatin1String(": ") + status);
    }
    for (CaptureRow const& row : captures)
        if (row.status.startsWith(QLatin1String("Error")))
            causes.append(row.button + QLatin1String(": ") + row.status);
    if (QString const solver = lastSolverCause().text; !solver.isEmpty())
        causes.prepend(solver);
    if (run.end == RunEnd::Cancelled && causes.isEmpty())
        causes.append(run.last.statusTexts.value(kSetup) == QLatin1String("Done.") ? kStands
                                                                                   : kStandsAtFirst);
    return causes.join(QLatin1String(" | "));
}

QJsonObject stepsOf(RunProgress const& last, std::vector<CaptureRow> const& captures) {
    QJsonObject steps{{"frames", last.frames}};
    for (int i = 0; i < last.statusTexts.size(); ++i)
        steps[kSteps[i].status] = last.statusTexts[i].trimmed();
    for (size_t i = 0; i < captures.size(); ++i)
        steps[QStringLiteral("capture_%1").arg(i + 1)] = captures[i].status;
    return steps;
}

ExitCode exitCodeOf(RunResult const& run) {
    if (run.end == RunEnd::TimedOut)
        return kExitTimeout;
    for (auto const& [told, code] : kRefusals)
        if (lastSolverCause().text.contains(QLatin1String(told)))
            return code;
    return kExitNotCalibrated;
}

QImage markedRefusal(QImage picture, QString const& blocks, uint32_t orientation) {
    static QRegularExpression const grid(QStringLiteral("^([0-9]+) x ([0-9]+): ")),
        run(QStringLiteral(
            "(?:([0-9]+):)?([0-9]+)-([0-9]+)")); // of blocks, the first one of a row behind that
    auto const size = grid.match(blocks);
    if (!size.hasMatch() || picture.isNull())
        return picture;
    QPainter painter(&picture);
    painter.translate(orientation & 1 ? picture.width() : 0, orientation & 2 ? picture.height() : 0);
    painter.scale((orientation & 1 ? -1.0 : 1.0) * picture.width() / size.captured(1).toDouble(),
                  (orientation & 2 ? -1.0 : 1.0) * picture.height() / size.captured(2).toDouble());
    QPen pen(QColor(255, 0, 255), 2);
    pen.setCosmetic(true);
    painter.setPen(pen);
    painter.setBrush(QColor(255, 0, 255, 70));
    double row = 0;
    for (auto runs = run.globalMatch(blocks, size.capturedEnd()); runs.hasNext();) {
        auto const told = runs.next();
        row = told.capturedLength(1) > 0 ? told.captured(1).toDouble() : row;
        for (int column = told.captured(2).toInt(); column <= told.captured(3).toInt(); ++column)
            painter.drawRect(QRectF(column, row, 1, 1));
    }
    return picture;
}
} // namespace pictara
