#include "simulator/camera/headboard_bus.h"

#include <QtEndian>
#include <algorithm>
#include <iterator>
#include <span>
#include <tuple>

// The camera's own decoder of what a calibration left in its EEPROM.
namespace simulator {
namespace {
constexpr uint8_t kMagic[] = {'V', 'Y', 'E', 'E'};
constexpr size_t kFirstRecord = 5;
constexpr size_t kLastBytes = 16; // at the end: single bytes that say what the headboard is
constexpr size_t kHeader = 3;     // type and length, of records and of their blocks
constexpr size_t kNameSize = 9;
constexpr uint8_t kShadingRecord = 8;
constexpr uint8_t kEnd = 0xFF; // of the chain, and of the blocks

enum EntryKind : uint8_t { kFullEntry = 2, kShortRegister = 3, kShortVariable = 4 };

constexpr uint32_t kLargestValue = 4; // bytes

// Registers with fewer address bits share the address word with their page.
constexpr uint32_t kLeastBitsOfAWholeAddress = 9;

using Bytes = std::span<uint8_t const>;

uint32_t big16(Bytes bytes, size_t at) { return qFromBigEndian<quint16>(&bytes[at]); }
uint32_t big32(Bytes bytes, size_t at) { return qFromBigEndian<quint32>(&bytes[at]); }

/// A record of the chain, or a block of a record.
struct Item {
    Bytes whole;
    bool fits = false; ///< its length does not run over the end; only then there is a payload

    [[nodiscard]] uint8_t type() const { return whole[0]; }
    [[nodiscard]] Bytes payload() const { return whole.subspan(kHeader); }
};

// Takes the next item off; none at the end of the run. One that runs over the end is all the rest.
std::optional<Item> takeItem(Bytes& rest) {
    if (rest.empty() || rest[0] == kEnd)
        return std::nullopt;
    bool const fits = rest.size() >= kHeader && rest.size() - kHeader >= big16(rest, 1);
    Item const item{rest.first(fits ? kHeader + big16(rest, 1) : rest.size()), fits};
    rest = rest.subspan(item.whole.size());
    return item;
}

constexpr size_t kAll = SIZE_MAX;

struct TypeRow {
    uint8_t type;
    char const* name;
    size_t textSize = 0; ///< bytes at the payload's beginning that a name or text may fill
    bool holdsRegisters = false;
};

constexpr TypeRow kTypes[] = {
    {2, "SENSOR_DATA"},         {3, "REG_DATA"},          {4, "VAR_DATA"},        {5, "SFR_DATA"},
    {7, "CUSTOMER_DATA"},       {8, "PGA", 9, true},      {9, "SWPGA", 9},        {10, "Sensor ID", kAll},
    {11, "Headboard ID", kAll}, {12, "CCM", 9, true},     {13, "SWCCM", 9},       {14, "Defect Map"},
    {15, "Lens Type", kAll},    {16, "Time Stamp", kAll}, {17, "Scratchpad", 15}, {18, "SWSTEREO", 9},
};

// What fills all of its room has no closing zero.
QString textIn(Bytes payload, size_t room) {
    auto const* const text = reinterpret_cast<char const*>(payload.data());
    return QString::fromLocal8Bit(text, int(qstrnlen(text, uint(std::min(room, payload.size())))));
}

bool isFormatted(EepromContents const& contents) {
    return std::equal(std::begin(kMagic), std::end(kMagic), contents.begin());
}

/// The records of one EEPROM, read for one sensor.
class Decoder {
public:
    Decoder(EepromContents const& contents, Profile& profile) : m_contents(contents), m_profile(profile) {}

    /// The payload of the record of shading registers looked for.
    [[nodiscard]] std::optional<Bytes> find(QString const& name, QString* error) const {
        if (!isFormatted(m_contents)) {
            *error = QStringLiteral("the EEPROM is not formatted");
            return std::nullopt;
        }
        Bytes rest = Bytes(m_contents).subspan(kFirstRecord);
        while (std::optional<Item> const record = takeItem(rest)) {
            bool const isShading = record->type() == kShadingRecord;
            if (!record->fits || (isShading && record->payload().size() < kNameSize)) {
                *error = at(record->whole, record->fits ? "the record is too short for its name"
                                                        : "the record runs over the end");
                return std::nullopt;
            }
            if (isShading && (name.isNull() ||
                              textIn(record->payload(), kNameSize).compare(name, Qt::CaseInsensitive) == 0))
                return record->payload();
        }
        *error = QStringLiteral("the EEPROM holds no shading registers");
        if (!name.isNull())
            *error += QStringLiteral(" named \"%1\"").arg(name);
        return std::nullopt;
    }

