#pragma once

#include "simulator/host/window/live_panel.h"

#include <QImage>
#include <array>
#include <functional>
#include <vector>

class QCustomPlot;

namespace pictara {
/// How often display values occur, in bins of equal width from 0 to 255.
struct ColourCounts {
    static constexpr int kBins = 64;
    std::array<std::vector<double>, 3> channels; ///< red, green, blue
};

/// Counts the pixels of some rows, evenly spread, of a picture with 32 bits a pixel.
[[nodiscard]] ColourCounts countColours(QImage const& picture);

/// The histogram of the live picture. Where the program was built without the chart library it says so.
class HistogramPanel : public LivePanel {
public:
    using Picture = std::function<QImage const&()>;

    explicit HistogramPanel(Picture picture, QWidget* parent = nullptr);
    void refresh(quint64 frame) override;

protected:
    void changeEvent(QEvent* event) override;

private:
    void takeColours();

    Picture m_picture;
    QCustomPlot* m_plot = nullptr;
};
} // namespace pictara
