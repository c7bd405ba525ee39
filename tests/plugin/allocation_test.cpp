// The plug-in in the simulated host, without memory for one of its own allocations after the other. What its
// libraries, the host and Qt allocate never fails.

#include "simulator/host/run/run_all.h"
#include "simulator/host/session/dialog_page.h"
#include "simulator/host/session/session.h"
#include "tests/support/small_profile.h"

#include <QApplication>
#include <QDialog>
#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <iostream>
#include <memory>
#include <new>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

namespace {
simulator::SimulatedCamera* camera = nullptr; // its time passes by the sleeps of the plug-in
dl_find_object pluginCode{};                  // where it lies
long slept = 0;                               // milliseconds
int allocationsLeft = 0;                      // of the plug-in's, up to the one that fails; 0: none fails

bool isPluginCode(void const* caller) {
    return caller >= pluginCode.dlfo_map_start && caller < pluginCode.dlfo_map_end;
}
} // namespace

void* operator new(size_t size) {
    if (allocationsLeft > 0 && isPluginCode(__builtin_return_address(0)) && --allocationsLeft == 0)
        throw std::bad_alloc();
    if (void* const memory = std::malloc(size ? size : 1))
        return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, size_t) noexcept { std::free(memory); }

// Sleeps take no time, and the clock that they are measured by knows nothing but them: a busy machine must
// not make a device seem too slow.
extern "C" [[gnu::visibility("default")]] int nanosleep(timespec const* time, timespec*) {
    auto const milliseconds = time->tv_sec * 1000 + (time->tv_nsec + 999'999) / 1'000'000;
    slept += milliseconds;
    if (camera)
        camera->advanceTime(int(milliseconds));
    return 0;
}
extern "C" [[gnu::visibility("default")]] int clock_gettime(clockid_t clock, timespec* time) noexcept {
    auto const result = int(syscall(SYS_clock_gettime, clock, time));
    if (clock == CLOCK_MONOTONIC)
        *time = {1 + slept / 1000, slept % 1000 * 1'000'000};
    return result;
}

namespace pictara {
namespace {
constexpr char kThreeIlluminants[] = "adaptive-72";

class Allocation : public testing::TestWithParam<char const*>, protected TestFiles {
protected:
    // Calls again and again without memory for the first allocation, the second, and so on, until the call
    // needs no more.
    template <typename Call>
    void withoutMemory(Call call) {
        for (int n = 1;; ++n, ++failures) {
            allocationsLeft = n;
            EXPECT_NO_THROW(call());
            if (std::exchange(allocationsLeft, 0) > 0)
                return;
        }
    }
    void SetUp() override {
        // Never unloaded, so that a report of leaks can name the plug-in's functions.
        QLibrary kept(QStringLiteral(PLUGIN_FILE));
        kept.setLoadHints(QLibrary::PreventUnloadHint);
        ASSERT_TRUE(kept.load());
        // The sensor of the three-illuminant page has the size that the solver's own layout files tell.
        constexpr char kFormatted[] = R"(, "eeprom": {"formatted": true})";
        options.profile = GetParam() == kThreeIlluminants
                              ? writeChangedProfile(folder.path(), GetParam(), kFormatted)
                              : smallProfile(GetParam(), kFormatted);
        options.outputFolder = path("out");
        session = Session::open(options, &error);
        ASSERT_TRUE(session) << error.toStdString();
        camera = &session->camera();
        camera->useVirtualTime();
        ASSERT_EQ(_dl_find_object(reinterpret_cast<void*>(kept.resolve("OpenQtDialog")), &pluginCode), 0);
    }
    void TearDown() override {
        session.reset();
        camera = nullptr;
    }

    Options options;
    QString error;
    std::unique_ptr<Session> session;
    int failures = 0;
};

TEST_P(Allocation, ThatFailsEndsItsStepAloneAndTheNextRunIsWhole) {
    PluginLibrary plugin;
    ASSERT_TRUE(plugin.load(QStringLiteral(PLUGIN_FILE), &error)) << error.toStdString();
    HeadlessDialog opened;
    ASSERT_EQ(openHeadless(*session, opened), kExitDone);
    std::unique_ptr<QDialog> const dialog(opened.dialog); // as the library stays
    DialogPage page = opened.page;
    auto const deliver = [&] { session->frames().deliverNext(); };
    auto const serveRows = [&] {
        serveCaptureRows(page, [&](CaptureRow const& row) { session->bringLamp(row.kelvin); });
    };
    for (StepWidgets const& step : kSteps)
        withoutMemory([&] { page.press(step.button); });
    page.press("Start_Over");
    page.press("Run_All");
    for (int tick = 0; tick < 100 && page.isRunning(); ++tick) {
        for (int frame = 0; frame < 3; ++frame)
            withoutMemory(deliver);
        withoutMemory([&] { plugin.registerChanged(); });
        withoutMemory([&] { page.tick(); });
        serveRows();
    }
    withoutMemory([&] { page.press("Prom_Save"); });
    std::cout << failures << " allocations failed\n";
    EXPECT_GT(failures, 1000);
    (void)plugin.unload(); // as often as it was loaded

    page.press("Start_Over");
    RunDriver driver(page, deliver);
    driver.onRequests = serveRows;
    RunResult const result = driver.runAll();
    EXPECT_EQ(result.end, RunEnd::Finished);
    EXPECT_TRUE(isCalibrated(result.last.statusTexts) && isSaved(result.last.statusTexts, true))
        << result.last.statusTexts.join(" | ").toStdString();
}

TEST_P(Allocation, ThatFailsWhileTheDialogIsMadeLeavesNoneAndTheNextOneOpens) {
    int dialogs = 0;
    withoutMemory([&] {
        std::unique_ptr<QDialog> const dialog(session->openDialog(nullptr, &error));
        QWidgetList const widgets = QApplication::topLevelWidgets();
        auto const isRoot = [](QWidget const* widget) { return !widget->parentWidget(); };
        EXPECT_EQ(std::count_if(widgets.begin(), widgets.end(), isRoot), dialog ? 1 : 0) << failures;
        dialogs += dialog != nullptr;
    });
    std::cout << failures << " allocations failed, " << dialogs << " dialogs opened\n";
    EXPECT_GT(failures, 100);
    EXPECT_GE(dialogs, 1);
}

INSTANTIATE_TEST_SUITE_P(Profiles, Allocation, testing::Values("polynomial", kThreeIlluminants));
} // namespace
} // namespace pictara
