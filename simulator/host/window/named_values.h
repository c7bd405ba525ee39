#pragma once

#include <QAbstractTableModel>
#include <QByteArray>
#include <map>
#include <vector>

namespace pictara {
/// Named values as the model of a table that tells which of them changed, and when. Rows are in the order of
/// the names; those that changed are bold.
class NamedValues : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { kName, kValue, kChangedAt, kColumnCount };
    using Values = std::map<QByteArray, QString>;

    using QAbstractTableModel::QAbstractTableModel;
    /// What is there at the first call has not changed. Only what differs is announced to views.
    void show(Values const& values, quint64 frame);

    [[nodiscard]] int rowCount(QModelIndex const& parent = {}) const override;
    [[nodiscard]] int columnCount(QModelIndex const& parent = {}) const override;
    [[nodiscard]] QVariant data(QModelIndex const& index, int role = Qt::DisplayRole) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role = Qt::DisplayRole) const override;

private:
    struct Row {
        QByteArray name;
        QString value;
        quint64 changedAt = 0; ///< number of a frame; 0: not changed
    };

    std::vector<Row> m_rows;
    bool m_isFilled = false;
};
} // namespace pictara
