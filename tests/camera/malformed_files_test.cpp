#include "tests/support/camera_under_test.h"

#include <QRegularExpression>
#include <gtest/gtest.h>
#include <utility>

using namespace simulator;

namespace {
// What a profile says, without a base that of the default camera, and the beginning of the message.
constexpr std::pair<char const*, char const*> kProfileFaults[] = {
    {R"("kind": )", "p.json: line 1: "},
    {R"("base": "p")", "p.json: base: p.json: base: "},
    {R"("base": ["polynomial", "groups/nowhere"])", "p.json: base: nowhere.json: cannot be read"},
    {R"("systemOnChip": 1)", "p.json: systemOnChip: true or false is expected"},
    {R"("optics": 1)", "p.json: optics: an object is expected"},
    {R"("optics": {"lens": {"centre": [1, 2, 3]}})",
     "p.json: optics.lens.centre: 2 values are expected, not 3"},
    {R"("optics": {"lens": {"centre": [0, "1"]}})", "p.json: optics.lens.centre[1]: a number is expected"},
    {R"("array": {"orientation": 4})", "p.json: array.orientation: 4 lies outside 0 to 3"},
    {R"("array": {"width": 16384, "height": 16384})", "p.json: array: no more than 33554432 pixels"},
    {R"("readOut": {"format": "raw8"})", "p.json: layout.sampleBytes: the read-out delivers samples of"},
    {R"("kind": 7)", "p.json: layout.kind: 200 differs from the sensor's 7"},
    {R"("layout": {"correction": {"originRow": {"id": 1}}})",
     "p.json: layout.correction.originRow: there is no 16-bit register at id 1, address 0x3784"},
    {R"("registers": {"more": [{"name": "A", "address": 1}, {"name": "A", "address": 2}]})",
     "p.json: registers.more[1]: the register \"A\" is there twice"},
    {R"("registers": {"more": [{"name": "A", "address": "0x3g"}]})",
     "p.json: registers.more[0].address: a whole number is expected"},
    {R"("optics": {"colourShading": []})", "p.json: optics.colourShading: at least one illuminant is needed"},
    {R"("eeprom": {"kind": "paper"})", "p.json: eeprom.kind: \"paper\" is none of none, serial, bridge"},
    {R"("eeprom": {"kind": "bridge"})", "p.json: eeprom.kind: there is no register \"IO_EEPROM_I2C_ADDR\""},
    {R"("base": "adaptive-72", "tableChoice": {"temperatures": ["FRAME_COUNT", "FRAME_COUNT", "FRAME_COUNT"]})",
     "p.json: tableChoice.temperatures[0]: the layout tells another register"},
};

QByteArray profileOf(QByteArray const& content) {
    return content.contains("\"base\"") ? '{' + content + '}' : R"({"base": "polynomial", )" + content + '}';
}

void expectFault(QByteArray const& content, char const* message, TestFiles const& files = {}) {
    QString error;
    EXPECT_FALSE(SimulatedCamera::open(files.write("p.json", profileOf(content)), &error));
    error.remove(QRegularExpression(QStringLiteral("/[^ ]*/"))); // the folder of a file that is not there
    EXPECT_TRUE(error.startsWith(QLatin1String(message))) << qPrintable(error) << "\nfor " << message;
}

TEST(MalformedFiles, ProfileFaultIsNamedWithItsPlace) {
    for (auto const& [content, message] : kProfileFaults)
        expectFault(content, message);
}

QByteArray repeated(char const* item, int times) {
    QByteArray items;
    for (int i = 0; i < times; ++i)
        items += ',' + QByteArray(item).replace("$", QByteArray::number(i));
    return items.mid(1);
}

// A file of a few lines must not ask for hours or for more than the memory.
TEST(MalformedFiles, CountsAreBounded) {
    TestFiles const files;
    (void)files.write("q.json", R"({"base": [)" + repeated("\"polynomial\"", 8) + "]}");
    expectFault(R"("base": [)" + repeated("\"q\"", 8) + ']', "p.json: base: q.json: no more than 64 files",
                files);
    expectFault(R"("registers": {"more": [)" +
                    repeated(R"({"name": "R$_{i}_{j}", "address": 1, "id": $, "stride": 1, "indices": [
                          {"letter": "i", "count": 64}, {"letter": "j", "count": 64}]})",
                             20) +
                    "]}",
                "p.json: registers.more[16]: no more than 65536 registers");
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
    {"shading-gains-1", "shading-gains-2", "m.json: format: \"shading-gains-2\" is none of shading-gains-1"},
    {"\"columns\": 2", "\"columns\": 1", "m.json: columns: 1 lies outside 2 to 1024"},
    {"\"rows\": 2", "\"rows\": 3", "m.json: illuminants[0].red: 6 values are expected, not 4"},
    {"[5, 2,", "[5, 0,", "m.json: illuminants[1].red[1]: 0 lies outside 0.001 to 1000"},
    {"[5, 2,", "[5, 1e999,", "m.json: "},
    {"5000", "3000", "m.json: illuminants[1].colour_temperature_K: the temperatures must ascend"},
};

TEST(MalformedFiles, ShadingFaultIsNamedWithItsPlace) {
    TestFiles const files;
    Camera const camera = openQuiet();
    QString error;
    ASSERT_TRUE(openQuiet()->useMeasuredShading(files.write("m.json", kShading), &error))
        << qPrintable(error);
    for (Replacement const& row : kShadingFaults) {
        QByteArray const content = QByteArray(kShading).replace(row.from, row.to);
        EXPECT_FALSE(camera->useMeasuredShading(files.write("m.json", content), &error)) << row.message;
        EXPECT_TRUE(error.startsWith(QLatin1String(row.message)))
            << qPrintable(error) << "\nfor " << row.message;
    }
    EXPECT_FALSE(camera->useMeasuredShading(QStringLiteral("/nowhere.json"), &error));
    EXPECT_TRUE(error.startsWith(QLatin1String("/nowhere.json: cannot be read"))) << qPrintable(error);
    EXPECT_EQ(camera->grab().pixels, openQuiet()->grab().pixels) << "a part of a refused file was used";
}
} // namespace
