#include "simulator/host/window/eeprom_bytes_table.h"

#include <QApplication>
#include <QPalette>

namespace pictara {
namespace {
// The text stays readable on it in a light and in a dark scheme.
QColor markOfChange() {
    QColor colour = QApplication::palette().color(QPalette::Highlight);
    colour.setAlpha(110);
    return colour;
}
} // namespace

bool EepromBytesTable::show(QByteArray const& bytes) {
    if (bytes == m_bytes)
        return false;
    if (bytes.size() != m_bytes.size()) {
        beginResetModel();
        m_bytes = m_before = bytes;
        endResetModel();
        return true;
    }
    QByteArray const shown = m_bytes;
    m_bytes = bytes;
    for (int row = 0; row < rowCount(); ++row)
        if (shown.mid(row * kBytesPerRow, kBytesPerRow) != bytes.mid(row * kBytesPerRow, kBytesPerRow))
            emit dataChanged(index(row, 0), index(row, kBytesPerRow));
    return true;
}

void EepromBytesTable::beginAnew() {
    m_before = m_bytes;
    if (rowCount() > 0)
        emit dataChanged(index(0, 0), index(rowCount() - 1, kBytesPerRow));
}

int EepromBytesTable::changedBytes() const {
    int count = 0;
    for (int offset = 0; offset < m_bytes.size(); ++offset)
        count += isChanged(offset) ? 1 : 0;
    return count;
}

bool EepromBytesTable::isChanged(int offset) const { return m_bytes[offset] != m_before[offset]; }

int EepromBytesTable::rowCount(QModelIndex const& parent) const {
    return parent.isValid() ? 0 : m_bytes.size() / kBytesPerRow;
}

int EepromBytesTable::columnCount(QModelIndex const& parent) const {
    return parent.isValid() ? 0 : kBytesPerRow + 1;
}

QString EepromBytesTable::charactersOf(int row) const {
    QString characters;
    for (char const byte : m_bytes.mid(row * kBytesPerRow, kBytesPerRow))
        characters += QLatin1Char(byte >= ' ' && byte <= '~' ? byte : '.');
    return characters;
}

QVariant EepromBytesTable::data(QModelIndex const& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    bool const isCharacters = index.column() == kBytesPerRow;
    int const offset = index.row() * kBytesPerRow + index.column();
    if (role == Qt::TextAlignmentRole && !isCharacters)
        return int(Qt::AlignCenter);
    if (isCharacters)
        return role == Qt::DisplayRole ? charactersOf(index.row()) : QVariant();
    switch (role) {
    case Qt::DisplayRole:
        return QStringLiteral("%1").arg(uint8_t(m_bytes[offset]), 2, 16, QLatin1Char('0')).toUpper();
    case Qt::BackgroundRole:
        return isChanged(offset) ? QVariant(markOfChange()) : QVariant();
    case Qt::ToolTipRole:
        return isChanged(offset) ? QStringLiteral("Offset %1: was %2, is %3")
                                       .arg(offset)
                                       .arg(uint8_t(m_before[offset]), 2, 16, QLatin1Char('0'))
                                       .arg(uint8_t(m_bytes[offset]), 2, 16, QLatin1Char('0'))
                                 : QStringLiteral("Offset %1").arg(offset);
    default:
        return {};
    }
}

QVariant EepromBytesTable::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role != Qt::DisplayRole)
        return {};
    if (orientation == Qt::Vertical)
        return QStringLiteral("%1").arg(section * kBytesPerRow, 4, 16, QLatin1Char('0')).toUpper();
    return section == kBytesPerRow ? QStringLiteral("Text") : QString::number(section, 16).toUpper();
}
} // namespace pictara
