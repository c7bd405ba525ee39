#include "simulator/host/window/bench_actions.h"

#include "simulator/host/window/live_view.h"

#include <QAction>
#include <QMainWindow>
#include <QMenu>
#include <QTabWidget>
#include <QToolBar>

namespace pictara {
namespace {
constexpr double kZoomStep = 1.25;

struct ActionRow {
    char const* name;
    char const* text;
    char const* shortcut;
    char const* toolTip;
    void (*act)(LiveView& view, bool isChecked);
    bool isSwitch = false;
};

constexpr ActionRow kActions[] = {
    {"fit", "&Fit", "Ctrl+0", "Show all of the picture as large as it fits",
     [](LiveView& view, bool) { view.fit(); }},
    {"fullSize", "F&ull size", "Ctrl+1", "Show each pixel of the picture as one of the screen",
     [](LiveView& view, bool) { view.showFullSize(); }},
    {"zoomIn", "Zoom &in", "Ctrl++", "Enlarge the picture",
     [](LiveView& view, bool) { view.zoom(kZoomStep); }},
    {"zoomOut", "Zoom &out", "Ctrl+-", "Make the picture smaller",
     [](LiveView& view, bool) { view.zoom(1 / kZoomStep); }},
    {"uniformity", "Uniformity &map", "Ctrl+U", "Lay the colour deviation of each block over the picture",
     [](LiveView& view, bool isChecked) { view.showUniformity(isChecked); }, true},
    {"cross", "Centre &cross", "Ctrl+K", "Mark the centre of the picture",
     [](LiveView& view, bool isChecked) { view.showCross(isChecked); }, true},
};

QString hinted(QString const& toolTip, QAction const& action) {
    return QStringLiteral("%1 (%2)").arg(toolTip, action.shortcut().toString(QKeySequence::NativeText));
}

QAction* newAction(QMainWindow& window, ActionRow const& row, LiveView& view) {
    auto* const action = new QAction(QLatin1String(row.text), &window);
    action->setObjectName(QLatin1String(row.name));
    action->setShortcut(QKeySequence(QLatin1String(row.shortcut)));
    action->setCheckable(row.isSwitch);
    action->setToolTip(hinted(QLatin1String(row.toolTip), *action));
    QObject::connect(action, &QAction::triggered, &view,
                     [&view, act = row.act](bool isChecked) { act(view, isChecked); });
    return action;
}

// A tab's way by key and menu; it bears the name of the tab's page.
QAction* newTabAction(QMainWindow& window, QTabWidget& tabs, int tab) {
    auto* const action = new QAction(tabs.tabText(tab), &window);
    action->setObjectName(tabs.widget(tab)->objectName());
    action->setShortcut(QKeySequence(QStringLiteral("Alt+%1").arg(tab + 1)));
    action->setToolTip(hinted(tabs.tabToolTip(tab), *action));
    tabs.setTabToolTip(tab, action->toolTip());
    QObject::connect(action, &QAction::triggered, &tabs, [&tabs, tab] {
        tabs.setCurrentIndex(tab);
        tabs.currentWidget()->setFocus();
    });
    return action;
}
} // namespace

void addBenchActions(QMainWindow& window, LiveView& view, QTabWidget& tabs, QMenu& menu, QToolBar& bar) {
    menu.setToolTipsVisible(true);
    for (ActionRow const& row : kActions) {
        QAction* const action = newAction(window, row, view);
        menu.addAction(action);
        bar.addAction(action);
    }
    menu.addSeparator();
    for (int tab = 0; tab < tabs.count(); ++tab)
        menu.addAction(newTabAction(window, tabs, tab));
}

bool showParts(QMainWindow& window, QStringList const& names) {
    for (QString const& name : names) {
        auto* const action = window.findChild<QAction*>(name);
        if (!action)
            return false;
        action->trigger();
    }
    return true;
}
} // namespace pictara
