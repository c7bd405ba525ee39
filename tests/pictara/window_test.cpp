#include "simulator/files/whole_file.h"
#include "simulator/host/report/uniformity_map.h"
#include "simulator/host/session/dialog_page.h"
#include "simulator/host/session/light_ranges.h"
#include "simulator/host/session/message_log.h"
#include "simulator/host/session/session.h"
#include "simulator/host/window/bench_actions.h"
#include "simulator/host/window/call_log.h"
#include "simulator/host/window/eeprom_bytes_table.h"
#include "simulator/host/window/host_window.h"
#include "simulator/host/window/profile_chooser.h"
#include "tests/support/small_profile.h"

#include <QAbstractButton>
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDialog>
#include <QDir>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QStatusBar>
#include <QTableView>
#include <QTemporaryDir>
#include <QToolButton>
#include <QTreeWidget>
#include <algorithm>
#include <gtest/gtest.h>

namespace pictara {
namespace {
// A chain of one record of shading registers with two settings, and a text.
QByteArray smallImage() {
    QByteArray image("VYEE\x01", 5);
    QByteArray const entries = QByteArray("\x03\x00\x08\x30\x12\x02\x00\xFF\xFE\x00\x07", 11);
    QByteArray const pga = QByteArray("Bench\0\0\0\0", 9) + entries + '\xFF';
    image += QByteArray("\x08\x00", 2) + char(pga.size()) + pga;
    image += QByteArray("\x0F\x00\x05wide\0", 8);
    return image.leftJustified(8192, '\xFF');
}

// The window with the plug-in's dialog on a small sensor with that EEPROM.
struct HostWindowTest : testing::Test {
    void open() {
        options.eepromFile = folder.filePath("board.bin");
        ASSERT_TRUE(files::replace(options.eepromFile, smallImage(), &error)) << error.toStdString();
        options.profile = writeSmallProfile(folder.path(), "poly-12bit", {});
        options.outputFolder = folder.filePath("out");
        options.falloffPercent = 80;
        session = Session::open(options, &error);
        ASSERT_TRUE(session) << error.toStdString();
        window = std::make_unique<HostWindow>(*session, options);
        ASSERT_TRUE(window->openDialog(&error)) << error.toStdString();
        window->showWithDialog();
    }
    void TearDown() override {
        if (session)
            session->closePlugin();
    }
    template <typename Widget>
    [[nodiscard]] Widget* part(char const* name) const {
        return window->findChild<Widget*>(QLatin1String(name));
    }
    void deliver(int frames) {
        for (int i = 0; i < frames; ++i)
            window->deliverFrame();
    }

