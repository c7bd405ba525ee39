#include "simulator/host/bench_actions.h"
#include "simulator/host/call_panel.h"
#include "simulator/host/display_blocks.h"
#include "simulator/host/eeprom_bytes_table.h"
#include "simulator/host/histogram_panel.h"
#include "simulator/host/live_view.h"
#include "simulator/host/named_values.h"
#include "simulator/host/profile_chooser.h"
#include "simulator/host/recording.h"
#include "simulator/host/uniformity_map.h"
#include "tests/pictara/open_bench.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QRegularExpression>
#include <QScrollBar>
#include <QSpinBox>
#include <QStatusBar>
#include <QTabWidget>
#include <QTableView>
#include <QToolButton>
#include <QTreeWidget>

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

struct BenchTest : OpenBench {
    void open(QByteArray const& eeprom) {
        options.eepromFile = folder.filePath("board.bin");
        ASSERT_TRUE(writeWhole(options.eepromFile, eeprom, &error));
        OpenBench::open();
    }
    void deliver(int frames) {
        for (int i = 0; i < frames; ++i)
            window->deliverFrame();
    }

    QString error;
};

template <typename... Kinds>
bool isOneOf(QWidget const* widget) {
    return (qobject_cast<Kinds const*>(widget) || ...);
}

// What a person works, without the parts of which the toolkit builds it.
bool isControl(QWidget const* widget) {
    return isOneOf<QAbstractButton, QComboBox, QAbstractSpinBox, QLineEdit, QAbstractSlider,
                   QAbstractItemView, LiveView>(widget) &&
           !isOneOf<QScrollBar, QHeaderView>(widget) && !widget->objectName().startsWith("qt_") &&
           !isOneOf<QComboBox, QAbstractSpinBox, QLineEdit, QAbstractItemView, QMenuBar, QTabBar>(
               widget->parentWidget()) &&
           !widget->window()->inherits("QComboBoxPrivateContainer");
}

bool hasKey(QWidget const* control) {
    auto const* const toolButton = qobject_cast<QToolButton const*>(control);
    return (control->focusPolicy() & Qt::TabFocus) != 0 ||
           (toolButton && toolButton->defaultAction() && !toolButton->defaultAction()->shortcut().isEmpty());
}

// Returns how many controls there are.
int expectToldAndReachable(QWidget const& window) {
    int controls = 0;
    for (QWidget const* widget : window.findChildren<QWidget*>()) {
        if (widget->window() != &window || !isControl(widget))
            continue;
        ++controls;
        std::string const told =
            widget->metaObject()->className() + (' ' + widget->objectName().toStdString());
        EXPECT_FALSE(widget->toolTip().isEmpty()) << told;
        EXPECT_TRUE(hasKey(widget)) << told;
    }
    return controls;
}

TEST_F(BenchTest, EveryControlTellsWhatItIsForAndCanBeReachedByKey) {
    open(smallImage());
    EXPECT_EQ(expectToldAndReachable(ProfileChooser(QStringLiteral("soc-pga"))), 3);
    EXPECT_GT(expectToldAndReachable(*window), 30) << "the walk missed most";
    auto const* const tabs = window->findChild<QTabWidget*>();
    for (int tab = 0; tab < tabs->count(); ++tab)
        EXPECT_FALSE(tabs->tabToolTip(tab).isEmpty());
}

TEST_F(BenchTest, NoLetterIsTakenByTwoControlsInSight) {
    open(smallImage());
    QRegularExpression const letter(QStringLiteral("&(\\w)"));
    for (char const* tab : {"calls", "states", "settings", "eeprom"}) {
        ASSERT_TRUE(showParts(*window, {QLatin1String(tab)}));
        QStringList texts;
        for (QAction const* menu : window->menuBar()->actions())
            texts << menu->text();
        for (QWidget const* widget : window->findChildren<QWidget*>()) {
            if (!widget->isVisible() || widget->window() != window.get())
                continue;
            if (auto const* const button = qobject_cast<QAbstractButton const*>(widget);
                button && !qobject_cast<QToolButton const*>(widget))
                texts << button->text();
            if (auto const* const label = qobject_cast<QLabel const*>(widget); label && label->buddy())
                texts << label->text();
        }
        QMap<QString, QString> taken;
        for (QString const& text : texts)
            if (auto const match = letter.match(text); match.hasMatch()) {
                QString const key = match.captured(1).toLower();
                EXPECT_FALSE(taken.contains(key))
                    << taken[key].toStdString() << " and " << text.toStdString() << " beside " << tab;
                taken[key] = text;
            }
    }
    EXPECT_FALSE(showParts(*window, {QStringLiteral("no such part")}));
}

