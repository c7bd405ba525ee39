#include "simulator/host/run/refusal.h"

#include <QPainter>
#include <QRegularExpression>

namespace pictara {
namespace {
struct Refusal {
    char const* told; ///< part of the library's message
    ExitCode code;
};

constexpr Refusal kRefusals[] = {
    {"too dark", kExitTooDark},         {"clipped", kExitClipped},      {"not flat", kExitNotFlat},
    {"lamp is not even", kExitNotFlat}, {"image size", kExitWrongSize},
};
} // namespace

QImage markedRefusal(QImage picture, QString const& blocks, uint32_t orientation) {
    static QRegularExpression const grid(QStringLiteral("^([0-9]+) x ([0-9]+): ")),
        row(QStringLiteral("([0-9]+):([0-9,-]+)")), run(QStringLiteral("([0-9]+)-([0-9]+)"));
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
    for (auto rows = row.globalMatch(blocks, size.capturedEnd()); rows.hasNext();) {
        auto const told = rows.next();
        for (auto runs = run.globalMatch(told.captured(2)); runs.hasNext();) {
            auto const ends = runs.next();
            for (int column = ends.captured(1).toInt(); column <= ends.captured(2).toInt(); ++column)
                painter.drawRect(QRectF(column, told.captured(1).toDouble(), 1, 1));
        }
    }
    return picture;
}

ExitCode exitCodeOfRefusal(QString const& solverMessage) {
    for (Refusal const& refusal : kRefusals)
        if (solverMessage.contains(QLatin1String(refusal.told)))
            return refusal.code;
    return kExitNotCalibrated;
}
} // namespace pictara
