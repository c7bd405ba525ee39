#include "tests/calibration/page_fixture.h"

#include "common/system.h"
#include "headboard/eeprom_chain.h"

namespace kestra {
PageFixture::PageFixture(PageCase const& pageCase) : m_case(pageCase) {
    libraries.bitfields = {"POLY_SC_ENABLE.ENABLE", "CAM_PGA_PGA_CONTROL.CAM_PGA_PGA_ENABLE"};
    sensor.sensorKind = m_case.sensorKind;
    libraries.headboard.deviceAddress = 0; // no EEPROM answers, unless a test says otherwise
    currentUtcTime.replace([] { return QDateTime(QDate(2024, 5, 31), QTime(23, 59, 7), Qt::UTC); });
}

PageFixture::~PageFixture() { currentUtcTime.replace({}); }

void PageFixture::remake() {
    delete page.data();
    remakeWizard();
    if (!m_case.takesThreePictures()) {
        page = new LensAssist(nullptr, sensor, services, wizard.get(), eepromSlot);
        return;
    }
    auto* const apga = new LensAssistApga(nullptr, sensor, services, wizard.get(), eepromSlot);
    apga->setMode(m_case.mode);
    page = apga;
}

void PageFixture::open() {
    remake();
    page->initialise();
    wizard->addPage(page, QStringLiteral("Page"));
    // The tests tick by hand.
    page->findChild<QTimer*>()->stop();
    host.log.clear();
}

void PageFixture::enter(char const* field, std::string const& text) {
    widget<QLineEdit>(field)->setText(QString::fromStdString(text));
}

void PageFixture::chooseLabel(char const* label) {
    auto* const box = widget<QComboBox>("Prom_Label");
    box->addItem(QLatin1String(label));
    box->setCurrentText(QLatin1String(label));
}

void PageFixture::capture(bool all) {
    for (std::string const row : m_case.captureRows)
        if (page && (all || text((row + "_Status").c_str()) == "Waiting for you..."))
            invoke(("OnBnClicked" + row + "_Image").c_str());
}

void PageFixture::startCalibration() {
    capture(true);
    frames(3, 13);
    click("Calibrate");
}

void PageFixture::tick(int count) {
    while (count-- > 0)
        invoke("start");
}

void PageFixture::frames(int count, uint32_t type, uint32_t pixel) {
    std::vector<uint32_t> pixels(64 * 48, pixel);
    for (; count > 0 && page; --count)
        page->onFrame({pixels.data(), ImageType(type), 64, 48, 64 * (type == 11 ? 4 : 2)});
}

void PageFixture::play(int rounds) {
    for (; rounds > 0 && page; --rounds) {
        frames(5);
        frames(1, 13);
        if (page)
            tick();
    }
}

Calls PageFixture::changes() const {
    Calls found = host.log;
    std::erase_if(found, [](std::string const& call) {
        return call.starts_with("read") || call.starts_with("exists") || call == "sensorInfo" ||
               call == "isSOC";
    });
    return found;
}

std::map<uint8_t, int> PageFixture::recordsOnDevice() const {
    EepromShare const eeprom = HeadboardEepromCreate(sensor.camera);
    std::map<uint8_t, int> found;
    std::vector<uint8_t> record(8192);
    for (int n = 0; EepromReadNth(*eeprom, kAnyRecordType, nullptr, n, record) > 0; ++n)
        ++found[record[0]];
    return found;
}
} // namespace kestra
