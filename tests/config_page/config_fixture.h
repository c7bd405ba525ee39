#pragma once

#include "config_page/config.h"
#include "config_page/config_view.h"
#include "tests/support/page_under_test.h"
#include "wizard/dialogs.h"

#include <QComboBox>
#include <QLineEdit>
#include <string>
#include <vector>

namespace kestra {
/// The configuration page on a fake host and a headboard whose EEPROM is blank at first.
class ConfigFixture : public PageUnderTest<Config> {
protected:
    ConfigFixture();
    ~ConfigFixture() override;

    /// Makes the page anew and lets it initialise; the log then starts anew.
    void open();
    void make(HostServices const* services);
    [[nodiscard]] ConfigState const& state() const { return page->state(); }
    [[nodiscard]] QRgb bullet(char const* label) const;
    /// The code that a list shows, or -1.
    [[nodiscard]] int code(char const* combo) const;
    void choose(char const* combo, int code);
    void enter(char const* serialNumber);

    /// The device with a record store of these records; each is a type and its payload.
    void store(std::vector<std::pair<uint8_t, std::string>> const& records);
    /// The first bytes of the device.
    [[nodiscard]] std::string deviceText(size_t count) const;
    /// The text of the first serial-number record in the device; empty when there is none.
    [[nodiscard]] std::string deviceNumber() const;
    /// The log's lines of the host's bus and of the camera's modes, and the long pauses.
    [[nodiscard]] std::vector<std::string> busLog() const;

    FakeHeadboard& headboard = libraries.headboard;
    std::vector<bool> edits;           ///< what the calibration pages were told
    std::vector<UserMessage> messages; ///< what the user was shown
    QMessageBox::StandardButton answer = QMessageBox::Ok;
};
} // namespace kestra
