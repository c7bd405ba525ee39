#include "simulator/host/report/evenness.h"
#include "simulator/host/run/verdict.h"

#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <gtest/gtest.h>

namespace pictara {
namespace {
constexpr char kNasty[] = "<script>\"A\" & 'B' %1 {{run}} <!--each sections--></script>";

QByteArray contentsOf(QString const& name) {
    QFile file(name);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(name);
    return file.readAll();
}

// All text of a page, which must be well-formed.
QString textOf(QByteArray const& page) {
    QString text;
    QXmlStreamReader reader(page);
    while (!reader.atEnd())
        if (reader.readNext() == QXmlStreamReader::Characters)
            text += reader.text();
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
    states.maps = {{"map", " %", 2, {1, 2, 3, 4}, -4, 4}};
    writeReport(
        {"calibration",
         "calibrated",
         nasty,
         {states,
          {"eeprom",
           nasty,
           Layout::One,
           {{"empty", "empty", {QString()}}, {"file", "file", {nasty}}, {"is_on", {}, {true}}}},
          {"lights", "Lights", Layout::Columns, {{"kelvin", "light of", {2850, 6500}, " K"}}},
          {"registers", "Registers", Layout::Rows, {{"name", "name", {nasty}}, {"value", "value", {17}}}}}},
        output);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files),
              QStringList({"report.html", "summary.json", "summary.txt"}));

    QByteArray const page = contentsOf(folder.filePath("report.html"));
    QString const text = textOf(page);
    EXPECT_EQ(text.count(nasty), 5);
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

TEST(Report, ResidualsAreSignedAndHaveTheirZeroWhereTheyShould) {
    BlockReport blocks;
    blocks.columns = 3;
    blocks.means = {{0.5, 0.5, 0.5}, {1, 1, 1}, {0.55, 0.5, 0.5}};
    blocks.centreLuminance = 1;
    std::vector<double> const residual = luminanceResidual(blocks);
    EXPECT_NEAR(residual[0], -50, 1e-9);
    EXPECT_NEAR(residual[1], 0, 1e-9);
    std::vector<double> const ratio = ratioResidual(blocks, 0);
    EXPECT_NEAR(ratio[0] + ratio[1] + ratio[2], 0, 1e-9);
    EXPECT_GT(ratio[2], 0);
    EXPECT_EQ(diagonal({1, 2, 3, 4, 5, 6, 7, 8, 9}, 3), (std::vector<double>{1, 5, 9}));
}

// Maps of before and after can be told apart by their colours alone.
TEST(Report, StatesShareTheColoursOfTheirMaps) {
    Evenness state;
    state.picture = QImage(8, 8, QImage::Format_RGB32);
    state.blocks.columns = 2;
    state.blocks.centreLuminance = 1;
    state.blocks.means = {{0.5, 0.5, 0.5}, {1, 1, 1}};
    EvennessStates states{state, state};
    states[1]->blocks.means = {{0.9, 0.9, 0.9}, {1, 1, 1}};
    std::vector<HeatMap> const maps = evennessSections(states).at(2).maps;
    EXPECT_TRUE(maps.at(2).high == 50 && maps.at(5).high == 50);
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
