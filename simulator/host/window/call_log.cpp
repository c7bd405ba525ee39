#include "simulator/host/window/call_log.h"

#include "simulator/host/recording/recording.h"

#include <algorithm>

namespace pictara {
namespace {
constexpr char const* kColumns[] = {"No.", "Of", "Call", "Arguments", "Result"};
constexpr char const* kSources[] = {"host", "veyra2", "shadefit", "plug-in"};

QString sourceText(LoggedCall const& call) {
    return call.isInput ? QString() : QString::fromLatin1(kSources[int(call.source)]);
}

QByteArray lineOf(LoggedCall const& call) {
    QStringList words{QString(call.isInput ? 0 : 4 * (call.depth + 1), QLatin1Char(' ')) + call.name};
    if (!call.arguments.isEmpty())
        words << call.arguments;
    if (!call.result.isEmpty())
        words << QStringLiteral("=") << call.result;
    return words.join(QLatin1Char(' ')).toUtf8() + '\n';
}
} // namespace

CallLog::CallLog(QObject* parent, size_t capacity) : QAbstractTableModel(parent), m_capacity(capacity) {}

void CallLog::setFilter(CallFilter const& filter) {
    beginResetModel();
    m_filter = filter;
    chooseRows();
    endResetModel();
}

void CallLog::clear() {
    beginResetModel();
    m_calls.clear();
    m_rows.clear();
    endResetModel();
}

bool CallLog::save(QString const& file, QString* error) const {
    QByteArray text;
    for (int row = 0; row < rowCount(); ++row)
        text += lineOf(at(row));
    return writeWhole(file, text, error);
}

LoggedCall const& CallLog::at(int row) const {
    return m_calls[size_t(m_rows[size_t(row)] - m_calls.front().number)];
}

int CallLog::rowCount(QModelIndex const& parent) const { return parent.isValid() ? 0 : int(m_rows.size()); }
int CallLog::columnCount(QModelIndex const& parent) const { return parent.isValid() ? 0 : kColumnCount; }

QVariant CallLog::data(QModelIndex const& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount() || role != Qt::DisplayRole)
        return {};
    LoggedCall const& call = at(index.row());
    switch (index.column()) {
    case kNumber:
        return qulonglong(call.number);
    case kSource:
        return sourceText(call);
    case kName:
        return QString(2 * call.depth, QLatin1Char(' ')) + call.name;
    case kArguments:
        return call.arguments;
    case kResult:
        return call.result;
    default:
        return {};
    }
}

QVariant CallLog::headerData(int section, Qt::Orientation orientation, int role) const {
    bool const isColumn = orientation == Qt::Horizontal && section >= 0 && section < kColumnCount;
    return isColumn && role == Qt::DisplayRole ? QString::fromLatin1(kColumns[section]) : QVariant();
}

void CallLog::doing(QByteArray const& input) { append({.isInput = true, .name = QString::fromUtf8(input)}); }

void CallLog::began(BoundaryCall const& call, int depth) {
    append({.source = call.source,
            .depth = depth,
            .name = QString::fromUtf8(call.name),
            .arguments = QString::fromUtf8(call.arguments)});
    m_openCalls.push_back(m_lastNumber);
}

void CallLog::ended(BoundaryCall const&, int, QByteArray const& result) {
    if (m_openCalls.empty())
        return; // it began before anybody watched
    uint64_t const number = m_openCalls.back();
    m_openCalls.pop_back();
    LoggedCall* const call = find(number);
    if (!call || result.isEmpty())
        return;
    call->result = QString::fromUtf8(result);
    auto const row = std::lower_bound(m_rows.begin(), m_rows.end(), number);
    if (row != m_rows.end() && *row == number) {
        QModelIndex const changed = index(int(row - m_rows.begin()), kResult);
        emit dataChanged(changed, changed);
    } else if (isShown(*call)) { // by its result
        int const at = int(row - m_rows.begin());
        beginInsertRows({}, at, at);
        m_rows.insert(row, number);
        endInsertRows();
    }
}

bool CallLog::isShown(LoggedCall const& call) const {
    auto const& sources = m_filter.sources;
    bool const isOfSource = call.isInput
                                ? m_filter.showsInputs
                                : std::find(sources.begin(), sources.end(), call.source) != sources.end();
    auto const isIn = [&](QString const& text) { return text.contains(m_filter.text, Qt::CaseInsensitive); };
    return isOfSource && (isIn(call.name) || isIn(call.arguments) || isIn(call.result));
}

LoggedCall* CallLog::find(uint64_t number) {
    bool const isKept = !m_calls.empty() && number >= m_calls.front().number;
    return isKept ? &m_calls[size_t(number - m_calls.front().number)] : nullptr;
}

void CallLog::append(LoggedCall call) {
    if (m_calls.size() >= m_capacity)
        dropOldest();
    call.number = ++m_lastNumber;
    m_calls.push_back(std::move(call));
    if (!isShown(m_calls.back()))
        return;
    beginInsertRows({}, rowCount(), rowCount());
    m_rows.push_back(m_lastNumber);
    endInsertRows();
}

void CallLog::dropOldest() {
    beginResetModel();
    size_t const dropped = std::max<size_t>(1, m_calls.size() / 4);
    m_calls.erase(m_calls.begin(), m_calls.begin() + ptrdiff_t(dropped));
    chooseRows();
    endResetModel();
}

void CallLog::chooseRows() {
    m_rows.clear();
    for (LoggedCall const& call : m_calls)
        if (isShown(call))
            m_rows.push_back(call.number);
}
} // namespace pictara

// Apart from the windows' code of this kind: a program may link the log without them.
#include "moc_call_log.cpp" // NOLINT(bugprone-suspicious-include): the way to keep it apart
