#include "common/version.h"
#include "tests/config_page/config_fixture.h"
#include "wizard/dialogs.h"

#include <QCoreApplication>
#include <QTextCodec>
#include <algorithm>

using namespace kestra;

namespace {
using Log = std::vector<std::string>;

constexpr size_t kPartNumber = 8191, kInterface = 8177, kMarket = 8179, kProcessing = 8180;
constexpr uint8_t kHeadboardId = 11;
constexpr int kModule = 64; // a part number with the interfaces of the module family

class ConfigPage : public ConfigFixture {};

TEST_F(ConfigPage, WithoutAnEepromNothingCanBeAppliedUntilAnotherCheckFindsOne) {
    host.textSettings["KestraMfr SN"] = "ABC1234005";
    headboard.plan(DeviceFault::NoAcknowledge);
    open();
    EXPECT_TRUE(host.calls("readBusByte").empty());
    for (char const* name : {"PN_Box", "IF_Box", "MI_Box", "SP_Box", "PN_Combo", "Apply"})
        EXPECT_FALSE(isEnabled(name)) << name;
    EXPECT_EQ(text("EEPROM_Status"),
              "The EEPROM was not detected at address 0xA8.\nCheck the PROM ADDR switches on the headboard.");
    // The switches are set right, and the user checks another headboard, which is unplugged later.
    headboard.plan(DeviceFault::None);
    store({{kHeadboardId, std::string("ABC1234002\0", 11)}});
    click("EEPROM_Test");
    EXPECT_TRUE(isEnabled("IF_Combo"));
    EXPECT_EQ(page->serialNumber(), "ABC1234002");
    headboard.deviceAddress = 0xAA;
    click("EEPROM_Test");
    EXPECT_EQ(state().eepromState, EepromState::Absent);
    click("EEPROM_Erase"); // stays as it was
    EXPECT_TRUE(messages.empty()) << "there is nothing to erase";
    EXPECT_TRUE(host.isBalanced());
}

TEST_F(ConfigPage, TheNumberComesFromTheEepromBeforeItIsGenerated) {
    host.textSettings["KestraMfr SN"] = "ABC1234999";
    make(&services);
    QStringList signalled;
    QObject::connect(widget<QLineEdit>("SN"), &QLineEdit::textChanged,
                     [&](QString const& number) { signalled += number; });
    page->initialise();
    EXPECT_EQ(page->serialNumber(), "ABC1234001");
    EXPECT_EQ(signalled, QStringList("ABC1234001")) << "like a typed one";
    EXPECT_EQ(text("SN_RegStatus"),
              "Serial Number generated from last \"Apply\".\nCount portion incremented by 1.");
    EXPECT_TRUE(isEnabled("Apply"));
    EXPECT_EQ(edits, std::vector{false}) << "the calibration pages hear of a number from code";
    enter("");
    enter("A");
    EXPECT_EQ(edits, (std::vector{false, true, false}));

    store({{3, "other"}, {kHeadboardId, "XYZ"}, {kHeadboardId, "second"}});
    open();
    EXPECT_EQ(page->serialNumber(), "XYZ") << "no byte behind the record's end";
    EXPECT_EQ(text("SN_RegStatus"), "Serial Number loaded from EEPROM");
    EXPECT_EQ(text("SN_Status"), "Done. Serial number is saved.");
    EXPECT_EQ(bullet("SN_Bullet"), QColor(Qt::green).rgb());
    EXPECT_FALSE(isEnabled("Apply"));
    EXPECT_TRUE(isEnabled("EEPROM_Erase"));

    // Header and payload fill the buffer of 1000 bytes, or exceed it.
    host.textSettings.clear();
    for (int const length : {997, 998}) {
        store({{kHeadboardId, std::string(size_t(length), 'x')}});
        open();
        EXPECT_EQ(page->serialNumber().size(), length == 997 ? length : 0);
    }
}

TEST_F(ConfigPage, ANumberIsStoredOnlyWhenItComesBackAsTheSameText) {
    QTextCodec* const usual = QTextCodec::codecForLocale();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    store({{kHeadboardId, "AB\xFF"}}); // no text in this encoding
    open();
    EXPECT_EQ(page->serialNumber(), QString::fromUtf8("AB\uFFFD"));
    EXPECT_EQ(text("SN_Status"), "Done. Serial number is saved.") << "as it is shown";

    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    enter("ABC123400\u03A9"); // a letter that it lacks
    click("Apply");
    EXPECT_EQ(deviceNumber(), "ABC123400?");
    EXPECT_EQ(text("SN_Status"), "Click Apply to save.");
    QTextCodec::setCodecForLocale(usual);
}

TEST_F(ConfigPage, TheIdentificationBytesSelectAndOnlyTheUserMakesTheListsDirty) {
    headboard.device[kPartNumber] = kModule;
    headboard.device[kInterface] = 17;
    headboard.device[kMarket] = 2;
    headboard.device[kProcessing] = 0x77; // of no row
    open();
    EXPECT_EQ(code("PN_Combo"), kModule);
    EXPECT_EQ(code("IF_Combo"), 17) << "interfaces of the part number";
    EXPECT_EQ(code("MI_Combo"), 2);
    EXPECT_EQ(code("SP_Combo"), -1);
    EXPECT_EQ(state().identification[0], "0x40");
    EXPECT_EQ(state().identification[2], "0x2");
    EXPECT_FALSE(state().combosDirty || isEnabled("Apply"));
    click("EEPROM_Test");
    Log expected;
    for (char const* const address : {"8191", "8177", "8179", "8180"})
        expected.insert(expected.end(), {"readBusByte 168 " + std::string(address) + " 16 8", "pause 100"});
    EXPECT_EQ(busLog(), expected);

    choose("PN_Combo", 1);
    EXPECT_TRUE(state().combosDirty && isEnabled("Apply"));
    EXPECT_EQ(code("IF_Combo"), 255) << "a sensor has no interface of a module";
    EXPECT_EQ(widget<QComboBox>("IF_Combo")->findData(17), -1);
    widget<QComboBox>("MI_Combo")->clear();
    click("Apply");
    EXPECT_EQ(headboard.device[kPartNumber], 1);
    EXPECT_EQ(headboard.device[kMarket], 2);
    EXPECT_EQ(headboard.device[kProcessing], 0x77) << "a byte that no row stands for is kept";
    EXPECT_FALSE(isEnabled("MI_Combo")) << "an empty list offers nothing";
    EXPECT_TRUE(isEnabled("MI_Box"));
}

TEST_F(ConfigPage, ApplyWritesTheCodesInOrderAndGivesTheDeviceItsTime) {
    open();
    choose("PN_Combo", kModule);
    choose("IF_Combo", 17);
    choose("MI_Combo", 3);
    choose("SP_Combo", 4);
    host.log.clear();
    click("Apply");
    Log expected;
    for (char const* const byte : {"8177 17", "8179 3", "8180 4", "8191 64"})
        expected.insert(expected.end(), {"writeBusByte 168 " + std::string(byte) + " 16 8", "pause 100"});
    expected.insert(expected.begin() + 2, "setMode 53 1");
    EXPECT_EQ(busLog(), expected);
    EXPECT_EQ(host.log.front(), "begin");
    EXPECT_EQ(host.log.back(), "end");

    choose("IF_Combo", 18);
    host.log.clear();
    click("Apply");
    EXPECT_TRUE(host.calls("setMode 53").empty()) << "only for the parallel port";
    EXPECT_EQ(headboard.device[kInterface], 18);
}

TEST_F(ConfigPage, AWrongFormatStillAppliesTheCodes) {
    open();
    enter("ABC");
    choose("MI_Combo", 2);
    click("Apply");
    EXPECT_EQ(text("SN_RegStatus"), "Incorrect format - 10 characters required.");
    EXPECT_EQ(headboard.device[kMarket], 2);
    EXPECT_EQ(deviceText(6), "VYEE\x01\xFF");
    EXPECT_FALSE(host.textSettings.contains("KestraMfr SN"));
    EXPECT_EQ(text("SN_Status"), "Click Apply to save.");
}

TEST_F(ConfigPage, ApplyStoresTheNumberAndRemembersIt) {
    open();
    enter("ABC1234002");
    EXPECT_EQ(bullet("SN_Bullet"), QColor(Qt::yellow).rgb());
    click("Apply");
    EXPECT_TRUE(host.calls("writeBusByte").empty()) << "no list was changed";
    EXPECT_EQ(host.textSettings["KestraMfr SN"], "ABC1234002");
    EXPECT_EQ(text("SN_Status"), "Done. Serial number is saved.");
    EXPECT_EQ(text("SN_RegStatus"), "");
    EXPECT_FALSE(isEnabled("Apply"));
    EXPECT_TRUE(host.isBalanced());

    host.log.clear();
    page->applySerialNumber();
    EXPECT_TRUE(host.calls("writeBus").empty()) << "stored already";
    EXPECT_TRUE(host.calls("writeText").empty());
}

// The faults that the library tells of; a silent one shows only when the board is checked again.
class ConfigFaults : public ConfigFixture {
protected:
    static std::string record(char type, std::string const& payload) {
        return std::string{type, '\0', char(payload.size())} + payload;
    }
    static std::string numberRecord(char const* number) {
        return record(kHeadboardId, number + std::string(1, '\0'));
    }

