#pragma once

#include <QString>
#include <QStringList>
#include <optional>

/// Exit codes of the program.
enum ExitCode : int {
    kExitDone = 0,
    kExitNotSaved = 1,      ///< the EEPROM's file, or the picture, could not be written
    kExitUsage = 2,         ///< bad command line, or a file that is missing or malformed
    kExitInterrupted = 130, ///< by Ctrl-C, a request to terminate or the end of the terminal; all is kept
};

/// What the user asked for. File names are as typed.
struct Options {
    QString profile;
    QString eepromFile;
    QString settingsFile;
    QString screenshotFile; ///< empty: the window stays open for work by hand
};

/// The options, or, when there is nothing to run, a text for the user and the exit code.
struct CommandLine {
    std::optional<Options> options;
    QString text;
    int exitCode = kExitDone;
};

/// Reads the arguments, the first of which is the program's name. A core application must exist.
[[nodiscard]] CommandLine parseCommandLine(QStringList const& arguments);
