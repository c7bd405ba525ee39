#include "simulator/solver/preset_file.h"

#include "simulator/files/whole_file.h"

#include <QDir>

namespace solver {
namespace {
QByteArray hexadecimal(uint32_t value) {
    return "0x" + QByteArray::number(value, 16).toUpper().rightJustified(4, '0');
}

QByteArray lines(std::vector<sf_RegEntry> const& entries) {
    QByteArray text;
    for (sf_RegEntry const& entry : entries)
        text += "REG = " + hexadecimal(entry.first) + ", " + hexadecimal(entry.second) + ", " +
                hexadecimal(entry.third) + '\n';
    return text;
}
} // namespace

QByteArray presetText(SensorLayout const& layout, Solution const& solution, PresetFormat format) {
    QByteArray text = "[Lens Correction]\n";
    text += "; sensor kind " + QByteArray::number(layout.kind) + ", variant " +
            QByteArray::number(layout.variant) + '\n';
    text += "; corners at " + QByteArray::number(solution.falloffPercent) + " % of the centre\n";
    text += lines(baseRegisters(layout, solution));
    for (Table const& table : solution.tables) {
        if (format == PresetFormat::Tables)
            text += "; illuminant slot " + QByteArray::number(table.slot) + ", " +
                    QByteArray::number(table.colourTemperature) + " K\n";
        text += lines(tableRegisters(layout, table));
    }
    return text;
}

bool writeWhole(QString const& path, QByteArray const& text, QString* error) {
    if (files::replace(path, text, error))
        return true;
    *error = QStringLiteral("cannot write %1: %2").arg(path, *error);
    return false;
}

QString fileNameFromHost(char const* path) {
    QString name = QString::fromLocal8Bit(path);
    if (QDir::separator() != QLatin1Char('\\'))
        name.replace(QLatin1Char('\\'), QLatin1Char('/'));
    return name;
}
} // namespace solver
