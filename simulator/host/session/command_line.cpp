#include "simulator/host/session/command_line.h"

#include "simulator/host/session/message_log.h"

#include <QCommandLineParser>
#include <algorithm>

namespace pictara {
namespace {
// Each puts a value into the options, or returns what the option takes.
using Read = QString (*)(QString const& value, Options& options);

template <auto Member>
QString setSwitch(QString const&, Options& options) {
    options.*Member = true;
    return {};
}

template <auto Member>
QString setText(QString const& value, Options& options) {
    options.*Member = value;
    return value.isEmpty() ? QStringLiteral("a name that is not empty") : QString();
}

template <auto Member, Range const& Range>
QString setNumber(QString const& value, Options& options) {
    auto const number = numberIn(Range, value);
    options.*Member = number.value_or(0);
    return number ? QString() : QStringLiteral("a number from %1 to %2").arg(Range.low).arg(Range.high);
}

QString setSeed(QString const& value, Options& options) {
    bool ok = false;
    options.seed = value.toULongLong(&ok);
    return ok ? QString() : QStringLiteral("a whole number that is not negative");
}

QString setFault(QString const& value, Options& options) {
    options.fault = parseFaultWish(value);
    return options.fault ? QString()
                         : QStringLiteral("NAME, NAME@N, NAME+ or NAME@N+ with N from 1 and NAME one of %1")
                               .arg(simulator::SimulatedCamera::faultNames().join(QLatin1String(", ")));
}

struct OptionRow {
    char const* name;
    char const* valueName; // null: a switch
    char const* help;
    Read read;
    bool isRun = false; // instead of the window
};

struct OptionGroup {
    char const* title;
    std::initializer_list<OptionRow> rows;
};

OptionGroup const kGroups[] = {
    {"What to do (default: a window with the dialog, for work by hand)",
     {{"run-all", nullptr, "Calibrate without a window, unless another run is asked for.",
       setSwitch<&Options::runAll>},
      {"script", "FILE", "Work the dialog by the commands in that file.", setText<&Options::scriptFile>,
       true},
      {"replay", "FILE", "Give recorded inputs again, and name the first call that differs.",
       setText<&Options::replayedRecordingFile>, true},
      {"replay-eeprom", "FILE", "Start the camera up from that EEPROM, and measure its correction.",
       setText<&Options::replayFile>, true},
      {"record", "FILE", "Keep all inputs and calls of --run-all or --script.",
       setText<&Options::recordingFile>},
      {"list-profiles", nullptr, "List the simulated sensors.", setSwitch<&Options::listProfiles>}}},
    {"Camera and light",
     {{"profile", "NAME|FILE", "The simulated sensor (default polynomial).", setText<&Options::profile>},
      {"shading", "FILE", "Put a measured lens before the sensor.", setText<&Options::shadingFile>},
      {"light", "KELVIN", "Colour temperature of the lamp (default 5000).",
       setNumber<&Options::lightKelvin, kColourTemperatures>},
      {"level", "FACTOR", "Luminance relative to the lamp's normal level.",
       setNumber<&Options::lightLevel, kLevels>},
      {"gradient", "X", "Rise of the luminance from left to right, -1 to 1.",
       setNumber<&Options::lightGradient, kGradients>},
      {"object", nullptr, "Put a dark disc into the picture.", setSwitch<&Options::objectInPicture>},
      {"seed", "N", "Seed of the camera's noise (default 1).", setSeed},
      {"fault", "NAME[@N][+]", "Let the EEPROM's N-th operation fail, with + all later ones, too.",
       setFault}}},
    {"Limits",
     {{"limit", "AB", "For the colour uniformity, instead of the dialog's.",
       setNumber<&Options::uniformityLimit, kUniformityLimits>},
      {"luminance-limit", "PERCENT", "For the luminance off its target shape (default 10).",
       setNumber<&Options::luminanceLimit, kLuminanceLimits>}}},
    {"Files",
     {{"output", "DIR", "Folder for the results (default pictara-output).", setText<&Options::outputFolder>},
      {"append", "FILE.csv", "Add a line for the board to a table.", setText<&Options::boardsFile>},
      {"eeprom", "FILE", "What the EEPROM holds (default eeprom.bin in the output folder).",
       setText<&Options::eepromFile>},
      {"ini", "FILE", "The host's presets (default pictara.ini beside the program).",
       setText<&Options::iniFile>},
      {"plugin", "FILE", "The plug-in (default KestraMfr beside the program).",
       setText<&Options::pluginFile>}}},
};

constexpr char kExitCodes[] =
    "Exit codes: 0 pass, 10 marginal, 8 fail, 9 calibrated but not saved, 1 not calibrated;\n"
    "picture refused: 4 too dark, 5 clipped, 6 not flat, 7 wrong size; 2 bad command line or file,\n"
    "3 too many frames, 130 interrupted. Of --replay: 0 all calls are equal, 1 one differs. Of\n"
    "--script: 1 a command failed, 3 a wait ended in vain, 0 without a verdict, too.\n";

template <typename Use>
void forEachOption(Use use) {
    for (OptionGroup const& group : kGroups)
        for (OptionRow const& row : group.rows)
            use(row);
}

QString helpText() {
    QString text = QStringLiteral("Runs the lens-shading calibration dialog on a simulated camera.\n\n"
                                  "usage: pictara-sim [options]\n");
    for (OptionGroup const& group : kGroups) {
        text += QStringLiteral("\n%1:\n").arg(QLatin1String(group.title));
        for (OptionRow const& row : group.rows) {
            QString const name = QLatin1String(row.name) + QLatin1Char(' ') + QLatin1String(row.valueName);
            text += QStringLiteral("  --%1 %2\n").arg(name, -24).arg(QLatin1String(row.help));
        }
    }
    return text +
           QStringLiteral("\nFaults: %1.\nWithout @N the first operation of a run's save fails.\n\n")
               .arg(simulator::SimulatedCamera::faultNames().join(QLatin1String(", "))) +
           QLatin1String(kExitCodes);
}

CommandLine usageError(QString const& what) {
    return {std::nullopt,
            QStringLiteral("pictara-sim: %1\nTry \"pictara-sim --help\".\n").arg(what.trimmed()), kExitUsage};
}

// What cannot be had together, or at all without something else; empty when all is well.
QString conflictIn(QStringList const& given, QStringList const& runs, Options const& options) {
    auto const has = [&](char const* name) { return given.contains(QLatin1String(name)); };
    if (runs.size() > 1)
        return QStringLiteral("--%1 and --%2 are two runs.").arg(runs[0], runs[1]);
    if (has("replay"))
        for (QString const& name : given)
            if (name != QLatin1String("replay") && name != QLatin1String("plugin"))
                return QStringLiteral("--replay takes all from the recording; --%1 is not for it.").arg(name);
    struct {
        bool isThere;
        char const* told;
    } const conflicts[] = {
        {has("replay-eeprom") && has("eeprom"),
         "--replay-eeprom leaves its file as it is; --eeprom is not for it."},
        {has("append") && !options.runAll && !has("script") && !has("replay-eeprom"),
         "--append needs --run-all, --script or --replay-eeprom."},
        {has("luminance-limit") && has("replay-eeprom"),
         "An EEPROM does not tell its falloff; --luminance-limit is not for it."},
        {has("limit") && has("script"), "A script sets GoodCU; --limit is not for it."},
        {has("record") && !options.runAll && !has("script"), "--record needs --run-all or --script."},
        {options.fault && !options.fault->operation && !options.runAll,
         "--fault without @N strikes when a run saves: it needs --run-all."},
    };
    auto const* const found =
        std::find_if(std::begin(conflicts), std::end(conflicts), [](auto const& row) { return row.isThere; });
    return found == std::end(conflicts) ? QString() : QString::fromLatin1(found->told);
}
} // namespace

ExitCode refuse(QString const& why) {
    complain(why);
    return kExitUsage;
}

simulator::Light lightOf(Options const& options) {
    constexpr double kUsualLamp = 5000; // kelvin
    return {options.lightKelvin.value_or(kUsualLamp), options.lightLevel, options.lightGradient,
            options.objectInPicture};
}

CommandLine parseCommandLine(QStringList const& arguments) {
    QCommandLineParser parser;
    parser.addHelpOption();
    forEachOption([&](OptionRow const& row) {
        parser.addOption({QString::fromLatin1(row.name), {}, QString::fromLatin1(row.valueName)});
    });
    if (!parser.parse(arguments))
        return usageError(parser.errorText());
    if (parser.isSet(QStringLiteral("help")))
        return {std::nullopt, helpText(), kExitDone};

    Options options;
    QStringList given, runs, wrong;
    forEachOption([&](OptionRow const& row) {
        QString const name = QString::fromLatin1(row.name);
        if (!parser.isSet(name))
            return;
        given << name;
        if (row.isRun)
            runs << name;
        QString const value = row.valueName ? parser.value(name) : QString();
        if (QString const expected = row.read(value, options); !expected.isEmpty())
            wrong << QStringLiteral("--%1 takes %2, not \"%3\".").arg(name, expected, value);
    });
    if (QStringList const others = parser.positionalArguments(); !others.isEmpty())
        return usageError(QStringLiteral("\"%1\" is not an option.").arg(others.first()));
    options.runAll = options.runAll && runs.isEmpty();
    options.chooseProfile = !options.isHeadless() && !given.contains(QStringLiteral("profile"));
    if (wrong.isEmpty())
        wrong << conflictIn(given, runs, options);
    return wrong.first().isEmpty() ? CommandLine{options, {}, kExitDone} : usageError(wrong.first());
}
} // namespace pictara
