#include "headboard/record_format.h"
#include "simulator/files/whole_file.h"
#include "simulator/pictures/block_report.h"
#include "tests/support/small_profile.h"
#include "tools/headboard-image/edits.h"
#include "tools/shading/camera_measurement.h"
#include "tools/shading/command_line.h"
#include "tools/shading/tables.h"

#include <QDir>
#include <cmath>

namespace shading {
namespace {
using pictara::Certificate;
using simulator::MeasuredShading;
using simulator::SimulatedCamera;

constexpr char kQuiet[] =
    R"(, "readOut": {"electronsPerCount": 100})"; // a sensor that is nearly without noise

struct ShadingTool : testing::Test, TestFiles {
    /// The table is of a lens that lets half as much light through to its corners, and less still of red.
    ShadingTool() {
        MeasuredShading shading{.name = "lens", .columns = 32, .rows = 18, .illuminants = {}};
        for (double const kelvin : kStandardLights) {
            shading.illuminants.push_back({kelvin, {}});
            for (int i = 0; i < 3 * 32 * 18; ++i) {
                int const column = i / 3 % 32, row = i / 96;
                double const u = (column + 0.5) / 16 - 1, v = (row + 0.5) / 9 - 1;
                double const share = i % 3 == 0 ? 0.5 + kelvin / 48000 : 0.5;
                shading.illuminants.back().gains[size_t(i % 3)].push_back(1 /
                                                                          (1 - share * (u * u + v * v) / 2));
            }
        }
        EXPECT_TRUE(writeTable({lens, shading}, {}, &error)) << qPrintable(error);
    }
    [[nodiscard]] std::optional<Certificate> solve(QString const& sensor, int falloff = 100) {
        return shading::solve(
            {.files = {lens}, .output = path("results.ini"), .sensor = sensor, .falloff = falloff}, &exitCode,
            &error);
    }
    /// The results file as a record of an EEPROM's image, behind a serial number if there is one.
    [[nodiscard]] QString import(QString const& image, QByteArray const& serial,
                                 QString const& sensor) const {
        EXPECT_EQ(headboard_image::formatImage(image).exitCode, 0);
        if (!serial.isEmpty()) { // behind the head of the chain
            QByteArray bytes = files::read(image, files::kMostText, nullptr).value();
            QByteArray const record = QByteArray("\x0B\0", 2) + char(serial.size() + 1) + serial + '\0';
            EXPECT_TRUE(files::replace(image, bytes.replace(5, record.size(), record), nullptr));
        }
        EXPECT_EQ(headboard_image::importSection(image, {.presetFile = path("results.ini"),
                                                         .section = "Lens Correction",
                                                         .type = kestra::kRecordPga,
                                                         .sensor = sensor,
                                                         .label = {}})
                      .exitCode,
                  0);
        return image;
    }

