#include "tools/shading/command_line.h"

#include "simulator/files/interruption.h"
#include "simulator/files/whole_file.h"
#include "simulator/host/session/words.h"

#include <QCommandLineParser>
#include <QFileInfo>
#include <QRegularExpression>
#include <algorithm>
#include <cmath>

namespace shading {
namespace {
using pictara::Certificate;

Outcome usageError(QString const& what) {
    return {kUnusable, {}, what.trimmed() + QStringLiteral("\nTry \"shading --help\".")};
}

// A failure's exit code is that of a file that cannot be used, unless the command changes it.
struct Command {
    char const* name;
    char const* arguments;
    int fewest, most; ///< arguments
    Run* run;
    char const* help;
};
constexpr int kMany = 100'000;
constexpr Command kCommands[] = {
    {"check", "PICTURE...", 1, kMany, check,
     "whether pictures are usable as flat fields, and what helps where they are not"},
    {"measure", "[PICTURE... [--turned PICTURE...]] -o TABLE", 0, kMany, measure,
     "the table of shading of pictures, the mean of each lamp's; --turned stands before those that\n"
     "      were taken with the camera turned by half a turn, which tell the lens from the lamp;\n"
     "      without pictures, that of the simulated --sensor"},
    {"rate", "PICTURE", 1, 1, rate,
     "the dialog's colour uniformity of a picture, raw or one that can be shown, and its worst block"},
    {"solve", "TABLE --sensor PROFILE -o RESULTS.ini", 1, 1, solve,
     "registers that correct a table's lens, what they leave, and what each falloff costs"},
    {"compare", "TABLE TABLE", 2, 2, compare, "two tables of shading side by side"},
    {"units", "FOLDER --sensor PROFILE", 1, 1, units,
     "the corrections of many units (results files and EEPROM images), and those that fall out"},
};

// Puts a value into the request, or returns what the option takes.
using Read = QString (*)(QString const& value, Request& request);

QString setText(QString const& value, QString& member) {
    member = value;
    return value.isEmpty() ? QStringLiteral("a name that is not empty") : QString();
}

template <typename Member>
QString setNumber(QString const& value, pictara::Range const& range, Member& member) {
    auto const number = numberIn(range, value);
    member = Member(number.value_or(0));
    bool const isIt = number && (!std::is_same_v<Member, int> || *number == std::floor(*number));
    return isIt ? QString() : QStringLiteral("a number from %1 to %2").arg(range.low).arg(range.high);
}

QString setPhase(QString const& value, Request& request) {
    request.coding.phase = phaseNamed(value);
    return request.coding.phase ? QString() : QStringLiteral("RGGB, GRBG, GBRG or BGGR");
}

QString setFormat(QString const& value, Request& request) {
    request.tuning = QStringLiteral(".tuning.json"); // behind the table's name
    return value == QLatin1String("tuning") ? QString() : QStringLiteral("tuning");
}

QString setBare(QString const& value, Request& request) {
    static QRegularExpression const form(QStringLiteral("^(\\d{2,5})x(\\d{2,5}),(8|10|12|14|16),(\\w{4})$"));
    auto const match = form.match(value);
    auto const part = [&](int i) { return match.captured(i).toUInt(); };
    request.coding.bare = Coding::Bare{part(1), part(2), part(3)};
    return setPhase(match.captured(4), request).isEmpty()
               ? QString()
               : QStringLiteral("WIDTHxHEIGHT,BITS,PHASE such as 4000x3000,12,RGGB");
}

struct OptionRow {
    char const* names;     ///< the long one first
    char const* valueName; ///< null: a switch
    char const* commands;  ///< that know it
    char const* help;
    Read read;
    char const* needed = ""; ///< by these commands
};
using V = QString const&;
using R = Request&;
constexpr pictara::Range kFalloffs = {kLeastFalloff, kMostFalloff}, kCounts = {0, 65535};
constexpr char kAll[] = "check measure rate solve compare units";
constexpr char kPictures[] = "check measure rate";
constexpr OptionRow kOptions[] = {
    {"json", nullptr, kAll, "Print figures for scripts instead of text.",
     [](V, R r) { return r.isJson = true, QString(); }},
    {"page", "FILE", kAll, "Write a page of HTML with maps.", [](V v, R r) { return setText(v, r.page); }},
    {"output o", "FILE", "measure solve", "What is written.", [](V v, R r) { return setText(v, r.output); },
     "measure solve"},
    {"light", "KELVIN", "measure solve",
     "The lamp. Of pictures in place of what their names tell (..._2856k_...), of a simulated sensor in "
     "place "
     "of 2856, 4000 and 6500 K, of a table to solve in place of its middle one.",
     [](V v, R r) { return setNumber(v, pictara::kColourTemperatures, r.kelvin); }},
    {"format", "tuning", "measure",
     "Write TABLE.tuning.json, too: per lamp the gains of red and blue over green, the smallest 1, and those "
     "of green, on 16 x 12 cells.",
     setFormat},
    {"raw", "WxH,BITS,PHASE", kPictures, "Bare samples: 8 bits, or 10 to 16 in little-endian words.",
     setBare},
    {"phase", "RGGB", kPictures, "The colours of the first two rows.", setPhase},
    {"black", "COUNTS", kPictures, "The black level.",
     [](V v, R r) { return setNumber(v, kCounts, r.coding.black); }},
    {"white", "COUNTS", kPictures, "The white level, at which samples are clipped.",
     [](V v, R r) { return setNumber(v, kCounts, r.coding.white); }},
    {"sensor", "PROFILE", "check measure rate solve units",
     "A simulated sensor, in place of these four; without pictures, itself.",
     [](V v, R r) { return setText(v, r.sensor); }, "solve units"},
    {"falloff", "PERCENT", "solve", "The luminance that the corners may keep, 50 to 125 (default 95).",
     [](V v, R r) { return setNumber(v, kFalloffs, r.falloff); }},
};

QString nameOf(OptionRow const& row) { return QString(row.names).section(' ', 0, 0); }

bool isAmong(char const* names, QString const& name) {
    return QString::fromLatin1(names).split(' ').contains(name);
}

QString description() {
    QString text = QStringLiteral("Tells of raw pictures of a flat field what lens and lamp do to them.\n\n"
                                  "Commands:\n");
    for (Command const& command : kCommands)
        text += QStringLiteral("  %1 %2\n      %3\n").arg(command.name, command.arguments, command.help);
    return text +
           QStringLiteral("\nA picture is a DNG or a maker's raw file, a PNG or TIFF of 16 bits in one\n"
                          "channel, or bare samples. What options tell of it holds before what it\n"
                          "tells of itself.\n"
                          "\nExit codes: 0 done, 1 nothing could be found or solved, or a picture fails\n"
                          "its limit, 2 bad command line or a file that cannot be used, 130 interrupted;\n"
                          "of check, that of the worst picture: 4 too dark, 5 clipped, 6 not flat.");
}

// Why nothing can be written where the request wants it, told now and not after the work; empty for nothing.
QString faultOfOutputs(Request const& request) {
    QStringList taken = request.files + request.turned << request.sensor;
    auto const placeOf = [](QString const& file) {
        QFileInfo const info(file);
        return info.exists() ? info.canonicalFilePath() : info.absoluteFilePath();
    };
    for (QString const& file : {request.output, request.page, request.tuning}) {
        QString error;
        if (!file.isEmpty() && !files::isReplaceable(file, &error))
            return error;
        for (QString const& other : qAsConst(taken))
            if (!file.isEmpty() && !other.isEmpty() && placeOf(file) == placeOf(other))
                return file + QStringLiteral(": it is read or written, too, and would be replaced");
        taken << file;
    }
    return {};
}

Outcome runCommand(Command const& command, Request& request) {
    int const count = int(request.files.size() + request.turned.size());
    if (count < command.fewest || count > command.most)
        return usageError(QStringLiteral("The command is: %1 %2")
                              .arg(QLatin1String(command.name), QLatin1String(command.arguments)));
    if (!request.tuning.isEmpty())
        request.tuning.prepend(request.output);
    QString error = faultOfOutputs(request);
    bool const isOfSensor = isAmong(kPictures, command.name) && count != 0 && !request.sensor.isEmpty();
    if (!error.isEmpty() || (isOfSensor && !fillCoding(request.coding, request.sensor, &error)))
        return {kUnusable, {}, error};
    int exitCode = kDone;
    std::optional<Certificate> certificate = command.run(request, &exitCode, &error);
    if (files::isInterrupted())
        return {kInterrupted, {}, QStringLiteral("Interrupted.")};
    if (!certificate)
        return {exitCode == kDone ? kUnusable : exitCode, {}, error};
    certificate->run = QLatin1String(command.name);
    QJsonObject facts;
    for (auto const& [label, text] : certificate->facts)
        facts[label] = text;
    certificate->figures["facts"] = facts;
    if (!request.page.isEmpty() && !files::replace(request.page, certificatePage(*certificate), &error))
        return {kUnusable, {}, error};
    return {exitCode,
            request.isJson ? QString::fromUtf8(certificateJson(*certificate)) : certificateText(*certificate),
            {}};
}
} // namespace

Outcome runCommandLine(QStringList const& arguments) {
    QCommandLineParser parser;
    parser.setApplicationDescription(description());
    parser.addHelpOption();
    parser.addPositionalArgument("COMMAND", "One of the commands above.");
    parser.addPositionalArgument("FILE", "What it is about.", "FILE...");
    for (OptionRow const& row : kOptions) {
        QString const whose =
            row.commands == kAll ? QString() : QString(row.commands).replace(' ', ", ") + ": ";
        parser.addOption({QString(row.names).split(' '), whose + row.help, row.valueName});
    }
    parser.addOption({"turned", "measure: what follows was taken with the camera turned by half a turn."});
    // The parser knows no places: a word that is no file's name stands for the one before the turned
    // pictures.
    QString const turned(QChar::Null);
    QStringList all = arguments;
    if (int const place = all.indexOf(QStringLiteral("--turned")); place >= 0)
        all[place] = turned;
    if (!parser.parse(all))
        return usageError(parser.errorText());
    if (parser.isSet(QStringLiteral("help")))
        return {kDone, parser.helpText(), {}};
    QStringList const words = parser.positionalArguments();
    QString const name = words.value(0);
    auto const* const command =
        std::find_if(std::begin(kCommands), std::end(kCommands),
                     [&](Command const& row) { return name == QLatin1String(row.name); });
    if (command == std::end(kCommands))
        return usageError(words.isEmpty() ? QStringLiteral("A command is needed.")
                                          : QStringLiteral("\"%1\" is no command.").arg(name));
    Request request;
    for (OptionRow const& row : kOptions) {
        QString const option = QStringLiteral("--") + nameOf(row);
        QString const value = row.valueName ? parser.value(nameOf(row)) : QString();
        if (!parser.isSet(nameOf(row))) {
            if (isAmong(row.needed, name))
                return usageError(QStringLiteral("%1 %2 is needed.").arg(option, row.valueName));
        } else if (!isAmong(row.commands, name)) {
            return usageError(QStringLiteral("%1 is not for %2.").arg(option, name));
        } else if (QString const expected = row.read(value, request); !expected.isEmpty()) {
            return usageError(QStringLiteral("%1 takes %2, not \"%3\".").arg(option, expected, value));
        }
    }
    int const place = words.indexOf(turned);
    request.files = words.mid(1, place - 1); // all when there is none
    request.turned = place < 0 ? QStringList() : words.mid(place + 1);
    if (place >= 0 &&
        (request.files.isEmpty() || request.turned.isEmpty() || name != QLatin1String("measure")))
        return usageError(QStringLiteral("--turned is for measure, between straight and turned pictures."));
    return runCommand(*command, request);
}
} // namespace shading
