#include "simulator/host/report/charts.h"
#include "simulator/host/run/runs.h"
#include "simulator/host/session/dialog_page.h"
#include "simulator/host/session/message_log.h"
#include "simulator/host/session/session.h"
#include "simulator/host/window/host_window.h"
#include "simulator/host/window/picture_views.h"
#include "simulator/pictures/block_report.h"
#include "tests/support/small_profile.h"

#include <QtWidgets>
#include <gtest/gtest.h>

namespace pictara {
namespace {
// Over a picture of the colour of the scale's end, the worst block alone cannot be seen.
TEST(LiveView, ShowsTheWorstBlockInTheColourOfTheScalesEnd) {
    LiveView view;
    view.resize(300, 200);
    BlockReport blocks;
    blocks.columns = 3;
    blocks.deviations = {0, 3, 6};
    blocks.largestColourDeviation = 6;
    QColor const worst = deviationColours().back().second;
    QImage picture(300, 200, QImage::Format_RGB32);
    picture.fill(worst);
    view.setPicture(picture);
    view.setUniformity(blocks);
    QImage const shown = view.grab().toImage();
    for (int i = 0; i < 3; ++i) {
        int const difference = std::abs(shown.pixelColor(50 + 100 * i, 50).lightness() - worst.lightness());
        EXPECT_EQ(difference < 4, i == 2) << i << ' ' << difference;
    }
}

// A chain of one record of shading registers with two settings, and a text.
QByteArray smallImage() {
    QByteArray const records("\x08\x00\x15"
                             "Bench\0\0\0\0\x03\x00\x08\x30\x12\x02\x00\xFF\xFE\x00\x07\xFF"
                             "\x0F\x00\x05wide\0",
                             32);
    return ("VYEE\x01" + records).leftJustified(8192, '\xFF');
}

// The window with the plug-in's dialog on a small sensor with that EEPROM.
struct HostWindowTest : testing::Test, TestFiles {
    void SetUp() override {
        options.eepromFile = write("board.bin", smallImage());
        options.outputFolder = path("out");
        open(smallProfile("polynomial", {}));
    }
    void TearDown() override {
        if (session)
            session->closePlugin();
        window.reset();
        session.reset();
    }
    void open(QString const& profile) {
        options.profile = profile;
        session = Session::open(options, &error);
        ASSERT_TRUE(session) << error.toStdString();
        window = std::make_unique<HostWindow>(*session);
        ASSERT_TRUE(window->openDialog(&error)) << error.toStdString();
        window->showWithDialog();
    }
    template <typename Widget = QWidget>
    [[nodiscard]] Widget* part(char const* name) const {
        return window->findChild<Widget*>(QLatin1String(name));
    }
    void click(char const* button) const { part<QAbstractButton>(button)->click(); }
    void deliver(int frames) const {
        for (int i = 0; i < frames; ++i)
            window->deliverFrame();
    }
    [[nodiscard]] simulator::Light const& light() const { return session->camera().light(); }
    [[nodiscard]] DialogPage page() const { return DialogPage::find(window->dialog()); }

