#pragma once

#include "tools/shading/mosaic.h"
#include "tools/shading/telling.h"

#include <QStringList>

namespace shading {
/// Exit codes of the program.
enum ExitCode : int {
    kDone = 0,
    kNothingFound = 1, ///< nothing could be measured or solved of what the files hold, or it fails a limit
    kUnusable = 2,     ///< bad command line, or a file that cannot be used or written
    // A picture is no flat field:
    kTooDark = 4,
    kClipped = 5,
    kNotFlat = 6,
    kInterrupted = 130,
};

/// The luminance that the corners may keep, percent of the centre's, as the dialog offers it.
inline constexpr int kLeastFalloff = 50, kMostFalloff = 125;

/// What the program is asked for.
struct Request {
    QStringList files = {};  ///< pictures, tables or a folder
    QStringList turned = {}; ///< pictures that were taken with the camera turned by half a turn
    QString output = {};
    QString tuning = {}; ///< a file of tuning tables; empty: none
    QString page = {};   ///< a file; empty: none
    bool isJson = false;
    QString sensor = {};               ///< the name or file of a simulated one's profile
    Coding coding = {};                ///< of the pictures
    std::optional<double> kelvin = {}; ///< of the lamp
    int falloff = 95;                  ///< percent; the dialog's
};

/// A command: what it found, or nothing with a message for the user, and then no output is left. `exitCode`
/// changes when files can be used but do not hold what is looked for.
using Run = std::optional<pictara::Certificate>(Request const& request, int* exitCode, QString* error);

/// Tells of each picture whether it is usable as a flat field and, where it is not, why and what helps.
/// `exitCode` is that of the worst one.
[[nodiscard]] Run check;

/// Measures the shading that pictures of flat fields show, and writes the table: of each lamp, which the
/// files' names tell if not the request, the mean of its pictures, without those that are no flat field and
/// those that differ from the others, which are named. With turned pictures it is that of the lens alone;
/// without any it is that of the sensor.
[[nodiscard]] Run measure;

/// Tells a picture's colour uniformity as the dialog measures and rates it, and where it is worst. Where the
/// coding tells size or phase, the picture is a raw one whatever it seems to be.
[[nodiscard]] Run rate;

/// Lets the calibration library solve the flat field that a sensor shows behind a table's lens, under one
/// lamp (if not told the table's middle one) or, for a sensor with three tables, under three; writes the
/// results file that the dialog saves. Tells the registers, what they leave, and what each falloff costs.
[[nodiscard]] Run solve;

/// Lays two tables side by side.
[[nodiscard]] Run compare;

/// Tells the correction of each unit of a folder, of which results files (.ini) and EEPROM images are read,
/// by its serial number, how it changes over the units, and which of them fall out. Files that hold no
/// correction of the sensor are told with the cause.
[[nodiscard]] Run units;
} // namespace shading
