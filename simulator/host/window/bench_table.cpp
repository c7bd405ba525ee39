#include "simulator/host/window/bench_table.h"

#include <QHeaderView>
#include <QTableView>

namespace pictara {
QTableView* newBenchTable(QString const& toolTip) {
    auto* const table = new QTableView;
    table->setToolTip(toolTip);
    table->setTabKeyNavigation(false);
    table->setWordWrap(false);
    table->setShowGrid(false);
    table->setAlternatingRowColors(true);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    table->horizontalHeader()->setHighlightSections(false);
    table->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table->verticalHeader()->setDefaultSectionSize(table->fontMetrics().height() + 4);
    table->verticalHeader()->hide();
    return table;
}
} // namespace pictara
