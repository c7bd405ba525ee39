#include "common/sensor_kinds.h"
#include "published/shadefit.h"
#include "simulator/pictures/block_report.h"
#include "simulator/pictures/colour_pipeline.h"
#include "tools/shading/camera_measurement.h"
#include "tools/shading/commands.h"
#include "tools/shading/correction.h"

#include <Eigen/Core>
#include <QFile>
#include <QScopeGuard>
#include <algorithm>
#include <cmath>

namespace shading {
namespace {
using pictara::Certificate;
using pictara::Colour;
using simulator::CameraDescription;
using simulator::MeasuredShading;
using simulator::Plane;
using simulator::SensorLayout;

constexpr int kFalloffs[] = {50, 60, 70, 80, 90, 100};
constexpr double kMiddle = 0.5;  // of full scale, where what is left is looked at
constexpr uint32_t kAcross = 33; // places, one of them in the centre
constexpr size_t kNearest = 5;   // coefficients that are shown

/// A lamp, the slot of the table that is made for it, and the flat field that the camera shows.
struct Lamp {
    uint32_t slot;
    double kelvin;
    QByteArray field{};
};

/// What a solution costs in the corners, for the plane and corner of the largest gain, and what it leaves.
constexpr Column kPrices[] = {{"falloff_percent", "falloff, %"},
                              {"largest_gain", "largest gain", 2},
                              {"corner_gain", "corner gain", 2},
                              {"corner_noise_dB", "noise there, dB", 2},
                              {"left_colour_largest_ab", "largest a*b*", 2},
                              {"left_colour_mean_ab", "mean a*b*", 2},
                              {"left_luminance_largest_percent", "largest luminance, %", 2},
                              {"left_luminance_mean_percent", "mean luminance, %", 2},
                              {"in_the_file", "in the file"}};
constexpr Column kCoefficients[] = {
    {"name", "register"}, {"value", "value"}, {"share_of_limit_percent", "% of the limit", 4}};
using Figures = Eigen::Array<double, std::size(kPrices) - 2, 1>;

/// What the dialog's page for the sensor asks the library for.
struct Calibration {
    simulator::SimulatedCamera& camera;
    SensorLayout const& layout;
    kestra::SensorKind const& kind = kestra::sensorKind(layout.kind, layout.variant);
    bool isAutomatic = kind.page == kestra::DialogPage::AutomaticPga;
    bool takesThreeLamps = isAutomatic || kind.page == kestra::DialogPage::AdaptivePga;
    std::unique_ptr<sf_Handle, decltype(&sf_Destroy)> handle{
        sf_Create2(vy_SensorInfo(camera.handle())->sensorData, layout.kind, layout.variant, UINT32_MAX),
        sf_Destroy};

    [[nodiscard]] bool give(QByteArray const& field) const {
        CameraDescription const& told = camera.description();
        sf_YcbcrInput const coding{sizeof coding,
                                   0,
                                   {0, 1, 2, 3},
                                   uint32_t(layout.blackLevel),
                                   uint32_t(layout.whiteLevel),
                                   layout.whiteLevel >= 255 ? 255U : 224U,
                                   128,
                                   told.orientation};
        return (layout.input == SensorLayout::Input::Ycbcr
                    ? sf_SetInputImageYcbcr(handle.get(), field.constData(), told.width, told.height, &coding,
                                            -1, -1)
                    : sf_SetInputImage2(handle.get(), field.constData(), told.width, told.height,
                                        layout.sampleBytes == 2 ? 12 : 8, told.bayerPhase, told.orientation,
                                        0, -1, -1)) != 0;
    }

