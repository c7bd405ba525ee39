#include "simulator/files/whole_file.h"
#include "simulator/host/report/evenness.h"
#include "simulator/host/run/verdict.h"

#include <QJsonDocument>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <gtest/gtest.h>
#include <thread>

namespace pictara {
namespace {
// One structure, three forms, and a name stays a text in all of them.
TEST(Certificate, TellsTheSameInAllFormsWhateverNamesSay) {
    auto const nasty = QStringLiteral("<script>\"A\" & 'B' %1 {{run}} <!--each tables--></script>");
    Certificate certificate{"calibration", "marginal", nasty, Verdict::Marginal};
    certificate.tables = {{nasty, {{"Quality", "limit", "verdict"}, {nasty, "1.50 ± 0.5", "marginal"}}}};
    certificate.facts = {{"Sensor", nasty}, {"Serial number", {}}};
    certificate.pictures = {{QImage(8, 8, QImage::Format_RGB32), nasty, "picture.png"}};
    certificate.maps = {{nasty, " %", 2, {1, 2, 3, 4}, -4, 4}};
    certificate.profiles = {{"ratio_percent", nasty, {{"line", "red-green", {-1, 0, 2.5}}}}};
    certificate.figures["file"] = nasty;

    QXmlStreamReader reader(certificatePage(certificate));
    QString text, verdicts;
    while (!reader.atEnd()) {
        (void)reader.readNext();
        EXPECT_NE(reader.name(), "script") << "a name became an element";
        if (reader.isStartElement() && reader.attributes().value("class") == "marginal")
            verdicts += reader.name();
        text += reader.text();
    }
    EXPECT_FALSE(reader.hasError()) << qPrintable(reader.errorString());
    EXPECT_EQ(text.count(nasty), 7);
    EXPECT_EQ(verdicts, "btd") << "badge and cell are coloured";
    EXPECT_FALSE(text.contains("Serial number")) << "nothing is told of it";

    QString const lines = certificateText(certificate);
    EXPECT_TRUE(lines.startsWith("result: marginal\ncause: " + nasty + '\n')) << qPrintable(lines);
    EXPECT_TRUE(lines.contains(nasty + "  1.50 ± 0.5  marginal\n")) << qPrintable(lines);
    EXPECT_TRUE(lines.endsWith("\nSensor: " + nasty + '\n')) << qPrintable(lines);

    QJsonObject const json = QJsonDocument::fromJson(certificateJson(certificate)).object();
    EXPECT_EQ(json["cause"].toString(), nasty);
    EXPECT_EQ(json["file"].toString(), nasty);
    EXPECT_EQ(json["profiles"]["ratio_percent"]["line"][2].toDouble(), 2.5);
}

// A flat picture whose luminance falls to that of the corners with the square of the radius.
Evenness picture(double corners, QString const& rating = "green") {
    Evenness state{.uniformity = 0.5, .limit = 2, .rating = rating, .blocks = {}, .picture = {}};
    state.picture = QImage(40, 30, QImage::Format_RGB32);
    state.blocks.columns = 8;
    state.blocks.rows = 6;
    state.blocks.centreLuminance = 1;
    for (int row = 0; row < 6; ++row)
        for (int column = 0; column < 8; ++column) {
            double const x = column - 3.5, y = row - 2.5; // blocks are square, 5 pixels wide
            double const light = 1 - (1 - corners) * (x * x + y * y) / 25;
            state.blocks.means.push_back({light, light, light});
        }
    state.blocks.deviations.assign(48, 0.25);
    return state;
}

TEST(Certificate, TheFalloffThatWasAskedForIsNoError) {
    struct {
        double corners;
        std::optional<double> falloff;
        char const* rating;
        Verdict verdict;
        double error; // percent
    } const rows[] = {
        {0.75, 0.75, "green", Verdict::Pass, 0},
        {0.75, 1.0, "yellow", Verdict::Fail, 18.5}, // of the corner blocks' 0.74 squared radii
        {1.0, 0.75, "green", Verdict::Fail, 100 / 0.815 - 100},
        {0.75, std::nullopt, "green", Verdict::Pass, 18.5}, // not judged
    };
    for (auto const& row : rows) {
        Certificate certificate;
        tellEvenness({picture(0.5), picture(row.corners, row.rating)}, {row.falloff, 5}, certificate);
        QJsonObject const after = certificate.figures["corrected"].toObject();
        EXPECT_EQ(certificate.verdict, row.verdict) << row.corners << ' ' << row.rating;
        EXPECT_NEAR(after["luminance_error_largest_against_target_percent"].toDouble(), row.error, 1e-4);
        EXPECT_NEAR(after["corner_to_centre_percent"].toDouble(), 100 - (1 - row.corners) * 74, 1e-4);
    }
}

// Maps of before and after can be told apart by their colours alone, and what lies below from what lies
// above.
TEST(Certificate, BothStatesShareTheColoursOfTheirMaps) {
    Certificate certificate;
    EvennessStates states{picture(0.5), picture(1)};
    states.after->blocks.means[0] = {1.2, 1, 0.9};
    tellEvenness(states, {1.0, 5}, certificate);
    tellRepeatability({0.4, 0.5, 0.6}, certificate);
    ASSERT_EQ(certificate.maps.size(), 4U);
    EXPECT_EQ(certificate.maps[2].high, certificate.maps[3].high);
    EXPECT_NEAR(certificate.maps[2].high, 37, 1e-9);
    EXPECT_NEAR(certificate.figures["repeatability"].toObject()["standard_deviation_ab"].toDouble(), 0.1,
                1e-9);
    std::vector<double> const& red = certificate.profiles.at(0).lines.at(1).values;
    EXPECT_TRUE(red.front() > 19 && red.back() < 0) << "from corner to corner, against the mean";

    QByteArray const cells = drawing(HeatMap{{}, {}, 3, {-4, 0, 4}, -4, 4})["cells"].toString().toLatin1();
    QImage const map = QImage::fromData(QByteArray::fromBase64(cells.mid(cells.indexOf(',') + 1)));
    ASSERT_EQ(map.size(), QSize(3, 1));
    QColor const below = map.pixelColor(0, 0), even = map.pixelColor(1, 0), above = map.pixelColor(2, 0);
    EXPECT_TRUE(below.blue() > below.red() + 100 && above.red() > above.blue() + 100);
    EXPECT_GT(even.lightness(), std::max(below.lightness(), above.lightness()) + 50);
}

TEST(BoardTable, GetsALineABoardAlsoFromProgramsAtTheSameTime) {
    QTemporaryDir const folder;
    QString const file = folder.filePath("boards.csv");
    Certificate board{"calibration", "pass"};
    board.figures["board"] =
        QJsonObject{{"serial_number", "A, \"B\""}, {"after_ab", 0.37}, {"before_ab", {}}};
    auto const append = [&] {
        QString error;
        for (int i = 0; i < 3; ++i)
            EXPECT_TRUE(appendBoard(board, file, &error)) << qPrintable(error);
    };
    std::thread other(append);
    append();
    other.join();
    QByteArray const head =
        "serial_number,date,sensor,label,lights_K,before_ab,after_ab,verdict,eeprom,results_file\n";
    QByteArray const line = "\"A, \"\"B\"\"\",,,,,,0.37,,,\n";
    EXPECT_EQ(files::read(file, files::kMostText, nullptr), head + line.repeated(6));
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList("boards.csv"));

