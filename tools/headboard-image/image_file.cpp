#include "tools/headboard-image/image_file.h"

#include <QFileInfo>
#include <QSaveFile>

namespace headboard_image {
namespace {

constexpr qint64 kSmallestImage = 8;
constexpr qint64 kLargestImage = 0x10000;

std::string about(char const* what, QString const& fileName, QString const& why) {
    return std::string(what) + ' ' + fileName.toStdString() + ": " + why.toStdString();
}

// Devices and pipes may never end, and a folder can be opened on some systems.
bool openRegularFile(QFile& file, std::string& fault) {
    bool const isOther = file.exists() && !QFileInfo(file).isFile();
    if (!isOther && file.open(QIODevice::ReadOnly))
        return true;
    fault = about("cannot read", file.fileName(),
                  isOther ? QStringLiteral("it is no regular file") : file.errorString());
    return false;
}

} // namespace

bool isReadableFile(QString const& fileName, std::string& fault) {
    QFile file(fileName);
    return openRegularFile(file, fault);
}

std::optional<std::vector<uint8_t>> readImage(QString const& fileName, std::string& fault) {
    QFile file(fileName);
    if (!openRegularFile(file, fault))
        return std::nullopt;
    QByteArray const bytes = file.read(kLargestImage + 1);
    if (file.error() != QFileDevice::NoError) {
        fault = about("cannot read", fileName, file.errorString());
        return std::nullopt;
    }
    if (bytes.size() < kSmallestImage || bytes.size() > kLargestImage) {
        fault = about("no image:", fileName,
                      QStringLiteral("it has %1 bytes, an image 8 to 65536").arg(file.size()));
        return std::nullopt;
    }
    return std::vector<uint8_t>(bytes.begin(), bytes.end());
}

bool writeImage(QString const& fileName, std::span<uint8_t const> image, std::string& fault) {
    QSaveFile file(fileName);
    auto const size = qint64(image.size());
    // Flushed here, because a commit does not notice when what is still buffered cannot be written.
    if (file.open(QIODevice::WriteOnly) &&
        file.write(reinterpret_cast<char const*>(image.data()), size) == size && file.flush() &&
        file.commit())
        return true;
    fault = about("cannot write", fileName, file.errorString());
    return false;
}

} // namespace headboard_image
