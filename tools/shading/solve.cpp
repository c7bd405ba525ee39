#include "tools/shading/solve.h"

#include "common/sensor_kinds.h"
#include "published/shadefit.h"
#include "simulator/camera/optics.h"
#include "simulator/pictures/colour_pipeline.h"
#include "tools/shading/command_line.h"
#include "tools/shading/correction.h"
#include "tools/shading/rate.h"

#include <QFile>
#include <QJsonArray>
#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

namespace shading {
namespace {
using pictara::Certificate;
using simulator::kBaseSlot;
using simulator::LensRows;
using simulator::MeasuredShading;
using simulator::Plane;
using simulator::SensorArray;
using simulator::SensorLayout;

constexpr std::array kFalloffs = {50, 60, 70, 80, 90, 100};
constexpr double kBrightest = 0.7;     // of full scale, in the field that is solved
constexpr double kMiddle = 0.5;        // of full scale, where what is left is looked at
constexpr double kLuminanceLimit = 10; // percent off the target, as of a calibration
constexpr uint32_t kLook = 512; // pixels along, where what is left is looked at; finer than a lens changes

/// A lamp, and the slot of the table that is made for it.
struct Lamp {
    uint32_t slot;
    double kelvin;
};

constexpr Plane kPlanes[] = {Plane::GreenRed, Plane::Red, Plane::Blue, Plane::GreenBlue};

uint32_t chromaSpanOf(SensorLayout const& layout) { return layout.whiteLevel >= 255 ? 255 : 224; }

// Where samples are rounded down, the fractions of an even sequence (Roberts 2018) keep the means exact.
double fraction(uint32_t x, uint32_t y) {
    double const along = 0.7548776662466927 * x + 0.5698402909980532 * y;
    return along - std::floor(along);
}

/// A frame without noise as the sensor delivers it: Bayer samples, B G R x, or Y Cb Y Cr whose components are
/// linear in light (ITU-R BT.601). `level` is the light where the lens dims nothing, 1 = the white level.
QByteArray flatField(SensorLayout const& layout, SensorArray const& array, LensRows const& lens,
                     double level) {
    using Input = SensorLayout::Input;
    double const span = layout.whiteLevel - layout.blackLevel, chromaSpan = chromaSpanOf(layout);
    size_t const samples = layout.input == Input::Rgb32 ? 4 : layout.input == Input::Ycbcr ? 2 : 1;
    QByteArray frame(int(array.pixels() * samples * layout.sampleBytes), '\0');
    char* next = frame.data();
    simulator::PerPlane<std::vector<float>> rows;
    rows.fill(std::vector<float>(array.width));
    for (uint32_t y = 0; y < array.height; ++y) {
        for (Plane const plane : kPlanes)
            lens(plane, array.arrayRow(y), rows[plane]);
        for (uint32_t x = 0; x < array.width; ++x) {
            uint32_t const column = array.arrayColumn(x);
            auto const put = [&](double counts) {
                uint32_t const most = layout.sampleBytes == 2 ? 0xFFFF : 0xFF;
                auto const sample =
                    uint32_t(std::clamp(std::floor(counts + fraction(x, y)), 0.0, double(most)));
                for (uint32_t byte = 0; byte < layout.sampleBytes; ++byte)
                    *next++ = char(sample >> 8 * byte & 0xFF);
            };
            auto const counts = [&](Plane plane) {
                return layout.blackLevel + span * level * double(rows[plane][column]);
            };
            double const red = counts(Plane::Red), green = counts(Plane::GreenRed),
                         blue = counts(Plane::Blue);
            double const luma = 0.299 * red + 0.587 * green + 0.114 * blue;
            if (layout.input == Input::Bayer) {
                put(counts(array.planeAt(column, array.arrayRow(y))));
            } else if (layout.input == Input::Rgb32) {
                for (double const sample : {blue, green, red, 0.0})
                    put(sample);
            } else {
                put(luma);
                put(128 + chromaSpan / span * (x % 2 == 0 ? (blue - luma) / 1.772 : (red - luma) / 1.402));
            }
        }
    }
    return frame;
}

// The last of what the calibration library says goes to its caller instead of the terminal.
class LibraryLog {
public:
    LibraryLog()
        : m_former(qInstallMessageHandler(
              [](QtMsgType, QMessageLogContext const&, QString const& text) { last = text; })) {}
    ~LibraryLog() { qInstallMessageHandler(m_former); }
    LibraryLog(LibraryLog const&) = delete;
    LibraryLog& operator=(LibraryLog const&) = delete;
    [[nodiscard]] static QString text() { return last.section(QStringLiteral(": "), 1); }

private:
    inline static QString last;
    QtMessageHandler m_former;
};

/// A calibration of the library, asked as the sensor's page of the dialog asks.
class Solver {
public:
    Solver(simulator::SimulatedCamera const& camera, SensorLayout const& layout)
        : m_kind(kestra::sensorKind(layout.kind, layout.variant)), m_camera(camera.description()),
          m_layout(layout), m_handle(sf_Create2(vy_SensorInfo(camera.handle())->sensorData, layout.kind,
                                                layout.variant, UINT32_MAX),
                                     sf_Destroy) {}

