#include "simulator/files/whole_file.h"
#include "tests/support/small_profile.h"
#include "tools/shading/camera_measurement.h"
#include "tools/shading/command_line.h"
#include "tools/shading/turned.h"

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
    QTemporaryDir const folder;
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
        std::vector<double> const lights = {2856, 4000, 5000, 6500};
        QString error;
        auto const measured = [&](SmallCamera const& by, std::vector<double> const& at) {
            auto const table = measureShading(*by.camera, at, &error);
            EXPECT_TRUE(table) << qPrintable(error);
            return table.value_or(MeasuredShading{});
        };
        QString const file = original.folder.filePath("lens.json");
        ASSERT_TRUE(TableFile{file}.write(measured(original, {2856, 4000, 6500}), &error))
            << qPrintable(error);
        MeasuredShading const expected = measured(original, lights);
        EXPECT_GT(largestDifference(measured(flat, lights), expected), 0.1) << "the lens is flat before";
        ASSERT_TRUE(flat.camera->useMeasuredShading(file, &error)) << qPrintable(error);
        EXPECT_LT(largestDifference(measured(flat, lights), expected), bound);
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
    Outcome const dark = shade(measure + QStringList{files.path("dark.json"), "--level", "0.001"});
    EXPECT_EQ(dark.exitCode, kNothingFound);
    EXPECT_TRUE(dark.complaint.contains("too dark") && !QFile::exists(files.path("dark.json")));
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

// Fields of a file that a camera writes.
struct RawFile {
    std::array<float, 4> black{}; ///< of the pattern's four places; below zero: not told
    uint16_t photometric = 32803; ///< a colour filter array
    uint16_t channels = 1;
    bool isDng = true;
};

void writeTiff(QString const& name, QImage const& samples, RawFile const& fields) {
    std::unique_ptr<TIFF, void (*)(TIFF*)> const tiff(TIFFOpen(QFile::encodeName(name), "w"), TIFFClose);
    ASSERT_TRUE(tiff);
    auto const set = [&](uint32_t tag, auto... values) {
        EXPECT_EQ(TIFFSetField(tiff.get(), tag, values...), 1) << tag;
    };
    set(TIFFTAG_IMAGEWIDTH, samples.width() / fields.channels);
    set(TIFFTAG_IMAGELENGTH, samples.height());
    set(TIFFTAG_BITSPERSAMPLE, 16);
    set(TIFFTAG_SAMPLESPERPIXEL, fields.channels);
    set(TIFFTAG_PHOTOMETRIC, fields.isDng ? fields.photometric : PHOTOMETRIC_MINISBLACK);
    set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    set(TIFFTAG_ROWSPERSTRIP, samples.height());
    if (fields.isDng) {
        constexpr uint8_t kVersion[] = {1, 4, 0, 0};
        constexpr uint8_t kGrbg[] = {1, 0, 2, 1};
        constexpr uint16_t kTwice[] = {2, 2};
        constexpr float kIdentity[] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
        constexpr uint32_t kWhite[] = {4095, 4095, 4095};
        set(TIFFTAG_MAKE, "Headboard");
        set(TIFFTAG_MODEL, "Camera");
        set(TIFFTAG_UNIQUECAMERAMODEL, "Headboard Camera");
        set(TIFFTAG_DNGVERSION, kVersion);
        set(TIFFTAG_COLORMATRIX1, 9, kIdentity);
        set(TIFFTAG_CALIBRATIONILLUMINANT1, 21);
        set(TIFFTAG_WHITELEVEL, int(fields.channels), kWhite);
        if (fields.photometric == 32803) {
            set(TIFFTAG_CFAREPEATPATTERNDIM, kTwice);
            set(TIFFTAG_CFAPATTERN, 4, kGrbg);
            if (fields.black[0] >= 0) {
                set(TIFFTAG_BLACKLEVELREPEATDIM, kTwice);
                set(TIFFTAG_BLACKLEVEL, 4, fields.black.data());
            }
        }
    }
    for (int y = 0; y < samples.height(); ++y)
        EXPECT_EQ(TIFFWriteScanline(tiff.get(), const_cast<uchar*>(samples.constScanLine(y)), uint32_t(y)),
                  1);
}

// Pictures that a camera took, as somebody may have kept them: 12 bits, GRBG, black at 160, 480 x 270.
struct Pictures : testing::Test, SmallCamera {
    Pictures()
        : SmallCamera("polynomial",
                      QByteArray(kQuiet) + R"(, "array": {"width": 480, "height": 270, "bayerPhase": 1})") {
        camera->setLight(light);
    }

