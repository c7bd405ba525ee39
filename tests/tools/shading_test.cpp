#include "simulator/files/whole_file.h"
#include "tests/support/small_profile.h"
#include "tools/shading/camera_measurement.h"
#include "tools/shading/command_line.h"
#include "tools/shading/tables.h"
#include "tools/shading/turned.h"

#include <QJsonDocument>
#include <QtEndian>
#include <functional>
#include <gtest/gtest.h>
#include <tiffio.h>

namespace shading {
namespace {
using simulator::MeasuredShading;
using simulator::SimulatedCamera;

constexpr char kQuiet[] = R"(, "readOut": {"electronsPerCount": 25})";
constexpr char kSmall[] =
    R"(, "layout": {"width": 480, "height": 270}, "array": {"width": 480, "height": 270)";

// A lens off the middle, whose smallest gain is 1.
MeasuredShading knownLens() {
    MeasuredShading lens{.name = "known", .columns = 32, .rows = 18, .illuminants = {}};
    for (double const kelvin : {2856.0, 6500.0}) {
        lens.illuminants.push_back({.temperature = kelvin, .gains = {}});
        for (int i = 0; i < 32 * 18; ++i) {
            int const column = i % 32, row = i / 32;
            double const u = (column - 14.5) / 16, v = (row - 8.5) / 9;
            double const r2 = u * u + v * v - 0.25 / 256 - 0.25 / 81;
            for (size_t colour = 0; colour < 3; ++colour)
                lens.illuminants.back().gains[colour].push_back(1 + (0.4 + 0.1 * double(colour)) * r2 *
                                                                        kelvin / 4000);
        }
    }
    return lens;
}

// A camera with files of its own beside its profile.
struct SmallCamera : TestFiles {
    explicit SmallCamera(char const* base, QByteArray const& more = {}, char const* phase = "")
        : camera(SimulatedCamera::open(
              writeChangedProfile(folder.path(), base, kSmall + QByteArray(phase) + '}' + kNoEeprom + more),
              &error)) {
        EXPECT_TRUE(camera) << qPrintable(error);
    }
    void takeKnownLens() {
        EXPECT_TRUE(writeTable({path("known.json"), knownLens()}, {}, &error) &&
                    camera->useMeasuredShading(path("known.json"), &error))
            << qPrintable(error);
    }
    QString error;
    std::unique_ptr<SimulatedCamera> const camera;
};

// Where gains differ most, a share of 1.
double largestDifference(MeasuredShading const& a, MeasuredShading const& b) {
    double largest = 0;
    EXPECT_EQ(a.columns, b.columns);
    EXPECT_EQ(a.illuminants.size(), b.illuminants.size());
    for (size_t light = 0; light < a.illuminants.size(); ++light)
        for (size_t colour = 0; colour < 3; ++colour) {
            auto const &first = a.illuminants[light].gains[colour],
                       &second = b.illuminants[light].gains[colour];
            EXPECT_EQ(first.size(), second.size());
            for (size_t i = 0; i < std::min(first.size(), second.size()); ++i)
                largest = std::max(largest, std::abs(first[i] / second[i] - 1));
        }
    return largest;
}

// However frames are read out. A YCbCr picture shows each colour half a pixel away, which counts where the
// lens is steep and the picture small.
TEST(MeasureShading, OfALensThatIsKnownGivesItsTable) {
    std::tuple<char const*, char const*, double> const rows[] = {
        {"polynomial", kQuiet, 0.003}, {"polynomial-rotated", kQuiet, 0.003}, {"ycbcr", "", 0.008}};
    for (auto const& [base, noise, bound] : rows) {
        SmallCamera small(base, noise);
        small.takeKnownLens();
        auto const table = measureShading(*small.camera, {2856, 6500}, &small.error);
        ASSERT_TRUE(table) << qPrintable(small.error);
        EXPECT_LT(largestDifference(*table, knownLens()), bound) << base;
    }
}

Outcome shade(QStringList const& arguments) { return runCommandLine(QStringList("shading") + arguments); }

// The figures, if any are told, of what has to succeed.
QJsonObject shadeDone(QStringList const& arguments) {
    Outcome const run = shade(arguments);
    EXPECT_EQ(run.exitCode, kDone) << qPrintable(run.complaint);
    return QJsonDocument::fromJson(run.output.toUtf8()).object();
}

TEST(ShadingProgram, MeasuresALensAndLaysItBesideAnother) {
    TestFiles const files;
    QString const first = files.path("first.json");
    QString const flat =
        files.write("flat.json", R"({"format": "shading-gains-1", "name": "flat", "columns": 2, "rows": 2,
        "illuminants": [{"colour_temperature_K": 4000,
            "red": [1, 1, 1, 1], "green": [1, 1, 1, 1], "blue": [1, 1, 1, 1]}]})");
    (void)shadeDone({"measure", "--sensor", files.smallProfile(), "-o", first});
    QJsonArray const planes = shadeDone({"compare", first, flat, "--json"})["planes"].toArray();
    for (int plane = 0; plane < 9; ++plane) {
        EXPECT_EQ(planes[plane]["colour_temperature_K"].toDouble(), kStandardLights[size_t(plane / 3)]);
        EXPECT_EQ(planes[plane]["second_largest_gain"].toDouble(), 1);
        EXPECT_NEAR(planes[plane]["largest_difference_percent"].toDouble(),
                    100 / planes[plane]["largest_gain"].toDouble() - 100, 0.01);
    }

