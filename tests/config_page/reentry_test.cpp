#include "headboard/eeprom_chain.h"
#include "tests/config_page/config_fixture.h"
#include "tests/support/inside_calls.h"
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
        // As far as the page knows, the image may have to be read again at any time.
        HeadboardEepromRelease(*eepromSlot);
        messages.clear();
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

    // Runs each action again and again, doing `deed` inside its first call, its second, and so on.
    template <typename Deed>
    int insideEveryCallOfEveryAction(Deed deed) {
        int cases = 0;
        for (std::string const& action : actions()) {
            SCOPED_TRACE(action);
            prepare();
            run(action);
            simulator::EepromContents const whole = headboard.device;
            cases += doInsideEveryCall(
                host, [this] { prepare(); }, [&] { run(action); }, deed,
                [&](CallsFrom calls) {
                    EXPECT_LE(messages.size(), 2) << "asked once for each press";
                    if (page)
                        comeToRest();
                    else
                        expectNothingFor(calls, whole);
                    delete page.data();
                });
        }
        return cases;
    }

    // A flush goes on to its end, lest the chain be torn; nothing else is begun for a page that is gone.
    void expectNothingFor(CallsFrom calls, simulator::EepromContents const& whole) {
        EXPECT_EQ(callsForNobody(calls), std::vector<std::string>());
        size_t const records = 5; // the bytes above them are written one by one
        bool const isWhole =
            std::equal(whole.begin() + records, whole.begin() + 100, headboard.device.begin() + records);
        EXPECT_TRUE(isWhole || !calls[0].starts_with("writeBus "));
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
};

TEST_F(ConfigReentry, APageMayBeDeletedInsideAnyCall) {
    int const cases = insideEveryCallOfEveryAction([this] { delete page.data(); });
    std::cout << cases << " deletions inside a call\n";
    EXPECT_GE(cases, 100);
}

TEST_F(ConfigReentry, WhatArrivesInsideACallWaitsAndThePageComesToRest) {
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
        cases += insideEveryCallOfEveryAction([this, &act = deed] {
            // Only while a box is open it runs at once.
            bool const isBoxOpen = host.log.back() == "message" || host.log.back() == "openDocument";
            size_t const calls = host.log.size();
            act();
            EXPECT_TRUE(isBoxOpen || host.log.size() == calls) << host.log.back();
        });
    }
    std::cout << cases << " interruptions inside a call\n";
    EXPECT_GE(cases, 600);
}
} // namespace
