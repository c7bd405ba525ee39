#include "tools/headboard-image/image_file.h"

#include "simulator/files/whole_file.h"

namespace headboard_image {
namespace {
constexpr qint64 kSmallestImage = 8;
constexpr qint64 kLargestImage = 0x10000;

std::optional<QByteArray> read(QString const& fileName, std::string* error) {
    QString why;
    auto bytes = files::read(fileName, files::kMostText, &why);
    if (!bytes)
        *error = why.toStdString();
    return bytes;
}
} // namespace

bool isReadableFile(QString const& fileName, std::string* error) { return read(fileName, error).has_value(); }

std::optional<std::vector<uint8_t>> readImage(QString const& fileName, std::string* error) {
    auto const bytes = read(fileName, error);
    if (!bytes)
        return std::nullopt;
    if (bytes->size() < kSmallestImage || bytes->size() > kLargestImage) {
        *error = QStringLiteral("%1: no image: it has %2 bytes, an image 8 to 65536")
                     .arg(fileName)
                     .arg(bytes->size())
                     .toStdString();
        return std::nullopt;
    }
    return std::vector<uint8_t>(bytes->begin(), bytes->end());
}

bool writeImage(QString const& fileName, std::span<uint8_t const> image, std::string* error) {
    QString why;
    if (files::replace(fileName, {reinterpret_cast<char const*>(image.data()), int(image.size())}, &why))
        return true;
    *error = why.toStdString();
    return false;
}
} // namespace headboard_image
