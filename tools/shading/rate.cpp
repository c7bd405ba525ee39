#include "tools/shading/rate.h"

#include "pictures/block_statistics.h"
#include "pictures/uniformity.h"
#include "simulator/camera/optics.h"
#include "simulator/files/whole_file.h"
#include "simulator/pictures/colour_pipeline.h"

#include <QBuffer>
#include <QImageReader>
#include <QJsonArray>
#include <algorithm>
#include <memory>
#include <utility>

namespace shading {
namespace {
using pictara::Certificate;

constexpr double kTolerance = 1;     // beyond the limit, what the dialog shows in yellow
constexpr uint32_t kRing = 0xDD2200; // the dialog's red
constexpr int kWidestShown = 470;    // pixels; of the page
constexpr int kLongestSide = 16384;  // pixels
constexpr qint64 kMostBytes = 512 << 20;
constexpr double kLeastLight = 0.005; // of full scale, below which no balance is found

kestra::Frame frameOf(QImage const& picture) {
    return {picture.constBits(), kestra::ImageType::Rgb32, picture.width(), picture.height(),
            picture.bytesPerLine()};
}

// Null for what Qt cannot show, and for TIFF: Qt would take a DNG for one and show its thumbnail.
QImage readShown(QByteArray bytes) {
    QBuffer buffer(&bytes);
    QImageReader reader(&buffer);
    // Asked first: few bytes can tell a picture that no memory holds.
    QSize const size = reader.size();
    bool const isTooLong = size.width() > kLongestSide || size.height() > kLongestSide;
    return isTooLong || reader.format() == "tiff" ? QImage() : reader.read();
}

/// Shows a raw picture as the host does for the dialog: grey in the middle, from a quarter to three quarters
/// of both sides, where the dialog balances it, too. Null with the cause.
QImage develop(Mosaic mosaic, Certificate& certificate, QString* error) {
    simulator::CameraDescription const camera = mosaic.description();
    simulator::SensorArray const sites{mosaic.width, mosaic.height, mosaic.bayerPhase, 0};
    simulator::PerPlane<double> sums{};
    for (uint32_t y = 0; y < mosaic.height; ++y)
        for (uint32_t x = 0; x < mosaic.width; ++x) {
            uint16_t& sample = mosaic.samples[size_t(y) * mosaic.width + x];
            simulator::Plane const plane = sites.planeAt(x, y);
            // To one black level of all planes.
            double const counts = std::max(0.0, sample - mosaic.blackLevel[plane]);
            sample = uint16_t(std::min(counts + camera.blackLevel, 65535.0));
            bool const isMiddle = x >= mosaic.width / 4 && x < 3 * mosaic.width / 4 &&
                                  y >= mosaic.height / 4 && y < 3 * mosaic.height / 4;
            sums[plane] += isMiddle ? counts : 0;
        }
    double const green = (sums[simulator::GreenRed] + sums[simulator::GreenBlue]) / 2;
    double const red = sums[simulator::Red], blue = sums[simulator::Blue];
    double const full = (camera.whiteLevel - camera.blackLevel) * mosaic.width * mosaic.height / 16;
    if (std::min({red, green, blue}) < kLeastLight * full) {
        *error = QStringLiteral("%1: it is too dark to balance its colours").arg(mosaic.file);
        return {};
    }
    pictara::ColourSettings settings = verificationSettings();
    settings.redGain = green / red;
    settings.blueGain = green / blue;
    QImage picture;
    pictara::ColourPipeline(camera).render(mosaic.frame(), settings, picture);
    certificate.facts.emplace_back(
        "Shown with", QStringLiteral("black level %1 (%2) off, gains %3 red and %4 blue, no colour matrix, "
                                     "display exponent %5, black lift %6 %")
                          .arg(camera.blackLevel)
                          .arg(mosaic.blackSource)
                          .arg(settings.redGain, 0, 'f', 3)
                          .arg(settings.blueGain, 0, 'f', 3)
                          .arg(settings.displayExponent)
                          .arg(100 * settings.blackLift));
    return picture;
}

void tellBlocks(pictara::Evenness const& evenness, Certificate& certificate) {
    QImage const& picture = evenness.picture;
    auto const statistics = std::make_unique<CSbl>();
    statistics->measure(picture.constBits(), picture.width(), picture.height(), picture.bytesPerLine() / 4);
    std::vector<double> deviations;
    for (int row = 0; row < statistics->rows(); ++row)
        for (int column = 0; column < statistics->columns(); ++column)
            deviations.push_back(statistics->deviation(row, column));
    certificate.maps.push_back({"Colour deviation of the blocks, a*b*", "", statistics->columns(), deviations,
                                0, std::max(evenness.uniformity, 0.01)});
    QJsonArray figures;
    std::transform(deviations.begin(), deviations.end(), std::back_inserter(figures), pictara::rounded);
    certificate.figures["columns"] = statistics->columns();
    certificate.figures["deviations_ab"] = figures;

    // The ring is as wide as the dialog's, so it goes into the picture as the page shows it.
    QImage marked = picture.scaledToWidth(std::min(picture.width(), kWidestShown), Qt::SmoothTransformation);
    double const scale = double(marked.width()) / picture.width();
    QRect const worst = evenness.blocks.worstBlock;
    QRect block;
    block.setCoords(int(worst.left() * scale), int(worst.top() * scale), int(worst.right() * scale),
                    int(worst.bottom() * scale));
    marked.bits(); // no other picture's pixels
    kestra::paintRing(frameOf(marked), block, kRing);
    certificate.pictures.push_back({marked, "The worst block is marked", "rated.png"});
}
} // namespace

pictara::ColourSettings verificationSettings() {
    return {.displayExponent = 0.45, .contrast = 1, .blackLift = 0.005};
}

pictara::Evenness evennessOf(QImage const& picture, double limit) {
    pictara::Evenness evenness;
    auto const uniformity = kestra::measureUniformity(frameOf(picture), 0);
    // A grey's chroma differs a little with its lightness, by the white point of the figure.
    evenness.uniformity = uniformity && !picture.isGrayscale() ? uniformity->value : 0;
    evenness.limit = limit;
    evenness.rating = evenness.uniformity <= limit                ? QStringLiteral("green")
                      : evenness.uniformity <= limit + kTolerance ? QStringLiteral("yellow")
                                                                  : QStringLiteral("red");
    evenness.blocks.worstBlock = uniformity ? uniformity->worstBlock : QRect();
    evenness.picture = picture;
    return evenness;
}

std::optional<Certificate> ratePicture(RateRequest const& request, QString* error) {
    Certificate certificate{"shading"};
    certificate.facts.emplace_back("Picture", request.picture);
    auto const bytes = files::read(request.picture, kMostBytes, error);
    if (!bytes)
        return std::nullopt;
    bool const isRaw = request.coding.phase || request.coding.bare;
    QImage picture = isRaw ? QImage() : readShown(*bytes);
    if (!picture.isNull())
        certificate.facts.emplace_back("Shown with", "its own values, as sRGB");
    else if (auto mosaic = readMosaic(request.picture, request.coding, error))
        picture = develop(*std::move(mosaic), certificate, error);
    if (picture.isNull())
        return std::nullopt;
    bool const isGrey = picture.isGrayscale();
    picture = picture.convertToFormat(QImage::Format_RGB32);
    pictara::Evenness const evenness = evennessOf(picture, request.limit);
    QRect const worst = evenness.blocks.worstBlock; // its right and bottom do not belong to it
    pictara::Verdict const verdict = pictara::verdictOf(evenness.rating);
    certificate.judge(verdict);
    certificate.result = textOf(verdict);
    auto const shown = [](double value) { return QString::number(value, 'f', 2); };
    certificate.tables.push_back(
        {{},
         {{"Quality", "measured", "limit", "verdict"},
          {"Colour uniformity, a*b*", shown(evenness.uniformity), shown(evenness.limit), textOf(verdict)}}});
    certificate.facts.emplace_back("Size",
                                   QStringLiteral("%1 x %2").arg(picture.width()).arg(picture.height()));
    if (isGrey)
        certificate.facts.emplace_back("Colour", "none: the picture is greyscale (a raw one takes --phase)");
    else
        certificate.facts.emplace_back("Worst block", QStringLiteral("columns %1 to %2, rows %3 to %4")
                                                          .arg(worst.left())
                                                          .arg(worst.right() - 1)
                                                          .arg(worst.top())
                                                          .arg(worst.bottom() - 1));
    certificate.figures["picture"] = request.picture;
    certificate.figures["colour_deviation_ab"] = evenness.uniformity;
    certificate.figures["colour_deviation_limit_ab"] = evenness.limit;
    certificate.figures["is_greyscale"] = isGrey;
    certificate.figures["worst_block_pixels"] =
        QJsonArray{worst.left(), worst.top(), worst.right(), worst.bottom()};
    if (!isGrey)
        tellBlocks(evenness, certificate);
    return certificate;
}
} // namespace shading
