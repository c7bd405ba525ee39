#include "simulator/host/report/report.h"

#include <QFile>
#include <QJsonArray>
#include <QRegularExpression>
#include <algorithm>
#include <functional>

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
        for (QJsonValue const& each : values[match.captured(2)].toArray())
            result += filled(match.captured(3), each.toObject());
    }
    return result + text.mid(end);
}

bool isNumber(QString const& text) {
    return !text.isEmpty() && (text[0].isDigit() || text[0] == QLatin1Char('-'));
}

std::vector<QStringList> transposed(std::vector<QStringList> const& table) {
    std::vector<QStringList> result(table.empty() ? 0 : size_t(table.front().size()));
    for (QStringList const& row : table)
        for (size_t i = 0; i < result.size(); ++i)
            result[i] << row[int(i)];
    return result;
}

// A table's cells as rows: a row for each fact, or of many things one for each of these. The first row and
// the first column are heads.
QJsonArray rowsOf(Section const& section) {
    std::vector<QStringList> table;
    for (Fact const& fact : section.facts)
        if (fact.isTold()) {
            table.push_back({fact.label});
            for (size_t i = 0; i < fact.values.size(); ++i)
                table.back() << fact.shown(i);
        }
    if (section.layout == Layout::States && !table.empty())
        table.insert(table.begin(), {QString(), kStates[0], kStates[1]});
    if (section.layout == Layout::Rows)
        table = transposed(table);
    QJsonArray rows;
    for (size_t row = 0; row < table.size(); ++row) {
        QJsonArray heads, cells;
        bool const isHead = row == 0 && (section.layout == Layout::States || section.layout == Layout::Rows);
        for (QString const& text : table[row]) {
            QJsonObject const cell{{"text", text}, {"kind", isNumber(text) ? "number" : "text"}};
            (isHead || heads.isEmpty() ? heads : cells).append(cell);
        }
        rows.append(QJsonObject{{"heads", heads}, {"cells", cells}});
    }
    return rows;
}

// Scaled down to what a page can show, the more the more bytes it takes; noise makes pictures large.
QJsonObject drawing(Picture const& picture) {
    constexpr int kWidest = 720, kNarrowest = 240, kMostBytes = 450'000;
    int const width = std::min(kWidest, picture.image.width());
    auto const scaled = [&](int to) {
        return to < picture.image.width() ? picture.image.scaledToWidth(to, Qt::SmoothTransformation)
                                          : picture.image;
    };
    QString uri = dataUri(scaled(width));
    for (int to = width * 3 / 4; uri.size() > kMostBytes && to > kNarrowest; to = to * 3 / 4)
        uri = dataUri(scaled(to));
    return {{"picture", uri}, {"caption", picture.caption}, {"width", width}};
}

template <typename Item>
QJsonArray drawings(std::vector<Item> const& items) {
    QJsonArray array;
    for (Item const& item : items)
        array.append(drawing(item));
    return array;
}

bool isEmpty(Section const& section) {
    return std::none_of(section.facts.begin(), section.facts.end(), std::mem_fn(&Fact::isTold)) &&
           section.pictures.empty() && section.maps.empty() && section.profiles.empty();
}

QJsonObject valuesOf(Section const& section) {
    constexpr int kMostRows = 30; // of an open table
    QJsonArray const rows = rowsOf(section);
    QJsonArray open, tables;
    if (!rows.isEmpty())
        tables.append(QJsonObject{{"rows", rows}});
    if (rows.size() <= kMostRows)
        open.append(QJsonObject());
    return {{"title", section.title},
            {"open", open},
            {"tables", tables},
            {"pictures", drawings(section.pictures)},
            {"maps", drawings(section.maps)},
            {"profiles", drawings(section.profiles)}};
}
} // namespace

QByteArray reportPage(Report const& report) {
    useResources();
    QFile page(QStringLiteral(":/report/report.html"));
    if (!page.open(QIODevice::ReadOnly))
        return {};
    QJsonArray sections, causes;
    for (Section const& section : report.sections)
        if (!isEmpty(section))
            sections.append(valuesOf(section));
    if (!report.cause.isEmpty())
        causes.append(QJsonObject{{"cause", report.cause}});
    return filled(
               QString::fromUtf8(page.readAll()),
               {{"run", report.run}, {"result", report.result}, {"causes", causes}, {"sections", sections}})
        .toUtf8();
}
} // namespace pictara