    // Runs a deed on a board with a calibration behind its number, of which nothing is read yet, while its
    // first operation on the device fails, its second, and so on.
    template <typename Deed, typename Retry>
    int failEveryOperation(Deed deed, Retry retry) {
        int failures = 0;
        for (DeviceFault const fault :
             {DeviceFault::NoAcknowledge, DeviceFault::TransportFailed, DeviceFault::BusyForEver}) {
            for (int64_t n = 0;; ++n) {
                bool wasReached = false;
                for (bool const lasts : {false, true}) {
                    std::string const chain =
                        "VYEE\x01" + numberRecord("ABC1234001") + m_calibration + "\xFF";
                    std::copy(chain.begin(), chain.end(), headboard.device.begin());
                    open();
                    HeadboardEepromRelease(*eepromSlot);
                    enter("ABC1234002");
                    HeadboardEepromRelease(*eepromSlot);
                    headboard.operations = 0;
                    headboard.plan(fault, uint64_t(n), lasts);
                    deed();
                    wasReached = headboard.operations > n;
                    headboard.plan(DeviceFault::None);
                    SCOPED_TRACE("operation " + std::to_string(n));
                    retry();
                    EXPECT_TRUE(host.isBalanced());
                    failures += wasReached;
                }
                if (!wasReached)
                    break;
            }
        }
        return failures;
    }

