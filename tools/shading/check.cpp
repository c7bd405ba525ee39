#include "tools/shading/commands.h"
#include "tools/shading/picture_means.h"

#include <algorithm>

namespace shading {
namespace {
using pictara::Certificate;
using pictara::Verdict;
using simulator::Plane;
using solver::Flaw;

// In the order of the flaws.
constexpr struct {
    char const* key;
    ExitCode exitCode;
    char const* remedy;
} kFlaws[] = {
    {"none", kDone, ""},
    {"too dark", kTooDark, "Expose longer, until the brightest plane reaches about 70 % of the range."},
    {"clipped", kClipped, "Expose shorter, until the brightest plane stays at about 70 % of the range."},
    {"object", kNotFlat, "Clean lens and diffuser, and keep all but the diffuser out of the picture."},
    {"uneven lamp", kNotFlat,
     "Centre the lamp behind the diffuser, or take as many pictures with the camera turned by half a turn: "
     "\"measure --turned\" tells the lamp from the lens."},
};
static_assert(std::size(kFlaws) == size_t(Flaw::UnevenLamp) + 1);

// How much brighter one border is than the other, of a plane through the brightness; percent of its mean.
double gradientAlong(Eigen::ArrayXd const& place, Eigen::ArrayXd const& brightness) {
    Eigen::ArrayXd const off = place - place.mean();
    double const mean = brightness.mean();
    return mean > 0 ? 200 * (brightness * off).sum() / off.square().sum() / mean : 0;
}

constexpr Column kPictureColumns[] = {{"file", "picture"},
                                      {"flaw", "flaw"},
                                      {"noise_of_a_sample_percent", "noise of a sample %", 2},
                                      {"gradient_left_right_percent", "brighter left to right %", 1},
                                      {"gradient_top_bottom_percent", "top to bottom %", 1},
                                      {"cause", nullptr},
                                      {"remedy", nullptr},
                                      {"refused", nullptr},
                                      {"specks", nullptr},
                                      {"black_level_told_by", nullptr}};
constexpr Column kPlaneColumns[] = {{"file", "picture"},
                                    {"plane", "plane"},
                                    {"black_level_counts", "black level"},
                                    {"brightest_percent", "brightest %", 1},
                                    {"darkest_percent", "darkest %", 1},
                                    {"clipped_percent", "clipped %", 2}};

pictara::HeatMap mapOf(PictureMeans const& picture, Eigen::ArrayXd const& green) {
    auto const& refused = picture.inspection.refused;
    Eigen::ArrayXd shown = 100 * green;
    if (refused.size() != 0)
        shown = refused.select(0, shown);
    QString const title = picture.of.file + ": brightness of green, refused blocks as 0";
    double const high = std::max(1.0, shown.maxCoeff());
    return {title, " %", picture.blocks.columns, {shown.begin(), shown.end()}, 0, high};
}
} // namespace

std::optional<Certificate> check(Request const& request, int* exitCode, QString* error) {
    Certificate certificate{{}, "usable", {}, Verdict::Pass};
    std::vector<QJsonArray> pictures, planes;
    for (QString const& file : request.files) {
        std::optional<PictureMeans> const picture = readMeans(file, request.coding, error);
        if (!picture)
            return std::nullopt;
        solver::Inspection const& seen = picture->inspection;
        auto const& [key, code, remedy] = kFlaws[size_t(seen.flaw)];
        auto const& means = picture->blocks.planes;
        Eigen::ArrayXd const green = 0.5 * (means[Plane::GreenRed].mean + means[Plane::GreenBlue].mean);
        pictures.push_back({file, key, 100 * picture->noise, gradientAlong(means[Plane::GreenRed].u, green),
                            gradientAlong(means[Plane::GreenRed].v, green), seen.fault, remedy,
                            placeText(*picture, seen.refused), placeText(*picture, !seen.trusted),
                            picture->of.blackSource});
        for (size_t plane = 0; plane < simulator::kPlaneCount; ++plane)
            planes.push_back({file, simulator::kPlaneKeys[plane], picture->of.blackLevel[plane],
                              100 * means[plane].mean.maxCoeff(), 100 * means[plane].mean.minCoeff(),
                              100 * means[plane].clippedShare});
        certificate.maps.push_back(mapOf(*picture, green));
        if (code > *exitCode) {
            *exitCode = code;
            certificate.result = QStringLiteral("not usable");
            certificate.cause = file + ": " + seen.fault;
            certificate.judge(Verdict::Fail);
        }
    }
    tell(certificate, "pictures", "Pictures", kPictureColumns, pictures);
    tell(certificate, "planes", "Planes", kPlaneColumns, planes);
    return certificate;
}
} // namespace shading
