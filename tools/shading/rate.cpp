#include "pictures/block_statistics.h"
#include "pictures/uniformity.h"
#include "simulator/camera/optics.h"
#include "simulator/files/whole_file.h"
#include "simulator/pictures/colour_pipeline.h"
#include "tools/shading/commands.h"

#include <algorithm>

namespace shading {
namespace {
using pictara::Certificate;

constexpr double kLimit = 2;          // a*b*; the dialog's
constexpr double kTolerance = 1;      // beyond the limit, what the dialog shows in yellow
constexpr uint32_t kRing = 0xDD2200;  // the dialog's red
constexpr int kWidestShown = 470;     // pixels; of the page
constexpr double kLeastLight = 0.005; // of full scale, below which no balance is found

kestra::Frame frameOf(QImage const& picture) {
    return {picture.constBits(), kestra::ImageType::Rgb32, picture.width(), picture.height(),
            picture.bytesPerLine()};
}

/// Shows a raw picture as the host does for the dialog: grey in the middle, from a quarter to three quarters
/// of both sides. Null with the cause and, when it is too dark for that, the exit code.
QImage develop(Mosaic mosaic, QString& shownWith, int* exitCode, QString* error) {
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
        *exitCode = kNothingFound;
        *error = QStringLiteral("%1: it is too dark to balance its colours").arg(mosaic.file);
        return {};
    }
    pictara::ColourSettings const settings{.redGain = green / red,
                                           .blueGain = green / blue,
                                           .displayExponent = 0.45,
                                           .contrast = 1,
                                           .blackLift = 0.005};
    QImage picture;
    pictara::ColourPipeline(camera).render(mosaic.frame(), settings, picture);
    shownWith = QStringLiteral("black level %1 (%2) off, gains %3 red and %4 blue, no colour matrix, display "
                               "exponent %5")
                    .arg(camera.blackLevel)
                    .arg(mosaic.blackSource)
                    .arg(settings.redGain, 0, 'f', 3)
                    .arg(settings.blueGain, 0, 'f', 3)
                    .arg(settings.displayExponent);
    return picture;
}

// The ring is as wide as the dialog's, so it goes into the picture as the page shows it.
QImage marked(QImage const& picture, QRect const& worst) {
    QImage shown = picture.scaledToWidth(std::min(picture.width(), kWidestShown), Qt::SmoothTransformation);
    double const scale = double(shown.width()) / picture.width();
    // A block's right and bottom do not belong to it.
    QRect const inside = QTransform::fromScale(scale, scale).mapRect(worst.adjusted(0, 0, -1, -1));
    shown.bits(); // no other picture's pixels
    kestra::paintRing(frameOf(shown), inside.adjusted(0, 0, 1, 1), kRing);
    return shown;
}

pictara::HeatMap mapOf(QImage const& picture, double worst) {
    auto const statistics = std::make_unique<CSbl>();
    statistics->measure(picture.constBits(), picture.width(), picture.height(), picture.bytesPerLine() / 4);
    pictara::HeatMap map{
        "Colour deviation of the blocks, a*b*", "", statistics->columns(), {}, 0, std::max(worst, 0.01)};
    for (int row = 0; row < statistics->rows(); ++row)
        for (int column = 0; column < statistics->columns(); ++column)
            map.values.push_back(statistics->deviation(row, column));
    return map;
}
} // namespace

std::optional<Certificate> rate(Request const& request, int* exitCode, QString* error) {
    QString const& file = request.files[0];
    auto const bytes = files::read(file, kMostBytes, error);
    if (!bytes)
        return std::nullopt;
    bool const isRaw = request.coding.phase || request.coding.bare;
    QImage picture = isRaw ? QImage() : shownPicture(*bytes);
    QString shownWith = QStringLiteral("its own values, as sRGB");
    if (picture.isNull())
        if (auto mosaic = readMosaic(file, request.coding, error))
            picture = develop(*std::move(mosaic), shownWith, exitCode, error);
    if (picture.isNull())
        return std::nullopt;
    bool const isGrey = picture.isGrayscale();
    picture = picture.convertToFormat(QImage::Format_RGB32);
    auto const measured = kestra::measureUniformity(frameOf(picture), 0);
    // A grey's chroma differs a little with its lightness, by the white point of the figure.
    double const value = measured && !isGrey ? measured->value : 0;
    pictara::Verdict const verdict = value <= kLimit                ? pictara::Verdict::Pass
                                     : value <= kLimit + kTolerance ? pictara::Verdict::Marginal
                                                                    : pictara::Verdict::Fail;
    *exitCode = verdict == pictara::Verdict::Fail ? kNothingFound : kDone;
    Certificate certificate{{}, textOf(verdict), {}, verdict};
    certificate.tables.push_back({{},
                                  {{"Quality", "measured", "limit", "verdict"},
                                   {"Colour uniformity, a*b*", QString::number(value, 'f', 2),
                                    QString::number(kLimit, 'f', 2), textOf(verdict)}}});
    certificate.facts = {{"Picture", file}, {"Shown with", shownWith}};
    certificate.figures = {
        {"colour_deviation_ab", value}, {"colour_deviation_limit_ab", kLimit}, {"is_greyscale", isGrey}};
    if (isGrey)
        certificate.facts.emplace_back("Colour", "none: the picture is greyscale (a raw one takes --phase)");
    if (isGrey || !measured)
        return certificate;
    QRect const worst = measured->worstBlock; // its right and bottom do not belong to it
    certificate.facts.emplace_back("Worst block",
                                   QString::asprintf("columns %d to %d, rows %d to %d", worst.left(),
                                                     worst.right() - 1, worst.top(), worst.bottom() - 1));
    certificate.figures["worst_block_pixels"] =
        QJsonArray{worst.left(), worst.top(), worst.right(), worst.bottom()};
    certificate.maps.push_back(mapOf(picture, value));
    certificate.pictures.push_back({marked(picture, worst), "The worst block is marked", "rated.png"});
    return certificate;
}
} // namespace shading