    // What the page tells is what the device holds from its beginning on.
    void expectOnDevice(std::string const& records) {
        EXPECT_EQ(deviceText(6 + records.size()), "VYEE\x01" + records + "\xFF");
        EXPECT_TRUE(text("EEPROM_Status").starts_with("EEPROM is present")) << text("EEPROM_Status");
    }

    std::string const m_calibration = record(8, std::string("FACTORY\0\0\x03\0\x04\x36\x00\x12\x34", 16));
};

TEST_F(ConfigFaults, ANumberThatCouldNotBeWrittenIsWrittenWholeByTheNextApply) {
    std::string const whole = m_calibration + numberRecord("ABC1234002");
    auto const apply = [this] { page->OnBnClickedApply(); };
    int const failures = failEveryOperation(apply, [&] {
        bool const isSaved = text("SN_Status") == "Done. Serial number is saved.";
        EXPECT_EQ(isEnabled("Apply"), !isSaved);
        if (!isSaved) {
            EXPECT_EQ(text("SN_Status"), "Click Apply to save.");
            click("Apply");
        }
        expectOnDevice(whole);
        EXPECT_EQ(text("SN_Status"), "Done. Serial number is saved.");
        EXPECT_EQ(host.textSettings["KestraMfr SN"], "ABC1234002");
    });
    EXPECT_GE(failures, 3 * 2 * 20);
    // Another number instead of the one that failed.
    failEveryOperation(apply, [&] {
        enter("ABC1234003");
        click("Apply");
        expectOnDevice(m_calibration + numberRecord("ABC1234003"));
    });
}

TEST_F(ConfigFaults, AnEraseThatFailedIsToldAndCompletedByTheNextEraseOrApply) {
    auto const erase = [this] { page->OnBnClickedEepromErase(); };
    int const failures = failEveryOperation(erase, [&] {
        if (text("EEPROM_Status") == "Error accessing the EEPROM.")
            click("EEPROM_Erase");
        expectOnDevice({});
        EXPECT_FALSE(isEnabled("EEPROM_Erase"));
    });
    EXPECT_GE(failures, 3 * 2 * 3);
    failEveryOperation(erase, [&] {
        click("Apply");
        expectOnDevice(numberRecord("ABC1234002"));
    });
    // Apply completes it also without a number to be stored.
    failEveryOperation(erase, [&] {
        enter("ABC");
        choose("MI_Combo", 5);
        click("Apply");
        expectOnDevice({});
    });
}

TEST_F(ConfigPage, ANumberWithoutRoomTakesTheOlderOneNotAway) {
    store({{kHeadboardId, std::string("ABC\0", 4)}, {3, std::string(8160, 'x')}});
    open();
    std::string const before = deviceText(8192);
    enter("ABC1234002");
    click("Apply");
    EXPECT_EQ(text("SN_Status"), "Click Apply to save.");
    EXPECT_EQ(HeadboardEepromFlush(*eepromSlot), kEepromOk) << "as by the next save of a calibration page";
    EXPECT_EQ(deviceText(8192), before);
}

TEST_F(ConfigPage, ABrokenChainCanBeErased) {
    store({{3, "whole"}});
    headboard.device[6] = 0x7F; // the record ends behind the device
    open();
    EXPECT_EQ(text("EEPROM_Status"), "Error accessing the EEPROM.");
    click("EEPROM_Erase");
    EXPECT_EQ(deviceText(6), "VYEE\x01\xFF");
    EXPECT_EQ(text("EEPROM_Status"),
              "EEPROM is present and working normally.\n0 bytes used.  8171 bytes available.");
    EXPECT_FALSE(isEnabled("EEPROM_Erase"));
}

TEST_F(ConfigPage, EraseAsksAndKeepsTheIdentificationBytes) {
    store({{kHeadboardId, std::string("ABC1234001\0", 11)}});
    host.textSettings["KestraMfr SN"] = "ABC1234001";
    open();
    answer = QMessageBox::Cancel;
    click("EEPROM_Erase");
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[0].title, "KestraMfr");
    EXPECT_EQ(messages[0].text, "This will erase all data on the headboard EEPROM. Click OK to continue.");
    EXPECT_EQ(int(messages[0].icon), 2);
    EXPECT_EQ(messages[0].buttons, QMessageBox::Ok | QMessageBox::Cancel);

