#pragma once

#include "simulator/solver/register_list.h"

#include <QByteArray>
#include <QString>

namespace solver {
/// How a preset file tells the tables apart.
enum class PresetFormat : uint32_t {
    Plain = 0,  ///< one run of lines
    Tables = 2, ///< a comment line before each table
};

/// A solution as lines of the host's preset "Lens Correction": `REG = <id>, <address>, <value>`.
[[nodiscard]] QByteArray presetText(SensorLayout const& layout, Solution const& solution,
                                    PresetFormat format);

/// Replaces the file as a whole or leaves it as it was; false with the reason in `error`.
[[nodiscard]] bool writeWhole(QString const& path, QByteArray const& text, QString* error);

/// File name of a path in the host's 8-bit encoding. Where "\" separates no folders it becomes "/", since
/// hosts build the path with either.
[[nodiscard]] QString fileNameFromHost(char const* path);
} // namespace solver
