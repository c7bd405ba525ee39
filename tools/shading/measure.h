#pragma once

#include "simulator/host/report/certificate.h"
#include "tools/shading/mosaic.h"
#include "tools/shading/table_file.h"

#include <QStringList>

namespace shading {
struct MeasureRequest {
    QStringList files;              ///< at least one
    QStringList turned{};           ///< taken with the camera turned by half a turn; none: the lamp is even
    std::optional<double> kelvin{}; ///< of the lamp; none: the files' names tell it
    Coding coding{};
    TableFile table{};
};

/// Measures the shading that pictures of flat fields show, and writes the table: of each lamp the mean of its
/// pictures, without those that are no flat field and those that differ from the others, which are named.
/// With turned pictures it is that of the lens alone. Empty with a message for the user; `exitCode` tells
/// when the pictures can be read but show nothing to be measured.
[[nodiscard]] std::optional<pictara::Certificate> measure(MeasureRequest const& request, int* exitCode,
                                                          QString* error);
} // namespace shading
