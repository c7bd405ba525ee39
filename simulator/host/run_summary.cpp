#include "simulator/host/run_summary.h"

#include <QPainter>
#include <QTextStream>

namespace pictara {
namespace {

QString percent(double share) {
    return QString::number(share * 100, 'f', 2) + QLatin1String(" %");
}

QString orMissing(QString const& text) {
    return text.isEmpty() ? QStringLiteral("not measured") : text;
}

void writeLight(QTextStream& out, RunSummary const& summary) {
    simulator::Light const& light = summary.light;
    out << "sensor: " << summary.camera.sensorName << " (kind " << summary.camera.sensorKind << ", variant "
        << summary.camera.variant << "), " << summary.camera.width << " x " << summary.camera.height << '\n'
        << "profile: " << summary.camera.profile << '\n'
        << "lens: " << (summary.shading.isEmpty() ? QStringLiteral("of the profile") : summary.shading)
        << '\n'
        << "light: " << light.colourTemperature << " K, level " << light.level;
    if (light.gradient != 0)
        out << ", gradient " << light.gradient;
    if (light.objectInPicture)
        out << ", with an object in the picture";
    out << '\n' << "seed: " << summary.seed << '\n';
}

void writeEvenness(QTextStream& out, char const* state, std::optional<Evenness> const& evenness) {
    auto const line = [&](char const* what, auto const& valueOf) {
        out << what << ' ' << state << ": " << orMissing(evenness ? valueOf(*evenness) : QString()) << '\n';
    };
    line("uniformity", [](Evenness const& e) { return QString::number(e.uniformity, 'f', 2); });
    line("luminance error, largest against the median block,",
         [](Evenness const& e) { return percent(e.blocks.largestAgainstMedian); });
    line("luminance error, mean against the median block,",
         [](Evenness const& e) { return percent(e.blocks.meanAgainstMedian); });
    line("luminance error, largest against the centre block,",
         [](Evenness const& e) { return percent(e.blocks.largestAgainstCentre); });
    line("luminance error, mean against the centre block,",
         [](Evenness const& e) { return percent(e.blocks.meanAgainstCentre); });
}

void writeSteps(QTextStream& out, QStringList const& texts) {
    for (int i = 0; i < texts.size(); ++i)
        out << "step " << kSteps[i].status << ": " << texts[i].trimmed() << '\n';
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
    out << '\n';
    writeLight(out, summary);
    out << '\n';
    writeEvenness(out, "uncorrected", summary.before);
    writeEvenness(out, "corrected", summary.after);
    out << '\n';
    writeSteps(out, summary.run.last.statusTexts);
    out << '\n'
        << "frames: " << summary.run.last.frames << '\n'
        << "ticks: " << summary.run.last.ticks << '\n'
        << "registers of the solution written: " << summary.solutionRegisters << '\n'
        << "register writes in all: " << summary.registerWrites << '\n'
        << "files: " << summary.filesWritten.join(QLatin1String(", ")) << '\n';
    return text;
}

QImage markedPicture(QImage const& picture, QRect const& block) {
    QImage marked = picture;
    QPainter painter(&marked);
    painter.setPen(QPen(QColor(255, 0, 255), 2, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.drawRect(block);
    return marked;
}

} // namespace pictara