    [[nodiscard]] bool takesThreeLamps() const {
        return isAutomatic() || m_kind.page == kestra::DialogPage::AdaptivePga;
    }
    void take(Lamp const& lamp, QByteArray const& field) { m_fields.push_back({lamp, field}); }

    /// Of the fields taken, one or those of three lamps in their order. False after a cause in the log.
    [[nodiscard]] bool solve(uint32_t falloffPercent) {
        sf_SolutionParams base{};
        base.size = sizeof base;
        base.falloffPercent = falloffPercent;
        if (!isAutomatic() && !(give(m_fields.size() / 2) && sf_FindSolution(m_handle.get(), &base) == 0))
            return false;
        // The middle table last, as the dialog asks for them.
        for (size_t const i : takesThreeLamps() ? std::vector<size_t>{0, 2, 1} : std::vector<size_t>()) {
            sf_ApgaParams table{};
            table.size = sizeof table;
            table.falloffPercent = falloffPercent;
            table.colourTemperature = uint32_t(std::lround(m_fields[i].first.kelvin));
            table.illuminantSlot = m_fields[i].first.slot;
            if (!give(i) || (isAutomatic() ? sf_FindAutoPga : sf_FindApga)(m_handle.get(), &table) != 0)
                return false;
        }
        return true;
    }
    [[nodiscard]] RegisterValues registers() const {
        RegisterValues values;
        sf_RegList const* const list = sf_DumpRegList(m_handle.get());
        for (int32_t i = 0; list && i < list->count; ++i)
            values[{list->entries[i].first, list->entries[i].second}] = list->entries[i].third;
        return values;
    }
    /// The same.
    [[nodiscard]] bool save(QString const& file) const {
        return sf_DumpRegFile(m_handle.get(), QFile::encodeName(file).constData(),
                              takesThreeLamps() ? m_kind.resultFileFormat : 0, 0, 0) == 0;
    }

private:
    [[nodiscard]] bool isAutomatic() const { return m_kind.page == kestra::DialogPage::AutomaticPga; }

    [[nodiscard]] bool give(size_t field) {
        if (std::exchange(m_given, field) == field)
            return true; // the library keeps its last one
        auto const [width, height] = std::pair(m_camera.width, m_camera.height);
        char const* const frame = m_fields[field].second.constData();
        sf_YcbcrInput const coding{sizeof coding,
                                   0,
                                   {0, 1, 2, 3},
                                   uint32_t(m_layout.blackLevel),
                                   uint32_t(m_layout.whiteLevel),
                                   chromaSpanOf(m_layout),
                                   128,
                                   m_camera.orientation};
        return (m_layout.input == SensorLayout::Input::Ycbcr
                    ? sf_SetInputImageYcbcr(m_handle.get(), frame, width, height, &coding, -1, -1)
                    : sf_SetInputImage2(m_handle.get(), frame, width, height,
                                        m_layout.sampleBytes == 2 ? 12 : 8, m_camera.bayerPhase,
                                        m_camera.orientation, 0, -1, -1)) != 0;
    }

