#include "simulator/host/report/evenness.h"

#include <QPainter>
#include <algorithm>

namespace pictara {
namespace {
// Nothing is above a reference that is no light.
double percentAbove(double value, double reference) {
    return reference > 0 ? 100 * (value / reference - 1) : 0;
}
// How many percent each block's luminance lies above that of the block in the centre.
std::vector<double> luminanceResidual(BlockReport const& blocks) {
    std::vector<double> residual;
    for (Colour const& block : blocks.means)
        residual.push_back(percentAbove(luminance(block), blocks.centreLuminance));
    return residual;
}

// How many percent each block's ratio of a channel (0 red, 2 blue) to green lies above the mean of all.
std::vector<double> ratioResidual(BlockReport const& blocks, size_t channel) {
    std::vector<double> ratios;
    double mean = 0;
    for (Colour const& block : blocks.means) {
        ratios.push_back(block[1] > 0 ? block[channel] / block[1] : 0);
        mean += ratios.back() / double(blocks.means.size());
    }
    for (double& ratio : ratios)
        ratio = percentAbove(ratio, mean);
    return ratios;
}

// The values on the way from the top left to the bottom right corner; both are among them.
std::vector<double> diagonal(std::vector<double> const& values, int columns) {
    std::vector<double> line;
    int const rows = int(values.size()) / columns, steps = std::max(columns, rows);
    for (int i = 0; i < steps; ++i) {
        int const last = std::max(steps - 1, 1);
        int const column = i * (columns - 1) / last, row = i * (rows - 1) / last;
        line.push_back(values[size_t(row) * size_t(columns) + size_t(column)]);
    }
    return line;
}

double spread(std::vector<double> const& values) {
    if (values.empty())
        return 0;
    auto const [low, high] = std::minmax_element(values.begin(), values.end());
    return *high - *low;
}

struct Figure {
    char const* key;
    char const* label;
    QJsonValue (*of)(Evenness const& evenness);
    char const* unit = "";
};

constexpr Figure kFigures[] = {
    {"dialog_colour_deviation_ab", "uniformity", [](Evenness const& e) { return QJsonValue(e.uniformity); }},
    {"dialog_rating", "uniformity rating", [](Evenness const& e) { return QJsonValue(e.rating); }},
    {"dialog_colour_deviation_limit_ab", "uniformity limit",
     [](Evenness const& e) { return QJsonValue(e.limit); }},
    {"picture_colour_deviation_ab", "largest colour deviation as the host measures it",
     [](Evenness const& e) { return QJsonValue(e.blocks.largestColourDeviation); }},
    {"true_colour_deviation_ab", "largest colour deviation of the noiseless picture",
     [](Evenness const& e) { return QJsonValue(e.trueBlocks.largestColourDeviation); }},
    {"luminance_error_largest_against_median_percent", "largest luminance error against the median block",
     [](Evenness const& e) { return QJsonValue(100 * e.blocks.largestAgainstMedian); }, " %"},
    {"luminance_error_mean_against_median_percent", "mean luminance error against the median block",
     [](Evenness const& e) { return QJsonValue(100 * e.blocks.meanAgainstMedian); }, " %"},
    {"luminance_error_largest_against_centre_percent", "largest luminance error against the centre block",
     [](Evenness const& e) { return QJsonValue(100 * e.blocks.largestAgainstCentre); }, " %"},
    {"true_luminance_error_largest_against_centre_percent",
     "largest luminance error of the noiseless picture",
     [](Evenness const& e) { return QJsonValue(100 * e.trueBlocks.largestAgainstCentre); }, " %"},
    {"red_to_green_spread_percent", "R/G from the lowest to the highest block",
     [](Evenness const& e) { return QJsonValue(spread(ratioResidual(e.blocks, 0))); }, " %"},
    {"blue_to_green_spread_percent", "B/G from the lowest to the highest block",
     [](Evenness const& e) { return QJsonValue(spread(ratioResidual(e.blocks, 2))); }, " %"},
};

constexpr char const* kFiles[] = {"before.png", "after.png"}; // of the states
constexpr double kLeastEnd = 0.01; // percent; what is flat must not be shown as a mountain of rounding

// A quantity over the picture.
struct Quantity {
    char const* key;
    char const* title;
    std::vector<double> (*of)(BlockReport const& blocks);
};

constexpr Quantity kQuantities[] = {
    {"red_to_green_percent", "R/G against its mean",
     [](BlockReport const& blocks) { return ratioResidual(blocks, 0); }},
    {"blue_to_green_percent", "B/G against its mean",
     [](BlockReport const& blocks) { return ratioResidual(blocks, 2); }},
    {"luminance_percent", "Luminance against the centre", luminanceResidual},
};

Section figures(std::optional<Evenness> const* const (&states)[2]) {
    Section section{{}, "Figures", Layout::States};
    for (Figure const& figure : kFigures) {
        Fact fact{figure.key, figure.label, {}, figure.unit, 2};
        for (auto const* const state : states)
            fact.values.push_back(*state ? figure.of(**state) : QJsonValue());
        section.facts.push_back(fact);
    }
    return section;
}

// With a frame around the worst block.
QImage markedPicture(Evenness const& evenness) {
    QImage marked = evenness.picture;
    QPainter painter(&marked);
    painter.setPen(QPen(QColor(255, 0, 255), 2, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.drawRect(evenness.blocks.worstBlock);
    return marked;
}

} // namespace

bool isBeyondLimit(Evenness const& evenness) { return evenness.rating != QLatin1String("green"); }

std::vector<Section> evennessSections(std::optional<Evenness> const& uncorrected,
                                      std::optional<Evenness> const& corrected) {
    std::vector<Section> sections{figures({&uncorrected, &corrected})};
    if (!uncorrected || !corrected)
        return sections;
    Evenness const* const states[] = {&*uncorrected, &*corrected};
    Section pictures{"pictures", "Pictures"}, overThePicture{"maps", "Colour and luminance over the picture"},
        across{"profiles", "Profiles from the top left to the bottom right corner"};
    for (Quantity const& quantity : kQuantities)
        across.profiles.push_back({quantity.key, QStringLiteral("%1, %").arg(quantity.title), {}});
    for (size_t i = 0; i < 2; ++i) {
        pictures.pictures.push_back({markedPicture(*states[i]),
                                     QStringLiteral("%1; the worst block is marked").arg(kStates[i]),
                                     kFiles[i]});
        for (size_t k = 0; k < std::size(kQuantities); ++k) {
            Quantity const& quantity = kQuantities[k];
            BlockReport const& blocks = states[i]->blocks;
            double const end = std::max({kLeastEnd, largestOf(quantity.of(states[0]->blocks)),
                                         largestOf(quantity.of(states[1]->blocks))});
            overThePicture.maps.push_back({QStringLiteral("%1, %2").arg(quantity.title, kStates[i]), " %",
                                           blocks.columns, quantity.of(blocks), -end, end});
            across.profiles[k].lines.push_back({kStates[i], diagonal(quantity.of(blocks), blocks.columns)});
        }
    }
    sections.insert(sections.end(), {pictures, overThePicture, across});
    return sections;
}
} // namespace pictara
