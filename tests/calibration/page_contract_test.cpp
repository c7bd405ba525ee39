#include "tests/calibration/pages.h"

#include "common/version.h"
#include "wizard/dialogs.h"

#include <QApplication>
#include <QGroupBox>
#include <QKeyEvent>
#include <QMetaMethod>
#include <QTranslator>
#include <stdexcept>

using namespace kestra;

namespace {
// What holds for every calibration page.
class PageContract : public PageFixture, public ::testing::WithParamInterface<PageCase> {
protected:
    // The page's own settings come behind those of both.
    [[nodiscard]] std::vector<std::string> withOwnSettings(std::string const& call,
                                                           std::vector<std::string> calls) const {
        for (auto const& [key, value] : GetParam().ownSettings)
            calls.push_back(call + ' ' + key + " for S1 " + std::to_string(value));
        return calls;
    }
    PageContract() : PageFixture(GetParam()) {}

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
    QMetaObject const& meta = *page->metaObject();
    constexpr int kMethods = 19;
    int const first = QDialog::staticMetaObject.methodCount();
    for (int i = first; i < std::min(meta.methodCount(), first + kMethods); ++i)
        methods += meta.method(i).methodSignature().toStdString() + ' ';
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
    EXPECT_EQ(page->windowTitle().toStdString(), GetParam().name);
    for (QGroupBox const* const box : page->findChildren<QGroupBox*>())
        EXPECT_EQ(box->title().toStdString(), GetParam().name) << box->objectName().toStdString();
    for (QPushButton const* const button : page->findChildren<QPushButton*>())
        EXPECT_EQ(button->text().toStdString(), GetParam().name) << button->objectName().toStdString();
}

TEST_P(PageContract, StepsFollowEachOtherToTheEyeAndTheTabKeyEachBesideItsBullets) {
    open();
    wizard->show();
    QList<QGroupBox*> const boxes = page->findChildren<QGroupBox*>();
    ASSERT_EQ(boxes.size(), GetParam().captureRows.empty() ? 5 : 6);
    int bottom = widget<QPushButton>("Run_All")->geometry().bottom();
    for (int i = 0; i < boxes.size(); ++i) {
        EXPECT_TRUE(boxes[i]->title().startsWith(QStringLiteral("%1. ").arg(i + 1)));
        EXPECT_GT(boxes[i]->y(), bottom);
        bottom = boxes[i]->geometry().bottom();
    }
    EXPECT_LT(bottom, page->height());

    int last = 0;
    for (QWidget* next = page->nextInFocusChain(); next != page; next = next->nextInFocusChain()) {
        auto* const box = qobject_cast<QGroupBox*>(next->parentWidget());
        if (!box || !(next->focusPolicy() & Qt::TabFocus))
            continue;
        EXPECT_GE(boxes.indexOf(box), last) << next->objectName().toStdString();
        last = boxes.indexOf(box);
    }

    std::map<std::string, std::string> rows = {{"Setup", "LensCalibSetup"},
                                               {"AE", "AE"},
                                               {"AWB", "AWB"},
                                               {"Calibrate", "Calibrate"},
                                               {"CU", "ColorUniformity"},
                                               {"FileSave", "File_Save"},
                                               {"PromSave", "Prom_Save"}};
    for (std::string const row : GetParam().captureRows)
        rows[row] = row + "_Image";
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
    EXPECT_TRUE(host.log.empty()) << "construction calls nobody";
    page->initialise();
    EXPECT_EQ(host.calls("readText").front(), "readText LensAssist Dir");
    EXPECT_EQ(host.calls("readInt"), withOwnSettings("readInt", {"readInt LensAssist Falloff for S1 95",
                                                                 "readInt LensAssist Radius for S1 0",
                                                                 "readInt LensAssist GoodCU for S1 2000"}));
    EXPECT_EQ(host.log.back().substr(0, 16), "announceRegister");
    EXPECT_EQ(state().updateDepth, 0U);
    auto* const timer = page->findChild<QTimer*>();
    EXPECT_EQ(timer->interval(), 500);
    EXPECT_FALSE(timer->isActive());
    EXPECT_EQ(text(GetParam().sensorKind == 200 ? "Version_Lens" : "Version_APGA"),
              versionText().toStdString());
}

TEST_P(PageContract, ShowingLoadsTheSettingsStartsTheTimerAndIsNotUndoneByHiding) {
    host.intSettings = {{"LensAssist Falloff for S1", 80}, {"LensAssist GoodCU for S1", 1234}};
    open();
    auto const* const falloff = widget<QComboBox>("FallOff");
    EXPECT_EQ(falloff->currentText(), QStringLiteral("80%"));
    std::string choices;
    for (int i = 0; i < falloff->count(); ++i)
        choices += falloff->itemText(i).toStdString() + ' ';
    EXPECT_EQ(choices, "110% 105% 100% 95% 90% 85% 80% 75% ");
    EXPECT_EQ(widget<QLineEdit>("GoodCU")->text(), QStringLiteral("1.23"));
    EXPECT_EQ(widget<QLineEdit>("Save_Dir")->text().toStdString(), saveDir());
    EXPECT_EQ(state().active, 1U);
    page->setVisible(false);
    EXPECT_EQ(state().active, 1U);
    EXPECT_TRUE(page->findChild<QTimer*>()->isActive());
    page->closePage();
    EXPECT_FALSE(page->findChild<QTimer*>());
    page->setVisible(true);
}

TEST_P(PageContract, SettingsAreStoredAsTheHostKeepsThem) {
    using Row = std::tuple<int, char const*, int, int>;
    for (auto const& [storedFalloff, limitText, falloff, limit] :
         {Row{110, "1.2345", 110, 1234}, Row{97, "abc", 50, 0}, Row{75, "2.01", 75, 2009},
          Row{75, " +2.0abc", 75, 2000}, Row{75, "1e99", 75, INT32_MAX}, Row{75, "nan", 75, 0},
          Row{75, "-1,5", 75, -1000}}) {
        host.intSettings["LensAssist Falloff for S1"] = storedFalloff;
        open();
        widget<QLineEdit>("GoodCU")->setText(QLatin1String(limitText));
        page->closePage();
        EXPECT_EQ(
            host.calls("write"),
            withOwnSettings("writeInt", {"writeText LensAssist Dir " + saveDir(),
                                         "writeInt LensAssist Falloff for S1 " + std::to_string(falloff),
                                         "writeInt LensAssist GoodCU for S1 " + std::to_string(limit)}))
            << limitText;
    }
}

TEST_P(PageContract, ANameWithAPerCentSignQualifiesTheKeysUnchanged) {
    sensor.name = "100%2 %1";
    open();
    page->closePage();
    EXPECT_EQ(host.calls("writeInt").front(), "writeInt LensAssist Falloff for 100%2 %1 95");
    sensor.name = nullptr;
    open();
    page->closePage();
    EXPECT_EQ(host.calls("writeInt").front(), "writeInt LensAssist Falloff for  95");
}

TEST_P(PageContract, ExposureCountsFramesAndEndsAtTheTick) {
    open();
    click("AE");
    EXPECT_FALSE(widget<QPushButton>("Run_All")->isEnabled());
    EXPECT_TRUE(widget<QLabel>("AE_Status")->isHidden());
    EXPECT_FALSE(widget<QProgressBar>("AE_progressBar")->isHidden());
    frames(1, 13);
    EXPECT_EQ(state().aeStepProgress, 0);
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
    EXPECT_FALSE(widget<QLabel>("AE_Status")->isHidden());
    EXPECT_TRUE(widget<QProgressBar>("AE_progressBar")->isHidden());
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
    frames(5, 11, kTinted);
    EXPECT_EQ(host.calls("setState Relative").size(), 2U) << "still settling";
    host.log.clear();
    frames(1, 11, kTinted);
    EXPECT_EQ(host.log, (std::vector<std::string>{
                            "readState Relative Red Gain", "readState Relative Blue Gain",
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
    EXPECT_TRUE(host.calls("setState").empty());

    click("Run_All");
    EXPECT_EQ(widget<QPushButton>("Run_All")->text(), QStringLiteral("Cancel Run All"));
    runTo(&PageState::aeStepState, kInProgress);
    host.log.clear();
    click("Run_All");
    EXPECT_EQ(host.calls("setState"), std::vector<std::string>{"setState Auto Exposure 0"});
    EXPECT_EQ(state().aeStepState, kReady);
    EXPECT_EQ(widget<QPushButton>("Run_All")->text(), QStringLiteral("Run All Steps"));

    click("Run_All");
    runTo(&PageState::wbStepState, kInProgress);
    host.log.clear();
    click("Run_All");
    EXPECT_TRUE(changes().empty()) << changes().front();
    EXPECT_EQ(state().wbStepState, kReady);
}

TEST_P(PageContract, SetupAppliesThePresetBetweenStoringAndLoading) {
    open();
    click("LensCalibSetup");
    EXPECT_EQ(host.calls("applyPreset"), std::vector<std::string>{"applyPreset 0 Lens Calibration Setup"});
    EXPECT_EQ(host.log.front().substr(0, 9), "writeText");
    EXPECT_EQ(host.log.back(), withOwnSettings("readInt", {"readInt LensAssist GoodCU for S1 2000"}).back());
    EXPECT_EQ(text("SETUP_Status"), "Done.");

    writeIni("");
    click("LensCalibSetup");
    EXPECT_EQ(state().presetState, kFailed) << "the preset has gone meanwhile";
    EXPECT_FALSE(widget<QPushButton>("LensCalibSetup")->isEnabled());
}

TEST_P(PageContract, LensCorrectionButtonFollowsTheSensorAndNotTheClick) {
    open();
    auto* const button = widget<QPushButton>("Enable_LC");
    button->click();
    auto const written = host.calls("writeRegister");
    ASSERT_EQ(written.size(), 1U);
    EXPECT_EQ(written[0].back(), '1');
    EXPECT_EQ(button->text(), QStringLiteral("Enable LC")) << "the text follows the host's notification";
    page->registerChanged(7, 1);
    EXPECT_EQ(button->text(), QStringLiteral("Enable LC"));
    page->registerChanged(0, 1);
    EXPECT_EQ(button->text(), QStringLiteral("Disable LC"));
    EXPECT_TRUE(button->isChecked());
    libraries.bitfields.clear();
    page->registerChanged(0, 0);
    EXPECT_FALSE(button->isChecked());
    EXPECT_EQ(host.calls("writeRegister").size(), 1U) << "an update from code writes nothing";
}

TEST_P(PageContract, BrowseKeepsWhatTheChooserAnswersAndBracketsIt) {
    open();
    chooseResultFolder.replace([] { return QString(); });
    click("Browse");
    EXPECT_EQ(host.calls("modalDialog"), (std::vector<std::string>{"modalDialog 1", "modalDialog 0"}));
    EXPECT_EQ(widget<QLineEdit>("Save_Dir")->text(), QString());
    EXPECT_EQ(text("File_Save_Status"), "Error: The directory does not exist.");
    EXPECT_EQ(host.textSettings["LensAssist Dir"], "");

    chooseResultFolder.replace([this] { return QString::fromStdString(saveDir()); });
    click("Browse");
    EXPECT_EQ(state().fileState, kReady);

    host.log.clear();
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
    EXPECT_EQ(changes(),
              (std::vector<std::string>{"setupAnalysis 1 0 960 0 960", "writeInt AnalysisDlg Type 0",
                                        "writeInt AnalysisDlg Show 1"}));
    libraries.hasDescription = false;
    click("Show_Graph");
    EXPECT_EQ(host.calls("setupAnalysis").back(), "setupAnalysis 1 0 0 0 0");
}

TEST_P(PageContract, EditsTakeEffectOnlyFromTheUser) {
    host.intSettings["LensAssist GoodCU for S1"] = 1234;
    open();
    EXPECT_EQ(state().uniformityLimit, 1.234) << "the rounded text that code shows is no edit";
    widget<QLineEdit>("GoodCU")->setText(QStringLiteral("abc"));
    EXPECT_EQ(state().uniformityLimit, 0);
    host.textSettings["LensAssist Dir"] = "/elsewhere";
    page->setVisible(true);
    EXPECT_EQ(state().fileState, kReady) << "a path that code shows is no edit";
    widget<QLineEdit>("Save_Dir")->setText(QStringLiteral("/nowhere"));
    EXPECT_EQ(state().fileState, kNotEvaluated);
    emit page->Status();
    EXPECT_EQ(text("File_Save_Status"), "Not done yet.");
    EXPECT_EQ(widget<QComboBox>("Prom_Label")->windowIconText(),
              widget<QComboBox>("Prom_Label")->itemText(0));
}

TEST_P(PageContract, ACalibrationIsSavedToItsFileOnceAndFailuresAreTold) {
    open();
    capture(true);
    frames(3, 13);
    click("Calibrate");
    runTo(&PageState::lscStepState, kDone);
    libraries.fileAnswer = 1;
    click("File_Save");
    EXPECT_EQ(text("File_Save_Status"), "Error saving the file.");
    EXPECT_EQ(state().savedPath.toStdString(), saveDir() + "\\BOARD_PART.ini") << "as it was tried";
    libraries.fileAnswer = 0;
    click("Calibrate");
    EXPECT_EQ(state().fileState, kFailedOtherwise) << "only a saved one is to be saved again";
    runTo(&PageState::lscStepState, kDone);
    widget<QLineEdit>("Save_Dir")->setText(QString::fromStdString(saveDir() + "/none"));
    click("File_Save");
    EXPECT_EQ(text("File_Save_Status"), "Error: The directory does not exist.");
    widget<QLineEdit>("Save_Dir")->setText(QString::fromStdString(saveDir() + "/"));
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
    if (!GetParam().captureRows.empty())
        rows.push_back({"start", "Calib_progressBar", "Calibrate_Bullet", "setInputImage", "0%"});
    libraries.headboard.deviceAddress = 0xA8;
    open();
    wizard->show();
    capture(true);
    frames(3, 13);
    click("Prom_Save");
    QApplication::processEvents();
    for (auto const& row : rows) {
        SCOPED_TRACE(row.slot);
        if (row.slot == std::string("start"))
            click("Calibrate");
        PaintWatch const status(widget<QWidget>(row.label)), bullet(widget<QWidget>(row.dot));
        int calls = 0;
        host.onCall = [&](std::string const& call) {
            if (call.find(row.made) == std::string::npos || calls++ > 0)
                return;
            EXPECT_EQ(widget<QWidget>(row.label)->property("text").toString(), QLatin1String(row.told));
            EXPECT_TRUE(status.isPainted());
            EXPECT_TRUE(bullet.isPainted());
        };
        QMetaObject::invokeMethod(page, row.slot);
        host.onCall = nullptr;
        EXPECT_GT(calls, 0);
    }
}

// A service of the host's may throw; no step may then be left, or shown, in progress.
TEST_P(PageContract, AnExceptionInsideAStepEndsItAndIsShown) {
    auto const tickOnceSolved = [this] {
        for (int i = 0; i < 10 && state().lscStepProgress != phase::kSolved; ++i) {
            frames(1);
            frames(1, 13);
            if (state().lscStepProgress != phase::kSolved)
                tick();
        }
        ASSERT_EQ(state().lscStepProgress, phase::kSolved);
        tick();
        host.onCall = nullptr;
        EXPECT_TRUE(host.isBalanced());
    };
    for (std::string const last : {"writeListEntry 13824", "setState Color Correction 1"}) {
        SCOPED_TRACE(last);
        open();
        capture(true);
        frames(3, 13);
        click("Calibrate");
        host.onCall = [&](std::string const& call) {
            if (call.starts_with(last))
                throw std::runtime_error("the host's");
        };
        tickOnceSolved();
        EXPECT_EQ(state().lscStepState, kFailedOtherwise);
        EXPECT_EQ(state().lscStepProgress, 0);
        EXPECT_EQ(state().promState, kFailed) << "no EEPROM, as before";
        EXPECT_EQ(text("Calibrate_Status"), "Error. Are the External sensor data files installed?");
        EXPECT_FALSE(widget<QLabel>("Calibrate_Status")->isHidden());
        click("Calibrate");
        tickOnceSolved();
        EXPECT_EQ(state().lscStepProgress, phase::kLoaded);
    }
    QMetaObject::invokeMethod(page, "OnBnClickedPromsave");
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
    EXPECT_EQ(state().lscStepProgress, 80);
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
    for (int i = 0; i < 32; ++i)
        picture[size_t(i)] = 0x988080;
    page->onFrame({picture.data(), ImageType::Rgb32, 64, 48, 256});
    tick();
    double const value = state().uniformityValue;
    ASSERT_GT(value, 1.0);
    auto const colour = [&](double limit) {
        widget<QLineEdit>("GoodCU")->setText(QString::number(limit));
        std::vector<uint32_t> shown(64 * 48, 0);
        page->onFrame({shown.data(), ImageType::Rgb32, 64, 48, 256});
        for (uint32_t const pixel : shown)
            if (pixel)
                return pixel;
        return 0U;
    };
    EXPECT_EQ(colour(value), 0U);
    EXPECT_EQ(colour(value - 0.5), 0xDDBB55U);
    EXPECT_EQ(colour(value - 1.5), 0xDD2200U);
}

INSTANTIATE_TEST_SUITE_P(Pages, PageContract, ::testing::ValuesIn(kPages),
                         [](auto const& test) { return std::string(test.param.name); });
} // namespace
