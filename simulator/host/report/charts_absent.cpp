// Stands in for charts.cpp where there is no chart library.
#include "simulator/host/report/charts.h"

namespace pictara {
bool hasCharts() { return false; }
QImage drawChart(HeatMap const&, Scheme) { return {}; }
QImage drawChart(ProfileChart const&, Scheme) { return {}; }
QImage drawChart(HistogramChart const&, Scheme) { return {}; }
} // namespace pictara
