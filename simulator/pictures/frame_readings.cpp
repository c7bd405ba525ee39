#include "simulator/pictures/frame_readings.h"

#include <algorithm>
#include <numeric>

namespace pictara {
namespace {
using simulator::CameraDescription;
using simulator::Frame;
using simulator::FrameType;

bool isMosaic(Frame const& frame) { return frame.type == FrameType::Raw8 || frame.type == FrameType::Raw12; }

char const* bytesAt(Frame const& frame, int x, int y) {
    return frame.pixels.constData() + qsizetype(y) * frame.pitch +
           qsizetype(x) * (frame.type == FrameType::Raw8 ? 1 : 2);
}

int sampleAt(Frame const& frame, int x, int y) {
    auto const* const bytes = reinterpret_cast<uchar const*>(bytesAt(frame, x, y));
    return frame.type == FrameType::Raw8 ? bytes[0] : bytes[0] | bytes[1] << 8;
}

// By the distance from the cell's red site; bit 0: column, bit 1: row.
constexpr char const* kSites[] = {"R", "Gr", "Gb", "B"};

QString rawText(int x, int y, Frame const& frame, CameraDescription const& camera) {
    if (y < int(camera.unusableRows))
        return QStringLiteral("no picture in this row");
    if (isMosaic(frame))
        return QString::asprintf("raw %s %d", kSites[((x & 1) | (y & 1) << 1) ^ int(camera.bayerPhase)],
                                 sampleAt(frame, x, y));
    // Chroma of a pair holds for both pixels.
    return QString::asprintf("raw Y %d Cb %d Cr %d", uchar(bytesAt(frame, x, y)[0]),
                             uchar(bytesAt(frame, x & ~1, y)[1]), uchar(bytesAt(frame, x | 1, y)[1]));
}
} // namespace

QString pixelText(QPoint place, Frame const& frame, CameraDescription const& camera, QImage const& picture) {
    QColor const shown = picture.pixelColor(place);
    return QString::asprintf("x %d  y %d    ", place.x(), place.y()) +
           rawText(place.x(), place.y(), frame, camera) +
           QString::asprintf("    shown %d %d %d", shown.red(), shown.green(), shown.blue());
}

double markClipped(Frame const& frame, CameraDescription const& camera, QImage const& picture,
                   QImage& marked) {
    constexpr QRgb kStripes[] = {qRgb(0, 0, 0), qRgb(255, 212, 0)};
    constexpr int kStripe = 16; // pixels
    bool const hasSamples = isMosaic(frame), isWide = frame.type == FrameType::Raw12;
    int const full = hasSamples ? int(camera.whiteLevel) : 255, top = int(camera.unusableRows);
    qsizetype clipped = 0;
    for (int y = top; y < picture.height(); ++y) {
        auto const* const shown = reinterpret_cast<QRgb const*>(picture.constScanLine(y));
        auto* const out = reinterpret_cast<QRgb*>(marked.scanLine(y));
        auto const* const row = reinterpret_cast<uchar const*>(bytesAt(frame, 0, y));
        for (qsizetype x = 0, width = picture.width(); x < width; ++x) {
            int const level = isWide       ? row[2 * x] | row[2 * x + 1] << 8
                              : hasSamples ? row[x]
                                           : std::max({qRed(shown[x]), qGreen(shown[x]), qBlue(shown[x])});
            if (level < full)
                continue;
            ++clipped;
            // Both of a pair, so that one colour of the mosaic alone is seen in a smaller picture.
            out[x & ~1] = out[x | 1] = kStripes[((x + y) / kStripe) & 1];
        }
    }
    return 100 * double(clipped) / (double(picture.width()) * (picture.height() - top));
}

std::vector<Colour> profileAlong(QLine line, Frame const& frame, CameraDescription const& camera,
                                 ColourSettings settings) {
    settings = {.redGain = settings.redGain, .blueGain = settings.blueGain}; // no matrix, which mixes colours
    constexpr int kPoints = 160, kLeastSide = 2, kSidesInAPicture = 64;
    int const width = int(frame.width), height = frame.height;
    int const side = std::max(kLeastSide, std::min(width, height) / kSidesInAPicture & ~1);
    std::vector<Colour> profile(kPoints);
    for (int i = 0; i < kPoints; ++i) {
        QPointF const place = line.p1() + QPointF(line.p2() - line.p1()) * i / (kPoints - 1);
        // From an even place on, the block's mosaic and pairs begin as the frame's.
        int const x = std::clamp(int(place.x()) - side / 2, 0, width - side) & ~1;
        int const y = std::clamp(int(place.y()) - side / 2, int(camera.unusableRows + 1), height - side) & ~1;
        char const* const first = bytesAt(frame, x, y);
        Frame const block{
            frame.type, uint32_t(side), side, frame.pitch,
            QByteArray::fromRawData(first, int(bytesAt(frame, x + side, y + side - 1) - first))};
        readLinear(block, camera, settings, [&](uint32_t, ColourRow const& row) {
            std::vector<float> const* const planes[] = {&row.red, &row.green, &row.blue};
            for (size_t k = 0; k < 3; ++k)
                profile[size_t(i)][k] +=
                    std::accumulate(planes[k]->begin(), planes[k]->end(), 0.0) / (side * side);
        });
    }
    return profile;
}

QImage rawPicture(Frame const& frame) {
    QImage counts(int(frame.width), frame.height, QImage::Format_Grayscale16);
    for (int y = 0; y < frame.height; ++y)
        for (int x = 0; x < counts.width(); ++x)
            reinterpret_cast<quint16*>(counts.scanLine(y))[x] = quint16(sampleAt(frame, x, y));
    return counts;
}
} // namespace pictara
