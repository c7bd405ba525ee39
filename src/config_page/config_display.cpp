#include "config_page/config_display.h"

#include <QCoreApplication>

namespace {

QString translated(char const* text) {
    return QCoreApplication::translate("Config", text);
}

struct SerialRow {
    uint32_t state;
    char const* text;
    Bullet bullet;
};

constexpr char kEnterNumber[] = QT_TRANSLATE_NOOP("Config", "Enter the serial number.");
constexpr uint32_t kSerialEmptyOtherwise = 6; // shown like an empty one
constexpr SerialRow kSerialRows[] = {
    {ConfigState::SerialEdited, QT_TRANSLATE_NOOP("Config", "Click Apply to save."), Bullet::Yellow},
    {ConfigState::SerialSaved, QT_TRANSLATE_NOOP("Config", "Done. Serial number is saved."), Bullet::Green},
    {ConfigState::SerialEmpty, kEnterNumber, Bullet::Red},
    {kSerialEmptyOtherwise, kEnterNumber, Bullet::Red},
};

} // namespace

ConfigStatus eepromStatus(uint32_t eepromState, RecordSpace const& space, uint32_t busAddress) {
    // A board whose chain is half written or broken does not work normally: what the state's own text would
    // tell, records that the device lacks, invites pulling it. The state stays, so that Apply and Erase do.
    bool const isTorn = space.unwritten || space.available < 0;
    switch (eepromState == ConfigState::EepromPresent && isTorn ? uint32_t{ConfigState::EepromError}
                                                                : eepromState) {
    case ConfigState::EepromPresent:
        return {translated(QT_TRANSLATE_NOOP(
                               "Config", "EEPROM is present and working normally.\n%1 bytes used.  %2 bytes "
                                         "available."))
                    .arg(space.used)
                    .arg(space.available),
                Bullet::Green};
    case ConfigState::EepromAbsent:
        return {translated(QT_TRANSLATE_NOOP("Config", "The EEPROM was not detected at address 0x%1.\nCheck "
                                                       "the PROM ADDR switches on the headboard."))
                    .arg(QString::number(busAddress, 16).toUpper()),
                Bullet::Red};
    case ConfigState::EepromError:
        return {translated(QT_TRANSLATE_NOOP("Config", "Error accessing the EEPROM.")), Bullet::Red};
    default:
        return {translated(QT_TRANSLATE_NOOP("Config", "The status of the EEPROM is unknown.")),
                Bullet::Gray};
    }
}

ConfigStatus serialStatus(uint32_t serialState) {
    for (SerialRow const& row : kSerialRows)
        if (row.state == serialState)
            return {translated(row.text), row.bullet};
    return {translated(kEnterNumber), Bullet::Gray};
}

ConfigEnabling configEnabling(ConfigState const& state, RecordSpace const& space) {
    if (state.eepromState != ConfigState::EepromPresent)
        return {};
    return {.combos = true,
            .apply = state.combosDirty || state.serialState == ConfigState::SerialEdited,
            .touchesErase = true,
            // A broken chain has no end to be found and shows nothing used; it needs the erasing most.
            .erase = space.used > 0 || space.available < 0 || space.unwritten};
}
