#include "simulator/host/window/call_panel.h"

#include "simulator/host/window/bench_table.h"

#include <QAction>
#include <QCheckBox>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QTableView>
#include <QToolButton>

namespace pictara {
namespace {
QToolButton* newButton(QString const& text) {
    auto* const button = new QToolButton;
    button->setText(text);
    return button;
}
} // namespace

CallPanel::CallPanel(CallLog& log, QWidget* parent)
    : LivePanel(parent), m_log(log), m_text(new QLineEdit), m_kinds(new QMenu(this)),
      m_follows(new QCheckBox(QStringLiteral("&Jump"))),
      m_table(newBenchTable(
          QStringLiteral("Calls between host, plug-in and libraries; inner calls are indented"))) {
    m_kinds->setToolTipsVisible(true);
    addKind(m_kinds, QStringLiteral("&Inputs"),
            QStringLiteral("What the host or a person does: frames, light, registers, faults"));
    addKind(m_kinds, QStringLiteral("&Host services"),
            QStringLiteral("Services of the host that the plug-in calls"));
    addKind(m_kinds, QStringLiteral("&Camera library"),
            QStringLiteral("Functions of veyra2 that the plug-in calls"));
    addKind(m_kinds, QStringLiteral("&Solver library"),
            QStringLiteral("Functions of shadefit that the plug-in calls"));
    addKind(m_kinds, QStringLiteral("&Plug-in"),
            QStringLiteral("Functions of the plug-in that the host calls"));

    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(newFilterLine());
    layout->addWidget(m_table, 1);

    connect(m_text, &QLineEdit::textChanged, this, &CallPanel::filter);
    connect(m_follows, &QCheckBox::toggled, this, &CallPanel::follow);
}

QWidget* CallPanel::newFilterLine() {
    auto* const label = new QLabel(QStringLiteral("&Containing:"));
    label->setBuddy(m_text);
    m_text->setObjectName(QStringLiteral("callText"));
    m_text->setClearButtonEnabled(true);
    m_text->setToolTip(QStringLiteral("Show only calls with this text in name, arguments or result"));
    // Narrower than push buttons, which would not fit beside the dialog on a screen at 150 %.
    auto* const kinds = newButton(QStringLiteral("S&how"));
    kinds->setPopupMode(QToolButton::InstantPopup);
    kinds->setToolTip(QStringLiteral("Choose the kinds of calls that are shown"));
    kinds->setMenu(m_kinds);
    m_follows->setObjectName(QStringLiteral("follows"));
    m_follows->setChecked(true);
    m_follows->setToolTip(QStringLiteral("Scroll to the newest call as calls come"));
    auto* const clear = newButton(QStringLiteral("Clear"));
    clear->setShortcut(QKeySequence(QStringLiteral("Ctrl+L")));
    clear->setToolTip(QStringLiteral("Forget the calls so far (Ctrl+L)"));
    connect(clear, &QToolButton::clicked, this, [this] { m_log.clear(); });
    auto* const save = newButton(QStringLiteral("Save..."));
    save->setShortcut(QKeySequence::Save);
    save->setToolTip(QStringLiteral("Write the calls that are shown to a text file (Ctrl+S)"));
    connect(save, &QToolButton::clicked, this, &CallPanel::askAndSave);

    auto* const line = new QWidget;
    auto* const layout = new QHBoxLayout(line);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(label);
    layout->addWidget(m_text, 1);
    for (QWidget* const part : std::initializer_list<QWidget*>{kinds, m_follows, clear, save})
        layout->addWidget(part);
    return line;
}

void CallPanel::addKind(QMenu* menu, QString const& text, QString const& toolTip) {
    QAction* const kind = menu->addAction(text);
    kind->setCheckable(true);
    kind->setChecked(true);
    kind->setToolTip(toolTip);
    connect(kind, &QAction::toggled, this, &CallPanel::filter);
}

void CallPanel::filter() {
    QList<QAction*> const kinds = m_kinds->actions();
    CallFilter wanted{.text = m_text->text(), .showsInputs = kinds[0]->isChecked(), .sources = {}};
    for (int source = 0; source + 1 < kinds.size(); ++source)
        if (kinds[source + 1]->isChecked())
            wanted.sources.push_back(CallSource(source));
    m_log.setFilter(wanted);
    follow();
}

void CallPanel::refresh(quint64) { follow(); }

void CallPanel::follow() {
    if (isVisible() && m_follows->isChecked())
        m_table->scrollToBottom();
}

void CallPanel::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    m_table->setModel(&m_log);
    int const em = fontMetrics().averageCharWidth();
    int const widths[] = {9, 10, 38, 48, 20};
    for (int column = 0; column < CallLog::kColumnCount; ++column)
        m_table->setColumnWidth(column, widths[column] * em);
    m_table->horizontalHeader()->setStretchLastSection(true);
    follow();
}

void CallPanel::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    m_table->setModel(nullptr);
}

void CallPanel::askAndSave() {
    QString const file =
        QFileDialog::getSaveFileName(this, QStringLiteral("Save the calls"), QStringLiteral("calls.txt"));
    QString error;
    if (!file.isEmpty() && !m_log.save(file, &error))
        QMessageBox::warning(this, QStringLiteral("Save the calls"), error);
}
} // namespace pictara