    QString error;
    ASSERT_TRUE(files::replace(file, head.chopped(1), &error)); // an editor left the line open
    EXPECT_TRUE(appendBoard(board, file, &error));
    EXPECT_EQ(files::read(file, files::kMostText, nullptr), head + line);
}

TEST(Refusal, IsMarkedAsThePictureShowsTheArray) {
    QImage picture(40, 20, QImage::Format_RGB32);
    picture.fill(Qt::gray);
    for (uint32_t orientation : {0U, 1U, 2U, 3U}) {
        QImage const marked = markedRefusal(picture, QStringLiteral("4 x 2: 0:0-1,3-3 1:2-2"), orientation);
        for (int block = 0; block < 8; ++block) {
            int const column = block % 4, row = block / 4;
            int const x = 10 * ((orientation & 1) != 0 ? 3 - column : column) + 5;
            int const y = 10 * ((orientation & 2) != 0 ? 1 - row : row) + 5;
            bool const isRefused = row == 0 ? column != 2 : column == 2;
            EXPECT_EQ(marked.pixel(x, y) != picture.pixel(x, y), isRefused) << orientation << ' ' << block;
        }
    }
    EXPECT_EQ(markedRefusal(picture, {}, 0), picture) << "the whole picture is refused";
}
} // namespace
} // namespace pictara