    /// The settings behind the name of a register record, appended as far as they are well-formed. False
    /// with a message that names the place when they are not to the end.
    [[nodiscard]] bool read(Bytes payload, std::vector<StoredSetting>& settings, QString* error) const {
        if (payload.size() < kNameSize) {
            *error = at(payload, "the record is too short for its name");
            return false;
        }
        Bytes rest = payload.subspan(kNameSize);
        while (std::optional<Item> const block = takeItem(rest)) {
            size_t const size = block->type() == kFullEntry ? 18 : 4;
            if (!block->fits)
                *error = at(block->whole, "the block runs over the end of its record");
            else if (block->type() < kFullEntry || block->type() > kShortVariable)
                *error = at(block->payload(), "the block before is of no known kind");
            else if (block->payload().size() % size != 0)
                *error = at(block->payload(), "the block's length leaves a broken entry");
            else {
                for (size_t i = 0; i < block->payload().size(); i += size)
                    settings.push_back(decoded(block->type(), block->payload().subspan(i, size)));
                continue;
            }
            return false;
        }
        return true;
    }

    [[nodiscard]] StoredRecord told(Item const& item) const {
        auto const* const found = std::find_if(std::begin(kTypes), std::end(kTypes),
                                               [&](TypeRow const& row) { return row.type == item.type(); });
        TypeRow const row = found == std::end(kTypes) ? TypeRow{item.type(), ""} : *found;
        StoredRecord record{.offset = offsetOf(item.whole),
                            .size = item.whole.size(),
                            .type = row.type,
                            .typeName = QString::fromLatin1(row.name),
                            .text = item.fits ? textIn(item.payload(), row.textSize) : QString(),
                            .settings = {},
                            .fault = item.fits ? QString() : QStringLiteral("runs over the end")};
        // What is sound before a fault is shown all the same.
        if (row.holdsRegisters && item.fits)
            std::ignore = read(item.payload(), record.settings, &record.fault);
        for (StoredSetting& setting : record.settings) {
            auto const* const reg =
                m_profile.registers.find(setting.addressSpace, setting.id, setting.address);
            setting.name = reg ? reg->name : QByteArray();
            setting.place =
                QString::asprintf("%u/%u/0x%04x", setting.addressSpace, setting.id, setting.address);
        }
        return record;
    }

private:
    [[nodiscard]] size_t offsetOf(Bytes place) const { return size_t(place.data() - m_contents.data()); }
    [[nodiscard]] QString at(Bytes place, char const* what) const {
        return QStringLiteral("EEPROM, offset %1: %2").arg(offsetOf(place)).arg(QLatin1String(what));
    }

    [[nodiscard]] StoredSetting decoded(uint8_t kind, Bytes entry) const {
        size_t const offset = offsetOf(entry);
        if (kind == kFullEntry)
            return {offset,   entry[0],         big32(entry, 1), big32(entry, 5),
                    entry[9], big32(entry, 10), big32(entry, 14)};
        uint32_t const word = big16(entry, 0);
        uint32_t const value = big16(entry, 2);
        if (kind == kShortVariable)
            return {offset, 1, word >> 10 & 0x1F, word & 0x3FF, (word & 0x8000) != 0 ? 1U : 2U, 0, value};
        bool const isPaged = m_profile.sensor.registerAddressWidth < kLeastBitsOfAWholeAddress;
        return {offset, 0, isPaged ? word >> 8 : 0, isPaged ? word & 0xFF : word, 0, 0, value};
    }

    EepromContents const& m_contents;
    Profile& m_profile;
};
} // namespace

std::vector<StoredRecord> storedRecords(EepromContents const& contents, Profile& profile) {
    std::vector<StoredRecord> records;
    Bytes rest = Bytes(contents).first(contents.size() - kLastBytes).subspan(kFirstRecord);
    while (std::optional<Item> const item = isFormatted(contents) ? takeItem(rest) : std::nullopt)
        records.push_back(Decoder(contents, profile).told(*item));
    return records;
}

bool replayRecord(EepromContents const& contents, QString const& name, Profile& profile, QString* error) {
    Decoder const decoder(contents, profile);
    std::vector<StoredSetting> settings;
    std::optional<Bytes> const payload = decoder.find(name, error);
    if (!payload || !decoder.read(*payload, settings, error))
        return false;
    auto const reg = [&](StoredSetting const& told) {
        return profile.registers.find(told.addressSpace, told.id, told.address);
    };
    for (StoredSetting const& told : settings)
        if (!reg(told) || told.size > kLargestValue) {
            *error = QStringLiteral("EEPROM, offset %1: there is no register of %2 bytes at class %3, id %4, "
                                    "address 0x%5")
                         .arg(told.offset)
                         .arg(told.size)
                         .arg(told.addressSpace)
                         .arg(told.id)
                         .arg(told.address, 4, 16, QLatin1Char('0'));
            return false;
        }
    for (StoredSetting const& told : settings) {
        bool const isWhole = told.size == 0 || told.size >= kLargestValue;
        profile.registers.write(*reg(told), isWhole ? told.value : told.value & ((1U << 8 * told.size) - 1),
                                told.mask == 0 ? UINT32_MAX : told.mask);
    }
    return true;
}
} // namespace simulator
