#include "tools/headboard-config/command_line.h"

#include "simulator/camera/simulated_camera.h"

#include <QCommandLineParser>

namespace {
struct OptionRow {
    char const* name;
    char const* valueName; // null: a switch
    char const* help;
    char const* fallback;
};

constexpr OptionRow kOptions[] = {
    {"profile", "NAME|FILE", "The simulated sensor (default polynomial).", "polynomial"},
    {"list-profiles", nullptr, "List the simulated sensors and end.", ""},
    {"eeprom", "FILE",
     "The EEPROM's 8192 bytes, read when the file exists and written at the end (default "
     "headboard-eeprom.bin).",
     "headboard-eeprom.bin"},
    {"settings", "FILE", "The host's options and settings (default headboard-config.ini).",
     "headboard-config.ini"},
    {"screenshot", "FILE", "Save a picture of the checked page and end; needs no display.", ""},
};

CommandLine usageError(QString const& what) {
    return {std::nullopt,
            QStringLiteral("headboard-config: %1\nTry \"headboard-config --help\".\n").arg(what.trimmed()),
            kExitUsage};
}
} // namespace

CommandLine parseCommandLine(QStringList const& arguments) {
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Shows the headboard configuration page on a simulated camera.\n\n"
        "Exit codes: 0 done, 1 the EEPROM or the picture could not be written, 2 bad command line or file, "
        "130 interrupted."));
    parser.addHelpOption();
    for (OptionRow const& row : kOptions)
        parser.addOption({QString::fromLatin1(row.name), QString::fromLatin1(row.help),
                          QString::fromLatin1(row.valueName ? row.valueName : ""),
                          QString::fromLatin1(row.fallback)});
    if (!parser.parse(arguments))
        return usageError(parser.errorText());
    if (parser.isSet(QStringLiteral("help")))
        return {std::nullopt, parser.helpText(), kExitDone};
    if (!parser.positionalArguments().isEmpty())
        return usageError(
            QStringLiteral("\"%1\" is not an option.").arg(parser.positionalArguments().first()));
    if (parser.isSet(QStringLiteral("list-profiles")))
        return {std::nullopt, simulator::SimulatedCamera::notedProfileNames().join(QLatin1Char('\n')) + '\n',
                kExitDone};
    return {Options{.profile = parser.value(QStringLiteral("profile")),
                    .eepromFile = parser.value(QStringLiteral("eeprom")),
                    .settingsFile = parser.value(QStringLiteral("settings")),
                    .screenshotFile = parser.value(QStringLiteral("screenshot"))},
            {},
            kExitDone};
}
