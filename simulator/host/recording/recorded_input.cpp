#include "simulator/host/recording/recorded_input.h"

#include <QLocale>

namespace pictara {
QString pressInput(char const* button) { return QStringLiteral("press ") + QLatin1String(button); }

QString typeInput(char const* field, QString const& text) {
    return QStringLiteral("type ") + QLatin1String(field) + QLatin1Char(' ') + text;
}

QString chooseInput(char const* comboBox, QString const& text) {
    return QStringLiteral("choose ") + QLatin1String(comboBox) + QLatin1Char(' ') + text;
}

QString registerInput(QByteArray const& name, uint32_t value) {
    return QStringLiteral("register %1 %2").arg(QString::fromLatin1(name)).arg(value);
}

QString lightInput(simulator::Light const& light) {
    return QStringLiteral("light %1 %2 %3%4")
        .arg(exactly(light.colourTemperature), exactly(light.level), exactly(light.gradient),
             QLatin1String(light.objectInPicture ? " object" : ""));
}

QString exactly(double number) { return QString::number(number, 'g', QLocale::FloatingPointShortest); }
} // namespace pictara
