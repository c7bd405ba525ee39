#pragma once

#include <QDir>
#include <optional>

/// The folder of measured shading tables of real modules, which KESTRA_MEASURED_SHADING names. Empty without
/// it: tests that need the folder then report a skip.
inline std::optional<QDir> measuredFolder() {
    QString const named = qEnvironmentVariable("KESTRA_MEASURED_SHADING");
    return named.isEmpty() ? std::nullopt : std::optional<QDir>(named);
}
