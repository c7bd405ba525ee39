#include "simulator/camera/eeprom_contents.h"

#include <QFile>
#include <QSaveFile>
#include <algorithm>

namespace simulator {
namespace {

constexpr uint8_t kErased = 0xFF;
constexpr std::array<uint8_t, 5> kHeader = {'V', 'Y', 'E', 'E', 1}; // the last is the format's version

void say(QString* error, QString const& file, QString const& what) {
    if (error)
        *error = file + QLatin1String(": ") + what;
}

} // namespace

EepromContents blankContents() {
    EepromContents contents;
    contents.fill(kErased);
    return contents;
}

EepromContents formattedContents() {
    EepromContents contents = blankContents(); // an erased byte ends the chain
    std::copy(kHeader.begin(), kHeader.end(), contents.begin());
    return contents;
}

std::optional<EepromContents> readContents(QString const& file, QString* error) {
    QFile source(file);
    if (!source.open(QIODevice::ReadOnly)) {
        say(error, file, QStringLiteral("cannot be read: %1").arg(source.errorString()));
        return std::nullopt;
    }
    // One byte more than fits shows that the file is too long without reading all of it.
    QByteArray const bytes = source.read(qint64(kEepromSize) + 1);
    if (size_t(bytes.size()) != kEepromSize) {
        say(error, file,
            QStringLiteral("the EEPROM has %1 bytes, the file has %2")
                .arg(kEepromSize)
                .arg(std::max<qint64>(source.size(), bytes.size())));
        return std::nullopt;
    }
    EepromContents contents;
    std::copy(bytes.begin(), bytes.end(), contents.begin());
    return contents;
}

bool writeContents(EepromContents const& contents, QString const& file, QString* error) {
    QSaveFile target(file);
    if (target.open(QIODevice::WriteOnly)) {
        target.write(reinterpret_cast<char const*>(contents.data()), qint64(contents.size()));
        if (target.flush() && target.commit())
            return true;
    }
    say(error, file, QStringLiteral("cannot be written: %1").arg(target.errorString()));
    return false;
}

} // namespace simulator
