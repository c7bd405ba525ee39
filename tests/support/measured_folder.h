#pragma once

#include <QDir>

/// The folder of measured shading tables of real modules: the one that KESTRA_MEASURED_SHADING names, or the
/// one beside the sources. Tests that need it report a skip where it holds none.
inline QDir measuredFolder() {
    QString const named = qEnvironmentVariable("KESTRA_MEASURED_SHADING");
    return QDir(named.isEmpty() ? QStringLiteral(KESTRA_SOURCE_DIR "/../shared/measured_shading") : named);
}
