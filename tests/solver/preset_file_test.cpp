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
struct PresetFile : testing::Test {
    QTemporaryDir folder;
    TestSensor sensor{.bankSlots = {0, 2, 3}, .tablesHaveOrigins = true};
    Handle handle = open(sensor);
    QByteArray const path = folder.filePath("lens.ini").toLocal8Bit();
};

/// The file as the host reads it.
std::vector<sf_RegEntry> readBack(QByteArray const& path) {
    std::vector<char> section(1 << 20);
    if (readIniSection("Lens Correction", section.data(), section.size(), path.constData()) < 2)
        return {};
    std::vector<sf_RegEntry> entries;
    for (char const* line = section.data(); *line != '\0'; line += std::strlen(line) + 1) {
        int id = -1, address = -1, value = -1;
        EXPECT_EQ(std::sscanf(line, "REG=%i, %i, %i", &id, &address, &value), 3) << line;
        entries.push_back({uint32_t(id), uint32_t(address), uint32_t(value)});
    }
    return entries;
}

TEST_F(PresetFile, GivesBackTheListInBothFormatsAndIsNotClaimedWhenNothingWasWritten) {
    WarningLog const log;
    EXPECT_NE(sf_DumpRegFile(handle.get(), path.constData(), 0, 0, 0), 0) << "unsolved";
    ASSERT_TRUE(setImage(handle, sensor, expose(sensor, SyntheticLens{}.response(sensor))));
    ASSERT_EQ(findSolution(handle, 95), 0);
    for (uint32_t const slot : {3u, 2u}) {
        sf_ApgaParams const params = tableParams(slot, 1000 * slot);
        ASSERT_EQ(sf_FindApga(handle.get(), &params), 0);
    }
    EXPECT_NE(sf_DumpRegFile(handle.get(), path.constData(), 1, 0, 0), 0) << "of no format";
    EXPECT_NE(sf_DumpRegFile(handle.get(), nullptr, 0, 0, 0), 0);
    EXPECT_NE(sf_DumpRegFile(handle.get(), (folder.path() + "/none/lens.ini").toLocal8Bit(), 0, 0, 0), 0);
    EXPECT_TRUE(log.has("cannot write"));
    EXPECT_FALSE(QFile::exists(QFile::decodeName(path)));
    auto const list = registers(handle);
    ASSERT_EQ(list.size(), 2u + 100 + 2 * 103);
    for (uint32_t const format : {0u, 2u}) {
        ASSERT_EQ(sf_DumpRegFile(handle.get(), path.constData(), format, 0, 0), 0);
        auto const entries = readBack(path);
        ASSERT_EQ(entries.size(), list.size());
        EXPECT_EQ(std::memcmp(entries.data(), list.data(), list.size() * sizeof list[0]), 0);
        QFile file(QFile::decodeName(path));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        QByteArray const text = file.readAll();
        EXPECT_TRUE(text.contains("; sensor kind 50, variant 1\n; corners at 95 % of the centre\n"));
        EXPECT_EQ(text.contains("; illuminant slot 2, 2000 K\n"), format == 2);
    }
}
} // namespace
