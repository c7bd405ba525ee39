#include "tools/shading/check.h"

#include "tools/shading/command_line.h"
#include "tools/shading/picture_means.h"

#include <QJsonArray>
#include <algorithm>
#include <cmath>

namespace shading {
namespace {
using pictara::Certificate;
using pictara::rounded;
using pictara::Verdict;
using simulator::kPlaneKeys;
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

QString percentText(double percent) { return QString::number(percent, 'f', std::abs(percent) < 1 ? 2 : 1); }

// How much brighter one border is than the other, of a plane through the brightness; percent of its mean.
double gradientAlong(Eigen::ArrayXd const& place, Eigen::ArrayXd const& brightness) {
    Eigen::ArrayXd const off = place - place.mean();
    double const mean = brightness.mean();
    return mean > 0 ? 200 * (brightness * off).sum() / off.square().sum() / mean : 0;
}

// A row of a table and an object of the same figures.
struct Figures {
    QStringList row;
    QJsonObject object;

    void add(char const* key, double value) {
        row << percentText(value);
        object[QLatin1String(key)] = rounded(value);
    }
};

QJsonObject tellPicture(PictureMeans const& picture, pictara::Table& summary, Certificate& certificate) {
    solver::Inspection const& seen = picture.inspection;
    auto const& planes = picture.blocks.planes;
    Eigen::ArrayXd const green = 0.5 * (planes[Plane::GreenRed].mean + planes[Plane::GreenBlue].mean);
    Figures told{{picture.file, textOf(seen.flaw == Flaw::None ? Verdict::Pass : Verdict::Fail)}, {}};
    told.add("noise_of_a_sample_percent", 100 * picture.noise);
    // A plane has a quarter of a block's pixels.
    told.add("noise_of_a_block_percent", 100 * picture.noise * std::sqrt(4.0 * double(green.size())) /
                                             std::sqrt(double(picture.width) * picture.height));
    told.add("gradient_left_right_percent", gradientAlong(planes[Plane::GreenRed].u, green));
    told.add("gradient_top_bottom_percent", gradientAlong(planes[Plane::GreenRed].v, green));
    summary.rows.push_back(told.row);

    pictara::Table table{picture.file, {{"plane", "black level", "brightest %", "darkest %", "clipped %"}}};
    QJsonArray figures;
    for (size_t plane = 0; plane < simulator::kPlaneCount; ++plane) {
        double const black = picture.blackLevel[plane];
        Figures of{{kPlaneKeys[plane], QString::number(black)},
                   {{"plane", kPlaneKeys[plane]}, {"black_level_counts", rounded(black)}}};
        of.add("brightest_percent", 100 * planes[plane].mean.maxCoeff());
        of.add("darkest_percent", 100 * planes[plane].mean.minCoeff());
        of.add("clipped_percent", 100 * planes[plane].clippedShare);
        table.rows.push_back(of.row);
        figures.append(of.object);
    }
    certificate.tables.push_back(table);
    told.object["file"] = picture.file;
    told.object["flaw"] = kFlaws[size_t(seen.flaw)].key;
    told.object["planes"] = figures;
    std::pair<char const*, QString> const texts[] = {
        {"cause", seen.fault},
        {"remedy", kFlaws[size_t(seen.flaw)].remedy},
        {"refused", placeText(picture, seen.refused)},
        {"specks", seen.trusted.size() != 0 ? placeText(picture, !seen.trusted) : QString()},
        {"black level told by", picture.blackSource}};
    for (auto const& [label, text] : texts) {
        certificate.facts.emplace_back(picture.file + ": " + label, text);
        told.object[QString(label).replace(' ', '_')] = text;
    }
    Eigen::ArrayXd shown = 100 * green;
    if (seen.refused.size() != 0)
        shown = seen.refused.select(0, shown);
    certificate.maps.push_back({picture.file + ": brightness of green, refused blocks as 0",
                                " %",
                                picture.blocks.columns,
                                {shown.begin(), shown.end()},
                                0,
                                shown.maxCoeff()});
    return told.object;
}
} // namespace

std::optional<Certificate> check(QStringList const& files, Coding const& coding, int* exitCode,
                                 QString* error) {
    auto const pictures = readMeans(files, coding, error);
    if (!pictures)
        return std::nullopt;
    Certificate certificate{"shading", "usable", {}, Verdict::Pass};
    pictara::Table summary{"Pictures",
                           {{"picture", "flat field", "noise of a sample %", "of a block %",
                             "left to right %", "top to bottom %"}}};
    QJsonArray figures;
    for (PictureMeans const& picture : *pictures) {
        figures.append(tellPicture(picture, summary, certificate));
        if (int const code = kFlaws[size_t(picture.inspection.flaw)].exitCode; code > *exitCode) {
            *exitCode = code;
            certificate.result = QStringLiteral("not usable");
            certificate.cause = picture.file + ": " + picture.inspection.fault;
            certificate.judge(Verdict::Fail);
        }
    }
    certificate.tables.insert(certificate.tables.begin(), summary);
    certificate.figures["pictures"] = figures;
    return certificate;
}
} // namespace shading
