#include "simulator/host/report/evenness.h"
#include "simulator/host/run/verdict.h"

#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <gtest/gtest.h>
#include <numeric>

namespace pictara {
namespace {
constexpr char kNasty[] = "<script>\"A\" & 'B' %1 {{run}} <!--each sections--></script>";

QByteArray contentsOf(QString const& name) {
    QFile file(name);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(name);
    return file.readAll();
}

// All text of a page, which must be well-formed and show nothing from elsewhere.
QString textOf(QByteArray const& page) {
    QString text;
    for (char const* outside : {"http:", "https:", "url(", "@import"})
        EXPECT_FALSE(page.contains(outside)) << outside;
    QXmlStreamReader reader(page);
    while (!reader.atEnd()) {
        (void)reader.readNext();
        text += reader.text();
        for (char const* attribute : {"src", "srcset", "href"}) {
            auto const source = reader.attributes().value(QLatin1String(attribute));
            EXPECT_TRUE(source.isEmpty() || source.startsWith("data:")) << source.toString().toStdString();
        }
    }
    EXPECT_FALSE(reader.hasError()) << qPrintable(reader.errorString());
    return text;
}

// One structure, three forms: each tells every fact, as its reader needs it.
TEST(Report, TellsTheSameInAllFormsWhateverNamesSay) {
    QTemporaryDir const folder;
    OutputFolder output(folder.path());
    QString const nasty = QString::fromLatin1(kNasty);
    Section states{{}, "Figures", Layout::States, {{"figure_ab", "figure", {1.23456789, {}}, " u", 2}}};
    states.profiles = {{"ratio_percent", nasty, {{"line", {-1, 0, 2.5}}, {"flat", {0, 0, 0}}}}};
    states.pictures = {{QImage(8, 8, QImage::Format_RGB32), nasty, "picture.png"}};
    states.maps = {{"map", " %", 2, {1, 2, 3, 4}, -4, 4}};
    Section eeprom{"eeprom", nasty, Layout::One}, lights{"lights", "Lights", Layout::Columns},
        registers{"registers", "Registers", Layout::Rows};
    eeprom.facts = {{"empty", "empty", {QString()}}, {"file", "file", {nasty}}, {"is_on", {}, {true}}};
    lights.facts = {{"kelvin", "light of", {2850, 6500}, " K"}};
    registers.facts = {{"name", "name", {nasty}}, {"value", "value", {17}}};
    writeReport({"calibration", "calibrated", nasty, {states, eeprom, lights, registers}}, output);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files),
              QStringList({"picture.png", "report.html", "summary.json", "summary.txt"}));

    QByteArray const page = contentsOf(folder.filePath("report.html"));
    QString const text = textOf(page);
    EXPECT_EQ(text.count(nasty), 6);
    EXPECT_FALSE(page.contains("<script")) << "a name became an element";
    for (char const* told : {"1.23 u", "-", "2850 K", "6500 K", "17", "-4 %", "flat"})
        EXPECT_TRUE(text.contains(QLatin1String(told))) << told;
    // From the left to the right border of the axes, the largest value above the others.
    QStringList const points =
        QString::fromUtf8(page).section("points=\"", 1).section('"', 0, 0).split(' ', Qt::SkipEmptyParts);
    ASSERT_EQ(points.size(), 3);
    EXPECT_TRUE(points[0].startsWith("46.0,") && points[2].startsWith("430.0,")) << points[0].toStdString();
    EXPECT_LT(points[2].section(',', 1).toDouble(), points[1].section(',', 1).toDouble());

    QJsonObject const json = QJsonDocument::fromJson(contentsOf(folder.filePath("summary.json"))).object();
    EXPECT_EQ(json["cause"].toString(), nasty);
    EXPECT_EQ(json["uncorrected"]["figure_ab"].toDouble(), 1.23457);
    EXPECT_TRUE(json["corrected"].isNull()) << "what was not measured";
    EXPECT_EQ(json["eeprom"]["file"].toString(), nasty);
    EXPECT_TRUE(json["eeprom"]["is_on"].toBool());
    EXPECT_EQ(json["lights"][1]["kelvin"].toInt(), 6500);
    EXPECT_EQ(json["registers"][0]["value"].toInt(), 17);

    QByteArray const summary = contentsOf(folder.filePath("summary.txt"));
    for (char const* line : {"result: calibrated\n", "figure uncorrected: 1.23 u\n", "figure corrected: -\n"})
        EXPECT_TRUE(summary.contains(line)) << line;
    EXPECT_TRUE(summary.contains("light of:                        2850 K  6500 K\n")) << summary.data();
    EXPECT_TRUE(summary.contains("value 17\n")) << summary.data();
}

// Maps of before and after can be told apart by their colours alone.
TEST(Report, ResidualsAreSignedAndBothStatesShareTheColoursOfTheirMaps) {
    Evenness state;
    state.picture = QImage(8, 8, QImage::Format_RGB32);
    state.blocks.columns = 3;
    state.blocks.centreLuminance = 1;
    state.blocks.means.assign(9, {1, 1, 1});
    state.blocks.means[0] = {0.5, 0.5, 0.5};
    state.blocks.means[4] = {1.01, 1, 1};
    state.blocks.means[8] = {1.1, 1, 1};
    EvennessStates states{state, state};
    states[1]->blocks.means[0] = {0.9, 0.9, 0.9};
    std::vector<Section> const sections = evennessSections(states);
    std::vector<HeatMap> const& maps = sections.at(2).maps;
    EXPECT_NEAR(maps.at(2).values.at(0), -50, 1e-9);
    EXPECT_NEAR(maps.at(2).values.at(1), 0, 1e-9);
    EXPECT_TRUE(maps.at(2).high == 50 && maps.at(5).high == 50);
    std::vector<double> const& ratios = maps.at(0).values;
    EXPECT_NEAR(std::accumulate(ratios.begin(), ratios.end(), 0.0), 0, 1e-9);
    EXPECT_TRUE(ratios[0] < 0 && 0 < ratios[8]);
    std::vector<double> const& line = sections.at(3).profiles.at(0).lines.at(0).values;
    EXPECT_EQ(line, (std::vector<double>{ratios[0], ratios[4], ratios[8]})) << "from corner to corner";
}

TEST(Report, MapsTellWhatLiesBelowFromWhatLiesAbove) {
    QByteArray const cells = drawing(HeatMap{{}, {}, 3, {-4, 0, 4}, -4, 4})["cells"].toString().toLatin1();
    QImage const map = QImage::fromData(QByteArray::fromBase64(cells.mid(cells.indexOf(',') + 1)));
    ASSERT_EQ(map.size(), QSize(3, 1));
    QColor const below = map.pixelColor(0, 0), even = map.pixelColor(1, 0), above = map.pixelColor(2, 0);
    EXPECT_TRUE(below.blue() > below.red() + 100 && above.red() > above.blue() + 100);
    EXPECT_GT(even.lightness(), std::max(below.lightness(), above.lightness()) + 50);
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
