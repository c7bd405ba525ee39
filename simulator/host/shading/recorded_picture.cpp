#include "simulator/host/shading/recorded_picture.h"

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

constexpr qint64 kMostPngBytes = 256 << 20;
constexpr int kLongestSide = 16384; // pixels

uint32_t bytesPerPixel(FrameType type) { return type == FrameType::Raw8 ? 1 : 2; }

std::optional<Frame> readPng(QString const& name, CameraDescription const& camera, QString* error) {
    auto bytes = files::read(name, kMostPngBytes, error);
    if (!bytes) {
        *error = QStringLiteral("The picture %1 cannot be read: %2").arg(name, *error);
        return std::nullopt;
    }
    QBuffer buffer(&*bytes);
    QImageReader reader(&buffer, "png");
    // Asked first: few bytes can tell a picture that no memory holds.
    QSize const size = reader.size();
    if (size.width() > kLongestSide || size.height() > kLongestSide) {
        *error =
            QStringLiteral("The picture %1 has a side of more than %2 pixels.").arg(name).arg(kLongestSide);
        return std::nullopt;
    }
    QImage const picture = reader.read();
    if (picture.isNull())
        *error = QStringLiteral("The picture %1 cannot be read: %2").arg(name, reader.errorString());
    else if (!picture.isGrayscale() || picture.width() < 2 || picture.height() < 2)
        *error = QStringLiteral("The picture %1 must be a greyscale mosaic.").arg(name);
    else if (camera.rawType == FrameType::Ycbcr)
        *error = QStringLiteral("The profile %1 delivers no mosaic, as a PNG holds one.").arg(camera.profile);
    if (!error->isEmpty())
        return std::nullopt;
    // Wide words hold the counts of any sensor; 8-bit values come spread over the range of 16 bits.
    int const spread = picture.format() == QImage::Format_Grayscale16 ? 1 : 257;
    QImage const wide = picture.convertToFormat(QImage::Format_Grayscale16);
    Frame frame{.type = FrameType::Raw12,
                .width = uint32_t(wide.width()),
                .height = wide.height(),
                .pitch = uint32_t(wide.width()) * 2,
                .pixels = {}};
    frame.pixels.resize(int(frame.pitch) * frame.height);
    for (int y = 0; y < frame.height; ++y) {
        auto const* const row = reinterpret_cast<quint16 const*>(wide.constScanLine(y));
        for (int x = 0; x < wide.width(); ++x)
            qToLittleEndian<quint16>(quint16(row[x] / spread),
                                     frame.pixels.data() + qsizetype(y) * frame.pitch + 2 * qsizetype(x));
    }
    return frame;
}

std::optional<Frame> readSamples(QString const& name, CameraDescription const& camera, QString* error) {
    Frame frame{.type = camera.rawType,
                .width = camera.width,
                .height = int32_t(camera.height),
                .pitch = camera.width * bytesPerPixel(camera.rawType),
                .pixels = {}};
    qint64 const needed = qint64(frame.pitch) * frame.height;
    auto const bytes = files::read(name, std::max(needed, files::kMostText), error);
    if (!bytes) {
        *error = QStringLiteral("The file %1 cannot be read: %2").arg(name, *error);
        return std::nullopt;
    }
    if (bytes->size() != needed) {
        *error = QStringLiteral("The file %1 has %2 bytes; a frame of the profile %3 has %4.")
                     .arg(name)
                     .arg(bytes->size())
                     .arg(camera.profile)
                     .arg(needed);
        return std::nullopt;
    }
    frame.pixels = *bytes;
    return frame;
}
} // namespace

std::optional<Frame> readRecordedPicture(QString const& file, CameraDescription const& camera,
                                         QString* error) {
    error->clear();
    return file.endsWith(QLatin1String(".png"), Qt::CaseInsensitive) ? readPng(file, camera, error)
                                                                     : readSamples(file, camera, error);
}
} // namespace pictara
