#include "headboard/preset_section.h"

#include "common/ini_section.h"
#include "headboard/eeprom_chain.h"
#include "headboard/record_format.h"
#include "headboard/register_names.h"
#include "headboard/register_set.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>

namespace kestra {
namespace {
constexpr size_t kLongestStateName = 79;

// One form of line: "KEY = number,number,...". The meanings of the numbers are told by a letter each, for the
// full count of numbers and for one less.
struct LineForm {
    char const* key;
    std::string_view longFields;
    std::string_view shortFields;
    uint32_t registerClass;
    uint32_t id; ///< where the line tells none
    uint32_t size;
};
constexpr LineForm kLineForms[] = {
    {"REG", "iav", "av", kSensorRegister, 0, 0},      {"BITFIELD", "iamv", "amv", kSensorRegister, 0, 0},
    {"VAR", "iamv", "iav", kFirmwareVariable, 0, 0},  {"VAR8", "iamv", "iav", kFirmwareVariable, 0, 1},
    {"SFR", "amv", "av", kSpecialFunction, 2, 0},     {"SFR8", "amv", "av", kSpecialFunction, 2, 1},
    {"MEM", "iamv", "iav", kSpecialFunction, 0, 0},   {"MEM8", "iamv", "iav", kSpecialFunction, 0, 1},
    {"MEM32", "iamv", "iav", kSpecialFunction, 0, 4},
};

struct Field {
    char letter;
    uint32_t RegisterEntry::*number;
};
constexpr Field kFields[] = {{'i', &RegisterEntry::id},
                             {'a', &RegisterEntry::address},
                             {'m', &RegisterEntry::mask},
                             {'v', &RegisterEntry::value}};

struct TakenStates {
    uint8_t type;
    char const* names; ///< a pattern
};
constexpr TakenStates kTakenStates[] = {
    {kRecordSwPga, "Lens Curve {Red,Green1,Green2,Blue}"},
    {kRecordSwPga, "{Lens Correction Falloff,iToF Camera Matrix,iToF Dist Coeffs}"},
    {kRecordSwCcm, "{White Balance,WB Speed,WB Adjust Gains,WB Interpolate Saturation,WB Normalize Matrix}"},
    {kRecordSwCcm, "WB Manual {Left,Right,Position,RedGreen,BlueGreen}"},
    {kRecordSwCcm, "AWB {Incandescent,Middle,Sun}"},
    {kRecordSwCcm, "AWB {Incandescent,Middle,Sun} {Gain,Temp}"},
    {kRecordSwCcm, "{WB Custom,WB Custom Xenon,WB Custom Led}"},
    {kRecordSwStereo, "Stereo Shift {X,Y}"},
};

std::string withoutComment(std::string_view line) {
    line = line.substr(0, std::min(line.find("//"), line.find(';')));
    return std::string(line.substr(0, line.find_last_not_of(" \t") + 1));
}

// What stands behind "key=" in a normalised line, or null for a line with another key.
char const* valueOf(std::string const& line, std::string_view key) {
    bool const hasKey = line.starts_with(key) && line[key.size()] == '=';
    return hasKey ? line.c_str() + key.size() + 1 : nullptr;
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

PresetEntry presetEntry(std::string const& line, LineForm const& form, std::vector<int64_t> const& numbers) {
    PresetEntry preset{line, {.registerClass = form.registerClass, .id = form.id, .size = form.size}};
    bool const isLong = numbers.size() == form.longFields.size();
    std::string_view const letters = isLong ? form.longFields : form.shortFields;
    for (size_t i = 0; i < letters.size(); ++i) {
        auto const field = std::ranges::find(kFields, letters[i], &Field::letter);
        // Numbers of more than 32 bits lose the upper ones.
        preset.entry.*field->number = uint32_t(numbers[i]);
        preset.isWhole = preset.isWhole && numbers[i] >= INT32_MIN && numbers[i] <= int64_t{UINT32_MAX};
    }
    return preset;
}

std::optional<PresetEntry> parseEntry(std::string const& line) {
    for (LineForm const& form : kLineForms) {
        char const* const value = valueOf(line, form.key);
        if (!value)
            continue;
        std::vector<int64_t> const numbers = numbersOf(value, form.longFields.size());
        if (numbers.size() >= form.shortFields.size())
            return presetEntry(line, form, numbers);
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
    static auto const names = [] {
        std::map<uint8_t, std::vector<std::string>> byType;
        for (TakenStates const& row : kTakenStates)
            expandNames(row.names, byType[row.type]);
        return byType;
    }();
    auto const taken = names.find(type);
    auto const isThis = [&](std::string const& other) { return equalWithoutCase(other, name); };
    bool const isTaken = taken != names.end() && std::ranges::any_of(taken->second, isThis);
    return isTaken ? std::optional<std::string>(text) : std::nullopt;
}

// The section's lines without comments; empty when there is no such section.
std::vector<std::string> readSection(char const* iniFileName, char const* sectionName) {
    std::vector<char> bytes(0x8000);
    size_t written = 0;
    do { // a list that fills its buffer may have been cut
        bytes.resize(2 * bytes.size());
        written = readIniSection(sectionName, bytes.data(), bytes.size(), iniFileName);
    } while (written + 2 >= bytes.size());
    std::vector<std::string> lines;
    for (size_t at = 0; at < written; at += std::strlen(&bytes[at]) + 1)
        lines.push_back(withoutComment(&bytes[at]));
    return lines;
}
} // namespace

EepromStatus EepromImportSection(HeadboardEeprom& eeprom, char const* iniFileName, char const* sectionName,
                                 uint8_t type) {
    if (recordPayload(type) != RecordPayload::RegisterSet)
        return kEepromFailed;
    std::vector<std::string> const lines = readSection(iniFileName, sectionName);
    if (lines.empty())
        return kEepromFailed;
    EepromRecord record = makeRegisterSet(type, eeprom.registerRoom(), sectionName);
    for (std::string const& line : lines) {
        EepromStatus status = kEepromOk;
        if (auto const preset = parseEntry(line))
            status = EepromAddEntry(eeprom, record, preset->entry);
        else if (auto const state = parseState(line, type))
            status = EepromAddLine(record, *state);
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
