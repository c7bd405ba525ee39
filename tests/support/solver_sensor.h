#pragma once

#include "published/shadefit.h"

#include <QByteArray>
#include <QStringList>
#include <memory>
#include <vector>

/// A sensor as the tests know it, told to the library as a layout block.
struct TestSensor {
    int width = 640;
    int height = 360;
    char const* input = "bayer";
    int sampleBytes = 2;
    int blackLevel = 168;
    int whiteLevel = 4095;
    std::vector<int> bankSlots{0};
    bool tablesHaveOrigins = false; ///< of their own
    bool tablesHaveTemperatures = true;

    [[nodiscard]] QByteArray layout() const;
};

/// Registers of the sensor's banks: planes in the order greenRed, red, blue, greenBlue.
constexpr uint32_t kOriginColumn = 0x3782;
constexpr uint32_t kOriginRow = 0x3784;
constexpr uint32_t planeAddress(uint32_t slot, uint32_t plane) {
    return 0x3600 + slot * 0x400 + plane * 0x40;
}
constexpr uint32_t originColumnAddress(uint32_t slot) { return 0x3702 + slot * 0x400; }
constexpr uint32_t originRowAddress(uint32_t slot) { return 0x3704 + slot * 0x400; }
constexpr uint32_t temperatureAddress(uint32_t slot) { return 0x3700 + slot * 0x400; }

struct HandleDestroyer {
    void operator()(sf_Handle* handle) const { sf_Destroy(handle); }
};
using Handle = std::unique_ptr<sf_Handle, HandleDestroyer>;

[[nodiscard]] Handle open(TestSensor const& sensor);

/// Hands a tightly packed frame over; false = refused.
[[nodiscard]] bool setImage(Handle const& handle, TestSensor const& sensor, QByteArray const& frame,
                            uint32_t bayerPhase = 0, uint32_t orientation = 0);
[[nodiscard]] int findSolution(Handle const& handle, uint32_t falloffPercent = 100, uint32_t radius = 0);
[[nodiscard]] sf_ApgaParams tableParams(uint32_t slot, uint32_t colourTemperature);
[[nodiscard]] std::vector<sf_RegEntry> registers(Handle const& handle);

/// Keeps the warnings that come while it lives.
class WarningLog {
public:
    WarningLog();
    ~WarningLog();
    [[nodiscard]] bool has(char const* text) const;
    [[nodiscard]] QByteArray all() const;
};
