#include "tests/support/camera_under_test.h"

#include <QRegularExpression>
#include <gtest/gtest.h>

using namespace simulator;

namespace {

struct Fault {
    char const* content;
    char const* message; ///< the whole of it, with file and place
};

// Each row changes the default profile.
constexpr Fault kProfileFaults[] = {
    {R"({"base": "poly-12bit", "kind": )", "p.json: line 1: "},
    {R"([1])", "p.json: an object is expected"},
    {R"({"base": "p"})", "p.json: base: p.json: base: "},
    {R"({"sensorName": "X"})", "p.json: the key \"fileNamePart\" is missing"},
    {R"({"base": "poly-12bit", "optics": {"lens": {"cornerAngle": null}}})",
     "p.json: optics.lens: the key \"cornerAngle\" is missing"},
    {R"({"base": "poly-12bit", "systemOnChip": 1})", "p.json: systemOnChip: true or false is expected"},
    {R"({"base": "poly-12bit", "array": {"orientation": 4}})",
     "p.json: array.orientation: 4 lies outside 0 to 3"},
    {R"({"base": "poly-12bit", "array": {"width": 641}})", "p.json: array: width and height must be even"},
    {R"({"base": "poly-12bit", "readOut": {"format": "raw8"}})",
     "p.json: layout.sampleBytes: the read-out delivers samples of another size"},
    {R"({"base": "poly-12bit", "kind": 7})", "p.json: layout.kind: 200 differs from the sensor's 7"},
    {R"({"base": "poly-12bit", "layout": {"correction": {"originRow": {"id": 1}}}})",
     "p.json: layout.correction.originRow: there is no 16-bit register at id 1, address 0x3784"},
    {R"({"base": "poly-12bit", "registers": {"more": [{"name": "A", "address": 1}, {"name": "A", "address": 2}]}})",
     "p.json: registers.more[1]: the register \"A\" is there twice"},
    {R"({"base": "poly-12bit", "registers": {"more": [{"name": "A", "address": "0x3780"}]}})",
     "p.json: registers.more[0]: another register lies at the address of \"A\""},
    {R"({"base": "poly-12bit", "registers": {"more": [{"name": "A", "address": "0x3g"}]}})",
     "p.json: registers.more[0].address: a whole number is expected"},
    {R"({"base": "poly-12bit", "registers": {"more": [{"name": "A", "address": 1024, "addressSpace": 1}]}})",
     "p.json: registers.more[0].address: 1024 lies outside 0 to 1023"},
    {R"({"base": "poly-12bit",
        "registers": {"more": [{"name": "A", "address": 1, "dataWidth": 8, "bitfields": {"B": 256}}]}})",
     "p.json: registers.more[0].bitfields.B: 256 lies outside 1 to 255"},
    {R"({"base": "poly-12bit", "optics": {"colourShading": []}})",
     "p.json: optics.colourShading: at least one illuminant is needed"},
    {R"({"base": "poly-12bit", "optics": {"colourMatrix": [1, 0, 0, 0, 1, 0, 0, 0.5, 1]}})",
     "p.json: optics.colourMatrix: row 3 must sum to 1"},
    {R"({"base": "poly-12bit", "eeprom": {"kind": "paper"}})",
     "p.json: eeprom.kind: \"paper\" is none of none, serial, bridge, bus-master"},
    {R"({"base": "poly-12bit", "eeprom": {"kind": "bridge"}})",
     "p.json: eeprom.kind: there is no register \"IO_EEPROM_I2C_ADDR\""},
    {R"({"base": "poly-12bit", "layout": {"correction": {"banks": []}}})",
     "p.json: layout.correction.banks: at least one bank is needed"},
    {R"({"base": "kind72-1", "tableChoice": {"temperatures": ["FRAME_COUNT", "FRAME_COUNT", "FRAME_COUNT"]}})",
     "p.json: tableChoice.temperatures[0]: the layout tells another register"},
    {R"({"base": "kind68-1", "tableChoice": {"automatic": {"register": "NONE"}}})",
     "p.json: tableChoice.automatic.register: there is no register \"NONE\""},
    {R"({"base": "kind68-1", "tableChoice": null})", "p.json: the key \"tableChoice\" is missing"},
    {R"({"base": ["poly-12bit", "groups/nowhere"]})", "p.json: base: nowhere.json: cannot be read"},
    {R"({"base": "poly-12bit", "registers": {"more":
        [{"name": "A_{w}", "address": 1, "stride": 1, "indices": [{"letter": "w", "words": []}]}]}})",
     "p.json: registers.more[0].indices[0].words: at least one word is needed"},
};

