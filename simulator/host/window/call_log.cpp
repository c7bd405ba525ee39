#include "simulator/host/window/call_log.h"

#include "simulator/host/session/words.h"

namespace pictara {
namespace {
constexpr char const* kColumns[] = {"No.", "Of", "Call", "Arguments", "Result"};
constexpr char const* kSources[] = {"host", "veyra2", "shadefit", "plug-in"}; // of calls
constexpr char kInput[] = "input";
constexpr int kIndent = 4; // blanks by which a call is set off from what it came of
} // namespace

QVariant CallLog::data(QModelIndex const& index, int role) const {
    bool const isText = role == Qt::DisplayRole && index.isValid() && index.row() < rowCount();
    return isText ? m_lines[size_t(index.row())][size_t(index.column())] : QVariant();
}

QVariant CallLog::headerData(int section, Qt::Orientation orientation, int role) const {
    bool const isColumn = orientation == Qt::Horizontal && section >= 0 && section < kColumnCount;
    return isColumn && role == Qt::DisplayRole ? QString::fromLatin1(kColumns[section]) : QVariant();
}

void CallLog::doing(QStringList const& words) { append({QString(), kInput, lineOf(words)}); }

void CallLog::began(BoundaryCall const& call, int depth) {
    append({QString(), QLatin1String(kSources[int(call.source)]),
            QString(kIndent * (depth + 1), QLatin1Char(' ')) + QString::fromUtf8(call.name),
            QString::fromUtf8(call.arguments)});
    m_openCalls.push_back(m_dropped + m_lines.size() - 1);
}

void CallLog::ended(int, QByteArray const& result) {
    if (m_openCalls.empty())
        return; // it began before anybody watched
    size_t const line = m_openCalls.back();
    m_openCalls.pop_back();
    if (line < m_dropped || result.isEmpty())
        return;
    m_lines[line - m_dropped][kResult] = QString::fromUtf8(result);
    QModelIndex const changed = index(int(line - m_dropped), kResult);
    if (changed.isValid())
        emit dataChanged(changed, changed);
}

void CallLog::append(Line line) {
    if (m_lines.size() >= m_capacity)
        drop(m_capacity / 4);
    line[kNumber] = QString::number(m_dropped + m_lines.size() + 1);
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

QByteArray callsText(QAbstractItemModel const& shown) {
    QString text;
    for (int row = 0; row < shown.rowCount(); ++row) {
        auto const cell = [&](int column) { return shown.index(row, column).data().toString(); };
        QStringList words{cell(CallLog::kCall), cell(CallLog::kArguments)};
        if (!cell(CallLog::kResult).isEmpty())
            words << QStringLiteral("=") << cell(CallLog::kResult);
        words.removeAll(QString());
        text += words.join(QLatin1Char(' ')) + QLatin1Char('\n');
    }
    return text.toUtf8();
}
} // namespace pictara
