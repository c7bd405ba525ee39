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

using Cells = std::vector<QJsonObject>;

QJsonObject cell(QString const& text, bool isNumber = false) {
    return {{"text", text}, {"kind", isNumber ? "number" : "text"}};
}

std::vector<Cells> transposed(std::vector<Cells> const& table) {
    std::vector<Cells> result(table.empty() ? 0 : table.front().size());
    for (Cells const& row : table)
        for (size_t i = 0; i < result.size(); ++i)
            result[i].push_back(row[i]);
    return result;
}

// A table's cells as rows: a row for each fact, or of many things one for each of these. The first row and
// the first column are heads.
QJsonArray rowsOf(Section const& section) {
    std::vector<Cells> table;
    for (Fact const& fact : section.facts)
        if (fact.isTold()) {
            table.push_back({cell(fact.label)});
            for (size_t i = 0; i < fact.values.size(); ++i)
                table.back().push_back(cell(fact.shown(i), fact.values[i].isDouble()));
        }
    if (section.layout == Layout::States && !table.empty())
        table.insert(table.begin(), {cell({}), cell(kStates[0]), cell(kStates[1])});
    if (section.layout == Layout::Rows)
        table = transposed(table);
    QJsonArray rows;
    for (size_t row = 0; row < table.size(); ++row) {
        QJsonArray heads, cells;
        bool const isHead = row == 0 && (section.layout == Layout::States || section.layout == Layout::Rows);
        for (QJsonObject const& each : table[row])
            (isHead || heads.isEmpty() ? heads : cells).append(each);
        rows.append(QJsonObject{{"heads", heads}, {"cells", cells}});
    }
    return rows;
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
