#include "simulator/files/whole_file.h"
#include "simulator/pictures/block_report.h"
#include "tests/support/small_profile.h"
#include "tools/shading/shading_measurement.h"
#include "tools/shading/shading_run.h"

#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QtEndian>
#include <gtest/gtest.h>

namespace pictara {
namespace {
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
    [[nodiscard]] std::vector<Colour> cells(double kelvin) const {
        camera->setLight({.colourTemperature = kelvin});
        std::vector<Colour> sums;
        for (int frame = 0; frame < 64; ++frame) {
            std::vector<Colour> const cells = measureBlocks(camera->grab(), camera->description(), {}).means;
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
        auto const table = measureShading(
            *original.camera, {2856, 4000, 6500}, [](double) {}, &error);
        ASSERT_TRUE(table) << qPrintable(error);
        QString const file = original.folder.filePath("lens.json");
        ASSERT_TRUE(writeMeasuredShading(file, *table, &error)) << qPrintable(error);
        EXPECT_GT(largestDifference(original, flat, 4000), 0.1) << "the lens is flat before";
        ASSERT_TRUE(flat.camera->useMeasuredShading(file, &error)) << qPrintable(error);
        for (double const kelvin : {2856.0, 4000.0, 5000.0, 6500.0})
            EXPECT_LT(largestDifference(original, flat, kelvin), bound) << kelvin << " K";
    }
}

// The second lens, of a table that is put before the sensor, needs less gain than the first one.
TEST(ShadingRun, MeasuresALensAndLaysTwoSideBySide) {
    QTemporaryDir const folder;
    QString const flat = folder.filePath("flat.json"), first = folder.filePath("a & b.json"),
                  second = folder.filePath("b.json");
    ASSERT_TRUE(files::replace(flat, R"({"format": "shading-gains-1", "name": "flat", "columns": 2, "rows": 2,
        "illuminants": [{"colour_temperature_K": 4000,
            "red": [1, 1, 1, 1], "green": [1, 1, 1, 1], "blue": [1, 1, 1, 1]}]})",
                               nullptr));
    Options options;
    options.outputFolder = folder.path();
    options.profile = writeSmallProfile(folder.path());
    options.measureShadingFile = first;
    EXPECT_EQ(runShading(options), kExitDone);
    options.measureShadingFile = second;
    options.shadingFile = flat;
    options.lightKelvin = 4000;
    EXPECT_EQ(runShading(options), kExitDone);
    options.measureShadingFile.clear();
    options.comparedFiles = QStringList{first, second};
    EXPECT_EQ(runShading(options), kExitDone);

    QFile page(folder.filePath("shading-certificate.html")), summary(folder.filePath("shading-summary.json"));
    ASSERT_TRUE(page.open(QIODevice::ReadOnly) && summary.open(QIODevice::ReadOnly));
    EXPECT_TRUE(page.readAll().contains("a &amp; b.json"));
    QJsonArray const planes = QJsonDocument::fromJson(summary.readAll())["planes"].toArray();
    ASSERT_EQ(planes.size(), 9);
    for (int plane = 3; plane < 6; ++plane) {
        EXPECT_EQ(planes[plane]["colour_temperature_K"].toInt(), 4000);
        EXPECT_NEAR(planes[plane]["second_largest_gain"].toDouble(), 1, 0.01);
        EXPECT_LT(planes[plane]["largest_difference_percent"].toDouble(), -20);
    }
}

// Frames of the camera as somebody may have kept them.
struct Recording : testing::Test, SmallCamera {
    Recording() : SmallCamera("polynomial") {}
    [[nodiscard]] QString write(char const* name, QByteArray const& bytes) const {
        EXPECT_TRUE(files::replace(folder.filePath(name), bytes, nullptr));
        return folder.filePath(name);
    }
    [[nodiscard]] QString writePng(char const* name, int factor) const {
        QImage picture(int(frame.width), frame.height, QImage::Format_Grayscale16);
        for (int y = 0; y < frame.height; ++y)
            for (int x = 0; x < picture.width(); ++x)
                reinterpret_cast<quint16*>(picture.scanLine(y))[x] =
                    quint16(factor * qFromLittleEndian<quint16>(frame.pixels.constData() +
                                                                y * int(frame.pitch) + 2 * x));
        EXPECT_TRUE(picture.save(folder.filePath(name)));
        return folder.filePath(name);
    }
    [[nodiscard]] auto measure(QString const& file) {
        return measureRecordedShading(file, camera->description(), 5000, &error);
    }

    simulator::Frame const frame = camera->grab();
};

TEST_F(Recording, OfAFlatFieldShowsTheLensThatTheCameraHas) {
    auto const live = measureShading(
        *camera, {5000}, [](double) {}, &error);
    ASSERT_TRUE(live) << qPrintable(error);
    for (QString const& file : {writePng("flat.png", 1), write("flat.raw", frame.pixels)}) {
        auto const recorded = measure(file);
        ASSERT_TRUE(recorded) << qPrintable(error);
        ASSERT_EQ(recorded->columns, live->columns);
        for (size_t colour = 0; colour < 3; ++colour) {
            auto const &found = recorded->illuminants[0].gains[colour],
                       &expected = live->illuminants[0].gains[colour];
            for (size_t i = 0; i < expected.size(); ++i)
                ASSERT_NEAR(found[i] / expected[i], 1, 0.03) << colour << " at " << i;
        }
    }
}

TEST_F(Recording, ThatShowsNoFlatFieldIsRefusedWithItsCause) {
    QImage coloured(64, 64, QImage::Format_RGB32);
    coloured.fill(Qt::red);
    ASSERT_TRUE(coloured.save(folder.filePath("red.png")));
    std::pair<QString, char const*> const rows[] = {
        {write("cut.raw", frame.pixels.chopped(1)), "bytes"},
        {write("no.png", "PNG"), "no.png"},
        {folder.filePath("none.raw"), "none.raw"},
        {writePng("clipped.png", 8), "clipped"},
        {writePng("dark.png", 0), "dark"},
        {folder.filePath("red.png"), "greyscale"},
    };
    for (auto const& [file, told] : rows) {
        EXPECT_FALSE(measure(file));
        EXPECT_TRUE(error.contains(QLatin1String(told))) << qPrintable(error);
    }
}
} // namespace
} // namespace pictara
