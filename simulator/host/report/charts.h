#pragma once

#include <QGradient>
#include <QImage>
#include <QJsonObject>
#include <QString>
#include <vector>

namespace pictara {
/// The colours of deviations from none to the largest one shown, by increasing lightness.
[[nodiscard]] QGradientStops deviationColours();

/// A picture of one pixel a value, row by row from the top left; the colours span `low` to `high`. Null for
/// no values.
[[nodiscard]] QImage colourMap(std::vector<double> const& values, int columns, double low, double high,
                               QGradientStops const& colours);

/// Values of a grid of cells that covers a picture, row by row from the top left.
struct HeatMap {
    QString title;
    QString unit; ///< of the values
    int columns = 1;
    std::vector<double> values;
    double low = 0; ///< where the colours begin: below zero they diverge from the middle, else they rise
    double high = 1;
};

/// Lines in even steps, along a diagonal of the picture if nothing else is told.
struct ProfileChart {
    struct Line {
        QString name;  ///< for people and scripts
        QString style; ///< classes of the page: what is drawn, and its state
        std::vector<double> values;
    };
    QString key; ///< for scripts, with the values' unit in it
    QString title;
    std::vector<Line> lines;
    QString axis = QStringLiteral("% of the diagonal");
};

/// The picture as the bytes of a PNG file.
[[nodiscard]] QByteArray pngOf(QImage const& picture);
/// The picture as an address that a page can show.
[[nodiscard]] QString dataUri(QImage const& picture);

/// What a page needs to draw a chart: a picture of its cells, or the points of its lines and an axis' ticks.
[[nodiscard]] QJsonObject drawing(HeatMap const& chart);
[[nodiscard]] QJsonObject drawing(ProfileChart const& chart);

/// The largest distance from zero.
[[nodiscard]] double largestOf(std::vector<double> const& values);
} // namespace pictara
