#include "config_page/config_widgets.h"

namespace {

void add(QComboBox& combo, ProductCode const& product) {
    combo.addItem(QLatin1String(product.text), uint(product.code));
}

void fill(QComboBox* combo, std::span<ProductCode const> products) {
    if (!combo)
        return;
    combo->clear();
    for (ProductCode const& product : products)
        add(*combo, product);
    combo->setCurrentIndex(-1);
}

void showText(QLabel* label, QString const& text) {
    if (label)
        label->setText(text);
}

} // namespace

QString ConfigWidgets::serialNumber() const {
    return SN ? SN->text() : QString();
}

std::optional<uint8_t> ConfigWidgets::selectedCode(Identification field) const {
    QComboBox const* const list = combo(field);
    if (!list || list->currentIndex() < 0)
        return std::nullopt;
    return uint8_t(list->currentData().toUInt());
}

void ConfigWidgets::fillCombos() {
    if (QComboBox* const list = combo(Identification::PartNumber)) {
        list->clear();
        for (PartNumber const& part : partNumbers())
            add(*list, part.product);
        list->setCurrentIndex(-1);
    }
    fill(combo(Identification::Market), marketIndicators());
    fill(combo(Identification::Processing), specialProcessings());
    m_shownInterfaces.reset();
}

void ConfigWidgets::fillInterfaces(InterfaceFamily family) {
    fill(combo(Identification::Interface), interfaces(family));
    m_shownInterfaces = family;
}

void ConfigWidgets::fitInterfaces() {
    std::optional<uint8_t> const part = selectedCode(Identification::PartNumber);
    InterfaceFamily const family = interfaceFamily(part.value_or(kUnspecifiedCode));
    if (m_shownInterfaces == family)
        return;
    std::optional<uint8_t> const selected = selectedCode(Identification::Interface);
    fillInterfaces(family);
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

void ConfigWidgets::showSerialNumber(QString const& number) {
    if (SN)
        SN->setText(number);
}

void ConfigWidgets::showFormatMessage(QString const& text) {
    showText(SN_RegStatus, text);
}

void ConfigWidgets::show(ConfigStatus const& eeprom, ConfigStatus const& serial) {
    showText(EEPROM_Status, eeprom.text);
    showText(SN_Status, serial.text);
    paintBullet(EEPROM_Bullet, eeprom.bullet);
    paintBullet(SN_Bullet, serial.bullet);
}

void ConfigWidgets::paintStatusAtOnce() const {
    paintAtOnce({EEPROM_Status.data(), EEPROM_Bullet.data(), SN_Status.data(), SN_Bullet.data()});
}

void ConfigWidgets::apply(ConfigEnabling const& enabling) {
    for (QLabel* const box : boxes)
        enable(box, enabling.combos);
    for (QComboBox* const list : combos)
        enable(list, enabling.combos && list && list->count() > 0);
    enable(Apply, enabling.apply);
    if (enabling.touchesErase)
        enable(EEPROM_Erase, enabling.erase);
}
