#pragma once

#include "simulator/host/session/words.h"

namespace pictara {
/// Exit codes of the program.
enum ExitCode : int {
    kExitDone = 0,
    kExitNotCalibrated = 1, ///< a step failed, or did not show that it is done
    kExitUsage = 2,         ///< bad command line, or a file that is missing or malformed
    kExitTimeout = 3,       ///< the calibration did not end within the bound on frames
    // The calibration library refused the picture:
    kExitTooDark = 4,
    kExitClipped = 5,
    kExitNotFlat = 6, ///< an object in the picture, or uneven light
    kExitWrongSize = 7,
    kExitFail = 8,          ///< calibrated and saved, but a figure is beyond its limit
    kExitNotSaved = 9,      ///< calibrated, but the file or the EEPROM does not hold the solution
    kExitMarginal = 10,     ///< as the dialog rates it: neither good nor bad
    kExitInterrupted = 130, ///< by Ctrl-C or a request to terminate
};

/// Complains that the program cannot do what it was asked for.
[[nodiscard]] ExitCode refuse(QString const& why);

/// What the user asked for. File names are as typed; empty ones stand for the defaults told in the help.
struct Options {
    // What to do; nothing of these: a window for work by hand.
    bool listProfiles = false;
    bool runAll = false;
    QString scriptFile;            ///< of commands that work the dialog instead of a person
    QString replayedRecordingFile; ///< whose inputs are given again, and whose calls are compared
    QString replayFile;            ///< an EEPROM whose record is replayed as at a start-up
    QString recordingFile;         ///< where the calls across the boundary are kept as well

    QString profile = QStringLiteral("polynomial");
    bool chooseProfile = false; ///< by hand, before the window opens
    QString shadingFile;
    std::optional<double> lightKelvin; ///< of the lamp; none: the usual one, or what a page asks for
    double lightLevel = 1;
    double lightGradient = 0;
    bool objectInPicture = false;
    uint64_t seed = 1;
    std::optional<FaultWish> fault;

    std::optional<double> uniformityLimit; ///< typed into the dialog; none: the dialog's own
    double luminanceLimit = 10;            ///< percent off the target shape

    QString outputFolder = QStringLiteral("pictara-output");
    QString boardsFile; ///< a table that gets a line for the board
    QString eepromFile;
    QString iniFile;
    QString pluginFile;

    /// Nobody needs a display.
    [[nodiscard]] bool isHeadless() const {
        return runAll || !replayFile.isEmpty() || !scriptFile.isEmpty() || !replayedRecordingFile.isEmpty();
    }
};

/// The lamp of the options, or the usual one.
[[nodiscard]] simulator::Light lightOf(Options const& options);

/// The options, or, when there is nothing to run, a text for the user and the exit code.
struct CommandLine {
    std::optional<Options> options;
    QString text;
    int exitCode = kExitDone;
};

/// Reads the arguments, the first of which is the program's name. A core application must exist.
[[nodiscard]] CommandLine parseCommandLine(QStringList const& arguments);
} // namespace pictara
