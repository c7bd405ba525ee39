#include "simulator/camera/eeprom_contents.h"
#include "simulator/files/whole_file.h"

#include <algorithm>

namespace simulator {
namespace {
constexpr uint8_t kErased = 0xFF;
constexpr std::array<uint8_t, 5> kHeader = {'V', 'Y', 'E', 'E', 1}; // the last is the format's version

void say(QString* error, QString const& file, QString const& what) {
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
    auto const bytes = files::read(file, files::kMostText, error);
    if (!bytes) {
        say(error, file, QStringLiteral("cannot be read: %1").arg(*error));
        return std::nullopt;
    }
    if (size_t(bytes->size()) != kEepromSize) {
        say(error, file,
            QStringLiteral("the EEPROM has %1 bytes, the file has %2").arg(kEepromSize).arg(bytes->size()));
        return std::nullopt;
    }
    EepromContents contents;
    std::copy(bytes->begin(), bytes->end(), contents.begin());
    return contents;
}

bool writeContents(EepromContents const& contents, QString const& file, QString* error) {
    if (files::replace(file, {reinterpret_cast<char const*>(contents.data()), int(contents.size())}, error))
        return true;
    say(error, file, QStringLiteral("cannot be written: %1").arg(*error));
    return false;
}
} // namespace simulator
