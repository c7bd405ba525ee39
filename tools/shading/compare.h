#pragma once

#include "simulator/camera/optics.h"
#include "simulator/host/report/certificate.h"

#include <QStringList>
#include <optional>

namespace shading {
struct NamedShading {
    QString file;
    simulator::MeasuredShading shading;
};

/// One table told by figures and maps, or two laid side by side at every light that either holds.
[[nodiscard]] pictara::Certificate tablesTold(std::vector<NamedShading> const& tables);

/// Lays two files of the format shading-gains-1 side by side. Empty with a message for the user.
[[nodiscard]] std::optional<pictara::Certificate> compare(QStringList const& files, QString* error);
} // namespace shading
