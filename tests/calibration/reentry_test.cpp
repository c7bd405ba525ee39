#include "common/system.h"
#include "tests/calibration/pages.h"
#include "tests/support/inside_calls.h"
#include "tests/support/whole_walk.h"
#include "wizard/dialogs.h"

#include <array>
#include <iostream>

using namespace kestra;

namespace {
// A host that spins events inside a service, or a library that does, may do anything to the page there.
class Reentry : public PageFixture, public ::testing::WithParamInterface<PageCase> {
protected:
    Reentry() : PageFixture(GetParam()) {
        libraries.description.imageWidth = 64;
        libraries.description.imageHeight = 48;
        libraries.headboard.deviceAddress = 0xA8; // a headboard with an EEPROM: its calls count too
        currentUtcTime.replace([] { return QDateTime(QDate(2024, 5, 31), QTime(23, 59, 7), Qt::UTC); });
        chooseResultFolder.replace([this] { return QString::fromStdString(saveDir()); });
    }
    ~Reentry() override {
        chooseResultFolder.replace({});
        currentUtcTime.replace({});
    }

    struct Action {
        char const* name;
        std::function<void(Reentry&)> run;
        bool isGated = true;
    };

    // Everything that a tick, a button, a frame or a notification can set going. Each starts on a fresh page.
    static std::vector<Action> actions() {
        std::vector<Action> found;
        for (char const* slot :
             {"OnBnClicked_LensCalibSetup", "OnBnClickedAe", "OnBnClickedAwb", "OnBnClickedCalibrate",
              "OnBnClickedStartover", "OnBnClickedGraph", "OnBnClickedCU", "OnBnClickedFilesave",
              "OnBnClickedPromsave", "OnBnClickedRunall", "OnBnClickedBrowse", "OnBnClickedEnableLC",
              "OnUpdateStatus"})
            found.push_back({slot, [slot](Reentry& test) { QMetaObject::invokeMethod(test.page, slot); }});
        found.push_back({"registerChanged", [](Reentry& test) { test.page->registerChanged(0, 0); }, false});
        found.push_back({"closePage", [](Reentry& test) { test.page->closePage(); }});
        found.push_back({"RunAll", [](Reentry& test) {
                             QMetaObject::invokeMethod(test.page, "OnBnClickedRunall");
                             for (int i = 0; i < 120 && test.page && test.state().runAll; ++i) {
                                 test.play(1);
                                 test.capture();
                             }
                         }});
        return found;
    }

    // With frames and ticks enough, no step may be stuck in progress and no Run All may wait.
    void comeToRest() {
        // Whoever pressed Calibrate too early takes the pictures that it waits for.
        capture(true);
        for (int i = 0; i < 120 && page; ++i) {
            play(1);
            capture();
        }
        if (!page)
            return;
        EXPECT_EQ(state().updateDepth, 0U);
        EXPECT_EQ(state().runAll, 0U);
        for (StepState const step : {state().aeStepState, state().wbStepState, state().lscStepState,
                                     state().fileState, state().promState, state().presetState})
            EXPECT_NE(step, kInProgress) << "phase " << state().lscStepProgress;
    }

    void openFormatted() {
        libraries.headboard.device = simulator::formattedContents();
        open();
    }
    // Runs each action again and again, doing `deed` inside its first call, its second, and so on.
    template <typename Deed, typename Check>
    int insideEveryCallOfEveryAction(Deed deed, Check check, CallWalk walk = {}) {
        int cases = 0;
        for (Action const& action : actions()) {
            SCOPED_TRACE(action.name);
            openFormatted();
            action.run(*this);
            m_whole = libraries.headboard.device;
            cases += doInsideEveryCall(
                host, [&] { openFormatted(); }, [&] { action.run(*this); }, [&] { deed(action); },
                [&](CallsFrom calls) {
                    check(calls);
                    comeToRest();
                    delete page.data();
                    EXPECT_EQ(libraries.handlesAlive, 0);
                },
                walk);
        }
        return cases;
    }

