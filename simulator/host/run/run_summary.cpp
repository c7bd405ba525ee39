#include "simulator/host/run/run_summary.h"

#include "simulator/host/run/run_verdict.h"
#include "simulator/host/run/stored_solution.h"
#include "simulator/host/session/session.h"

#include <QFileInfo>
#include <QTextStream>

namespace pictara {
namespace {
void writeSteps(QTextStream& out, QStringList const& texts) {
    for (int i = 0; i < texts.size(); ++i)
        out << "step " << kSteps[i].status << ": " << texts[i].trimmed() << '\n';
}

void writeCaptures(QTextStream& out, std::vector<CaptureRow> const& rows) {
    for (CaptureRow const& row : rows)
        out << "capture " << row.button << " at " << row.kelvin << " K: " << row.status << '\n';
}

QString heldIn(EepromUse const& use) {
    if (!use.holdsSolution)
        return QStringLiteral("nothing was saved, there is no solution");
    return *use.holdsSolution ? QStringLiteral("holds the solution")
                              : QStringLiteral("does not hold the solution: ") + use.lack;
}

void writeEeprom(QTextStream& out, std::optional<EepromUse> const& use) {
    if (!use) {
        out << "EEPROM: none\n";
        return;
    }
    out << "EEPROM: " << heldIn(*use) << '\n' << "EEPROM file: " << use->file << '\n';
    if (!use->fault.isEmpty())
        out << "EEPROM fault: " << use->fault << '\n';
    out << "EEPROM operations: " << use->operations << '\n'
        << "EEPROM bytes written: " << use->bytesWritten << '\n';
}

FactTable stepFacts(RunSummary const& summary) {
    FactTable table{QStringLiteral("steps"), QStringLiteral("Steps"), {}};
    QStringList const& texts = summary.run.last.statusTexts;
    for (int i = 0; i < texts.size(); ++i)
        table.facts.emplace_back(QString::fromLatin1(kSteps[i].status), QString::fromLatin1(kSteps[i].status),
                                 texts[i].trimmed());
    for (size_t i = 0; i < summary.captures.size(); ++i) {
        CaptureRow const& row = summary.captures[i];
        table.facts.emplace_back(QStringLiteral("capture_%1").arg(i + 1),
                                 QStringLiteral("%1 at %2 K").arg(row.button).arg(row.kelvin), row.status);
    }
    table.facts.emplace_back("frames", "frames", summary.run.last.frames);
    table.facts.emplace_back("ticks", "ticks", summary.run.last.ticks);
    return table;
}

FactTable eepromFacts(std::optional<EepromUse> const& use) {
    FactTable table{QStringLiteral("eeprom"),
                    QStringLiteral("EEPROM"),
                    {{"has_eeprom", "there is one", use.has_value()}}};
    if (!use)
        return table;
    table.facts.emplace_back(QStringLiteral("contents"), QStringLiteral("contents"), heldIn(*use));
    if (use->holdsSolution)
        table.facts.emplace_back("holds_solution", "holds the solution", *use->holdsSolution);
    table.facts.emplace_back(QStringLiteral("file"), QStringLiteral("file"), use->file);
    table.facts.emplace_back(QStringLiteral("fault"), QStringLiteral("fault"), use->fault);
    table.facts.emplace_back("operations", "operations", double(use->operations));
    table.facts.emplace_back("written_bytes", "bytes written", double(use->bytesWritten));
    return table;
}

// A page that takes several pictures has them solved when it has all.
QString refusedCaption(RunSummary const& summary) {
    QString const what =
        summary.captures.empty()
            ? QStringLiteral("The picture that the calibration library refused")
            : QStringLiteral("The view when the calibration library refused one of the pictures");
    return summary.hasRefusedBlocks ? what + QStringLiteral("; the refused blocks are marked") : what;
}

FactTable fileFacts(RunSummary const& summary) {
    FactTable table{QStringLiteral("files"), QStringLiteral("Files"), {}};
    if (!summary.earlierResults.isEmpty())
        table.facts.emplace_back(QStringLiteral("earlier_results"),
                                 QStringLiteral("results of earlier runs in this folder"),
                                 summary.earlierResults.join(QLatin1String(", ")));
    return table;
}
} // namespace

std::optional<EepromUse> eepromUseOf(Session& session, DialogPage const& page, Options const& options) {
    simulator::SimulatedCamera const& camera = session.camera();
    if (!camera.hasEeprom())
        return std::nullopt;
    QFileInfo const file(session.eepromFile());
    bool const isInFolder = file.absolutePath() == session.outputFolder();
    EepromUse use{.file = isInFolder ? file.fileName() : file.filePath(),
                  .fault = options.fault ? textOf(*options.fault) : QString(),
                  .operations = camera.deviceOperations(),
                  .bytesWritten = camera.deviceBytesWritten(),
                  .holdsSolution = {},
                  .lack = {}};
    if (session.desk().listEntriesWritten() > 0)
        use.holdsSolution = isSolutionStored(session, options.profile, page.text("Prom_Label"), &use.lack);
    return use;
}

RunReport reportOf(Session& session, RunSummary const& summary) {
    return {.run = QStringLiteral("calibration"),
            .result = toldOf(summary.verdict),
            .cause = summary.cause,
            .tables = {sceneFacts(summary.scene), stepFacts(summary),
                       registerFacts(session, summary.solutionRegisters, summary.registerWrites),
                       eepromFacts(summary.eeprom), fileFacts(summary)},
            .before = summary.before,
            .after = summary.after,
            .refused = summary.refused,
            .refusedCaption = refusedCaption(summary),
            .lights = summary.lights,
            .registers = solutionOf(session)};
}

QString summaryText(RunSummary const& summary) {
    QString text;
    QTextStream out(&text);
    out << "result: " << toldOf(summary.verdict) << '\n';
    if (!summary.cause.isEmpty())
        out << "cause: " << summary.cause << '\n';
    if (!summary.firstRefusal.isEmpty())
        out << "refused before the light was mended: " << summary.firstRefusal << '\n';
    out << '\n'
        << sceneLines(summary.scene) << '\n'
        << evennessLines("uncorrected", summary.before) << evennessLines("corrected", summary.after) << '\n';
    if (!summary.lights.empty())
        out << lightMatrixLines(summary.lights) << '\n';
    writeSteps(out, summary.run.last.statusTexts);
    writeCaptures(out, summary.captures);
    out << '\n';
    writeEeprom(out, summary.eeprom);
    out << '\n'
        << "frames: " << summary.run.last.frames << '\n'
        << "ticks: " << summary.run.last.ticks << '\n'
        << "registers of the solution written: " << summary.solutionRegisters << '\n'
        << "register writes in all: " << summary.registerWrites << '\n'
        << "files: " << summary.filesWritten.join(QLatin1String(", ")) << '\n';
    if (!summary.earlierResults.isEmpty())
        out << "results files of earlier runs: " << summary.earlierResults.join(QLatin1String(", ")) << '\n';
    return text;
}
} // namespace pictara
