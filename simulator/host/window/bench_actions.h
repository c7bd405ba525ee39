#pragma once

#include <QStringList>

class QMainWindow;
class QMenu;
class QTabWidget;
class QToolBar;

namespace pictara {
class LiveView;

/// Fills a menu with what can be done to the live picture and with the tabs; the former also a tool bar.
/// All are actions of the window, named as on the command line.
void addBenchActions(QMainWindow& window, LiveView& view, QTabWidget& tabs, QMenu& menu, QToolBar& bar);

/// Brings the tabs and overlays of those names to the front. False at the first name that nothing has.
[[nodiscard]] bool showParts(QMainWindow& window, QStringList const& names);
} // namespace pictara