    simulator::EepromContents m_whole{}; // what the device holds behind the action
};

TEST_P(Reentry, APageMayBeDeletedInsideAnyCall) {
    auto const check = [this](CallsFrom calls) {
        if (page)
            return;
        EXPECT_EQ(callsForNobody(calls), std::vector<std::string>());
        // A flush goes on to its end, and none is begun.
        simulator::EepromContents const& device = libraries.headboard.device;
        EXPECT_TRUE(device == m_whole ||
                    (!calls[0].starts_with("writeBus") && device == simulator::formattedContents()));
    };
    int const cases = insideEveryCallOfEveryAction([this](Action const&) { delete page.data(); }, check);
    std::cout << cases << " deletions inside a call\n";
    EXPECT_GE(cases, 300);
}

TEST_P(Reentry, WhatArrivesInsideACallWaitsOrIsDroppedAndThePageComesToRest) {
    std::vector<std::pair<char const*, std::vector<char const*>>> const deeds = {
        {"frames and ticks", {}},
        {"reset", {"OnBnClickedStartover"}},
        {"restart", {"OnBnClickedStartover", "OnBnClickedCalibrate"}},
        {"calibrate", {"OnBnClickedCalibrate"}},
        {"test", {"OnBnClickedCU"}},
        {"run or cancel", {"OnBnClickedRunall"}},
    };
    auto const counted = [this] {
        return std::array{state().aeStepProgress, state().wbStepProgress, state().lscStepProgress,
                          state().settleFrames};
    };
    // In a sample one of the deeds is done inside each call.
    size_t const step = stride(deeds.size());
    int cases = 0;
    for (size_t first = 1; auto const& [name, presses] : deeds) {
        SCOPED_TRACE(name);
        cases += insideEveryCallOfEveryAction(
            [&, &pressed = presses](Action const& action) {
                if (pressed.empty())
                    page->registerChanged(0, 0);
                size_t const calls = host.log.size();
                auto const before = counted();
                for (char const* slot : pressed)
                    QMetaObject::invokeMethod(page, slot);
                if (pressed.empty()) {
                    tick();
                    frames(1);
                    frames(1, 13);
                }
                if (action.isGated) {
                    EXPECT_EQ(host.log.size(), calls) << host.log.back();
                    EXPECT_EQ(counted(), before);
                }
            },
            [](CallsFrom) {}, {.first = first++ % step + 1, .step = step});
    }
    std::cout << cases << " interruptions inside a call\n";
    EXPECT_GE(cases, 1500 / int(step));
}

// Installs a table of functions without its first one, without its second, and so on.
template <typename Table, typename Install>
int withEachMissing(Table const& all, Install install) {
    constexpr size_t kFunctions = sizeof(Table) / sizeof(void*);
    for (size_t i = 0; i < kFunctions; ++i) {
        Table some = all;
        std::fill_n(reinterpret_cast<unsigned char*>(&some) + i * sizeof(void*), sizeof(void*),
                    static_cast<unsigned char>(0));
        install(some);
    }
    return kFunctions;
}

// A host or a library of another version may lack a function, which then answers that nothing is there.
TEST_P(Reentry, EveryServiceAndLibraryFunctionMayBeMissing) {
    auto const runAllActions = [this](HostServices const& table) {
        for (Action const& action : actions()) {
            open();
            page->adopt(sensor, table);
            action.run(*this);
            ASSERT_TRUE(page) << action.name;
            EXPECT_EQ(state().updateDepth, 0U) << action.name;
        }
    };
    auto const install = [&](auto installTable) {
        return [&, installTable](auto const& table) {
            installTable(table);
            runAllActions(services);
            EXPECT_TRUE(host.isBalanced());
        };
    };
    Veyra2 const camera = veyra2();
    EXPECT_EQ(withEachMissing(services, runAllActions), 33);
    EXPECT_EQ(withEachMissing(camera, install(installVeyra2)), 19);
    installVeyra2(camera);
    EXPECT_EQ(withEachMissing(Shadefit(shadefit()), install(installShadefit)), 10);
    sensor.camera = nullptr;
    runAllActions({});
}

INSTANTIATE_TEST_SUITE_P(Pages, Reentry, ::testing::ValuesIn(kPages),
                         [](auto const& test) { return std::string(test.param.name); });
} // namespace
