#include "simulator/host/capture_rows.h"
#include "simulator/host/progress_report.h"
#include "simulator/host/run_all.h"

#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <gtest/gtest.h>

namespace pictara {
namespace {

// A page that walks through a script of status texts, one a tick, and then ends its run or stays.
class ScriptedPage : public QDialog {
    Q_OBJECT
public:
    explicit ScriptedPage(QWidget* parent) : QDialog(parent) {
        for (StepWidgets const& step : kSteps) {
            add<QLabel>(step.status)->setText(QStringLiteral("Not done yet."));
            add<QPushButton>(step.button);
        }
        m_runAll = add<QPushButton>("Run_All");
        m_runAll->setText(QStringLiteral("Run All Steps"));
        connect(m_runAll, &QPushButton::clicked, this, [this] { setRunning(!m_running); });
        auto* const timer = new QTimer(this);
        connect(timer, &QTimer::timeout, this, &ScriptedPage::start);
        timer->start(0);
    }

    void setStatus(char const* name, QString const& text) {
        findChild<QLabel*>(QLatin1String(name))->setText(text);
    }
    void addCaptureRow(QByteArray const& light, QString const& kelvin, QString const& status) {
        add<QPushButton>(light + "_Image")->setText(QString(light));
        add<QLineEdit>(light + "_Temp")->setText(kelvin);
        add<QLabel>(light + "_Status")->setText(status);
    }
    void setRunning(bool running) {
        m_running = running;
        m_runAll->setText(running ? QStringLiteral("Cancel Run All") : QStringLiteral("Run All Steps"));
    }

    std::function<void(int tick)> script = [](int) {};
    int ticks = 0;

public slots:
    void start() { script(++ticks); }

private:
    template <typename Widget>
    Widget* add(char const* name) {
        auto* const widget = new Widget(this);
        widget->setObjectName(QLatin1String(name));
        return widget;
    }

    QPushButton* m_runAll;
    bool m_running = false;
};

struct RunDriverTest : testing::Test {
    RunResult run(int framesPerTick = 3, int maxFrames = 600) {
        DialogPage const found = DialogPage::find(&dialog);
        EXPECT_TRUE(found);
        RunDriver driver(
            found, [this] { ++frames; }, framesPerTick, maxFrames);
        return driver.runAll();
    }

