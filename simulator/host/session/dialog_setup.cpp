#include "simulator/host/session/dialog_setup.h"

#include <QDir>

namespace pictara {
bool setUpDialog(DialogPage& page, Options const& options, QString const& folder, QString* error) {
    page.type("Save_Dir", QDir::toNativeSeparators(folder));
    if (!options.falloffPercent)
        return true;
    if (page.choose("FallOff", QString::number(*options.falloffPercent) + QLatin1Char('%')))
        return true;
    *error = QStringLiteral("The dialog offers no falloff of %1 %; it offers %2.")
                 .arg(*options.falloffPercent)
                 .arg(page.choices("FallOff").join(QLatin1String(", ")));
    return false;
}
} // namespace pictara
