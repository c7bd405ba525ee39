#include "simulator/solver/layout.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>
#include <algorithm>
#include <cmath>
#include <limits>

namespace solver {
namespace {
constexpr char kFirstLine[] = "sensor-layout-1\n";
constexpr int kSmallestSide = 48;     // pixels; below, there are fewer blocks than coefficients
constexpr int kLargestSide = 1 << 16; // pixels; the origin is a 16-bit register
constexpr uint32_t kLastCoefficient = 24;

struct PlaneName {
    char const* key;
    Plane plane;
};
constexpr PlaneName kPlaneNames[] = {
    {"greenRed", kGreenRed}, {"red", kRed}, {"blue", kBlue}, {"greenBlue", kGreenBlue}};

struct InputName {
    char const* text;
    Input input;
};
constexpr InputName kInputNames[] = {
    {"bayer", Input::Bayer}, {"ycbcr", Input::Ycbcr}, {"rgb32", Input::Rgb32}};

/// One object of the layout with its place in the document. The first fault found is kept for all.
class Node {
public:
    Node(QJsonObject object, QString place, QString* error)
        : m_object(std::move(object)), m_place(std::move(place)), m_error(error) {}

    Node object(char const* key) const {
        QJsonValue const value = m_object[QLatin1String(key)];
        if (!value.isObject())
            complain(key, "is not an object");
        return Node(value.toObject(), m_place + QLatin1String(key) + QLatin1Char('.'), m_error);
    }

    bool has(char const* key) const { return m_object.contains(QLatin1String(key)); }

    double number(char const* key, double low, double high) const {
        QJsonValue const value = m_object[QLatin1String(key)];
        double const result = value.toDouble(std::numeric_limits<double>::quiet_NaN());
        if (!(result >= low && result <= high)) {
            complain(key, "is missing or out of range");
            return low;
        }
        return result;
    }

    uint32_t whole(char const* key, double low = 0, double high = 0xFFFFFFFF) const {
        double const result = number(key, low, high);
        if (result != std::floor(result))
            complain(key, "is not a whole number");
        return static_cast<uint32_t>(result);
    }

    QString text(char const* key) const { return m_object[QLatin1String(key)].toString(); }

    QJsonArray array(char const* key) const {
        QJsonArray const result = m_object[QLatin1String(key)].toArray();
        if (result.isEmpty())
            complain(key, "is not an array with members");
        return result;
    }

    Node member(QJsonValue const& value, char const* key, int index) const {
        return Node(value.toObject(),
                    m_place + QLatin1String(key) + QLatin1Char('[') + QString::number(index) +
                        QLatin1String("]."),
                    m_error);
    }

