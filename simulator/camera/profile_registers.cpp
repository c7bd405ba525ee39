#include "simulator/camera/profile.h"

#include <QSet>
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

struct Index {
    QString letter;
    uint32_t first = 0;
    uint32_t count = 1;
    QStringList words; ///< what stands for the numbers, where there are any
};

Index readIndex(JsonPlace const& place) {
    Index index{.letter = place["letter"].text(), .words = {}};
    if (!place.has("words")) {
        index.first = place.integerOr(0, "first");
        index.count = place["count"].integer(1, kLargestFamily);
        return index;
    }
    for (JsonPlace const& word : place["words"].someItems(kLargestFamily, "word"))
        index.words.append(word.text());
    index.count = std::max(1U, uint32_t(index.words.size()));
    return index;
}

// Replaces {letter} and {letter:digits}.
QString fillIn(QString name, Index const& index, uint32_t value) {
    QString const plain = QLatin1Char('{') + index.letter + QLatin1Char('}');
    name.replace(plain, index.words.isEmpty() ? QString::number(value) : index.words.value(int(value)));
    for (int digits = 2; digits <= 4; ++digits) {
        QString const padded = QStringLiteral("{%1:%2}").arg(index.letter).arg(digits);
        name.replace(padded, QStringLiteral("%1").arg(value, digits, 10, QLatin1Char('0')));
    }
    return name;
}

// The name of a family's member; `running` counts the members with the last index fastest.
QString memberName(QString name, std::vector<Index> const& indices, uint32_t running) {
    for (auto index = indices.rbegin(); index != indices.rend(); ++index) {
        name = fillIn(name, *index, index->first + running % index->count);
        running /= index->count;
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

std::vector<Bitfield> readBitfields(JsonPlace const& place, uint32_t dataWidth) {
    std::vector<Bitfield> bitfields;
    if (!place.has("bitfields"))
        return bitfields;
    JsonPlace const object = place["bitfields"];
    uint32_t const widest = dataWidth >= 32 ? 0xFFFFFFFF : (1U << dataWidth) - 1;
    for (QString const& name : object.object().keys())
        bitfields.push_back({name.toLatin1(), object[name.toUtf8().constData()].integer(1, widest)});
    return bitfields;
}

uint32_t dataTypeOfWidth(uint32_t bits) { return bits <= 8 ? 0 : bits <= 16 ? 2 : 4; }

RegisterDefinition readCommonPart(JsonPlace const& place, uint32_t addressWidth) {
    RegisterDefinition reg;
    vy_RegisterDescription& told = reg.description;
    told.addressSpace = place.integerOr(0, "addressSpace", 0, 31);
    bool const isFirmware = told.addressSpace == kFirmwareSpace;
    told.id = place.integerOr(0, "id", 0, isFirmware ? kLargestFirmwareId : 0xFFFF);
    told.address = place["address"].integer(0, isFirmware ? kLargestFirmwareAddress : 0xFFFFFFFF);
    told.addressWidth = place.integerOr(addressWidth, "addressWidth", 8, 32);
    told.dataWidth = place.integerOr(16, "dataWidth", 1, 32);
    told.dataType = place.integerOr(dataTypeOfWidth(told.dataWidth), "dataType", 0, 5);
    reg.bitfields = readBitfields(place, told.dataWidth);
    return reg;
}

void appendFamily(JsonPlace const& place, uint32_t addressWidth, std::vector<RegisterDefinition>& registers) {
    RegisterDefinition reg = readCommonPart(place, addressWidth);
    QString const name = place["name"].text();
    std::vector<Index> indices;
    uint64_t count = 1;
    if (place.has("indices"))
        for (JsonPlace const& item : place["indices"].items()) {
            indices.push_back(readIndex(item));
            count = std::min<uint64_t>(count * indices.back().count, kLargestFamily);
        }
    uint32_t const stride = indices.empty() ? 0 : place["stride"].integer(1, 0xFFFF);
    std::vector<uint32_t> const resets = readResets(place);
    for (uint32_t i = 0; i < count; ++i) {
        reg.name = memberName(name, indices, i).toLatin1();
        reg.reset = resets[std::min<size_t>(i, resets.size() - 1)];
        registers.push_back(reg);
        reg.description.address += stride;
    }
}
} // namespace

std::vector<RegisterDefinition> readRegisters(JsonPlace const& place, uint32_t addressWidth) {
    std::vector<RegisterDefinition> registers;
    QSet<QString> taken; // names and places
    auto const take = [&](QString const& what) {
        bool const isFree = !taken.contains(what);
        taken.insert(what);
        return isFree;
    };
    for (QString const& group : place.object().keys())
        for (JsonPlace const& item : place[group.toUtf8().constData()].items()) {
            size_t const before = registers.size();
            if (before > kMostRegisters) {
                item.fail(QStringLiteral("no more than %1 registers are read").arg(kMostRegisters));
                return registers;
            }
            appendFamily(item, addressWidth, registers);
            for (size_t i = before; i < registers.size(); ++i) {
                vy_RegisterDescription const& told = registers[i].description;
                QString const name = QString::fromLatin1(registers[i].name);
                if (!take(name))
                    item.fail(QStringLiteral("the register \"%1\" is there twice").arg(name));
                if (!take(QStringLiteral("%1/%2/%3").arg(told.addressSpace).arg(told.id).arg(told.address)))
                    item.fail(QStringLiteral("another register lies at the address of \"%1\"").arg(name));
            }
        }
    return registers;
}
} // namespace simulator
