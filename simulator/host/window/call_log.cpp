#include "simulator/host/window/call_log.h"

#include "simulator/files/whole_file.h"
#include "simulator/host/session/words.h"

namespace pictara {
namespace {
constexpr char const* kColumns[] = {"No.", "Of", "Call", "Arguments", "Result"};
constexpr char const* kSources[] = {"host", "veyra2", "shadefit", "plug-in"};
constexpr int kIndent = 4; // blanks by which a call is set off from what it came of
} // namespace

QVariant CallLog::data(QModelIndex const& index, int role) const {
    bool const isText = role == Qt::DisplayRole && index.isValid() && index.row() < rowCount();
    return isText ? line(index.row()).texts[size_t(index.column())] : QVariant();
}

QVariant CallLog::headerData(int section, Qt::Orientation orientation, int role) const {
    bool const isColumn = orientation == Qt::Horizontal && section >= 0 && section < kColumnCount;
    return isColumn && role == Qt::DisplayRole ? QString::fromLatin1(kColumns[section]) : QVariant();
}

void CallLog::doing(QStringList const& words) {
    append({.kind = 0, .texts = {QString(), QString(), lineOf(words)}});
}

void CallLog::began(BoundaryCall const& call, int depth) {
    append({.kind = int(call.source) + 1,
            .texts = {QString(), QLatin1String(kSources[int(call.source)]),
                      QString(kIndent * (depth + 1), QLatin1Char(' ')) + QString::fromUtf8(call.name),
                      QString::fromUtf8(call.arguments)}});
    m_openCalls.push_back(m_dropped + m_lines.size() - 1);
}

void CallLog::ended(BoundaryCall const&, int, QByteArray const& result) {
    if (m_openCalls.empty())
        return; // it began before anybody watched
    size_t const line = m_openCalls.back();
    m_openCalls.pop_back();
    if (line < m_dropped || result.isEmpty())
        return;
    m_lines[line - m_dropped].texts[kResult] = QString::fromUtf8(result);
    QModelIndex const changed = index(int(line - m_dropped), kResult);
    if (changed.isValid())
        emit dataChanged(changed, changed);
}

void CallLog::append(Line line) {
    if (m_lines.size() >= m_capacity)
        drop(m_capacity / 4);
    line.texts[kNumber] = QString::number(m_dropped + m_lines.size() + 1);
    m_lines.push_back(std::move(line));
}

void CallLog::tell() {
    auto const present = int(m_lines.size());
    if (present == m_told)
        return;
    beginInsertRows({}, m_told, present - 1);
    m_told = present;
    endInsertRows();
}

void CallLog::drop(size_t count) {
    tell(); // rows go in the order in which they came
    if (count == 0)
        return;
    beginRemoveRows({}, 0, int(count) - 1);
    m_lines.erase(m_lines.begin(), m_lines.begin() + ptrdiff_t(count));
    m_dropped += count;
    m_told -= int(count);
    endRemoveRows();
}

ShownCalls::ShownCalls(CallLog& log) : m_log(log) {
    setSourceModel(&log);
    setFilterKeyColumn(-1); // any
    setFilterCaseSensitivity(Qt::CaseInsensitive);
}

void ShownCalls::choose(unsigned kinds) {
    m_kinds = kinds;
    invalidateFilter();
}

bool ShownCalls::filterAcceptsRow(int row, QModelIndex const& parent) const {
    return (m_kinds >> m_log.line(row).kind & 1) != 0 && QSortFilterProxyModel::filterAcceptsRow(row, parent);
}

bool ShownCalls::save(QString const& file, QString* error) const {
    QString text;
    for (int row = 0; row < rowCount(); ++row) {
        auto const& texts = m_log.line(mapToSource(index(row, 0)).row()).texts;
        QStringList words{texts[CallLog::kCall], texts[CallLog::kArguments]};
        if (!texts[CallLog::kResult].isEmpty())
            words << QStringLiteral("=") << texts[CallLog::kResult];
        words.removeAll(QString());
        text += words.join(QLatin1Char(' ')) + QLatin1Char('\n');
    }
    return files::replace(file, text.toUtf8(), error);
}
} // namespace pictara
