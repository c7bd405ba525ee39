#include "tools/headboard-image/edits.h"

#include "common/ini_section.h"
#include "headboard/eeprom_chain.h"
#include "headboard/preset_section.h"
#include "headboard/record_content.h"
#include "headboard/record_types.h"
#include "tools/headboard-image/chain_check.h"
#include "tools/headboard-image/entry_blocks.h"
#include "tools/headboard-image/image_file.h"
#include "tools/headboard-image/printed_text.h"
#include "tools/headboard-image/record_display.h"
#include "tools/headboard-image/sensor_stand_in.h"

#include <QFileInfo>
#include <algorithm>

namespace headboard_image {
namespace {

Outcome save(QString const& fileName, std::vector<uint8_t> image, RecordStore const& store,
             std::string const& done) {
    store.copyTo(image);
    std::string fault;
    return writeImage(fileName, image, fault) ? Outcome{kExitDone, done, {}} : unusable(fault);
}

// Why a store is not written to; empty when it may be.
std::optional<Outcome> refusalOf(RecordStore const& store) {
    Chain const chain = store.chain();
    auto const fault = chainFault(store, chain);
    if (!fault)
        return std::nullopt;
    std::string const advice = chain.end == ChainEnd::NotFormatted
                                   ? "format the image first"
                                   : "the image is damaged and stays as it is";
    return refused(findingText(*fault) + '\n' + advice);
}

std::string removeOlder(RecordStore const& store, uint8_t type, std::string const& name) {
    int32_t const offset = EepromFindRecord(store.eeprom(), type, name.c_str(), 0);
    if (offset < 0 || EepromDeleteRecord(store.eeprom(), offset) != kEepromOk)
        return {};
    return "in the place of the older one at " + offsetText(offset) + '\n';
}

// Sensor registers that the record tells otherwise than the section does. Short entries have no room for a
// page, or for addresses above one byte, as the sensor's addressing has it.
int64_t countMisfits(RecordStore const& store, RecordPlace const& place, SensorStandIn const& sensor) {
    int64_t misfits = 0;
    auto told = sensor.lookedUp().begin();
    RegisterEntry entry;
    std::span<uint8_t const> const record = store.record(place);
    for (int32_t n = 0; EepromGetEntry(store.eeprom(), record, n, entry) == kEepromOk; ++n) {
        if (entry.registerClass != 0 || told == sensor.lookedUp().end())
            continue;
        misfits += *told++ == SensorStandIn::Register{entry.id, entry.address} ? 0 : 1;
    }
    return misfits;
}

std::string misfitText(int64_t misfits, Addressing addressing) {
    return counted(misfits, "register") +
           (addressing == Addressing::Plain
                ? " of the section would lose a page or bits of the address; --paged is for sensors with "
                  "8-bit addresses"
                : " of the section would lose bits; with --paged, pages and addresses go up to 0xFF");
}

std::string importFailure(RecordStore const& store, int32_t status) {
    if (status == kEepromNoRoom)
        return "the section does not fit: " + std::to_string(EepromFreeSpace(store.eeprom())) +
               " bytes are available";
    return "the section mixes lines of state with registers; a record holds one of both";
}

// What makes an imported record worse than none; empty for a good one.
std::string flawOf(RecordStore const& store, RecordPlace const& place, SensorStandIn const& sensor,
                   Addressing addressing) {
    RegisterSetContent const content = splitRegisterSet(store.record(place));
    if (content.blocks.empty() && content.rest.empty())
        return "the section has no line that a record " + typeText(place.type) + " can hold";
    if (hasFault(checkRecord(place, store.record(place))))
        return importFailure(store, kEepromFailed);
    int64_t const misfits = countMisfits(store, place, sensor);
    return misfits > 0 ? misfitText(misfits, addressing) : std::string();
}

} // namespace

Outcome importSection(QString const& image, QString const& presetFile, QString const& section, uint8_t type,
                      Addressing addressing) {
    std::string fault;
    auto const bytes = readImage(image, fault);
    if (!bytes || !isReadableFile(presetFile, fault))
        return unusable(fault);
    if (recordPayload(type) != RecordPayload::RegisterSet)
        return refused("a record " + typeText(type) + " holds no registers");
    QByteArray const fileName = presetFile.toUtf8();
    QByteArray const sectionName = section.toUtf8();
    if (readIniSection(sectionName.constData(), nullptr, 0, fileName.constData()) == 0)
        return refused(presetFile.toStdString() + " has no section [" + section.toStdString() + ']');

    SensorStandIn sensor(addressing);
    RecordStore const store(*bytes, sensor.camera());
    if (auto const refusal = refusalOf(store))
        return *refusal;
    std::string const name(makeRegisterSet(type, 0, sectionName.constData()).name());
    std::string const replaced = removeOlder(store, type, name);
    int32_t const status =
        EepromImportSection(store.eeprom(), fileName.constData(), sectionName.constData(), type);
    if (status != kEepromOk)
        return refused(importFailure(store, status));
    RecordPlace const place = store.chain().records.back();
    std::string const flaw = flawOf(store, place, sensor, addressing);
    if (!flaw.empty())
        return refused(flaw);
    return save(image, *bytes, store, "imported\n" + recordLine(store, place) + replaced);
}

Outcome deleteRecord(QString const& image, uint8_t type, std::optional<QString> const& name) {
    std::string fault;
    auto const bytes = readImage(image, fault);
    if (!bytes)
        return unusable(fault);
    RecordStore const store(*bytes);
    if (auto const refusal = refusalOf(store))
        return *refusal;
    if (name && recordNameWidth(type) == 0)
        return refused("records " + typeText(type) + " have no name");
    std::string const wanted = name ? name->toStdString() : std::string();
    Chain const chain = store.chain();
    RecordPlace const* const place =
        chain.at(EepromFindRecord(store.eeprom(), type, name ? wanted.c_str() : nullptr, 0));
    if (!place)
        return refused("there is no record " + typeText(type) + (name ? " named " + quoted(wanted) : ""));
    std::string done = "deleted\n" + recordLine(store, *place);
    if (EepromDeleteRecord(store.eeprom(), place->offset) != kEepromOk)
        return refused("the record cannot be deleted");
    auto const left = std::ranges::count(chain.records, type, &RecordPlace::type) - 1;
    if (left > 0)
        done += counted(left, "record") + " of this type left\n";
    return save(image, *bytes, store, done);
}

Outcome formatImage(QString const& image) {
    constexpr uint8_t kErased = 0xFF;
    constexpr int32_t kUsualVersion = -1;
    std::string fault;
    bool const isNew = !QFileInfo::exists(image);
    auto const bytes = isNew ? std::vector<uint8_t>(kUsualImageSize, kErased) : readImage(image, fault);
    if (!bytes)
        return unusable(fault);
    RecordStore const store(*bytes);
    auto const lost = int64_t(store.chain().records.size());
    if (EepromFormat(store.eeprom(), kUsualVersion) != kEepromOk)
        return refused("the image cannot be formatted");
    std::string done = isNew ? "created and formatted\n" : "formatted\n";
    if (lost > 0)
        done += counted(lost, "record") + " can no longer be reached\n";
    return save(image, *bytes, store, done);
}

} // namespace headboard_image
