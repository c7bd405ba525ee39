#pragma once

#include "simulator/camera/optics.h"
#include "simulator/host/report/certificate.h"

namespace shading {
/// A table of shading and its file.
struct NamedShading {
    QString file;
    simulator::MeasuredShading shading;
};

/// Writes a file of the format shading-gains-1 and, where `tuningFile` is not empty, one of tuning tables:
/// per lamp the gains of red and of blue over that of green, the smallest of each 1, and the gains of green,
/// on 16 x 12 cells. False with a message for the user.
[[nodiscard]] bool writeTable(NamedShading const& table, QString const& tuningFile, QString* error);

/// Tells one table by figures and maps, or two laid side by side at every light that either holds.
void tellTables(std::vector<NamedShading> const& tables, pictara::Certificate& certificate);
} // namespace shading