    QString const dark =
        files.smallProfile("polynomial", R"(, "optics": {"lens": {"vignetting": [-1.5, 0, 0]}})");
    Outcome const none = shade({"measure", "--sensor", dark, "-o", files.path("dark.json")});
    EXPECT_EQ(none.exitCode, kNothingFound);
    EXPECT_TRUE(none.complaint.contains("too dark") && !QFile::exists(files.path("dark.json")));
}

// Fields of a file that a camera writes.
struct RawFile {
    std::array<float, 4> black{160, 160, 160, 160}; ///< of the pattern's four places; below zero: not told
    uint16_t channels = 1;                          ///< more: no colour filter array
    bool isDng = true;
};

void writeTiff(QString const& name, QImage const& samples, RawFile const& fields) {
    std::unique_ptr<TIFF, void (*)(TIFF*)> const tiff(TIFFOpen(QFile::encodeName(name), "w"), TIFFClose);
    ASSERT_TRUE(tiff);
    auto const set = [&](uint32_t tag, auto... values) {
        EXPECT_EQ(TIFFSetField(tiff.get(), tag, values...), 1) << tag;
    };
    constexpr uint8_t kVersion[] = {1, 4, 0, 0}, kGrbg[] = {1, 0, 2, 1};
    constexpr uint16_t kTwice[] = {2, 2};
    constexpr uint32_t kWhite[] = {4095, 4095, 4095};
    bool const isMosaic = fields.isDng && fields.channels == 1;
    set(TIFFTAG_IMAGEWIDTH, samples.width() / fields.channels);
    set(TIFFTAG_IMAGELENGTH, samples.height());
    set(TIFFTAG_ROWSPERSTRIP, samples.height());
    set(TIFFTAG_BITSPERSAMPLE, 16);
    set(TIFFTAG_SAMPLESPERPIXEL, fields.channels);
    set(TIFFTAG_PHOTOMETRIC, isMosaic ? 32803 : fields.isDng ? 34892 : PHOTOMETRIC_MINISBLACK);
    if (fields.isDng) {
        set(TIFFTAG_DNGVERSION, kVersion);
        set(TIFFTAG_WHITELEVEL, int(fields.channels), kWhite);
    }
    if (isMosaic) {
        set(TIFFTAG_CFAREPEATPATTERNDIM, kTwice);
        set(TIFFTAG_CFAPATTERN, 4, kGrbg);
    }
    if (isMosaic && fields.black[0] >= 0) {
        set(TIFFTAG_BLACKLEVELREPEATDIM, kTwice);
        set(TIFFTAG_BLACKLEVEL, 4, fields.black.data());
    }
    EXPECT_GT(TIFFWriteEncodedStrip(tiff.get(), 0, const_cast<uchar*>(samples.constBits()),
                                    tmsize_t(samples.sizeInBytes())),
              0);
}

// Pictures that a camera took, as somebody may have kept them: 12 bits, GRBG, black at 160, 480 x 270.
struct Pictures : testing::Test, SmallCamera {
    using Lamp = std::function<double(double u, double v)>; ///< from -1 to 1
    static double evenLamp(double, double) { return 1; }

