#include "tools/headboard-image/image_file.h"

#include "simulator/files/whole_file.h"

namespace headboard_image {
namespace {
constexpr qint64 kSmallestImage = 8;
constexpr qint64 kLargestImage = 0x10000;

std::string about(char const* what, QString const& fileName, QString const& why) {
    return std::string(what) + ' ' + fileName.toStdString() + ": " + why.toStdString();
}

std::optional<QByteArray> read(QString const& fileName, std::string* error) {
    QString why;
    auto bytes = files::read(fileName, files::kMostText, &why);
    if (!bytes)
        *error = about("cannot read", fileName, why);
    return bytes;
}
} // namespace

bool isReadableFile(QString const& fileName, std::string* error) { return read(fileName, error).has_value(); }

std::optional<std::vector<uint8_t>> readImage(QString const& fileName, std::string* error) {
    auto const bytes = read(fileName, error);
    if (!bytes)
        return std::nullopt;
    if (bytes->size() < kSmallestImage || bytes->size() > kLargestImage) {
        *error = about("no image:", fileName,
                       QStringLiteral("it has %1 bytes, an image 8 to 65536").arg(bytes->size()));
        return std::nullopt;
    }
    return std::vector<uint8_t>(bytes->begin(), bytes->end());
}

bool writeImage(QString const& fileName, std::span<uint8_t const> image, std::string* error) {
    QString why;
    if (files::replace(fileName, {reinterpret_cast<char const*>(image.data()), int(image.size())}, &why))
        return true;
    *error = about("cannot write", fileName, why);
    return false;
}
} // namespace headboard_image
