#include "headboard/eeprom_chain.h"
#include "tests/config_page/config_fixture.h"
#include "wizard/dialogs.h"

#include <functional>
#include <iostream>

using namespace kestra;

namespace {

// A host that spins events inside a service, or a library that does, may do anything to the page there.
class ConfigReentry : public ConfigFixture {
protected:
    ConfigReentry() {
        host.textSettings["KestraMfr SN"] = "ABC1234005";
        openDocument.replace([this](QUrl const&) {
            host.note("openDocument");
            return false;
        });
    }
    ~ConfigReentry() override { openDocument.replace({}); }

    static std::vector<std::string> actions() {
        return {"initialise",        "OnBnClickedEepromTest",      "OnBnClickedApply",
                "OnEnChangeSn",      "OnBnClickedSetGrabFileName", "OnBnClickedEepromErase",
                "applySerialNumber", "OnBnClickedDocUserguide",    "OnCbnSelchangePnCombo"};
    }

    // A page with a changed list and an edited number, and an EEPROM with another one.
    void prepare() {
        store({{11, std::string("ABC1234001\0", 11)}, {3, "kept"}});
        open();
        widget<QComboBox>("PN_Combo")->setCurrentIndex(6);
        widget<QComboBox>("IF_Combo")->setCurrentIndex(0);
        enter("ABC1234002");
        host.log.clear();
        // As far as the page knows, the image may have to be read again at any time.
        HeadboardEepromRelease(*eepromSlot);
    }

    void run(std::string const& action) {
        if (!page)
            return;
        if (action == "initialise") {
            // A page's first check finds an empty number.
            make(&services);
            host.log.clear();
            page->initialise();
        } else if (action == "applySerialNumber") {
            page->applySerialNumber();
        } else if (action == "OnEnChangeSn" || action == "OnCbnSelchangePnCombo") {
            QMetaObject::invokeMethod(page, action.c_str(), Q_ARG(QString, QString()));
        } else {
            QMetaObject::invokeMethod(page, action.c_str());
        }
    }

    // Runs the action again and again, doing `deed` inside its first call, its second, and so on.
    int doInsideEveryCall(std::string const& action, std::function<void()> const& deed) {
        int cases = 0;
        for (size_t n = 1;; ++n, ++cases) {
            prepare();
            size_t calls = 0;
            host.onCall = [&](std::string const&) {
                if (++calls == n)
                    deed();
            };
            run(action);
            host.onCall = nullptr;
            SCOPED_TRACE(action + " call " + std::to_string(n));
            EXPECT_TRUE(host.isBalanced());
            EXPECT_LE(messages.size(), 2) << "asked once for each press";
            messages.clear();
            if (!page)
                host.log.erase(host.log.begin(), host.log.begin() + ptrdiff_t(linesBefore));
            // What is being flushed is written to its end, lest the chain be torn; nothing else is begun.
            for (char const* change : {"writeBusByte", "writeText", "writeOption", "setMode 53", "message"})
                EXPECT_TRUE(page || host.calls(change).empty()) << change << " for a page that is gone";
            if (page)
                comeToRest();
            delete page.data();
            if (calls < n)
                return cases;
        }
    }

    // Every button works afterwards, and the page tells what the device holds.
    void comeToRest() {
        EXPECT_EQ(state().updateDepth, 0U);
        enter("ABC1234777");
        QMetaObject::invokeMethod(page, "OnBnClickedEepromTest");
        EXPECT_EQ(state().eepromState, EepromState::Present);
        QMetaObject::invokeMethod(page, "OnBnClickedApply");
        EXPECT_EQ(text("SN_Status") == "Done. Serial number is saved.", deviceNumber() == "ABC1234777");
        // Whoever discards the EEPROM while it is written leaves a torn chain; nobody else may.
        if (mayTear)
            return;
        EXPECT_EQ(deviceNumber(), "ABC1234777");
        EepromShare const fresh = HeadboardEepromCreate(sensor.camera);
        ASSERT_EQ(EepromDeleteNth(*fresh, 11, nullptr, 0), kEepromOk);
        EXPECT_EQ(EepromFindRecord(*fresh, 11, nullptr, 0), kEepromNoRecord) << "stored twice";
    }

    bool mayTear = false;
    size_t linesBefore = 0; // of the log, at the page's deletion
};

TEST_F(ConfigReentry, APageMayBeDeletedInsideAnyCall) {
    int cases = 0;
    for (std::string const& action : actions())
        cases += doInsideEveryCall(action, [this] {
            delete page.data();
            linesBefore = host.log.size();
        });
    std::cout << cases << " deletions inside a call\n";
    EXPECT_GE(cases, 100);
}

TEST_F(ConfigReentry, WhateverHappensInsideACallThePageComesToRest) {
    int cases = 0;
    std::vector<std::pair<char const*, std::function<void()>>> const deeds = {
        {"check", [this] { run("OnBnClickedEepromTest"); }},
        {"apply", [this] { run("OnBnClickedApply"); }},
        {"erase", [this] { run("OnBnClickedEepromErase"); }},
        {"save of a calibration page", [this] { run("applySerialNumber"); }},
        {"number cleared", [this] { enter(""); }},
        {"EEPROM discarded", [this] { discardEeprom(eepromSlot); }},
    };
    for (auto const& [name, deed] : deeds) {
        SCOPED_TRACE(name);
        mayTear = std::string(name) == "EEPROM discarded";
        for (std::string const& action : actions())
            cases += doInsideEveryCall(action, deed);
    }
    std::cout << cases << " interruptions inside a call\n";
    EXPECT_GE(cases, 600);
}

TEST_F(ConfigReentry, EverySlotMayBeNull) {
    constexpr size_t kSlots = sizeof(HostServices) / sizeof(void*);
    for (size_t slotNumber = 0; slotNumber < kSlots; ++slotNumber) {
        HostServices some = services;
        auto* const table = reinterpret_cast<unsigned char*>(&some);
        std::fill_n(table + slotNumber * sizeof(void*), sizeof(void*), static_cast<unsigned char>(0));
        make(&some);
        page->initialise();
        enter("ABC1234002");
        widget<QComboBox>("PN_Combo")->setCurrentIndex(1);
        for (char const* action :
             {"OnBnClickedApply", "OnBnClickedSetGrabFileName", "OnBnClickedEepromErase"})
            run(action);
        EXPECT_EQ(state().eepromState, EepromState::Present) << "without slot " << slotNumber;
    }
}

} // namespace
