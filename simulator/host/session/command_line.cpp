#include "simulator/host/session/command_line.h"

#include "simulator/host/session/light_ranges.h"

#include <QCommandLineParser>
#include <cmath>
#include <limits>

namespace pictara {
namespace {
struct OptionRow {
    char const* name;
    char const* valueName; // null: a switch
    char const* help;
};

constexpr OptionRow kOptions[] = {
    {"profile", "NAME|FILE", "The simulated sensor (default poly-12bit)."},
    {"list-profiles", nullptr, "List the simulated sensors and end."},
    {"window", nullptr, "Show window and dialog for work by hand (default; wins over --run-all)."},
    {"screenshot", "FILE", "Save a picture of the window after a second or two and end."},
    {"show", "PART,PART",
     "Bring parts of the window to the front at first: calls, states, settings, eeprom; or lay over "
     "the picture: uniformity, cross."},
    {"dark", nullptr, "Show the window in dark colours."},
    {"eeprom", "FILE",
     "What the camera's EEPROM holds, read and written (default eeprom.bin in the output folder)."},
    {"replay-eeprom", "FILE",
     "Replay the correction stored in that EEPROM as a camera does at start-up, and measure it."},
    {"stored-record", "NAME",
     "The stored record to be replayed (default: the first one). It holds 8 letters of its label."},
    {"fault", "NAME[@N][+]",
     "Let the N-th operation on the EEPROM after the dialog's opening go wrong (power-cut: after N stored "
     "bytes), with a + all later ones, too. Without @N: the first operation of a run's save."},
    {"list-faults", nullptr, "List what can go wrong with the EEPROM and end."},
    {"run-all", nullptr, "Calibrate without a window and end with a summary."},
    {"script", "FILE", "Work the dialog by the commands in that file, without a window."},
    {"record", "FILE", "Keep every call between host, plug-in and libraries of a run or a script."},
    {"replay", "FILE", "Do to the plug-in what was recorded, and name the first call that differs."},
    {"then-good", nullptr, "In a run, mend the light after a refused picture and calibrate again."},
    {"shading", "FILE", "Put a measured lens before the sensor."},
    {"measure-shading", "FILE",
     "Write the shading of the simulated camera's flat field as a table for --shading, at 2856, 4000 and "
     "6500 K "
     "or at that of --light, and end."},
    {"flat-field", "FILE",
     "For --measure-shading: a recorded flat field of the profile's sensor, a 16-bit greyscale PNG or bare "
     "samples, taken at the --light."},
    {"compare-shading", "A B", "Lay two shading tables side by side in a report, and end."},
    {"light", "KELVIN",
     "Colour temperature of the lamp, 2000 to 12000 (default 5000; in a replay, that of the "
     "calibration). Not for a run on a page that names its lights."},
    {"level", "FACTOR", "Luminance relative to the lamp's normal level, 0.001 to 10000 (default 1)."},
    {"gradient", "X", "Relative rise of the luminance from left to right, -1 to 1 (default 0)."},
    {"object", nullptr, "Put a dark disc into the picture."},
    {"seed", "N", "Seed of the camera's noise (default 1)."},
    {"falloff", "PERCENT",
     "Luminance that the corners may keep, 75 to 110 in steps of 5 (default: the dialog's setting)."},
    {"output", "DIR", "Folder for the results, created when needed (default pictara-output)."},
    {"ini", "FILE", "The host's ini file with its presets (default: the one beside the program)."},
    {"settings", "FILE", "The settings store (default settings.ini in the output folder)."},
    {"plugin", "FILE", "The plug-in (default KestraMfr beside the program)."},
    {"frames-per-tick", "N", "Frames between two ticks of the page in a run, 1 to 100 (default 3)."},
    {"max-frames", "N", "Frames after which a run is given up (default 2000)."},
};

// Reads values and tells the first that is wrong in an error text, which is empty before. Borrows both.
class ValueReader {
public:
    ValueReader(QCommandLineParser const& parser, QString* error) : m_parser(parser), m_error(error) {}

    void text(char const* name, QString& value) {
        if (!isSet(name))
            return;
        value = raw(name);
        if (value.isEmpty())
            reject(name, QStringLiteral("a name that is not empty"));
    }