    QString const lens = path("lens.json");
    int exitCode = kDone;
    QString error;
};

// Every way in which frames are coded, turned, and corrected by one table or three. The camera that starts up
// from the imported record shows the lens as even as was foretold.
TEST_F(ShadingTool, SolvesALensForEverySensorAndWritesWhatACameraReplays) {
    for (char const* const base :
         {"polynomial", "polynomial-rotated", "ycbcr", "soc-rgb-16", "adaptive-72", "automatic-76"}) {
        // Of samples that the sensor rounds to 8 bits, only many have a true mean.
        QString const sensor = base[0] == 'y' ? QString(base) : smallProfile(base, kQuiet);
        auto const solved = solve(sensor);
        ASSERT_TRUE(solved) << qPrintable(error);
        QJsonObject const left = solved->figures["falloffs"].toArray().last().toObject();
        EXPECT_LT(left["left_colour_largest_ab"].toDouble(), 0.5) << base;
        EXPECT_LT(left["left_luminance_largest_percent"].toDouble(), 1);
        EXPECT_NEAR(left["corner_gain"].toDouble(), base[0] == 'a' ? 2.8 : 2.4, 0.3);

        auto const camera = SimulatedCamera::open(sensor, &error);
        ASSERT_TRUE(camera && camera->useMeasuredShading(lens, &error)) << qPrintable(error);
        camera->setLight({.colourTemperature = 4000, .level = 2});
        auto const unevenness = [&] {
            return pictara::measureBlocks(camera->grab(), camera->description(), {}).largestAgainstMedian;
        };
        if (!camera->hasEeprom())
            continue;
        EXPECT_GT(unevenness(), 0.2);
        ASSERT_TRUE(camera->loadEeprom(import(path(base), {}, sensor), &error) &&
                    camera->replayEeprom({}, &error))
            << qPrintable(error);
        EXPECT_LT(unevenness(), 0.02);
    }
}

// The corners' gain is that of the light that they lack, and costs as many decibels.
TEST_F(ShadingTool, TellsWhatEachFalloffCostsAndWritesTheOneAskedFor) {
    auto const solved = solve(smallProfile("polynomial", kQuiet), 70);
    ASSERT_TRUE(solved) << qPrintable(error);
    QJsonArray const falloffs = solved->figures["falloffs"].toArray();
    double const full = falloffs[5]["corner_gain"].toDouble();
    EXPECT_EQ(falloffs[2]["falloff_percent"].toInt(), 70);
    EXPECT_NEAR(falloffs[2]["corner_gain"].toDouble() / full, 0.7, 0.01);
    EXPECT_NEAR(falloffs[5]["corner_noise_dB"].toDouble(), 20 * std::log10(full), 0.01);
    EXPECT_TRUE(falloffs[2]["in_the_file"].toBool() && !falloffs[5]["in_the_file"].toBool());
    EXPECT_TRUE(files::read(path("results.ini"), files::kMostText, &error)->contains("corners at 70 %"));
    EXPECT_EQ(solved->figures["registers"].toArray().size(), 100);
}

TEST_F(ShadingTool, LeavesNoFileOfATableThatCannotBeSolved) {
    QByteArray const table = files::read(lens, files::kMostText, &error).value();
    QString const sensor = smallProfile(),
                  other = writeChangedProfile(folder.path(), "polynomial-mild",
                                              R"(, "array": {"width": 480, "height": 270})");
    std::tuple<QByteArray, QString, int> const rows[] = {
        {QByteArray(table).replace(":4000", ":NaN"), sensor, kUnusable},
        {QByteArray(table).replace("\"columns\":32", "\"columns\":31"), sensor, kUnusable},
        {table, other, kNothingFound}}; // in a mode of which its data do not tell
    for (auto const& [text, profile, code] : rows) {
        Outcome const outcome =
            runCommandLine({"shading", "solve", write("table.json", text), "--sensor", profile, "-o",
                            path("results.ini"), "--page", path("page.html")});
        EXPECT_EQ(outcome.exitCode, code);
        EXPECT_TRUE(outcome.complaint.contains("table.json: ") && !outcome.complaint.contains('\n'))
            << qPrintable(outcome.complaint);
        EXPECT_FALSE(QFileInfo::exists(path("results.ini")) || QFileInfo::exists(path("page.html")));
    }
}

/// Thirty units of one sensor, SN1 to SN30, by results files.
struct Units : ShadingTool {
    Units() {
        EXPECT_TRUE(solve(sensor)) << qPrintable(error);
        EXPECT_TRUE(QDir(folder.path()).mkdir("units"));
        spread(1);
    }
    /// Red's rise differs by up to ten of these steps.
    void spread(int step) const {
        for (int i = 1; i <= 30; ++i)
            add(i, 0x3200 + step * (7 * i % 11));
    }
    /// A unit whose red rises so far along the rows.
    void add(int number, int coefficient) const {
        QByteArray text = files::read(path("results.ini"), files::kMostText, nullptr).value();
        QByteArray const place = "0x0000, 0x3654, ";
        text.replace(text.indexOf(place) + place.size(), 6, "0x" + QByteArray::number(coefficient, 16));
        write(qPrintable(QStringLiteral("units/SN%1.ini").arg(number)), text);
    }
    /// The serial numbers that fall out.
    [[nodiscard]] QStringList odd() {
        auto const told = units({.files = {path("units")}, .sensor = sensor}, &exitCode, &error);
        QStringList serials;
        for (QJsonValue const unit : told ? told->figures["units"].toArray() : QJsonArray()) {
            all << unit["serial_number"].toString();
            if (unit["falls_out"].toBool())
                serials << all.back();
        }
        unusable = told ? told->figures["files_unusable"].toArray().size() : -1;
        return serials;
    }

