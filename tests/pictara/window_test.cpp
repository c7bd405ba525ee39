#include "simulator/host/dialog_page.h"
#include "simulator/host/light_panel.h"
#include "simulator/host/message_log.h"
#include "simulator/host/quantity_control.h"
#include "tests/pictara/open_bench.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDir>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>

namespace pictara {
namespace {

struct LightPanelTest : testing::Test {
    void open(simulator::Light const& initial) {
        panel = std::make_unique<LightPanel>(initial);
        QObject::connect(panel.get(), &LightPanel::lightChanged, [this](simulator::Light const& changed) {
            light = changed;
            ++changes;
        });
    }
    template <typename Widget>
    [[nodiscard]] Widget* part(char const* control) const {
        return panel->findChild<QWidget*>(QLatin1String(control))->findChild<Widget*>();
    }
    [[nodiscard]] QAbstractButton* button(char const* name) const {
        return panel->findChild<QAbstractButton*>(QLatin1String(name));
    }

    std::unique_ptr<LightPanel> panel;
    simulator::Light light;
    int changes = 0;
};

TEST_F(LightPanelTest, TouchesOnlyTheQuantityThatWasMoved) {
    open({.colourTemperature = 2856.4, .level = 0.00123, .gradient = 0.1234});
    part<QSlider>("temperature")->setValue(0);
    EXPECT_EQ(light.colourTemperature, kColourTemperatures.low);
    EXPECT_EQ(light.level, 0.00123) << "rounded to what the field shows";
    EXPECT_EQ(light.gradient, 0.1234);
    EXPECT_EQ(changes, 1);
}

TEST_F(LightPanelTest, ASliderReachesEveryPositionStepByStep) {
    open({});
    for (char const* control : {"temperature", "level", "gradient"}) {
        auto* const slider = part<QSlider>(control);
        slider->setValue(slider->minimum());
        for (int position = slider->minimum(); position < slider->maximum(); ++position) {
            slider->triggerAction(QAbstractSlider::SliderSingleStepAdd);
            ASSERT_EQ(slider->value(), position + 1) << control << " is held fast";
        }
    }
    EXPECT_EQ(light.colourTemperature, kColourTemperatures.high);
    EXPECT_EQ(light.level, kLevels.high);
    EXPECT_EQ(light.gradient, kGradients.high);
    part<QDoubleSpinBox>("level")->setValue(kLevels.low);
    EXPECT_EQ(part<QSlider>("level")->value(), 0);
}

TEST_F(LightPanelTest, UncoveringBringsTheLightBackThatWasSetMeanwhile) {
    open({.level = 0.5});
    button("cover")->click();
    EXPECT_EQ(light.level, 0);
    part<QDoubleSpinBox>("level")->setValue(2);
    button("object")->click();
    EXPECT_EQ(light.level, 0);
    button("cover")->click();
    EXPECT_EQ(light.level, 2);
    EXPECT_TRUE(light.objectInPicture);
    button("cover")->click();
    button("normal")->click();
    EXPECT_EQ(light.level, 1);
    EXPECT_FALSE(light.objectInPicture || button("object")->isChecked() || button("cover")->isChecked());
}

struct HostWindowTest : OpenBench {
    void SetUp() override {
        options.falloffPercent = 80;
        open();
    }
};

TEST_F(HostWindowTest, ThePictureFollowsThePanel) {
    auto const middle = [&] {
        window->deliverFrame();
        return session->frames().picture().pixelColor(240, 135).green();
    };
    EXPECT_GT(middle(), 50);
    part<QCheckBox>("cover")->click();
    EXPECT_LT(middle(), 10);
}

TEST_F(HostWindowTest, TheDialogIsSetUpAndComesBackAfterItWasClosed) {
    QPointer<QDialog> const dialog = window->dialog();
    DialogPage page = DialogPage::find(dialog);
    ASSERT_TRUE(page.press("LensCalibSetup"));
    EXPECT_EQ(page.text("SETUP_Status"), QStringLiteral("Done."));
    EXPECT_EQ(dialog->findChild<QComboBox*>("FallOff")->currentText(), QStringLiteral("80%"));
    EXPECT_EQ(dialog->findChild<QLineEdit*>("Save_Dir")->text(),
              QDir::toNativeSeparators(session->outputFolder()));
    dialog->close();
    window->deliverFrame();
    EXPECT_FALSE(dialog->isVisible());
    part<QPushButton>("dialog")->click();
    EXPECT_TRUE(window->dialog()->isVisible());
    EXPECT_EQ(window->dialog(), dialog) << "another dialog without what was done so far";
    EXPECT_EQ(page.text("SETUP_Status"), QStringLiteral("Done."));

    delete dialog.data();
    window->deliverFrame();
    part<QPushButton>("dialog")->click();
    ASSERT_TRUE(window->dialog());
    EXPECT_TRUE(window->dialog()->isVisible());
}

TEST_F(HostWindowTest, WhatTheEepromHoldsIsThereInTheNextSitting) {
    EXPECT_GT(session->camera().deviceBytesWritten(), 0U) << "nothing was written that could be kept";
    QString error;
    ASSERT_TRUE(session->keepEeprom(&error)) << error.toStdString();
    session->closePlugin();
    window.reset();
    session.reset();
    session = Session::open(options, &error);
    ASSERT_TRUE(session) << error.toStdString();
    ASSERT_TRUE(session->openDialog(nullptr, &error)) << error.toStdString();
    EXPECT_EQ(session->camera().deviceBytesWritten(), 0U) << "the dialog found a blank EEPROM again";

    ASSERT_TRUE(QDir(session->outputFolder()).removeRecursively());
    EXPECT_FALSE(session->keepEeprom(&error));
    EXPECT_TRUE(error.contains(session->eepromFile())) << error.toStdString();
}

TEST_F(HostWindowTest, WhyAPictureWasRefusedStaysUntilTheNextTry) {
    installMessageLog();
    session->setLight({.objectInPicture = true});
    DialogPage page = DialogPage::find(window->dialog());
    auto const* const reason = part<QLabel>("refusal");
    auto const work = [&](int ticks) {
        for (int i = 0; i < ticks; ++i) {
            window->deliverFrame();
            page.stopTimer();
            page.tick();
        }
    };
    auto const workUntilRefused = [&] {
        for (int i = 0; i < 200 && !page.text("Calibrate_Status").startsWith("Error"); ++i)
            work(1);
        work(1);
        EXPECT_TRUE(reason->isVisible() && reason->text().contains("not flat"))
            << reason->text().toStdString();
    };
    EXPECT_FALSE(reason->isVisible());
    page.press("Run_All");
    workUntilRefused();
    page.press("Run_All");
    page.press("Calibrate");
    work(1);
    EXPECT_FALSE(reason->isVisible()) << "another try";
    workUntilRefused(); // for the same reason
    HostWindow const next(*session, options);
    EXPECT_EQ(lastSolverMessage(), QString()) << "another sensor begins with this one's refusal";
    qInstallMessageHandler(nullptr);
}

TEST_F(HostWindowTest, NoFrameIsDeliveredToAClosedWindow) {
    window->close();
    EXPECT_FALSE(window->dialog()->isVisible());
    uint64_t const number = session->frames().frameNumber();
    QCoreApplication::processEvents();
    EXPECT_EQ(session->frames().frameNumber(), number);
}

} // namespace
} // namespace pictara
