#pragma once

#include "simulator/camera/measured_shading.h"
#include "simulator/host/report/output_folder.h"

namespace pictara {
/// A shading table and what the report calls it.
struct NamedShading {
    QString name;
    simulator::MeasuredShading shading;
};

/// Writes a run's report and summary about one table, or about two side by side with how far the second one
/// lies above the first. Tables may differ in grid and lights: both are brought to a common grid and to the
/// lights of either, as a camera would that they are put before. Returns the page's absolute name.
QString writeShadingReport(std::vector<NamedShading> const& tables, OutputFolder& output);
} // namespace pictara
