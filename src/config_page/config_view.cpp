#include "config_page/config_view.h"

namespace kestra {
namespace {
struct SerialRow {
    SerialState state;
    char const* text;
    Bullet bullet;
};

constexpr char kEnterNumber[] = QT_TRANSLATE_NOOP("Config", "Enter the serial number.");
constexpr SerialState kSerialEmptyOtherwise{6}; // shown like an empty one
constexpr SerialRow kSerialRows[] = {
    {SerialState::Edited, QT_TRANSLATE_NOOP("Config", "Click Apply to save."), Bullet::Yellow},
    {SerialState::Saved, QT_TRANSLATE_NOOP("Config", "Done. Serial number is saved."), Bullet::Green},
    {SerialState::Empty, kEnterNumber, Bullet::Red},
    {kSerialEmptyOtherwise, kEnterNumber, Bullet::Red},
};

ConfigStatus eepromStatus(ConfigState const& state) {
    // A board whose chain is half written or broken does not work normally: what the state's own text would
    // tell, records that the device lacks, invites pulling it. The state stays, so that Apply and Erase do.
    bool const isTorn = state.space.unwritten || state.space.available < 0;
    switch (state.eepromState == EepromState::Present && isTorn ? EepromState::Error : state.eepromState) {
    case EepromState::Present:
        return {ConfigText::tr("EEPROM is present and working normally.\n%1 bytes used.  %2 bytes available.")
                    .arg(state.space.used)
                    .arg(state.space.available),
                Bullet::Green};
    case EepromState::Absent:
        return {ConfigText::tr("The EEPROM was not detected at address 0x%1.\nCheck the PROM ADDR switches "
                               "on the headboard.")
                    .arg(QString::number(state.busAddress, 16).toUpper()),
                Bullet::Red};
    case EepromState::Error:
        return {ConfigText::tr("Error accessing the EEPROM."), Bullet::Red};
    case EepromState::Unknown:
        break;
    }
    return {ConfigText::tr("The status of the EEPROM is unknown."), Bullet::Gray};
}

ConfigStatus serialStatus(SerialState serialState) {
    for (SerialRow const& row : kSerialRows)
        if (row.state == serialState)
            return {ConfigText::tr(row.text), row.bullet};
    return {ConfigText::tr(kEnterNumber), Bullet::Gray};
}
} // namespace

ConfigView viewOf(ConfigState const& state) {
    ConfigView view = {.eeprom = eepromStatus(state), .serial = serialStatus(state.serialState)};
    if (state.eepromState != EepromState::Present)
        return view;
    view.combos = true;
    view.apply = state.combosDirty || state.serialState == SerialState::Edited;
    view.touchesErase = true;
    // A broken chain has no end to be found and shows nothing used; it needs the erasing most.
    view.erase = state.space.used > 0 || state.space.available < 0 || state.space.unwritten;
    return view;
}

std::optional<uint8_t> ConfigWidgets::selectedCode(Identification field) const {
    QComboBox const* const list = combo(field);
    if (!list || list->currentIndex() < 0)
        return std::nullopt;
    return uint8_t(list->currentData().toUInt());
}

void ConfigWidgets::fill(Identification field, InterfaceFamily family) {
    QComboBox* const list = combo(field);
    if (!list)
        return;
    list->clear();
    for (ProductCode const& product : productCodes(field, family))
        list->addItem(QLatin1String(product.text), uint(product.code));
    list->setCurrentIndex(-1);
}

void ConfigWidgets::fillCombos() {
    for (Identification const field :
         {Identification::PartNumber, Identification::Market, Identification::Processing})
        fill(field, {});
    m_shownInterfaces.reset();
}

void ConfigWidgets::fitInterfaces() {
    std::optional<uint8_t> const part = selectedCode(Identification::PartNumber);
    InterfaceFamily const family = interfaceFamily(part.value_or(kUnspecifiedCode));
    if (m_shownInterfaces == family)
        return;
    std::optional<uint8_t> const selected = selectedCode(Identification::Interface);
    fill(Identification::Interface, family);
    m_shownInterfaces = family;
    if (!selected)
        return;
    select(Identification::Interface, *selected);
    if (!selectedCode(Identification::Interface))
        select(Identification::Interface, kUnspecifiedCode);
}

void ConfigWidgets::select(Identification field, uint32_t code) {
    if (QComboBox* const list = combo(field); list && list->count() > 0)
        list->setCurrentIndex(list->findData(code));
}

void ConfigWidgets::show(ConfigView const& view) {
    set(EEPROM_Status, view.eeprom.text);
    set(SN_Status, view.serial.text);
    paintBullet(EEPROM_Bullet, view.eeprom.bullet);
    paintBullet(SN_Bullet, view.serial.bullet);
    for (QLabel* const box : boxes)
        enable(box, view.combos);
    for (QComboBox* const list : combos)
        enable(list, view.combos && list && list->count() > 0);
    enable(Apply, view.apply);
    if (view.touchesErase)
        enable(EEPROM_Erase, view.erase);
}

void ConfigWidgets::paintStatusAtOnce() const {
    paintAtOnce({EEPROM_Status.data(), EEPROM_Bullet.data(), SN_Status.data(), SN_Bullet.data()});
}
} // namespace kestra
