#include "simulator/host/session/fault_wish.h"

#include <QRegularExpression>

namespace pictara {
std::optional<FaultWish> parseFaultWish(QString const& text) {
    static QRegularExpression const pattern(QStringLiteral("^([^@+]+)(?:@([0-9]+))?(\\+)?$"));
    auto const match = pattern.match(text);
    bool ok = match.hasMatch();
    FaultWish wish{.name = match.captured(1), .operation = {}, .forEver = !match.captured(3).isEmpty()};
    if (QString const number = match.captured(2); ok && !number.isEmpty())
        wish.operation = number.toULongLong(&ok);
    return ok ? std::optional(wish) : std::nullopt;
}

bool canStrike(FaultWish const& wish) {
    return wish.operation != 0U || wish.name == QLatin1String("power-cut");
}

QString textOf(FaultWish const& wish) {
    QString const at = wish.operation ? QStringLiteral("@%1").arg(*wish.operation) : QString();
    return wish.name + at + QLatin1String(wish.forEver ? "+" : "");
}
} // namespace pictara
