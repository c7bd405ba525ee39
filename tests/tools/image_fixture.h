#pragma once

#include "headboard/register_set.h"
#include "simulator/files/whole_file.h"
#include "tools/headboard-image/command_line.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace kestra {
using Bytes = std::vector<uint8_t>;
using namespace headboard_image;

#define EXPECT_SAYS(text, part) EXPECT_NE((text).find(part), std::string::npos) << (text)

/// An image file in a folder of its own, and the program's commands on it.
struct ImageUnderTest : ::testing::Test {
    static constexpr int32_t kStoreSize = 8176; ///< of the usual image; the identity bytes lie behind

    /// Runs a command on the image: words with blanks between them. A word's own blanks are "~", and PRESET
    /// is the preset file.
    Outcome run(QString const& words) const {
        static int count = 1;
        static char name[] = "headboard-image";
        static char* arguments[] = {name, nullptr};
        static QCoreApplication const application(count, arguments);
        QStringList command = words.split(' ', Qt::SkipEmptyParts);
        command.replaceInStrings("~", " ").replaceInStrings("PRESET", m_preset);
        return runCommandLine(QStringList{name, image} + command);
    }
    void write(Bytes const& bytes) const {
        QByteArray const content(reinterpret_cast<char const*>(bytes.data()), int(bytes.size()));
        EXPECT_TRUE(files::replace(image, content, nullptr));
    }
    [[nodiscard]] Bytes read() const {
        auto const content = files::read(image, 1 << 20, nullptr);
        EXPECT_TRUE(content);
        return {content->begin(), content->end()};
    }
    /// Writes a preset file with these lines in the section "Lens Correction".
    void preset(std::string const& lines) const {
        std::string const content = "[Other]\nREG = 9, 9\n[Lens Correction]\n" + lines + '\n';
        EXPECT_TRUE(files::replace(m_preset, QByteArray::fromStdString(content), nullptr));
    }

private:
    QTemporaryDir m_folder;
    QString const m_preset = m_folder.filePath("preset.ini");

protected:
    QString const image = m_folder.filePath("image.bin");
};

/// An image of 8192 bytes, its identity bytes set, with these records.
[[nodiscard]] inline Bytes imageOf(std::vector<EepromRecord> const& records) {
    Bytes image = {'V', 'Y', 'E', 'E', 1};
    for (EepromRecord const& record : records)
        image.insert(image.end(), record.bytes().begin(), record.bytes().end());
    image.resize(8192, 0xFF);
    for (size_t const identity : {8177, 8179, 8180, 8191})
        image[identity] = uint8_t(identity);
    return image;
}

/// A record of any type with these bytes as its payload, the name in front where the type has one.
[[nodiscard]] inline EepromRecord recordOf(uint8_t type, Bytes const& content, char const* name = nullptr) {
    EepromRecord record = EepromNewRecord(type, 8112, int32_t(recordNameWidth(type)));
    if (recordNameWidth(type) > 0) {
        std::ranges::fill(record.payload(), uint8_t{0});
        record.setName(name);
    }
    EXPECT_TRUE(record.append(content));
    return record;
}

[[nodiscard]] inline EepromRecord textRecord(uint8_t type, std::string const& text) {
    return recordOf(type, Bytes(text.c_str(), text.c_str() + text.size() + 1));
}

/// One record of every way to hold something: entries of each kind, lines, text, named and opaque bytes.
[[nodiscard]] inline std::vector<EepromRecord> recordsOfEveryKind() {
    EepromShare const noCamera = HeadboardEepromCreate(nullptr);
    EepromRecord entries = makeRegisterSet(kRecordPga, 8112, nullptr);
    for (RegisterEntry const& entry : {RegisterEntry{0, 0, 0x3600, 0, 0, 0x3C02},
                                       {0, 0, 0x20, 0, 0, 7},
                                       {1, 18, 0x42, 1, 0, 5},
                                       {2, 4, 0x12345678, 4, 0x8000, 0xFFFFFFFF}})
        EXPECT_EQ(EepromAddEntry(*noCamera, entries, entry), kEepromOk);
    EepromRecord lines = makeRegisterSet(kRecordSwPga, 8112, "100%1");
    for (char const* const line : {"Lens Curve Red, 1", "", "Lens Correction Falloff,80"})
        EXPECT_EQ(EepromAddLine(lines, line), kEepromOk);
    return {entries, lines, textRecord(kRecordHeadboardId, "A\"1\n\x1B[2J\xE9"),
            recordOf(kRecordScratchpad, {1, 2, 'x'}, "notes"), recordOf(77, {0xFF, 0, 'y'})};
}
} // namespace kestra
