#include "common/version.h"

namespace kestra {
char const kBuildDate[] = __DATE__;

QString versionText() {
    QString text = QStringLiteral("Version: %1.%2.%3.%4\n");
    for (uint32_t const number : kVersion)
        text = text.arg(number);
    return text + QStringLiteral("Build Date: %1").arg(QLatin1String(kBuildDate));
}
} // namespace kestra
