#include "simulator/host/report/picture_detail.h"
#include "simulator/host/report/report_figures.h"
#include "simulator/host/report/run_report.h"
#include "simulator/host/run/refusal.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <array>
#include <gtest/gtest.h>

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

TEST(Report, EscapesNamesAndTellsTheTablesUnderTheLightsAndWhatIsMissing) {
    QTemporaryDir const folder;
    OutputFolder output(folder.path());
    QString const nasty = QString::fromLatin1(kNasty);
    RunReport report{
        .run = QStringLiteral("calibration"),
        .result = QStringLiteral("calibrated"),
        .cause = nasty,
        .tables = {{QStringLiteral("eeprom"),
                    nasty,
                    {{QStringLiteral("empty"), QStringLiteral("empty"), QString()},
                     {QStringLiteral("file"), QStringLiteral("file"), nasty}}}},
        .before = {},
        .after = {},
        .refused = {},
        .refusedCaption = {},
        .lights = {{2850, 7.5, {1.25, std::nullopt}, 0.5}, {6500, 6.5, {2.25, 0.75}, std::nullopt}},
        .registers = {{3, 0x3600, nasty, 17}}};
    writeReport(report, output);
    EXPECT_EQ(output.written(), QStringList({"report.html", "summary.json"}));
    QByteArray const page = contentsOf(folder.filePath("report.html"));
    QString const text = textOf(page);
    EXPECT_EQ(text.count(nasty), 4);
    EXPECT_FALSE(page.contains("<script")) << "a name became an element";
    EXPECT_FALSE(page.contains("/></t")) << "browsers take an empty cell in this form for an open one";
    for (char const* told : {"2850 K", "6500 K", "7.50", "1.25", "0.75", "table 2 alone", "-"})
        EXPECT_TRUE(text.contains(QLatin1String(told))) << told;
    QJsonObject const json = QJsonDocument::fromJson(contentsOf(folder.filePath("summary.json"))).object();
    EXPECT_EQ(json["eeprom"].toObject()["file"].toString(), nasty);
    EXPECT_EQ(json["lights"][0]["table_alone_ab"][0].toDouble(), 1.25);
    EXPECT_TRUE(json["lights"][0]["table_alone_ab"][1].isNull());
    EXPECT_TRUE(json["lights"][1]["blended_ab"].isNull());
    EXPECT_TRUE(json["corrected"].isNull());
}

TEST(Report, ResidualsAreSignedAndHaveTheirZeroWhereTheyShould) {
    std::array<Colour, 3> const row{Colour{0.5, 0.5, 0.5}, {1, 1, 1}, {0.55, 0.5, 0.5}};
    LightGrid light{3, 3, {}};
    for (int i = 0; i < 3; ++i)
        light.cells.insert(light.cells.end(), row.begin(), row.end());
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
} // namespace
} // namespace pictara
