#include "simulator/host/run/run_verdict.h"

#include "simulator/host/run/refusal.h"
#include "simulator/host/session/message_log.h"

namespace pictara {
namespace {
bool isFailure(QString const& status, RunEnd end, bool hasEeprom) {
    return status.startsWith(QLatin1String("Error")) || status.startsWith(QLatin1String("Warning")) ||
           (end == RunEnd::TimedOut && status.startsWith(QLatin1String("In progress"))) ||
           (hasEeprom && status == QLatin1String("No EEPROM."));
}

// Of a run that shows no error. Only the EEPROM holds the dialog before the first step: it goes on once that
// answers or is certain not to be there.
QString standstillOf(QStringList const& texts) {
    bool const hasBegun = texts.value(kSetup) == QLatin1String("Done.");
    return hasBegun ? QStringLiteral(
                          "Run All stands still without an error, as it does where it waits for a person.")
                    : QStringLiteral("Run All stands still before its first step: it asks for the EEPROM and "
                                     "does not learn whether there is one.");
}
} // namespace

bool isCalibrated(RunResult const& run) {
    return run.end == RunEnd::Finished && isCalibrated(run.last.statusTexts);
}

bool wasRefusedForItsLight(RunResult const& run) {
    ExitCode const code = exitCodeOfRefusal(lastSolverMessage());
    return !isCalibrated(run) && code != kExitNotCalibrated && code != kExitWrongSize;
}

QString causeOf(RunResult const& run, std::vector<CaptureRow> const& captures, bool hasEeprom) {
    QStringList causes;
    if (run.end == RunEnd::TimedOut)
        causes.append(QStringLiteral("The run did not end in %1 frames.").arg(run.last.frames));
    for (int i = 0; i < run.last.statusTexts.size(); ++i) {
        QString const status = run.last.statusTexts[i].trimmed();
        if (isFailure(status, run.end, hasEeprom))
            causes.append(QString::fromLatin1(kSteps[i].status) + QLatin1String(": ") + status);
    }
    for (CaptureRow const& row : captures)
        if (row.status.startsWith(QLatin1String("Error")))
            causes.append(row.button + QLatin1String(": ") + row.status);
    if (QString const solver = lastSolverMessage(); !solver.isEmpty())
        causes.append(solver);
    if (run.end == RunEnd::Cancelled && causes.isEmpty())
        causes.append(standstillOf(run.last.statusTexts));
    return causes.join(QLatin1String(" | "));
}

QString toldOf(Verdict verdict) {
    switch (verdict) {
    case Verdict::NotSaved:
        return QStringLiteral("calibrated, not saved");
    case Verdict::BeyondLimit:
        return QStringLiteral("calibrated, uniformity beyond the limit");
    case Verdict::Calibrated:
        return QStringLiteral("calibrated");
    case Verdict::NotCalibrated:
        break;
    }
    return QStringLiteral("not calibrated");
}

int exitCodeOf(RunSummary const& summary) {
    switch (summary.verdict) {
    case Verdict::NotSaved:
        return kExitNotSaved;
    case Verdict::BeyondLimit:
        return kExitBeyondLimit;
    case Verdict::Calibrated:
        return kExitDone;
    case Verdict::NotCalibrated:
        break;
    }
    return summary.run.end == RunEnd::TimedOut ? kExitTimeout : exitCodeOfRefusal(lastSolverMessage());
}
} // namespace pictara
