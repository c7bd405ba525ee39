#include "tests/tools/image_fixture.h"

#include "headboard/eeprom_chain.h"
#include "headboard/record_format.h"
#include "headboard/register_set.h"
#include "tools/headboard-image/command_line.h"

#include <QCoreApplication>
#include <fstream>
#include <iterator>

namespace kestra {
headboard_image::Outcome ImageUnderTest::run(QStringList const& command) const {
    static int argumentCount = 1;
    static char name[] = "headboard-image";
    static char* arguments[] = {name, nullptr};
    static QCoreApplication const application(argumentCount, arguments);
    return headboard_image::runCommandLine(QStringList{QStringLiteral("headboard-image"), image()} + command);
}

void ImageUnderTest::write(Bytes const& bytes) const {
    std::ofstream file(image().toStdString(), std::ios::binary);
    std::copy(bytes.begin(), bytes.end(), std::ostreambuf_iterator<char>(file));
}

Bytes ImageUnderTest::read() const {
    std::ifstream file(image().toStdString(), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

QString ImageUnderTest::preset(std::string const& lines, char const* section) const {
    QString name = file("preset.ini");
    std::ofstream(name.toStdString()) << "[Other]\nREG = 9, 9\n[" << section << "]\n" << lines << '\n';
    return name;
}

Bytes imageOf(std::vector<EepromRecord> const& records) {
    EepromShare const eeprom = HeadboardEepromCreate(nullptr);
    Bytes& image = eeprom->image;
    image.assign(8192, 0xFF);
    eeprom->state.assign(image.size(), ByteState::Current);
    for (size_t const identity : {8177, 8179, 8180, 8191})
        image[identity] = uint8_t(identity);
    EXPECT_EQ(EepromFormat(*eeprom, -1), kEepromOk);
    for (EepromRecord const& record : records)
        EXPECT_EQ(EepromAppendRecord(*eeprom, record), kEepromOk);
    return image;
}

EepromRecord recordOf(uint8_t type, Bytes const& content, char const* name) {
    EepromRecord record = EepromNewRecord(type, 8112, int32_t(recordNameWidth(type)));
    if (recordNameWidth(type) > 0) {
        std::ranges::fill(record.payload(), uint8_t{0});
        record.setName(name);
    }
    EXPECT_TRUE(record.append(content));
    return record;
}

EepromRecord textRecord(uint8_t type, std::string const& text) {
    auto const* const bytes = reinterpret_cast<uint8_t const*>(text.c_str());
    return recordOf(type, Bytes(bytes, bytes + text.size() + 1));
}

std::vector<EepromRecord> recordsOfEveryKind() {
    EepromShare const noCamera = HeadboardEepromCreate(nullptr);
    EepromRecord entries = makeRegisterSet(kRecordPga, 8112, nullptr);
    for (RegisterEntry const& entry : {RegisterEntry{0, 0, 0x3600, 0, 0, 0x3C02},
                                       {0, 0, 0x20, 0, 0, 7},
                                       {1, 18, 0x42, 1, 0, 5},
                                       {2, 4, 0x12345678, 4, 0x8000, 0xFFFFFFFF}})
        EXPECT_EQ(EepromAddEntry(*noCamera, entries, entry), kEepromOk);
    EepromRecord lines = makeRegisterSet(kRecordSwPga, 8112, "100%1");
    EXPECT_EQ(EepromAddLine(lines, "Lens Curve Red, 1"), kEepromOk);
    EXPECT_EQ(EepromAddLine(lines, ""), kEepromOk);
    EXPECT_EQ(EepromAddLine(lines, "Lens Correction Falloff,80"), kEepromOk);
    return {entries, lines, textRecord(kRecordHeadboardId, "A\"1\n\x1B[2J\xE9"),
            recordOf(kRecordScratchpad, {1, 2, 'x'}, "notes"), recordOf(77, {0xFF, 0, 'y'})};
}
} // namespace kestra
