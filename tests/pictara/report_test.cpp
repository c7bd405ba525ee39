#include "simulator/host/charts.h"
#include "simulator/host/picture_detail.h"
#include "simulator/host/refusal.h"
#include "simulator/host/report_figures.h"
#include "simulator/host/run_report.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <gtest/gtest.h>
#include <numeric>

namespace pictara {
namespace {

constexpr char kNasty[] = "<script>\"A\" & 'B' %1</script>";

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

LightGrid gridOf(int columns, int rows, std::function<Colour(int, int)> const& colour) {
    LightGrid grid{columns, rows, {}};
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column)
            grid.cells.push_back(colour(column, row));
    return grid;
}

Evenness someEvenness() {
    LightGrid const light = gridOf(11, 11, [](int column, int row) {
        return Colour{0.5 - 0.01 * column, 0.5, 0.4 + 0.01 * row};
    });
    DisplayBlocks const blocks{.columns = 11, .rows = 11, .deviations = std::vector<double>(121, 0.5)};
    QImage picture(32, 18, QImage::Format_RGB32);
    picture.fill(Qt::gray);
    return {.uniformity = 1.25,
            .limit = 1,
            .rating = QStringLiteral("yellow"),
            .blocks = {},
            .picture = picture,
            .detail = {.maps = {light, light},
                       .trueMaps = {light, light},
                       .coarseLight = light,
                       .coarseColour = blocks,
                       .shown = blocks,
                       .trueShown = blocks,
                       .trueBlocks = {}}};
}

TEST(Report, IsWellFormedSelfContainedAndEscapesNames) {
    QTemporaryDir const folder;
    OutputFolder output(folder.path());
    RunReport report{
        .run = QStringLiteral("calibration"),
        .result = QStringLiteral("calibrated"),
        .cause = QString::fromLatin1(kNasty),
        .tables = {{QStringLiteral("eeprom"),
                    QString::fromLatin1(kNasty),
                    {{QStringLiteral("empty"), QStringLiteral("empty"), QString()},
                     {QStringLiteral("file"), QStringLiteral("file"), QString::fromLatin1(kNasty)}}}},
        .before = someEvenness(),
        .after = someEvenness(),
        .refused = {},
        .refusedCaption = {},
        .lights = {},
        .registers = {{3, 0x3600, QString::fromLatin1(kNasty), 17}}};
    writeReport(report, output);
    EXPECT_EQ(output.written(), QStringList({"report.html", "summary.json"}));
    QByteArray const page = contentsOf(folder.filePath("report.html"));
    EXPECT_EQ(textOf(page).count(QLatin1String(kNasty)), 4);
    EXPECT_FALSE(page.contains("<script")) << "a name became an element";
    EXPECT_FALSE(page.contains("/></t")) << "browsers take an empty cell in this form for an open one";
    for (char const* outside : {"http:", "https:", "url(", "@import"})
        EXPECT_FALSE(page.contains(outside)) << outside;
    EXPECT_TRUE(QRegularExpression(QStringLiteral("(src|srcset)=\"(?!data:)"))
                    .match(QString::fromLatin1(page))
                    .captured()
                    .isEmpty());
    QJsonObject const json = QJsonDocument::fromJson(contentsOf(folder.filePath("summary.json"))).object();
    EXPECT_EQ(json["eeprom"].toObject()["file"].toString(), QLatin1String(kNasty));
    EXPECT_EQ(json["corrected"].toObject()["dialog_colour_deviation_ab"].toDouble(), 1.25);
}

TEST(Report, TellsTheTablesUnderTheLightsAndWhatIsMissing) {
    QTemporaryDir const folder;
    OutputFolder output(folder.path());
    RunReport report{
        .run = QStringLiteral("calibration"),
        .result = {},
        .cause = {},
        .tables = {},
        .before = {},
        .after = {},
        .refused = {},
        .refusedCaption = {},
        .lights = {{2850, 7.5, {1.25, std::nullopt}, 0.5}, {6500, 6.5, {2.25, 0.75}, std::nullopt}},
        .registers = {}};
    writeReport(report, output);
    QString const text = textOf(contentsOf(folder.filePath("report.html")));
    for (char const* told : {"2850 K", "6500 K", "7.50", "1.25", "0.75", "table 2 alone", "-"})
        EXPECT_TRUE(text.contains(QLatin1String(told))) << told;
    QJsonObject const json = QJsonDocument::fromJson(contentsOf(folder.filePath("summary.json"))).object();
    EXPECT_EQ(json["lights"][0]["table_alone_ab"][0].toDouble(), 1.25);
    EXPECT_TRUE(json["lights"][0]["table_alone_ab"][1].isNull());
    EXPECT_TRUE(json["lights"][1]["blended_ab"].isNull());
    EXPECT_TRUE(json["corrected"].isNull());
}

TEST(Report, ResidualsAreSignedAndHaveTheirZeroWhereTheyShould) {
    LightGrid const light = gridOf(3, 3, [](int column, int) {
        double const green = column == 1 ? 1.0 : 0.5;
        return Colour{green * (column == 2 ? 1.1 : 1), green, green};
    });
    std::vector<double> const residual = luminanceResidual(light);
    EXPECT_EQ(residual[4], 0);
    EXPECT_NEAR(residual[3], -50, 1e-9);
    std::vector<double> const ratio = ratioResidual(light, 0);
    EXPECT_NEAR(ratio[0] + ratio[1] + ratio[2], 0, 1e-9);
    EXPECT_GT(ratio[2], 0);
    EXPECT_LT(ratio[0], 0);
    EXPECT_EQ(diagonal({1, 2, 3, 4, 5, 6, 7, 8, 9}, 3, 3), (std::vector<double>{1, 5, 9}));
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

TEST(Report, AChartHasTheBackgroundOfItsPage) {
    if (!hasCharts())
        GTEST_SKIP();
    std::vector<double> slope(32 * 24);
    std::iota(slope.begin(), slope.end(), -300.0);
    for (bool const isSigned : {true, false})
        for (auto const& [scheme, background] :
             {std::pair{Scheme::Light, 0xFFFFFFFF}, std::pair{Scheme::Dark, 0xFF191921}}) {
            HeatMap const map{.title = "slope",
                              .unit = "%",
                              .columns = 32,
                              .rows = 24,
                              .values = slope,
                              .isSigned = isSigned};
            QImage const chart = drawChart(map, scheme);
            EXPECT_EQ(chart.pixel(1, 1), background) << isSigned;
            EXPECT_EQ(chart.format(), QImage::Format_Indexed8);
        }
}

TEST(Report, EveryBlockFallsIntoABin) {
    for (double const largest : {0.0, 0.3, 1.0, 7.77}) {
        std::vector<double> const deviations{0, largest / 3, largest};
        DeviationBins const bins = deviationBins(deviations);
        EXPECT_EQ(std::accumulate(bins.counts.begin(), bins.counts.end(), 0), 3) << largest;
        EXPECT_LE(bins.counts.size(), 45U);
        EXPECT_GE(bins.counts.back(), 1);
    }
}

} // namespace
} // namespace pictara