    void number(char const* name, Range const& range, double& value) {
        if (!isSet(name))
            return;
        bool ok = false;
        double const read = raw(name).toDouble(&ok);
        if (ok && std::isfinite(read) && read >= range.low && read <= range.high)
            value = read;
        else
            reject(name, QStringLiteral("a number from %1 to %2").arg(range.low).arg(range.high));
    }

    void integer(char const* name, int low, int high, int& value, int step = 1) {
        if (!isSet(name))
            return;
        bool ok = false;
        int const read = raw(name).toInt(&ok);
        if (ok && read >= low && read <= high && (read - low) % step == 0)
            value = read;
        else
            reject(name, QStringLiteral("a whole number from %1 to %2%3")
                             .arg(low)
                             .arg(high)
                             .arg(step > 1 ? QStringLiteral(" in steps of %1").arg(step) : QString()));
    }

    void seed(char const* name, uint64_t& value) {
        if (!isSet(name))
            return;
        bool ok = false;
        value = raw(name).toULongLong(&ok);
        if (!ok)
            reject(name, QStringLiteral("a whole number that is not negative"));
    }

    void fault(char const* name, std::optional<FaultWish>& value) {
        if (!isSet(name))
            return;
        if (auto const wish = parseFaultWish(raw(name)); wish && canStrike(*wish))
            value = wish;
        else
            reject(name, QStringLiteral("NAME, NAME@N, NAME+ or NAME@N+ with N from 1"));
    }

    [[nodiscard]] bool isSet(char const* name) const { return m_parser.isSet(QString::fromLatin1(name)); }

private:
    [[nodiscard]] QString raw(char const* name) const { return m_parser.value(QString::fromLatin1(name)); }

    void reject(char const* name, QString const& expected) {
        if (m_error->isEmpty())
            *m_error = QStringLiteral("--%1 takes %2, not \"%3\".")
                           .arg(QString::fromLatin1(name), expected, raw(name));
    }

