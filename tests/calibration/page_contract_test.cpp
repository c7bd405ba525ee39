#include "tests/calibration/page_fixture.h"

#include "common/version.h"
#include "wizard/dialogs.h"

#include <QGroupBox>
#include <QKeyEvent>
#include <QMetaMethod>
#include <QTranslator>
#include <set>
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
    std::set<QString> shown = {page->windowTitle()};
    for (QGroupBox const* const box : page->findChildren<QGroupBox*>())
        shown.insert(box->title());
    for (QPushButton const* const button : page->findChildren<QPushButton*>())
        shown.insert(button->text());
    EXPECT_EQ(shown, std::set<QString>{GetParam().name});
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

    auto const expectBeside = [&](std::string const& row, std::string const& button) {
        auto const middle = [&](auto* part) { return part->mapTo(page, part->rect().center()).y(); };
        auto const* const bullet = widget<QLabel>((row + "_Bullet").c_str());
        EXPECT_NEAR(middle(bullet), middle(widget<QPushButton>(button.c_str())), bullet->height() / 2) << row;
    };
    for (auto const& [row, button] : {std::pair("Setup", "LensCalibSetup"),
                                      {"AE", "AE"},
                                      {"AWB", "AWB"},
                                      {"Calibrate", "Calibrate"},
                                      {"CU", "ColorUniformity"},
                                      {"FileSave", "File_Save"},
                                      {"PromSave", "Prom_Save"}})
        expectBeside(row, button);
    for (std::string const row : GetParam().captureRows)
        expectBeside(row, row + "_Image");
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
    host.log.clear();
    click("Start_Over");
    EXPECT_EQ(state().aeStepState, kNotEvaluated);
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
    EXPECT_EQ(text("Enable_LC"), "Enable LC") << "the text follows the host's notification";
    page->registerChanged(7, 1);
    EXPECT_EQ(text("Enable_LC"), "Enable LC") << "another register's";
    page->registerChanged(0, 1);
    EXPECT_EQ(text("Enable_LC"), "Disable LC");
    EXPECT_TRUE(button->isChecked());
    Calls const written = host.calls("writeRegister");
    ASSERT_EQ(written.size(), 1U) << "an update from code writes nothing";
    EXPECT_EQ(written[0].back(), '1');
    button->click();
    EXPECT_EQ(host.calls("writeRegister").back().back(), '0');
    page->registerChanged(0, 1);
    libraries.bitfields.clear();
    page->registerChanged(0, 0);
    EXPECT_FALSE(button->isChecked());
    EXPECT_EQ(host.calls("writeRegister").size(), 2U);
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

TEST_P(PageContract, EditsTakeEffectOnlyFromTheUser) {
    open();
    enter("GoodCU", "abc");
    EXPECT_EQ(state().uniformityLimit, 0);
    host.textSettings["LensAssist Dir"] = "/elsewhere";
    page->setVisible(true);
    EXPECT_EQ(state().fileState, kReady) << "a path that code shows is no edit";
    enter("Save_Dir", "/nowhere");
    EXPECT_EQ(text("File_Save_Status"), "Not done yet.");
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
    auto const loadSolution = [this] {
        frames(6);
        frames(1, 13);
        if (GetParam().takesThreePictures())
            tick();
        ASSERT_EQ(state().lscStepProgress, phase::kSolved);
        tick();
        host.onCall = nullptr;
        EXPECT_TRUE(host.isBalanced());
    };
    for (std::string const last : {"writeListEntry 13824", "setState Color Correction 1"}) {
        SCOPED_TRACE(last);
        open();
        startCalibration();
        host.onCall = [&](std::string const& call) {
            if (call.starts_with(last))
                throw std::runtime_error("the host's");
        };
        loadSolution();
        EXPECT_EQ(state().lscStepProgress, 0);
        EXPECT_EQ(state().promState, kFailed) << "no EEPROM, as before";
        EXPECT_EQ(text("Calibrate_Status"), "Error. Are the External sensor data files installed?");
        click("Calibrate");
        loadSolution();
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