    kestra::SensorKind const& m_kind;
    simulator::CameraDescription const& m_camera;
    SensorLayout const& m_layout;
    std::unique_ptr<sf_Handle, decltype(&sf_Destroy)> m_handle;
    std::vector<std::pair<Lamp, QByteArray>> m_fields;
    size_t m_given = SIZE_MAX; ///< the field that the library has
};

// Those of the dialog's page: one, or three from a warm to a cool one.
std::vector<Lamp> lampsFor(MeasuredShading const& table, bool takesThree, std::optional<double> kelvin) {
    auto const& lights = table.illuminants;
    double const middle = lights[lights.size() / 2].temperature;
    if (!takesThree)
        return {{kBaseSlot, kelvin.value_or(middle)}};
    auto const [left, between, right] = simulator::kTableSlots;
    if (lights.size() < 3)
        return {{left, 2856}, {between, 4000}, {right, 6500}};
    return {{left, lights.front().temperature}, {between, middle}, {right, lights.back().temperature}};
}

/// What a lens and a sensor's gains, if any, leave of a flat field: green in the middle at half of full
/// scale, as a host exposes it, and as it lies on the array.
pictara::Evenness leftOf(MeasuredShading const& table, double kelvin, simulator::CameraDescription camera,
                         Gain const& gain) {
    camera.height = std::max(2U, kLook * camera.height / camera.width & ~1U);
    camera.width = kLook;
    camera.bayerPhase = camera.orientation = camera.unusableRows = 0;
    camera.rawType = simulator::FrameType::Raw12;
    camera.blackLevel = 0;
    camera.whiteLevel = 0xFFFF;
    SensorArray const array{.width = camera.width, .height = camera.height};
    SensorLayout const words{.sampleBytes = 2, .blackLevel = 0, .whiteLevel = camera.whiteLevel};
    LensRows const lens = measuredLens(table, array, kelvin);
    auto const corrected = [&](Plane plane, uint32_t y, std::span<float> row) {
        lens(plane, y, row);
        for (size_t x = 0; gain && x < row.size(); ++x)
            row[x] *= float(gain(plane, (double(x) + 0.5) / array.width, (y + 0.5) / array.height));
    };
    double const level = kMiddle / (gain ? gain(Plane::GreenRed, 0.5, 0.5) : 1);
    simulator::Frame const frame{camera.rawType, camera.width, int32_t(camera.height), 2 * camera.width,
                                 flatField(words, array, corrected, level)};
    pictara::ColourSettings settings = verificationSettings();
    settings.colourCorrection = true;
    QImage picture;
    pictara::ColourPipeline(camera).render(frame, settings, picture);
    pictara::Evenness left = evennessOf(picture, kUsualLimit);
    left.blocks = measureBlocks(frame, camera, settings);
    return left;
}

/// What a solution costs in the corners, for the plane and corner of the largest gain, and what it leaves.
constexpr char const* kPriceKeys[] = {"corner_gain",
                                      "corner_noise_dB",
                                      "left_colour_largest_ab",
                                      "left_colour_mean_ab",
                                      "left_luminance_largest_percent",
                                      "left_luminance_mean_percent"};
using Prices = std::array<double, std::size(kPriceKeys)>;

Prices pricesOf(pictara::Evenness const& left, Gain const& gain, double falloff) {
    auto const mean = [](std::vector<double> const& values) {
        double sum = 0;
        for (double const value : values)
            sum += std::abs(value);
        return sum / double(values.size());
    };
    double corner = 1;
    for (Plane const plane : kPlanes)
        for (double const x : {0.0, 1.0})
            for (double const y : {0.0, 1.0})
                corner = std::max(corner, gain(plane, x, y));
    auto const luminance = luminanceResidual(left.blocks, left.picture.size(), falloff);
    return {corner,
            20 * std::log10(corner),
            left.blocks.largestColourDeviation,
            mean(left.blocks.deviations),
            pictara::largestOf(luminance),
            mean(luminance)};
}

// The coefficients, five of a power of u in a row, and how near each is to the largest one.
void tellRegisters(simulator::SimulatedCamera const& camera, SensorLayout const& layout,
                   RegisterValues const& registers, Certificate& certificate) {
    pictara::Table table{"Registers, and % of the largest binary16",
                         {{"from", "v^0", "v^1", "v^2", "v^3", "v^4"}}};
    QJsonArray figures;
    for (SensorLayout::Bank const& bank : layout.banks)
        for (SensorLayout::Coefficients const& plane : bank.planes)
            for (uint32_t i = 0; i < simulator::kCoefficientCount; ++i) {
                auto const [id, address] = plane.place(i);
                auto const entry = registers.find({id, address});
                if (entry == registers.end())
                    continue;
                auto const* const found = vy_FindRegisterAddr(camera.handle(), address, 0, id);
                QString const name = QString::fromLatin1(found ? found->name : "-");
                double const number = coefficientOf(entry->second);
                double const share = 100 * std::abs(number) / kLargestCoefficient;
                if (i % simulator::kPolynomialTerms == 0)
                    table.rows.push_back({name});
                table.rows.back() << QString::asprintf("0x%04x %.1g", entry->second, share);
                figures.append(QJsonObject{{"name", name},
                                           {"value", int(entry->second)},
                                           {"number", number},
                                           {"share_of_limit_percent", share}});
            }
    certificate.tables.push_back(table);
    certificate.figures["registers"] = figures;
}

// One row and object for each falloff, that of the file marked.
void tellPrices(std::map<int, Prices> const& pricesAt, int falloffPercent, Certificate& certificate) {
    pictara::Table table{"What the falloff costs, and what is left",
                         {{"falloff, %", "corner gain", "noise there, dB", "largest a*b*", "mean a*b*",
                           "largest luminance, %", "mean luminance, %", "in the file"}}};
    QJsonArray figures;
    for (auto const& [falloff, prices] : pricesAt) {
        QStringList row{QString::number(falloff)};
        QJsonObject object{{"falloff_percent", falloff}};
        for (size_t i = 0; i < prices.size(); ++i) {
            row << QString::number(prices[i], 'f', 2);
            object[QLatin1String(kPriceKeys[i])] = pictara::rounded(prices[i]);
        }
        table.rows.push_back(row << (falloff == falloffPercent ? "yes" : ""));
        figures.append(object);
        if (falloff == falloffPercent)
            certificate.figures["solution"] = object;
    }
    certificate.tables.push_back(table);
    certificate.figures["falloffs"] = figures;
}
} // namespace

std::optional<Certificate> solveTable(SolveRequest const& request, int* exitCode, QString* error) {
    auto const table = simulator::readMeasuredShading(request.table, error);
    auto const camera = table ? simulator::SimulatedCamera::open(request.sensor, error) : nullptr;
    auto const layout = camera ? layoutOf(*camera, error) : std::nullopt;
    if (!layout)
        return std::nullopt;
    simulator::CameraDescription const& told = camera->description();
    Solver solver(*camera, *layout);
    if (solver.takesThreeLamps() && request.kelvin) {
        *error = QStringLiteral("%1: the sensor has a table for each of three lamps; --light is not for it")
                     .arg(request.sensor);
        return std::nullopt;
    }
    std::vector<Lamp> const lamps = lampsFor(*table, solver.takesThreeLamps(), request.kelvin);
    SensorArray const array{.width = told.width,
                            .height = told.height,
                            .bayerPhase = told.bayerPhase ^ told.orientation,
                            .orientation = told.orientation};
    for (Lamp const& lamp : lamps)
        solver.take(lamp, flatField(*layout, array, measuredLens(*table, array, lamp.kelvin), kBrightest));

    LibraryLog const log;
    Certificate certificate{"shading"};
    auto const left = [&](Lamp const& lamp, Gain const& gain) {
        return leftOf(*table, lamp.kelvin, told, gain);
    };
    // The one that is written is solved last, because the library writes its last one.
    std::map<int, Prices> pricesAt;
    std::vector<int> falloffs(kFalloffs.begin(), kFalloffs.end());
    falloffs.push_back(request.falloffPercent);
    pictara::EvennessStates worst;
    double worstKelvin = 0;
    for (size_t i = 0; i < falloffs.size(); ++i) {
        if (!solver.solve(uint32_t(falloffs[i]))) {
            *exitCode = kNothingFound;
            *error = request.table + QStringLiteral(": ") + LibraryLog::text();
            return std::nullopt;
        }
        auto gains = gainsIn(*layout, solver.registers());
        Prices& most = pricesAt[falloffs[i]] = {}; // of all lamps
        for (Lamp const& lamp : lamps) {
            pictara::Evenness const after = left(lamp, gains[lamp.slot]);
            Prices const prices = pricesOf(after, gains[lamp.slot], falloffs[i] / 100.0);
            std::transform(prices.begin(), prices.end(), most.begin(), most.begin(),
                           [](double one, double other) { return std::max(one, other); });
            if (i + 1 == falloffs.size() && (!worst.after || after.uniformity > worst.after->uniformity)) {
                worst = {left(lamp, {}), after};
                worstKelvin = lamp.kelvin;
            }
        }
    }
    if (!solver.save(request.output)) {
        *error = LibraryLog::text();
        return std::nullopt;
    }
    tellEvenness(worst, {request.falloffPercent / 100.0, kLuminanceLimit}, certificate);
    certificate.result = textOf(certificate.verdict);
    tellPrices(pricesAt, request.falloffPercent, certificate);
    QJsonArray lights;
    for (Lamp const& lamp : lamps)
        lights.append(lamp.kelvin);
    certificate.facts = {
        {"Lens", QStringLiteral("%1 (%2)").arg(table->name, request.table)},
        {"Sensor", told.profile},
        {"Lamp",
         QStringLiteral("%1 K%2").arg(worstKelvin).arg(lamps.size() > 1 ? ", the worst of three" : "")},
        {"Results file", request.output}};
    tellRegisters(*camera, *layout, solver.registers(), certificate);
    certificate.figures["lens"] = table->name;
    certificate.figures["sensor"] = told.profile;
    certificate.figures["lights_K"] = lights;
    certificate.figures["results_file"] = request.output;
    return certificate;
}
} // namespace shading
