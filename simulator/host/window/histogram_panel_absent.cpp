#include "simulator/host/window/histogram_panel.h"

#include <QLabel>
#include <QVBoxLayout>

namespace pictara {
HistogramPanel::HistogramPanel(Picture, QWidget* parent) : LivePanel(parent) {
    auto* const absent = new QLabel(QStringLiteral("This program was built without the chart library."));
    absent->setWordWrap(true);
    (new QVBoxLayout(this))->addWidget(absent);
}

void HistogramPanel::takeColours() {}
void HistogramPanel::changeEvent(QEvent* event) { LivePanel::changeEvent(event); }
void HistogramPanel::refresh(quint64) {}
} // namespace pictara
