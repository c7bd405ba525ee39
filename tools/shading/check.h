#pragma once

#include "simulator/host/report/certificate.h"
#include "tools/shading/mosaic.h"

#include <QStringList>

namespace shading {
/// Tells of each picture whether it is usable as a flat field and, where it is not, why and what helps.
/// `exitCode` is that of the worst one. Empty with a message for the user when one cannot be read.
[[nodiscard]] std::optional<pictara::Certificate> check(QStringList const& files, Coding const& coding,
                                                        int* exitCode, QString* error);
} // namespace shading
