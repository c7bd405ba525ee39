#include "simulator/host/run/script_report.h"

#include "simulator/files/interruption.h"

#include "simulator/host/run/closing_measurement.h"
#include "simulator/host/run/run_summary.h"
#include "simulator/host/session/session.h"

namespace pictara {
namespace {
FactTable scriptFacts(Options const& options, ScriptEnd const& end) {
    QString const file = QStringLiteral("file");
    return {QStringLiteral("script"),
            QStringLiteral("Script"),
            {{file, file, options.scriptFile},
             {"commands", "commands", double(end.commands)},
             {"commands_done", "commands done", double(end.done)}}};
}

RunSummary summaryOf(Session& session, DialogPage const& page, Options const& options, ScriptEnd const& end) {
    RunSummary summary;
    summary.scene = session.scene();
    summary.run.last = end.state;
    summary.run.last.statusTexts = page.statusTexts();
    summary.captures = CaptureRows(page).read();
    summary.solutionRegisters = session.desk().listEntriesWritten();
    summary.registerWrites = session.camera().registerWrites();
    summary.eeprom = eepromUseOf(session, page, options);
    summary.cause = end.cause;
    return summary;
}
} // namespace

QString reportScript(Session& session, DialogPage& page, Options const& options, ScriptEnd const& end,
                     OutputFolder& output) {
    RunSummary summary = summaryOf(session, page, options, end);
    if (end.cause.isEmpty() && summary.solutionRegisters > 0) {
        RunDriver driver(
            page, [&] { session.frames().deliverNext(); }, options.framesPerTick, options.maxFrames);
        summary.before = measureInDetail(session, page, driver, false);
        summary.after = measureInDetail(session, page, driver, true);
    }
    if (files::isInterrupted())
        return {};
    RunReport report = reportOf(session, summary);
    report.run = QStringLiteral("script");
    report.result = end.cause.isEmpty() ? QStringLiteral("done") : QStringLiteral("failed");
    report.tables.insert(report.tables.begin(), scriptFacts(options, end));
    return writeReport(report, output);
}
} // namespace pictara