    Pictures() : SmallCamera("polynomial", kQuiet, R"(, "bayerPhase": 1)") { camera->setLight(light); }

    // The next frame, what lies above black multiplied by a lamp.
    [[nodiscard]] QImage picture(Lamp const& lamp = evenLamp,
                                 std::array<float, 4> const& black = RawFile{}.black) const {
        simulator::Frame const frame = camera->grab();
        QImage image(int(frame.width), frame.height, QImage::Format_Grayscale16);
        for (int y = 0; y < frame.height; ++y)
            for (int x = 0; x < image.width(); ++x) {
                double const u = (2 * x + 1.0) / image.width() - 1, v = (2 * y + 1.0) / image.height() - 1;
                int const sample = qFromLittleEndian<quint16>(frame.pixels.constData() +
                                                              y * ptrdiff_t{frame.pitch} + ptrdiff_t{2} * x);
                double const seen = double(black[size_t(y % 2 * 2 + x % 2)]) + lamp(u, v) * (sample - 160);
                reinterpret_cast<quint16*>(image.scanLine(y))[x] =
                    quint16(std::lround(std::min(seen, 4095.0)));
            }
        return image;
    }
    [[nodiscard]] QString dng(QString const& name, QImage const& image, RawFile const& fields = {}) const {
        writeTiff(folder.filePath(name), image, fields);
        return folder.filePath(name);
    }
    // Several of a lamp of 2856 K.
    [[nodiscard]] QStringList dngs(char const* name, int count, Lamp const& lamp = evenLamp) const {
        QStringList names;
        for (int i = 0; i < count; ++i)
            names << dng(QStringLiteral("%1%2_2856k.dng").arg(name).arg(i), picture(lamp));
        return names;
    }
    // What is measured of pictures, by options if any; leaves the figures that are told.
    [[nodiscard]] MeasuredShading table(QStringList const& words) {
        figures = shadeDone(QStringList{"measure", "--json", "-o", path("table.json")} + words);
        auto const read = simulator::readMeasuredShading(path("table.json"), &error);
        EXPECT_TRUE(read) << qPrintable(error);
        return read.value_or(MeasuredShading{});
    }