    // The next frame, what lies above black multiplied by a lamp of the place, u and v from -1 to 1.
    template <typename Lamp>
    [[nodiscard]] QImage picture(Lamp lamp) const {
        simulator::Frame const frame = camera->grab();
        QImage image(int(frame.width), frame.height, QImage::Format_Grayscale16);
        for (int y = 0; y < frame.height; ++y)
            for (int x = 0; x < image.width(); ++x) {
                double const u = (2 * x + 1.0) / image.width() - 1, v = (2 * y + 1.0) / image.height() - 1;
                auto const* const bytes =
                    reinterpret_cast<uchar const*>(frame.pixels.constData()) + y * int(frame.pitch) + 2 * x;
                double const sample = 160 + lamp(u, v) * ((bytes[0] | bytes[1] << 8) - 160);
                reinterpret_cast<quint16*>(image.scanLine(y))[x] =
                    quint16(std::lround(std::min(sample, 4095.0)));
            }
        return image;
    }
    [[nodiscard]] QImage picture() const {
        return picture([](double, double) { return 1.0; });
    }
    [[nodiscard]] QString path(QString const& name) const { return folder.filePath(name); }
    QString dng(QString const& name, QImage const& image, RawFile const& fields = kUsual) const {
        writeTiff(path(name), image, fields);
        return path(name);
    }
    [[nodiscard]] MeasuredShading table(QStringList const& pictures) const {
        QString message;
        expectDone(shade(QStringList{"measure", "-o", path("table.json")} + pictures));
        auto const read = simulator::readMeasuredShading(path("table.json"), &message);
        EXPECT_TRUE(read) << qPrintable(message);
        return read.value_or(MeasuredShading{});
    }

    static constexpr RawFile kUsual{.black = {160, 160, 160, 160}};
    simulator::Light light{.colourTemperature = 2856};
};

// Black levels that differ by plane are taken off each plane.
TEST_F(Pictures, OfALensThatIsKnownGiveItsTable) {
    MeasuredShading truth{.name = "known", .columns = 32, .rows = 18, .illuminants = {}};
    for (double const kelvin : {2856.0, 6500.0}) {
        MeasuredShading::Illuminant of{.temperature = kelvin, .gains = {}};
        for (int i = 0; i < 32 * 18; ++i) {
            // The lens is off the middle; the smallest gain is 1.
            double const u = (i % 32 - 14.5) / 16, v = (i / 32 - 8.5) / 9;
            double const r2 = u * u + v * v - 0.25 / 256 - 0.25 / 81;
            for (size_t colour = 0; colour < 3; ++colour)
                of.gains[colour].push_back(1 + (0.4 + 0.1 * double(colour)) * r2 * kelvin / 4000);
        }
        truth.illuminants.push_back(of);
    }
    ASSERT_TRUE(TableFile{path("truth.json")}.write(truth, &error)) << qPrintable(error);
    ASSERT_TRUE(camera->useMeasuredShading(path("truth.json"), &error)) << qPrintable(error);
    QStringList names;
    for (double const kelvin : {6500.0, 2856.0})
        for (int i = 0; i < 3; ++i) {
            camera->setLight({.colourTemperature = kelvin});
            QImage image = picture();
            for (int y = 0; y < image.height(); ++y)
                for (int x = 0; x < image.width(); ++x)
                    reinterpret_cast<quint16*>(image.scanLine(y))[x] += quint16(20 * (y % 2 * 2 + x % 2));
            names << dng(QStringLiteral("flat_%1k_%2.dng").arg(kelvin).arg(i), image,
                         {.black = {160, 180, 200, 220}});
        }
    EXPECT_LT(largestDifference(table(names), truth), 0.01);
}

TEST_F(Pictures, OfOneFrameGiveOneTableInEveryFormat) {
    QImage const image = picture();
    MeasuredShading const expected = table({dng("a_2856k.dng", image)});
    writeTiff(path("b_2856k.tif"), image, {.isDng = false});
    ASSERT_TRUE(image.save(path("c_2856k.png")));
    ASSERT_TRUE(files::replace(
        path("d_2856k.bin"),
        QByteArray(reinterpret_cast<char const*>(image.constBits()), int(image.sizeInBytes())), &error));
    QStringList const sensor{"--sensor", folder.filePath("changed-polynomial.json")},
        told{"--phase", "GRBG", "--black", "160", "--white", "4095"};
    for (QStringList const& words :
         {QStringList("b_2856k.tif") + told, QStringList("c_2856k.png") + sensor,
          QStringList("d_2856k.bin") + sensor,
          QStringList{"d_2856k.bin", "--raw", "480x270,12,grbg", "--black", "160"}})
        EXPECT_EQ(largestDifference(table(QStringList(path(words[0])) + words.mid(1)), expected), 0)
            << qPrintable(words.join(' '));
}

