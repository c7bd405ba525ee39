#include "simulator/camera/profile_registers.h"

#include <QSet>
#include <QStringList>
#include <algorithm>

namespace simulator {
namespace {
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

Index readWords(JsonPlace const& place) {
    Index index{.letter = place["letter"].text(), .words = {}};
    for (JsonPlace const& word : place["words"].items())
        index.words.append(word.text());
    if (index.words.isEmpty())
        place["words"].fail(QStringLiteral("at least one word is needed"));
    index.count = std::max(1U, uint32_t(index.words.size()));
    return index;
}

std::vector<Index> readIndices(JsonPlace const& place) {
    std::vector<Index> indices;
    if (!place.has("indices"))
        return indices;
    for (JsonPlace const& item : place["indices"].items())
        indices.push_back(item.has("words") ? readWords(item)
                                            : Index{item["letter"].text(),
                                                    item.has("first") ? item["first"].integer() : 0,
                                                    item["count"].integer(1, kLargestFamily),
                                                    {}});
    return indices;
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
    std::vector<uint32_t> resets;
    if (!place.has("reset"))
        return {0};
    if (!place["reset"].isArray())
        return {place["reset"].integer()};
    for (JsonPlace const& item : place["reset"].items())
        resets.push_back(item.integer());
    if (resets.empty())
        place["reset"].fail(QStringLiteral("at least one value is needed"));
    return resets.empty() ? std::vector<uint32_t>{0} : resets;
}

std::vector<Bitfield> readBitfields(JsonPlace const& place, uint32_t dataWidth) {
    std::vector<Bitfield> bitfields;
    if (!place.has("bitfields"))
        return bitfields;
    JsonPlace const object = place["bitfields"];
    uint32_t const widest = dataWidth >= 32 ? 0xFFFFFFFF : (1U << dataWidth) - 1;
    for (QString const& name : object.keys())
        bitfields.push_back({name.toLatin1(), object[name.toUtf8().constData()].integer(1, widest)});
    return bitfields;
}

RegisterDefinition readCommonPart(JsonPlace const& place, uint32_t addressWidth) {
    RegisterDefinition reg;
    reg.addressSpace = place.has("addressSpace") ? place["addressSpace"].integer(0, 31) : 0;
    bool const isFirmware = reg.addressSpace == kFirmwareSpace;
    reg.id = place.has("id") ? place["id"].integer(0, isFirmware ? kLargestFirmwareId : 0xFFFF) : 0;
    reg.address = place["address"].integer(0, isFirmware ? kLargestFirmwareAddress : 0xFFFFFFFF);
    reg.addressWidth = place.has("addressWidth") ? place["addressWidth"].integer(8, 32) : addressWidth;
    reg.dataWidth = place.has("dataWidth") ? place["dataWidth"].integer(1, 32) : 16;
    reg.dataType = place.has("dataType") ? place["dataType"].integer(0, 5) : dataTypeOfWidth(reg.dataWidth);
    reg.bitfields = readBitfields(place, reg.dataWidth);
    return reg;
}

void appendFamily(JsonPlace const& place, uint32_t addressWidth, std::vector<RegisterDefinition>& registers) {
    RegisterDefinition reg = readCommonPart(place, addressWidth);
    QString const name = place["name"].text();
    std::vector<Index> const indices = readIndices(place);
    uint32_t const stride = indices.empty() ? 0 : place["stride"].integer(1, 0xFFFF);
    std::vector<uint32_t> const resets = readResets(place);
    uint64_t count = 1;
    for (Index const& index : indices)
        count = std::min<uint64_t>(count * index.count, kLargestFamily);
    uint32_t const firstAddress = reg.address;
    for (uint32_t i = 0; i < count; ++i) {
        reg.name = memberName(name, indices, i).toLatin1();
        reg.address = firstAddress + i * stride;
        reg.reset = resets[std::min<size_t>(i, resets.size() - 1)];
        registers.push_back(reg);
    }
}
} // namespace

std::vector<RegisterDefinition> readRegisters(JsonPlace const& place, uint32_t addressWidth) {
    std::vector<RegisterDefinition> registers;
    QSet<QByteArray> names;
    QSet<QString> places;
    for (QString const& group : place.keys()) {
        for (JsonPlace const& item : place[group.toUtf8().constData()].items()) {
            size_t const before = registers.size();
            if (before > kMostRegisters) {
                item.fail(QStringLiteral("no more than %1 registers are read").arg(kMostRegisters));
                return registers;
            }
            appendFamily(item, addressWidth, registers);
            for (size_t i = before; i < registers.size(); ++i) {
                RegisterDefinition const& reg = registers[i];
                QString const name = QString::fromLatin1(reg.name);
                QString const where =
                    QStringLiteral("%1/%2/%3").arg(reg.addressSpace).arg(reg.id).arg(reg.address);
                if (names.contains(reg.name))
                    item.fail(QStringLiteral("the register \"%1\" is there twice").arg(name));
                if (places.contains(where))
                    item.fail(QStringLiteral("another register lies at the address of \"%1\"").arg(name));
                names.insert(reg.name);
                places.insert(where);
            }
        }
    }
    return registers;
}
} // namespace simulator
