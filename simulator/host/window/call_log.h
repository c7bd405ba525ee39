#pragma once

#include "simulator/boundary/boundary.h"

#include <QAbstractTableModel>
#include <cstdint>
#include <deque>
#include <vector>

namespace pictara {
/// One line of the log: an input of the host or of a person at it, or a call.
struct LoggedCall {
    uint64_t number = 0; ///< since the log was made, from 1
    bool isInput = false;
    CallSource source = CallSource::Host; ///< of a call
    int depth = 0;                        ///< of nesting
    QString name = {};                    ///< or the whole input
    QString arguments = {};
    QString result = {};
};

/// Which lines of a log are shown.
struct CallFilter {
    QString text = {}; ///< a part of name, arguments or result, in any case; empty: all
    bool showsInputs = true;
    std::vector<CallSource> sources = {CallSource::Host, CallSource::Camera, CallSource::Solver,
                                       CallSource::Plugin};
};

/// The latest calls across the boundary as the model of a table, for a window. It is told by a `Watching`.
/// A call stands in the log from its beginning; its result comes at its end.
class CallLog : public QAbstractTableModel, public BoundaryObserver {
    Q_OBJECT
public:
    enum Column { kNumber, kSource, kName, kArguments, kResult, kColumnCount };

    /// Beyond the capacity the oldest quarter is dropped.
    explicit CallLog(QObject* parent = nullptr, size_t capacity = 100'000);

    void setFilter(CallFilter const& filter);
    [[nodiscard]] CallFilter const& filter() const { return m_filter; }
    void clear();
    /// Writes the lines that are shown, all or nothing. False with a message.
    [[nodiscard]] bool save(QString const& file, QString* error) const;
    /// Of a row that is shown.
    [[nodiscard]] LoggedCall const& at(int row) const;

    [[nodiscard]] int rowCount(QModelIndex const& parent = {}) const override;
    [[nodiscard]] int columnCount(QModelIndex const& parent = {}) const override;
    [[nodiscard]] QVariant data(QModelIndex const& index, int role = Qt::DisplayRole) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role = Qt::DisplayRole) const override;

    void doing(QByteArray const& input) override;
    void began(BoundaryCall const& call, int depth) override;
    void ended(BoundaryCall const& call, int depth, QByteArray const& result) override;

private:
    [[nodiscard]] bool isShown(LoggedCall const& call) const;
    [[nodiscard]] LoggedCall* find(uint64_t number);
    void append(LoggedCall call);
    void dropOldest();
    void chooseRows();

    size_t const m_capacity;
    CallFilter m_filter;
    uint64_t m_lastNumber = 0;
    std::deque<LoggedCall> m_calls;    ///< their numbers follow one another
    std::vector<uint64_t> m_rows;      ///< numbers of those that are shown
    std::vector<uint64_t> m_openCalls; ///< numbers, the innermost last
};
} // namespace pictara