// The page shows both maps; a picture of that lamp alone is far off, and refused.
TEST_F(Pictures, ThatWereTurnedTellTheLensFromTheLamp) {
    QStringList even, straight, turned;
    for (int i = 0; i < 6; ++i) {
        auto const lamp = [](double u, double v) { return 1 + 0.15 * u + 0.05 * (u * u + v * v) / 2; };
        even << dng(QStringLiteral("even%1_2856k.dng").arg(i), picture());
        straight << dng(QStringLiteral("a%1_2856k.dng").arg(i), picture(lamp));
        // Its exposure was another.
        turned << dng(QStringLiteral("b%1_2856k.dng").arg(i),
                      picture([&](double u, double v) { return 0.8 * lamp(-u, -v); }));
    }
    MeasuredShading const lens = table(even);
    Outcome const run =
        shade(QStringList{"measure", "--json", "--page", path("page.html"), "-o", path("lens.json")} +
              straight + QStringList("--turned") + turned);
    ASSERT_EQ(run.exitCode, kDone) << qPrintable(run.complaint);
    EXPECT_LT(largestDifference(*simulator::readMeasuredShading(path("lens.json"), &error), lens), 0.005);
    QJsonValue const told = figuresOf(run)["lamps"].toArray()[0];
    EXPECT_NEAR(told["gradient_left_right_percent"].toDouble(), 30, 0.5);
    EXPECT_NEAR(told["gradient_top_bottom_percent"].toDouble(), 0, 0.5);
    EXPECT_TRUE(files::read(path("page.html"), files::kMostText, &error)->contains("lamp above its middle"));

    EXPECT_EQ(shade({"measure", straight[0], "-o", path("one.json")}).exitCode, kNothingFound);
    EXPECT_FALSE(QFile::exists(path("one.json")));
    PictureMeans const single = meansOf(*readMosaic(straight[0], {}, &error));
    MeasuredShading uneven = lens;
    uneven.illuminants = {*gainsOf(single.cells, 2856)};
    EXPECT_GT(largestDifference(uneven, lens), 0.1);
    // Less light is no lamp.
    Cells const grey(32 * 18, {0.5, 0.5, 0.5}), darker(32 * 18, {0.2, 0.2, 0.2});
    EXPECT_LT(separate(grey, darker, 32)->leftOver, 1e-6);
    // Without a gradient nothing is to be seen of a curvature, and none is invented.
    (void)shade(QStringList{"measure", "-o", path("same.json")} + even.mid(0, 3) + QStringList("--turned") +
                even.mid(3));
    EXPECT_LT(largestDifference(*simulator::readMeasuredShading(path("same.json"), &error), lens), 0.005);
}

TEST_F(Pictures, ThatDifferFromTheOthersAreNamedAndLeftOut) {
    QStringList names;
    for (int i = 0; i < 4; ++i)
        names << dng(QStringLiteral("flat%1_2856k.dng").arg(i), picture());
    MeasuredShading const expected = table(names);
    QString const shifted = dng("shifted_2856k.dng", picture([](double u, double) { return 1 + 0.04 * u; }));
    light.objectInPicture = true;
    camera->setLight(light);
    QString const object = dng("object_2856k.dng", picture());
    Outcome const run = shade(
        QStringList{"measure", "--json", "--format", "tuning", "-o", path("table.json"), object, shifted} +
        names);
    ASSERT_EQ(run.exitCode, kDone) << qPrintable(run.complaint);
    for (QJsonValue const& told : figuresOf(run)["pictures"].toArray())
        EXPECT_EQ(told["used"].toString(), names.contains(told["file"].toString()) ? "yes" : "no")
            << qPrintable(told["file"].toString());
    EXPECT_EQ(largestDifference(*simulator::readMeasuredShading(path("table.json"), &error), expected), 0);

    // Gains of red over green, the smallest 1, as those of the table.
    auto const tuning =
        QJsonDocument::fromJson(*files::read(path("table.tuning.json"), files::kMostText, &error));
    QJsonValue const lamp = tuning["lamps"].toArray()[0];
    std::vector<double> ratios;
    for (QJsonValue const& ratio : lamp["red_over_green"].toArray())
        ratios.push_back(ratio.toDouble());
    ASSERT_EQ(ratios.size(), 16U * 12);
    EXPECT_EQ(*std::min_element(ratios.begin(), ratios.end()), 1);
    auto const& gains = expected.illuminants[0].gains;
    EXPECT_NEAR(ratios.front() / ratios.back(),
                gains[0].front() / gains[1].front() / (gains[0].back() / gains[1].back()), 0.02);
}

