#include "simulator/host/shading/shading_file.h"

#include "simulator/files/whole_file.h"
#include "simulator/host/report/rounded_numbers.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace pictara {
bool writeMeasuredShading(QString const& name, simulator::MeasuredShading const& shading, QString* error) {
    QJsonArray illuminants;
    for (auto const& illuminant : shading.illuminants)
        illuminants.append(QJsonObject{{QStringLiteral("colour_temperature_K"), illuminant.temperature},
                                       {QStringLiteral("red"), roundedNumbers(illuminant.gains[0])},
                                       {QStringLiteral("green"), roundedNumbers(illuminant.gains[1])},
                                       {QStringLiteral("blue"), roundedNumbers(illuminant.gains[2])}});
    QJsonObject const root{{QStringLiteral("format"), QStringLiteral("shading-gains-1")},
                           {QStringLiteral("name"), shading.name},
                           {QStringLiteral("columns"), int(shading.columns)},
                           {QStringLiteral("rows"), int(shading.rows)},
                           {QStringLiteral("illuminants"), illuminants}};
    bool const written = files::replace(name, QJsonDocument(root).toJson(QJsonDocument::Compact), error);
    if (!written)
        *error = QStringLiteral("The file %1 cannot be written: %2").arg(name, *error);
    return written;
}
} // namespace pictara