    void complain(char const* key, char const* what) const {
        if (m_error->isEmpty())
            *m_error = m_place + QLatin1String(key) + QLatin1Char(' ') + QLatin1String(what);
    }

private:
    QJsonObject m_object;
    QString m_place;
    QString* m_error;
};

RegisterPlace readPlace(Node const& node) { return {node.whole("id"), node.whole("address")}; }

OriginRegisters readOrigin(Node const& node) {
    return {readPlace(node.object("originColumn")), readPlace(node.object("originRow"))};
}

PlaneRegisters readPlane(Node const& node) {
    PlaneRegisters plane{readPlace(node), node.whole("stride", 1)};
    if (plane.stride > (std::numeric_limits<uint32_t>::max() - plane.first.address) / kLastCoefficient)
        node.complain("stride", "leads beyond the last address");
    return plane;
}

BankRegisters readBank(Node const& node) {
    BankRegisters bank;
    bank.slot = node.whole("slot", 0, 4);
    if (bank.slot == 1)
        node.complain("slot", "is none of 0, 2, 3, 4");
    Node const planes = node.object("planes");
    for (PlaneName const& name : kPlaneNames)
        bank.planes[name.plane] = readPlane(planes.object(name.key));
    if (node.has("originColumn") || node.has("originRow"))
        bank.origin = readOrigin(node);
    if (node.has("colourTemperature"))
        bank.colourTemperature = readPlace(node.object("colourTemperature"));
    return bank;
}

std::vector<BankRegisters> readBanks(Node const& correction) {
    std::vector<BankRegisters> banks;
    for (QJsonValue const& value : correction.array("banks")) {
        Node const node = correction.member(value, "banks", static_cast<int>(banks.size()));
        BankRegisters const bank = readBank(node);
        if (std::any_of(banks.begin(), banks.end(),
                        [&](auto const& other) { return other.slot == bank.slot; }))
            node.complain("slot", "occurs twice");
        banks.push_back(bank);
    }
    return banks;
}

Input readInput(Node const& node) {
    QString const text = node.text("input");
    for (InputName const& name : kInputNames)
        if (text == QLatin1String(name.text))
            return name.input;
    node.complain("input", "is none of bayer, ycbcr, rgb32");
    return Input::Bayer;
}

SensorLayout readLayout(Node const& node) {
    SensorLayout layout;
    layout.kind = node.whole("kind");
    layout.variant = node.whole("variant");
    layout.array.width = static_cast<int>(node.whole("width", kSmallestSide, kLargestSide));
    layout.array.height = static_cast<int>(node.whole("height", kSmallestSide, kLargestSide));
    layout.input = readInput(node);
    layout.sampleBytes = static_cast<int>(node.whole("sampleBytes", 1, 2));
    if (layout.sampleBytes == 2 && layout.input != Input::Bayer)
        node.complain("sampleBytes", "is 2 although only Bayer samples can be that wide");
    layout.blackLevel = node.number("blackLevel", 0, 0xFFFF);
    layout.whiteLevel = node.number("whiteLevel", 1, layout.sampleBytes == 2 ? 0xFFFF : 0xFF);
    if (layout.whiteLevel <= layout.blackLevel)
        node.complain("whiteLevel", "is not above blackLevel");
    Node const correction = node.object("correction");
    layout.origin = readOrigin(correction);
    layout.banks = readBanks(correction);
    return layout;
}

bool startsLikeALayout(char const* bytes) {
    // Byte by byte, so that nothing beyond the first difference is touched.
    for (size_t i = 0; i + 1 < sizeof kFirstLine; ++i)
        if (bytes[i] != kFirstLine[i])
            return false;
    return true;
}
} // namespace

BankRegisters const* SensorLayout::bank(uint32_t slot) const {
    auto const found =
        std::find_if(banks.begin(), banks.end(), [&](auto const& entry) { return entry.slot == slot; });
    return found == banks.end() ? nullptr : &*found;
}

std::optional<SensorLayout> parseLayout(QByteArray const& text, QString* error) {
    error->clear();
    if (!text.startsWith(kFirstLine)) {
        *error = QStringLiteral("the first line is not sensor-layout-1");
        return std::nullopt;
    }
    QJsonParseError parseError;
    QJsonDocument const document =
        QJsonDocument::fromJson(text.mid(static_cast<int>(sizeof kFirstLine) - 1), &parseError);
    if (!document.isObject()) {
        *error = QStringLiteral("no JSON object: %1 at byte %2")
                     .arg(parseError.errorString())
                     .arg(parseError.offset);
        return std::nullopt;
    }
    SensorLayout const layout = readLayout(Node(document.object(), QString(), error));
    if (!error->isEmpty())
        return std::nullopt;
    return layout;
}

std::optional<SensorLayout> parseSensorData(void const* sensorData, QString* error) {
    auto const* const bytes = static_cast<char const*>(sensorData);
    if (bytes == nullptr) {
        *error = QStringLiteral("there is no sensor data");
        return std::nullopt;
    }
    if (!startsLikeALayout(bytes)) {
        *error = QStringLiteral("the first line is not sensor-layout-1");
        return std::nullopt;
    }
    return parseLayout(QByteArray(bytes), error);
}
} // namespace solver
