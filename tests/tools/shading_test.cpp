#include "simulator/files/whole_file.h"
#include "tests/support/small_profile.h"
#include "tools/shading/camera_measurement.h"
#include "tools/shading/command_line.h"
#include "tools/shading/picture_means.h"

#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <tiffio.h>

namespace shading {
namespace {
using simulator::MeasuredShading;
using simulator::SimulatedCamera;

constexpr char kQuiet[] = R"(, "readOut": {"electronsPerCount": 25})";
constexpr char kFlatLens[] = R"(, "optics": {"lens": {"cornerAngle": 0, "vignetting": [0, 0, 0]}})";

// A camera with files of its own beside its profile.
struct SmallCamera {
    explicit SmallCamera(char const* base, QByteArray const& more = {})
        : camera(SimulatedCamera::open(writeSmallProfile(folder.path(), base, kNoEeprom + more), &error)) {
        EXPECT_TRUE(camera) << qPrintable(error);
    }
    // The light's cells of many frames, against noise, without which the steps of 8-bit samples would count.
    [[nodiscard]] Cells cells(double kelvin) const {
        camera->setLight({.colourTemperature = kelvin});
        Cells sums;
        for (int frame = 0; frame < 64; ++frame) {
            Cells const cells = pictara::measureBlocks(camera->grab(), camera->description(), {}).means;
            sums.resize(cells.size());
            for (size_t k = 0; k < 3 * cells.size(); ++k)
                sums[k / 3][k % 3] += cells[k / 3][k % 3];
        }
        return sums;
    }

    QTemporaryDir const folder;
    QString error;
    std::unique_ptr<SimulatedCamera> const camera;
};

// Where a plane's light, against its mean, differs most between two cameras; a share of 1.
double largestDifference(SmallCamera const& first, SmallCamera const& second, double kelvin) {
    auto const a = first.cells(kelvin), b = second.cells(kelvin);
    double largest = 0;
    for (size_t colour = 0; colour < 3; ++colour) {
        double meanA = 0, meanB = 0;
        for (size_t i = 0; i < a.size(); ++i) {
            meanA += a[i][colour];
            meanB += b[i][colour];
        }
        for (size_t i = 0; i < a.size(); ++i)
            largest = std::max(largest, std::abs(a[i][colour] / meanA / (b[i][colour] / meanB) - 1));
    }
    return largest;
}

// A lens that was measured and put before a camera whose own lens is flat shades it as the original does,
// also between the lights at which it was measured. A YCbCr picture shows each colour half a pixel away,
// which counts where the lens is steep and the picture small.
TEST(MeasureShading, AMeasuredLensShadesAsTheOriginal) {
    struct {
        char const* base;
        char const* noise;
        double bound;
    } const rows[] = {
        {"polynomial", kQuiet, 0.003}, {"polynomial-rotated", kQuiet, 0.003}, {"ycbcr", "", 0.008}};
    for (auto const& [base, noise, bound] : rows) {
        SCOPED_TRACE(base);
        SmallCamera const original(base, noise), flat(base, QByteArray(noise) + kFlatLens);
        QString error;
        auto const table = measureShading(*original.camera, {2856, 4000, 6500}, &error);
        ASSERT_TRUE(table) << qPrintable(error);
        QString const file = original.folder.filePath("lens.json");
        ASSERT_TRUE(TableFile{file}.write(*table, &error)) << qPrintable(error);
        EXPECT_GT(largestDifference(original, flat, 4000), 0.1) << "the lens is flat before";
        ASSERT_TRUE(flat.camera->useMeasuredShading(file, &error)) << qPrintable(error);
        for (double const kelvin : {2856.0, 4000.0, 5000.0, 6500.0})
            EXPECT_LT(largestDifference(original, flat, kelvin), bound) << kelvin << " K";
    }
}

Outcome shade(QStringList const& arguments) { return runCommandLine(QStringList("shading") + arguments); }

QJsonObject figuresOf(Outcome const& outcome) {
    return QJsonDocument::fromJson(outcome.output.toUtf8()).object();
}

void expectDone(Outcome const& outcome) {
    EXPECT_EQ(outcome.exitCode, kDone) << qPrintable(outcome.complaint);
}

// The second lens, of a table that is put before the sensor, needs less gain than the first one.
TEST(ShadingProgram, MeasuresALensAndLaysTwoSideBySide) {
    TestFiles const files;
    QString const first = files.path("a & b.json"), second = files.path("b.json"),
                  page = files.path("page.html");
    QString const flat =
        files.write("flat.json", R"({"format": "shading-gains-1", "name": "flat", "columns": 2, "rows": 2,
        "illuminants": [{"colour_temperature_K": 4000,
            "red": [1, 1, 1, 1], "green": [1, 1, 1, 1], "blue": [1, 1, 1, 1]}]})");
    QStringList const measure{"measure", "--sensor", files.smallProfile(), "-o"};
    expectDone(shade(measure + QStringList(first)));
    expectDone(shade(measure + QStringList{second, "--shading", flat, "--light", "4000"}));
    Outcome const compared = shade({"compare", first, second, "--json", "--page", page});
    expectDone(compared);

    QString error;
    EXPECT_TRUE(files::read(page, files::kMostText, &error)->contains("a &amp; b.json"));
    QJsonArray const planes = figuresOf(compared)["planes"].toArray();
    ASSERT_EQ(planes.size(), 9);
    for (int plane = 3; plane < 6; ++plane) {
        EXPECT_EQ(planes[plane]["colour_temperature_K"].toInt(), 4000);
        EXPECT_NEAR(planes[plane]["second_largest_gain"].toDouble(), 1, 0.01);
        EXPECT_LT(planes[plane]["largest_difference_percent"].toDouble(), -20);
    }
}
} // namespace
} // namespace shading
