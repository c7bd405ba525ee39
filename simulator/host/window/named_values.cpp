#include "simulator/host/window/named_values.h"

#include <QFont>
#include <algorithm>

namespace pictara {
namespace {
constexpr char const* kColumns[] = {"Name", "Value", "Changed at frame"};
} // namespace

void NamedValues::show(Values const& values, quint64 frame) {
    frame = std::max<quint64>(frame, 1); // what opening the dialog changes comes before the first one
    // Names are added but never taken away, so one walk over both finds each one's place.
    size_t i = 0;
    for (auto const& [name, value] : values) {
        while (i < m_rows.size() && m_rows[i].name < name)
            ++i;
        if (i == m_rows.size() || m_rows[i].name != name) {
            beginInsertRows({}, int(i), int(i));
            m_rows.insert(m_rows.begin() + ptrdiff_t(i), {name, value, m_isFilled ? frame : 0});
            endInsertRows();
        } else if (m_rows[i].value != value) {
            m_rows[i].value = value;
            m_rows[i].changedAt = frame;
            emit dataChanged(index(int(i), 0), index(int(i), kColumnCount - 1));
        }
    }
    m_isFilled = true;
}

int NamedValues::rowCount(QModelIndex const& parent) const {
    return parent.isValid() ? 0 : int(m_rows.size());
}

int NamedValues::columnCount(QModelIndex const& parent) const { return parent.isValid() ? 0 : kColumnCount; }

QVariant NamedValues::data(QModelIndex const& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    Row const& row = m_rows[size_t(index.row())];
    if (role == Qt::FontRole && row.changedAt > 0) {
        QFont font;
        font.setBold(true);
        return font;
    }
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole)
        return {};
    switch (index.column()) {
    case kName:
        return QString::fromLocal8Bit(row.name);
    case kValue:
        return row.value;
    case kChangedAt:
        return row.changedAt > 0 ? QVariant(row.changedAt) : QVariant();
    default:
        return {};
    }
}

QVariant NamedValues::headerData(int section, Qt::Orientation orientation, int role) const {
    bool const isColumn = orientation == Qt::Horizontal && section >= 0 && section < kColumnCount;
    return isColumn && role == Qt::DisplayRole ? QString::fromLatin1(kColumns[section]) : QVariant();
}
} // namespace pictara
