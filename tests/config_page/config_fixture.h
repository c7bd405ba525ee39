#pragma once

#include "config_page/config.h"
#include "headboard/eeprom_chain.h"
#include "headboard/record_format.h"
#include "tests/support/page_under_test.h"
#include "wizard/dialogs.h"

#include <QComboBox>
#include <QLineEdit>
#include <algorithm>

namespace kestra {
/// Records of the EEPROM; each is a type and its payload.
using Records = std::vector<std::pair<uint8_t, std::string>>;

/// The text of a chain of records.
inline std::string chainOf(Records const& records) {
    std::string chain = "VYEE\x01";
    for (auto const& [type, payload] : records)
        chain += std::string{char(type), char(payload.size() >> 8), char(payload.size())} + payload;
    return chain + '\xFF';
}

inline Records::value_type numberRecord(char const* number) {
    return {kRecordHeadboardId, number + std::string(1, '\0')};
}

/// The configuration page on a fake host and a headboard whose EEPROM is blank at first.
class ConfigFixture : public PageUnderTest<Config> {
protected:
    ConfigFixture() {
        FakeHeadboard::fillIn(services);
        showMessage.replace([this](QWidget*, UserMessage const& message) {
            messages.push_back(message);
            host.note("message");
            return answer;
        });
    }
    ~ConfigFixture() override { showMessage.replace({}); }

    void make() {
        delete page.data();
        discardEeprom(eepromSlot);
        page = new Config(nullptr, sensor, &services, eepromSlot, wizard.get(), [this](bool isEmpty) {
            edits.push_back(isEmpty);
            host.note("serialNumberEdited");
        });
    }
    /// Makes the page anew and lets it initialise; the log then starts anew.
    void open() {
        make();
        edits.clear();
        page->initialise();
        host.log.clear();
    }
    [[nodiscard]] ConfigState const& state() const { return page->state(); }
    [[nodiscard]] QColor bullet(char const* label) const {
        return widget<QLabel>(label)->pixmap(Qt::ReturnByValue).toImage().pixelColor(0, 0);
    }
    void choose(char const* combo, int code) {
        int const row = widget<QComboBox>(combo)->findData(code);
        ASSERT_GE(row, 0) << combo << " has no code " << code;
        widget<QComboBox>(combo)->setCurrentIndex(row);
    }
    void enter(char const* serialNumber) {
        widget<QLineEdit>("SN")->setText(QString::fromUtf8(serialNumber));
    }

    void store(Records const& records) { std::ranges::copy(chainOf(records), headboard.device.begin()); }
    /// The first bytes of the device.
    [[nodiscard]] std::string deviceText(size_t count) const {
        return {headboard.device.begin(), headboard.device.begin() + ptrdiff_t(count)};
    }
    /// Whether the device holds this chain and nothing else was told of it.
    void expectOnDevice(Records const& records) const {
        std::string const chain = chainOf(records);
        EXPECT_EQ(deviceText(chain.size()), chain);
        EXPECT_TRUE(text("EEPROM_Status").starts_with("EEPROM is present")) << text("EEPROM_Status");
    }
    /// The text of the first serial-number record in the device; empty when there is none.
    [[nodiscard]] std::string deviceNumber() const {
        EepromShare const fresh = HeadboardEepromCreate(sensor.camera);
        return std::string(
            EepromRecordText(*fresh, EepromFindRecord(*fresh, kRecordHeadboardId, nullptr, 0)));
    }

    FakeHeadboard& headboard = libraries.headboard;
    std::vector<bool> edits;           ///< what the calibration pages were told
    std::vector<UserMessage> messages; ///< what the user was shown
    QMessageBox::StandardButton answer = QMessageBox::Ok;
};
} // namespace kestra
