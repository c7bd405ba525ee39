#include "simulator/host/report/certificate.h"

#include <QFile>
#include <QJsonArray>
#include <QRegularExpression>

// A static library's resources are left out unless somebody asks for them; not in a namespace.
static void useResources() { Q_INIT_RESOURCE(report); }

namespace pictara {
namespace {
// Replaces {{name}} by that value, escaped, and repeats what stands between <!--each name--> and
// <!--end name--> for each object of that array.
QString filled(QString const& text, QJsonObject const& values) {
    static QRegularExpression const place(
        QStringLiteral(R"(\{\{(\w+)\}\}|<!--each (\w+)-->(.*?)<!--end \2-->)"),
        QRegularExpression::DotMatchesEverythingOption);
    QString result;
    int end = 0;
    for (auto places = place.globalMatch(text); places.hasNext();) {
        auto const match = places.next();
        result += text.mid(end, match.capturedStart() - end);
        end = match.capturedEnd();
        if (match.capturedLength(1) > 0)
            result += values[match.captured(1)].toVariant().toString().toHtmlEscaped();
        for (QJsonValue const each : values[match.captured(2)].toArray())
            result += filled(match.captured(3), each.toObject());
    }
    return result + text.mid(end);
}

// A verdict is shown by its own name's colour, a number to the right.
QString kindOf(QString const& text) {
    for (Verdict const verdict : {Verdict::Pass, Verdict::Marginal, Verdict::Fail})
        if (text == textOf(verdict))
            return text;
    bool isNumber = false;
    (void)text.section(' ', 0, 0).toDouble(&isNumber);
    return isNumber || text == QLatin1String("-") ? QStringLiteral("number") : QStringLiteral("text");
}

QJsonObject drawing(Table const& table) {
    QJsonArray rows;
    for (QStringList const& row : table.rows) {
        QJsonArray heads, cells;
        for (int i = 0; i < row.size(); ++i) {
            bool const isHead = rows.isEmpty() || i == 0;
            // A head stands as what is below it does, without its colour.
            QString const kind = kindOf(isHead && table.rows.size() > 1 ? table.rows[1].value(i) : row[i]);
            QString const shown = isHead && kind != QLatin1String("text") ? QStringLiteral("number") : kind;
            (isHead ? heads : cells).append(QJsonObject{{"text", row[i]}, {"kind", shown}});
        }
        rows.append(QJsonObject{{"heads", heads}, {"cells", cells}});
    }
    return {{"title", table.title}, {"rows", rows}};
}

// No wider than the page shows it: the noise of larger ones would make megabytes.
QJsonObject drawing(Picture const& picture) {
    constexpr int kWidest = 470;
    QImage const shown = picture.image.width() <= kWidest
                             ? picture.image
                             : picture.image.scaledToWidth(kWidest, Qt::SmoothTransformation);
    return {{"picture", dataUri(shown)}, {"caption", picture.caption}, {"width", shown.width()}};
}

template <typename Item>
QJsonArray drawings(std::vector<Item> const& items) {
    QJsonArray array;
    for (Item const& item : items)
        array.append(drawing(item));
    return array;
}
} // namespace

QByteArray certificatePage(Certificate const& certificate) {
    useResources();
    QFile page(QStringLiteral(":/report/certificate.html"));
    if (!page.open(QIODevice::ReadOnly))
        return {};
    QJsonArray facts, causes;
    for (auto const& [label, text] : certificate.facts)
        if (!text.isEmpty())
            facts.append(QJsonObject{{"label", label}, {"text", text}});
    if (!certificate.cause.isEmpty())
        causes.append(QJsonObject{{"cause", certificate.cause}});
    // What has a cause and no verdict is no good board.
    QString const verdict = certificate.result == textOf(certificate.verdict) ? certificate.result
                            : certificate.cause.isEmpty()                     ? QStringLiteral("none")
                                                                              : textOf(Verdict::Fail);
    return filled(QString::fromUtf8(page.readAll()), {{"run", certificate.run},
                                                      {"result", certificate.result},
                                                      {"verdict", verdict},
                                                      {"causes", causes},
                                                      {"facts", facts},
                                                      {"tables", drawings(certificate.tables)},
                                                      {"pictures", drawings(certificate.pictures)},
                                                      {"maps", drawings(certificate.maps)},
                                                      {"profiles", drawings(certificate.profiles)}})
        .toUtf8();
}
} // namespace pictara
