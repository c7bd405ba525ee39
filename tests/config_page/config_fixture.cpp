#include "tests/config_page/config_fixture.h"

#include "headboard/eeprom_chain.h"
#include "headboard/record_format.h"

#include <algorithm>

namespace kestra {
ConfigFixture::ConfigFixture() {
    FakeHeadboard::fillIn(services);
    showMessage.replace([this](QWidget*, UserMessage const& message) {
        messages.push_back(message);
        host.note("message");
        return answer;
    });
}

ConfigFixture::~ConfigFixture() { showMessage.replace({}); }

void ConfigFixture::make(HostServices const* table) {
    delete page.data();
    discardEeprom(eepromSlot);
    page = new Config(nullptr, sensor, table, eepromSlot, wizard.get(), [this](bool isEmpty) {
        edits.push_back(isEmpty);
        host.note("serialNumberEdited");
    });
}

void ConfigFixture::open() {
    make(&services);
    edits.clear();
    page->initialise();
    host.log.clear();
}

QRgb ConfigFixture::bullet(char const* label) const {
    QPixmap const pixmap = widget<QLabel>(label)->pixmap(Qt::ReturnByValue);
    return pixmap.isNull() ? 0 : pixmap.toImage().pixel(0, 0);
}

int ConfigFixture::code(char const* combo) const {
    auto const* const list = widget<QComboBox>(combo);
    return list->currentIndex() < 0 ? -1 : list->currentData().toInt();
}

void ConfigFixture::choose(char const* combo, int code) {
    auto* const list = widget<QComboBox>(combo);
    int const row = list->findData(code);
    ASSERT_GE(row, 0) << combo << " has no code " << code;
    list->setCurrentIndex(row);
}

void ConfigFixture::enter(char const* serialNumber) {
    widget<QLineEdit>("SN")->setText(QString::fromUtf8(serialNumber));
}

void ConfigFixture::store(std::vector<std::pair<uint8_t, std::string>> const& records) {
    std::string bytes = "VYEE\x01";
    for (auto const& [type, payload] : records) {
        bytes += char(type);
        bytes += char(payload.size() >> 8);
        bytes += char(payload.size());
        bytes += payload;
    }
    bytes += '\xFF';
    std::copy(bytes.begin(), bytes.end(), headboard.device.begin());
}

std::string ConfigFixture::deviceText(size_t count) const {
    return {headboard.device.begin(), headboard.device.begin() + ptrdiff_t(count)};
}

std::string ConfigFixture::deviceNumber() const {
    EepromShare const fresh = HeadboardEepromCreate(sensor.camera);
    return std::string(EepromRecordText(*fresh, EepromFindRecord(*fresh, kRecordHeadboardId, nullptr, 0)));
}

std::vector<std::string> ConfigFixture::busLog() const {
    std::vector<std::string> found;
    for (std::string const& call : host.log)
        if (call.find("BusByte") != std::string::npos || call.starts_with("setMode 53") ||
            call == "pause 100")
            found.push_back(call);
    return found;
}
} // namespace kestra
