#include "simulator/host/calibration_run.h"
#include "simulator/host/live_window.h"
#include "simulator/host/message_log.h"
#include "simulator/host/session.h"

#include <QApplication>
#include <QDialog>
#include <cstdio>

namespace {

using namespace pictara;

// The command line is read, and the profiles are listed, without a display.
CommandLine readCommandLine(int argc, char** argv) {
    QCoreApplication const application(argc, argv);
    CommandLine commandLine = parseCommandLine(QCoreApplication::arguments());
    if (commandLine.options && commandLine.options->listProfiles) {
        commandLine.text = simulator::SimulatedCamera::profileNames().join(QLatin1Char('\n')) + '\n';
        commandLine.options.reset();
    }
    return commandLine;
}

int runWindow(Session& session) {
    LiveWindow window(session.frames());
    QString error;
    QDialog* const dialog = session.openDialog(&window, &error);
    if (!dialog) {
        std::fprintf(stderr, "pictara-sim: %s\n", error.toLocal8Bit().constData());
        return kExitUsage;
    }
    window.show();
    dialog->move(window.frameGeometry().topRight() + QPoint(10, 0));
    dialog->show();
    int const code = QApplication::exec();
    window.stop();
    // The dialog is a child of the window, but the plug-in's to delete.
    session.closePlugin();
    return code;
}

} // namespace

int main(int argc, char** argv) {
    CommandLine const commandLine = readCommandLine(argc, argv);
    if (!commandLine.options) {
        std::fputs(commandLine.text.toLocal8Bit().constData(),
                   commandLine.exitCode == kExitDone ? stdout : stderr);
        return commandLine.exitCode;
    }
    Options const& options = *commandLine.options;
    if (options.runAll && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");

    installMessageLog();
    // Qt has options of its own by some of these names; the program's are not for it.
    int onlyTheProgramsName = 1;
    QApplication const application(onlyTheProgramsName, argv);
    QString error;
    std::unique_ptr<Session> const session = Session::open(options, &error);
    if (!session) {
        std::fprintf(stderr, "pictara-sim: %s\n", error.toLocal8Bit().constData());
        return kExitUsage;
    }
    return options.runAll ? runCalibration(*session, options) : runWindow(*session);
}
