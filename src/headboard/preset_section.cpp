#include "headboard/preset_section.h"

#include "common/ini_section.h"
#include "headboard/eeprom_chain.h"
#include "headboard/record_format.h"
#include "headboard/register_set.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace kestra {

namespace {

constexpr size_t kLongestStateName = 79;

// One form of line: "KEY = number,number,...". The meanings of the numbers are told by a letter each (i id,
// a address, m mask, v value), for the full count of numbers and for one less.
struct LineForm {
    std::string_view key;
    std::string_view longFields;
    std::string_view shortFields;
    RegisterEntry entry; ///< what the line does not tell
};
constexpr RegisterEntry untold(uint32_t registerClass, uint32_t id, uint32_t size) {
    return {.registerClass = registerClass, .id = id, .address = 0, .size = size, .mask = 0, .value = 0};
}
constexpr LineForm kLineForms[] = {
    {"REG", "iav", "av", untold(kSensorRegister, 0, 0)},
    {"BITFIELD", "iamv", "amv", untold(kSensorRegister, 0, 0)},
    {"VAR", "iamv", "iav", untold(kFirmwareVariable, 0, 0)},
    {"VAR8", "iamv", "iav", untold(kFirmwareVariable, 0, 1)},
    {"SFR", "amv", "av", untold(kSpecialFunction, 2, 0)},
    {"SFR8", "amv", "av", untold(kSpecialFunction, 2, 1)},
    {"MEM", "iamv", "iav", untold(kSpecialFunction, 0, 0)},
    {"MEM8", "iamv", "iav", untold(kSpecialFunction, 0, 1)},
    {"MEM32", "iamv", "iav", untold(kSpecialFunction, 0, 4)},
};

struct StateName {
    uint8_t type;
    std::string_view name;
};
constexpr StateName kStateNames[] = {
    {kRecordSwPga, "Lens Curve Red"},
    {kRecordSwPga, "Lens Curve Green1"},
    {kRecordSwPga, "Lens Curve Green2"},
    {kRecordSwPga, "Lens Curve Blue"},
    {kRecordSwPga, "Lens Correction Falloff"},
    {kRecordSwPga, "iToF Camera Matrix"},
    {kRecordSwPga, "iToF Dist Coeffs"},
    {kRecordSwCcm, "White Balance"},
    {kRecordSwCcm, "WB Speed"},
    {kRecordSwCcm, "WB Adjust Gains"},
    {kRecordSwCcm, "WB Manual Left"},
    {kRecordSwCcm, "WB Manual Right"},
    {kRecordSwCcm, "WB Manual Position"},
    {kRecordSwCcm, "WB Manual RedGreen"},
    {kRecordSwCcm, "WB Manual BlueGreen"},
    {kRecordSwCcm, "WB Interpolate Saturation"},
    {kRecordSwCcm, "WB Normalize Matrix"},
    {kRecordSwCcm, "AWB Incandescent"},
    {kRecordSwCcm, "AWB Middle"},
    {kRecordSwCcm, "AWB Sun"},
    {kRecordSwCcm, "AWB Incandescent Gain"},
    {kRecordSwCcm, "AWB Middle Gain"},
    {kRecordSwCcm, "AWB Sun Gain"},
    {kRecordSwCcm, "AWB Incandescent Temp"},
    {kRecordSwCcm, "AWB Middle Temp"},
    {kRecordSwCcm, "AWB Sun Temp"},
    {kRecordSwCcm, "WB Custom"},
    {kRecordSwCcm, "WB Custom Xenon"},
    {kRecordSwCcm, "WB Custom Led"},
    {kRecordSwStereo, "Stereo Shift X"},
    {kRecordSwStereo, "Stereo Shift Y"},
};

std::string_view withoutLeadingBlanks(std::string_view text) {
    return text.substr(std::min(text.size(), text.find_first_not_of(" \t")));
}

std::string withoutComment(std::string_view line) {
    line = line.substr(0, std::min(line.find("//"), line.find(';')));
    return std::string(line.substr(0, line.find_last_not_of(" \t") + 1));
}

// What stands behind "key =" in a line, or null for a line with another key.
char const* valueOf(std::string const& line, std::string_view key) {
    if (!line.starts_with(key))
        return nullptr;
    std::string_view const rest = withoutLeadingBlanks(std::string_view(line).substr(key.size()));
    return rest.starts_with('=') ? withoutLeadingBlanks(rest.substr(1)).data() : nullptr;
}

// Up to `most` numbers, decimal, octal or hexadecimal as their prefix says, with commas between them.
std::vector<int64_t> numbersOf(char const* text, size_t most) {
    std::vector<int64_t> numbers;
    while (numbers.size() < most) {
        char* end = nullptr;
        int64_t const number = std::strtoll(text, &end, 0);
        if (end == text)
            break;
        numbers.push_back(number);
        if (*end != ',')
            break;
        text = end + 1;
    }
    return numbers;
}

RegisterEntry entryOf(LineForm const& form, std::string_view fields, std::vector<int64_t> const& numbers) {
    RegisterEntry entry = form.entry;
    for (size_t i = 0; i < fields.size(); ++i) {
        // Numbers of more than 32 bits lose the upper ones.
        auto const number = uint32_t(numbers[i]);
        switch (fields[i]) {
        case 'i':
            entry.id = number;
            break;
        case 'a':
            entry.address = number;
            break;
        case 'm':
            entry.mask = number;
            break;
        default:
            entry.value = number;
            break;
        }
    }
    return entry;
}

bool isOf32Bits(int64_t number) {
    return number >= INT32_MIN && number <= int64_t{UINT32_MAX};
}

PresetEntry presetEntry(std::string const& line, LineForm const& form, std::string_view fields,
                        std::vector<int64_t> const& numbers) {
    return {line, entryOf(form, fields, numbers), std::all_of(numbers.begin(), numbers.end(), isOf32Bits)};
}

std::optional<PresetEntry> parseEntry(std::string const& line) {
    for (LineForm const& form : kLineForms) {
        char const* const value = valueOf(line, form.key);
        if (!value)
            continue;
        std::vector<int64_t> const numbers = numbersOf(value, form.longFields.size());
        if (numbers.size() == form.longFields.size())
            return presetEntry(line, form, form.longFields, numbers);
        if (numbers.size() == form.shortFields.size())
            return presetEntry(line, form, form.shortFields, numbers);
    }
    return std::nullopt;
}

// The state that a line sets, from its name on, when records of the type take it.
std::optional<std::string> parseState(std::string const& line, uint8_t type) {
    char const* const value = valueOf(line, "STATE");
    if (!value)
        return std::nullopt;
    std::string_view const text = value;
    std::string_view const name = text.substr(0, std::min(text.find(','), kLongestStateName));
    bool const isTaken =
        std::any_of(std::begin(kStateNames), std::end(kStateNames), [&](StateName const& row) {
            return row.type == type && equalWithoutCase(row.name, name);
        });
    return isTaken ? std::optional<std::string>(text) : std::nullopt;
}

EepromStatus addPresetLine(HeadboardEeprom& eeprom, EepromRecord& record, std::string const& line) {
    if (auto const entry = parseEntry(line))
        return EepromAddEntry(eeprom, record, entry->entry);
    if (auto const state = parseState(line, record.type()))
        return EepromAddLine(record, *state);
    return kEepromOk;
}

// The section's lines without comments; empty when there is no such section.
std::vector<std::string> readSection(char const* iniFileName, char const* sectionName) {
    constexpr size_t kFirstSize = 0x10000;
    for (size_t size = kFirstSize;; size *= 2) {
        std::vector<char> bytes(size);
        size_t const written = readIniSection(sectionName, bytes.data(), size, iniFileName);
        // A list that fills its buffer may have been cut.
        if (written + 2 >= size)
            continue;
        std::vector<std::string> lines;
        for (size_t at = 0; at < written; at += std::strlen(&bytes[at]) + 1)
            lines.push_back(withoutComment(&bytes[at]));
        return lines;
    }
}

} // namespace

EepromStatus EepromImportSection(HeadboardEeprom& eeprom, char const* iniFileName, char const* sectionName,
                                 uint8_t type) {
    if (recordPayload(type) != RecordPayload::RegisterSet)
        return kEepromFailed;
    std::vector<std::string> const lines = readSection(iniFileName, sectionName);
    if (lines.empty())
        return kEepromFailed;
    EepromRecord record = makeRegisterSet(eeprom, type, sectionName);
    for (std::string const& line : lines) {
        EepromStatus const status = addPresetLine(eeprom, record, line);
        if (status != kEepromOk)
            return status;
    }
    return EepromAppendRecord(eeprom, record);
}

std::vector<PresetEntry> presetEntries(char const* iniFileName, char const* sectionName) {
    std::vector<PresetEntry> entries;
    for (std::string const& line : readSection(iniFileName, sectionName))
        if (auto const entry = parseEntry(line))
            entries.push_back(*entry);
    return entries;
}

} // namespace kestra
