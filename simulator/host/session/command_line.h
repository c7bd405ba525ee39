#pragma once

#include "simulator/host/session/fault_wish.h"

#include <QString>
#include <QStringList>
#include <cstdint>
#include <optional>

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
    kExitBeyondLimit = 8,   ///< calibrated and saved, but the uniformity is beyond the dialog's limit
    kExitNotSaved = 9,      ///< calibrated, but the file or the EEPROM does not hold the solution
    kExitInterrupted = 130, ///< by Ctrl-C or a request to terminate
};

/// What the user asked for. File names are as typed; empty ones stand for the defaults told in the help.
struct Options {
    QString profile = QStringLiteral("poly-12bit");
    bool listProfiles = false;
    bool listFaults = false;
    bool runAll = false;        ///< anything else that is asked for wins
    bool chooseProfile = false; ///< by hand, before the window opens
    bool thenGood = false;
    QString screenshotFile;
    QStringList shownParts; ///< parts of the window that are brought to the front at first
    bool dark = false;      ///< colours of the window
    QString shadingFile;
    std::optional<double> lightKelvin; ///< of the lamp; none: the usual one, or what a page asks for
    double lightLevel = 1;
    double lightGradient = 0;
    bool objectInPicture = false;
    uint64_t seed = 1;
    std::optional<int> falloffPercent; ///< none: the page's own setting
    QString outputFolder = QStringLiteral("pictara-output");
    QString iniFile;
    QString settingsFile;
    QString pluginFile;
    QString eepromFile;
    QString replayFile; ///< an EEPROM whose record is replayed instead of a calibration; empty: no replay
    QString recordName; ///< of the record to be replayed; empty: the first one
    std::optional<FaultWish> fault;
    QString recordingFile;         ///< where the calls across the boundary are kept; empty: nowhere
    QString replayedRecordingFile; ///< a recording that is replayed instead of anything else; empty: none
    QString scriptFile;            ///< of commands that work the dialog instead of a person; empty: none
    QString measureShadingFile;    ///< that a measured shading table is written to; empty: none is measured
    QString flatFieldFile;         ///< a recorded picture to measure it from; empty: the simulated camera's
    QStringList comparedFiles;     ///< two shading tables to be laid side by side; or none
    int framesPerTick = 3;
    int maxFrames = 2000;

    /// Nobody needs a display.
    [[nodiscard]] bool isHeadless() const {
        return runAll || !replayFile.isEmpty() || !scriptFile.isEmpty() || !replayedRecordingFile.isEmpty() ||
               isAboutShading();
    }
    /// No dialog is opened, but shading tables are made or compared.
    [[nodiscard]] bool isAboutShading() const {
        return !measureShadingFile.isEmpty() || !comparedFiles.isEmpty();
    }
};

/// The options, or, when there is nothing to run, a text for the user and the exit code.
struct CommandLine {
    std::optional<Options> options;
    QString text;
    int exitCode = kExitDone;
};

/// Reads the arguments, the first of which is the program's name. A core application must exist.
[[nodiscard]] CommandLine parseCommandLine(QStringList const& arguments);
} // namespace pictara
