#include "tools/shading/command_line.h"

#include "simulator/files/interruption.h"
#include "simulator/files/whole_file.h"
#include "simulator/host/report/certificate.h"
#include "simulator/host/session/words.h"
#include "tools/shading/camera_measurement.h"
#include "tools/shading/check.h"
#include "tools/shading/compare.h"
#include "tools/shading/measure.h"
#include "tools/shading/rate.h"
#include "tools/shading/solve.h"
#include "tools/shading/units.h"

#include <QCommandLineParser>
#include <QFileInfo>
#include <QRegularExpression>
#include <algorithm>

namespace shading {
namespace {
using pictara::Certificate;

struct Request {
    QStringList files, turned; ///< those behind --turned
    QString output, page, sensor, shading, format;
    bool isJson = false;
    std::optional<double> kelvin;
    std::optional<double> level, limit, falloff;
    Coding told; ///< by options of its own; the sensor's holds for the rest
};

Outcome usageError(QString const& what) {
    return {kUnusable, {}, what.trimmed() + QStringLiteral("\nTry \"shading --help\".")};
}

// How the pictures are coded; empty with a message for the user.
std::optional<Coding> codingFor(Request const& request, QString* error) {
    std::optional<Coding> coding = request.sensor.isEmpty() ? Coding{} : codingOf(request.sensor, error);
    if (!coding)
        return std::nullopt;
    Coding const& told = request.told;
    if (told.black)
        coding->blackSource = told.blackSource;
    coding->bare = told.bare ? told.bare : coding->bare;
    coding->phase = told.phase ? told.phase : coding->phase;
    coding->black = told.black ? told.black : coding->black;
    coding->white = told.white ? told.white : coding->white;
    return coding;
}

std::optional<Certificate> runMeasure(Request const& request, int* exitCode, QString* error) {
    TableFile const table{request.output, request.format == QLatin1String("tuning")};
    bool const isCamera = request.files.isEmpty() && request.turned.isEmpty();
    if (isCamera && request.sensor.isEmpty())
        return *error = QStringLiteral("Pictures are needed, or a simulated --sensor."), std::nullopt;
    if (!isCamera && (!request.shading.isEmpty() || request.level))
        return *error = QStringLiteral("--shading and --level are for a simulated camera, without pictures."),
               std::nullopt;
    if (isCamera)
        return measureCamera({.profile = request.sensor,
                              .shadingFile = request.shading,
                              .kelvin = request.kelvin,
                              .level = request.level.value_or(1),
                              .table = table},
                             exitCode, error);
    std::optional<Coding> const coding = codingFor(request, error);
    return coding ? measure({request.files, request.turned, request.kelvin, *coding, table}, exitCode, error)
                  : std::nullopt;
}

// A failure's exit code is that of a file that cannot be used, unless the command changes it.
struct Command {
    char const* name;
    char const* arguments;
    int fewest, most; ///< arguments
    bool hasOutput;   ///< which must be told
    bool hasSensor;   ///< the same
    std::optional<Certificate> (*run)(Request const&, int* exitCode, QString* error);
    char const* help;
};
constexpr int kMany = 100'000;
constexpr Command kCommands[] = {
    {"check", "PICTURE...", 1, kMany, false, false,
     [](Request const& request, int* exitCode, QString* error) {
         std::optional<Coding> const coding = codingFor(request, error);
         return coding ? check(request.files, *coding, exitCode, error) : std::nullopt;
     },
     "whether pictures are usable as flat fields, and what helps where they are not"},
    {"measure", "[PICTURE... [--turned PICTURE...]] -o TABLE", 0, kMany, true, false, runMeasure,
     "the table of shading of pictures, the mean of each lamp's; --turned stands before those that\n"
     "      were taken with the camera turned by half a turn, which tell the lens from the lamp;\n"
     "      without pictures, that of the simulated --sensor"},
    {"rate", "PICTURE", 1, 1, false, false,
     [](Request const& request, int*, QString* error) {
         std::optional<Coding> const coding = codingFor(request, error);
         return coding ? ratePicture({request.files[0], *coding, request.limit.value_or(kUsualLimit)}, error)
                       : std::nullopt;
     },
     "the dialog's colour uniformity of a picture, raw or one that can be shown, and its worst block"},
    {"solve", "TABLE --sensor PROFILE -o RESULTS.ini", 1, 1, true, true,
     [](Request const& request, int* exitCode, QString* error) {
         return solveTable({.table = request.files[0],
                            .sensor = request.sensor,
                            .output = request.output,
                            .falloffPercent = int(request.falloff.value_or(kUsualFalloff)),
                            .kelvin = request.kelvin},
                           exitCode, error);
     },
     "registers that correct a table's lens, what they leave, and what each falloff costs"},
    {"compare", "TABLE TABLE", 2, 2, false, false,
     [](Request const& request, int*, QString* error) { return compare(request.files, error); },
     "two tables of shading side by side"},
    {"units", "FOLDER --sensor PROFILE", 1, 1, false, true,
     [](Request const& request, int* exitCode, QString* error) {
         return tellUnits({request.files[0], request.sensor}, exitCode, error);
     },
     "the corrections of many units (results files and EEPROM images), and those that fall out"},
};

// Puts a value into the request, or returns what the option takes.
using Read = QString (*)(QString const& value, Request& request);

template <auto Member>
QString setText(QString const& value, Request& request) {
    request.*Member = value;
    return value.isEmpty() ? QStringLiteral("a name that is not empty") : QString();
}

template <auto Member, pictara::Range const& Range>
QString setNumber(QString const& value, Request& request) {
    request.*Member = numberIn(Range, value);
    return request.*Member ? QString()
                           : QStringLiteral("a number from %1 to %2").arg(Range.low).arg(Range.high);
}

template <auto Member>
QString setCounts(QString const& value, Request& request) {
    request.told.*Member = pictara::numberIn({0, 65535}, value);
    return request.told.*Member ? QString() : QStringLiteral("counts from 0 to 65535");
}

QString setPhase(QString const& value, Request& request) {
    request.told.phase = phaseNamed(value);
    return request.told.phase ? QString() : QStringLiteral("RGGB, GRBG, GBRG or BGGR");
}

QString setBare(QString const& value, Request& request) {
    static QRegularExpression const form(QStringLiteral("^(\\d{2,5})x(\\d{2,5}),(8|10|12|14|16),(\\w{4})$"));
    auto const match = form.match(value);
    auto const part = [&](int i) { return match.captured(i).toUInt(); };
    request.told.bare = Coding::Bare{part(1), part(2), part(3)};
    return setPhase(match.captured(4), request).isEmpty()
               ? QString()
               : QStringLiteral("WIDTHxHEIGHT,BITS,PHASE such as 4000x3000,12,RGGB");
}

QString setFormat(QString const& value, Request& request) {
    request.format = value;
    return value == QLatin1String("tuning") ? QString() : QStringLiteral("tuning");
}

struct OptionRow {
    char const* name;
    char const* valueName; ///< null: a switch
    char const* commands;  ///< that know it
    char const* help;
    Read read;
};
constexpr pictara::Range kLimits = {0, 100}, kFalloffs = {kLeastFalloff, kMostFalloff};
constexpr char kAll[] = "check measure rate solve compare units";
constexpr char kPictures[] = "check measure rate";
constexpr OptionRow kOptions[] = {
    {"json", nullptr, kAll, "Print figures for scripts instead of text.",
     [](QString const&, Request& request) { return request.isJson = true, QString(); }},
    {"page", "FILE", kAll, "Write a page of HTML with maps.", setText<&Request::page>},
    {"output", "FILE", "measure solve", "What is written (also -o).", setText<&Request::output>},
    {"light", "KELVIN", "measure solve",
     "The lamp, in place of what names tell (..._2856k_...); without pictures in place of\n"
     "                           2856, 4000 and 6500 K.",
     setNumber<&Request::kelvin, pictara::kColourTemperatures>},
    {"shading", "TABLE", "measure", "Without pictures: a measured lens before the sensor.",
     setText<&Request::shading>},
    {"level", "FACTOR", "measure", "Without pictures: the lamp's luminance (default 1).",
     setNumber<&Request::level, pictara::kLevels>},
    {"format", "tuning", "measure",
     "Write TABLE.tuning.json, too: per lamp the gains of red and blue over\n"
     "                           green, the smallest 1, and those of green, on 16 x 12 cells.",
     setFormat},
    {"raw", "WxH,BITS,PHASE", kPictures, "Bare samples: 8 bits, or 10 to 16 in little-endian words.",
     setBare},
    {"phase", "RGGB", kPictures, "The colours of the first two rows.", setPhase},
    {"black", "COUNTS", kPictures, "The black level.", setCounts<&Coding::black>},
    {"white", "COUNTS", kPictures, "The white level, at which samples are clipped.",
     setCounts<&Coding::white>},
    {"sensor", "PROFILE", "check measure rate solve units",
     "A simulated sensor, in place of these four; without pictures, itself.", setText<&Request::sensor>},
    {"limit", "AB", "rate", "The largest colour deviation that passes (default 2).",
     setNumber<&Request::limit, kLimits>},
    {"falloff", "PERCENT", "solve", "The luminance that the corners may keep, 50 to 125 (default 95).",
     setNumber<&Request::falloff, kFalloffs>},
};

bool isAmong(char const* names, QString const& name) {
    return QString::fromLatin1(names).split(' ').contains(name);
}

QString helpText() {
    QString text = QStringLiteral("Tells of raw pictures of a flat field what lens and lamp do to them.\n\n"
                                  "usage: shading COMMAND [options] FILE...\n\nCommands:\n");
    for (Command const& command : kCommands)
        text += QStringLiteral("  %1 %2\n      %3\n")
                    .arg(QLatin1String(command.name), QLatin1String(command.arguments),
                         QLatin1String(command.help));
    text += QStringLiteral("\nOptions:\n");
    for (OptionRow const& row : kOptions) {
        QString const name = QLatin1String(row.name) + QLatin1Char(' ') + QLatin1String(row.valueName);
        text += QStringLiteral("  --%1 %2\n").arg(name, -22).arg(QLatin1String(row.help));
    }
    return text +
           QStringLiteral("\nA picture is a DNG or a maker's raw file, a PNG or TIFF of 16 bits in one\n"
                          "channel, or bare samples. What options tell of it holds before what it\n"
                          "tells of itself.\n"
                          "\nExit codes: 0 done, 1 nothing could be found or solved, 2 bad command line\n"
                          "or a file that cannot be used, 130 interrupted; of check, that of the worst\n"
                          "picture: 4 too dark, 5 clipped, 6 not flat.\n");
}

Outcome finish(Request const& request, std::optional<Certificate> const& certificate, int exitCode,
               QString error) {
    if (files::isInterrupted())
        return {kInterrupted, {}, QStringLiteral("Interrupted.")};
    if (!certificate)
        return {exitCode == kDone ? kUnusable : exitCode, {}, error};
    if (!request.page.isEmpty() && !files::replace(request.page, certificatePage(*certificate), &error))
        return {kUnusable, {}, error};
    return {exitCode,
            request.isJson ? QString::fromUtf8(certificateJson(*certificate)) : certificateText(*certificate),
            {}};
}

Outcome runCommand(Command const& command, Request const& request) {
    int const count = int(request.files.size() + request.turned.size());
    if (count < command.fewest || count > command.most)
        return usageError(QStringLiteral("The command is: %1 %2")
                              .arg(QLatin1String(command.name), QLatin1String(command.arguments)));
    if (command.hasSensor && request.sensor.isEmpty())
        return {kUnusable, {}, QStringLiteral("--sensor is needed: the name or file of a sensor's profile")};
    if (command.hasOutput && request.output.isEmpty())
        return usageError(QStringLiteral("--output tells the file to write."));
    QString error;
    // Told now and not after the work.
    QStringList taken = request.files + request.turned;
    for (QString const& file : {request.output, request.page}) {
        if (!file.isEmpty() && !files::isReplaceable(file, &error))
            return {kUnusable, {}, error};
        for (QString const& other : taken)
            if (QFileInfo(file).absoluteFilePath() == QFileInfo(other).absoluteFilePath())
                return {
                    kUnusable, {}, QStringLiteral("%1: it would be replaced by what is written").arg(other)};
        if (!file.isEmpty())
            taken << file;
    }
    int exitCode = kDone;
    std::optional<Certificate> certificate = command.run(request, &exitCode, &error);
    if (certificate)
        certificate->run = QLatin1String(command.name);
    return finish(request, certificate, exitCode, error);
}
} // namespace

Outcome runCommandLine(QStringList const& arguments) {
    QCommandLineParser parser;
    parser.addHelpOption();
    for (OptionRow const& row : kOptions) {
        QStringList names(QString::fromLatin1(row.name));
        if (names.first() == QLatin1String("output"))
            names << QStringLiteral("o");
        parser.addOption({names, {}, QString::fromLatin1(row.valueName)});
    }
    // What stands behind --turned are pictures of another kind, and the parser knows no places.
    QStringList all = arguments;
    int const turned = arguments.indexOf(QStringLiteral("--turned"));
    int filesBefore = INT_MAX;
    if (turned >= 0) {
        all.removeAt(turned);
        (void)parser.parse(arguments.mid(0, turned));
        filesBefore = int(parser.positionalArguments().size()) - 1; // without the command
    }
    if (!parser.parse(all))
        return usageError(parser.errorText());
    if (parser.isSet(QStringLiteral("help")))
        return {kDone, helpText(), {}};
    QStringList const words = parser.positionalArguments();
    auto const* const command =
        std::find_if(std::begin(kCommands), std::end(kCommands),
                     [&](Command const& row) { return words.value(0) == QLatin1String(row.name); });
    if (command == std::end(kCommands))
        return usageError(words.isEmpty() ? QStringLiteral("A command is needed.")
                                          : QStringLiteral("\"%1\" is no command.").arg(words[0]));
    Request request;
    for (OptionRow const& row : kOptions) {
        QString const name = QString::fromLatin1(row.name);
        if (!parser.isSet(name))
            continue;
        QString const value = row.valueName ? parser.value(name) : QString();
        if (!isAmong(row.commands, words[0]))
            return usageError(QStringLiteral("--%1 is not for %2.").arg(name, words[0]));
        if (QString const expected = row.read(value, request); !expected.isEmpty())
            return usageError(QStringLiteral("--%1 takes %2, not \"%3\".").arg(name, expected, value));
    }
    request.files = words.mid(1, filesBefore);
    request.turned = words.mid(1 + int(request.files.size()));
    if (turned >= 0 && (request.turned.isEmpty() || words[0] != QLatin1String("measure")))
        return usageError(QStringLiteral("--turned is for measure, before the turned pictures."));
    return runCommand(*command, request);
}
} // namespace shading
