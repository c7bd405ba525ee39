#include "simulator/host/report/summary_lines.h"

#include <QPainter>
#include <QTextStream>

namespace pictara {
namespace {
QString percent(double share) { return QString::number(share * 100, 'f', 2) + QLatin1String(" %"); }
QString orMissing(QString const& text) { return text.isEmpty() ? QStringLiteral("not measured") : text; }
} // namespace

bool isBeyondLimit(Evenness const& evenness) { return evenness.rating != QLatin1String("green"); }

QString sceneLines(Scene const& scene) {
    QString text;
    QTextStream out(&text);
    simulator::Light const& light = scene.light;
    out << "sensor: " << scene.camera.sensorName << " (kind " << scene.camera.sensorKind << ", variant "
        << scene.camera.variant << "), " << scene.camera.width << " x " << scene.camera.height << '\n'
        << "profile: " << scene.camera.profile << '\n';
    if (!scene.camera.note.isEmpty())
        out << "note: " << scene.camera.note << '\n';
    out << "lens: " << (scene.shading.isEmpty() ? QStringLiteral("of the profile") : scene.shading) << '\n'
        << "light: " << light.colourTemperature << " K, level " << light.level;
    if (light.gradient != 0)
        out << ", gradient " << light.gradient;
    if (light.objectInPicture)
        out << ", with an object in the picture";
    out << '\n' << "seed: " << scene.seed << '\n';
    return text;
}

QString evennessLines(char const* state, std::optional<Evenness> const& evenness) {
    QString text;
    QTextStream out(&text);
    auto const line = [&](char const* what, auto const& valueOf) {
        out << what << ' ' << state << ": " << orMissing(evenness ? valueOf(*evenness) : QString()) << '\n';
    };
    line("uniformity", [](Evenness const& e) { return QString::number(e.uniformity, 'f', 2); });
    line("uniformity rating", [](Evenness const& e) {
        return QStringLiteral("%1, limit %2").arg(e.rating).arg(e.limit, 0, 'f', 2);
    });
    line("luminance error, largest against the median block,",
         [](Evenness const& e) { return percent(e.blocks.largestAgainstMedian); });
    line("luminance error, mean against the median block,",
         [](Evenness const& e) { return percent(e.blocks.meanAgainstMedian); });
    line("luminance error, largest against the centre block,",
         [](Evenness const& e) { return percent(e.blocks.largestAgainstCentre); });
    line("luminance error, mean against the centre block,",
         [](Evenness const& e) { return percent(e.blocks.meanAgainstCentre); });
    return text;
}

QImage markedPicture(Evenness const& evenness) {
    QImage marked = evenness.picture;
    QPainter painter(&marked);
    painter.setPen(QPen(QColor(255, 0, 255), 2, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.drawRect(evenness.blocks.worstBlock);
    return marked;
}
} // namespace pictara
