#pragma once

#include "simulator/camera/simulated_camera.h"

#include <QString>

namespace pictara {
// What a host, or a person at it, does to camera and plug-in, as a line of a recording. The others are
// "open", "show", "frame N", "tick", "fault NAME[@N][+]" and "close".

[[nodiscard]] QString pressInput(char const* button);
[[nodiscard]] QString typeInput(char const* field, QString const& text);
[[nodiscard]] QString chooseInput(char const* comboBox, QString const& text);
[[nodiscard]] QString registerInput(QByteArray const& name, uint32_t value);
[[nodiscard]] QString lightInput(simulator::Light const& light);

/// A number with as many digits as it takes to read the same one.
[[nodiscard]] QString exactly(double number);
} // namespace pictara
