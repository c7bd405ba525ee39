#include "common/ini_section.h"
#include "tests/support/solver_sensor.h"
#include "tests/support/synthetic.h"

#include <QFile>
#include <QTemporaryDir>
#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>

using namespace kestra;

namespace {
class PresetFile : public testing::Test {
protected:
    void SetUp() override {
        for (uint32_t const slot : {3u, 2u}) {
            ASSERT_TRUE(setImage(m_handle, m_sensor, m_frame));
            if (slot == 3) {
                ASSERT_EQ(findSolution(m_handle, 95), 0);
            }
            sf_ApgaParams const params = tableParams(slot, 1000 * slot);
            ASSERT_EQ(sf_FindApga(m_handle.get(), &params), 0);
        }
    }

    QByteArray pathOf(char const* name) const { return m_folder.filePath(QLatin1String(name)).toLocal8Bit(); }

    /// The file as the host reads it.
    static std::vector<sf_RegEntry> readBack(QByteArray const& path) {
        std::vector<char> section(1 << 20);
        if (readIniSection("Lens Correction", section.data(), section.size(), path.constData()) < 2)
            return {};
        std::vector<sf_RegEntry> entries;
        for (char const* line = section.data(); *line != '\0'; line += std::strlen(line) + 1) {
            int id = -1, address = -1, value = -1;
            EXPECT_EQ(std::sscanf(line, "REG=%i, %i, %i", &id, &address, &value), 3) << line;
            entries.push_back(
                {static_cast<uint32_t>(id), static_cast<uint32_t>(address), static_cast<uint32_t>(value)});
        }
        return entries;
    }

    QTemporaryDir m_folder;
    TestSensor m_sensor{.bankSlots = {0, 2, 3}, .tablesHaveOrigins = true};
    QByteArray m_frame = expose(m_sensor, SyntheticLens{}.response(m_sensor));
    Handle m_handle = open(m_sensor);
};

TEST_F(PresetFile, GivesBackTheListInBothFormats) {
    auto const list = registers(m_handle);
    ASSERT_EQ(list.size(), 2u + 100 + 2 * 103);
    for (uint32_t const format : {0u, 2u}) {
        QByteArray const path = pathOf("lens.ini");
        ASSERT_EQ(sf_DumpRegFile(m_handle.get(), path.constData(), format, 0, 0), 0);
        auto const entries = readBack(path);
        ASSERT_EQ(entries.size(), list.size());
        EXPECT_EQ(std::memcmp(entries.data(), list.data(), list.size() * sizeof list[0]), 0);
        QFile file(QFile::decodeName(path));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        QByteArray const text = file.readAll();
        EXPECT_TRUE(text.contains("; sensor kind 50, variant 1\n"));
        EXPECT_TRUE(text.contains("; corners at 95 % of the centre\n"));
        EXPECT_EQ(text.contains("; illuminant slot 2, 2000 K\n"), format == 2);
    }
}

TEST_F(PresetFile, IsNotClaimedWhenNothingWasWritten) {
    WarningLog const log;
    EXPECT_NE(sf_DumpRegFile(m_handle.get(), pathOf("none/lens.ini").constData(), 0, 0, 0), 0);
    EXPECT_TRUE(log.has("cannot write"));
    EXPECT_NE(sf_DumpRegFile(m_handle.get(), pathOf("lens.ini").constData(), 1, 0, 0), 0);
    EXPECT_NE(sf_DumpRegFile(m_handle.get(), nullptr, 0, 0, 0), 0);
    Handle const unsolved = open(m_sensor);
    EXPECT_NE(sf_DumpRegFile(unsolved.get(), pathOf("lens.ini").constData(), 0, 0, 0), 0);
    EXPECT_FALSE(QFile::exists(m_folder.filePath(QStringLiteral("lens.ini"))));
}
} // namespace
