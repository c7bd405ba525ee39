#include "simulator/host/session/words.h"

#include <QLocale>
#include <QRegularExpression>

namespace pictara {
namespace {
// With as many digits as it takes to read the same number.
QString exactly(double number) { return QString::number(number, 'g', QLocale::FloatingPointShortest); }
} // namespace

std::optional<QStringList> wordsOf(QString const& line, QString* error) {
    static QRegularExpression const word(
        QStringLiteral(R"re(\s*(?:"((?:[^"]|"")*)"(?=\s|$)|([^"\s]\S*)))re"));
    QStringList words;
    QString const text = line.trimmed();
    for (int at = 0; at < text.size();) {
        auto const match =
            word.match(text, at, QRegularExpression::NormalMatch, QRegularExpression::AnchoredMatchOption);
        if (!match.hasMatch()) {
            *error = QStringLiteral("a quote is not closed");
            return std::nullopt;
        }
        if (match.captured(2).startsWith(QLatin1Char('#')))
            break;
        words << (match.capturedStart(1) >= 0 ? match.captured(1).replace(QLatin1String("\"\""), "\"")
                                              : match.captured(2));
        at = match.capturedEnd();
    }
    return words;
}

QString lineOf(QStringList const& words) {
    static QRegularExpression const plain(QStringLiteral("^[^\"#\\s][^\\s]*$"));
    QStringList written;
    for (QString word : words)
        written << (plain.match(word).hasMatch() ? word
                                                 : '"' + word.replace('"', QLatin1String("\"\"")) + '"');
    return written.join(QLatin1Char(' '));
}

std::optional<double> numberIn(Range const& range, QString const& text) {
    bool ok = false;
    double const number = text.toDouble(&ok);
    return ok && number >= range.low && number <= range.high ? std::optional(number) : std::nullopt;
}

QStringList lightWords(simulator::Light const& light) {
    QStringList words{"light", exactly(light.colourTemperature), exactly(light.level),
                      exactly(light.gradient)};
    return light.objectInPicture ? words << "object" : words;
}

bool readLight(QStringList const& words, simulator::Light& light) {
    struct {
        Range range;
        double simulator::Light::*quantity;
    } constexpr kQuantities[] = {{kColourTemperatures, &simulator::Light::colourTemperature},
                                 {kLevels, &simulator::Light::level},
                                 {kGradients, &simulator::Light::gradient}};
    for (int i = 0; i < words.size() && i < 3; ++i) {
        auto const number = numberIn(kQuantities[i].range, words[i]);
        if (!number)
            return false;
        light.*kQuantities[i].quantity = *number;
    }
    if (words.size() >= 3)
        light.objectInPicture = words.size() > 3;
    return words.size() < 4 || words[3] == QLatin1String("object");
}

std::optional<FaultWish> parseFaultWish(QString const& text) {
    static QRegularExpression const pattern(QStringLiteral("^([^@+]+)(?:@([0-9]+))?(\\+)?$"));
    auto const match = pattern.match(text);
    bool ok = match.hasMatch();
    FaultWish wish{.name = match.captured(1), .operation = {}, .forEver = !match.captured(3).isEmpty()};
    if (QString const number = match.captured(2); ok && !number.isEmpty())
        wish.operation = number.toULongLong(&ok);
    ok = ok && simulator::SimulatedCamera::faultNames().contains(wish.name) &&
         (wish.operation != 0U || wish.name == QLatin1String("power-cut"));
    return ok ? std::optional(wish) : std::nullopt;
}

QString textOf(FaultWish const& wish) {
    QString const at = wish.operation ? QStringLiteral("@%1").arg(*wish.operation) : QString();
    return wish.name + at + QLatin1String(wish.forEver ? "+" : "");
}
} // namespace pictara
