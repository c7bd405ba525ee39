#include "simulator/host/session/eeprom_store.h"

#include "simulator/files/whole_file.h"

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
    if (!options.replayFile.isEmpty()) {
        // A null name stands for the first record.
        if (!camera.loadEeprom(options.replayFile, error) || !camera.replayEeprom({}, error))
            return std::nullopt;
        store.m_replayedWrites = camera.registerWrites();
        return store;
    }
    store.m_file = options.eepromFile.isEmpty() ? outputFolder + QStringLiteral("/eeprom.bin")
                                                : QFileInfo(options.eepromFile).absoluteFilePath();
    if (QFileInfo::exists(store.m_file) && !camera.loadEeprom(store.m_file, error))
        return std::nullopt;
    if (files::isReplaceable(store.m_file, error))
        return store;
    *error = QStringLiteral("The file %1 cannot be written: %2").arg(store.m_file, *error);
    return std::nullopt;
}

bool EepromStore::keep(simulator::SimulatedCamera const& camera, QString* error) const {
    return m_file.isEmpty() || camera.saveEeprom(m_file, error);
}
} // namespace pictara