TEST(MalformedFiles, ProfileFaultIsNamedWithItsPlace) {
    for (Fault const& row : kProfileFaults) {
        TestFiles const files;
        QString error;
        EXPECT_FALSE(SimulatedCamera::open(files.write(QStringLiteral("p.json"), row.content), &error))
            << row.content;
        error.remove(QRegularExpression(QStringLiteral("/[^ ]*/"))); // the folder of a file that is not there
        EXPECT_TRUE(error.startsWith(QLatin1String(row.message)))
            << qPrintable(error) << "\nfor " << row.message;
    }
}

QByteArray repeated(char const* item, int times) {
    QByteArray items = item;
    for (int i = 1; i < times; ++i)
        items += ',' + QByteArray(item).replace("$", QByteArray::number(i));
    return items.replace("$", "0");
}

// A file of a few lines must not ask for hours or for more than the memory.
TEST(MalformedFiles, CountsAreBounded) {
    TestFiles const files;
    (void)files.write(QStringLiteral("q.json"), R"({"base": [)" + repeated("\"poly-12bit\"", 8) + "]}");
    struct {
        QByteArray content;
        char const* message;
    } const rows[] = {
        {R"({"base": "poly-12bit", "array": {"width": 16384, "height": 16384}})",
         "p.json: array: no more than 33554432 pixels"},
        {R"({"base": [)" + repeated("\"q\"", 8) + "]}", "p.json: base: q.json: no more than 64 files"},
        {R"({"base": "poly-12bit", "registers": {"more": [)" +
             repeated(R"({"name": "R$_{i}_{j}", "address": 1, "id": $, "stride": 1, "indices": [
                          {"letter": "i", "count": 64}, {"letter": "j", "count": 64}]})",
                      20) +
             "]}}",
         "p.json: registers.more[16]: no more than 65536 registers"},
        {R"({"base": "poly-12bit", "optics": {"colourShading": [)" +
             repeated(R"({"temperature": 1$00, "red": [0,0,0,0,0], "greenRed": [0,0,0,0,0],
                          "greenBlue": [0,0,0,0,0], "blue": [0,0,0,0,0]})",
                      17) +
             "]}}",
         "p.json: optics.colourShading[16]: no more than 16 illuminants"},
    };
    for (auto const& row : rows) {
        QString error;
        EXPECT_FALSE(SimulatedCamera::open(files.write(QStringLiteral("p.json"), row.content), &error));
        EXPECT_TRUE(error.startsWith(QLatin1String(row.message)))
            << qPrintable(error) << "\nfor " << row.message;
    }
}

// Each row replaces one text in the layout of a sensor with a base and three tables.
struct Replacement {
    char const* from;
    char const* to;
    char const* message;
};

constexpr char kBankPlanes[] = R"("planes": {"greenRed": {"id": 0, "address": 13824, "stride": 2},
    "red": {"id": 0, "address": 13888, "stride": 2}, "blue": {"id": 0, "address": 13952, "stride": 2},
    "greenBlue": {"id": 0, "address": 14016, "stride": 2}})";

constexpr Replacement kBankFaults[] = {
    {"\"slot\": 4", "\"slot\": 1", "p.json: layout.correction.banks[3].slot: 1 is none of 0, 2, 3, 4"},
    {"\"slot\": 4", "\"slot\": 5", "p.json: layout.correction.banks[3].slot: 5 lies outside 0 to 4"},
    {"\"slot\": 4", "\"slot\": 3", "p.json: layout.correction.banks[3].slot: 3 occurs twice"},
    {", {\"slot\": 4, PLANES}", "", "p.json: layout.correction.banks: of the slots 2, 3, 4 some are missing"},
    {"\"slot\": 3,", "\"slot\": 3, \"originColumn\": {\"id\": 0, \"address\": 14210},",
     "p.json: layout.correction.banks[2]: the key \"originRow\" is missing"},
    {"\"slot\": 2,", "\"slot\": 2, \"colourTemperature\": {\"id\": 0, \"address\": 1},",
     "p.json: layout.correction.banks[1].colourTemperature: there is no 16-bit register at id 0, address "
     "0x0001"},
};

