#include "simulator/host/session/preset_file.h"

#include "simulator/files/whole_file.h"

#include <QByteArrayList>
#include <QtDebug>
#include <algorithm>
#include <map>

namespace pictara {
namespace {
constexpr uint32_t kRegisterSpace = 0;
constexpr uint32_t kFirmwareVariableSpace = 1;

/// A line with this keyword has first so many names, then so many numbers.
struct Kind {
    char const* keyword;
    int names;
    int numbers;
};

constexpr Kind kKinds[] = {{"STATE", 1, 1},    {"REG", 1, 1},      {"REG", 0, 3},
                           {"BITFIELD", 2, 1}, {"BITFIELD", 0, 4}, {"VAR", 0, 3}};

using Lines = std::map<int, QByteArray>; // by their number, from 1

// The lines of the section that are no comments.
std::optional<Lines> linesOf(QByteArray const& text, QByteArray const& section) {
    std::optional<Lines> lines;
    int number = 0;
    for (QByteArray const& untrimmed : text.split('\n')) {
        QByteArray const line = untrimmed.trimmed();
        ++number;
        int const end = line.indexOf(']');
        if (line.startsWith('[') && end > 0) {
            if (lines)
                break;
            if (line.mid(1, end - 1).trimmed().compare(section, Qt::CaseInsensitive) == 0)
                lines.emplace();
        } else if (lines && !line.isEmpty() && !strchr(";#", line[0]) && !line.startsWith("//")) {
            // Directives such as #TOOLTIP dress the host's menus, so they too say nothing to the sensor.
            (*lines)[number] = line;
        }
    }
    return lines;
}

bool apply(QByteArray const& line, StateVariables& states, SensorRegisters& registers) {
    int const equals = line.indexOf('=');
    QByteArray const keyword = line.left(equals).trimmed().toUpper();
    QByteArray values = line.mid(equals + 1);
    if (int const comment = values.indexOf("//"); comment >= 0)
        values.truncate(comment);
    QByteArrayList fields = values.split(',');
    for (QByteArray& field : fields)
        field = field.trimmed();
    auto const* const kind = std::find_if(std::begin(kKinds), std::end(kKinds), [&](Kind const& row) {
        return keyword == row.keyword && fields.size() == row.names + row.numbers;
    });
    if (equals < 0 || kind == std::end(kKinds))
        return false;
    bool const isState = kind == kKinds; // these alone are signed
    std::vector<uint32_t> n;
    for (QByteArray const& field : fields.mid(kind->names)) {
        bool ok = false;
        bool const isHexadecimal = field.startsWith("0x") || field.startsWith("0X");
        qlonglong const number = field.toLongLong(&ok, isHexadecimal ? 16 : 10);
        if (!ok || number < (isState ? INT32_MIN : 0) || number > (isState ? INT32_MAX : UINT32_MAX))
            return false;
        n.push_back(uint32_t(number));
    }
    if (isState)
        states.set(fields[0], int32_t(n[0]));
    else if (kind->names > 0)
        return registers.write(fields[0], kind->names > 1 ? fields[1] : "", n[0]);
    else if (kind->numbers == 4)
        return registers.writeBitsAt(n[0], n[1], n[2], n[3]);
    else
        return registers.writeAt(keyword == "VAR" ? kFirmwareVariableSpace : kRegisterSpace, n[0], n[1],
                                 n[2]);
    return true;
}
} // namespace

std::optional<int> applyPreset(QString const& iniFile, QByteArray const& section, StateVariables& states,
                               SensorRegisters& registers) {
    QString error; // a file that cannot be read has no such section
    auto const text = files::read(iniFile, files::kMostText, &error);
    auto const lines = linesOf(text.value_or(QByteArray()), section);
    if (!lines)
        return std::nullopt;
    registers.beginChanges();
    auto const applied = std::count_if(lines->begin(), lines->end(), [&](auto const& row) {
        bool const done = apply(row.second, states, registers);
        if (!done)
            qWarning("pictara: %s:%d: preset line passed over: %s", qPrintable(iniFile), row.first,
                     row.second.constData());
        return done;
    });
    registers.endChanges();
    return int(applied);
}
} // namespace pictara
