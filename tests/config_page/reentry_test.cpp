#include "tests/config_page/config_fixture.h"
#include "tests/support/inside_calls.h"

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

    // A page with a changed list and an edited number, and an EEPROM with another one.
    void prepare() {
        store({numberRecord("ABC1234001"), {3, "kept"}});
        open();
        widget<QComboBox>("PN_Combo")->setCurrentIndex(6);
        widget<QComboBox>("IF_Combo")->setCurrentIndex(0);
        enter("ABC1234002");
        // As far as the page knows, the image may have to be read again at any time.
        HeadboardEepromRelease(*eepromSlot);
        messages.clear();
    }

    // Does a deed inside the first call of each action, inside its second, and so on.
    template <typename Deed>
    int insideEveryCallOfEveryAction(Deed deed) {
        std::pair<char const*, std::function<void()>> const actions[] = {
            {"first check, of an empty number",
             [this] {
                 make();
                 host.log.clear();
                 page->initialise();
             }},
            {"check", [this] { page->OnBnClickedEepromTest(); }},
            {"apply", [this] { page->OnBnClickedApply(); }},
            {"edit", [this] { page->OnEnChangeSn({}); }},
            {"file name", [this] { page->OnBnClickedSetGrabFileName(); }},
            {"erase", [this] { page->OnBnClickedEepromErase(); }},
            {"save of a calibration page", [this] { page->applySerialNumber(); }},
            {"guide", [this] { page->OnBnClickedDocUserguide(); }},
            {"selection", [this] { page->OnCbnSelchangePnCombo({}); }}};
        int cases = 0;
        for (auto const& [name, run] : actions) {
            SCOPED_TRACE(name);
            prepare();
            run();
            simulator::EepromContents const whole = headboard.device;
            cases += doInsideEveryCall(
                host, [this] { prepare(); }, run, deed,
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
        std::span const expected(whole.begin() + 5, 95); // the bytes above the records are written one by one
        bool const isWhole = std::ranges::equal(expected, std::span(headboard.device).subspan(5, 95));
        EXPECT_TRUE(isWhole || !calls[0].starts_with("writeBus "));
    }

    // Every button works afterwards, and the page tells what the device holds.
    void comeToRest() {
        EXPECT_EQ(state().updateDepth, 0U);
        enter("ABC1234777");
        page->OnBnClickedEepromTest();
        EXPECT_EQ(state().eepromState, EepromState::Present);
        page->OnBnClickedApply();
        EXPECT_EQ(text("SN_Status") == "Done. Serial number is saved.", deviceNumber() == "ABC1234777");
        // Whoever discards the EEPROM while it is written leaves a torn chain; nobody else may.
        if (mayTear)
            return;
        EXPECT_EQ(deviceNumber(), "ABC1234777");
        EepromShare const fresh = HeadboardEepromCreate(sensor.camera);
        ASSERT_EQ(EepromDeleteNth(*fresh, kRecordHeadboardId, nullptr, 0), kEepromOk);
        EXPECT_EQ(EepromFindRecord(*fresh, kRecordHeadboardId, nullptr, 0), kEepromNoRecord)
            << "stored twice";
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
    std::function<void()> const deeds[] = {
        [this] { discardEeprom(eepromSlot); }, [this] { page->OnBnClickedEepromTest(); },
        [this] { page->OnBnClickedApply(); },  [this] { page->OnBnClickedEepromErase(); },
        [this] { page->applySerialNumber(); }, [this] { enter(""); }};
    for (auto const& deed : deeds) {
        SCOPED_TRACE(&deed - deeds);
        mayTear = &deed == deeds;
        cases += insideEveryCallOfEveryAction([&] {
            // Only while a box is open it runs at once.
            bool const isBoxOpen = host.log.back() == "message" || host.log.back() == "openDocument";
            size_t const calls = host.log.size();
            deed();
            EXPECT_TRUE(isBoxOpen || host.log.size() == calls) << host.log.back();
        });
    }
    std::cout << cases << " interruptions inside a call\n";
    EXPECT_GE(cases, 600);
}
} // namespace
