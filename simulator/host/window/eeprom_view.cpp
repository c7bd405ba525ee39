#include "simulator/host/window/panels.h"

#include "ui_host_window.h"

#include <QFontDatabase>
#include <QHeaderView>
#include <QScreen>
#include <QScrollBar>
#include <utility>

namespace pictara {
namespace {
enum RecordColumn { kPlace, kWhat, kHeld };
enum ItemData { kOffset = Qt::UserRole, kSize };

constexpr int kRowBytes = 16;
constexpr int kRowStart = 6; // characters before a row's first byte
constexpr int kRowLength = kRowStart + 3 * kRowBytes + 1 + kRowBytes + 1; // with that of the line's end
constexpr int kFullEntrySize = 18;                                        // bytes
constexpr int kShortEntrySize = 4;
constexpr int kWideScreen = 1600;
constexpr int kMarkOpacity = 110; // the text stays readable in a light and in a dark scheme

QString placeOf(size_t offset) { return QStringLiteral("%1").arg(offset, 4, 16, QLatin1Char('0')).toUpper(); }

int positionOf(int offset) { return offset / kRowBytes * kRowLength + kRowStart + 3 * (offset % kRowBytes); }

// A row's offset, bytes and characters.
QString dumpOf(QByteArray const& bytes) {
    QString dump;
    for (int offset = 0; offset < bytes.size(); offset += kRowBytes) {
        QByteArray const row = bytes.mid(offset, kRowBytes);
        QString characters;
        for (char const byte : row)
            characters += QLatin1Char(byte >= ' ' && byte <= '~' ? byte : '.');
        dump += placeOf(size_t(offset)) + "  " + row.toHex(' ').toUpper() + "  " + characters + '\n';
    }
    return dump;
}

QTreeWidgetItem* newItem(size_t offset, size_t size, QString const& what, QString const& held) {
    auto* const item = new QTreeWidgetItem({placeOf(offset), what, held});
    item->setData(kPlace, kOffset, qulonglong(offset));
    item->setData(kPlace, kSize, qulonglong(size));
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
    QString const registers =
        record.settings.empty() ? QString() : QStringLiteral("%1 registers").arg(record.settings.size());
    QStringList held{record.text, registers, QStringLiteral("%1 bytes").arg(record.size), record.fault};
    held.removeAll(QString());
    QTreeWidgetItem* const item =
        newItem(record.offset, record.size,
                record.typeName.isEmpty() ? QStringLiteral("Type %1").arg(record.type) : record.typeName,
                held.join(QStringLiteral(", ")));
    for (simulator::StoredSetting const& setting : record.settings)
        item->addChild(itemOf(setting));
    return item;
}
} // namespace

EepromView::EepromView(Ui::HostWindow const& ui, simulator::SimulatedCamera const& camera)
    : m_ui(ui), m_camera(camera), m_before(camera.eepromBytes()) {
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    bool const isWide = ui.bytes->screen()->availableGeometry().width() >= kWideScreen;
    font.setPointSizeF((isWide ? 0.9 : 0.75) * font.pointSizeF());
    ui.bytes->setFont(font);
    // All of a row's bytes and the rest for the records, or one below the other.
    ui.eepromParts->setOrientation(isWide ? Qt::Horizontal : Qt::Vertical);
    ui.eepromParts->setSizes({!isWide ? 1
                                      : ui.bytes->fontMetrics().averageCharWidth() * kRowLength +
                                            ui.bytes->verticalScrollBar()->sizeHint().width(),
                              1});
    ui.records->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    ui.beginAnew->setEnabled(camera.hasEeprom());
    connect(ui.records, &QTreeWidget::currentItemChanged, this, &EepromView::chooseBytesOfRecord);
    connect(ui.beginAnew, &QPushButton::clicked, this, [this] {
        m_before = m_bytes;
        showMarks();
    });
    refresh();
}

void EepromView::refresh() {
    QByteArray const shown = std::exchange(m_bytes, m_camera.eepromBytes());
    if (m_bytes != shown) {
        int const top = m_ui.bytes->verticalScrollBar()->value();
        m_ui.bytes->setPlainText(dumpOf(m_bytes));
        m_ui.bytes->verticalScrollBar()->setValue(top);
        m_ui.records->clear();
        for (simulator::StoredRecord const& record : m_camera.eepromRecords())
            m_ui.records->addTopLevelItem(itemOf(record));
    }
    showMarks();
}

void EepromView::chooseBytesOfRecord() {
    QTreeWidgetItem const* const item = m_ui.records->currentItem();
    m_begin = item ? item->data(kPlace, kOffset).toInt() : 0;
    m_end = item ? m_begin + item->data(kPlace, kSize).toInt() : 0;
    m_ui.bytes->verticalScrollBar()->setValue(m_begin / kRowBytes);
    showMarks();
}

void EepromView::showMarks() {
    QColor const chosen = m_ui.bytes->palette().color(QPalette::Highlight);
    QColor const changed(chosen.red(), chosen.green(), chosen.blue(), kMarkOpacity);
    QList<QTextEdit::ExtraSelection> marks;
    int changes = 0;
    for (int offset = 0; offset < m_bytes.size(); ++offset) {
        bool const isChosen = offset >= m_begin && offset < m_end;
        bool const isChanged = m_bytes[offset] != m_before[offset];
        changes += isChanged ? 1 : 0;
        if (!isChosen && !isChanged)
            continue;
        marks.append({m_ui.bytes->textCursor(), {}});
        marks.last().cursor.setPosition(positionOf(offset));
        marks.last().cursor.setPosition(positionOf(offset) + 2, QTextCursor::KeepAnchor);
        marks.last().format.setBackground(isChosen ? chosen : changed);
        if (isChosen)
            marks.last().format.setForeground(m_ui.bytes->palette().highlightedText());
    }
    m_ui.bytes->setExtraSelections(marks);
    m_ui.eepromState->setText(m_camera.hasEeprom()
                                  ? QStringLiteral("Operations %1    Stored %2    Changed %3")
                                        .arg(m_camera.deviceOperations())
                                        .arg(m_camera.deviceBytesWritten())
                                        .arg(changes)
                                  : QStringLiteral("This headboard has no EEPROM."));
}
} // namespace pictara
