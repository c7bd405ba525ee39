#include "simulator/host/run/script_report.h"

#include "simulator/files/interruption.h"
#include "simulator/host/report/sitting.h"
#include "simulator/host/run/measurement.h"
#include "simulator/host/run/verdict.h"
#include "simulator/host/session/session.h"

namespace pictara {
QString reportScript(Session& session, DialogPage& page, ScriptEnd const& end, OutputFolder& output) {
    QString lack;
    RunProgress last = end.state;
    last.statusTexts = page.statusTexts();
    std::vector<Section> sections{{"script",
                                   "Script",
                                   Layout::One,
                                   {{"file", "script", {session.options().scriptFile}},
                                    {"commands", "commands", {double(end.commands)}},
                                    {"commands_done", "commands done", {double(end.done)}}}},
                                  stepSection(last, captureRows(page)),
                                  sceneSection(session),
                                  registerSection(session),
                                  eepromSection(session, page.text("Prom_Label"), &lack)};
    if (end.cause.isEmpty() && session.desk().listEntriesWritten() > 0) {
        RunDriver driver(page, [&] { session.frames().deliverNext(); });
        auto const before = measureEvenness(session, page, driver, false);
        auto const after = measureEvenness(session, page, driver, true);
        std::vector<Section> const evenness = evennessSections(before, after);
        sections.insert(sections.begin() + 1, evenness.begin(), evenness.end());
    }
    if (files::isInterrupted())
        return {};
    sections.push_back(solutionSection(session));
    QString const result = end.cause.isEmpty() ? QStringLiteral("done") : QStringLiteral("failed");
    return writeReport({"script", result, end.cause, sections}, output);
}
} // namespace pictara
