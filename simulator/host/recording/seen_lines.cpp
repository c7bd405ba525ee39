#include "simulator/host/recording/seen_lines.h"

#include "simulator/boundary/observed_call.h"
#include "simulator/host/session/command_line.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <algorithm>
#include <optional>

namespace pictara {
namespace {
constexpr char kResult[] = " = ";
constexpr char kPolled[] = "vy_ReadSensorRegStr ";
constexpr char kWritten[] = "vy_writeRegisters ";
constexpr char kRead[] = "vy_readRegisters ";
constexpr uint32_t kMostBytes = 32;  // in a line of bus writes
constexpr int kMostReadDigits = 128; // in a line of a bus read; more are shown by their hash

QByteArray indented(int depth, QByteArray const& text) { return QByteArray(4 * (depth + 1), ' ') + text; }

/// A bus write as its line shows it.
struct BusWrite {
    QByteArray before; ///< name and device
    uint32_t start = 0;
    QByteArray groups;
    [[nodiscard]] uint32_t bytes() const {
        return uint32_t(groups.size() - groups.count(' ')) / 2; // two digits each
    }
};

std::optional<BusWrite> parseBusWrite(QByteArray const& line) {
    static QRegularExpression const pattern(
        QStringLiteral("^( *vy_writeRegisters \\w+ )(\\w+) \\[((?:[0-9a-f]{2}| )+)\\] = 0$"));
    if (!line.contains(kWritten))
        return std::nullopt;
    auto const match = pattern.match(QString::fromUtf8(line));
    bool ok = match.hasMatch();
    BusWrite const write{match.captured(1).toUtf8(), match.captured(2).toUInt(&ok, 0),
                         match.captured(3).toUtf8()};
    return match.hasMatch() && ok ? std::optional(write) : std::nullopt;
}

QByteArray lineOf(BusWrite const& write) {
    return write.before + simulator::callText(write.start) + " [" + write.groups + "] = 0";
}

QByteArray sharedBusWrite(QByteArray const& first, QByteArray const& second) {
    auto one = parseBusWrite(first);
    auto const next = parseBusWrite(second);
    if (!one || !next || one->before != next->before || one->start + one->bytes() != next->start)
        return {};
    one->groups += ' ' + next->groups;
    return lineOf(*one);
}

// A time of day differs from run to run; its digits are shown as "tt". They may lie in several groups.
QByteArray withoutTime(QByteArray digits) {
    static QRegularExpression const pattern = [] {
        QStringList bytes;
        for (char const sign : QByteArrayLiteral("0000/00/00 00:00:00"))
            bytes << (sign == '0' ? QStringLiteral("3[0-9]") : QString::number(sign, 16));
        return QRegularExpression(bytes.join(QLatin1String(" ?")));
    }();
    auto times = pattern.globalMatch(QString::fromLatin1(digits));
    while (times.hasNext()) {
        auto const time = times.next();
        int const begin = time.capturedStart();
        bool const isWholeByte = (begin - digits.left(begin).count(' ')) % 2 == 0;
        for (int at = begin; at < time.capturedEnd() && isWholeByte; ++at)
            if (digits.at(at) != ' ')
                digits[at] = 't';
    }
    return digits;
}

// As many groups as fit, at least one.
std::vector<QByteArray> linesOf(BusWrite write) {
    std::vector<QByteArray> lines;
    QByteArray const groups = withoutTime(write.groups);
    write.groups.clear();
    for (QByteArray const& group : groups.split(' ')) {
        if (!write.groups.isEmpty() && write.bytes() + uint32_t(group.size()) / 2 > kMostBytes) {
            lines.push_back(lineOf(write));
            write.start += write.bytes();
            write.groups.clear();
        }
        write.groups += (write.groups.isEmpty() ? "" : " ") + group;
    }
    lines.push_back(lineOf(write));
    return lines;
}

bool isPolledAgain(QByteArray const& first, QByteArray const& second) {
    int const end = first.indexOf(kResult);
    return first.trimmed().startsWith(kPolled) && end > 0 && second.indexOf(kResult) == end &&
           first.left(end) == second.left(end);
}
} // namespace

QByteArray sharedLine(QByteArray const& first, QByteArray const& second) {
    return isPolledAgain(first, second) ? second : sharedBusWrite(first, second);
}

std::vector<QByteArray> shownLines(QByteArray const& line) {
    if (auto const write = parseBusWrite(line))
        return linesOf(*write);
    int const begin = line.lastIndexOf('[') + 1, end = line.lastIndexOf(']');
    if (!line.contains(kRead) || begin == 0 || end < begin)
        return {line};
    QByteArray digits = withoutTime(line.mid(begin, end - begin));
    if (digits.size() > kMostReadDigits)
        digits = simulator::hashText(
            {reinterpret_cast<unsigned char const*>(digits.constData()), size_t(digits.size())});
    return {line.left(begin) + digits + line.mid(end)};
}

SeenLines::SeenLines(Placeholders placeholders, Sink sink)
    : m_placeholders(std::move(placeholders)), m_sink(std::move(sink)) {}

void SeenLines::doing(QStringList const& words) {
    writeOpenCalls();
    write(m_placeholders.hide(lineOf(words).toUtf8()));
}

void SeenLines::began(BoundaryCall const& call, int depth) {
    writeOpenCalls();
    QByteArray text = (call.source == CallSource::Plugin ? "> " : "") + call.name;
    if (!call.arguments.isEmpty())
        text += ' ' + m_placeholders.hide(call.arguments);
    m_open.push_back({indented(depth, text)});
}

void SeenLines::ended(int depth, QByteArray const& result) {
    if (m_open.empty())
        return; // it began before anybody watched
    OpenCall const call = m_open.back();
    m_open.pop_back();
    QByteArray const answer = result.isEmpty() ? QByteArray() : kResult + m_placeholders.hide(result);
    if (!call.isWritten)
        write(call.line + answer);
    else if (!answer.isEmpty())
        write(indented(depth, answer.mid(1)));
}

void SeenLines::flush() {
    writeOpenCalls();
    write({});
}

void SeenLines::writeOpenCalls() {
    for (OpenCall& call : m_open)
        if (!std::exchange(call.isWritten, true))
            write(call.line);
}

void SeenLines::write(QByteArray const& line) {
    QByteArray const shared = sharedLine(m_waiting, line);
    QByteArray const finished = std::exchange(m_waiting, shared.isEmpty() ? line : shared);
    if (shared.isEmpty() && !finished.isEmpty())
        for (QByteArray const& shown : shownLines(finished))
            m_sink(shown);
}

void Placeholders::add(QString const& path, QByteArray const& name) {
    for (QString const& written : {QDir::toNativeSeparators(path), path})
        m_names.emplace_back(written.toUtf8(), name);
    // A file is looked for before the folder that it lies in.
    std::stable_sort(m_names.begin(), m_names.end(),
                     [](auto const& a, auto const& b) { return a.first.size() > b.first.size(); });
}

QByteArray Placeholders::hide(QByteArray text) const {
    for (auto const& [path, name] : m_names)
        text.replace(path, name);
    return text;
}

QByteArray Placeholders::reveal(QByteArray text) const {
    for (auto const& [path, name] : m_names)
        text.replace(name, path);
    return text;
}

Placeholders placeholdersOf(Options const& options) {
    QString const program = QCoreApplication::applicationDirPath();
    Placeholders placeholders;
    placeholders.add(QDir(options.outputFolder).absolutePath(), "<output>");
    placeholders.add(options.iniFile.isEmpty() ? program + QStringLiteral("/pictara.ini")
                                               : QFileInfo(options.iniFile).absoluteFilePath(),
                     "<ini>");
    placeholders.add(program, "<program>");
    return placeholders;
}
} // namespace pictara
