#include "tests/calibration/page_fixture.h"

#include "common/version.h"
#include "wizard/dialogs.h"

#include <QGroupBox>
#include <QKeyEvent>
#include <QMetaMethod>
#include <QTranslator>
#include <stdexcept>

using namespace kestra;

namespace {
class PageContract : public EachPage {
protected:
    // Calls for integer settings of a sensor; behind those of both pages come the page's own.
    [[nodiscard]] Calls ofSettings(std::string const& call, std::vector<std::pair<std::string, int>> settings,
                                   std::string const& sensorName = "S1") const {
        if (GetParam().takesThreePictures())
            settings.insert(settings.end(),
                            {{"Left Temp", 2800}, {"Middle Temp", 4000}, {"Right Temp", 6500}});
        Calls calls;
        for (auto const& [key, value] : settings)
            calls.push_back(call + " LensAssist " + key + " for " + sensorName + ' ' + std::to_string(value));
        return calls;
    }

    // Up to the tick that loads the solution.
    void solve() {
        startCalibration();
        frames(6);
        frames(1, 13);
        if (GetParam().takesThreePictures())
            tick();
    }

    void runTo(StepState PageState::*step, StepState value) {
        for (int i = 0; i < 200 && page && state().*step != value; ++i) {
            play(1);
            capture();
        }
        ASSERT_TRUE(page);
        EXPECT_EQ(state().*step, value);
    }
};

TEST_P(PageContract, DeclaresItsSignalAndSlotsInTheHostsOrder) {
    remake();
    std::string methods;
    for (int i = QDialog::staticMetaObject.methodCount(), last = i + 18; i <= last; ++i)
        methods += page->metaObject()->method(i).methodSignature().toStdString() + ' ';
    EXPECT_EQ(methods,
              "Status() start() OnBnClicked_LensCalibSetup() OnBnClickedAe() OnBnClickedAwb() "
              "OnBnClickedCalibrate() OnBnClickedFilesave() OnBnClickedPromsave() OnBnClickedStartover() "
              "OnBnClickedGraph() OnBnClickedCU() OnBnClickedRunall() OnBnClickedBrowse() "
              "OnCbnSelchangePromLabel(QString) OnCbnEditchangePromLabel(QString) "
              "OnEnChangeGoodcu(QString) OnEnChangeSavedir(QString) OnBnClickedEnableLC() OnUpdateStatus() ");
}

// The form of the steps is one for all pages; what a page makes of it is its own.
TEST_P(PageContract, FormsTextsAreTranslatedInThePagesContext) {
    struct ContextTeller : QTranslator {
        [[nodiscard]] bool isEmpty() const override { return false; }
        QString translate(char const* context, char const*, char const*, int) const override {
            return QString::fromLatin1(context);
        }
    } teller;
    QApplication::installTranslator(&teller);
    remake();
    QApplication::removeTranslator(&teller);
    EXPECT_EQ(page->windowTitle(), GetParam().name);
    for (char const* const button : {"Run_All", "AE", "File_Save"})
        EXPECT_EQ(text(button), GetParam().name);
}

TEST_P(PageContract, StepsFollowEachOtherToTheEyeAndTheTabKeyEachBesideItsBullets) {
    open();
    wizard->show();
    QList<QGroupBox*> const boxes = page->findChildren<QGroupBox*>();
    ASSERT_EQ(boxes.size(), GetParam().takesThreePictures() ? 6 : 5);
    int const gap = GetParam().takesThreePictures() ? 4 : 5; // the same above each step, as the eye expects
    EXPECT_GT(boxes[0]->y(), widget<QPushButton>("Run_All")->geometry().bottom());
    EXPECT_LT(boxes.back()->geometry().bottom(), page->height());
    for (int i = 0; i < boxes.size(); ++i) {
        EXPECT_TRUE(boxes[i]->title().startsWith(QStringLiteral("%1. ").arg(i + 1)));
        int const above = i == 0 ? gap : boxes[i]->y() - boxes[i - 1]->geometry().bottom();
        EXPECT_EQ(above, gap) << "at step " << i + 1;
    }

    int last = 0;
    for (QWidget* next = page->nextInFocusChain(); next != page; next = next->nextInFocusChain()) {
        auto* const box = qobject_cast<QGroupBox*>(next->parentWidget());
        if (!box || !(next->focusPolicy() & Qt::TabFocus))
            continue;
        EXPECT_GE(boxes.indexOf(box), last) << next->objectName().toStdString();
        last = boxes.indexOf(box);
    }

    std::vector<std::pair<std::string, std::string>> rows = {{"Setup", "LensCalibSetup"},
                                                             {"AE", "AE"},
                                                             {"AWB", "AWB"},
                                                             {"Calibrate", "Calibrate"},
                                                             {"CU", "ColorUniformity"},
                                                             {"FileSave", "File_Save"},
                                                             {"PromSave", "Prom_Save"}};
    for (std::string const row : GetParam().captureRows)
        rows.emplace_back(row, row + "_Image");
    auto const middle = [&](QWidget const* part) { return part->mapTo(page, part->rect().center()).y(); };
    for (auto const& [row, button] : rows) {
        auto const* const bullet = widget<QLabel>((row + "_Bullet").c_str());
        EXPECT_NEAR(middle(bullet), middle(widget<QPushButton>(button.c_str())), bullet->height() / 2) << row;
    }
}

TEST_P(PageContract, NoKeyStartsOrHidesAnything) {
    open();
    for (QPushButton const* const button : page->findChildren<QPushButton*>())
        EXPECT_FALSE(button->autoDefault() || button->isDefault()) << button->objectName().toStdString();
    wizard->show();
    for (int const key : {Qt::Key_Escape, Qt::Key_Return, Qt::Key_Enter}) {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
        QApplication::sendEvent(widget<QLineEdit>("GoodCU"), &press);
        EXPECT_TRUE(page->isVisible());
        EXPECT_EQ(state().runAll, 0U);
    }
}

TEST_P(PageContract, InitialisesFromSettingsFirstAndTellsTheVersion) {
    remake();
    EXPECT_EQ(host.log, Calls()) << "construction calls nobody";
    page->initialise();
    EXPECT_EQ(host.calls("readText").front(), "readText LensAssist Dir");
    EXPECT_EQ(host.calls("readInt"),
              ofSettings("readInt", {{"Falloff", 95}, {"Radius", 0}, {"GoodCU", 2000}}));
    EXPECT_EQ(host.log.back().substr(0, 16), "announceRegister");
    EXPECT_EQ(state().updateDepth, 0U);
    auto* const timer = page->findChild<QTimer*>();
    EXPECT_EQ(timer->interval(), 500);
    EXPECT_FALSE(timer->isActive());
    EXPECT_EQ(text(GetParam().takesThreePictures() ? "Version_APGA" : "Version_Lens"),
              versionText().toStdString());
}

TEST_P(PageContract, ShowingLoadsTheSettingsStartsTheTimerAndIsNotUndoneByHiding) {
    host.intSettings = {{"LensAssist Falloff for S1", 80}, {"LensAssist GoodCU for S1", 1234}};
    open();
    auto const* const falloff = widget<QComboBox>("FallOff");
    std::string choices = falloff->currentText().toStdString() + ": ";
    for (int i = 0; i < falloff->count(); ++i)
        choices += falloff->itemText(i).toStdString() + ' ';
    EXPECT_EQ(choices, "80%: 110% 105% 100% 95% 90% 85% 80% 75% ");
    EXPECT_EQ(text("GoodCU"), "1.23");
    EXPECT_EQ(state().uniformityLimit, 1.234) << "the rounded text that code shows is no edit";
    EXPECT_EQ(text("Save_Dir"), saveDir());
    EXPECT_EQ(state().fileState, kReady) << "nor is the path";
    auto const* const label = widget<QComboBox>("Prom_Label");
    EXPECT_EQ(label->windowIconText(), label->itemText(0));
    page->setVisible(false);
    EXPECT_EQ(state().active, 1U);
    EXPECT_TRUE(page->findChild<QTimer*>()->isActive());
    page->closePage();
    EXPECT_FALSE(page->findChild<QTimer*>());
    page->setVisible(true);
}

TEST_P(PageContract, SettingsAreStoredAsTheHostKeepsThem) {
    struct Row {
        int storedFalloff;
        char const* limitText;
        int falloff, limit;
        char const* name = "S1";
    };
    for (Row const& row :
         {Row{110, "1.2345", 110, 1234}, Row{97, "abc", 50, 0}, Row{75, "2.01", 75, 2009},
          Row{75, " +2.0abc", 75, 2000}, Row{75, "1e99", 75, INT32_MAX}, Row{75, "nan", 75, 0},
          Row{75, "-1,5", 75, -1000, "100%2 %1"}, Row{75, "1", 75, 1000, nullptr}}) {
        sensor.name = row.name;
        std::string const name = row.name ? row.name : "";
        host.intSettings["LensAssist Falloff for " + name] = row.storedFalloff;
        open();
        enter("GoodCU", row.limitText);
        page->closePage();
        Calls stored = {"writeText LensAssist Dir " + saveDir()};
        std::ranges::copy(ofSettings("writeInt", {{"Falloff", row.falloff}, {"GoodCU", row.limit}}, name),
                          std::back_inserter(stored));
        EXPECT_EQ(host.calls("write"), stored) << row.limitText;
    }
}

TEST_P(PageContract, ExposureCountsFramesAndEndsAtTheTick) {
    open();
    click("AE");
    frames(1, 13);
    page->onFrame({nullptr, ImageType::Rgb32, 0, 0, 0}); // counting touches no pixel
    EXPECT_EQ(state().aeStepProgress, 4);
    frames(23);
    tick();
    EXPECT_EQ(widget<QProgressBar>("AE_progressBar")->value(), 96);
    frames(9);
    EXPECT_EQ(state().aeStepProgress, 100);
    tick();
    EXPECT_EQ(host.log.back(), "setState Auto Exposure 0");
    EXPECT_EQ(text("AE_Status"), "Done.");
}

// What a step measures, it measures on the pipeline that it asked for.
TEST_P(PageContract, EachStepSetsThePipelineThatItMeasuresOn) {
    using Row = std::tuple<char const*, int, size_t, int>;
    for (auto const& [button, exposure, gains, gamma] :
         {Row{"AE", 1, 0, 20}, Row{"AWB", 0, 2, 20}, Row{"Calibrate", 0, 0, 20},
          Row{"ColorUniformity", 0, 0, 9}}) {
        open();
        click(button);
        EXPECT_EQ(host.states["Auto Exposure"], exposure) << button;
        EXPECT_EQ(host.calls("setState Relative").size(), gains) << button;
        EXPECT_EQ(host.states["Gamma"], gamma) << button;
    }
}

TEST_P(PageContract, ColourBalanceCorrectsEveryFifthFrame) {
    open();
    click("AWB");
    host.states["Relative Red Gain"] = host.states["Relative Blue Gain"] = 1000;
    constexpr uint32_t kTinted = 0x786450; // red 120, green 100, blue 80
    host.log.clear();
    frames(5, 11, kTinted);
    EXPECT_EQ(host.log, Calls()) << "still settling";
    frames(1, 11, kTinted);
    EXPECT_EQ(host.log, (Calls{"readState Relative Red Gain", "readState Relative Blue Gain",
                               "setState Relative Red Gain 875", "setState Relative Blue Gain 1187"}));
    frames(4, 11, kTinted);
    EXPECT_EQ(host.log.size(), 4U);
    frames(1, 11, kTinted);
    EXPECT_EQ(host.log.size(), 8U);
    EXPECT_EQ(state().wbStepProgress, 40);
    for (uint32_t const lacksAChannel : {0x006450U, 0x780050U, 0x786400U})
        frames(20, 11, lacksAChannel); // gives no correction
    EXPECT_EQ(state().wbStepProgress, 40);
    frames(15, 11, kTinted);
    tick();
    EXPECT_EQ(state().wbStepState, kDone);
}

TEST_P(PageContract, StartOverWhileExposureRunsLeavesTheHostAloneButCancellingRunAllDoesNot) {
    open();
    click("AE");
    frames(2, 11);
    EXPECT_EQ(state().aeStepProgress, 8);
    host.log.clear();
    click("Start_Over");
    EXPECT_EQ(state().aeStepState, kNotEvaluated);
    EXPECT_EQ(state().aeStepProgress, 0);
    EXPECT_EQ(state().wbStepProgress, 0);
    EXPECT_EQ(host.calls("setState"), Calls());

    auto const cancelIn = [&](StepState PageState::*step) {
        click("Run_All");
        EXPECT_EQ(text("Run_All"), "Cancel Run All");
        runTo(step, kInProgress);
        host.log.clear();
        click("Run_All");
        EXPECT_EQ(text("Run_All"), "Run All Steps");
        EXPECT_EQ(state().*step, kReady);
        return changes();
    };
    EXPECT_EQ(cancelIn(&PageState::aeStepState), Calls{"setState Auto Exposure 0"});
    EXPECT_EQ(cancelIn(&PageState::wbStepState), Calls());
}

TEST_P(PageContract, SetupAppliesThePresetBetweenStoringAndLoading) {
    open();
    click("LensCalibSetup");
    EXPECT_EQ(host.calls("applyPreset"), Calls{"applyPreset 0 Lens Calibration Setup"});
    EXPECT_EQ(host.log.front().substr(0, 9), "writeText");
    EXPECT_EQ(host.log.back(), ofSettings("readInt", {{"GoodCU", 2000}}).back());
    EXPECT_EQ(text("SETUP_Status"), "Done.");

    writeIni("");
    click("LensCalibSetup");
    EXPECT_EQ(state().presetState, kFailed) << "the preset has gone meanwhile";
}

TEST_P(PageContract, LensCorrectionButtonFollowsTheSensorAndNotTheClick) {
    open();
    auto* const button = widget<QPushButton>("Enable_LC");
    button->click();
    page->registerChanged(7, 1); // another register's
    EXPECT_EQ(text("Enable_LC"), "Enable LC") << "the text follows the host's notification";
    page->registerChanged(0, 1);
    EXPECT_EQ(text("Enable_LC"), "Disable LC");
    EXPECT_TRUE(button->isChecked());
    button->click();
    page->registerChanged(0, 1);
    libraries.bitfields.clear();
    page->registerChanged(0, 0);
    EXPECT_FALSE(button->isChecked());
    Calls const written = host.calls("writeRegister");
    ASSERT_EQ(written.size(), 2U) << "an update from code writes nothing";
    EXPECT_EQ(std::string({written[0].back(), written[1].back()}), "10");
}

TEST_P(PageContract, BrowseKeepsWhatTheChooserAnswersAndBracketsIt) {
    open();
    chooseResultFolder.replace([] { return QString(); });
    click("Browse");
    EXPECT_EQ(host.calls("modalDialog"), (Calls{"modalDialog 1", "modalDialog 0"}));
    EXPECT_EQ(text("Save_Dir"), "");
    EXPECT_EQ(text("File_Save_Status"), "Error: The directory does not exist.");
    EXPECT_EQ(host.textSettings["LensAssist Dir"], "");

    chooseResultFolder.replace([this] { return QString::fromStdString(saveDir()); });
    click("Browse");
    EXPECT_EQ(state().fileState, kReady);

    chooseResultFolder.replace([this] {
        tick(3);
        delete page.data();
        return QStringLiteral("x");
    });
    click("Browse");
    EXPECT_EQ(host.log.back(), "modalDialog 0");
    chooseResultFolder.replace({});
}

TEST_P(PageContract, GraphIsToldHalfTheImageWidth) {
    open();
    click("Show_Graph");
    EXPECT_EQ(changes(), (Calls{"setupAnalysis 1 0 960 0 960", "writeInt AnalysisDlg Type 0",
                                "writeInt AnalysisDlg Show 1"}));
    libraries.hasDescription = false;
    click("Show_Graph");
    EXPECT_EQ(host.calls("setupAnalysis").back(), "setupAnalysis 1 0 0 0 0");
}

TEST_P(PageContract, ACalibrationIsSavedToItsFileOnceAndFailuresAreTold) {
    open();
    startCalibration();
    runTo(&PageState::lscStepState, kDone);
    libraries.fileAnswer = 1;
    click("File_Save");
    EXPECT_EQ(text("File_Save_Status"), "Error saving the file.");
    EXPECT_EQ(state().savedPath.toStdString(), saveDir() + "\\BOARD_PART.ini") << "as it was tried";
    libraries.fileAnswer = 0;
    click("Calibrate");
    EXPECT_EQ(state().fileState, kFailedOtherwise) << "only a saved one is to be saved again";
    runTo(&PageState::lscStepState, kDone);
    enter("Save_Dir", saveDir() + "/none");
    click("File_Save");
    EXPECT_EQ(text("File_Save_Status"), "Error: The directory does not exist.");
    enter("Save_Dir", saveDir() + "/");
    click("File_Save");
    EXPECT_EQ(libraries.path, saveDir() + "/\\BOARD_PART.ini");
    EXPECT_EQ(state().fileState, kDone);
    click("File_Save");
    EXPECT_EQ(host.calls("dumpRegFile").size(), 2U) << "an unchanged calibration is saved once";
    click("Calibrate");
    EXPECT_EQ(state().fileState, kReady);
}

// What failed is shown at the tick that would load it; then the next try starts afresh.
TEST_P(PageContract, AFailedCalculationAsksNoMoreAndShowsItsText) {
    constexpr char kNoData[] = "Error. Are the External sensor data files installed?";
    constexpr char kSize[] = "Error: Incompatible image size.";
    bool const isAdaptive = GetParam().takesThreePictures();
    struct Row {
        int input, solution, table;
        bool list;
        char const* told;                    // by the page of one picture; the other one knows one text
        size_t asked = 1, adaptiveAsked = 1; // calls of the solver
    };
    for (Row const& row : {Row{0, 0, 0, true, kNoData}, Row{1, -2, 0, true, kSize, 2, 2},
                           Row{1, 1, 0, true, kNoData, 2, 2}, Row{1, 0, -2, true, kSize, 3, 4},
                           Row{1, 0, 9, true, kNoData, 3, 4}, Row{1, 0, 0, false, kNoData, 3, 8}}) {
        libraries.inputAnswer = row.input;
        libraries.solutionAnswer = row.solution;
        libraries.apgaAnswer = row.table;
        libraries.hasList = row.list && !isAdaptive; // of three pictures a failure has no registers
        open();
        solve();
        EXPECT_EQ(state().lscStepState == kInProgress, isAdaptive || !row.list);
        tick();
        EXPECT_EQ(host.calls("setInput").size() + host.calls("find").size(),
                  isAdaptive ? row.adaptiveAsked : row.asked);
        EXPECT_EQ(text("Calibrate_Status"), isAdaptive ? kNoData : row.told);
        EXPECT_EQ(host.calls("writeListEntry"), Calls());
        click("Calibrate");
        EXPECT_EQ(state().lscStepState, kInProgress);
    }
}

TEST_P(PageContract, LoadingShowsItsStatusInsideTheGroupAndHandlesOddLists) {
    bool const isAdaptive = GetParam().takesThreePictures();
    using Row = std::pair<int32_t, sf_RegEntry const*>;
    for (auto const& [count, entries] :
         {Row{0, libraries.entries.data()}, Row{-5, libraries.entries.data()}, Row{0, nullptr},
          Row{2, nullptr}, Row{1, libraries.entries.data()}}) {
        open();
        libraries.list = {count, entries};
        solve();
        std::string shown;
        host.onCall = [&](std::string const& call) {
            if (call == "end")
                shown = text("Calibrate_Status");
        };
        tick();
        host.onCall = nullptr;
        bool const isLoaded = isAdaptive ? count == 1 : count != 2; // the page of one picture loads none, too
        EXPECT_EQ(state().lscStepState, isLoaded ? kInProgress : kFailedOtherwise) << count;
        EXPECT_EQ(shown, isLoaded ? "In progress... 50%" : "");
        Calls expected;
        if (isAdaptive && isLoaded)
            expected = {"writeListEntry 2446 0 0 0 0"};
        if (count == 1)
            expected.push_back("writeListEntry 13824 0 1 0 7");
        EXPECT_EQ(host.calls("writeListEntry"), expected);
    }
}

TEST_P(PageContract, ResultsFileNameIsBuiltByteForByte) {
    using Row = std::tuple<char const*, char const*, std::string, std::string>;
    for (auto const& [part, sensorName, name, sanitised] :
         {Row{":B%1", "P/\"%2\"", ":B%1_P/\"%2\".ini", "-B%1_P-'%2'.ini"},
          Row{nullptr, nullptr, "_.ini", "_.ini"}}) {
        sensor.fileNamePart = part;
        libraries.description.name = sensorName;
        open();
        enter("Save_Dir", saveDir() + "/");
        startCalibration();
        runTo(&PageState::lscStepState, kDone);
        click("File_Save");
        bool const isSanitised = GetParam().takesThreePictures();
        EXPECT_EQ(libraries.path, saveDir() + "/\\" + (isSanitised ? sanitised : name));
        EXPECT_EQ(text("File_Save_Status"), "Done: " + (isSanitised ? "\\" + sanitised : name));
    }
}

// Inside these calls, which may take seconds, nothing is painted.
TEST_P(PageContract, ARowIsPaintedBeforeTheCallThatTakesLong) {
    struct Row {
        char const *slot, *label, *dot, *made, *told;
    };
    std::vector<Row> rows = {
        {"OnBnClickedPromsave", "Prom_Save_Status", "PromSave_Bullet", "Bus ", "In progress..."},
        {"OnBnClicked_LensCalibSetup", "SETUP_Status", "Setup_Bullet", "applyPreset",
         "The status of the setup preset is unknown."}};
    if (GetParam().takesThreePictures())
        rows.push_back({"start", "Calib_progressBar", "Calibrate_Bullet", "setInputImage", "0%"});
    libraries.headboard.deviceAddress = 0xA8;
    open();
    wizard->show();
    startCalibration();
    click("Prom_Save");
    QApplication::processEvents();
    for (Row const& row : rows) {
        PaintWatch const status(widget<QWidget>(row.label)), bullet(widget<QWidget>(row.dot));
        int calls = 0;
        host.onCall = [&](std::string const& call) {
            if (call.find(row.made) == std::string::npos || calls++ > 0)
                return;
            EXPECT_EQ(text(row.label), row.told);
            EXPECT_TRUE(status.isPainted() && bullet.isPainted()) << row.slot;
        };
        invoke(row.slot);
        host.onCall = nullptr;
        EXPECT_GT(calls, 0) << row.slot;
    }
}

// A service of the host's may throw; no step may then be left, or shown, in progress.
TEST_P(PageContract, AnExceptionInsideAStepEndsItAndIsShown) {
    for (std::string const last : {"writeListEntry 13824", "setState Color Correction 1"}) {
        SCOPED_TRACE(last);
        open();
        host.onCall = [&](std::string const& call) {
            if (call.starts_with(last))
                throw std::runtime_error("the host's");
        };
        solve();
        tick();
        host.onCall = nullptr;
        EXPECT_TRUE(host.isBalanced());
        EXPECT_EQ(state().lscStepProgress, 0);
        EXPECT_EQ(text("Calibrate_Status"), "Error. Are the External sensor data files installed?");
        solve();
        tick();
        EXPECT_EQ(state().lscStepProgress, phase::kLoaded);
    }
    invoke("OnBnClickedPromsave");
    EXPECT_EQ(state().promState, kFailed) << "there is nothing to save to";
}

TEST_P(PageContract, WhatAButtonSaysWhenItIsPressedIsDoneBehindTheStep) {
    open();
    click("Run_All");
    bool isFirst = true;
    host.onCall = [&](std::string const&) {
        if (!std::exchange(isFirst, false))
            return;
        click("Run_All");
        click("Run_All"); // it still offers to cancel
        click("Enable_LC");
        page->registerChanged(0, 0); // shows the correction as it is: off
    };
    tick();
    host.onCall = nullptr;
    EXPECT_EQ(state().runAll, 0U);
    EXPECT_TRUE(host.calls("writeRegister").back().ends_with(" 1"));
}

TEST_P(PageContract, UniformityTestRunsWithoutACalibration) {
    open();
    click("ColorUniformity");
    EXPECT_EQ(state().lscStepProgress, 80);
    page->onFrame({nullptr, ImageType::Rgb32, 64, 48, 255}); // too short a pitch: still due
    frames(1, 13);
    EXPECT_EQ(state().lscStepProgress, 80);
    page->onFrame({nullptr, ImageType::Rgb32, 64, 48, 256}); // no pixels: mid grey
    EXPECT_EQ(state().lscStepProgress, 90);
    tick();
    EXPECT_EQ(text("CU_Status"), " 0.00   (Lower is better.)");
    EXPECT_EQ(state().worstBlock, QRect(QPoint(60, 44), QPoint(63, 47)));
    click("Calibrate");
    EXPECT_TRUE(state().worstBlock.isEmpty()) << "a new calibration forgets it";
}

TEST_P(PageContract, MarkerIsPaintedOnlyWhileTheValueMissesTheLimit) {
    open();
    click("ColorUniformity");
    std::vector<uint32_t> picture(64 * 48, 0x808080);
    std::fill_n(picture.begin(), 32, 0x988080);
    page->onFrame({picture.data(), ImageType::Rgb32, 64, 48, 256});
    tick();
    double const value = state().uniformityValue;
    ASSERT_GT(value, 1.0);
    for (auto const& [limit, colour] :
         {std::pair(value, 0U), {value - 0.5, 0xDDBB55U}, {value - 1.5, 0xDD2200U}}) {
        enter("GoodCU", std::to_string(limit));
        std::vector<uint32_t> shown(64 * 48, 0);
        page->onFrame({shown.data(), ImageType::Rgb32, 64, 48, 256});
        EXPECT_EQ(*std::ranges::max_element(shown), colour);
    }
}

INSTANTIATE_TEST_SUITE_P(Pages, PageContract, ::testing::ValuesIn(kPages), nameOf);
} // namespace
