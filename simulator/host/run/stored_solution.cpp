#include "simulator/host/run/stored_solution.h"

#include "simulator/host/report/run_report.h"
#include "simulator/boundary/boundary.h"
#include "simulator/host/session/session.h"

#include <QTemporaryDir>

namespace pictara {
namespace {
constexpr int kLongestName = 8; // bytes of a label that a record keeps

QString registerName(SolutionRegister const& reg) {
    return reg.name.isEmpty()
               ? QStringLiteral("%1/0x%2").arg(reg.id).arg(reg.address, 4, 16, QLatin1Char('0'))
               : reg.name;
}

uint32_t valueIn(simulator::SimulatedCamera const& camera, SolutionRegister const& reg) {
    uint32_t value = 0;
    if (auto const* const place = vy_FindRegisterAddr(camera.handle(), reg.address, 0, reg.id))
        (void)vy_ReadSensorReg(camera.handle(), place, &value);
    return value;
}
} // namespace

bool isSolutionStored(Session& session, QString const& profile, QString const& label, QString* error) {
    HostAtWork const own; // looking registers up is no call of the plug-in
    QTemporaryDir const folder;
    QString const bytes = folder.filePath(QStringLiteral("eeprom.bin"));
    QString const record = QString::fromLocal8Bit(label.toLocal8Bit().left(kLongestName));
    auto const started = simulator::SimulatedCamera::open(profile, error);
    if (!started || !session.camera().saveEeprom(bytes, error) || !started->loadEeprom(bytes, error) ||
        !started->replayEeprom(record, error))
        return false;
    if (!started->isCorrecting()) {
        *error = QStringLiteral("the record \"%1\" leaves the correction off").arg(record);
        return false;
    }
    for (SolutionRegister const& reg : solutionOf(session))
        if (uint32_t const stored = valueIn(*started, reg), held = valueIn(session.camera(), reg);
            stored != held) {
            *error = QStringLiteral("by the record \"%1\" the register %2 starts with 0x%3 instead of 0x%4")
                         .arg(record, registerName(reg))
                         .arg(stored, 4, 16, QLatin1Char('0'))
                         .arg(held, 4, 16, QLatin1Char('0'));
            return false;
        }
    return true;
}
} // namespace pictara
