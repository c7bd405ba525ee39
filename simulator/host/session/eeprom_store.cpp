#include "simulator/host/session/eeprom_store.h"

#include "simulator/files/whole_file.h"

#include <QFile>
#include <QFileInfo>

namespace pictara {
namespace {
// What the user asked for although the camera has no EEPROM; empty when there was nothing of the kind.
QString needlessOption(Options const& options) {
    if (!options.eepromFile.isEmpty())
        return QStringLiteral("--eeprom");
    if (!options.replayFile.isEmpty())
        return QStringLiteral("--replay-eeprom");
    return options.fault ? QStringLiteral("--fault") : QString();
}

bool planFault(simulator::SimulatedCamera& camera, FaultWish const& fault, QString* error) {
    QStringList const names = simulator::SimulatedCamera::faultNames();
    if (!names.contains(fault.name)) {
        *error = QStringLiteral("There is no fault \"%1\" (known: %2).").arg(fault.name, names.join(", "));
        return false;
    }
    return !fault.operation || camera.injectFault(fault.name, *fault.operation, fault.forEver);
}
} // namespace

std::optional<EepromStore> EepromStore::open(simulator::SimulatedCamera& camera, Options const& options,
                                             QString const& outputFolder, QString* error) {
    EepromStore store;
    if (!camera.hasEeprom()) {
        QString const needless = needlessOption(options);
        if (needless.isEmpty())
            return store;
        *error = QStringLiteral("The sensor of the profile %1 has no EEPROM for %2.")
                     .arg(camera.description().profile, needless);
        return std::nullopt;
    }
    if (options.fault && !planFault(camera, *options.fault, error))
        return std::nullopt;
    if (!options.replayFile.isEmpty())
        return store.replay(camera, options, error) ? std::optional(store) : std::nullopt;
    store.m_file = options.eepromFile.isEmpty() ? outputFolder + QStringLiteral("/eeprom.bin")
                                                : QFileInfo(options.eepromFile).absoluteFilePath();
    return store.load(camera, error) ? std::optional(store) : std::nullopt;
}

bool EepromStore::load(simulator::SimulatedCamera& camera, QString* error) const {
    if (QFileInfo::exists(m_file) && !camera.loadEeprom(m_file, error))
        return false;
    bool const hasPlace = files::isReplaceable(m_file, error);
    if (!hasPlace)
        *error = QStringLiteral("The file %1 cannot be written: %2").arg(m_file, *error);
    return hasPlace;
}

bool EepromStore::replay(simulator::SimulatedCamera& camera, Options const& options, QString* error) {
    // A null name stands for the first record.
    QString const record = options.recordName.isEmpty() ? QString() : options.recordName;
    if (!camera.loadEeprom(options.replayFile, error) || !camera.replayEeprom(record, error) ||
        !readConditions(conditionsFileOf(options.replayFile), &conditions, error))
        return false;
    m_replayedWrites = camera.registerWrites();
    return true;
}

bool EepromStore::keep(simulator::SimulatedCamera const& camera, QString* error) const {
    if (m_file.isEmpty())
        return true;
    if (!camera.saveEeprom(m_file, error))
        return false;
    QString const conditionsFile = conditionsFileOf(m_file);
    if (conditions)
        return writeConditions(conditionsFile, *conditions, error);
    if (camera.deviceBytesWritten() > 0 && QFileInfo(conditionsFile).isFile())
        QFile::remove(conditionsFile);
    return true;
}
} // namespace pictara
