#pragma once

#include "published/shadefit.h"

#include <QByteArray>
#include <QStringList>
#include <functional>
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
    std::vector<uint32_t> bankSlots{0};
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
    WarningLog()
        : m_former(qInstallMessageHandler(
              [](QtMsgType, QMessageLogContext const&, QString const& text) { warnings += text; })) {
        warnings.clear();
    }
    ~WarningLog() { qInstallMessageHandler(m_former); }
    [[nodiscard]] bool has(char const* text) const {
        return all().startsWith("shadefit: ") && all().contains(text);
    }
    [[nodiscard]] QByteArray all() const { return warnings.join('\n').toLocal8Bit(); }

private:
    inline static QStringList warnings;
    QtMessageHandler m_former;
};

/// Planes of a response. The green of the rows with blue is one of its own; only Bayer frames hold it.
enum Colour { kColourRed, kColourGreen, kColourBlue, kColourGreenBlue };

/// Light that reaches a plane at a position of the array in pixels, relative to an ideal lens.
using Response = std::function<double(Colour, double x, double y)>;

/// A lens with its sensor's colour shading.
struct SyntheticLens {
    enum class Shape { CosineFourth, RadialPolynomial };

    Shape shape = Shape::CosineFourth;
    double peakGain = 2.5; ///< what the darkest corner's green needs
    double spread = 0.2;   ///< how far R/G changes over the field
    double offsetX = 0;    ///< of the lens's centre, in half-widths
    double offsetY = 0;

    [[nodiscard]] Response response(TestSensor const& sensor) const;
};

/// How a frame is taken.
struct Exposure {
    double level = 0.8;       ///< of the centre's green, 1 = saturation
    double noise = 0.005;     ///< standard deviation at saturation
    unsigned bayerPhase = 0;  ///< of the delivered picture
    unsigned orientation = 0; ///< bit 0: mirrored, bit 1: upside down
    double deviantPixels = 0; ///< share of pixels that are dead or hot
};

/// A frame as the sensor delivers it: Bayer samples, B G R x or Y Cb Y Cr (full range).
[[nodiscard]] QByteArray expose(TestSensor const& sensor, Response const& response,
                                Exposure const& exposure = {});