    answer = QMessageBox::Ok;
    headboard.plan(DeviceFault::NoAcknowledge, 0, false);
    click("EEPROM_Erase");
    EXPECT_EQ(text("EEPROM_Status"), "Error accessing the EEPROM.");
    EXPECT_EQ(bullet("EEPROM_Bullet"), QColor(Qt::red).rgb());

    choose("MI_Combo", 5);
    std::fill(headboard.timesWritten.begin(), headboard.timesWritten.end(), 0);
    std::string const before = deviceText(8192);
    host.log.clear();
    click("EEPROM_Erase");
    EXPECT_EQ(deviceText(8192), "VYEE\x01\xFF" + before.substr(6));
    EXPECT_EQ(std::count(headboard.timesWritten.begin() + 6, headboard.timesWritten.end(), 0), 8192 - 6);
    EXPECT_TRUE(host.calls("readBusByte").empty());
    EXPECT_EQ(code("MI_Combo"), 5);
    EXPECT_EQ(page->serialNumber(), "ABC1234001") << "a number that is shown stays, unsaved";
    EXPECT_EQ(text("SN_Status"), "Click Apply to save.");
    EXPECT_FALSE(isEnabled("EEPROM_Erase"));

    click("Apply");
    enter("");
    click("EEPROM_Erase");
    EXPECT_EQ(page->serialNumber(), "ABC1234002") << "an empty one is refilled";
}

