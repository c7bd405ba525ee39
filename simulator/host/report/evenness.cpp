#include "simulator/host/report/evenness.h"

#include <QJsonArray>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <numeric>

namespace pictara {
namespace {
double spread(std::vector<double> const& values) {
    auto const [low, high] = std::minmax_element(values.begin(), values.end());
    return values.empty() ? 0 : *high - *low;
}

// Nothing is above a reference that is no light.
double percentAbove(double value, double reference) {
    return reference > 0 ? 100 * (value / reference - 1) : 0;
}

// The target's luminance in each block: it falls from the centre with the square of the radius.
std::vector<double> targetOf(BlockReport const& blocks, QSize size, double falloff) {
    std::vector<double> shape;
    double const width = size.width(), height = size.height(), top = blocks.skippedRows;
    for (int row = 0; row < blocks.rows; ++row)
        for (int column = 0; column < blocks.columns; ++column) {
            double const x = ((column + 0.5) / blocks.columns - 0.5) * width;
            double const y = top + (row + 0.5) / blocks.rows * (height - top) - height / 2;
            double const squaredRadius = (x * x + y * y) * 4 / (width * width + height * height);
            shape.push_back(1 - (1 - falloff) * squaredRadius);
        }
    return shape;
}

double meanOfCorners(std::vector<double> const& values, int columns) {
    size_t const width = size_t(columns), last = values.size() - 1;
    return (values[0] + values[width - 1] + values[last - (width - 1)] + values[last]) / 4;
}

// How many percent each block's luminance lies above the target.
std::vector<double> luminanceResidual(BlockReport const& blocks, QSize size, double falloff) {
    std::vector<double> residual = targetOf(blocks, size, falloff);
    for (size_t i = 0; i < residual.size(); ++i)
        residual[i] = percentAbove(luminance(blocks.means[i]), blocks.centreLuminance * residual[i]);
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

// From the top left to the bottom right corner; both are among them.
std::vector<double> diagonal(std::vector<double> const& values, int columns) {
    size_t const across = size_t(columns), down = values.size() / across, steps = std::max(across, down);
    size_t const last = std::max(steps, size_t{2}) - 1;
    std::vector<double> line(steps);
    for (size_t i = 0; i < steps; ++i)
        line[i] = values[i * (down - 1) / last * across + i * (across - 1) / last];
    return line;
}

// What is told of one state; the target is a flat one where nobody knows it.
struct Figures {
    Figures(Evenness const& evenness, double falloff)
        : blocks(evenness.blocks), redToGreen(ratioResidual(blocks, 0)),
          blueToGreen(ratioResidual(blocks, 2)),
          luminance(luminanceResidual(blocks, evenness.picture.size(), falloff)) {
        std::vector<double> lights;
        std::transform(blocks.means.begin(), blocks.means.end(), std::back_inserter(lights),
                       pictara::luminance);
        if (!lights.empty() && blocks.centreLuminance > 0)
            cornerToCentre = 100 * meanOfCorners(lights, blocks.columns) / blocks.centreLuminance;
    }

    BlockReport const& blocks;
    std::vector<double> redToGreen, blueToGreen, luminance; // residuals in percent
    double cornerToCentre = 0;                              // percent
};

QJsonValue figuresOf(std::optional<Evenness> const& state, double falloff) {
    if (!state)
        return {};
    Figures const figures(*state, falloff);
    BlockReport const& blocks = state->blocks;
    return QJsonObject{
        {"dialog_colour_deviation_ab", rounded(state->uniformity)},
        {"dialog_rating", state->rating},
        {"dialog_colour_deviation_limit_ab", rounded(state->limit)},
        {"picture_colour_deviation_ab", rounded(blocks.largestColourDeviation)},
        {"luminance_error_largest_against_target_percent", rounded(largestOf(figures.luminance))},
        {"corner_to_centre_percent", rounded(figures.cornerToCentre)},
        {"luminance_error_largest_against_median_percent", rounded(100 * blocks.largestAgainstMedian)},
        {"luminance_error_mean_against_median_percent", rounded(100 * blocks.meanAgainstMedian)},
        {"luminance_error_largest_against_centre_percent", rounded(100 * blocks.largestAgainstCentre)},
        {"red_to_green_spread_percent", rounded(spread(figures.redToGreen))},
        {"blue_to_green_spread_percent", rounded(spread(figures.blueToGreen))}};
}

// With a frame around the worst block.
QImage markedPicture(Evenness const& evenness) {
    QImage marked = evenness.picture;
    QPainter painter(&marked);
    painter.setPen(QPen(QColor(255, 0, 255), 2, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.drawRect(evenness.blocks.worstBlock);
    return marked;
}

QString shown(double value) { return QString::number(value, 'f', 2); }

constexpr double kLeastEnd = 0.01; // percent; what is flat must not be shown as a mountain of rounding
} // namespace

Verdict verdictOf(QString const& rating) {
    return rating == QLatin1String("green")    ? Verdict::Pass
           : rating == QLatin1String("yellow") ? Verdict::Marginal
                                               : Verdict::Fail;
}

void tellRepeatability(std::vector<double> const& figures, Certificate& certificate) {
    double const mean = std::accumulate(figures.begin(), figures.end(), 0.0) / double(figures.size());
    double squares = 0;
    for (double const figure : figures)
        squares += (figure - mean) * (figure - mean);
    double const deviation = std::sqrt(squares / double(figures.size() - 1));
    certificate.facts.emplace_back(
        "Repeatability",
        QStringLiteral(
            "± %1 a*b* of the colour uniformity (noise of one frame: standard deviation of %2, mean %3)")
            .arg(shown(deviation))
            .arg(figures.size())
            .arg(shown(mean)));
    certificate.figures["repeatability"] = QJsonObject{{"frames", int(figures.size())},
                                                       {"mean_ab", rounded(mean)},
                                                       {"standard_deviation_ab", rounded(deviation)}};
}

void tellEvenness(EvennessStates const& states, LuminanceTarget const& target, Certificate& certificate) {
    double const falloff = target.falloff.value_or(1);
    certificate.figures["uncorrected"] = figuresOf(states.before, falloff);
    certificate.figures["corrected"] = figuresOf(states.after, falloff);
    if (!states.areWhole())
        return;
    Evenness const &before = *states.before, &after = *states.after;
    Figures const first(before, falloff), second(after, falloff);
    // What the falloff asks of the blocks that lie in the corners.
    double const corners =
        100 * meanOfCorners(targetOf(after.blocks, after.picture.size(), falloff), after.blocks.columns);
    auto const judged = [&](double error) {
        Verdict const verdict = !target.falloff         ? Verdict::None
                                : error <= target.limit ? Verdict::Pass
                                                        : Verdict::Fail;
        certificate.judge(verdict);
        return textOf(verdict);
    };
    certificate.judge(verdictOf(after.rating));
    QString const limit = shown(target.limit);
    certificate.tables.push_back(
        {{},
         {{"Quality", "before", "measured", "limit", "verdict"},
          {"Colour uniformity, a*b*", shown(before.uniformity), shown(after.uniformity), shown(after.limit),
           textOf(verdictOf(after.rating))},
          {target.falloff ? "Luminance off its target shape, %" : "Luminance off a flat shape, %",
           shown(largestOf(first.luminance)), shown(largestOf(second.luminance)),
           target.falloff ? limit : QStringLiteral("-"), judged(largestOf(second.luminance))},
          {"Corners to centre, %", shown(first.cornerToCentre), shown(second.cornerToCentre),
           target.falloff ? QStringLiteral("%1 ± %2").arg(shown(corners), limit) : QStringLiteral("-"),
           judged(std::abs(second.cornerToCentre - corners))}}});

    certificate.pictures = {{markedPicture(before), "Before; the worst block is marked", "before.png"},
                            {markedPicture(after), "After; the worst block is marked", "after.png"}};
    auto const addMaps = [&](char const* title, char const* unit, std::vector<double> const& was,
                             std::vector<double> const& is, bool isSigned) {
        double const end = std::max({kLeastEnd, largestOf(was), largestOf(is)}), low = isSigned ? -end : 0;
        int const columns = after.blocks.columns;
        certificate.maps.push_back({QStringLiteral("%1, before").arg(title), unit, columns, was, low, end});
        certificate.maps.push_back({QStringLiteral("%1, after").arg(title), unit, columns, is, low, end});
    };
    addMaps("Colour deviation, a*b*", "", before.blocks.deviations, after.blocks.deviations, false);
    addMaps("Luminance off its target", " %", first.luminance, second.luminance, true);

    auto const line = [&](char const* name, char const* style, std::vector<double> const& values) {
        return ProfileChart::Line{name, style, diagonal(values, after.blocks.columns)};
    };
    certificate.profiles = {{"colour_ratio_percent",
                             "R/G and B/G against their means, %",
                             {line("R/G before", "red-green before", first.redToGreen),
                              line("R/G after", "red-green", second.redToGreen),
                              line("B/G before", "blue-green before", first.blueToGreen),
                              line("B/G after", "blue-green", second.blueToGreen)}},
                            {"luminance_percent",
                             "Luminance off its target shape, %",
                             {line("before", "luminance before", first.luminance),
                              line("after", "luminance", second.luminance)}}};
}
} // namespace pictara
