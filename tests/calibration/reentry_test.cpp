#include "tests/calibration/pages.h"

#include "wizard/dialogs.h"

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
        chooseResultFolder.replace([this] { return QString::fromStdString(saveDir()); });
    }
    ~Reentry() override { chooseResultFolder.replace({}); }

    struct Action {
        char const* name;
        std::function<void(Reentry&)> run;
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
        found.push_back({"registerChanged", [](Reentry& test) { test.page->registerChanged(0, 0); }});
        found.push_back({"closePage", [](Reentry& test) { test.page->closePage(); }});
        found.push_back({"RunAll", [](Reentry& test) {
                             QMetaObject::invokeMethod(test.page, "OnBnClickedRunall");
                             for (int i = 0; i < 120 && test.page; ++i) {
                                 test.frames(2);
                                 if (test.page)
                                     test.frames(1, 13);
                                 if (test.page)
                                     test.tick();
                                 test.capture();
                             }
                         }});
        return found;
    }

    // With frames and ticks enough, no step may be stuck in progress and no Run All may wait.
    void comeToRest(std::string const& where) {
        // Whoever pressed Calibrate too early takes the pictures that it waits for.
        capture(true);
        for (int i = 0; i < 120 && page; ++i) {
            frames(5);
            frames(1, 13);
            if (page)
                tick();
            capture();
        }
        if (!page)
            return;
        EXPECT_EQ(state().runAll, 0U) << where;
        for (StepState const step : {state().aeStepState, state().wbStepState, state().lscStepState,
                                     state().fileState, state().promState, state().presetState})
            EXPECT_NE(step, kInProgress) << where << " phase " << state().lscStepProgress;
    }

    // Runs the action again and again, doing `deed` inside its first call, its second, and so on.
    int doInsideEveryCall(Action const& action, std::function<void()> const& deed) {
        int cases = 0;
        for (size_t n = 1;; ++n, ++cases) {
            open();
            size_t calls = 0;
            host.onCall = [&](std::string const&) {
                if (++calls == n)
                    deed();
            };
            action.run(*this);
            host.onCall = nullptr;
            comeToRest(std::string(action.name) + " call " + std::to_string(n));
            EXPECT_TRUE(host.isBalanced()) << action.name << " call " << n;
            if (page) {
                EXPECT_EQ(state().updateDepth, 0U) << action.name << " call " << n;
            }
            delete page.data();
            EXPECT_EQ(libraries.handlesAlive, 0) << action.name << " call " << n;
            if (calls < n)
                return cases;
        }
    }
};

TEST_P(Reentry, APageMayBeDeletedInsideAnyCall) {
    int cases = 0;
    for (Action const& action : actions())
        cases += doInsideEveryCall(action, [this] { delete page.data(); });
    std::cout << cases << " deletions inside a call\n";
    EXPECT_GE(cases, 300);
}

TEST_P(Reentry, WhateverHappensInsideACallThePageComesToRest) {
    std::vector<std::pair<char const*, std::vector<char const*>>> const deeds = {
        {"frames and ticks", {}},
        {"reset", {"OnBnClickedStartover"}},
        {"restart", {"OnBnClickedStartover", "OnBnClickedCalibrate"}},
        {"calibrate", {"OnBnClickedCalibrate"}},
        {"test", {"OnBnClickedCU"}},
        {"run or cancel", {"OnBnClickedRunall"}},
    };
    int cases = 0;
    for (auto const& [name, presses] : deeds) {
        SCOPED_TRACE(name);
        for (Action const& action : actions()) {
            bool const onlyFrames = presses.empty();
            cases += doInsideEveryCall(action, [&, &pressed = presses] {
                for (char const* slot : pressed)
                    if (page)
                        QMetaObject::invokeMethod(page, slot);
                if (onlyFrames && page) {
                    page->registerChanged(0, 0);
                    tick();
                    frames(1);
                    frames(1, 13);
                }
            });
        }
    }
    std::cout << cases << " interruptions inside a call\n";
    EXPECT_GE(cases, 1500);
}

TEST_P(Reentry, ATickInsideATickReturnsAtOnce) {
    open();
    QMetaObject::invokeMethod(page, "OnBnClickedRunall");
    int nested = 0;
    host.onCall = [&](std::string const&) {
        if (nested++ > 0)
            return;
        host.log.clear();
        tick();
        EXPECT_TRUE(host.log.empty());
    };
    tick();
    EXPECT_GT(nested, 0);
}

TEST_P(Reentry, EverySlotMayBeNull) {
    HostServices const all = host.services();
    constexpr size_t kSlots = sizeof(HostServices) / sizeof(void*);
    for (size_t slot = 0; slot <= kSlots; ++slot) {
        HostServices some = all;
        auto* const table = reinterpret_cast<unsigned char*>(&some);
        // The last round has no service at all, and no camera.
        if (slot == kSlots)
            sensor.camera = nullptr;
        std::fill(table + (slot < kSlots ? slot * sizeof(void*) : 0),
                  table + (slot < kSlots ? (slot + 1) * sizeof(void*) : sizeof some),
                  static_cast<unsigned char>(0));
        for (Action const& action : actions()) {
            open();
            page->adopt(sensor, some);
            action.run(*this);
            EXPECT_TRUE(page) << action.name << " without slot " << slot;
        }
    }
}

// A library of another version may lack a function, which then answers that nothing is there.
template <typename Table, typename Install>
int withEachMissing(Table const& all, Install install, std::function<void()> const& deed) {
    constexpr size_t kFunctions = sizeof(Table) / sizeof(void*);
    for (size_t function = 0; function < kFunctions; ++function) {
        Table some = all;
        auto* const first = reinterpret_cast<unsigned char*>(&some) + function * sizeof(void*);
        std::fill(first, first + sizeof(void*), static_cast<unsigned char>(0));
        install(some);
        deed();
    }
    install(all);
    return kFunctions;
}

TEST_P(Reentry, EveryLibraryFunctionMayBeMissing) {
    auto const runAllActions = [this] {
        for (Action const& action : actions()) {
            open();
            action.run(*this);
            ASSERT_TRUE(page) << action.name;
            EXPECT_TRUE(host.isBalanced()) << action.name;
            EXPECT_EQ(state().updateDepth, 0U) << action.name;
        }
    };
    int missing = withEachMissing(Veyra2(veyra2()), installVeyra2, runAllActions);
    missing += withEachMissing(Shadefit(shadefit()), installShadefit, runAllActions);
    EXPECT_EQ(missing, 29);
}

INSTANTIATE_TEST_SUITE_P(Pages, Reentry, ::testing::ValuesIn(kPages),
                         [](auto const& test) { return std::string(test.param.name); });

} // namespace
