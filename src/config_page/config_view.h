#pragma once

#include "config_page/identification.h"
#include "headboard/eeprom_chain.h"
#include "wizard/page_surface.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QString>
#include <array>
#include <cstdint>
#include <optional>

namespace kestra {
/// What is known of the serial number in the field.
enum class SerialState : uint32_t { Unknown = 0, Edited = 1, Saved = 4, Empty = 5 };

/// Room in the record store, in bytes; a negative `available` is the failure to find out.
struct RecordSpace {
    int32_t used{};
    int32_t available{};
    bool unwritten{}; ///< the figures are those of changes that the device has not taken yet
};

/// What the configuration page knows. Plain data: what the page shows is a function of it.
struct ConfigState {
    uint32_t updateDepth = 0; ///< nesting of updates from code; change handlers ignore signals meanwhile
    EepromState eepromState = EepromState::Unknown;
    RecordSpace space;
    uint32_t busAddress{}; ///< of the EEPROM
    SerialState serialState = SerialState::Unknown;
    bool combosDirty = false; ///< a list was changed by the user and not applied since
    QMessageBox::Icon messageBoxIcon = QMessageBox::NoIcon; ///< of the erase question
    std::array<QString, 4> identification;                  ///< bytes as last read, as text
};

/// The page's own texts, in its translation context.
struct ConfigText {
    Q_DECLARE_TR_FUNCTIONS(Config)
};

/// What stands beside a step: its text and its bullet.
struct ConfigStatus {
    QString text;
    Bullet bullet;
};

/// What the page shows of its state. A combo box is enabled only when it also has items.
struct ConfigView {
    ConfigStatus eeprom, serial;
    bool combos = false;
    bool apply = false;
    bool touchesErase = false; ///< only then `erase` is set; without an EEPROM the button stays as it is
    bool erase = false;
};

[[nodiscard]] ConfigView viewOf(ConfigState const& state);

/// The configuration page's widgets. Without them no list has a code.
class ConfigWidgets : public PageSurface {
public:
    /// Takes the widgets from the page's generated form.
    template <typename Form>
    void bind(QDialog* pageDialog, Form const& form, Wizard* bulletOwner) {
        page = pageDialog;
        wizard = bulletOwner;
        EEPROM_Bullet = form.EEPROM_Bullet;
        EEPROM_Status = form.EEPROM_Status;
        EEPROM_Test = form.EEPROM_Test;
        EEPROM_Erase = form.EEPROM_Erase;
        boxes = {form.PN_Box, form.IF_Box, form.MI_Box, form.SP_Box};
        combos = {form.PN_Combo, form.IF_Combo, form.MI_Combo, form.SP_Combo};
        SN = form.SN;
        SN_Bullet = form.SN_Bullet;
        SN_Status = form.SN_Status;
        SN_RegStatus = form.SN_RegStatus;
        setGrabFileName = form.setGrabFileName;
        Apply = form.Apply;
        Doc_UserGuide = form.Doc_UserGuide;
    }

    [[nodiscard]] QString serialNumber() const { return SN ? SN->text() : QString(); }
    /// What the user selected; none in an empty list or when the stored byte is in none of its rows.
    [[nodiscard]] std::optional<uint8_t> selectedCode(Identification field) const;

    /// Fills all lists but the interfaces, with nothing selected.
    void fillCombos();
    /// Fills the list of interfaces anew when the selected part number has others: the selected code stays
    /// when the new list has it, else it becomes the unspecified one.
    void fitInterfaces();
    /// Selects the row of a code, or none.
    void select(Identification field, uint32_t code);
    void showSerialNumber(QString const& number) { set(SN, number); }
    void showFormatMessage(QString const& text) { set(SN_RegStatus, text); }
    void show(ConfigView const& view);
    /// Paints both statuses, before a call that may take long.
    void paintStatusAtOnce() const;

    QPointer<QLabel> EEPROM_Bullet, EEPROM_Status;
    QPointer<QPushButton> EEPROM_Test, EEPROM_Erase;
    std::array<QPointer<QLabel>, 4> boxes;     ///< by `Identification`
    std::array<QPointer<QComboBox>, 4> combos; ///< by `Identification`
    QPointer<QLineEdit> SN;
    QPointer<QLabel> SN_Bullet, SN_Status, SN_RegStatus;
    QPointer<QPushButton> setGrabFileName, Apply, Doc_UserGuide;

private:
    [[nodiscard]] QComboBox* combo(Identification field) const { return combos[size_t(field)]; }
    void fill(Identification field, InterfaceFamily family);

    std::optional<InterfaceFamily> m_shownInterfaces;
};
} // namespace kestra
