#include "simulator/host/window/values_panel.h"

#include "simulator/host/window/bench_table.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QSortFilterProxyModel>
#include <QTableView>
#include <utility>

namespace pictara {
ValuesPanel::ValuesPanel(QString const& toolTip, Read read, QWidget* parent)
    : LivePanel(parent), m_read(std::move(read)) {
    auto* const chosen = new QSortFilterProxyModel(this);
    chosen->setFilterCaseSensitivity(Qt::CaseInsensitive);
    chosen->setFilterKeyColumn(NamedValues::kName);
    chosen->setSourceModel(&m_values);

    auto* const wanted = new QLineEdit;
    wanted->setClearButtonEnabled(true);
    wanted->setToolTip(QStringLiteral("Show only the names that contain this text"));
    connect(wanted, &QLineEdit::textChanged, chosen, &QSortFilterProxyModel::setFilterFixedString);
    auto* const label = new QLabel(QStringLiteral("&Containing:"));
    label->setBuddy(wanted);
    auto* const line = new QHBoxLayout;
    line->addWidget(label);
    line->addWidget(wanted, 1);

    QTableView* const table = newBenchTable(toolTip);
    table->setModel(chosen);
    table->horizontalHeader()->setSectionResizeMode(NamedValues::kValue, QHeaderView::Stretch);
    int const em = fontMetrics().averageCharWidth();
    table->setColumnWidth(NamedValues::kName, 36 * em);
    table->setColumnWidth(NamedValues::kChangedAt, 20 * em);

    auto* const layout = new QVBoxLayout(this);
    layout->addLayout(line);
    layout->addWidget(table, 1);
}

void ValuesPanel::refresh(quint64 frame) { m_values.show(m_read(), frame); }
} // namespace pictara
