#include "tests/calibration/page_fixture.h"
#include "tests/support/inside_calls.h"
#include "tests/support/whole_walk.h"
#include "wizard/dialogs.h"

#include <QMetaMethod>
#include <array>
#include <cstring>
#include <iostream>

using namespace kestra;

namespace {
// A host that spins events inside a service, or a library that does, may do anything to the page there.
class Reentry : public EachPage {
protected:
    Reentry() {
        libraries.description.imageWidth = 64;
        libraries.description.imageHeight = 48;
        libraries.headboard.deviceAddress = 0xA8; // a headboard with an EEPROM: its calls count too
        chooseResultFolder.replace([this] { return QString::fromStdString(saveDir()); });
    }
    ~Reentry() override { chooseResultFolder.replace({}); }

    // Everything that a slot or a notification can set going, and with Run All ticks and frames. Each starts
    // on a fresh page.
    using Action = std::string;
    static constexpr char kNotification[] = "registerChanged", kClose[] = "closePage", kRunAll[] = "RunAll";
    static std::vector<Action> actions() {
        std::vector<Action> found = {kNotification, kClose, kRunAll};
        QMetaObject const& meta = CalibrationPage::staticMetaObject;
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
            if (meta.method(i).parameterCount() == 0)
                found.push_back(meta.method(i).name().toStdString());
        return found;
    }
    void run(Action const& action) {
        if (action == kNotification)
            return page->registerChanged(0, 0);
        if (action == kClose)
            return page->closePage();
        invoke(action == kRunAll ? "OnBnClickedRunall" : action.c_str());
        for (int i = 0; action == kRunAll && i < 120 && page && state().runAll; ++i) {
            play(1);
            capture();
        }
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
            SCOPED_TRACE(action);
            openFormatted();
            run(action);
            m_whole = libraries.headboard.device;
            cases += doInsideEveryCall(
                host, [&] { openFormatted(); }, [&] { run(action); }, [&] { deed(action); },
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
        EXPECT_EQ(callsForNobody(calls), Calls());
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
                    invoke(slot);
                if (pressed.empty()) {
                    tick();
                    frames(1);
                    frames(1, 13);
                }
                if (action != kNotification) { // the one that is not gated
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
template <typename Table>
int withEachMissing(Table const& all, auto const& install) {
    for (size_t i = 0; i < sizeof(Table); i += sizeof(void*)) {
        Table some = all;
        std::memset(reinterpret_cast<char*>(&some) + i, 0, sizeof(void*));
        install(some);
    }
    return sizeof(Table) / sizeof(void*);
}

// A host or a library of another version may lack a function, which then answers that nothing is there.
TEST_P(Reentry, EveryServiceAndLibraryFunctionMayBeMissing) {
    auto const runAllActions = [this](HostServices const& table) {
        for (Action const& action : actions()) {
            open();
            page->adopt(sensor, table);
            run(action);
            ASSERT_TRUE(page) << action;
            EXPECT_EQ(state().updateDepth, 0U) << action;
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

INSTANTIATE_TEST_SUITE_P(Pages, Reentry, ::testing::ValuesIn(kPages), nameOf);
} // namespace
