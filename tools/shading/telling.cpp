#include "tools/shading/telling.h"

#include <algorithm>

namespace shading {
namespace {
QString textOf(QJsonValue const& value, Column const& column) {
    if (!value.isDouble())
        return value.toBool() ? QStringLiteral("yes") : value.toString();
    bool const isPlain = column.decimals < 0;
    return QString::number(value.toDouble(), isPlain ? 'g' : 'f', isPlain ? 6 : column.decimals) +
           column.unit;
}
} // namespace

void tell(pictara::Certificate& certificate, char const* key, QString const& title,
          std::span<Column const> columns, std::vector<QJsonArray> const& rows, size_t shown) {
    pictara::Table table{title, std::vector<QStringList>(rows.size() + 1)};
    QJsonArray objects;
    for (Column const& column : columns)
        if (column.head)
            table.rows[0] << column.head;
    for (size_t i = 0; i < rows.size(); ++i) {
        QJsonObject object;
        for (int k = 0; k < int(columns.size()); ++k) {
            Column const& column = columns[size_t(k)];
            QJsonValue const value = rows[i][k];
            object[column.key] = value.isDouble() ? pictara::rounded(value.toDouble()) : value;
            if (column.head)
                table.rows[i + 1] << textOf(value, column);
            else
                certificate.facts.emplace_back(
                    rows[i][0].toString() + ": " + QString(column.key).replace('_', ' '), value.toString());
        }
        objects.append(object);
    }
    table.rows.resize(std::min(rows.size(), shown) + 1);
    if (!rows.empty())
        certificate.tables.push_back(table);
    certificate.figures[key] = objects;
}

std::nullopt_t fail(QString const& file, QString const& cause, QString* error) {
    *error = QStringLiteral("%1: %2").arg(file, cause);
    return std::nullopt;
}
} // namespace shading
