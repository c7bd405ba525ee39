#include "simulator/host/report/evenness.h"
#include "simulator/host/run/verdict.h"

#include <QJsonDocument>
#include <QXmlStreamReader>
#include <gtest/gtest.h>
#include <numeric>

namespace pictara {
namespace {
// One structure, three forms: each tells every figure, and a name stays a text in all of them.
TEST(Report, TellsTheSameInAllFormsWhateverNamesSay) {
    auto const nasty = QStringLiteral("<script>\"A\" & 'B' %1 {{run}} <!--each sections--></script>");
    Section states{{}, "Figures", Layout::States, {{"figure_ab", "figure", {1.23456789, {}}, " u", 2}}};
    states.profiles = {{"ratio_percent", nasty, {{"line", {-1, 0, 2.5}}}}};
    states.pictures = {{QImage(8, 8, QImage::Format_RGB32), nasty, "picture.png"}};
    Section eeprom{"eeprom", nasty, Layout::One, {{"file", "file", {nasty}}, {"is_on", {}, {true}}}};
    Section lights{"lights", "Lights", Layout::Columns, {{"kelvin", "light of", {2850, 6500}, " K"}}};
    Section registers{"registers", "Registers", Layout::Rows, {{"name", "name", {nasty}}}};
    Report const report{"calibration", "calibrated", nasty, {states, eeprom, lights, registers}};

    QXmlStreamReader reader(reportPage(report));
    QString text;
    while (!reader.atEnd()) {
        (void)reader.readNext();
        EXPECT_NE(reader.name(), "script") << "a name became an element";
        text += reader.text();
    }
    EXPECT_FALSE(reader.hasError()) << qPrintable(reader.errorString());
    EXPECT_EQ(text.count(nasty), 6);
    for (char const* told : {"1.23 u", "-", "2850 K", "6500 K"})
        EXPECT_TRUE(text.contains(told)) << told;

    QJsonObject const json = QJsonDocument::fromJson(reportJson(report)).object();
    EXPECT_EQ(json["cause"].toString(), nasty);
    EXPECT_EQ(json["uncorrected"]["figure_ab"].toDouble(), 1.23457);
    EXPECT_TRUE(json["corrected"].isNull()) << "what was not measured";
    EXPECT_EQ(json["eeprom"].toObject(), (QJsonObject{{"file", nasty}, {"is_on", true}}));
    EXPECT_EQ(json["lights"][1]["kelvin"].toInt(), 6500);
    EXPECT_EQ(json["registers"][0]["name"].toString(), nasty);

    QString const summary = reportText(report);
    for (char const* line : {"result: calibrated\n", "figure uncorrected: 1.23 u\n", "figure corrected: -\n",
                             "light of:                        2850 K  6500 K\n"})
        EXPECT_TRUE(summary.contains(line)) << summary.toStdString();
}

// Maps of before and after can be told apart by their colours alone.
TEST(Report, ResidualsAreSignedAndBothStatesShareTheColoursOfTheirMaps) {
    Evenness before, after;
    before.picture = QImage(8, 8, QImage::Format_RGB32);
    before.blocks.columns = 3;
    before.blocks.centreLuminance = 1;
    before.blocks.means.assign(9, {1, 1, 1});
    before.blocks.means[0] = {0.5, 0.5, 0.5};
    before.blocks.means[4] = {1.01, 1, 1};
    before.blocks.means[8] = {1.1, 1, 1};
    after = before;
    after.blocks.means[0] = {0.9, 0.9, 0.9};
    std::vector<Section> const sections = evennessSections({before, after});
    std::vector<HeatMap> const& maps = sections.at(2).maps;
    EXPECT_NEAR(maps.at(2).values.at(0), -50, 1e-9);
    EXPECT_NEAR(maps.at(2).values.at(1), 0, 1e-9);
    EXPECT_TRUE(maps.at(2).high == 50 && maps.at(5).high == 50);
    std::vector<double> const& ratios = maps.at(0).values;
    EXPECT_NEAR(std::accumulate(ratios.begin(), ratios.end(), 0.0), 0, 1e-9);
    EXPECT_TRUE(ratios[0] < 0 && 0 < ratios[8]);
    EXPECT_EQ(sections.at(3).profiles.at(0).lines.at(0).values,
              (std::vector<double>{ratios[0], ratios[4], ratios[8]}))
        << "from corner to corner";
}

TEST(Refusal, IsMarkedAsThePictureShowsTheArray) {
    QImage picture(40, 20, QImage::Format_RGB32);
    picture.fill(Qt::gray);
    for (uint32_t orientation : {0U, 1U, 2U, 3U}) {
        QImage const marked = markedRefusal(picture, QStringLiteral("4 x 2: 0:0-1,3-3 1:2-2"), orientation);
        std::string refused; // row by row as the array lies
        for (int row : {0, 1})
            for (int column : {0, 1, 2, 3}) {
                QPoint const middle(10 * ((orientation & 1) != 0 ? 3 - column : column) + 5,
                                    10 * ((orientation & 2) != 0 ? 1 - row : row) + 5);
                refused += marked.pixel(middle) != picture.pixel(middle) ? 'x' : '.';
            }
        EXPECT_EQ(refused, "xx.x..x.") << orientation;
    }
    EXPECT_EQ(markedRefusal(picture, {}, 0), picture) << "the whole picture is refused";
}
} // namespace
} // namespace pictara