    Options options;
    QString error;
    std::unique_ptr<Session> session;
    std::unique_ptr<HostWindow> window;
};

TEST_F(HostWindowTest, ThePictureFollowsTheLightWhichKeepsWhatTheCoverHides) {
    auto const middle = [&] {
        deliver(1);
        return session->frames().picture().pixelColor(240, 135).green();
    };
    EXPECT_GT(middle(), 50);
    QImage const plain = part("view")->grab().toImage();
    part<QAction>("uniformity")->trigger();
    EXPECT_NE(part("view")->grab().toImage(), plain);
    (void)page().press("Show_Graph");
    deliver(1);
    EXPECT_FALSE(part<QLabel>("chart")->pixmap(Qt::ReturnByValue).isNull());
    click("cover");
    EXPECT_LT(middle(), 10);
    part<QDoubleSpinBox>("level")->setValue(2);
    click("object");
    EXPECT_EQ(light().level, 0);
    click("cover");
    EXPECT_TRUE(light().level == 2 && light().objectInPicture);
    click("cover");
    click("normal");
    EXPECT_TRUE(light().level == 1 && !light().objectInPicture);
}

TEST_F(HostWindowTest, TheDialogComesBackAfterItWasClosedAndNoFrameAfterTheWindowWas) {
    QPointer<QDialog> const dialog = window->dialog();
    dialog->close();
    deliver(1);
    EXPECT_FALSE(dialog->isVisible());
    click("dialog");
    EXPECT_TRUE(dialog->isVisible()) << "another dialog without what was done so far";
    delete dialog.data();
    deliver(1);
    click("dialog");
    ASSERT_TRUE(window->dialog() && window->dialog()->isVisible());
    window->close();
    EXPECT_FALSE(window->dialog()->isVisible());
    uint64_t const number = session->frames().frameNumber();
    QCoreApplication::processEvents();
    EXPECT_EQ(session->frames().frameNumber(), number);
}

TEST_F(HostWindowTest, BeginsWithTheLampOfThePageUnlessItIsToldAnother) {
    EXPECT_EQ(light().colourTemperature, 5000);
    for (std::optional<double> const given : {std::optional<double>(), std::optional(3500.0)}) {
        TearDown();
        options.lightKelvin = given;
        open(smallProfile("adaptive-72", {}));
        EXPECT_EQ(light().colourTemperature, given.value_or(2800));
        EXPECT_LE(window->dialog()->window()->geometry().bottom(), window->screen()->geometry().bottom());
    }
}

TEST_F(HostWindowTest, ARefusalIsToldAndMarkedUntilTheNextTryAndCertifiedWithTheSitting) {
    installMessageLog();
    session->setLight({.objectInPicture = true});
    DialogPage dialog = page();
    auto const* const reason = part<QLabel>("refusal");
    auto const isRefusedWithin = [&](int ticks) { // its blocks are magenta
        bool isMarked = false;
        for (int i = 0; i < ticks && !isMarked; ++i) {
            deliver(1);
            dialog.stopTimer();
            dialog.tick();
            deliver(1);
            QImage const shown = part("view")->grab().toImage();
            QColor const block = shown.pixelColor(shown.width() * 3 / 5, shown.height() * 2 / 5);
            isMarked = block.blue() > block.green() + 50;
            EXPECT_EQ(isMarked, reason->isVisible() && reason->text().contains("not flat"));
        }
        return isMarked;
    };
    EXPECT_FALSE(isRefusedWithin(1));
    dialog.press("Run_All");
    EXPECT_TRUE(isRefusedWithin(200));
    dialog.press("Start_Over");
    EXPECT_TRUE(isRefusedWithin(1)) << "until the next try";
    EXPECT_TRUE(sittingPage(*session, dialog).contains(">not calibrated<"));
    dialog.press("Calibrate");
    EXPECT_FALSE(isRefusedWithin(1)) << "another try";
    EXPECT_TRUE(isRefusedWithin(200)) << "for the same reason";
    session->setLight({});
    dialog.press("Calibrate");
    for (int i = 0; i < 100 && dialog.text("Calibrate_Status") != "Done."; ++i)
        EXPECT_FALSE(isRefusedWithin(1));
    EXPECT_TRUE(sittingPage(*session, dialog).contains("<dt>Repeatability</dt>"));
    qInstallMessageHandler(nullptr);
}

TEST_F(HostWindowTest, ASittingWithSeveralLampsIsJudgedUnderEachAndThePersonsComesBack) {
    TearDown();
    options.eepromFile.clear();
    // The solver's own data tells how large the picture of a sensor with tables is.
    open(writeChangedProfile(folder.path(), "adaptive-72", kNoEeprom));
    DialogPage dialog = page();
    RunDriver driver(dialog, [&] { session->frames().deliverNext(); });
    driver.onRequests = [&] {
        serveCaptureRows(dialog, [&](CaptureRow const& row) { session->bringLamp(row.kelvin); });
    };
    (void)driver.runAll();
    session->bringLamp(3000);
    EXPECT_TRUE(sittingPage(*session, dialog).contains("4900 K"));
    EXPECT_EQ(light().colourTemperature, 3000);
}

TEST_F(HostWindowTest, EveryControlTellsWhatItIsForAndCanBeReachedByKey) {
    QRegularExpression const own("^(?!qt_|Scroll|tabs$).");
    QStringList controls;
    for (QWidget const* control : part("centre")->findChildren<QWidget*>(own))
        if ((control->focusPolicy() & Qt::StrongFocus) != 0) {
            controls << control->objectName();
            EXPECT_FALSE(control->toolTip().isEmpty()) << controls.last().toStdString();
            EXPECT_NE(control->focusPolicy() & Qt::TabFocus, 0) << controls.last().toStdString();
        }
    EXPECT_GT(controls.size(), 17) << "the walk missed most";
}

TEST_F(HostWindowTest, TheEepromsRecordsAreToldAndItsChangesMarked) {
    part<QTabWidget>("tabs")->setCurrentIndex(1);
    auto* const tree = part<QTreeWidget>("records");
    auto const marked = [&] {
        QString text;
        for (QTextEdit::ExtraSelection const& mark : part<QPlainTextEdit>("bytes")->extraSelections())
            text += mark.cursor.selectedText() + ' ';
        return text;
    };
    ASSERT_EQ(tree->topLevelItemCount(), 2);
    QTreeWidgetItem* const record = tree->topLevelItem(0);
    EXPECT_EQ(record->text(1) + ": " + record->text(2), "PGA: Bench, 2 registers, 24 bytes");
    EXPECT_EQ(record->child(0)->text(0) + record->child(0)->text(1), "0014COARSE_INTEGRATION_TIME");
    tree->setCurrentItem(record->child(0));
    EXPECT_EQ(marked(), "30 12 02 00 ");

    QByteArray changed = smallImage();
    changed[30] = 0x40; // the text's length, far beyond the end
    ASSERT_TRUE(session->camera().loadEeprom(write("board.bin", changed), &error));
    deliver(4);
    EXPECT_EQ(marked(), "40 ");
    EXPECT_TRUE(part<QPlainTextEdit>("bytes")->toPlainText().contains("40 05  ....0.........@.\n"));
    EXPECT_TRUE(part<QLabel>("eepromState")->text().endsWith("Changed 1"));
    EXPECT_TRUE(tree->topLevelItem(1)->text(2).contains("over the end"));
    click("beginAnew");
    EXPECT_EQ(marked(), "");
}

TEST_F(HostWindowTest, TheSensorsControlsReachTheCamera) {
    click("automaticExposure");
    part<QSpinBox>("exposure")->setValue(123);
    deliver(4);
    EXPECT_EQ(session->frames().exposure(), 123U);
    session->states().set("Auto Exposure", 1);
    deliver(4);
    EXPECT_FALSE(part("exposure")->isEnabled()) << "the loop would undo it";
    part<QComboBox>("fault")->setCurrentText("no-acknowledge");
    click("lasts");
    click("fail");
    EXPECT_TRUE(window->statusBar()->currentMessage().contains("no-acknowledge@1+"));
}

TEST_F(HostWindowTest, CallsAreFilteredAndSavedAsTheyAreShown) {
    deliver(4);
    auto const* const calls = part<QTableView>("callTable")->model();
    EXPECT_GT(calls->rowCount(), 9);
    part<QLineEdit>("callText")->setText("rgbimage");
    EXPECT_EQ(calls->rowCount(), 4);
    EXPECT_EQ(callsText(*calls).count("    RgbImageData "), 4);
    part<QLineEdit>("callText")->setText("input");
    EXPECT_EQ(calls->rowCount(), 6) << "opening, the results' folder and the frames";
    part<QLineEdit>("callText")->clear();
    EXPECT_GE(calls->rowCount(), 8);
    part<QAction>("clear")->trigger();
    EXPECT_EQ(calls->rowCount(), 0);
}

TEST(CallLog, DropsItsOldestLinesAndGivesEachResultToItsCall) {
    CallLog log(40);
    log.began({}, 0);
    for (int i = 0; i < 100; ++i)
        log.doing({"frame"});
    log.began({}, 1);
    log.began({}, 2);
    for (char const* const result : {"inner", "outer", "of a line that was dropped"})
        log.ended(0, result);
    log.tell();
    EXPECT_LE(log.rowCount(), 40);
    auto const text = [&](int fromEnd, int column) {
        return log.index(log.rowCount() - fromEnd, column).data();
    };
    EXPECT_EQ(text(1, CallLog::kNumber), "103");
    EXPECT_EQ(text(1, CallLog::kResult), "inner");
    EXPECT_EQ(text(2, CallLog::kResult), "outer");
}

} // namespace
} // namespace pictara
