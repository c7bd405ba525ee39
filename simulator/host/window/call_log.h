#pragma once

#include "simulator/boundary/boundary.h"

#include <QAbstractTableModel>
#include <array>
#include <vector>

namespace pictara {
/// The latest calls across the boundary, and the inputs from which they come, as the model of a table. It is
/// told by a `Watching`. A call stands in the log from its beginning; its result comes at its end. Views are
/// told of new rows all at once, which costs them the same as one.
class CallLog : public QAbstractTableModel, public BoundaryObserver {
public:
    enum Column { kNumber, kSource, kCall, kArguments, kResult, kColumnCount };
    using Line = std::array<QString, kColumnCount>;

    /// Beyond the capacity the oldest quarter is dropped.
    explicit CallLog(size_t capacity = 100'000) : m_capacity(capacity) {}

    /// Tells views of the rows that have come.
    void tell();
    void clear() { drop(m_lines.size()); }

    [[nodiscard]] int rowCount(QModelIndex const& parent = {}) const override {
        return parent.isValid() ? 0 : m_told;
    }
    [[nodiscard]] int columnCount(QModelIndex const& = {}) const override { return kColumnCount; }
    [[nodiscard]] QVariant data(QModelIndex const& index, int role = Qt::DisplayRole) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role = Qt::DisplayRole) const override;

    void doing(QStringList const& words) override;
    void began(BoundaryCall const& call, int depth) override;
    void ended(int depth, QByteArray const& result) override;

private:
    void append(Line line);
    void drop(size_t count);

    size_t const m_capacity;
    std::vector<Line> m_lines;
    int m_told = 0;                  ///< lines that views know
    size_t m_dropped = 0;            ///< lines that stood before the first one
    std::vector<size_t> m_openCalls; ///< lines since the log was made, from 0; the innermost last
};

/// The lines of a log, or those that a filter leaves of it, as a text.
[[nodiscard]] QByteArray callsText(QAbstractItemModel const& shown);
} // namespace pictara
