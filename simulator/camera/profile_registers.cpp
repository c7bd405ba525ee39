#include "simulator/camera/profile.h"

#include <QStringList>
#include <algorithm>

namespace simulator {
namespace {
using files::JsonPlace;

constexpr uint32_t kLargestFamily = 4096;
constexpr size_t kMostRegisters = 65536;
// Bounds of the short addresses that firmware variables have.
constexpr uint32_t kFirmwareSpace = 1;
constexpr uint32_t kLargestFirmwareId = 31;
constexpr uint32_t kLargestFirmwareAddress = 0x3FF;

/// What stands in the members' names for an index of their family.
struct Index {
    QString letter;
    QStringList words; ///< one at least
};

Index readIndex(JsonPlace const& place) {
    Index index{.letter = place["letter"].text(), .words = {}};
    if (place.has("words")) {
        for (JsonPlace const& word : place["words"].someItems(kLargestFamily, "word"))
            index.words.append(word.text());
    } else {
        uint32_t const first = place.integerOr(0, "first");
        uint32_t const count = place["count"].integer(1, kLargestFamily);
        for (uint32_t i = 0; i < count; ++i)
            index.words.append(QString::number(first + i));
    }
    if (index.words.isEmpty())
        index.words.append(QString());
    return index;
}

// The name of a family's member; `running` counts the members with the last index fastest.
QString memberName(QString name, std::vector<Index> const& indices, int running) {
    for (auto index = indices.rbegin(); index != indices.rend(); ++index) {
        QString const& word = index->words[running % index->words.size()];
        name.replace(QStringLiteral("{%1}").arg(index->letter), word);
        name.replace(QStringLiteral("{%1:3}").arg(index->letter), word.rightJustified(3, QLatin1Char('0')));
        running /= index->words.size();
    }
    return name;
}

std::vector<uint32_t> readResets(JsonPlace const& place) {
    if (!place.has("reset") || !place["reset"].isArray())
        return {place.integerOr(0, "reset")};
    std::vector<uint32_t> resets;
    for (JsonPlace const& item : place["reset"].someItems(kLargestFamily, "value"))
        resets.push_back(item.integer());
    if (resets.empty())
        resets.push_back(0);
    return resets;
}

void readBitfields(JsonPlace const& place, RegisterMap::Register& reg) {
    uint32_t const widest = 0xFFFFFFFF >> (32 - reg.description.dataWidth);
    for (QString const& key : place.object().keys()) {
        QByteArray const name = key.toLatin1();
        uint32_t const mask = place[key.toUtf8().constData()].integer(1, widest);
        reg.bitfields.insert(name, {name.constData(), mask, 0});
    }
}

RegisterMap::Register readCommonPart(JsonPlace const& place, uint32_t addressWidth) {
    RegisterMap::Register reg;
    vy_RegisterDescription& told = reg.description;
    told.addressSpace = place.integerOr(0, "addressSpace", 0, 31);
    bool const isFirmware = told.addressSpace == kFirmwareSpace;
    told.id = place.integerOr(0, "id", 0, isFirmware ? kLargestFirmwareId : 0xFFFF);
    told.address = place["address"].integer(0, isFirmware ? kLargestFirmwareAddress : 0xFFFFFFFF);
    told.addressWidth = place.integerOr(addressWidth, "addressWidth", 8, 32);
    told.dataWidth = place.integerOr(16, "dataWidth", 1, 32);
    uint32_t const usualType = told.dataWidth <= 8 ? 0 : told.dataWidth <= 16 ? 2 : 4;
    told.dataType = place.integerOr(usualType, "dataType", 0, 5);
    if (place.has("bitfields"))
        readBitfields(place["bitfields"], reg);
    return reg;
}

void addFamily(JsonPlace const& place, uint32_t addressWidth, RegisterMap& registers) {
    RegisterMap::Register reg = readCommonPart(place, addressWidth);
    vy_RegisterDescription& told = reg.description;
    QString const pattern = place["name"].text();
    std::vector<Index> indices;
    uint64_t count = 1;
    if (place.has("indices"))
        for (JsonPlace const& item : place["indices"].items()) {
            indices.push_back(readIndex(item));
            count = std::min<uint64_t>(count * uint64_t(indices.back().words.size()), kLargestFamily);
        }
    uint32_t const stride = indices.empty() ? 0 : place["stride"].integer(1, 0xFFFF);
    std::vector<uint32_t> const resets = readResets(place);
    for (uint32_t i = 0; i < count; ++i) {
        QString const name = memberName(pattern, indices, int(i));
        reg.name = name.toLatin1();
        reg.value = resets[std::min<size_t>(i, resets.size() - 1)];
        if (registers.find(reg.name.constData()))
            place.fail(QStringLiteral("the register \"%1\" is there twice").arg(name));
        if (registers.find(told.addressSpace, told.id, told.address))
            place.fail(QStringLiteral("another register lies at the address of \"%1\"").arg(name));
        registers.add(reg);
        told.address += stride;
    }
}
} // namespace

void readRegisters(JsonPlace const& place, uint32_t addressWidth, RegisterMap& registers) {
    for (QString const& group : place.object().keys())
        for (JsonPlace const& item : place[group.toUtf8().constData()].items()) {
            if (registers.size() > kMostRegisters)
                return item.fail(QStringLiteral("no more than %1 registers are read").arg(kMostRegisters));
            addFamily(item, addressWidth, registers);
        }
}
} // namespace simulator
