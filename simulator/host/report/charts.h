#pragma once

#include <QImage>
#include <QString>
#include <vector>

namespace pictara {
/// What a page's background is like.
enum class Scheme { Light, Dark };

/// Values of a grid of cells that covers a picture, row by row from the top left.
struct HeatMap {
    QString title;
    QString unit; ///< of the values, for the colour scale
    int columns = 0;
    int rows = 0;
    std::vector<double> values;
    double aspect = 1;    ///< the picture's width over its height
    bool isSigned = true; ///< colours diverge from a neutral zero; else they rise from the lowest value
    double end = 0; ///< where the colours of an unsigned map end, so that maps compare; 0: at its highest
};

/// Lines over a common range, from its start to its end in even steps.
struct ProfileChart {
    struct Line {
        QString name;
        std::vector<double> values;
        bool isReference = false; ///< drawn dashed
    };
    QString title;
    QString xLabel;
    QString yLabel;
    double start = 0;
    double end = 1;
    std::vector<Line> lines;
};

/// Counts in bins of equal width from 0 on.
struct HistogramChart {
    QString title;
    QString xLabel;
    QString yLabel;
    double binWidth = 1;
    std::vector<int> counts;
};

/// False where the chart library is missing: then nothing is drawn.
[[nodiscard]] bool hasCharts();

/// Draw a chart, a picture of twice the size in which it is meant to be shown. Null where the program was
/// built without the chart library. A GUI application must exist.
[[nodiscard]] QImage drawChart(HeatMap const& chart, Scheme scheme);
[[nodiscard]] QImage drawChart(ProfileChart const& chart, Scheme scheme);
[[nodiscard]] QImage drawChart(HistogramChart const& chart, Scheme scheme);

/// How many pixels of a chart make one of the page.
inline constexpr int kChartScale = 2;
} // namespace pictara
