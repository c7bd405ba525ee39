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

using Numbers = std::vector<uint32_t>;

/// What a line with this keyword does: first come names, then numbers.
struct Kind {
    char const* keyword;
    int names;
    size_t numbers;
    bool (*apply)(QByteArrayList const& names, Numbers const& n, StateVariables& states,
                  SensorRegisters& registers);
};

constexpr Kind kKinds[] = {{"STATE", 1, 1,
                            [](auto const& names, auto const& n, auto& states, auto&) {
                                states.set(names[0], int32_t(n[0]));
                                return true;
                            }},
                           {"REG", 1, 1,
                            [](auto const& names, auto const& n, auto&, auto& registers) {
                                return registers.write(names[0].constData(), "", n[0]);
                            }},
                           {"REG", 0, 3,
                            [](auto const&, auto const& n, auto&, auto& registers) {
                                return registers.writeAt(kRegisterSpace, n[0], n[1], n[2]);
                            }},
                           {"BITFIELD", 2, 1,
                            [](auto const& names, auto const& n, auto&, auto& registers) {
                                return registers.write(names[0].constData(), names[1].constData(), n[0]);
                            }},
                           {"BITFIELD", 0, 4,
                            [](auto const&, auto const& n, auto&, auto& registers) {
                                return registers.writeBitsAt(n[0], n[1], n[2], n[3]);
                            }},
                           {"VAR", 0, 3, [](auto const&, auto const& n, auto&, auto& registers) {
                                return registers.writeAt(kFirmwareVariableSpace, n[0], n[1], n[2]);
                            }}};

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
    for (Kind const& kind : kKinds) {
        if (equals < 0 || keyword != kind.keyword || fields.size() != kind.names + int(kind.numbers))
            continue;
        Numbers numbers;
        bool ok = true;
        for (int i = kind.names; i < fields.size() && ok; ++i) {
            bool const isHexadecimal = fields[i].startsWith("0x") || fields[i].startsWith("0X");
            qlonglong const number = fields[i].toLongLong(&ok, isHexadecimal ? 16 : 10);
            bool const isState = &kind == kKinds; // these alone are signed
            ok = ok && number >= (isState ? INT32_MIN : 0) && number <= (isState ? INT32_MAX : UINT32_MAX);
            numbers.push_back(uint32_t(number));
        }
        return ok && kind.apply(fields, numbers, states, registers);
    }
    return false;
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
