#include "simulator/files/interruption.h"
#include "simulator/files/whole_file.h"
#include "simulator/host/recording/play.h"
#include "simulator/host/run/runs.h"
#include "simulator/host/session/message_log.h"
#include "simulator/host/session/session.h"
#include "simulator/host/window/host_window.h"

#include <QApplication>
#include <cstdio>

namespace {
using namespace pictara;

// The command line is read, and the sensors are listed, without a display.
CommandLine readCommandLine(int argc, char** argv) {
    QCoreApplication const application(argc, argv);
    CommandLine commandLine = parseCommandLine(QCoreApplication::arguments());
    if (commandLine.options && commandLine.options->listProfiles)
        return {std::nullopt, simulator::SimulatedCamera::notedProfileNames().join('\n') + '\n', kExitDone};
    return commandLine;
}

// Qt would abort without.
bool hasDisplay() {
#ifdef Q_OS_LINUX
    return !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ||
           !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM");
#else
    return true;
#endif
}

void drawWithoutScreen() {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
#ifdef Q_OS_WIN
    // That platform knows none of the system's fonts, and draws no text without.
    if (!qEnvironmentVariableIsSet("QT_QPA_FONTDIR"))
        qputenv("QT_QPA_FONTDIR", qgetenv("WINDIR") + "\\Fonts");
#endif
}

// False when the person wants none.
bool chooseProfile(Options& options) {
    std::optional<QString> const chosen = askForProfile(options.profile);
    options.profile = chosen.value_or(options.profile);
    return chosen.has_value();
}

// One sitting from its beginning to its end. A script tells what to do in it.
int sit(Options const& options, Script const* script) {
    QString error;
    // Told now and not after the work.
    if (!options.boardsFile.isEmpty() && !files::isReplaceable(options.boardsFile, &error))
        return refuse(error);
    std::unique_ptr<Session> const session = Session::open(options, &error);
    if (!session)
        return refuse(error);
    int const code = script                         ? runScript(*session, *script)
                     : options.runAll               ? runCalibration(*session)
                     : options.replayFile.isEmpty() ? runWindow(*session)
                                                    : runReplay(*session);
    // Also after a failed run: the device keeps what was written to it.
    if (session->keepEeprom(&error))
        return code;
    complain(error);
    return code == kExitDone ? kExitNotCalibrated : code;
}

int runByOptions(Options const& given) {
    if (!given.replayedRecordingFile.isEmpty())
        return replayRecording(given);
    std::optional<Script> script;
    QString error;
    if (!given.scriptFile.isEmpty()) {
        script = readScript(given.scriptFile, given, &error);
        if (!script || !layOut(*script, given.outputFolder, &error))
            return refuse(error);
    }
    Script const* const told = script ? &*script : nullptr;
    Options const& options = told ? told->options : given;
    auto const sitting = [&] { return sit(options, told); };
    return options.recordingFile.isEmpty() ? sitting() : recordWhile(options, sitting);
}
} // namespace

int main(int argc, char** argv) {
    CommandLine commandLine = readCommandLine(argc, argv);
    if (!commandLine.options) {
        std::fputs(commandLine.text.toLocal8Bit().constData(),
                   commandLine.exitCode == kExitDone ? stdout : stderr);
        return commandLine.exitCode;
    }
    Options& options = *commandLine.options;
    if (options.isHeadless())
        drawWithoutScreen();
    if (!hasDisplay())
        return refuse(QStringLiteral("There is no display for the window. --run-all, --script, --replay and "
                                     "--replay-eeprom need none."));

    installMessageLog();
    // Qt has options of its own by some of these names; the program's are not for it.
    int onlyTheProgramsName = 1;
    QApplication const application(onlyTheProgramsName, argv);
    // The main window ends the program itself; the chooser, which closes before it opens, must not.
    QApplication::setQuitOnLastWindowClosed(false);
    if (options.chooseProfile && !chooseProfile(options))
        return kExitDone;
    files::noteInterruptions();
    int const code = runByOptions(options);
    if (files::isInterrupted())
        complain(QStringLiteral("Interrupted."));
    return code;
}
