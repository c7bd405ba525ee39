#include "tools/shading/recorded_picture.h"

#include "simulator/files/whole_file.h"

#include <QBuffer>
#include <QImageReader>
#include <QtEndian>
#include <algorithm>

namespace pictara {
namespace {
using simulator::CameraDescription;
using simulator::Frame;
using simulator::FrameType;

// Null with a message for the user.
QImage readPng(QString const& name, CameraDescription const& camera, QString* error) {
    constexpr qint64 kMostBytes = 256 << 20;
    constexpr int kLongestSide = 16384; // pixels
    auto bytes = files::read(name, kMostBytes, error);
    if (!bytes) {
        *error = QStringLiteral("The picture %1 cannot be read: %2").arg(name, *error);
        return {};
    }
    QBuffer buffer(&*bytes);
    QImageReader reader(&buffer, "png");
    // Asked first: few bytes can tell a picture that no memory holds.
    QSize const size = reader.size();
    bool const isTooLong = size.width() > kLongestSide || size.height() > kLongestSide;
    QImage const picture = isTooLong ? QImage() : reader.read();
    if (isTooLong)
        *error =
            QStringLiteral("The picture %1 has a side of more than %2 pixels.").arg(name).arg(kLongestSide);
    else if (picture.isNull())
        *error = QStringLiteral("The picture %1 cannot be read: %2").arg(name, reader.errorString());
    else if (!picture.isGrayscale() || picture.width() < 2 || picture.height() < 2)
        *error = QStringLiteral("The picture %1 must be a greyscale mosaic.").arg(name);
    else if (camera.rawType == FrameType::Ycbcr)
        *error = QStringLiteral("The profile %1 delivers no mosaic, as a PNG holds one.").arg(camera.profile);
    else
        return picture;
    return {};
}

// Wide words hold the counts of any sensor; 8-bit values come spread over the range of 16 bits.
Frame frameOf(QImage const& picture) {
    int const spread = picture.format() == QImage::Format_Grayscale16 ? 1 : 257;
    QImage const wide = picture.convertToFormat(QImage::Format_Grayscale16);
    uint32_t const pitch = uint32_t(wide.width()) * 2;
    Frame frame{FrameType::Raw12, uint32_t(wide.width()), wide.height(), pitch,
                QByteArray(int(pitch) * wide.height(), '\0')};
    char* sample = frame.pixels.data();
    for (int y = 0; y < frame.height; ++y)
        for (int x = 0; x < wide.width(); ++x, sample += 2)
            qToLittleEndian(quint16(reinterpret_cast<quint16 const*>(wide.constScanLine(y))[x] / spread),
                            sample);
    return frame;
}

std::optional<Frame> readSamples(QString const& name, CameraDescription const& camera, QString* error) {
    uint32_t const pitch = camera.width * (camera.rawType == FrameType::Raw8 ? 1 : 2);
    qint64 const needed = qint64(pitch) * camera.height;
    auto const bytes = files::read(name, std::max(needed, files::kMostText), error);
    if (!bytes)
        *error = QStringLiteral("The file %1 cannot be read: %2").arg(name, *error);
    else if (bytes->size() != needed)
        *error = QStringLiteral("The file %1 has %2 bytes; a frame of the profile %3 has %4.")
                     .arg(name)
                     .arg(bytes->size())
                     .arg(camera.profile)
                     .arg(needed);
    else
        return Frame{camera.rawType, camera.width, int32_t(camera.height), pitch, *bytes};
    return std::nullopt;
}
} // namespace

std::optional<Frame> readRecordedPicture(QString const& file, CameraDescription const& camera,
                                         QString* error) {
    if (!file.endsWith(QLatin1String(".png"), Qt::CaseInsensitive))
        return readSamples(file, camera, error);
    QImage const picture = readPng(file, camera, error);
    return picture.isNull() ? std::nullopt : std::optional(frameOf(picture));
}
} // namespace pictara
