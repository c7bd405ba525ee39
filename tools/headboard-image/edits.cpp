#include "tools/headboard-image/edits.h"

#include "common/ini_section.h"
#include "headboard/eeprom_chain.h"
#include "headboard/preset_section.h"
#include "headboard/record_format.h"
#include "headboard/register_set.h"
#include "tools/headboard-image/chain_check.h"
#include "tools/headboard-image/image_file.h"
#include "tools/headboard-image/printed_text.h"
#include "tools/headboard-image/profile_sensor.h"
#include "tools/headboard-image/record_display.h"
#include "tools/headboard-image/sensor_stand_in.h"

#include <QFileInfo>
#include <algorithm>
#include <set>

using namespace kestra;

namespace headboard_image {
namespace {
Outcome save(QString const& fileName, std::vector<uint8_t> image, RecordStore const& store,
             std::string const& done) {
    store.copyTo(image);
    std::string error;
    return writeImage(fileName, image, &error) ? Outcome{kExitDone, done, {}} : unusable(error);
}

bool isWritable(RecordStore const& store, std::string* error) {
    Chain const chain = store.chain();
    auto const fault = chainFault(store, chain);
    if (!fault)
        return true;
    std::string const advice = chain.end == ChainEnd::NotFormatted
                                   ? "format the image first"
                                   : "the image is damaged and stays as it is";
    *error = findingText(*fault) + '\n' + advice;
    return false;
}

std::string removeOlder(RecordStore const& store, uint8_t type, std::string const& name) {
    int32_t const offset = EepromFindRecord(*store.eeprom(), type, name.c_str(), 0);
    if (offset < 0 || EepromDeleteRecord(*store.eeprom(), offset) != kEepromOk)
        return {};
    return "in the place of the older one at " + offsetText(offset) + '\n';
}

struct EntryField {
    char const* name;
    uint32_t RegisterEntry::*number;
};
constexpr EntryField kEntryFields[] = {{"id", &RegisterEntry::id},
                                       {"address", &RegisterEntry::address},
                                       {"mask", &RegisterEntry::mask},
                                       {"value", &RegisterEntry::value}};

bool isWhole(PresetEntry const& told, std::string* error) {
    if (!told.isWhole)
        *error = "a number has more than 32 bits";
    return told.isWhole;
}

// Whether a record's entry says everything of a line.
bool saysAll(PresetEntry const& told, RegisterEntry const& stored, std::string* error) {
    if (!isWhole(told, error))
        return false;
    for (EntryField const& field : kEntryFields)
        if (told.entry.*field.number != stored.*field.number) {
            *error = std::string("the record would hold the ") + field.name + ' ' +
                     hexadecimal(stored.*field.number, 2) + " instead of " +
                     hexadecimal(told.entry.*field.number, 2);
            return false;
        }
    // A sensor register's size is the sensor's; that of the others is told in bytes.
    constexpr uint32_t kBits = 8, kWhole = 4;
    bool const isSized = stored.registerClass != kSensorRegister && stored.size > 0 && stored.size < kWhole;
    if (isSized && (stored.value | stored.mask) >> stored.size * kBits != 0) {
        *error = hexadecimal(std::max(stored.value, stored.mask), 2) + " is more than " +
                 counted(stored.size, "byte") + " can hold";
        return false;
    }
    return true;
}

std::string atLine(PresetEntry const& told, std::string const& what) {
    return "the line " + quoted(told.line) + ": " + what;
}

// Whether a record says everything of all lines. Short entries have no room for a page, or for addresses
// above one byte, as the sensor's addressing has it.
bool saysAll(RecordStore const& store, RecordPlace const& place, std::vector<PresetEntry> const& lines,
             Addressing addressing, std::string* error) {
    std::span<uint8_t const> const record = store.record(place);
    for (size_t n = 0; n < lines.size(); ++n) {
        RegisterEntry stored;
        (void)EepromGetEntry(*store.eeprom(), record, int32_t(n), stored);
        if (saysAll(lines[n], stored, error))
            continue;
        bool const isElsewhere = lines[n].entry.id != stored.id || lines[n].entry.address != stored.address;
        std::string const advice = stored.registerClass != kSensorRegister || !isElsewhere ? ""
                                   : addressing == Addressing::Plain
                                       ? "; --paged is for sensors with 8-bit addresses"
                                       : "; with --paged, pages and addresses go up to 0xFF";
        *error = atLine(lines[n], *error + advice);
        return false;
    }
    return true;
}

std::string importFailure(RecordStore const& store, EepromStatus status) {
    if (status == kEepromNoRoom)
        return "the section does not fit: " + std::to_string(EepromFreeSpace(*store.eeprom())) +
               " bytes are available";
    return "the section mixes lines of state with registers; a record holds one of both";
}

// Whether an imported record is better than none.
bool isGood(RecordStore const& store, RecordPlace const& place, std::string* error) {
    RegisterSetContent const content = splitRegisterSet(store.record(place));
    bool const isEmpty = content.blocks.empty() && content.rest.empty();
    if (!isEmpty && !hasFault(checkRecord(place, store.record(place))))
        return true;
    *error = isEmpty ? "the section has no line that a record " + typeText(place.type) + " can hold"
                     : importFailure(store, kEepromFailed);
    return false;
}

// The lines that the record does not tell, as the sensor's own records do not.
std::string leftOutText(RecordStore const& store, RecordPlace const& place,
                        std::vector<PresetEntry> const& lines) {
    std::set<std::pair<uint32_t, uint32_t>> stored;
    RegisterEntry entry;
    for (int32_t n = 0; EepromGetEntry(*store.eeprom(), store.record(place), n, entry) == kEepromOk; ++n)
        stored.insert({entry.registerClass, entry.address});
    std::vector<std::string> missing;
    for (PresetEntry const& told : lines)
        if (!stored.contains({told.entry.registerClass, told.entry.address}))
            missing.push_back(told.line);
    return missing.empty()
               ? std::string()
               : "note: this sensor's records leave out " + counted(int64_t(missing.size()), "line") +
                     " of the section, the first is " + quoted(missing.front()) + '\n';
}

// What a record without the sensor's help lacks.
std::string lackingText(Import const& import) {
    if (import.type != kRecordPga || !import.sensor.isEmpty())
        return {};
    return "note: the record holds the section's lines alone; --sensor PROFILE adds what loads the "
           "correction "
           "safely and\nswitches it on at start-up" +
           std::string(import.label.isEmpty() ? ", --label NAME names it\n" : "\n");
}

void rename(RecordStore const& store, int32_t offset, std::string name) {
    name.resize(recordNameWidth(kRecordPga), '\0');
    auto const* const bytes = reinterpret_cast<uint8_t const*>(name.data());
    (void)HeadboardEepromPut(*store.eeprom(), offset + kRecordHead, int32_t(name.size()), bytes);
}

// Everything that an import works with.
struct Work {
    std::vector<uint8_t> const& bytes;
    QString const& image;
    Import const& import;
    QByteArray file, section, label;
    std::vector<PresetEntry> lines;
};

Outcome finish(Work const& work, RecordStore const& store, std::string const& replaced,
               std::string const& note) {
    RecordPlace const place = store.chain().records.back();
    if (std::string error; !isGood(store, place, &error))
        return refused(error);
    Outcome outcome = save(work.image, work.bytes, store, "imported\n" + recordLine(store, place) + replaced);
    if (outcome.exitCode == kExitDone)
        outcome.complaint = note;
    return outcome;
}

Outcome importLines(Work const& work) {
    SensorStandIn sensor(work.import.addressing);
    RecordStore const store(work.bytes, sensor.camera());
    std::string error;
    if (!isWritable(store, &error))
        return refused(error);
    std::string const name(makeRegisterSet(work.import.type, 0, work.label.constData()).name());
    std::string const replaced = removeOlder(store, work.import.type, name);
    EepromStatus const status = EepromImportSection(*store.eeprom(), work.file.constData(),
                                                    work.section.constData(), work.import.type);
    if (status != kEepromOk)
        return refused(importFailure(store, status));
    RecordPlace const place = store.chain().records.back();
    if (!isGood(store, place, &error) || !saysAll(store, place, work.lines, work.import.addressing, &error))
        return refused(error);
    if (!work.import.label.isEmpty())
        rename(store, place.offset, name);
    return finish(work, store, replaced, lackingText(work.import));
}

Outcome importForSensor(Work const& work) {
    std::string error;
    auto const sensor = ProfileSensor::open(work.import.sensor, &error);
    if (!sensor)
        return unusable(error);
    RecordStore const store(work.bytes, sensor->camera());
    if (!isWritable(store, &error))
        return refused(error);
    if (work.import.type != kRecordPga)
        return refused("--sensor is for records PGA");
    if (work.lines.empty())
        return refused("the section has no line of a register");
    for (PresetEntry const& told : work.lines)
        if (!isWhole(told, &error) || !sensor->set(told.entry, &error))
            return refused(atLine(told, error));
    std::string const name(makeRegisterSet(kRecordPga, 0, work.label.constData()).name());
    std::string const replaced = removeOlder(store, kRecordPga, name);
    EepromStatus const status =
        saveShadingRegisters(*store.eeprom(), work.label.constData(), sensor->model());
    if (status != kEepromOk)
        return refused(importFailure(store, status));
    return finish(work, store, replaced, leftOutText(store, store.chain().records.back(), work.lines));
}
} // namespace

Outcome importSection(QString const& image, Import const& import) {
    std::string error;
    auto const bytes = readImage(image, &error);
    if (!bytes || !isReadableFile(import.presetFile, &error))
        return unusable(error);
    if (recordPayload(import.type) != RecordPayload::RegisterSet)
        return refused("a record " + typeText(import.type) + " holds no registers");
    Work work{.bytes = *bytes,
              .image = image,
              .import = import,
              .file = import.presetFile.toUtf8(),
              .section = import.section.toUtf8(),
              .label = (import.label.isEmpty() ? import.section : import.label).toUtf8(),
              .lines = {}};
    if (readIniSection(work.section.constData(), nullptr, 0, work.file.constData()) == 0)
        return refused(import.presetFile.toStdString() + " has no section [" + import.section.toStdString() +
                       ']');
    work.lines = presetEntries(work.file.constData(), work.section.constData());
    return import.sensor.isEmpty() ? importLines(work) : importForSensor(work);
}

Outcome deleteRecord(QString const& image, uint8_t type, std::optional<QString> const& name) {
    std::string error;
    auto const bytes = readImage(image, &error);
    if (!bytes)
        return unusable(error);
    RecordStore const store(*bytes);
    if (!isWritable(store, &error))
        return refused(error);
    if (name && recordNameWidth(type) == 0)
        return refused("records " + typeText(type) + " have no name");
    std::string const wanted = name ? name->toStdString() : std::string();
    Chain const chain = store.chain();
    RecordPlace const* const place =
        chain.at(EepromFindRecord(*store.eeprom(), type, name ? wanted.c_str() : nullptr, 0));
    if (!place)
        return refused("there is no record " + typeText(type) + (name ? " named " + quoted(wanted) : ""));
    std::string done = "deleted\n" + recordLine(store, *place);
    if (EepromDeleteRecord(*store.eeprom(), place->offset) != kEepromOk)
        return refused("the record cannot be deleted");
    auto const left = std::ranges::count(chain.records, type, &RecordPlace::type) - 1;
    if (left > 0)
        done += counted(left, "record") + " of this type left\n";
    return save(image, *bytes, store, done);
}

Outcome formatImage(QString const& image) {
    constexpr int32_t kUsualVersion = -1;
    std::string error;
    bool const isNew = !QFileInfo::exists(image);
    auto const bytes = isNew ? std::vector<uint8_t>(kUsualImageSize, kErased) : readImage(image, &error);
    if (!bytes)
        return unusable(error);
    RecordStore const store(*bytes);
    auto const lost = int64_t(store.chain().records.size());
    if (EepromFormat(*store.eeprom(), kUsualVersion) != kEepromOk)
        return refused("the image cannot be formatted");
    std::string done = isNew ? "created and formatted\n" : "formatted\n";
    if (lost > 0)
        done += counted(lost, "record") + " can no longer be reached\n";
    return save(image, *bytes, store, done);
}
} // namespace headboard_image
