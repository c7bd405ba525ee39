#include "common/version.h"
#include "tests/config_page/config_fixture.h"

#include <QCoreApplication>
#include <QTextCodec>

using namespace kestra;

namespace {
constexpr size_t kPartNumber = 8191, kInterface = 8177, kMarket = 8179, kProcessing = 8180;
constexpr int kModule = 64; // a part number with the interfaces of the module family
constexpr char kSaved[] = "Done. Serial number is saved.", kUnsaved[] = "Click Apply to save.",
               kError[] = "Error accessing the EEPROM.";

class ConfigPage : public ConfigFixture {
protected:
    using Codes = std::array<int, 4>; // part number, interface, market and processing
    static constexpr std::array kCombos = {"PN_Combo", "IF_Combo", "MI_Combo", "SP_Combo"};

    // What the lists show; -1: nothing.
    [[nodiscard]] Codes codes() const {
        Codes shown;
        std::ranges::transform(kCombos, shown.begin(), [this](char const* combo) {
            auto const* const list = widget<QComboBox>(combo);
            return list->currentIndex() < 0 ? -1 : list->currentData().toInt();
        });
        return shown;
    }
    [[nodiscard]] Codes codesOnDevice() const {
        auto const& device = headboard.device;
        return {device[kPartNumber], device[kInterface], device[kMarket], device[kProcessing]};
    }
    void choose(Codes const& codes) {
        for (size_t i = 0; i < codes.size(); ++i)
            ConfigFixture::choose(kCombos[i], codes[i]);
    }
    // The calls for single bytes and for the camera's mode, each followed by the device's time.
    [[nodiscard]] std::string busLog() const {
        std::string found;
        for (std::string const& call : host.log)
            if (call.find("BusByte") != std::string::npos || call.starts_with("setMode 53"))
                found += call + "; ";
            else if (call == "pause 100")
                found += "pause; ";
        return found;
    }
};

TEST_F(ConfigPage, WithoutAnEepromNothingCanBeAppliedUntilAnotherCheckFindsOne) {
    host.textSettings["KestraMfr SN"] = "ABC1234005";
    headboard.plan(DeviceFault::NoAcknowledge);
    open();
    EXPECT_EQ(busLog(), "");
    for (char const* name : {"PN_Box", "IF_Box", "MI_Box", "SP_Box", "PN_Combo", "Apply"})
        EXPECT_FALSE(isEnabled(name)) << name;
    EXPECT_NE(text("EEPROM_Status").find("at address 0xA8."), std::string::npos);
    // The switches are set right, and the user checks another headboard, which is unplugged later.
    headboard.plan(DeviceFault::None);
    store({numberRecord("ABC1234002")});
    click("EEPROM_Test");
    EXPECT_TRUE(isEnabled("IF_Combo"));
    EXPECT_EQ(page->serialNumber(), "ABC1234002");
    headboard.deviceAddress = 0xAA;
    click("EEPROM_Test");
    EXPECT_EQ(state().eepromState, EepromState::Absent);
    click("EEPROM_Erase"); // stays as it was
    EXPECT_TRUE(messages.empty()) << "there is nothing to erase";
}

TEST_F(ConfigPage, TheNumberComesFromTheEepromBeforeItIsGenerated) {
    host.textSettings["KestraMfr SN"] = "ABC1234999";
    make();
    QStringList signalled;
    QObject::connect(widget<QLineEdit>("SN"), &QLineEdit::textChanged,
                     [&](QString const& number) { signalled += number; });
    page->initialise();
    EXPECT_EQ(page->serialNumber(), "ABC1234001");
    EXPECT_EQ(signalled, QStringList("ABC1234001")) << "like a typed one";
    EXPECT_EQ(text("SN_RegStatus"),
              "Serial Number generated from last \"Apply\".\nCount portion incremented by 1.");
    enter("");
    enter("A");
    EXPECT_EQ(edits, (std::vector{false, true, false})) << "the calibration pages hear of one from code, too";

    store({{3, "other"}, {kRecordHeadboardId, "XYZ"}, {kRecordHeadboardId, "second"}});
    open();
    EXPECT_EQ(page->serialNumber(), "XYZ") << "no byte behind the record's end";
    EXPECT_EQ(text("SN_RegStatus"), "Serial Number loaded from EEPROM");
    EXPECT_EQ(text("SN_Status"), kSaved);
    EXPECT_EQ(bullet("SN_Bullet"), QColor(Qt::green));

    // Header and payload fill the buffer of 1000 bytes, or exceed it.
    host.textSettings.clear();
    for (int const length : {997, 998}) {
        store({{kRecordHeadboardId, std::string(size_t(length), 'x')}});
        open();
        EXPECT_EQ(page->serialNumber().size(), length == 997 ? length : 0);
    }
}

TEST_F(ConfigPage, ANumberIsStoredOnlyWhenItComesBackAsTheSameText) {
    QTextCodec* const usual = QTextCodec::codecForLocale();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    store({{kRecordHeadboardId, "AB\xFF"}}); // no text in this encoding
    open();
    EXPECT_EQ(page->serialNumber(), QString::fromUtf8("AB\uFFFD"));
    EXPECT_EQ(text("SN_Status"), kSaved) << "as it is shown";

    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    enter("ABC123400\u03A9"); // a letter that it lacks
    click("Apply");
    EXPECT_EQ(deviceNumber(), "ABC123400?");
    EXPECT_EQ(text("SN_Status"), kUnsaved);
    QTextCodec::setCodecForLocale(usual);
}

TEST_F(ConfigPage, TheIdentificationBytesSelectAndOnlyTheUserMakesTheListsDirty) {
    headboard.device[kPartNumber] = kModule;
    headboard.device[kInterface] = 17; // an interface of that part number
    headboard.device[kMarket] = 2;
    headboard.device[kProcessing] = 0x77; // of no row
    open();
    EXPECT_EQ(codes(), (Codes{kModule, 17, 2, -1}));
    EXPECT_EQ(state().identification, (std::array<QString, 4>{"0x40", "0x11", "0x2", "0x77"}));
    EXPECT_FALSE(state().combosDirty || isEnabled("Apply"));
    click("EEPROM_Test");
    EXPECT_EQ(busLog(), "readBusByte 168 8191 16 8; pause; readBusByte 168 8177 16 8; pause; "
                        "readBusByte 168 8179 16 8; pause; readBusByte 168 8180 16 8; pause; ");

    ConfigFixture::choose("PN_Combo", 1);
    EXPECT_TRUE(state().combosDirty && isEnabled("Apply"));
    EXPECT_EQ(codes(), (Codes{1, 255, 2, -1})) << "a sensor has no interface of a module";
    EXPECT_EQ(widget<QComboBox>("IF_Combo")->findData(17), -1);
    widget<QComboBox>("MI_Combo")->clear();
    click("Apply");
    EXPECT_EQ(codesOnDevice(), (Codes{1, 255, 2, 0x77})) << "a byte that no row stands for is kept";
    EXPECT_FALSE(isEnabled("MI_Combo")) << "an empty list offers nothing";
    EXPECT_TRUE(isEnabled("MI_Box"));
}

TEST_F(ConfigPage, ApplyWritesTheCodesInOrderAndGivesTheDeviceItsTime) {
    open();
    choose({kModule, 17, 3, 4});
    host.log.clear();
    click("Apply");
    EXPECT_EQ(busLog(),
              "writeBusByte 168 8177 17 16 8; pause; setMode 53 1; writeBusByte 168 8179 3 16 8; pause; "
              "writeBusByte 168 8180 4 16 8; pause; writeBusByte 168 8191 64 16 8; pause; ");
    EXPECT_EQ(host.log.front(), "begin");
    EXPECT_EQ(host.log.back(), "end");

    choose({kModule, 18, 3, 4});
    host.log.clear();
    click("Apply");
    EXPECT_TRUE(host.calls("setMode 53").empty()) << "only for the parallel port";
    EXPECT_EQ(codesOnDevice(), (Codes{kModule, 18, 3, 4}));
}

TEST_F(ConfigPage, ANumberOfTenLettersIsStoredAndRememberedAndAnotherOnlyTheCodes) {
    open();
    enter("ABC");
    ConfigFixture::choose("MI_Combo", 2);
    click("Apply");
    EXPECT_EQ(text("SN_RegStatus"), "Incorrect format - 10 characters required.");
    EXPECT_EQ(headboard.device[kMarket], 2);
    expectOnDevice({});
    EXPECT_FALSE(host.textSettings.contains("KestraMfr SN"));

    enter("ABC1234002");
    host.log.clear();
    click("Apply");
    EXPECT_EQ(busLog(), "") << "no list was changed";
    EXPECT_EQ(host.textSettings["KestraMfr SN"], "ABC1234002");
    EXPECT_EQ(text("SN_RegStatus"), "");
    host.log.clear();
    page->applySerialNumber();
    EXPECT_TRUE(host.calls("write").empty()) << "stored already";
}

// The faults that the library tells of; a silent one shows only when the board is checked again.
TEST_F(ConfigPage, WhatApplyOrEraseCouldNotWriteIsToldAndWrittenWholeByTheNextOne) {
    Records::value_type const calibration{8, std::string("FACTORY\0\0\x03\0\x04\x36\x00\x12\x34", 16)};
    struct {
        char const *button, *entered, *next;
        Records records;
        int leastFailures;
    } const rows[] = {
        {"Apply", "ABC1234002", "Apply", {calibration, numberRecord("ABC1234002")}, 120},
        {"Apply", "ABC1234003", "Apply", {calibration, numberRecord("ABC1234003")}, 120},
        {"EEPROM_Erase", "ABC1234002", "EEPROM_Erase", {}, 18},
        {"EEPROM_Erase", "ABC1234002", "Apply", {numberRecord("ABC1234002")}, 18},
        {"EEPROM_Erase", "ABC", "Apply", {}, 18}, // no number to be stored
    };
    auto const failOperation = [&](auto const& row, DeviceFault fault, int64_t n, bool lasts) {
        SCOPED_TRACE(std::string(row.button) + ", operation " + std::to_string(n));
        store({numberRecord("ABC1234001"), calibration});
        open();
        enter("ABC1234002");
        HeadboardEepromRelease(*eepromSlot); // nothing is read yet
        host.textSettings.clear();
        headboard.operations = 0;
        headboard.plan(fault, uint64_t(n), lasts);
        click(row.button);
        bool const isReached = headboard.operations > n;
        headboard.plan(DeviceFault::None);
        EXPECT_EQ(isEnabled("Apply"), text("SN_Status") != kSaved);
        EXPECT_TRUE(!HeadboardEepromHasChanges(*eepromSlot) || text("EEPROM_Status") == kError);
        // Also after a failure the next number follows the last one that was asked for.
        EXPECT_EQ(host.textSettings["KestraMfr SN"], row.button[0] == 'A' ? "ABC1234002" : "");
        enter(row.entered);
        if (isEnabled(row.next))
            click(row.next);
        expectOnDevice(row.records);
        EXPECT_EQ(text("SN_Status"), row.records.empty() ? kUnsaved : kSaved);
        EXPECT_TRUE(row.records.empty() || host.textSettings["KestraMfr SN"] == row.entered);
        EXPECT_TRUE(host.isBalanced());
        return isReached;
    };
    using enum DeviceFault;
    for (auto const& row : rows) {
        int failures = 0;
        for (DeviceFault const fault : {NoAcknowledge, TransportFailed, BusyForEver})
            for (bool const lasts : {false, true})
                for (int64_t n = 0; failOperation(row, fault, n, lasts); ++n)
                    ++failures;
        EXPECT_GE(failures, row.leastFailures);
    }
}

TEST_F(ConfigPage, ANumberWithoutRoomTakesTheOlderOneNotAway) {
    store({numberRecord("ABC"), {3, std::string(8160, 'x')}});
    open();
    std::string const before = deviceText(8192);
    enter("ABC1234002");
    click("Apply");
    EXPECT_EQ(text("SN_Status"), kUnsaved);
    EXPECT_EQ(HeadboardEepromFlush(*eepromSlot), kEepromOk) << "as by the next save of a calibration page";
    EXPECT_EQ(deviceText(8192), before);
}

TEST_F(ConfigPage, ABrokenChainCanBeErased) {
    store({{3, "whole"}});
    headboard.device[6] = 0x7F; // the record ends behind the device
    open();
    EXPECT_EQ(text("EEPROM_Status"), kError);
    EXPECT_EQ(bullet("EEPROM_Bullet"), QColor(Qt::red));
    click("EEPROM_Erase");
    expectOnDevice({});
}

TEST_F(ConfigPage, EraseAsksAndKeepsTheIdentificationBytes) {
    store({numberRecord("ABC1234001")});
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
    ConfigFixture::choose("MI_Combo", 5);
    std::string const before = deviceText(8192);
    host.log.clear();
    click("EEPROM_Erase");
    EXPECT_EQ(deviceText(8192), chainOf({}) + before.substr(6));
    EXPECT_EQ(busLog(), "");
    EXPECT_EQ(codes()[2], 5);
    EXPECT_EQ(page->serialNumber(), "ABC1234001") << "a number that is shown stays, unsaved";
    EXPECT_FALSE(isEnabled("EEPROM_Erase"));

    click("Apply");
    enter("");
    click("EEPROM_Erase");
    EXPECT_EQ(page->serialNumber(), "ABC1234002") << "an empty one is refilled";
}

// Inside these calls, which may take seconds, nothing is painted.
TEST_F(ConfigPage, TheStatusIsPaintedBeforeApplyAndEraseReachTheDevice) {
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
            bool const isFirst = call.starts_with("writeBus") && writes++ == 0;
            EXPECT_TRUE(!isFirst || (status.isPainted() && dot.isPainted()));
        };
        click(button);
        host.onCall = nullptr;
        EXPECT_GT(writes, 0);
    }
}