    QTemporaryDir folder;
    Options options;
    QString error;
    std::unique_ptr<Session> session;
    std::unique_ptr<HostWindow> window;
};

TEST_F(HostWindowTest, ThePictureFollowsThePanelWhichKeepsWhatTheCoverHides) {
    open();
    auto const middle = [&] {
        window->deliverFrame();
        return session->frames().picture().pixelColor(240, 135).green();
    };
    auto const light = [&] { return session->scene().light; };
    EXPECT_GT(middle(), 50);
    part<QAbstractButton>("cover")->click();
    EXPECT_LT(middle(), 10);
    part<QWidget>("level")->findChild<QDoubleSpinBox*>()->setValue(2);
    part<QAbstractButton>("object")->click();
    EXPECT_EQ(light().level, 0);
    part<QAbstractButton>("cover")->click();
    EXPECT_EQ(light().level, 2);
    EXPECT_TRUE(light().objectInPicture);
    part<QAbstractButton>("cover")->click();
    part<QAbstractButton>("normal")->click();
    EXPECT_EQ(light().level, 1);
    EXPECT_FALSE(light().objectInPicture || part<QAbstractButton>("object")->isChecked() ||
                 part<QAbstractButton>("cover")->isChecked());
}

// What a field rounds must not hold its slider fast, nor change the quantity of another.
TEST_F(HostWindowTest, ASliderReachesEveryPositionStepByStepAndMovesNothingElse) {
    options.lightLevel = 0.00123;
    open();
    struct {
        char const* control;
        double simulator::Light::*quantity;
        double high;
    } const rows[] = {{"temperature", &simulator::Light::colourTemperature, kColourTemperatures.high},
                      {"gradient", &simulator::Light::gradient, kGradients.high},
                      {"level", &simulator::Light::level, kLevels.high}};
    for (auto const& row : rows) {
        EXPECT_EQ(session->scene().light.level, 0.00123) << "rounded to what its field shows";
        auto* const slider = part<QWidget>(row.control)->findChild<QSlider*>();
        slider->setValue(slider->minimum());
        for (int position = slider->minimum(); position < slider->maximum(); ++position) {
            slider->triggerAction(QAbstractSlider::SliderSingleStepAdd);
            ASSERT_EQ(slider->value(), position + 1) << row.control;
        }
        EXPECT_EQ(session->scene().light.*row.quantity, row.high);
    }
}

TEST_F(HostWindowTest, TheDialogIsSetUpAndComesBackAfterItWasClosed) {
    open();
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

TEST_F(HostWindowTest, WhyAPictureWasRefusedStaysUntilTheNextTry) {
    open();
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
    open();
    window->close();
    EXPECT_FALSE(window->dialog()->isVisible());
    uint64_t const number = session->frames().frameNumber();
    QCoreApplication::processEvents();
    EXPECT_EQ(session->frames().frameNumber(), number);
}

// What a person works, without the parts of which the toolkit builds it.
bool isControl(QWidget const* widget) {
    auto const isOneOf = [](QWidget const* asked, std::initializer_list<char const*> classes) {
        return std::any_of(classes.begin(), classes.end(),
                           [&](char const* name) { return asked->inherits(name); });
    };
    return isOneOf(widget, {"QAbstractButton", "QComboBox", "QAbstractSpinBox", "QLineEdit",
                            "QAbstractSlider", "QAbstractItemView", "pictara::LiveView"}) &&
           !isOneOf(widget, {"QScrollBar", "QHeaderView"}) && !widget->objectName().startsWith("qt_") &&
           !isOneOf(widget->parentWidget(), {"QComboBox", "QAbstractSpinBox", "QLineEdit",
                                             "QAbstractItemView", "QMenuBar", "QTabBar"}) &&
           !widget->window()->inherits("QComboBoxPrivateContainer");
}

TEST_F(HostWindowTest, EveryControlTellsWhatItIsForAndCanBeReachedByKey) {
    open();
    ProfileChooser const chooser(QStringLiteral("soc-pga"));
    int controls = 0;
    for (QWidget const* root :
         {static_cast<QWidget const*>(&chooser), static_cast<QWidget const*>(window.get())})
        for (QWidget const* widget : root->findChildren<QWidget*>()) {
            if (widget->window() != root || !isControl(widget))
                continue;
            ++controls;
            SCOPED_TRACE(widget->metaObject()->className() + (' ' + widget->objectName().toStdString()));
            EXPECT_FALSE(widget->toolTip().isEmpty());
            auto const* const toolButton = qobject_cast<QToolButton const*>(widget);
            EXPECT_TRUE((widget->focusPolicy() & Qt::TabFocus) != 0 ||
                        (toolButton && toolButton->defaultAction() &&
                         !toolButton->defaultAction()->shortcut().isEmpty()));
        }
    EXPECT_GT(controls, 33) << "the walk missed most";
    EXPECT_FALSE(showParts(*window, {QStringLiteral("no such part")}));
}

TEST_F(HostWindowTest, TheEepromsRecordsAreToldWithTheirRegisters) {
    open();
    auto records = session->camera().eepromRecords();
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0].typeName, "PGA");
    EXPECT_EQ(records[0].text, "Bench");
    ASSERT_EQ(records[0].settings.size(), 2U);
    EXPECT_EQ(records[0].settings[0].name, "COARSE_INTEGRATION_TIME");
    EXPECT_EQ(records[0].settings[0].value, 0x200U);
    EXPECT_EQ(records[0].settings[0].offset, 20U);
    EXPECT_EQ(records[0].settings[1].name, "") << "no register lies there";
    EXPECT_EQ(records[1].text, "wide");
    EXPECT_EQ(records[1].offset, 5 + records[0].size);

    ASSERT_TRUE(showParts(*window, {QStringLiteral("eeprom")}));
    deliver(4);
    auto* const tree = part<QTreeWidget>("records");
    ASSERT_EQ(tree->topLevelItemCount(), 2);
    tree->setCurrentItem(tree->topLevelItem(0));
    auto const* const bytes = part<QWidget>("eeprom")->findChild<QTableView*>();
    EXPECT_EQ(size_t(bytes->selectionModel()->selectedIndexes().size()), records[0].size);

