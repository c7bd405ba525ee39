#include "tools/screenshots/bench_states.h"

#include "simulator/host/session/dialog_page.h"
#include "simulator/host/session/message_log.h"
#include "simulator/host/session/session.h"
#include "simulator/host/window/host_window.h"
#include "tools/screenshots/named_picture.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QTabWidget>
#include <cstdio>

namespace {
using pictara::HostWindow;

constexpr uint64_t kSettledFrames = 20; // the exposure has settled

// As a desktop with dark colours hands it to its programs.
QPalette darkPalette() {
    QColor const ground(45, 46, 50), field(62, 63, 68), text(226, 226, 230), faint(150, 150, 156);
    QPalette palette(ground); // shades for frames and bevels come from it
    for (QPalette::ColorRole const role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
        palette.setColor(role, text);
        palette.setColor(QPalette::Disabled, role, faint);
    }
    palette.setColor(QPalette::Base, field);
    palette.setColor(QPalette::AlternateBase, QColor(56, 57, 62));
    palette.setColor(QPalette::Button, QColor(74, 75, 81));
    palette.setColor(QPalette::ToolTipBase, field);
    palette.setColor(QPalette::Highlight, QColor(46, 110, 190));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    return palette;
}

template <typename Condition>
void workUntil(Condition isReached) {
    while (!isReached())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void trigger(HostWindow& window, char const* action) {
    window.findChild<QAction*>(QLatin1String(action))->trigger();
}

void showEeprom(HostWindow& window) {
    trigger(window, "profile");
    window.findChild<QTabWidget*>(QStringLiteral("tabs"))->setCurrentIndex(1);
}

void showUniformity(HostWindow& window) {
    trigger(window, "uniformity");
    trigger(window, "profile");
    trigger(window, "diagonal");
}

void beRefused(HostWindow& window) {
    window.findChild<QAbstractButton*>(QStringLiteral("object"))->click();
    pictara::DialogPage::find(window.dialog()).press("Run_All");
    auto const* const reason = window.findChild<QLabel*>(QStringLiteral("refusal"));
    workUntil([&] { return reason->isVisible(); });
}

struct NamedState {
    char const* name;
    void (*reach)(HostWindow& window);
    bool isDark = false;
};

constexpr NamedState kStates[] = {
    {"bench", showEeprom},
    {"bench-dark", showUniformity, true},
    {"bench-eeprom-dark", showEeprom, true},
    {"bench-refused", beRefused},
};

bool write(NamedState const& state, QDir const& folder) {
    pictara::Options options;
    options.outputFolder = folder.absolutePath();
    QString error;
    std::unique_ptr<pictara::Session> const session = pictara::Session::open(options, &error);
    if (!session) {
        std::fprintf(stderr, "screenshots: %s\n", qUtf8Printable(error));
        return false;
    }
    QPalette const light = QApplication::palette();
    if (state.isDark)
        QApplication::setPalette(darkPalette());
    HostWindow window(*session);
    bool written = window.openDialog(&error);
    if (written) {
        window.showWithDialog();
        state.reach(window);
        workUntil([&] { return session->frames().frameNumber() >= kSettledFrames; });
        written = writeNamedPicture({&window, window.dialog()->window()}, folder, state.name);
    }
    session->closePlugin();
    QApplication::setPalette(light);
    return written;
}
} // namespace

bool writeBenchStates(QDir const& folder, QStringList const& names) {
    pictara::installMessageLog(); // which knows why a picture was refused
    bool good = true;
    for (NamedState const& state : kStates)
        if (names.isEmpty() || names.contains(QLatin1String(state.name)))
            good = write(state, folder) && good;
    return good;
}
