#include "simulator/host/report/evenness.h"

#include <QPainter>
#include <algorithm>

namespace pictara {
namespace {
double spread(std::vector<double> const& values) {
    auto const [low, high] = std::minmax_element(values.begin(), values.end());
    return values.empty() ? 0 : *high - *low;
}

std::vector<double> redResidual(BlockReport const& blocks) { return ratioResidual(blocks, 0); }
std::vector<double> blueResidual(BlockReport const& blocks) { return ratioResidual(blocks, 2); }

// The figures of one state; names and units alone of one that was not measured.
std::vector<Fact> figuresOf(std::optional<Evenness> const& state) {
    auto const e = state.value_or(Evenness{});
    BlockReport const& blocks = e.blocks;
    struct {
        char const* key;
        char const* label;
        QJsonValue value;
        char const* unit = "";
    } const rows[] = {
        {"dialog_colour_deviation_ab", "uniformity", e.uniformity},
        {"dialog_rating", "uniformity rating", e.rating},
        {"dialog_colour_deviation_limit_ab", "uniformity limit", e.limit},
        {"picture_colour_deviation_ab", "largest colour deviation as the host measures it",
         blocks.largestColourDeviation},
        {"luminance_error_largest_against_median_percent", "largest luminance error against the median block",
         100 * blocks.largestAgainstMedian, " %"},
        {"luminance_error_mean_against_median_percent", "mean luminance error against the median block",
         100 * blocks.meanAgainstMedian, " %"},
        {"luminance_error_largest_against_centre_percent", "largest luminance error against the centre block",
         100 * blocks.largestAgainstCentre, " %"},
        {"red_to_green_spread_percent", "R/G from the lowest to the highest block",
         spread(redResidual(blocks)), " %"},
        {"blue_to_green_spread_percent", "B/G from the lowest to the highest block",
         spread(blueResidual(blocks)), " %"},
    };
    std::vector<Fact> facts;
    for (auto const& row : rows)
        facts.push_back({row.key, row.label, {state ? row.value : QJsonValue()}, row.unit, 2});
    return facts;
}

constexpr double kLeastEnd = 0.01; // percent; what is flat must not be shown as a mountain of rounding

// A quantity over the picture.
struct Quantity {
    char const* key;
    char const* title;
    std::vector<double> (*of)(BlockReport const& blocks);
};

constexpr Quantity kQuantities[] = {
    {"red_to_green_percent", "R/G against its mean", redResidual},
    {"blue_to_green_percent", "B/G against its mean", blueResidual},
    {"luminance_percent", "Luminance against the centre", luminanceResidual},
};

// With a frame around the worst block.
QImage markedPicture(Evenness const& evenness) {
    QImage marked = evenness.picture;
    QPainter painter(&marked);
    painter.setPen(QPen(QColor(255, 0, 255), 2, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.drawRect(evenness.blocks.worstBlock);
    return marked;
}

// Nothing is above a reference that is no light.
double percentAbove(double value, double reference) {
    return reference > 0 ? 100 * (value / reference - 1) : 0;
}
} // namespace

std::vector<double> luminanceResidual(BlockReport const& blocks) {
    std::vector<double> residual;
    for (Colour const& block : blocks.means)
        residual.push_back(percentAbove(luminance(block), blocks.centreLuminance));
    return residual;
}

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

std::vector<double> diagonal(std::vector<double> const& values, int columns) {
    std::vector<double> line;
    int const rows = int(values.size()) / columns, steps = std::max(columns, rows);
    int const last = std::max(steps - 1, 1);
    for (int i = 0; i < steps; ++i)
        line.push_back(values[size_t(i * (rows - 1) / last * columns + i * (columns - 1) / last)]);
    return line;
}

std::vector<Section> evennessSections(EvennessStates const& states) {
    Section figures{{}, "Figures", Layout::States, figuresOf(states[0])};
    std::vector<Fact> const corrected = figuresOf(states[1]);
    for (size_t i = 0; i < corrected.size(); ++i)
        figures.facts[i].values.push_back(corrected[i].values[0]);
    if (!states[0] || !states[1])
        return {figures};
    Section pictures{"pictures", "Pictures"}, overThePicture{"maps", "Colour and luminance over the picture"},
        across{"profiles", "Profiles from the top left to the bottom right corner"};
    for (size_t i = 0; i < states.size(); ++i)
        pictures.pictures.push_back({markedPicture(*states[i]),
                                     QStringLiteral("%1; the worst block is marked").arg(kStates[i]),
                                     i == 0 ? "before.png" : "after.png"});
    int const columns = states[0]->blocks.columns;
    overThePicture.maps.resize(states.size() * std::size(kQuantities));
    for (size_t k = 0; k < std::size(kQuantities); ++k) {
        auto const& [key, title, of] = kQuantities[k];
        std::vector<double> const values[] = {of(states[0]->blocks), of(states[1]->blocks)};
        double const end = std::max({kLeastEnd, largestOf(values[0]), largestOf(values[1])});
        ProfileChart profile{key, QStringLiteral("%1, %").arg(title), {}};
        for (size_t i = 0; i < states.size(); ++i) {
            overThePicture.maps[i * std::size(kQuantities) + k] = {
                QStringLiteral("%1, %2").arg(title, kStates[i]), " %", columns, values[i], -end, end};
            profile.lines.push_back({kStates[i], diagonal(values[i], columns)});
        }
        across.profiles.push_back(profile);
    }
    return {figures, pictures, overThePicture, across};
}
} // namespace pictara
