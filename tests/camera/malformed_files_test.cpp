#include "tests/support/camera_under_test.h"

#include <QRegularExpression>
#include <gtest/gtest.h>
#include <utility>

using namespace simulator;

namespace {
void expectFault(QByteArray const& keys, char const* message, TestFiles const& files = {}) {
    QByteArray const base = keys.contains("\"base\"") ? "{" : R"({"base": "polynomial", )";
    QString error;
    EXPECT_FALSE(SimulatedCamera::open(files.write("p.json", base + keys + '}'), &error));
    error.remove(QRegularExpression(QStringLiteral("/[^ ]*/"))); // the folder of a file that is not there
    EXPECT_TRUE(error.startsWith(QStringLiteral("p.json: ") + message))
        << qPrintable(error) << "\nfor " << message;
}

TEST(MalformedFiles, ProfileFaultIsNamedWithItsPlace) {
    // What a profile says, without a base that of the default camera, and the beginning of the message.
    constexpr std::pair<char const*, char const*> kRows[] = {
        {R"("base": "p")", "base: p.json: base: "},
        {R"("base": ["polynomial", "groups/nowhere"])", "base: nowhere.json: cannot be read"},
        {R"("optics": {"lens": {"centre": [1, 2, 3]}})", "optics.lens.centre: 2 values are expected, not 3"},
        {R"("optics": {"lens": {"centre": [0, "1"]}})", "optics.lens.centre[1]: a number is expected"},
        {R"("array": {"orientation": 4})", "array.orientation: 4 lies outside 0 to 3"},
        {R"("array": {"width": 16384, "height": 16384})", "array: no more than 33554432 pixels"},
        {R"("readOut": {"format": "raw8"})", "layout.sampleBytes: the read-out delivers samples of"},
        {R"("layout": {"correction": {"originRow": {"id": 1}}})",
         "layout.correction.originRow: there is no 16-bit register at id 1, address 0x3784"},
        {R"("registers": {"more": [{"name": "A", "address": 1}, {"name": "A", "address": 2}]})",
         "registers.more[1]: the register \"A\" is there twice"},
        {R"("eeprom": {"kind": "bridge"})", "eeprom.kind: there is no register \"IO_EEPROM_I2C_ADDR\""},
        {R"("base": "adaptive-72", "tableChoice": {"temperatures": ["FRAME_COUNT", "FRAME_COUNT", "FRAME_COUNT"]})",
         "tableChoice.temperatures[0]: the layout tells another register"},
    };
    for (auto const& [keys, message] : kRows)
        expectFault(keys, message);
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
    expectFault(R"("base": [)" + repeated("\"q\"", 8) + ']', "base: q.json: no more than 64 files", files);
    expectFault(R"("registers": {"more": [)" +
                    repeated(R"({"name": "R$_{i}_{j}", "address": 1, "id": $, "stride": 1, "indices": [
                          {"letter": "i", "count": 64}, {"letter": "j", "count": 64}]})",
                             20) +
                    "]}",
                "registers.more[16]: no more than 65536 registers");
}

} // namespace