// Inside these calls, which may take seconds, nothing is painted.
TEST_F(ConfigPage, TheStatusIsPaintedBeforeApplyAndEraseReachTheDevice) {
    store({{3, "other"}});
    open();
    page->show();
    for (auto const& [button, number] :
         {std::pair{"Apply", "ABC1234001"}, std::pair{"EEPROM_Erase", "ABC1234002"}}) {
        SCOPED_TRACE(button);
        QApplication::processEvents();
        PaintWatch const status(widget<QLabel>("SN_Status")), dot(widget<QLabel>("SN_Bullet"));
        enter(number);
        int writes = 0;
        host.onCall = [&](std::string const& call) {
            if (!call.starts_with("writeBus") || writes++ > 0)
                return;
            EXPECT_TRUE(status.isPainted());
            EXPECT_TRUE(dot.isPainted());
        };
        click(button);
        host.onCall = nullptr;
        EXPECT_GT(writes, 0);
    }
}

TEST_F(ConfigPage, TheUserGuideIsLookedForInTheHostsFolder) {
    open();
    std::vector<QUrl> opened;
    bool opens = true;
    openDocument.replace([&](QUrl const& url) {
        opened.push_back(url);
        return opens;
    });
    QString const guide = QStringLiteral("//doc//User Guides//Manufacturing Settings Tool User Guide.pdf");
    click("Doc_UserGuide"); // the library tells no home
    Veyra2 library = veyra2();
    library.vy_Home = []() -> char const* { return "/opt/50%41 #1"; };
    installVeyra2(library);
    click("Doc_UserGuide");
    EXPECT_TRUE(messages.empty());
    ASSERT_EQ(opened.size(), 2U);
    EXPECT_EQ(opened[0].toString(), "file:///" + QCoreApplication::applicationDirPath() + guide);
    EXPECT_EQ(opened[1].path(QUrl::FullyDecoded), "//opt/50%41 #1" + guide);

    opens = false;
    click("Doc_UserGuide");
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[0].icon, QMessageBox::Warning);
    EXPECT_EQ(messages[0].title, "Velmora Manufactuing Plug-in");
    EXPECT_EQ(messages[0].text, "Couldn't open the document file /opt/50%41 #1" + guide);
    openDocument.replace({});
}

TEST_F(ConfigPage, WithoutHostWizardAndCameraItShowsThatNothingIsThere) {
    sensor.camera = nullptr;
    page = new Config(nullptr, sensor, nullptr, eepromSlot, nullptr);
    page->initialise();
    for (char const* slotName : {"OnBnClickedEepromTest", "OnBnClickedApply", "OnBnClickedSetGrabFileName",
                                 "OnBnClickedEepromErase"})
        QMetaObject::invokeMethod(page, slotName);
    enter("ABC1234001");
    QMetaObject::invokeMethod(page, "OnBnClickedApply");
    EXPECT_EQ(text("EEPROM_Status"), "The status of the EEPROM is unknown.");
    EXPECT_EQ(text("SN_Status"), "Click Apply to save.");
    EXPECT_TRUE(widget<QLabel>("EEPROM_Bullet")->pixmap(Qt::ReturnByValue).isNull());
    EXPECT_EQ(text("Version"), versionText().toStdString());
    page->show();
    page->reject();
    EXPECT_TRUE(page->isVisible()) << "the Escape key leaves a page in its tab";
}
} // namespace
