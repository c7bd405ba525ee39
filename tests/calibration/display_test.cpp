#include "tests/calibration/pages.h"

using namespace kestra;

namespace {

// What the shared steps' widgets show, state by state. The states are laid into the page, since no run leads
// through all of them.
class Display : public PageFixture, public ::testing::WithParamInterface<PageCase> {
protected:
    Display() : PageFixture(GetParam()) {}

    void show(PageState const& shown) {
        const_cast<PageState&>(state()) = shown;
        QMetaObject::invokeMethod(page, "OnUpdateStatus");
    }
    [[nodiscard]] std::string colour(char const* bullet) const {
        qint64 const shown = widget<QLabel>(bullet)->pixmap(Qt::ReturnByValue).cacheKey();
        std::string found;
        for (auto const& [name, pixmap] : {std::pair("gray", &wizard->pixGray),
                                           {"blue", &wizard->pixBlue},
                                           {"green", &wizard->pixGreen},
                                           {"yellow", &wizard->pixYellow},
                                           {"red", &wizard->pixRed}})
            found += shown == pixmap->cacheKey() ? name : "";
        return found;
    }
};

struct StatusRow {
    StepState PageState::*field;
    uint32_t value;
    char const* text;
    char const* colour;
};

TEST_P(Display, EveryStateHasItsTextAndBullet) {
    constexpr char const* kNoPreset = "Warning: There is no 'Lens Calibration Setup' preset in the ini file.";
    constexpr char const* kUnknown = "The status of the setup preset is unknown.";
    constexpr char const* kNoData = "Error. Are the External sensor data files installed?";
    constexpr char const* kOpen = "Not done yet.";
    struct {
        char const* label;
        char const* bullet;
        std::vector<StatusRow> rows;
    } const steps[] = {
        {"SETUP_Status",
         "Setup_Bullet",
         {{&PageState::presetState, 0, kUnknown, "gray"},
          {&PageState::presetState, 1, kOpen, "gray"},
          {&PageState::presetState, 3, kUnknown, "gray"},
          {&PageState::presetState, 4, "Done.", "green"},
          {&PageState::presetState, 5, kNoPreset, "yellow"},
          {&PageState::presetState, 6, kNoPreset, "yellow"}}},
        {"AE_Status",
         "AE_Bullet",
         {{&PageState::aeStepState, 0, kOpen, "gray"},
          {&PageState::aeStepState, 1, kOpen, "gray"},
          {&PageState::aeStepState, 3, "In progress... 7 %", "blue"},
          {&PageState::aeStepState, 4, "Done.", "green"},
          {&PageState::aeStepState, 5, "Error", "red"},
          {&PageState::aeStepState, 6, "Error", "red"}}},
        {"AWB_Status",
         "AWB_Bullet",
         {{&PageState::wbStepState, 0, kOpen, "gray"},
          {&PageState::wbStepState, 1, kOpen, "gray"},
          {&PageState::wbStepState, 3, "In progress... 8%", "blue"},
          {&PageState::wbStepState, 4, "Done.", "green"},
          {&PageState::wbStepState, 5, "Error", "red"},
          {&PageState::wbStepState, 6, "Error", "red"}}},
        {"Calibrate_Status",
         "Calibrate_Bullet",
         {{&PageState::lscStepState, 0, kOpen, "gray"},
          {&PageState::lscStepState, 1, kOpen, "gray"},
          {&PageState::lscStepState, 3, "In progress... 9%", "blue"},
          {&PageState::lscStepState, 4, "Done.", "green"},
          {&PageState::lscStepState, 5, "Error: Incompatible image size.", "red"},
          {&PageState::lscStepState, 6, kNoData, "red"}}},
        {"CU_Status",
         "CU_Bullet",
         {{&PageState::lscStepState, 1, " --   (Lower is better)", "gray"},
          {&PageState::lscStepState, 3, " --   (Lower is better)", "gray"},
          {&PageState::lscStepState, 4, " 2.50   (Lower is better.)", "yellow"},
          {&PageState::lscStepState, 6, " --   (Lower is better)", "gray"}}},
        {"File_Save_Status",
         "FileSave_Bullet",
         {{&PageState::fileState, 0, kOpen, "gray"},
          {&PageState::fileState, 1, kOpen, "gray"},
          {&PageState::fileState, 3, "In progress...", "blue"},
          {&PageState::fileState, 4, "Done: 100%1 %2_%.ini", "green"},
          {&PageState::fileState, 5, "Error: The directory does not exist.", "red"},
          {&PageState::fileState, 6, "Error saving the file.", "red"}}},
        {"Prom_Save_Status",
         "PromSave_Bullet",
         {{&PageState::promState, 0, kOpen, "gray"},
          {&PageState::promState, 1, kOpen, "gray"},
          {&PageState::promState, 3, "In progress...", "blue"},
          {&PageState::promState, 4, "Done.", "green"},
          {&PageState::promState, 5, "No EEPROM.", "red"},
          {&PageState::promState, 6, "Error accessing the EEPROM.", "red"}}},
    };
    open();
    PageState plain;
    plain.aeStepProgress = 7;
    plain.wbStepProgress = 8;
    plain.lscStepProgress = 9;
    plain.uniformityValue = 2.5;
    plain.uniformityLimit = 2;
    plain.savedPath = QStringLiteral("100%1 %2_%.ini");
    for (auto const& step : steps) {
        for (StatusRow const& row : step.rows) {
            PageState shown = plain;
            shown.*row.field = StepState(row.value);
            show(shown);
            EXPECT_EQ(text(step.label), row.text) << row.value;
            EXPECT_EQ(colour(step.bullet), row.colour) << row.text;
            bool const isCovered = row.value == kInProgress && row.text[strlen(row.text) - 1] == '%';
            EXPECT_EQ(widget<QLabel>(step.label)->isHidden(), isCovered) << row.text;
        }
    }
    plain.lscStepState = kDone;
    plain.inputWasYcbcr = 1;
    show(plain);
    EXPECT_EQ(text("Calibrate_Status"), "YCbCr calibration. Bypass mode recommended.");
    EXPECT_EQ(colour("Calibrate_Bullet"), "yellow");
}

TEST_P(Display, UniformityIsRatedAgainstTheLimit) {
    struct Row {
        double value;
        char const* text;
        char const* colour;
    };
    open();
    for (Row const& row : {Row{2.5, " 2.50   (Lower is better.)", "yellow"},
                           {3.1, " 3.10   (Lower is better.)", "red"},
                           {2.0, " 2.00   (Lower is better.)", "green"},
                           {3.0, " 3.00   (Lower is better.)", "yellow"},
                           {12.345, " 12.35   (Lower is better.)", "red"}}) {
        PageState shown;
        shown.lscStepState = kDone;
        shown.uniformityValue = row.value;
        shown.uniformityLimit = 2;
        show(shown);
        EXPECT_EQ(text("CU_Status"), row.text);
        EXPECT_EQ(colour("CU_Bullet"), row.colour) << row.text;
    }
}

// One letter a group of widgets that go together; a dash for disabled, a question mark where they disagree.
TEST_P(Display, EnablingFollowsTheStates) {
    std::pair<char, std::vector<char const*>> const groups[] = {
        {'R', {"Run_All"}},
        {'S', {"LensCalibSetup"}},
        {'A', {"AE", "AWB", "Calibrate", "ColorUniformity", "Save_Dir", "Browse"}},
        {'P', {"FallOff", "AllowFallOff", "Prom_Label", "label"}},
        {'F', {"File_Save"}},
        {'E', {"Prom_Save"}},
        {'T', {"Prom_Save_Status"}},
        {'!',
         {"Start_Over", "Show_Graph", "SETUP_Status", "AE_Status", "AWB_Status", "Calibrate_Status",
          "File_Save_Status"}},
    };
    struct Row {
        uint32_t runAll, ae, wb, preset, lsc, file, eeprom;
        char const* enabled;
    };
    Row const rows[] = {
        {0, 0, 0, 1, 1, 1, 4, "RSAP-ET!"}, // fresh
        {0, 3, 0, 1, 1, 1, 4, "---P--T!"}, // exposure by hand
        {0, 0, 3, 1, 1, 1, 4, "---P--T!"}, // colour balance by hand
        {1, 3, 0, 4, 1, 1, 4, "R-----T!"}, // Run All can be cancelled
        {1, 4, 4, 4, 3, 1, 5, "R------!"}, //
        {0, 0, 0, 5, 4, 1, 5, "R-APF--!"}, // no preset, calibrated, no EEPROM
        {0, 0, 0, 1, 4, 5, 5, "RSAP---!"}, // no directory
        {0, 0, 0, 1, 3, 1, 0, "RSAP---!"}, // calibrating by hand leaves the rest usable
    };
    open();
    for (Row const& row : rows) {
        PageState shown;
        shown.runAll = row.runAll;
        shown.aeStepState = StepState(row.ae);
        shown.wbStepState = StepState(row.wb);
        shown.presetState = StepState(row.preset);
        shown.lscStepState = StepState(row.lsc);
        shown.fileState = StepState(row.file);
        shown.eepromState = EepromState(row.eeprom);
        show(shown);
        std::string enabled;
        for (auto const& [letter, names] : groups) {
            auto const count = size_t(std::ranges::count_if(
                names, [&](char const* name) { return widget<QWidget>(name)->isEnabled(); }));
            enabled += count == names.size() ? letter : count == 0 ? '-' : '?';
        }
        EXPECT_EQ(enabled, row.enabled);
    }
}

INSTANTIATE_TEST_SUITE_P(Pages, Display, ::testing::ValuesIn(kPages),
                         [](auto const& test) { return std::string(test.param.name); });

} // namespace