TEST(NamedValues, AnnouncesOnlyWhatDiffers) {
    NamedValues values;
    values.show({{"b", "1"}, {"d", "2"}}, 1);
    int changes = 0, insertions = 0;
    QObject::connect(&values, &NamedValues::dataChanged,
                     [&](QModelIndex const& first, QModelIndex const& last) {
                         EXPECT_EQ(first.row(), last.row());
                         ++changes;
                     });
    QObject::connect(&values, &NamedValues::rowsInserted, [&] { ++insertions; });
    values.show({{"b", "1"}, {"d", "2"}}, 2);
    EXPECT_EQ(changes + insertions, 0);
    values.show({{"a", "0"}, {"b", "1"}, {"c", "0"}, {"d", "3"}}, 3);
    EXPECT_EQ(insertions, 2);
    EXPECT_EQ(changes, 1);
    auto const text = [&](int row, int column) { return values.data(values.index(row, column)).toString(); };
    EXPECT_EQ(text(0, NamedValues::kName) + text(1, NamedValues::kName) + text(2, NamedValues::kName), "abc");
    EXPECT_EQ(text(1, NamedValues::kChangedAt), "") << "a value that was there from the start";
    EXPECT_EQ(text(3, NamedValues::kValue) + '@' + text(3, NamedValues::kChangedAt), "3@3");
}

TEST_F(BenchTest, TheEepromsRecordsAreToldWithTheirRegisters) {
    open(smallImage());
    auto const records = session->camera().eepromRecords();
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
}

TEST_F(BenchTest, ChangesBeforeTheFirstLookAreMarked) {
    open(QByteArray(8192, '\xFF')); // which the dialog formats
    session->states().set("Gamma", 7);
    deliver(4);
    ASSERT_TRUE(showParts(*window, {QStringLiteral("states")}));
    auto const* const values = part<QWidget>("states")->findChild<QTableView*>()->model();
    QModelIndexList const gamma =
        values->match(values->index(0, NamedValues::kName), Qt::DisplayRole, "Gamma", 1, Qt::MatchExactly);
    ASSERT_EQ(gamma.size(), 1);
    EXPECT_EQ(gamma.first().siblingAtColumn(NamedValues::kChangedAt).data().toInt(), 4);
    QStringList told;
    for (QLabel const* label : part<QWidget>("eeprom")->findChildren<QLabel*>())
        told << label->text();
    EXPECT_TRUE(told.join(' ').contains(QRegularExpression("Changed [1-9]"))) << told.join(' ').toStdString();
}

TEST_F(BenchTest, ABrokenChainIsToldUpToItsFault) {
    QByteArray image = smallImage();
    image[29 + 1] = 0x40; // the text's length, far beyond the end
    open(image);
    auto const records = session->camera().eepromRecords();
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0].fault, "");
    EXPECT_NE(records[1].fault, "");
}

TEST(EepromBytesTable, MarksWhatDiffersFromTheStateThatChangesAreCountedFrom) {
    EepromBytesTable table;
    QByteArray bytes(64, '\xFF');
    EXPECT_TRUE(table.show(bytes));
    EXPECT_FALSE(table.show(bytes));
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

TEST_F(BenchTest, TheSensorPanelReachesTheCamera) {
    open(smallImage());
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

TEST_F(BenchTest, CallsAreFilteredAndOutOfSightFollowedByNoTable) {
    open(smallImage());
    deliver(3);
    auto const* const table = part<QWidget>("calls")->findChild<QTableView*>();
    ASSERT_TRUE(table->model());
    int const all = table->model()->rowCount();
    part<QLineEdit>("callText")->setText("rgbimage");
    EXPECT_EQ(table->model()->rowCount(), 3);
    EXPECT_GT(all, 9);
    ASSERT_TRUE(showParts(*window, {QStringLiteral("states")}));
    EXPECT_FALSE(table->model());
}

TEST(LivePicture, TheMapsColoursDoNotFlicker) {
    double end = 0;
    struct {
        double largest, end;
    } const rows[] = {{0.4, 2}, {3.98, 4}, {4.02, 5}, {3.98, 5}, {3.51, 5}, {3.49, 4}, {3.51, 4}, {0.4, 2}};
    for (auto const& row : rows) {
        end = nextColourEnd(end, row.largest);
        EXPECT_EQ(end, row.end) << row.largest;
    }
}

TEST(LivePicture, CountsEveryChannelAndColoursEveryBlock) {
    QImage picture(16, 8, QImage::Format_RGB32);
    picture.fill(QColor(0, 128, 255));
    ColourCounts const counts = countColours(picture);
    EXPECT_EQ(counts.channels[0].front(), 128);
    EXPECT_EQ(counts.channels[1][ColourCounts::kBins / 2], 128);
    EXPECT_EQ(counts.channels[2].back(), 128);

    DisplayBlocks const blocks{.columns = 2, .rows = 1, .deviations = {0, 9}, .largest = 9, .mean = 4.5};
    QImage const map = uniformityMap(blocks, 4);
    ASSERT_EQ(map.size(), QSize(2, 1));
    EXPECT_LT(qGray(map.pixel(0, 0)), 50);
    EXPECT_GT(qGray(map.pixel(1, 0)), 200) << "beyond the end";
    EXPECT_TRUE(uniformityMap({}, 4).isNull());
}

} // namespace
} // namespace pictara