TEST_F(ConfigPage, TheUserGuideIsLookedForInTheHostsFolder) {
    open();
    std::vector<QUrl> opened;
    openDocument.replace([&](QUrl const& url) {
        opened.push_back(url);
        return opened.size() < 2;
    });
    QString const guide = QStringLiteral("//doc//User Guides//Manufacturing Settings Tool User Guide.pdf");
    click("Doc_UserGuide"); // the library tells no home
    EXPECT_TRUE(messages.empty());
    Veyra2 library = veyra2();
    library.vy_Home = []() -> char const* { return "/opt/50%41 #1"; };
    installVeyra2(library);
    click("Doc_UserGuide");
    openDocument.replace({});
    ASSERT_EQ(opened.size(), 2U);
    EXPECT_EQ(opened[0].toString(), "file:///" + QCoreApplication::applicationDirPath() + guide);
    EXPECT_EQ(opened[1].path(QUrl::FullyDecoded), "//opt/50%41 #1" + guide);
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[0].icon, QMessageBox::Warning);
    EXPECT_EQ(messages[0].title, "Velmora Manufactuing Plug-in");
    EXPECT_EQ(messages[0].text, "Couldn't open the document file /opt/50%41 #1" + guide);
}

TEST_F(ConfigPage, WithoutHostWizardAndCameraItShowsThatNothingIsThere) {
    sensor.camera = nullptr;
    page = new Config(nullptr, sensor, nullptr, eepromSlot, nullptr);
    page->initialise();
    for (char const* const number : {"", "ABC1234001"}) {
        enter(number);
        page->OnBnClickedEepromTest();
        page->OnBnClickedApply();
        page->OnBnClickedSetGrabFileName();
        page->OnBnClickedEepromErase();
    }
    EXPECT_EQ(text("SN_Status"), kUnsaved);
    EXPECT_TRUE(widget<QLabel>("EEPROM_Bullet")->pixmap(Qt::ReturnByValue).isNull());
    EXPECT_EQ(text("Version"), versionText().toStdString());
    page->show();
    page->reject();
    EXPECT_TRUE(page->isVisible()) << "the Escape key leaves a page in its tab";
}
} // namespace