    QDialog dialog;
    ScriptedPage* const page = new ScriptedPage(&dialog);
    int frames = 0;
};

TEST_F(RunDriverTest, TicksByFramesAndNeverByThePagesTimer) {
    page->setStatus("AE_Status", QStringLiteral("In progress... 0 %"));
    page->script = [this](int tick) {
        EXPECT_EQ(frames, 4 * tick);
        if (tick == 10)
            page->setRunning(false);
    };
    RunResult const result = run(4);
    EXPECT_EQ(result.end, RunEnd::Finished);
    EXPECT_EQ(page->ticks, 10);
    EXPECT_EQ(result.last.ticks, 10);
    EXPECT_EQ(result.last.frames, 40);
}

TEST_F(RunDriverTest, LightIsNotChangedWhileAPictureIsTaken) {
    page->addCaptureRow("Incandescent", QStringLiteral("2800"), QStringLiteral("In progress..."));
    page->addCaptureRow("Fluorescent", QStringLiteral("4000"), QStringLiteral("Waiting for you..."));
    CaptureRows rows(DialogPage::find(&dialog));
    QStringList served;
    auto const serve = [&] {
        rows.serve([&](CaptureRow const& row) { served << QStringLiteral("%1 K").arg(row.kelvin); });
    };
    QObject::connect(page->findChild<QPushButton*>("Fluorescent_Image"), &QPushButton::clicked,
                     [&] { served << "pressed"; });
    serve();
    EXPECT_TRUE(served.isEmpty());
    page->setStatus("Incandescent_Status", QStringLiteral("Done."));
    serve();
    EXPECT_EQ(served, QStringList({"4000 K", "pressed"}));
}

TEST_F(RunDriverTest, CancelsARunThatAnErrorHolds) {
    page->script = [this](int tick) {
        if (tick > 8)
            page->setStatus("Calibrate_Status", QStringLiteral("Error: Incompatible image size."));
        else
            page->setStatus("Calibrate_Status", QStringLiteral("In progress... %1%").arg(tick));
    };
    RunResult const result = run();
    EXPECT_EQ(result.end, RunEnd::Cancelled);
    EXPECT_LT(result.last.frames, 100);
    EXPECT_TRUE(result.last.statusTexts[kCalibration].startsWith(QLatin1String("Error")));
    EXPECT_FALSE(DialogPage::find(&dialog).isRunning());
}

TEST_F(RunDriverTest, CancelsARunThatBeginsNothing) {
    RunResult const result = run();
    EXPECT_EQ(result.end, RunEnd::Cancelled);
    EXPECT_LT(result.last.frames, 100);
    EXPECT_FALSE(DialogPage::find(&dialog).isRunning());
}

TEST_F(RunDriverTest, AnnouncesASaveBeforeTheTickThatDoesIt) {
    page->setStatus("File_Save_Status", QStringLiteral("Error: The directory does not exist."));
    page->script = [this](int tick) {
        if (tick == 3)
            page->setStatus("Calibrate_Status", QStringLiteral("Done."));
        if (tick == 4)
            page->setStatus("Prom_Save_Status", QStringLiteral("Done."));
        if (tick == 6)
            page->setRunning(false);
    };
    RunDriver driver(
        DialogPage::find(&dialog), [] {}, 3, 600);
    QList<int> announcedAfter;
    driver.onSaving([&] { announcedAfter << page->ticks; });
    EXPECT_EQ(driver.runAll().end, RunEnd::Finished);
    EXPECT_EQ(announcedAfter, QList<int>{3});
}

TEST_F(RunDriverTest, AnErrorOfAnotherStepDoesNotStopAWorkingOne) {
    page->setStatus("File_Save_Status", QStringLiteral("Error: The directory does not exist."));
    page->script = [this](int tick) {
        page->setStatus("AE_Status", QStringLiteral("In progress... %1 %").arg(tick / 3));
        if (tick == 60)
            page->setRunning(false);
    };
    EXPECT_EQ(run().end, RunEnd::Finished);
}

TEST_F(RunDriverTest, GoesOnFromAStepAndCountsOn) {
    // Each step works for a few ticks after its button; the last one cannot be pressed.
    QStringList pressed;
    int ticksLeft = 0;
    for (StepWidgets const& step : kSteps)
        QObject::connect(page->findChild<QPushButton*>(step.button), &QPushButton::clicked, page, [&, step] {
            EXPECT_EQ(ticksLeft, 0) << "pressed while another step worked";
            pressed << step.button;
            ticksLeft = 4;
            page->setStatus(step.status, QStringLiteral("In progress... 0%"));
        });
    page->findChild<QPushButton*>("Prom_Save")->setEnabled(false);
    page->script = [&](int) {
        if (--ticksLeft == 0)
            for (StepWidgets const& step : kSteps)
                page->setStatus(step.status, QStringLiteral("Done."));
    };
    RunDriver driver(
        DialogPage::find(&dialog), [this] { ++frames; }, 3, 600);
    RunResult const result = driver.runSteps(kExposure, kEepromSave);
    EXPECT_EQ(result.end, RunEnd::Finished);
    EXPECT_EQ(pressed, QStringList({"AE", "AWB", "Calibrate", "File_Save"}));
    EXPECT_EQ(result.last.ticks, 16);
    EXPECT_EQ(driver.runSteps(kFileSave, kEepromSave).last.ticks, 20);
}

TEST_F(RunDriverTest, GivesUpAtTheBoundOnFrames) {
    page->setStatus("AE_Status", QStringLiteral("In progress... 0 %"));
    RunResult const result = run(3, 91);
    EXPECT_EQ(result.end, RunEnd::TimedOut);
    EXPECT_EQ(result.last.frames, 90);
    EXPECT_FALSE(DialogPage::find(&dialog).isRunning());
}

TEST(Verdict, EveryStepHasItsSay) {
    QStringList const done = {"Done.",
                              "Done.",
                              "Done.",
                              "YCbCr calibration. Bypass mode recommended.",
                              " 0.52   (Lower is better.)",
                              "Done: POLY.ini",
                              "No EEPROM."};
    EXPECT_TRUE(isCalibrated(done) && isSaved(done, false));
    EXPECT_FALSE(isSaved(done, true)) << "an EEPROM that is there was not found";
    for (int i = 0; i < done.size(); ++i) {
        QStringList texts = done;
        texts[i] = i == kUniformity ? QStringLiteral(" --   (Lower is better)") : QStringLiteral("Error");
        bool const isOfTheSaves = i == kFileSave || i == kEepromSave;
        EXPECT_EQ(isCalibrated(texts), isOfTheSaves) << i;
        EXPECT_EQ(isSaved(texts, false), !isOfTheSaves) << i;
    }
    double figure = 0;
    EXPECT_TRUE(shownUniformity(QStringLiteral("12.30   (Lower is better.)"), &figure));
    EXPECT_EQ(figure, 12.3);
    EXPECT_NEAR(shareDone({"Done.", "In progress... 50 %", "Not done yet.", "Not done yet.",
                           " --   (Lower is better)", "Not done yet.", "No EEPROM."}),
                1.5 / 7, 1e-9);
}

} // namespace
} // namespace pictara

#include "run_driver_test.moc"
