#include "simulator/pictures/block_report.h"
#include "tests/support/small_profile.h"
#include "tools/shading/shading_measurement.h"

#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace pictara {
namespace {
using simulator::SimulatedCamera;

constexpr char kFlatLens[] = R"(, "optics": {"lens": {"cornerAngle": 0, "vignetting": [0, 0, 0]}})";

std::unique_ptr<SimulatedCamera> openSmall(QString const& folder, char const* base,
                                           QByteArray const& more = {}) {
    QString error;
    auto camera = SimulatedCamera::open(writeSmallProfile(folder, base, kNoEeprom + more), &error);
    EXPECT_TRUE(camera) << qPrintable(error);
    return camera;
}

// Where a plane's light, against its mean, differs most between two cameras; a share of 1.
double largestDifference(SimulatedCamera& first, SimulatedCamera& second, double kelvin) {
    std::vector<std::vector<Colour>> grids;
    for (SimulatedCamera* const camera : {&first, &second}) {
        camera->setLight({.colourTemperature = kelvin});
        simulator::IdealFrame const ideal = camera->idealFrame();
        grids.push_back(measureBlocks(linearRows(ideal, camera->description(), {})).means);
    }
    double largest = 0;
    for (size_t colour = 0; colour < 3; ++colour) {
        double means[2]{};
        for (size_t i = 0; i < 2; ++i)
            for (Colour const& cell : grids[i])
                means[i] += cell[colour];
        for (size_t cell = 0; cell < grids[0].size(); ++cell) {
            double const ratio = (grids[0][cell][colour] / means[0]) / (grids[1][cell][colour] / means[1]);
            largest = std::max(largest, std::abs(ratio - 1));
        }
    }
    return largest;
}

// A lens that was measured and put before a camera whose own lens is flat shades it as the original does,
// also between the lights at which it was measured. A YCbCr picture shows each colour half a pixel away,
// which counts where the lens is steep and the picture small.
TEST(MeasureShading, AMeasuredLensShadesAsTheOriginal) {
    struct {
        char const* base;
        double bound;
    } const rows[] = {
        {"poly-12bit", 0.003}, {"poly-mirrored", 0.003}, {"poly-rotated", 0.003}, {"ycbcr", 0.008}};
    for (auto const& [base, bound] : rows) {
        SCOPED_TRACE(base);
        QTemporaryDir const folder, flatFolder;
        auto const original = openSmall(folder.path(), base);
        auto const flat = openSmall(flatFolder.path(), base, kFlatLens);
        QString error;
        auto const table = measureShading(
            *original, {2856, 4000, 6500}, [](double) {}, &error);
        ASSERT_TRUE(table) << qPrintable(error);
        QString const file = folder.filePath("lens.json");
        ASSERT_TRUE(writeMeasuredShading(file, *table, &error)) << qPrintable(error);
        EXPECT_GT(largestDifference(*original, *flat, 4000), 0.1) << "the lens is flat before";
        ASSERT_TRUE(flat->useMeasuredShading(file, &error)) << qPrintable(error);
        for (double const kelvin : {2856.0, 4000.0, 5000.0, 6500.0})
            EXPECT_LT(largestDifference(*original, *flat, kelvin), bound) << kelvin << " K";
    }
}

// Frames of the camera as somebody may have kept them.
struct Recording : testing::Test {
    void SetUp() override {
        camera = openSmall(folder.path(), "poly-12bit");
        frame = camera->grab();
    }
    [[nodiscard]] QString write(char const* name, QByteArray const& bytes) const {
        QFile file(folder.filePath(QLatin1String(name)));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(bytes), bytes.size());
        return file.fileName();
    }
    [[nodiscard]] QString writePng(char const* name, QImage::Format format, int factor = 1) const {
        QImage picture(int(frame.width), frame.height, QImage::Format_Grayscale16);
        for (int y = 0; y < frame.height; ++y)
            for (int x = 0; x < picture.width(); ++x) {
                auto const* const sample =
                    reinterpret_cast<uchar const*>(frame.pixels.constData()) + y * int(frame.pitch) + 2 * x;
                reinterpret_cast<quint16*>(picture.scanLine(y))[x] =
                    quint16(factor * (sample[0] + 256 * sample[1]));
            }
        QString const file = folder.filePath(QLatin1String(name));
        EXPECT_TRUE(picture.convertToFormat(format).save(file));
        return file;
    }

    QTemporaryDir folder;
    std::unique_ptr<SimulatedCamera> camera;
    simulator::Frame frame;
    QString error;
};

TEST_F(Recording, OfAFlatFieldShowsTheLensThatTheCameraHas) {
    auto const live = measureShading(
        *camera, {5000}, [](double) {}, &error);
    ASSERT_TRUE(live) << qPrintable(error);
    for (QString const& file :
         {writePng("flat.png", QImage::Format_Grayscale16), write("flat.raw", frame.pixels)}) {
        auto const recorded = measureRecordedShading(file, camera->description(), 5000, &error);
        ASSERT_TRUE(recorded) << qPrintable(error);
        ASSERT_EQ(recorded->columns, live->columns);
        for (size_t colour = 0; colour < 3; ++colour)
            for (size_t i = 0; i < live->illuminants[0].gains[colour].size(); ++i)
                ASSERT_NEAR(recorded->illuminants[0].gains[colour][i] / live->illuminants[0].gains[colour][i],
                            1, 0.03)
                    << colour << " at " << i;
    }
}

TEST_F(Recording, ThatShowsNoFlatFieldIsRefusedWithItsCause) {
    struct {
        QString file;
        char const* told;
    } const rows[] = {
        {write("cut.raw", frame.pixels.chopped(1)), "bytes"},
        {write("no.png", "PNG"), "no.png"},
        {folder.filePath("none.raw"), "none.raw"},
        {writePng("clipped.png", QImage::Format_Grayscale16, 8), "clipped"},
        {writePng("dark.png", QImage::Format_Grayscale16, 0), "dark"},
        {write("dark.raw", QByteArray(frame.pixels.size(), '\0')), "dark"},
    };
    for (auto const& row : rows) {
        EXPECT_FALSE(measureRecordedShading(row.file, camera->description(), 5000, &error));
        EXPECT_TRUE(error.contains(QLatin1String(row.told))) << qPrintable(error);
    }
    QImage coloured(64, 64, QImage::Format_RGB32);
    coloured.fill(Qt::red);
    ASSERT_TRUE(coloured.save(folder.filePath("red.png")));
    EXPECT_FALSE(measureRecordedShading(folder.filePath("red.png"), camera->description(), 5000, &error));
    EXPECT_TRUE(error.contains(QLatin1String("greyscale"))) << qPrintable(error);
}
} // namespace
} // namespace pictara
