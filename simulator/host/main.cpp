#include "simulator/files/interruption.h"
#include "simulator/host/recording/recorder.h"
#include "simulator/host/run/calibration_run.h"
#include "simulator/host/run/recording_replay.h"
#include "simulator/host/run/replay_run.h"
#include "simulator/host/run/script_run.h"
#include "simulator/host/session/message_log.h"
#include "simulator/host/session/session.h"
#include "simulator/host/shading/shading_run.h"
#include "simulator/host/window/profile_chooser.h"
#include "simulator/host/window/window_run.h"

#include <QApplication>
#include <algorithm>
#include <cstdio>
#include <iterator>

namespace {
using namespace pictara;

#ifdef Q_OS_LINUX
constexpr char const* kDisplayVariables[] = {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"};
#endif

CommandLine listing(QStringList const& names) {
    return {std::nullopt, names.join(QLatin1Char('\n')) + QLatin1Char('\n'), kExitDone};
}

// The command line is read, and lists are told, without a display.
CommandLine readCommandLine(int argc, char** argv) {
    QCoreApplication const application(argc, argv);
    CommandLine commandLine = parseCommandLine(QCoreApplication::arguments());
    if (commandLine.options && commandLine.options->listProfiles)
        return listing(simulator::SimulatedCamera::notedProfileNames());
    if (commandLine.options && commandLine.options->listFaults)
        return listing(simulator::SimulatedCamera::faultNames());
    return commandLine;
}

#ifdef Q_OS_LINUX
// Qt would abort.
bool hasDisplay() {
    return std::any_of(std::begin(kDisplayVariables), std::end(kDisplayVariables),
                       [](char const* name) { return !qEnvironmentVariableIsEmpty(name); });
}
#else
bool hasDisplay() { return true; }
#endif

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
    ProfileChooser chooser(options.profile);
    bool const chosen = chooser.exec() == QDialog::Accepted && !chooser.profile().isEmpty();
    if (chosen)
        options.profile = chooser.profile();
    return chosen;
}

int run(Session& session, Options const& options, QString* nextProfile) {
    if (!options.replayFile.isEmpty())
        return runReplay(session, options);
    if (!options.scriptFile.isEmpty())
        return runScript(session, options);
    return options.runAll ? runCalibration(session, options) : runWindow(session, options, nextProfile);
}

// One sitting from its beginning to its end.
int sitOnce(Options const& options, QString* nextProfile) {
    QString error;
    std::unique_ptr<Session> const session = Session::open(options, &error);
    if (!session) {
        complain(error);
        return kExitUsage;
    }
    int const code = run(*session, options, nextProfile);
    if (files::isInterrupted())
        complain(QStringLiteral("Interrupted."));
    // Also after a failed run: the device keeps what was written to it.
    if (session->keepEeprom(&error))
        return code;
    complain(error);
    return code == kExitDone ? kExitNotCalibrated : code;
}

// Another sensor needs another sitting.
int sit(Options options) {
    for (;;) {
        QString nextProfile;
        int const code = sitOnce(options, &nextProfile);
        if (nextProfile.isEmpty())
            return code;
        options.profile = nextProfile;
    }
}

int sitAndRecord(Options const& options) {
    QString error;
    std::unique_ptr<Recorder> const recorder = Recorder::start(options, &error);
    if (!recorder) {
        complain(error);
        return kExitUsage;
    }
    int const code = sit(options);
    if (recorder->finish(&error))
        return code;
    complain(error);
    return code == kExitDone ? kExitNotCalibrated : code;
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
    if (!hasDisplay()) {
        complain(QStringLiteral("There is no display for the window. --run-all, --script, --replay and "
                                "--replay-eeprom need none."));
        return kExitUsage;
    }

    installMessageLog();
    // Qt has options of its own by some of these names; the program's are not for it.
    int onlyTheProgramsName = 1;
    QApplication const application(onlyTheProgramsName, argv);
    // The main window ends the program itself; the chooser, which closes before it opens, must not.
    QApplication::setQuitOnLastWindowClosed(false);
    if (options.chooseProfile && !chooseProfile(options))
        return kExitDone;
    files::noteInterruptions();
    if (options.isAboutShading())
        return runShading(options);
    if (!options.replayedRecordingFile.isEmpty())
        return runRecordingReplay(options);
    return options.recordingFile.isEmpty() ? sit(options) : sitAndRecord(options);
}