TEST_F(Pictures, AreCheckedByExitCode) {
    struct {
        simulator::Light light;
        int exitCode;
        char const* told;
    } const rows[] = {{{.level = 1}, kDone, "160         20.0"}, // above black
                      {{.level = 0.02}, kTooDark, "Expose longer"},
                      {{.level = 8}, kClipped, "Expose shorter"},
                      {{.objectInPicture = true}, kNotFlat, "columns 2"},
                      {{.gradient = 0.4}, kNotFlat, "--turned"}};
    QString const good = dng("good.dng", picture());
    for (auto const& [lit, exitCode, told] : rows) {
        camera->setLight(lit);
        Outcome const run = shade({"check", dng("flat.dng", picture()), good});
        EXPECT_EQ(run.exitCode, exitCode) << qPrintable(run.output);
        EXPECT_TRUE(run.output.contains(told)) << qPrintable(run.output);
    }
}

TEST_F(Pictures, ThatCannotBeUsedAreNamedAndLeaveNothing) {
    QImage const image = picture();
    QString const good = dng("good_2856k.dng", image), table = path("table.json");
    QByteArray const bytes = *files::read(good, files::kMostText, &error);
    auto const write = [&](char const* name, QByteArray const& contents) {
        EXPECT_TRUE(files::replace(path(name), contents, &error));
        return path(name);
    };
    QImage coloured(64, 64, QImage::Format_RGB32);
    coloured.fill(Qt::red);
    ASSERT_TRUE(coloured.save(path("red_2856k.png")) && image.save(path("grey_2856k.png")));
    struct {
        QStringList words; ///< the file that is named first
        char const* told;
    } const rows[] = {
        {{write("cut_2856k.dng", bytes.left(bytes.size() / 2))}, "raw picture"},
        {{write("no_2856k.dng", "DNG")}, "raw picture"},
        {{dng("rgb_2856k.dng", image, {.photometric = 34892, .channels = 3})}, "no mosaic"},
        {{dng("black_2856k.dng", image, {.black = {-1}})}, "--black"},
        {{dng("small_2856k.dng", image.copy(0, 0, 480, 268)), good}, "unlike"},
        {{dng("unnamed.dng", image)}, "--light"},
        {{path("none_2856k.dng")}, "No such file"},
        {{write("long_2856k.bin", QByteArray(50 * 900, 'a')), "--raw", "50x900,8,RGGB", "--black", "1"},
         "16 times"},
        {{path("red_2856k.png")}, "greyscale"},
        {{path("grey_2856k.png")}, "--phase"},
        {{write("no_2856k.png", "PNG")}, "PNG"},
        {{write("no_2856k.tif", "II*")}, "TIFF"},
        {{write("cut_2856k.bin", QByteArray(999, 'a')), "--raw", "480x270,8,RGGB", "--black", "1"},
         "999 bytes"},
        {{good, "--black", "5000"}, "not above"},
        {{good, "--turned", path("none_2856k.dng")}, "none_2856k"},
    };
    for (auto const& [words, told] : rows) {
        SCOPED_TRACE(told);
        QStringList const pictures =
            words.size() > 1 && words[1] == good ? QStringList{words[1], words[0]} : words;
        Outcome const run =
            shade(QStringList{"measure", "-o", table, "--page", path("page.html")} + pictures);
        EXPECT_EQ(run.exitCode, kUnusable);
        EXPECT_TRUE(run.complaint.contains(told)) << qPrintable(run.complaint);
        EXPECT_TRUE(
            run.complaint.startsWith(QLatin1String(told) == "none_2856k" ? words[2] : words[0] + ": "))
            << qPrintable(run.complaint);
        EXPECT_EQ(run.complaint.count('\n'), 0);
    }
    EXPECT_EQ(shade({"measure", good, "-o", path("none/table.json")}).exitCode, kUnusable);
    EXPECT_EQ(shade({"measure", good, "-o", good}).exitCode, kUnusable);
    EXPECT_EQ(files::read(good, files::kMostText, &error), bytes);
    for (QStringList const& words : {QStringList{"measure", good},
                                     {"check"},
                                     {"check", good, "-o", table},
                                     {"measure", good, "--turned", "-o", table},
                                     {"compare", good}})
        EXPECT_TRUE(shade(words).complaint.contains("--help")) << qPrintable(words.join(' '));
    EXPECT_FALSE(QFile::exists(table) || QFile::exists(path("page.html")));
}
} // namespace
} // namespace shading
