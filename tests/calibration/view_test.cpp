#include "calibration/step_box.h"
#include "calibration/view.h"
#include "tests/calibration/page_fixture.h"

using namespace kestra;

namespace {
Bullet bulletOf(char letter) {
    return Bullet(std::string("-bgyr").find(letter)); // the gray one is a dash
}

using State = PageState;
using View = PageView;
struct Step {
    StepState State::*field;
    StepStatus View::*status;
    std::string label, bullet;
    char const* bar; ///< of progress; null: none that the view shows
    char const* bullets;
};
Step const kSteps[] = {
    {&State::presetState, &View::setup, "SETUP", "Setup", nullptr, "---gyy"},
    {&State::aeStepState, &View::exposure, "AE", "AE", "AE_progressBar", "--bgrr"},
    {&State::wbStepState, &View::colourBalance, "AWB", "AWB", "AWB_progressBar", "--bgrr"},
    {&State::lscStepState, &View::calibration, "Calibrate", "Calibrate", "Calib_progressBar", "--bgrr"},
    {&State::lscStepState, &View::uniformity, "CU", "CU", nullptr, "---y--"},
    {&State::fileState, &View::file, "File_Save", "FileSave", nullptr, "--bgrr"},
    {&State::promState, &View::eeprom, "Prom_Save", "PromSave", nullptr, "--bgrr"},
};

constexpr StepState kStates[] = {kNotEvaluated, kReady, kInProgress, kDone, kFailed, kFailedOtherwise};
constexpr char kNoPreset[] = "Warning: There is no 'Lens Calibration Setup' preset in the ini file.";
constexpr char kUnknown[] = "The status of the setup preset is unknown.";
constexpr char kNoData[] = "Error. Are the External sensor data files installed?";
constexpr char kSize[] = "Error: Incompatible image size.";
constexpr char kFolder[] = "Error: The directory does not exist.";
constexpr char kAccess[] = "Error accessing the EEPROM.";
constexpr char kOpen[] = "Not done yet.";
constexpr char kNone[] = " --   (Lower is better)";

// A running step whose text ends with % is covered by its bar.
constexpr char const* kTexts[][6] = {
    {kUnknown, kOpen, kUnknown, "Done.", kNoPreset, kNoPreset},
    {kOpen, kOpen, "In progress... 7 %", "Done.", "Error", "Error"},
    {kOpen, kOpen, "In progress... 8%", "Done.", "Error", "Error"},
    {kOpen, kOpen, "In progress... 9%", "Done.", kSize, kNoData},
    {kNone, kNone, kNone, " 2.50   (Lower is better.)", kNone, kNone},
    {kOpen, kOpen, "In progress...", "Done: 100%1 %2_%.ini", kFolder, "Error saving the file."},
    {kOpen, kOpen, "In progress...", "Done.", "No EEPROM.", kAccess},
};

TEST(View, EveryStateHasItsTextAndBullet) {
    PageState plain;
    plain.aeStepProgress = 7;
    plain.wbStepProgress = 8;
    plain.lscStepProgress = 9;
    plain.uniformityValue = 2.5;
    plain.uniformityLimit = 2;
    plain.savedPath = QStringLiteral("100%1 %2_%.ini");
    for (size_t n = 0; n < std::size(kSteps); ++n)
        for (size_t i = 0; i < std::size(kStates); ++i) {
            PageState state = plain;
            state.*kSteps[n].field = kStates[i];
            StepStatus const shown = viewOf(state).*kSteps[n].status;
            bool const isCovered = kStates[i] == kInProgress && shown.text.endsWith('%');
            EXPECT_EQ(shown.text, kTexts[n][i]);
            EXPECT_EQ(std::tuple(shown.bullet, shown.showsBar, shown.progress.has_value()),
                      std::tuple(bulletOf(kSteps[n].bullets[i]), isCovered, isCovered))
                << kTexts[n][i];
        }
    plain.lscStepState = kDone;
    plain.inputWasYcbcr = 1;
    plain.refusedForNumber = true;
    PageView const view = viewOf(plain);
    EXPECT_EQ(view.calibration.text, "YCbCr calibration. Bypass mode recommended.");
    EXPECT_EQ(view.calibration.bullet, Bullet::Yellow);
    EXPECT_EQ(view.file.text, "Error: No serial number.");
}

TEST(View, AWaitingRowBlinks) {
    constexpr char const* kCaptures[] = {kOpen, kOpen,   "Waiting for you...", "In progress...", "Done.",
                                         kSize, "Error."};
    for (size_t i = 0; i < std::size(kCaptures); ++i)
        for (bool const isLit : {false, true}) {
            PageState state;
            state.captured[kFluorescent].state = CaptureState(i);
            state.captured[kFluorescent].isLit = isLit;
            StepStatus const shown = viewOf(state).captures[kFluorescent];
            EXPECT_EQ(shown.text, kCaptures[i]);
            EXPECT_EQ(shown.bullet, bulletOf((isLit ? "--bbgrr" : "---bgrr")[i])) << kCaptures[i];
        }
}

TEST(View, OfAllStepsThatRunTheLastOneHasItsBar) {
    PageState state;
    for (auto const last : {&State::aeStepState, &State::wbStepState, &State::lscStepState}) {
        state.*last = kInProgress;
        PageView const view = viewOf(state);
        for (Step const& step : kSteps)
            EXPECT_EQ((view.*step.status).showsBar, step.bar && step.field == last) << step.label;
    }
}

TEST(View, UniformityIsRatedAgainstTheLimit) {
    for (auto const& [value, text, bullet] : {std::tuple(3.1, " 3.10   (Lower is better.)", 'r'),
                                              {2.0, " 2.00   (Lower is better.)", 'g'},
                                              {3.0, " 3.00   (Lower is better.)", 'y'},
                                              {12.345, " 12.35   (Lower is better.)", 'r'}}) {
        PageState state;
        state.lscStepState = kDone;
        state.uniformityValue = value;
        state.uniformityLimit = 2;
        EXPECT_EQ(viewOf(state).uniformity.text, text);
        EXPECT_EQ(viewOf(state).uniformity.bullet, bulletOf(bullet)) << text;
    }
}

// Widgets that are enabled together, by one letter; C: the capture buttons.
std::pair<char, std::vector<char const*>> const kGroups[] = {
    {'R', {"Run_All"}},
    {'S', {"LensCalibSetup"}},
    {'A', {"AE", "AWB", "Calibrate", "ColorUniformity", "Save_Dir", "Browse"}},
    {'P', {"FallOff", "AllowFallOff", "Prom_Label", "label"}},
    {'F', {"File_Save"}},
    {'E', {"Prom_Save"}},
    {'T', {"Prom_Save_Status"}},
};

struct EnablingRow {
    uint32_t runAll, ae, wb, preset, lsc, file, eeprom;
    std::string enabled; ///< the groups' letters
};
EnablingRow const kEnablingRows[] = {
    {0, 0, 0, 1, 1, 1, 4, "RSAPETC"}, // fresh
    {0, 3, 0, 1, 1, 1, 4, "PT"},      // exposure by hand
    {0, 0, 3, 1, 1, 1, 4, "PT"},      // colour balance by hand
    {1, 3, 0, 4, 1, 1, 4, "RT"},      // Run All can be cancelled
    {1, 4, 4, 4, 3, 1, 5, "RC"},      //
    {0, 0, 0, 5, 4, 1, 5, "RAPFC"},   // no preset, calibrated, no EEPROM
    {0, 0, 0, 1, 4, 5, 5, "RSAPC"},   // no directory
    {0, 0, 0, 1, 3, 1, 0, "RSAPC"},   // calibrating by hand leaves the rest usable
};

// The states are laid into the page, since no run leads through all of them.
class ShownView : public EachPage {
protected:
    void expectShown(StepStatus const& step, std::string const& label, std::string const& bullet) const {
        auto const* const status = widget<QLabel>((label + "_Status").c_str());
        EXPECT_EQ(status->text(), step.text);
        EXPECT_EQ(status->isHidden(), step.showsBar) << label;
        EXPECT_EQ(widget<QLabel>((bullet + "_Bullet").c_str())->pixmap(Qt::ReturnByValue).cacheKey(),
                  bulletPixmap(wizard.get(), step.bullet).cacheKey())
            << bullet;
    }
};

TEST_P(ShownView, GoesToTheWidgetsOfItsStep) {
    open();
    for (EnablingRow const& row : kEnablingRows) {
        PageState state;
        state.runAll = row.runAll;
        state.aeStepState = StepState(row.ae);
        state.wbStepState = StepState(row.wb);
        state.presetState = StepState(row.preset);
        state.lscStepState = StepState(row.lsc);
        state.fileState = StepState(row.file);
        state.eepromState = EepromState(row.eeprom);
        state.promState = kInProgress;
        state.aeStepProgress = 7;
        state.captured[kDaylight].state = kCaptured;
        const_cast<PageState&>(page->state()) = state;
        invoke("OnUpdateStatus");
        PageView const view = viewOf(state);
        for (Step const& step : kSteps) {
            StepStatus const& shown = view.*step.status;
            expectShown(shown, step.label, step.bullet);
            if (!step.bar)
                continue;
            auto const* const bar = widget<QProgressBar>(step.bar);
            EXPECT_EQ(bar->isHidden(), !shown.showsBar) << step.bar;
            EXPECT_EQ(bar->value(), shown.progress.value_or(bar->value()));
        }
        for (size_t i = 0; i < GetParam().captureRows.size(); ++i) {
            std::string const name = GetParam().captureRows[i];
            expectShown(view.captures[i], name, name);
            EXPECT_EQ(isEnabled((name + "_Image").c_str()), row.enabled.ends_with('C'));
            EXPECT_TRUE(isEnabled((name + "_Temp").c_str()));
        }
        EXPECT_EQ(text("Run_All"), row.runAll ? "Cancel Run All" : "Run All Steps");
        for (auto const& [letter, names] : kGroups)
            for (char const* const name : names)
                EXPECT_EQ(isEnabled(name), row.enabled.find(letter) != std::string::npos)
                    << name << " of " << row.enabled;
        for (char const* const always : {"Start_Over", "Show_Graph", "SETUP_Status", "AE_Status",
                                         "AWB_Status", "Calibrate_Status", "File_Save_Status"})
            EXPECT_TRUE(isEnabled(always)) << always;
    }
}

TEST(StepBox, IsPaintedAsAnyGroupBox) {
    StepBox box;
    QGroupBox plain;
    box.setTitle(QStringLiteral("1. Setup"));
    plain.setTitle(QStringLiteral("1. Setup  "));
    EXPECT_EQ(box.grab().toImage(), plain.grab().toImage());
}

INSTANTIATE_TEST_SUITE_P(Pages, ShownView, ::testing::ValuesIn(kPages), nameOf);
} // namespace
