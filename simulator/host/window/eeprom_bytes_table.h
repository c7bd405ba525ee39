#pragma once

#include <QAbstractTableModel>
#include <QByteArray>

namespace pictara {
/// The EEPROM's bytes as the model of a table: 16 a row in hexadecimal numbers and, in one more column, as
/// characters. Bytes that differ from the state which changes are counted from are marked.
class EepromBytesTable : public QAbstractTableModel {
    Q_OBJECT
public:
    static constexpr int kBytesPerRow = 16;

    using QAbstractTableModel::QAbstractTableModel;
    /// True when they are others than those shown. The first ones are the state that changes are counted
    /// from.
    bool show(QByteArray const& bytes);
    /// Counts changes from what is shown now.
    void beginAnew();
    [[nodiscard]] int changedBytes() const;
    [[nodiscard]] bool isChanged(int offset) const;

    [[nodiscard]] int rowCount(QModelIndex const& parent = {}) const override;
    [[nodiscard]] int columnCount(QModelIndex const& parent = {}) const override;
    [[nodiscard]] QVariant data(QModelIndex const& index, int role = Qt::DisplayRole) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role = Qt::DisplayRole) const override;

private:
    [[nodiscard]] QString charactersOf(int row) const;

    QByteArray m_bytes;
    QByteArray m_before;
};
} // namespace pictara