    QString const sensor = smallProfile("polynomial", "");
    QStringList all;
    int unusable = 0;
};

TEST_F(Units, ThatFallOutAreNamedAndNoOthers) {
    EXPECT_EQ(odd(), QStringList());
    EXPECT_EQ(all.value(1), "SN2"); // as people count
    spread(0);
    add(2, 0x3201); // the registers' own step
    EXPECT_EQ(odd(), QStringList());
    spread(20);
    EXPECT_EQ(odd(), QStringList());
    add(9, 0x3600);
    EXPECT_EQ(odd(), QStringList("SN9"));
}

TEST_F(Units, AreReadFromImagesBesideFilesThatAreNone) {
    (void)import(path("units/board.bin"), "SN2.5", sensor);
    (void)import(path("units/twice.bin"), "SN2.5", sensor);
    write("units/cut.bin", "VYEE");
    write("units/notes.txt", "no unit");
    write("units/empty.ini", "[Lens Correction]\n");
    write("units/other.ini", "[Lens Correction]\n; sensor kind 68, variant 1\n");
    (void)odd();
    EXPECT_EQ(all.size(), 31);
    EXPECT_EQ(all.value(2), "SN2.5");
    EXPECT_EQ(unusable, 4);
    EXPECT_EQ(exitCode, kDone);
    EXPECT_TRUE(units({.files = {folder.path()}, .sensor = smallProfile("adaptive-72")}, &exitCode, &error));
    EXPECT_EQ(exitCode, kNothingFound);
}

TEST_F(ShadingTool, RatesAPictureByItsWorstBlock) {
    QImage picture(320, 180, QImage::Format_RGB32);
    picture.fill(qRgb(128, 128, 128));
    auto const rate = [&](char const* name, Coding const& coding = {}) {
        EXPECT_TRUE(picture.save(path(name)));
        return shading::rate({.files = {path(name)}, .coding = coding}, &exitCode, &error);
    };
    auto const grey = rate("grey.png");
    ASSERT_TRUE(grey) << qPrintable(error);
    // Half of a JPEG would be shown.
    ASSERT_TRUE(rate("grey.jpg"));
    QByteArray const bytes = files::read(path("grey.jpg"), files::kMostText, &error).value();
    EXPECT_FALSE(
        shading::rate({.files = {write("cut.jpg", bytes.left(bytes.size() * 2 / 3))}}, &exitCode, &error));
    EXPECT_TRUE(error.contains("cut.jpg: "));
    EXPECT_EQ(grey->figures["colour_deviation_ab"].toDouble(-1), 0);
    EXPECT_TRUE(certificateText(*grey).contains("greyscale"));
    for (int i = 0; i < 100; ++i)
        picture.setPixel(200 + i % 10, 100 + i / 10, qRgb(128, 128, 140));
    auto const blue = rate("blue.png");
    ASSERT_TRUE(blue) << qPrintable(error);
    EXPECT_EQ(blue->result, "fail");
    EXPECT_EQ(blue->figures["worst_block_pixels"].toArray(), (QJsonArray{200, 100, 210, 110}));

    // A mosaic of a cast that the balance takes away, and of the same cast in one half alone.
    picture = QImage(320, 180, QImage::Format_Grayscale16);
    for (bool const isHalf : {false, true}) {
        for (int i = 0; i < 320 * 180; ++i)
            reinterpret_cast<quint16*>(picture.scanLine(i / 320))[i % 320] =
                i % 2 == 0 && i / 320 % 2 == 0 && (i % 320 < 160 || !isHalf) ? 1000 : 2000;
        auto const raw = rate("raw.png", {.phase = 0, .black = 100, .white = 4095});
        ASSERT_TRUE(raw) << qPrintable(error);
        EXPECT_EQ(raw->result, isHalf ? "fail" : "pass");
        EXPECT_EQ(exitCode, isHalf ? kNothingFound : kDone);
        EXPECT_EQ(raw->figures["is_greyscale"].toBool(), !isHalf);
    }
}
} // namespace
} // namespace shading