    QCommandLineParser const& m_parser;
    QString* m_error;
};

CommandLine usageError(QString const& what) {
    return {std::nullopt,
            QStringLiteral("pictara-sim: %1\nTry \"pictara-sim --help\".\n").arg(what.trimmed()), kExitUsage};
}

bool wantsWindow(ValueReader const& reader) { return reader.isSet("window") || reader.isSet("screenshot"); }

// A recording tells all but the plug-in that it is tried on.
bool takesAllFromRecording(ValueReader const& reader, QString* error) {
    for (OptionRow const& row : kOptions) {
        QLatin1String const name(row.name);
        if (name != QLatin1String("replay") && name != QLatin1String("plugin") && reader.isSet(row.name)) {
            *error = QStringLiteral("--replay takes all from the recording; --%1 is not for it.").arg(name);
            return false;
        }
    }
    return true;
}

// False for what cannot be had together, or at all without something else.
bool isConsistent(ValueReader const& reader, Options const& options, QString* error) {
    bool const replays = reader.isSet("replay-eeprom"), isScripted = reader.isSet("script");
    struct {
        bool isThere;
        char const* told;
    } const conflicts[] = {
        {replays && wantsWindow(reader), "--replay-eeprom shows no window."},
        {reader.isSet("measure-shading") && reader.isSet("compare-shading"),
         "--measure-shading and --compare-shading are two runs."},
        {(reader.isSet("measure-shading") || reader.isSet("compare-shading")) &&
             (replays || wantsWindow(reader)),
         "Shading tables are made and compared without a window or a replay."},
        {reader.isSet("flat-field") && !reader.isSet("measure-shading"),
         "--flat-field is for --measure-shading."},
        {replays && reader.isSet("eeprom"),
         "--replay-eeprom leaves its file as it is; --eeprom is not for it."},
        {!replays && reader.isSet("stored-record"), "--stored-record is for --replay-eeprom."},
        {isScripted && (replays || wantsWindow(reader)),
         "--script walks its own way: --replay-eeprom and --window are not for it."},
        {reader.isSet("record") && !options.runAll && !isScripted, "--record needs --run-all or --script."},
        {options.fault && !options.fault->operation && !options.runAll,
         "--fault without @N strikes when a run saves: it needs --run-all."},
        {reader.isSet("then-good") && !options.runAll, "--then-good is for --run-all."},
        {(reader.isSet("show") || reader.isSet("dark")) && options.isHeadless(),
         "--show and --dark are for the window."},
    };
    if (reader.isSet("replay"))
        return takesAllFromRecording(reader, error);
    for (auto const& conflict : conflicts)
        if (conflict.isThere) {
            *error = QString::fromLatin1(conflict.told);
            return false;
        }
    return true;
}

Options readOptions(ValueReader& reader) {
    Options options;
    options.listProfiles = reader.isSet("list-profiles");
    options.listFaults = reader.isSet("list-faults");
    bool const isAboutShading = reader.isSet("measure-shading") || reader.isSet("compare-shading");
    bool const isOtherRun = isAboutShading || reader.isSet("replay-eeprom") || reader.isSet("script");
    options.runAll = reader.isSet("run-all") && !wantsWindow(reader) && !isOtherRun;
    options.thenGood = reader.isSet("then-good");
    options.objectInPicture = reader.isSet("object");
    reader.text("profile", options.profile);
    reader.text("shading", options.shadingFile);
    reader.text("measure-shading", options.measureShadingFile);
    reader.text("flat-field", options.flatFieldFile);
    reader.text("screenshot", options.screenshotFile);
    QString parts;
    reader.text("show", parts);
    options.shownParts = parts.split(QLatin1Char(','), Qt::SkipEmptyParts);
    options.dark = reader.isSet("dark");
    reader.text("output", options.outputFolder);
    reader.text("ini", options.iniFile);
    reader.text("settings", options.settingsFile);
    reader.text("plugin", options.pluginFile);
    reader.text("eeprom", options.eepromFile);
    reader.text("replay-eeprom", options.replayFile);
    reader.text("stored-record", options.recordName);
    reader.text("record", options.recordingFile);
    reader.text("replay", options.replayedRecordingFile);
    reader.text("script", options.scriptFile);
    reader.fault("fault", options.fault);
    options.chooseProfile =
        !options.isHeadless() && !isAboutShading && !reader.isSet("profile") && !reader.isSet("screenshot");
    if (reader.isSet("light"))
        reader.number("light", kColourTemperatures, options.lightKelvin.emplace(0));
    reader.number("level", kLevels, options.lightLevel);
    reader.number("gradient", kGradients, options.lightGradient);
    reader.seed("seed", options.seed);
    reader.integer("frames-per-tick", 1, 100, options.framesPerTick);
    reader.integer("max-frames", 1, std::numeric_limits<int>::max(), options.maxFrames);
    if (reader.isSet("falloff"))
        reader.integer("falloff", 75, 110, options.falloffPercent.emplace(0), 5); // what the dialog offers
    return options;
}
} // namespace

CommandLine parseCommandLine(QStringList const& arguments) {
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Runs the lens-shading calibration dialog on a simulated camera.\n\n"
        "Exit codes: 0 done, 1 not calibrated, 2 bad command line or file, 3 too many frames;\n"
        "picture refused: 4 too dark, 5 clipped, 6 not flat, 7 wrong size;\n"
        "calibrated, but: 8 the uniformity is beyond the dialog's limit (of a replay, too), 9 not saved;\n"
        "130 interrupted.\n"
        "Of a replay: 0 all calls are equal, 1 one differs. Of a script: 1 a command failed, 3 a wait "
        "ended in vain."));
    parser.addHelpOption();
    for (OptionRow const& row : kOptions)
        parser.addOption({QString::fromLatin1(row.name), QString::fromLatin1(row.help),
                          QString::fromLatin1(row.valueName ? row.valueName : "")});
    if (!parser.parse(arguments))
        return usageError(parser.errorText());
    if (parser.isSet(QStringLiteral("help")))
        return {std::nullopt, parser.helpText(), kExitDone};
    // The second table of a comparison belongs to no option.
    QStringList others = parser.positionalArguments();
    QStringList compared = parser.values(QStringLiteral("compare-shading"));
    if (compared.size() == 1 && !others.isEmpty())
        compared.append(others.takeFirst());
    if (!others.isEmpty())
        return usageError(QStringLiteral("\"%1\" is not an option.").arg(others.first()));
    if (compared.size() != 0 && compared.size() != 2)
        return usageError(QStringLiteral("--compare-shading takes two files."));

    QString error;
    ValueReader reader(parser, &error);
    Options options = readOptions(reader);
    options.comparedFiles = compared;
    if (!error.isEmpty() || !isConsistent(reader, options, &error))
        return usageError(error);
    return {options, {}, kExitDone};
}
} // namespace pictara
