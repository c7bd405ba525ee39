#include "simulator/host/session/preset_file.h"

#include "simulator/files/whole_file.h"

#include <QtDebug>
#include <algorithm>
#include <optional>

namespace pictara {
namespace {
constexpr uint32_t kRegisterSpace = 0;
constexpr uint32_t kFirmwareVariableSpace = 1;

// The name between the brackets of a section header, or nothing for any other line.
std::optional<QByteArray> sectionName(QByteArray const& line) {
    int const end = line.indexOf(']');
    if (!line.startsWith('[') || end < 0)
        return std::nullopt;
    return line.mid(1, end - 1).trimmed();
}

// Directives such as #TOOLTIP dress the host's menus, so they too say nothing to the sensor.
bool saysNothing(QByteArray const& line) {
    return line.isEmpty() || line.startsWith(';') || line.startsWith('#') || line.startsWith("//");
}

PresetLine parsed(QByteArray const& line) {
    PresetLine result{{}, {}, line};
    int const equals = line.indexOf('=');
    if (equals < 0)
        return result;
    result.keyword = line.left(equals).trimmed().toUpper();
    QByteArray values = line.mid(equals + 1);
    if (int const comment = values.indexOf("//"); comment >= 0)
        values.truncate(comment);
    for (QByteArray const& field : values.split(','))
        result.fields.append(field.trimmed());
    return result;
}

// The numbers of the fields from `first` on; nothing when one of them is none.
std::optional<QList<uint32_t>> numbers(QList<QByteArray> const& fields, int first) {
    QList<uint32_t> result;
    for (int i = first; i < fields.size(); ++i) {
        bool ok = false;
        bool const hexadecimal = fields[i].startsWith("0x") || fields[i].startsWith("0X");
        result.append(fields[i].toUInt(&ok, hexadecimal ? 16 : 10));
        if (!ok)
            return std::nullopt;
    }
    return result;
}

bool applyState(PresetLine const& line, StateVariables& states) {
    bool ok = false;
    int32_t const value = line.fields.size() == 2 ? line.fields[1].toInt(&ok) : 0;
    if (ok)
        states.set(line.fields[0], value);
    return ok;
}

bool applyRegister(PresetLine const& line, SensorRegisters& registers) {
    if (line.fields.size() == 2) {
        auto const value = numbers(line.fields, 1);
        return value && registers.write(line.fields[0].constData(), "", value->at(0));
    }
    auto const n = numbers(line.fields, 0);
    return n && n->size() == 3 && registers.writeAt(kRegisterSpace, n->at(0), n->at(1), n->at(2));
}

bool applyBitfield(PresetLine const& line, SensorRegisters& registers) {
    if (line.fields.size() == 3) {
        auto const value = numbers(line.fields, 2);
        return value && registers.write(line.fields[0].constData(), line.fields[1].constData(), value->at(0));
    }
    auto const n = numbers(line.fields, 0);
    return n && n->size() == 4 && registers.writeBitsAt(n->at(0), n->at(1), n->at(2), n->at(3));
}

bool applyVariable(PresetLine const& line, SensorRegisters& registers) {
    auto const n = numbers(line.fields, 0);
    return n && n->size() == 3 && registers.writeAt(kFirmwareVariableSpace, n->at(0), n->at(1), n->at(2));
}

bool apply(PresetLine const& line, StateVariables& states, SensorRegisters& registers) {
    if (line.keyword == "STATE")
        return applyState(line, states);
    if (line.keyword == "REG")
        return applyRegister(line, registers);
    if (line.keyword == "BITFIELD")
        return applyBitfield(line, registers);
    if (line.keyword == "VAR")
        return applyVariable(line, registers);
    return false;
}
} // namespace

std::optional<QList<PresetLine>> readPreset(QString const& iniFile, QByteArray const& section) {
    QString error; // a file that cannot be read has no such section
    auto const text = files::read(iniFile, files::kMostText, &error);
    std::optional<QList<PresetLine>> lines;
    for (QByteArray const& untrimmed : text.value_or(QByteArray()).split('\n')) {
        QByteArray const line = untrimmed.trimmed();
        if (auto const name = sectionName(line)) {
            if (lines)
                break;
            if (qstricmp(name->constData(), section.constData()) == 0)
                lines.emplace();
        } else if (lines && !saysNothing(line)) {
            lines->append(parsed(line));
        }
    }
    return lines;
}

int applyPreset(QList<PresetLine> const& lines, StateVariables& states, SensorRegisters& registers) {
    registers.beginChanges();
    auto const applied = std::count_if(lines.begin(), lines.end(), [&](PresetLine const& line) {
        bool const done = apply(line, states, registers);
        if (!done)
            qWarning("pictara: preset line passed over: %s", line.text.constData());
        return done;
    });
    registers.endChanges();
    return int(applied);
}
} // namespace pictara