TEST(MalformedFiles, FaultOfATableIsNamedWithItsPlace) {
    QByteArray const good = R"({"base": "kind68-1", "layout": {"correction": {"banks": [
        {"slot": 0, PLANES}, {"slot": 2, PLANES}, {"slot": 3, PLANES}, {"slot": 4, PLANES}]}}})";
    TestFiles const files;
    QString error;
    auto const opens = [&](QByteArray profile) {
        return SimulatedCamera::open(
                   files.write(QStringLiteral("p.json"), profile.replace("PLANES", kBankPlanes)), &error) !=
               nullptr;
    };
    ASSERT_TRUE(opens(good)) << qPrintable(error);
    for (Replacement const& row : kBankFaults) {
        QByteArray const bad = QByteArray(good).replace(row.from, row.to);
        ASSERT_NE(bad, good) << row.from;
        EXPECT_FALSE(opens(bad)) << row.message;
        EXPECT_TRUE(error.startsWith(QLatin1String(row.message)))
            << qPrintable(error) << "\nfor " << row.message;
    }
}

TEST(MalformedFiles, UnknownProfileNamesTheKnownOnes) {
    QString error;
    EXPECT_FALSE(SimulatedCamera::open(QStringLiteral("nowhere"), &error));
    EXPECT_TRUE(error.contains(QLatin1String("poly-12bit"))) << qPrintable(error);
}

constexpr char kShading[] = R"({
 "format": "shading-gains-1", "name": "m", "columns": 2, "rows": 2,
 "illuminants": [
  {"colour_temperature_K": 3000, "red": [1, 2, 3, 4], "green": [1, 2, 3, 4], "blue": [1, 2, 3, 4]},
  {"colour_temperature_K": 5000, "red": [5, 2, 3, 4], "green": [1, 2, 3, 4], "blue": [1, 2, 3, 4]}
 ]
})";

// Each row replaces one text of a correct file.
constexpr Replacement kShadingFaults[] = {
    {"]\n}", "]", "m.json: line 6: "},
    {"shading-gains-1", "shading-gains-2", "m.json: format: \"shading-gains-1\" is expected"},
    {"\"columns\": 2", "\"columns\": 1", "m.json: columns: 1 lies outside 2 to 1024"},
    {"\"rows\": 2", "\"rows\": 3", "m.json: illuminants[0].red: 6 values are expected, not 4"},
    {"\"red\": [5, ", "\"rot\": [5, ", "m.json: illuminants[1]: the key \"red\" is missing"},
    {"[5, 2,", "[5, 0,", "m.json: illuminants[1].red[1]: the gain must be above 0"},
    {"[5, 2,", "[5, 1e-300,", "m.json: illuminants[1].red[1]: 1e-300 lies outside 0.001 to 1000"},
    {"5000", "1e300", "m.json: illuminants[1].colour_temperature_K: 1e+300 lies outside 500 to 50000"},
    {"[5, 2,", "[5, null,", "m.json: illuminants[1].red[1]: a number is expected"},
    {"[5, 2,", "[5, 1e999,", "m.json: "},
    {"5000", "3000", "m.json: illuminants[1].colour_temperature_K: the temperatures must ascend"},
    {"3000", "0", "m.json: illuminants[0].colour_temperature_K: the temperature must be above 0"},
};

TEST(MalformedFiles, ShadingFaultIsNamedWithItsPlace) {
    TestFiles const files;
    Camera const camera = openQuiet();
    QString error;
    ASSERT_TRUE(openQuiet()->useMeasuredShading(files.write(QStringLiteral("m.json"), kShading), &error))
        << qPrintable(error);
    for (Replacement const& row : kShadingFaults) {
        QByteArray const content = QByteArray(kShading).replace(row.from, row.to);
        ASSERT_NE(content, kShading) << row.from;
        error.clear();
        EXPECT_FALSE(camera->useMeasuredShading(files.write(QStringLiteral("m.json"), content), &error))
            << row.to;
        EXPECT_TRUE(error.startsWith(QLatin1String(row.message)))
            << qPrintable(error) << "\nfor " << row.message;
    }
    // Each light of a table is a page of charts where two are compared.
    QByteArray const many =
        R"({"format": "shading-gains-1", "name": "m", "columns": 2, "rows": 2, "illuminants": [)" +
        repeated(R"({"colour_temperature_K": 1$00, "red": [1,1,1,1], "green": [1,1,1,1], "blue": [1,1,1,1]})",
                 17) +
        "]}";
    EXPECT_FALSE(camera->useMeasuredShading(files.write(QStringLiteral("m.json"), many), &error));
    EXPECT_EQ(error, QStringLiteral("m.json: illuminants[16]: no more than 16 illuminants are read"))
        << qPrintable(error);
    EXPECT_FALSE(camera->useMeasuredShading(QStringLiteral("/nowhere.json"), &error));
    EXPECT_TRUE(error.startsWith(QLatin1String("/nowhere.json: cannot be read"))) << qPrintable(error);
    EXPECT_EQ(camera->grab().pixels, openQuiet()->grab().pixels) << "a part of a refused file was used";
}

} // namespace
