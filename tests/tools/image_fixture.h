#pragma once

#include "headboard/record_format.h"
#include "tools/headboard-image/outcome.h"

#include <QStringList>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <vector>

namespace kestra {
using Bytes = std::vector<uint8_t>;

/// An image file in a folder of its own, and the program's commands on it.
struct ImageUnderTest : ::testing::Test {
    static constexpr int32_t kStoreSize = 8176; ///< of the usual image; the identity bytes lie behind

    /// Runs a command on the image.
    headboard_image::Outcome run(QStringList const& command) const;
    void write(Bytes const& image) const;
    [[nodiscard]] Bytes read() const;
    /// A preset file with one section, beside the image.
    [[nodiscard]] QString preset(std::string const& lines, char const* section = "Lens Correction") const;

    [[nodiscard]] QString file(char const* name) const { return m_folder.filePath(QLatin1String(name)); }
    [[nodiscard]] QString image() const { return file("image.bin"); }

private:
    QTemporaryDir m_folder;
};

/// An image of 8192 bytes, its identity bytes set, with these records.
[[nodiscard]] Bytes imageOf(std::vector<EepromRecord> const& records);

/// A record of any type with these bytes as its payload, the name in front where the type has one.
[[nodiscard]] EepromRecord recordOf(uint8_t type, Bytes const& content, char const* name = nullptr);
[[nodiscard]] EepromRecord textRecord(uint8_t type, std::string const& text);

/// One record of every way to hold something: entries of each kind, lines, text, named and opaque bytes.
[[nodiscard]] std::vector<EepromRecord> recordsOfEveryKind();
} // namespace kestra
