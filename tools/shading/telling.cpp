#include "tools/shading/telling.h"

namespace shading {
namespace {
QString textOf(QJsonValue const& value, Column const& column) {
    QString const text = !value.isDouble()     ? value.toString()
                         : column.decimals < 0 ? QString::number(value.toDouble())
                                               : QString::number(value.toDouble(), 'f', column.decimals);
    return text + column.unit;
}
} // namespace

void tell(pictara::Certificate& certificate, char const* key, QString const& title,
          std::span<Column const> columns, std::vector<QJsonArray> const& rows) {
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
    certificate.tables.push_back(table);
    certificate.figures[key] = objects;
}

std::nullopt_t fail(QString const& file, QString const& cause, QString* error) {
    *error = QStringLiteral("%1: %2").arg(file, cause);
    return std::nullopt;
}
} // namespace shading
