#include "simulator/host/run_summary.h"

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

void writeEeprom(QTextStream& out, std::optional<EepromUse> const& use) {
    if (!use) {
        out << "EEPROM: none\n";
        return;
    }
    out << "EEPROM: " << use->file << '\n';
    if (!use->fault.isEmpty())
        out << "EEPROM fault: " << use->fault << '\n';
    out << "EEPROM operations: " << use->operations << '\n'
        << "EEPROM bytes written: " << use->bytesWritten << '\n';
}

} // namespace

QString summaryText(RunSummary const& summary) {
    QString text;
    QTextStream out(&text);
    out << "result: " << (summary.succeeded ? "calibrated" : "not calibrated") << '\n';
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
    return text;
}

} // namespace pictara
