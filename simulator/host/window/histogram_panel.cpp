#include "simulator/host/window/histogram_panel.h"

#include <QEvent>
#include <QVBoxLayout>
#include <algorithm>
#include <qcustomplot.h>

namespace pictara {
namespace {
// Readable on light and dark ground.
QColor const kChannels[] = {QColor(220, 70, 60), QColor(50, 160, 70), QColor(70, 120, 230)};
constexpr int kSmallestHeight = 120;

void paintAxis(QCPAxis& axis, QPalette const& palette, QFont const& font) {
    QColor const text = palette.color(QPalette::WindowText);
    QColor const grid = palette.color(QPalette::Mid);
    axis.setBasePen(QPen(grid));
    axis.setTickPen(QPen(grid));
    axis.setSubTickPen(Qt::NoPen);
    axis.setLabelColor(text);
    axis.setTickLabelColor(text);
    axis.setLabelFont(font);
    axis.setTickLabelFont(font);
    axis.grid()->setPen(QPen(grid, 0, Qt::DotLine));
}
} // namespace

HistogramPanel::HistogramPanel(Picture picture, QWidget* parent)
    : LivePanel(parent), m_picture(std::move(picture)), m_plot(new QCustomPlot) {
    m_plot->setToolTip(QStringLiteral("How often each display value occurs in red, green and blue"));
    m_plot->setMinimumHeight(kSmallestHeight);
    for (QColor const& colour : kChannels) {
        QCPGraph* const graph = m_plot->addGraph();
        graph->setPen(QPen(colour, 1.5));
        graph->setLineStyle(QCPGraph::lsStepCenter);
    }
    m_plot->xAxis->setRange(0, 255);
    m_plot->xAxis->setLabel(QStringLiteral("Display value"));
    m_plot->yAxis->setTickLabels(false);
    m_plot->yAxis->setTicks(false);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_plot);
    takeColours();
}

void HistogramPanel::takeColours() {
    QFont font = this->font();
    font.setPointSizeF(font.pointSizeF() * 0.85);
    m_plot->setBackground(palette().brush(QPalette::Window));
    paintAxis(*m_plot->xAxis, palette(), font);
    paintAxis(*m_plot->yAxis, palette(), font);
}

void HistogramPanel::changeEvent(QEvent* event) {
    LivePanel::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        takeColours();
}

void HistogramPanel::refresh(quint64) {
    ColourCounts const counts = countColours(m_picture());
    double highest = 1;
    for (int channel = 0; channel < 3; ++channel) {
        QVector<double> x, y;
        for (int bin = 0; bin < ColourCounts::kBins; ++bin) {
            x.append((bin + 0.5) * 256 / ColourCounts::kBins);
            y.append(counts.channels[size_t(channel)][size_t(bin)]);
        }
        highest = std::max(highest, *std::max_element(y.begin(), y.end()));
        m_plot->graph(channel)->setData(x, y, true);
    }
    m_plot->yAxis->setRange(0, 1.05 * highest);
    m_plot->replot(QCustomPlot::rpQueuedReplot);
}
} // namespace pictara