    /// Of one lamp or three. False after a cause in the log.
    [[nodiscard]] bool solve(std::vector<Lamp> const& lamps, int falloffPercent) const {
        sf_SolutionParams base{};
        base.size = sizeof base;
        base.falloffPercent = uint32_t(falloffPercent);
        if (!isAutomatic &&
            !(give(lamps[lamps.size() / 2].field) && sf_FindSolution(handle.get(), &base) == 0))
            return false;
        // The middle table last, as the dialog asks for them.
        for (size_t const i : takesThreeLamps ? std::vector<size_t>{0, 2, 1} : std::vector<size_t>()) {
            sf_ApgaParams table{};
            table.size = sizeof table;
            table.falloffPercent = uint32_t(falloffPercent);
            table.colourTemperature = uint32_t(std::lround(lamps[i].kelvin));
            table.illuminantSlot = lamps[i].slot;
            if (!give(lamps[i].field) ||
                (isAutomatic ? sf_FindAutoPga : sf_FindApga)(handle.get(), &table) != 0)
                return false;
        }
        return true;
    }
    [[nodiscard]] RegisterValues registers() const {
        RegisterValues values;
        sf_RegList const* const list = sf_DumpRegList(handle.get());
        for (int32_t i = 0; list && i < list->count; ++i)
            values[{list->entries[i].first, list->entries[i].second}] = list->entries[i].third;
        return values;
    }
};

// Those of the dialog's page: one, or three from a warm to a cool one.
std::vector<Lamp> lampsFor(MeasuredShading const& table, bool takesThree, std::optional<double> kelvin) {
    auto const& lights = table.illuminants;
    double const middle = lights[lights.size() / 2].temperature;
    if (!takesThree)
        return {{simulator::kBaseSlot, kelvin.value_or(middle)}};
    auto const [left, between, right] = simulator::kTableSlots;
    auto const [warm, neutral, cool] =
        lights.size() < 3 ? kStandardLights
                          : std::array{lights.front().temperature, middle, lights.back().temperature};
    return {{left, warm}, {between, neutral}, {right, cool}};
}

QByteArray flatField(simulator::SimulatedCamera& camera, double kelvin) {
    camera.setLight({.colourTemperature = kelvin});
    expose(camera);
    simulator::Frame const frame = camera.grab();
    if (!camera.description().calibratesFromRgb)
        return frame.pixels;
    QImage picture;
    pictara::ColourPipeline(camera.description()).render(frame, {}, picture);
    return {reinterpret_cast<char const*>(picture.constBits()), int(picture.sizeInBytes())};
}

// What a solution costs and leaves of a flat field that is grey in the centre, and the a*b* off grey, row by
// row.
std::pair<Figures, std::vector<double>> leftOf(MeasuredShading const& table, double kelvin,
                                               CameraDescription const& told, Gain const& gain,
                                               int falloffPercent) {
    constexpr Plane kColours[] = {Plane::Red, Plane::GreenRed, Plane::Blue};
    simulator::SensorArray const grid{.width = kAcross, .height = table.rows | 1};
    simulator::LensRows const lens = measuredLens(table, grid, kelvin);
    std::vector<Colour> cells(grid.pixels());
    std::vector<float> row(grid.width);
    double largest = 0;
    auto const along = [](uint32_t i, uint32_t count) { return (double(i) + 0.5) / count; };
    for (uint32_t y = 0; y < grid.height; ++y)
        for (size_t colour = 0; colour < 3; ++colour) {
            lens(kColours[colour], y, row);
            for (uint32_t x = 0; x < grid.width; ++x) {
                double const here = gain(kColours[colour], along(x, grid.width), along(y, grid.height));
                cells[y * grid.width + x][colour] = double(row[x]) * here;
                largest = std::max(largest, here);
            }
        }
    Eigen::ArrayXd colour(cells.size()), luminance(cells.size()); // percent off the target
    Colour const centre = cells[cells.size() / 2];
    for (uint32_t i = 0; i < cells.size(); ++i) {
        Colour shown{};
        for (size_t k = 0; k < 9; ++k)
            shown[k / 3] += told.colourMatrix[k] * kMiddle * cells[i][k % 3] / centre[k % 3];
        double const u = (along(i % kAcross, kAcross) - 0.5) * told.width;
        double const v = (along(i / kAcross, grid.height) - 0.5) * told.height;
        double const radius = 2 * std::hypot(u, v) / std::hypot(told.width, told.height);
        double const target = kMiddle * (1 - (1 - falloffPercent / 100.0) * radius * radius);
        auto const [a, b] = pictara::colourAxes(shown);
        colour(i) = std::hypot(a, b);
        luminance(i) = 100 * (pictara::luminance(shown) / target - 1);
    }
    double corner = 0;
    for (Plane const plane : {Plane::GreenRed, Plane::Red, Plane::Blue, Plane::GreenBlue})
        for (int k = 0; k < 4; ++k)
            corner = std::max(corner, gain(plane, k & 1, k >> 1));
    Figures figures;
    figures << std::max(largest, corner), corner, 20 * std::log10(corner), colour.maxCoeff(), colour.mean(),
        luminance.abs().maxCoeff(), luminance.abs().mean();
    return {figures, {colour.begin(), colour.end()}};
}

// The nearest to its limit first.
void tellRegisters(Calibration const& calibration, Certificate& certificate) {
    std::vector<QJsonArray> coefficients;
    RegisterValues const registers = calibration.registers();
    for (SensorLayout::Bank const& bank : calibration.layout.banks)
        for (SensorLayout::Coefficients const& plane : bank.planes)
            for (uint32_t i = 0; i < simulator::kCoefficientCount; ++i) {
                auto const [id, address] = plane.place(i);
                auto const entry = registers.find({id, address});
                auto const* const found = vy_FindRegisterAddr(calibration.camera.handle(), address, 0, id);
                if (entry != registers.end())
                    coefficients.push_back(
                        {found ? found->name : "-", QString::asprintf("0x%04x", entry->second),
                         100 * std::abs(coefficientOf(entry->second)) / kLargestCoefficient});
            }
    std::stable_sort(coefficients.begin(), coefficients.end(), [](QJsonArray const& a, QJsonArray const& b) {
        return a[2].toDouble() > b[2].toDouble();
    });
    tell(certificate, "registers",
         QStringLiteral("Of %1 coefficients, those nearest to the largest binary16").arg(coefficients.size()),
         kCoefficients, coefficients, kNearest);
}
} // namespace

std::optional<Certificate> solve(Request const& request, int* exitCode, QString* error) {
    QString const& file = request.files[0];
    auto const table = simulator::readMeasuredShading(file, error);
    auto const camera = table ? simulator::SimulatedCamera::open(request.sensor, error) : nullptr;
    auto const layout = camera ? layoutOf(*camera, error) : std::nullopt;
    if (!layout || !camera->useMeasuredShading(file, error))
        return std::nullopt;
    CameraDescription const& told = camera->description();
    Calibration const calibration{*camera, *layout};
    if (calibration.takesThreeLamps && request.kelvin)
        return fail(request.sensor, "the sensor has a table for each of three lamps; --light is not for it",
                    error);
    std::vector<Lamp> lamps = lampsFor(*table, calibration.takesThreeLamps, request.kelvin);
    QStringList lights;
    for (Lamp& lamp : lamps) {
        lamp.field = flatField(*camera, lamp.kelvin);
        lights << QString::number(lamp.kelvin) + QLatin1String(" K");
    }

    // The last of what the calibration library says, which tells why it fails.
    static QString logged;
    auto* const former = qInstallMessageHandler(
        [](QtMsgType, QMessageLogContext const&, QString const& text) { logged = text.section(": ", 1); });
    auto const restored = qScopeGuard([&] { qInstallMessageHandler(former); });

    Certificate certificate{{}, "solved"};
    std::vector<QJsonArray> prices;
    // The one that is written is solved last, because the library writes its last one.
    std::vector<int> falloffs(std::begin(kFalloffs), std::end(kFalloffs));
    std::erase(falloffs, request.falloff);
    falloffs.push_back(request.falloff);
    for (size_t i = 0; i < falloffs.size(); ++i) {
        bool const isWritten = i + 1 == falloffs.size();
        if (!calibration.solve(lamps, falloffs[i])) {
            *exitCode = kNothingFound;
            return fail(file, logged, error);
        }
        auto gains = gainsIn(*layout, calibration.registers());
        Figures most = Figures::Zero(); // of all lamps
        for (Lamp const& lamp : lamps) {
            auto const [figures, colour] = leftOf(*table, lamp.kelvin, told, gains[lamp.slot], falloffs[i]);
            most = most.max(figures);
            if (isWritten)
                certificate.maps.push_back({QStringLiteral("Colour left at %1 K, a*b*").arg(lamp.kelvin), "",
                                            kAcross, colour, 0, std::max(pictara::largestOf(colour), 0.01)});
        }
        prices.push_back({falloffs[i]});
        for (double const figure : most)
            prices.back().append(figure);
        prices.back().append(isWritten);
    }
    if (sf_DumpRegFile(calibration.handle.get(), QFile::encodeName(request.output).constData(),
                       calibration.takesThreeLamps ? calibration.kind.resultFileFormat : 0, 0, 0) != 0) {
        *error = logged;
        return std::nullopt;
    }
    std::sort(prices.begin(), prices.end(),
              [](QJsonArray const& a, QJsonArray const& b) { return a[0].toInt() < b[0].toInt(); });
    tell(certificate, "falloffs", "What the falloff costs, and what is left", kPrices, prices);
    certificate.facts = {{"Lens", QStringLiteral("%1 (%2)").arg(table->name, file)},
                         {"Sensor", told.profile},
                         {"Lamps", lights.join(", ")},
                         {"Results file", request.output}};
    tellRegisters(calibration, certificate);
    return certificate;
}
} // namespace shading