    QJsonObject figures;
    simulator::Light light{.colourTemperature = 2856};
};

// Black levels that differ by plane are taken off each plane.
TEST_F(Pictures, OfALensThatIsKnownGiveItsTable) {
    takeKnownLens();
    constexpr std::array<float, 4> kBlack{160, 180, 200, 220};
    QStringList names;
    for (double const kelvin : {6500.0, 2856.0})
        for (int i = 0; i < 3; ++i) {
            camera->setLight({.colourTemperature = kelvin});
            names << dng(QStringLiteral("flat_%1k_%2.dng").arg(kelvin).arg(i), picture(evenLamp, kBlack),
                         {.black = kBlack});
        }
    EXPECT_LT(largestDifference(table(names), knownLens()), 0.01);
}

TEST_F(Pictures, OfOneFrameGiveOneTableInEveryFormat) {
    QImage const image = picture();
    MeasuredShading const expected = table({dng("a_2856k.dng", image)});
    writeTiff(path("b_2856k.tif"), image, {.isDng = false});
    ASSERT_TRUE(image.save(path("c_2856k.png")));
    (void)write("d.bin", {reinterpret_cast<char const*>(image.constBits()), int(image.sizeInBytes())});
    QStringList const sensor{"--sensor", path("changed-polynomial.json")}, lamp{"--light", "2856"},
        told{"--phase", "GRBG", "--black", "160", "--white", "4095"};
    for (QStringList const& words :
         {QStringList("b_2856k.tif") + told, QStringList("c_2856k.png") + sensor,
          QStringList("d.bin") + sensor + lamp,
          QStringList{"d.bin", "--raw", "480x270,12,grbg", "--black", "160"} + lamp})
        EXPECT_EQ(largestDifference(table(QStringList(folder.filePath(words[0])) + words.mid(1)), expected),
                  0)
            << qPrintable(words.join(' '));
}

// The page shows both maps; a picture of that lamp alone is far off, and refused.
TEST_F(Pictures, ThatWereTurnedTellTheLensFromTheLamp) {
    auto const lamp = [](double u, double v) { return 1 + 0.15 * u + 0.05 * (u * u + v * v) / 2; };
    // The exposure of the turned camera was another.
    QStringList const even = dngs("even", 8), straight = dngs("a", 8, lamp),
                      turned = dngs("b", 8, [&](double u, double v) { return 0.8 * lamp(-u, -v); });
    MeasuredShading const lens = table(even);
    QStringList const both = straight + QStringList("--turned") + turned;
    EXPECT_LT(largestDifference(table(QStringList{"--page", path("page.html")} + both), lens), 0.005);
    QJsonValue const seen = figures["lamps"].toArray()[0];
    EXPECT_NEAR(seen["gradient_left_right_percent"].toDouble(), 30, 0.5);
    EXPECT_NEAR(seen["gradient_top_bottom_percent"].toDouble(), 0, 0.5);
    EXPECT_TRUE(files::read(path("page.html"), files::kMostText, &error)->contains("lamp above its middle"));

    EXPECT_EQ(shade({"measure", straight[0], "-o", path("one.json")}).exitCode, kNothingFound);
    EXPECT_FALSE(QFile::exists(path("one.json")));
    PictureMeans const single = meansOf(*readMosaic(straight[0], {}, &error));
    MeasuredShading uneven = lens;
    uneven.illuminants = {*gainsOf(single.cells, 2856)};
    EXPECT_GT(largestDifference(uneven, lens), 0.1);
    // Less light is no lamp.
    Cells const grey = Cells::Constant(576, 3, 0.5), darker = Cells::Constant(576, 3, 0.2);
    EXPECT_LT(separate(grey, darker, 32)->leftOver, 1e-6);
    // Without a gradient nothing is to be seen of a curvature, and none is invented.
    EXPECT_LT(largestDifference(table(even.mid(0, 4) + QStringList("--turned") + even.mid(4)), lens), 0.005);
}

TEST_F(Pictures, ThatDifferFromTheOthersAreNamedAndLeftOut) {
    QStringList const names = dngs("flat", 4);
    MeasuredShading const expected = table(names);
    QString const shifted = dng("shifted_2856k.dng", picture([](double u, double) { return 1 + 0.04 * u; }));
    light.objectInPicture = true;
    camera->setLight(light);
    QString const object = dng("object_2856k.dng", picture());
    EXPECT_EQ(largestDifference(table(QStringList{"--format", "tuning", object, shifted} + names), expected),
              0);
    for (QJsonValue const picture : figures["pictures"].toArray())
        EXPECT_EQ(picture["used"].toBool(), names.contains(picture["file"].toString()))
            << qPrintable(picture["file"].toString());

    // Gains of red over green, the smallest 1, as those of the table.
    auto const tuning =
        QJsonDocument::fromJson(*files::read(path("table.json.tuning.json"), files::kMostText, &error));
    QJsonValue const lamp = tuning["lamps"].toArray()[0];
    std::vector<double> ratios;
    for (QJsonValue const ratio : lamp["red_over_green"].toArray())
        ratios.push_back(ratio.toDouble());
    ASSERT_EQ(ratios.size(), 16U * 12);
    EXPECT_EQ(*std::min_element(ratios.begin(), ratios.end()), 1);
    auto const& gains = expected.illuminants[0].gains;
    EXPECT_NEAR(ratios.front() / ratios.back(),
                gains[0].front() / gains[1].front() / (gains[0].back() / gains[1].back()), 0.02);
}

TEST_F(Pictures, AreCheckedByExitCode) {
    std::tuple<simulator::Light, int, char const*> const rows[] = {
        {{.level = 1}, kDone, "160         20.0"}, // above black
        {{.level = 0.02}, kTooDark, "Expose longer"},
        {{.level = 8}, kClipped, "Expose shorter"},
        {{.objectInPicture = true}, kNotFlat, "columns 2"},
        {{.gradient = 0.4}, kNotFlat, "--turned"}};
    QString const good = dng("good.dng", picture());
    PictureMeans const means = meansOf(*readMosaic(good, {}, &error));
    double const electrons = 25 * (4095 - 160) * means.cells(9 * 32 + 16, 1);
    EXPECT_NEAR(means.noise * std::sqrt(electrons), 1, 0.1) << "the noise of light";
    EXPECT_EQ(means.of.samples.capacity(), 0U) << "many pictures must not be kept";
    for (auto const& [lit, exitCode, told] : rows) {
        camera->setLight(lit);
        Outcome const run = shade({"check", dng("flat.dng", picture()), good});
        EXPECT_EQ(run.exitCode, exitCode) << qPrintable(run.output);
        EXPECT_TRUE(run.output.contains(told)) << qPrintable(run.output);
    }
    // A sensor that saturates below what its file tells.
    camera->setLight({.level = 6});
    QImage image = picture();
    int const saturation = reinterpret_cast<quint16 const*>(image.constScanLine(135))[240] * 9 / 10;
    for (int i = 0; i < 480 * 270; ++i) {
        quint16& sample = reinterpret_cast<quint16*>(image.bits())[i];
        sample = std::min(sample, quint16(saturation));
    }
    EXPECT_EQ(shade({"check", dng("saturated.dng", image)}).exitCode, kClipped);
}

TEST_F(Pictures, ThatCannotBeUsedAreNamedAndLeaveNothing) {
    QImage const image = picture();
    QString const good = dng("good_2856k.dng", image), table = path("table.json");
    QByteArray const bytes = *files::read(good, files::kMostText, &error);
    QImage coloured(64, 64, QImage::Format_RGB32);
    coloured.fill(Qt::red);
    ASSERT_TRUE(coloured.save(path("red_2856k.png")) && image.save(path("grey_2856k.png")));
    QByteArray damaged = *files::read(path("grey_2856k.png"), files::kMostText, &error);
    damaged[damaged.size() / 2] = char(damaged[damaged.size() / 2] ^ 1);
    QFile(good).link(path("link_2856k.dng"));
    testing::internal::CaptureStderr(); // libraries may have words of their own
    std::pair<QStringList, char const*> const rows[] = {
        // the last picture is named
        {{write("cut_2856k.dng", bytes.left(bytes.size() / 2))}, "raw picture"},
        {{dng("rgb_2856k.dng", image, {.channels = 3})}, "no mosaic"},
        {{dng("black_2856k.dng", image, {.black = {-1}})}, "--black"},
        {{good, dng("small_2856k.dng", image.copy(0, 0, 480, 268))}, "unlike"},
        {{dng("unnamed.dng", image)}, "--light"},
        {{path("none_2856k.dng")}, "No such file"},
        {{write("long_2856k.bin", QByteArray(50 * 900, 'a')), "--raw", "50x900,8,RGGB"}, "16 times"},
        {{path("red_2856k.png")}, "greyscale"},
        {{path("grey_2856k.png")}, "--phase"},
        {{write("damaged_2856k.png", damaged)}, "PNG"},
        {{write("no_2856k.tif", "II*")}, "TIFF"},
        {{write("cut_2856k.bin", QByteArray(999, 'a')), "--raw", "480x270,8,RGGB"}, "999 bytes"},
        {{good, "--black", "5000"}, "not above"},
        {{good, "--turned", path("none_2856k.dng")}, "No such file"},
    };
    for (auto const& [words, told] : rows) {
        Outcome const run = shade(QStringList{"measure", "-o", table, "--page", path("page.html")} + words);
        EXPECT_EQ(run.exitCode, kUnusable);
        EXPECT_TRUE(run.complaint.startsWith(words.filter("/").last() + ": ") && run.complaint.contains(told))
            << qPrintable(run.complaint) << told;
        EXPECT_EQ(run.complaint.count('\n'), 0);
    }
    EXPECT_EQ(shade({"measure", good, "-o", path("none/table.json")}).exitCode, kUnusable);
    for (QString const& output : {good, path("link_2856k.dng")})
        EXPECT_TRUE(shade({"measure", good, "-o", output}).complaint.contains("would be replaced"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(files::read(good, files::kMostText, &error), bytes);
    for (QStringList const& words : {QStringList{"measure", good},
                                     {"check"},
                                     {"check", good, "-o", table},
                                     {"solve", table, "-o", "r.ini"},
                                     {"units", "."},
                                     {"solve", table, "--sensor", "p", "-o", "r.ini", "--falloff", "77.5"},
                                     {"measure", good, "--turned", "-o", table},
                                     {"compare", good}})
        EXPECT_TRUE(shade(words).complaint.contains("--help")) << qPrintable(words.join(' '));
    EXPECT_FALSE(QFile::exists(table) || QFile::exists(path("page.html")));
}
} // namespace
} // namespace shading
