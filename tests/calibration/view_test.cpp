#include "calibration/view.h"
#include "tests/calibration/pages.h"

#include <array>

using namespace kestra;

namespace {
Bullet bulletOf(char letter) {
    return Bullet(std::string("-bgyr").find(letter)); // the gray one is a dash
}

TEST(View, EveryStateHasItsTextAndBullet) {
    constexpr char const* kNoPreset = "Warning: There is no 'Lens Calibration Setup' preset in the ini file.";
    constexpr char const* kUnknown = "The status of the setup preset is unknown.";
    constexpr char const* kNoData = "Error. Are the External sensor data files installed?";
    constexpr char const* kOpen = "Not done yet.";
    constexpr char const* kNoValue = " --   (Lower is better)";
    constexpr StepState kStates[] = {kNotEvaluated, kReady, kInProgress, kDone, kFailed, kFailedOtherwise};
    struct {
        StepState PageState::*field;
        StepStatus PageView::*status;
        char const* bullets;
        std::array<char const*, 6> texts; // a running step whose text ends with % is covered by its bar
    } const steps[] = {
        {&PageState::presetState,
         &PageView::setup,
         "---gyy",
         {kUnknown, kOpen, kUnknown, "Done.", kNoPreset, kNoPreset}},
        {&PageState::aeStepState,
         &PageView::exposure,
         "--bgrr",
         {kOpen, kOpen, "In progress... 7 %", "Done.", "Error", "Error"}},
        {&PageState::wbStepState,
         &PageView::colourBalance,
         "--bgrr",
         {kOpen, kOpen, "In progress... 8%", "Done.", "Error", "Error"}},
        {&PageState::lscStepState,
         &PageView::calibration,
         "--bgrr",
         {kOpen, kOpen, "In progress... 9%", "Done.", "Error: Incompatible image size.", kNoData}},
        {&PageState::lscStepState,
         &PageView::uniformity,
         "---y--",
         {kNoValue, kNoValue, kNoValue, " 2.50   (Lower is better.)", kNoValue, kNoValue}},
        {&PageState::fileState,
         &PageView::file,
         "--bgrr",
         {kOpen, kOpen, "In progress...", "Done: 100%1 %2_%.ini", "Error: The directory does not exist.",
          "Error saving the file."}},
        {&PageState::promState,
         &PageView::eeprom,
         "--bgrr",
         {kOpen, kOpen, "In progress...", "Done.", "No EEPROM.", "Error accessing the EEPROM."}},
    };
    PageState plain;
    plain.aeStepProgress = 7;
    plain.wbStepProgress = 8;
    plain.lscStepProgress = 9;
    plain.uniformityValue = 2.5;
    plain.uniformityLimit = 2;
    plain.savedPath = QStringLiteral("100%1 %2_%.ini");
    for (auto const& step : steps) {
        for (size_t i = 0; i < std::size(kStates); ++i) {
            PageState state = plain;
            state.*step.field = kStates[i];
            StepStatus const shown = viewOf(state).*step.status;
            EXPECT_EQ(shown.text.toStdString(), step.texts[i]) << kStates[i];
            EXPECT_EQ(shown.bullet, bulletOf(step.bullets[i])) << step.texts[i];
            bool const isCovered = kStates[i] == kInProgress && shown.text.endsWith('%');
            EXPECT_EQ(shown.showsBar, isCovered) << step.texts[i];
            EXPECT_EQ(shown.progress.has_value(), isCovered) << step.texts[i];
        }
    }
    constexpr char const* kCaptureTexts[] = {
        kOpen,   kOpen, "Waiting for you...", "In progress...", "Done.", "Error: Incompatible image size.",
        "Error."};
    for (size_t i = 0; i < std::size(kCaptureTexts); ++i) {
        for (bool const isLit : {false, true}) {
            PageState state;
            state.captured[kFluorescent].state = CaptureState(i);
            state.captured[kFluorescent].isLit = isLit;
            StepStatus const shown = viewOf(state).captures[kFluorescent];
            EXPECT_EQ(shown.text.toStdString(), kCaptureTexts[i]);
            EXPECT_EQ(shown.bullet, bulletOf((isLit ? "--bbgrr" : "---bgrr")[i])) << kCaptureTexts[i];
        }
    }
    plain.lscStepState = kDone;
    plain.inputWasYcbcr = 1;
    plain.refusedForNumber = true;
    EXPECT_EQ(viewOf(plain).calibration.text, "YCbCr calibration. Bypass mode recommended.");
    EXPECT_EQ(viewOf(plain).calibration.bullet, Bullet::Yellow);
    EXPECT_EQ(viewOf(plain).file.text, "Error: No serial number.");
    EXPECT_EQ(viewOf(plain).runAll, "Run All Steps");
    plain.runAll = 1;
    EXPECT_EQ(viewOf(plain).runAll, "Cancel Run All");
}

TEST(View, OfAllStepsThatRunTheLastOneHasItsBar) {
    PageState state;
    state.aeStepState = state.wbStepState = state.lscStepState = kInProgress;
    PageView const all = viewOf(state);
    EXPECT_TRUE(all.calibration.showsBar && !all.colourBalance.showsBar && !all.exposure.showsBar);
    state.lscStepState = kDone;
    PageView const two = viewOf(state);
    EXPECT_TRUE(two.colourBalance.showsBar && !two.exposure.showsBar);
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

// A group of widgets that go together, by one letter.
struct Group {
    char letter;
    bool Enabling::*isEnabled; ///< null: always
    std::vector<char const*> names;
};

Group const kGroups[] = {
    {'R', &Enabling::runAll, {"Run_All"}},
    {'S', &Enabling::setup, {"LensCalibSetup"}},
    {'A', &Enabling::adjust, {"AE", "AWB", "Calibrate", "ColorUniformity", "Save_Dir", "Browse"}},
    {'P', &Enabling::parameters, {"FallOff", "AllowFallOff", "Prom_Label", "label"}},
    {'F', &Enabling::fileSave, {"File_Save"}},
    {'E', &Enabling::eepromSave, {"Prom_Save"}},
    {'T', &Enabling::eepromSaveStatus, {"Prom_Save_Status"}},
    {'C', &Enabling::capture, {}},
    {'!',
     nullptr,
     {"Start_Over", "Show_Graph", "SETUP_Status", "AE_Status", "AWB_Status", "Calibrate_Status",
      "File_Save_Status"}},
};

struct EnablingRow {
    uint32_t runAll, ae, wb, preset, lsc, file, eeprom;
    char const* enabled; ///< the groups' letters, a dash for a disabled one

    [[nodiscard]] PageState state() const {
        PageState state;
        state.runAll = runAll;
        state.aeStepState = StepState(ae);
        state.wbStepState = StepState(wb);
        state.presetState = StepState(preset);
        state.lscStepState = StepState(lsc);
        state.fileState = StepState(file);
        state.eepromState = EepromState(eeprom);
        return state;
    }
};

constexpr EnablingRow kEnablingRows[] = {
    {0, 0, 0, 1, 1, 1, 4, "RSAP-ETC!"}, // fresh
    {0, 3, 0, 1, 1, 1, 4, "---P--T-!"}, // exposure by hand
    {0, 0, 3, 1, 1, 1, 4, "---P--T-!"}, // colour balance by hand
    {1, 3, 0, 4, 1, 1, 4, "R-----T-!"}, // Run All can be cancelled
    {1, 4, 4, 4, 3, 1, 5, "R------C!"}, //
    {0, 0, 0, 5, 4, 1, 5, "R-APF--C!"}, // no preset, calibrated, no EEPROM
    {0, 0, 0, 1, 4, 5, 5, "RSAP---C!"}, // no directory
    {0, 0, 0, 1, 3, 1, 0, "RSAP---C!"}, // calibrating by hand leaves the rest usable
};

TEST(View, EnablingFollowsTheStates) {
    for (EnablingRow const& row : kEnablingRows) {
        Enabling const enabling = viewOf(row.state()).enabling;
        std::string enabled;
        for (Group const& group : kGroups)
            enabled += !group.isEnabled || enabling.*group.isEnabled ? group.letter : '-';
        EXPECT_EQ(enabled, row.enabled);
    }
}

// The states are laid into the page, since no run leads through all of them.
class ShownView : public PageFixture, public ::testing::WithParamInterface<PageCase> {
protected:
    ShownView() : PageFixture(GetParam()) {}

    void expectShown(StepStatus const& step, std::string const& label, std::string const& bullet,
                     char const* bar = nullptr) const {
        EXPECT_EQ(text(label.c_str()), step.text.toStdString());
        EXPECT_EQ(widget<QLabel>(label.c_str())->isHidden(), step.showsBar) << label;
        EXPECT_EQ(widget<QLabel>(bullet.c_str())->pixmap(Qt::ReturnByValue).cacheKey(),
                  bulletPixmap(wizard.get(), step.bullet).cacheKey())
            << bullet;
        if (!bar)
            return;
        EXPECT_EQ(widget<QProgressBar>(bar)->isHidden(), !step.showsBar) << bar;
        EXPECT_EQ(widget<QProgressBar>(bar)->value(),
                  step.progress.value_or(widget<QProgressBar>(bar)->value()));
    }
};

TEST_P(ShownView, GoesToTheWidgetsOfItsStep) {
    open();
    for (EnablingRow const& row : kEnablingRows) {
        PageState state = row.state();
        state.promState = kInProgress;
        state.aeStepProgress = 7;
        state.captured[kDaylight].state = kCaptured;
        const_cast<PageState&>(page->state()) = state;
        QMetaObject::invokeMethod(page, "OnUpdateStatus");
        PageView const view = viewOf(state);
        expectShown(view.setup, "SETUP_Status", "Setup_Bullet");
        expectShown(view.exposure, "AE_Status", "AE_Bullet", "AE_progressBar");
        expectShown(view.colourBalance, "AWB_Status", "AWB_Bullet", "AWB_progressBar");
        expectShown(view.calibration, "Calibrate_Status", "Calibrate_Bullet", "Calib_progressBar");
        expectShown(view.uniformity, "CU_Status", "CU_Bullet");
        expectShown(view.file, "File_Save_Status", "FileSave_Bullet");
        expectShown(view.eeprom, "Prom_Save_Status", "PromSave_Bullet");
        for (size_t i = 0; i < GetParam().captureRows.size(); ++i) {
            std::string const name = GetParam().captureRows[i];
            expectShown(view.captures[i], name + "_Status", name + "_Bullet");
            EXPECT_EQ(isEnabled((name + "_Image").c_str()), view.enabling.capture);
            EXPECT_TRUE(isEnabled((name + "_Temp").c_str()));
        }
        EXPECT_EQ(widget<QPushButton>("Run_All")->text(), view.runAll);
        for (Group const& group : kGroups)
            for (char const* const name : group.names)
                EXPECT_EQ(isEnabled(name), !group.isEnabled || view.enabling.*group.isEnabled) << name;
    }
}

INSTANTIATE_TEST_SUITE_P(Pages, ShownView, ::testing::ValuesIn(kPages),
                         [](auto const& test) { return std::string(test.param.name); });
} // namespace
