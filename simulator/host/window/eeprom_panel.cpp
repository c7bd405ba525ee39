#include "simulator/host/window/eeprom_panel.h"

#include "simulator/camera/simulated_camera.h"
#include "simulator/host/window/bench_table.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QSplitter>
#include <QTableView>
#include <QTreeWidget>
#include <algorithm>

namespace pictara {
namespace {
enum RecordColumn { kPlace, kWhat, kHeld };
enum ItemData { kOffset = Qt::UserRole, kSize };

constexpr int kFullEntrySize = 18; // bytes
constexpr int kShortEntrySize = 4;
constexpr int kHeaderGrowth = 24; // pixels that the offsets' column gains when it is shown

QTreeWidgetItem* newItem(size_t offset, size_t size, QString const& what, QString const& held) {
    auto* const item = new QTreeWidgetItem(
        {QStringLiteral("%1").arg(offset, 4, 16, QLatin1Char('0')).toUpper(), what, held});
    item->setData(kPlace, kOffset, qulonglong(offset));
    item->setData(kPlace, kSize, qulonglong(size));
    item->setToolTip(kWhat, what);
    item->setToolTip(kHeld, held);
    return item;
}

QTreeWidgetItem* itemOf(simulator::StoredSetting const& setting) {
    bool const isWhole = setting.mask == 0;
    QString const value = QStringLiteral("0x%1").arg(setting.value, 4, 16, QLatin1Char('0'));
    // The kind of an entry is not told; one with a mask is a full one.
    return newItem(setting.offset, isWhole ? kShortEntrySize : kFullEntrySize,
                   setting.name.isEmpty() ? setting.place : QString::fromLatin1(setting.name),
                   isWhole ? value : QStringLiteral("%1 in 0x%2").arg(value).arg(setting.mask, 0, 16));
}

QTreeWidgetItem* itemOf(simulator::StoredRecord const& record) {
    QString const type =
        record.typeName.isEmpty() ? QStringLiteral("Type %1").arg(record.type) : record.typeName;
    QStringList held;
    if (!record.text.isEmpty())
        held << record.text;
    if (!record.settings.empty())
        held << QStringLiteral("%1 registers").arg(record.settings.size());
    held << QStringLiteral("%1 bytes").arg(record.size);
    if (!record.fault.isEmpty())
        held << record.fault;
    QTreeWidgetItem* const item = newItem(record.offset, record.size, type, held.join(QStringLiteral(", ")));
    for (simulator::StoredSetting const& setting : record.settings)
        item->addChild(itemOf(setting));
    return item;
}

// Parts of rows make several rectangles.
QItemSelection selectionOf(EepromBytesTable const& bytes, int offset, int size) {
    constexpr int kWidth = EepromBytesTable::kBytesPerRow;
    QItemSelection selection;
    for (int row = offset / kWidth; row * kWidth < offset + size && row < bytes.rowCount(); ++row) {
        int const first = std::max(offset - row * kWidth, 0);
        int const last = std::min(offset + size - 1 - row * kWidth, kWidth - 1);
        selection.select(bytes.index(row, first), bytes.index(row, last));
    }
    return selection;
}
} // namespace

EepromPanel::EepromPanel(simulator::SimulatedCamera const& camera, QWidget* parent)
    : LivePanel(parent), m_camera(camera),
      m_table(newBenchTable(QStringLiteral("The EEPROM's bytes, 16 a row; those that changed are marked"))),
      m_records(new QTreeWidget), m_state(new QLabel) {
    auto* const parts = new QSplitter(Qt::Horizontal);
    parts->addWidget(newByteTable());
    parts->addWidget(newRecordTree());
    parts->setStretchFactor(1, 1);
    parts->setChildrenCollapsible(false);
    // All of a row's bytes, if there is room for them, and the rest for the records.
    parts->setSizes({m_table->horizontalHeader()->length() + m_table->verticalHeader()->sizeHint().width() +
                         m_table->verticalScrollBar()->sizeHint().width() + kHeaderGrowth,
                     1});
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(newStateLine());
    layout->addWidget(parts, 1);
}

QWidget* EepromPanel::newByteTable() {
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPointSizeF(0.9 * font.pointSizeF());
    m_table->setFont(font);
    m_table->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    m_table->setSelectionBehavior(QAbstractItemView::SelectItems);
    m_table->setAlternatingRowColors(false);
    m_table->setModel(&m_bytes);
    m_table->horizontalHeader()->setMinimumSectionSize(1);
    m_table->horizontalHeader()->setDefaultAlignment(Qt::AlignCenter);
    m_table->verticalHeader()->setFont(font);
    m_table->verticalHeader()->show();
    QFontMetrics const metrics(font);
    for (int column = 0; column < EepromBytesTable::kBytesPerRow; ++column)
        m_table->setColumnWidth(column, metrics.horizontalAdvance(QStringLiteral("FF")) + 7);
    m_table->setColumnWidth(EepromBytesTable::kBytesPerRow,
                            metrics.averageCharWidth() * (EepromBytesTable::kBytesPerRow + 2));
    return m_table;
}

QWidget* EepromPanel::newRecordTree() {
    m_records->setObjectName(QStringLiteral("records"));
    m_records->setHeaderLabels({QStringLiteral("Offset"), QStringLiteral("Record"), QStringLiteral("Holds")});
    m_records->setToolTip(QStringLiteral("The records of the chain; choosing one marks its bytes"));
    m_records->setUniformRowHeights(true);
    int const em = fontMetrics().averageCharWidth();
    m_records->setColumnWidth(kPlace, 10 * em);
    m_records->setColumnWidth(kWhat, 14 * em);
    connect(m_records, &QTreeWidget::currentItemChanged, this, &EepromPanel::chooseBytesOfRecord);
    return m_records;
}

QWidget* EepromPanel::newStateLine() {
    auto* const again = new QPushButton(QStringLiteral("&Begin anew"));
    again->setToolTip(QStringLiteral("Count and mark changes from now on"));
    connect(again, &QPushButton::clicked, this, [this] {
        m_bytes.beginAnew();
        tellState();
    });
    m_state->setToolTip(
        QStringLiteral("Operations of the device and bytes stored since the start, and bytes that changed"));
    auto* const line = new QWidget;
    auto* const layout = new QHBoxLayout(line);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_state, 1);
    layout->addWidget(again);
    again->setEnabled(m_camera.hasEeprom());
    return line;
}

void EepromPanel::refresh(quint64) {
    if (m_bytes.show(m_camera.eepromBytes()))
        listRecords();
    tellState();
}

void EepromPanel::listRecords() {
    m_records->clear();
    for (simulator::StoredRecord const& record : m_camera.eepromRecords())
        m_records->addTopLevelItem(itemOf(record));
}

void EepromPanel::chooseBytesOfRecord() {
    QTreeWidgetItem const* const item = m_records->currentItem();
    if (!item)
        return;
    int const offset = item->data(kPlace, kOffset).toInt();
    QItemSelection const selection = selectionOf(m_bytes, offset, item->data(kPlace, kSize).toInt());
    m_table->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    m_table->scrollTo(m_bytes.index(offset / EepromBytesTable::kBytesPerRow, 0),
                      QAbstractItemView::PositionAtTop);
}

void EepromPanel::tellState() {
    m_state->setText(m_camera.hasEeprom() ? QStringLiteral("Operations %1    Stored %2    Changed %3")
                                                .arg(m_camera.deviceOperations())
                                                .arg(m_camera.deviceBytesWritten())
                                                .arg(m_bytes.changedBytes())
                                          : QStringLiteral("This headboard has no EEPROM."));
}
} // namespace pictara
