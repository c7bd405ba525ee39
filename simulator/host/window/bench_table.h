#pragma once

#include <QString>

class QTableView;

namespace pictara {
/// A table for reading: whole rows are chosen, all equally high without measuring each, and Tab leaves it.
[[nodiscard]] QTableView* newBenchTable(QString const& toolTip);
} // namespace pictara