    QByteArray broken = smallImage();
    broken[29 + 1] = 0x40; // the text's length, far beyond the end
    ASSERT_TRUE(files::replace(options.eepromFile, broken, &error) &&
                session->camera().loadEeprom(options.eepromFile, &error));
    records = session->camera().eepromRecords();
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0].fault, "");
    EXPECT_NE(records[1].fault, "");
}

TEST(EepromBytesTable, MarksWhatDiffersFromTheStateThatChangesAreCountedFrom) {
    EepromBytesTable table;
    QByteArray bytes(64, '\xFF');
    EXPECT_TRUE(table.show(bytes));
    bytes[17] = 'A';
    EXPECT_TRUE(table.show(bytes));
    EXPECT_EQ(table.changedBytes(), 1);
    QModelIndex const changed = table.index(1, 1);
    EXPECT_EQ(changed.data().toString(), "41");
    EXPECT_TRUE(changed.data(Qt::BackgroundRole).isValid());
    EXPECT_FALSE(table.index(1, 2).data(Qt::BackgroundRole).isValid());
    EXPECT_EQ(table.index(1, EepromBytesTable::kBytesPerRow).data().toString(), ".A..............");
    table.beginAnew();
    EXPECT_FALSE(changed.data(Qt::BackgroundRole).isValid());
}

TEST_F(HostWindowTest, TheSensorPanelReachesTheCamera) {
    open();
    auto* const exposure = part<QSpinBox>("exposure");
    EXPECT_FALSE(exposure->isEnabled()) << "the loop would undo it";
    part<QCheckBox>("automaticExposure")->click();
    exposure->setValue(123);
    deliver(4);
    EXPECT_EQ(session->frames().exposure(), 123U);
    part<QSpinBox>("seed")->setValue(77);
    EXPECT_EQ(session->scene().seed, 77U);
    session->states().set("Auto Exposure", 1);
    deliver(4);
    EXPECT_FALSE(exposure->isEnabled()) << "the plug-in's switch went unseen";

    part<QComboBox>("fault")->setCurrentText("no-acknowledge");
    part<QAbstractButton>("fail")->click();
    EXPECT_TRUE(window->statusBar()->currentMessage().contains("no-acknowledge@1"));

    auto* const profile = part<QComboBox>("profile");
    profile->setCurrentText("ycbcr");
    emit profile->activated(profile->currentIndex());
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(window->nextProfile(), "ycbcr");
}

TEST_F(HostWindowTest, CallsAreFilteredAndSavedAndOutOfSightFollowedByNoTable) {
    open();
    deliver(3);
    auto const* const table = part<QWidget>("calls")->findChild<QTableView*>();
    ASSERT_TRUE(table->model());
    int const all = table->model()->rowCount();
    part<QLineEdit>("callText")->setText("rgbimage");
    EXPECT_EQ(table->model()->rowCount(), 3);
    EXPECT_GT(all, 9);
    QString const file = folder.filePath("calls.txt");
    ASSERT_TRUE(qobject_cast<CallLog const*>(table->model())->save(file, &error)) << error.toStdString();
    EXPECT_EQ(files::read(file, files::kMostText, &error)->count("    RgbImageData "), 3);
    ASSERT_TRUE(showParts(*window, {QStringLiteral("states")}));
    EXPECT_FALSE(table->model());
}

TEST(CallLog, DropsItsOldestLines) {
    CallLog log(nullptr, 40);
    for (int i = 0; i < 100; ++i)
        log.doing(QByteArray::number(i));
    EXPECT_LE(log.rowCount(), 40);
    EXPECT_EQ(log.at(log.rowCount() - 1).name, "99");
}

TEST(UniformityMap, ColoursEveryBlock) {
    BlockReport blocks;
    blocks.columns = 2;
    blocks.rows = 1;
    blocks.deviations = {0, 9};
    QImage const map = uniformityMap(blocks, 4);
    ASSERT_EQ(map.size(), QSize(2, 1));
    EXPECT_LT(qGray(map.pixel(0, 0)), 50);
    EXPECT_GT(qGray(map.pixel(1, 0)), 200) << "beyond the end";
    EXPECT_TRUE(uniformityMap({}, 4).isNull());
}
} // namespace
} // namespace pictara
