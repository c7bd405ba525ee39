#pragma once

#include "simulator/camera/measured_shading.h"

namespace pictara {
/// Writes a table in the format shading-gains-1, whole or not at all; false with a message for the user.
[[nodiscard]] bool writeMeasuredShading(QString const& file, simulator::MeasuredShading const& shading,
                                        QString* error);
} // namespace pictara
