// headboard-config: the headboard configuration page on a simulated camera, for work by hand.

#include "config_page/config_view.h"
#include "simulator/files/interruption.h"
#include "tools/headboard-config/session.h"
#include "tools/window_picture/window_picture.h"

#include <QApplication>
#include <QLabel>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <iterator>

using namespace kestra;

namespace {
constexpr int kLookForInterruptionMs = 50;

void complain(QString const& text) {
    std::fprintf(stderr, "headboard-config: %s\n", text.toLocal8Bit().constData());
}

// The command line is read without a display.
CommandLine readCommandLine(int argc, char** argv) {
    QCoreApplication const application(argc, argv);
    return parseCommandLine(QCoreApplication::arguments());
}

#ifdef Q_OS_LINUX
// Qt would abort.
bool hasDisplay() {
    static constexpr char const* kVariables[] = {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"};
    return std::any_of(std::begin(kVariables), std::end(kVariables),
                       [](char const* name) { return !qEnvironmentVariableIsEmpty(name); });
}
#else
bool hasDisplay() { return true; }
#endif

// What the page shows, for whoever has no picture.
void report(Config const& page) {
    static constexpr char const* kNames[] = {"part number", "interface", "market indicator",
                                             "special processing"};
    auto const text = [&](char const* label) {
        return page.findChild<QLabel*>(QLatin1String(label))->text().toLocal8Bit();
    };
    std::printf("%s\n", text("EEPROM_Status").constData());
    std::printf("serial number: %s\n%s\n", page.serialNumber().toLocal8Bit().constData(),
                text("SN_Status").constData());
    for (size_t i = 0; i < std::size(kNames); ++i)
        std::printf("%s: %s\n", kNames[i], page.state().identification[i].toLocal8Bit().constData());
}

// A signal may come at any place, so nothing is done in it; a step that is at work ends first.
void workUntilClosedOrInterrupted() {
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [] {
        if (files::isInterrupted())
            QApplication::quit();
    });
    timer.start(kLookForInterruptionMs);
    QApplication::exec();
}

int run(Session& session, Options const& options) {
    session.window().show();
    session.page().initialise();
    bool pictured = true;
    if (options.screenshotFile.isEmpty()) {
        workUntilClosedOrInterrupted();
    } else {
        QApplication::processEvents();
        QString reason;
        pictured = files::savePicture({&session.window()}, options.screenshotFile, &reason);
        if (!pictured)
            complain(
                QStringLiteral("The picture %1 cannot be written: %2").arg(options.screenshotFile, reason));
        report(session.page());
    }
    QString error;
    bool const saved = session.saveEeprom(&error);
    if (!saved)
        complain(error);
    if (!saved || !pictured)
        return kExitNotSaved;
    return files::isInterrupted() ? kExitInterrupted : kExitDone;
}
} // namespace

int main(int argc, char** argv) {
    CommandLine const commandLine = readCommandLine(argc, argv);
    if (!commandLine.options) {
        std::fputs(commandLine.text.toLocal8Bit().constData(),
                   commandLine.exitCode == kExitDone ? stdout : stderr);
        return commandLine.exitCode;
    }
    if (!commandLine.options->screenshotFile.isEmpty() && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    if (!hasDisplay()) {
        complain(QStringLiteral("There is no display for the window. --screenshot needs none."));
        return kExitUsage;
    }
    // Qt has options of its own; the program's are not for it.
    int onlyTheProgramsName = 1;
    QApplication const application(onlyTheProgramsName, argv);
    // The number on the label is spent once it was stored, so the EEPROM that bears it is not to be lost.
    files::noteInterruptions();
    QString error;
    std::unique_ptr<Session> const session = Session::open(*commandLine.options, &error);
    if (!session) {
        complain(error);
        return kExitUsage;
    }
    return run(*session, *commandLine.options);
}
