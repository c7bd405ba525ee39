#include "tests/support/solver_sensor.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtDebug>
#include <cstring>

namespace {
QStringList g_warnings;
QtMessageHandler g_formerHandler = nullptr;

QJsonObject place(uint32_t address) { return {{"id", 0}, {"address", static_cast<double>(address)}}; }

QJsonObject bank(TestSensor const& sensor, int slot) {
    char const* const names[] = {"greenRed", "red", "blue", "greenBlue"};
    QJsonObject planes;
    for (uint32_t i = 0; i < 4; ++i) {
        QJsonObject plane = place(planeAddress(static_cast<uint32_t>(slot), i));
        plane["stride"] = 2;
        planes[names[i]] = plane;
    }
    QJsonObject result{{"slot", slot}, {"planes", planes}};
    if (slot != 0 && sensor.tablesHaveOrigins) {
        result["originColumn"] = place(originColumnAddress(static_cast<uint32_t>(slot)));
        result["originRow"] = place(originRowAddress(static_cast<uint32_t>(slot)));
    }
    if (slot != 0 && sensor.tablesHaveTemperatures)
        result["colourTemperature"] = place(temperatureAddress(static_cast<uint32_t>(slot)));
    return result;
}
} // namespace

QByteArray TestSensor::layout() const {
    QJsonArray banks;
    for (int const slot : bankSlots)
        banks.append(bank(*this, slot));
    QJsonObject const correction{
        {"originColumn", place(kOriginColumn)}, {"originRow", place(kOriginRow)}, {"banks", banks}};
    QJsonObject const layout{{"kind", 50},
                             {"variant", 1},
                             {"width", width},
                             {"height", height},
                             {"input", input},
                             {"sampleBytes", sampleBytes},
                             {"blackLevel", blackLevel},
                             {"whiteLevel", whiteLevel},
                             {"correction", correction}};
    return "sensor-layout-1\n" + QJsonDocument(layout).toJson();
}

Handle open(TestSensor const& sensor) {
    return Handle(sf_Create2(sensor.layout().constData(), 50, 1, 0xFFFFFFFF));
}

bool setImage(Handle const& handle, TestSensor const& sensor, QByteArray const& frame, uint32_t bayerPhase,
              uint32_t orientation) {
    auto const width = uint32_t(sensor.width), height = uint32_t(sensor.height);
    sf_YcbcrInput const coding{sizeof coding, 0, {0, 1, 2, 3}, 0, 255, 255, 128, orientation};
    return (std::strcmp(sensor.input, "ycbcr") == 0
                ? sf_SetInputImageYcbcr(handle.get(), frame.constData(), width, height, &coding, -1, -1)
                : sf_SetInputImage2(handle.get(), frame.constData(), width, height, 12, bayerPhase,
                                    orientation, 0, -1, -1)) != 0;
}

int findSolution(Handle const& handle, uint32_t falloffPercent, uint32_t radius) {
    sf_SolutionParams params{};
    params.size = sizeof params;
    params.falloffPercent = falloffPercent;
    params.radius = radius;
    return sf_FindSolution(handle.get(), &params);
}

sf_ApgaParams tableParams(uint32_t slot, uint32_t colourTemperature) {
    sf_ApgaParams params{};
    params.size = sizeof params;
    params.falloffPercent = 100;
    params.colourTemperature = colourTemperature;
    params.illuminantSlot = slot;
    return params;
}

std::vector<sf_RegEntry> registers(Handle const& handle) {
    sf_RegList const* const list = sf_DumpRegList(handle.get());
    if (list == nullptr)
        return {};
    return {list->entries, list->entries + list->count};
}

WarningLog::WarningLog() {
    g_warnings.clear();
    g_formerHandler = qInstallMessageHandler(
        [](QtMsgType, QMessageLogContext const&, QString const& text) { g_warnings.append(text); });
}

WarningLog::~WarningLog() { qInstallMessageHandler(g_formerHandler); }

bool WarningLog::has(char const* text) const {
    return all().startsWith("shadefit: ") && all().contains(text);
}

QByteArray WarningLog::all() const { return g_warnings.join('\n').toLocal8Bit(); }
