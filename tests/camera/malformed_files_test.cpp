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
    {R"({"base": ["poly-12bit", "groups/nowhere"]})", "p.json: base: nowhere.json: cannot be read"},
    {R"({"base": "poly-12bit", "registers": {"more":
        [{"name": "A_{w}", "address": 1, "stride": 1, "indices": [{"letter": "w", "words": []}]}]}})",
     "p.json: registers.more[0].indices[0].words: at least one word is needed"},
};

void expectFault(QByteArray const& profile, char const* message, TestFiles const& files = {}) {
    QString error;
    EXPECT_FALSE(SimulatedCamera::open(files.write("p.json", profile), &error));
    error.remove(QRegularExpression(QStringLiteral("/[^ ]*/"))); // the folder of a file that is not there
    EXPECT_TRUE(error.startsWith(QLatin1String(message))) << qPrintable(error) << "\nfor " << message;
}

TEST(MalformedFiles, ProfileFaultIsNamedWithItsPlace) {
    for (Fault const& row : kProfileFaults)
        expectFault(row.content, row.message);
}

QByteArray repeated(char const* item, int times) {
    QByteArray items = item;
    for (int i = 1; i < times; ++i)
        items += ',' + QByteArray(item).replace("$", QByteArray::number(i));
    return items.replace("$", "0");
}

// A file of a few lines must not ask for hours or for more than the memory.
TEST(MalformedFiles, CountsAreBounded) {
    expectFault(R"({"base": "poly-12bit", "array": {"width": 16384, "height": 16384}})",
                "p.json: array: no more than 33554432 pixels");
    TestFiles const files;
    (void)files.write("q.json", R"({"base": [)" + repeated("\"poly-12bit\"", 8) + "]}");
    expectFault(R"({"base": [)" + repeated("\"q\"", 8) + "]}", "p.json: base: q.json: no more than 64 files",
                files);
    expectFault(R"({"base": "poly-12bit", "registers": {"more": [)" +
                    repeated(R"({"name": "R$_{i}_{j}", "address": 1, "id": $, "stride": 1, "indices": [
                          {"letter": "i", "count": 64}, {"letter": "j", "count": 64}]})",
                             20) +
                    "]}}",
                "p.json: registers.more[16]: no more than 65536 registers");
    expectFault(R"({"base": "poly-12bit", "optics": {"colourShading": [)" +
                    repeated(R"({"temperature": 1$00, "red": [0,0,0,0,0], "greenRed": [0,0,0,0,0],
                          "greenBlue": [0,0,0,0,0], "blue": [0,0,0,0,0]})",
                             17) +
                    "]}}",
                "p.json: optics.colourShading[16]: no more than 16 illuminants");
}

constexpr char kShading[] = R"({
 "format": "shading-gains-1", "name": "m", "columns": 2, "rows": 2,
 "illuminants": [
  {"colour_temperature_K": 3000, "red": [1, 2, 3, 4], "green": [1, 2, 3, 4], "blue": [1, 2, 3, 4]},
  {"colour_temperature_K": 5000, "red": [5, 2, 3, 4], "green": [1, 2, 3, 4], "blue": [1, 2, 3, 4]}
 ]
})";

// Each row replaces one text of a correct file.
struct Replacement {
    char const* from;
    char const* to;
    char const* message;
};

constexpr Replacement kShadingFaults[] = {
    {"shading-gains-1", "shading-gains-2", "m.json: format: \"shading-gains-1\" is expected"},
    {"\"columns\": 2", "\"columns\": 1", "m.json: columns: 1 lies outside 2 to 1024"},
    {"\"rows\": 2", "\"rows\": 3", "m.json: illuminants[0].red: 6 values are expected, not 4"},
    {"[5, 2,", "[5, 0,", "m.json: illuminants[1].red[1]: the gain must be above 0"},
    {"[5, 2,", "[5, 1e-300,", "m.json: illuminants[1].red[1]: 1e-300 lies outside 0.001 to 1000"},
    {"[5, 2,", "[5, 1e999,", "m.json: "},
    {"5000", "3000", "m.json: illuminants[1].colour_temperature_K: the temperatures must ascend"},
    {"3000", "0", "m.json: illuminants[0].colour_temperature_K: the temperature must be above 0"},
};

TEST(MalformedFiles, ShadingFaultIsNamedWithItsPlace) {
    TestFiles const files;
    Camera const camera = openQuiet();
    QString error;
    auto const uses = [&](SimulatedCamera& used, QByteArray const& content) {
        error.clear();
        return used.useMeasuredShading(files.write("m.json", content), &error);
    };
    ASSERT_TRUE(uses(*openQuiet(), kShading)) << qPrintable(error);
    for (Replacement const& row : kShadingFaults) {
        EXPECT_FALSE(uses(*camera, QByteArray(kShading).replace(row.from, row.to))) << row.message;
        EXPECT_TRUE(error.startsWith(QLatin1String(row.message)))
            << qPrintable(error) << "\nfor " << row.message;
    }
    // Each light of a table is a page of charts where two are compared.
    QByteArray const many =
        R"({"format": "shading-gains-1", "name": "m", "columns": 2, "rows": 2, "illuminants": [)" +
        repeated(R"({"colour_temperature_K": 1$00, "red": [1,1,1,1], "green": [1,1,1,1], "blue": [1,1,1,1]})",
                 17) +
        "]}";
    EXPECT_FALSE(uses(*camera, many));
    EXPECT_EQ(error, QStringLiteral("m.json: illuminants[16]: no more than 16 illuminants are read"));
    EXPECT_FALSE(camera->useMeasuredShading(QStringLiteral("/nowhere.json"), &error));
    EXPECT_TRUE(error.startsWith(QLatin1String("/nowhere.json: cannot be read"))) << qPrintable(error);
    EXPECT_EQ(camera->grab().pixels, openQuiet()->grab().pixels) << "a part of a refused file was used";
}
} // namespace
