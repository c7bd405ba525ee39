#include "simulator/host/session/words.h"

#include <QLocale>
#include <QRegularExpression>

namespace pictara {
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
        written << (plain.match(word).hasMatch()
                        ? word
                        : QLatin1Char('"') + word.replace(QLatin1Char('"'), QLatin1String("\"\"")) +
                              QLatin1Char('"'));
    return written.join(QLatin1Char(' '));
}

QString exactly(double number) { return QString::number(number, 'g', QLocale::FloatingPointShortest); }
} // namespace pictara
