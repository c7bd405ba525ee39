#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QTemporaryDir>
#include <gtest/gtest.h>

/// Writes a profile that changes some keys of another one and gives its path. `changes` begins with a comma.
inline QString writeChangedProfile(QString const& folder, char const* base, QByteArray const& changes) {
    QString const name = folder + QStringLiteral("/changed-%1.json").arg(QLatin1String(base));
    QFile file(name);
    QByteArray const text = QByteArrayLiteral(R"({"base": ")") + base + '"' + changes + '}';
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size() ? name : QString();
}

/// Saving to an EEPROM takes seconds; where that does not matter, there is none.
inline constexpr char kNoEeprom[] = R"(, "eeprom": {"kind": "none"})";

/// Files of one test, gone with it.
struct TestFiles {
    [[nodiscard]] QString path(char const* name) const { return folder.filePath(name); }
    /// Writes a file and gives its path. Fails the test when it cannot.
    QString write(char const* name, QByteArray const& contents) const {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size()) << name;
        return path(name);
    }
    /// The profile with fewer pixels. Lens and colours are the same, and a run takes a fraction of the time.
    [[nodiscard]] QString smallProfile(char const* base = "polynomial",
                                       QByteArray const& more = kNoEeprom) const {
        QByteArray const size = R"({"width": 480, "height": 270})";
        return writeChangedProfile(folder.path(), base,
                                   R"(, "array": )" + size + R"(, "layout": )" + size + more);
    }

    QTemporaryDir folder;
};
