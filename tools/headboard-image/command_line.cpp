#include "tools/headboard-image/command_line.h"

#include "headboard/record_format.h"
#include "tools/headboard-image/chain_check.h"
#include "tools/headboard-image/edits.h"
#include "tools/headboard-image/image_file.h"
#include "tools/headboard-image/record_display.h"

#include <QCommandLineParser>
#include <algorithm>

using namespace kestra;

namespace headboard_image {
namespace {
struct Request {
    QString image;
    QStringList arguments; ///< of the command, as many as it takes
    Addressing addressing = Addressing::Plain;
    QString sensor, label; ///< of an import; empty: not told
};

Outcome usageError(QString const& what) {
    return unusable(what.trimmed().toStdString() + "\nTry \"headboard-image --help\".");
}

// Decimal, or hexadecimal behind "0x"; a leading 0 means nothing.
std::optional<uint32_t> readNumber(QString const& text) {
    constexpr int kDecimal = 10, kHexadecimal = 16;
    bool const isHexadecimal = text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
    bool ok = false;
    uint const number = isHexadecimal ? text.mid(2).toUInt(&ok, kHexadecimal) : text.toUInt(&ok, kDecimal);
    return ok ? std::optional<uint32_t>(number) : std::nullopt;
}

// A type that a record in the chain can have; the header and the chain's end are none.
std::optional<uint8_t> readType(QString const& text) {
    uint32_t const named = recordTypeNamed(text.toUtf8().constData());
    uint32_t const type = named != 0 ? named : readNumber(text).value_or(kRecordEnd);
    if (type >= kRecordEnd || type == kRecordIdent)
        return std::nullopt;
    return uint8_t(type);
}

Outcome noType(QString const& text) {
    return usageError(
        QStringLiteral("\"%1\" is no type of a record; a type is a name such as PGA, or its number.")
            .arg(text));
}

Outcome runOnStore(Request const& request, Outcome (*run)(RecordStore const&, Request const&)) {
    std::string error;
    auto const bytes = readImage(request.image, &error);
    if (!bytes)
        return unusable(error);
    return run(RecordStore(*bytes), request);
}

Outcome runList(Request const& request) {
    return runOnStore(request, [](RecordStore const& store, Request const&) { return listRecords(store); });
}

Outcome runCheck(Request const& request) {
    return runOnStore(request, [](RecordStore const& store, Request const&) { return checkImage(store); });
}

Outcome runShow(Request const& request) {
    return runOnStore(request, [](RecordStore const& store, Request const& asked) {
        auto const offset = readNumber(asked.arguments[0]);
        if (!offset)
            return usageError(QStringLiteral("\"%1\" is no offset.").arg(asked.arguments[0]));
        return showRecord(store, int32_t(std::min<uint32_t>(*offset, INT32_MAX)), asked.addressing);
    });
}

Outcome runImport(Request const& request) {
    auto const type = readType(request.arguments[2]);
    return type ? importSection(request.image, {.presetFile = request.arguments[0],
                                                .section = request.arguments[1],
                                                .type = *type,
                                                .addressing = request.addressing,
                                                .sensor = request.sensor,
                                                .label = request.label})
                : noType(request.arguments[2]);
}

Outcome runDelete(Request const& request) {
    auto const type = readType(request.arguments[0]);
    std::optional<QString> name;
    if (request.arguments.size() > 1)
        name = request.arguments[1];
    return type ? deleteRecord(request.image, *type, name) : noType(request.arguments[0]);
}

Outcome runFormat(Request const& request) { return formatImage(request.image); }

struct Command {
    char const* name;
    char const* arguments;
    int fewest, most; ///< arguments
    bool knowsPages;
    Outcome (*run)(Request const&);
    char const* help;
};
constexpr Command kCommands[] = {
    {"list", "", 0, 0, false, runList, "one line a record: offset, type, length, name or text"},
    {"show", "OFFSET", 1, 1, true, runShow, "the entries, lines or bytes of a record"},
    {"check", "", 0, 0, false, runCheck, "everything that is wrong with the image"},
    {"import", "FILE SECTION TYPE", 3, 3, true, runImport,
     "a section of a preset or results file as a record, in the place\n"
     "                            of an older one of the same type and name"},
    {"delete", "TYPE [NAME]", 1, 2, false, runDelete, "the first record of a type and name"},
    {"format", "", 0, 0, false, runFormat, "an empty chain; creates an image of 8192 bytes"},
};

QString description() {
    QString text =
        QStringLiteral("Looks at and changes a file of the bytes of a headboard EEPROM.\n\nCommands:\n");
    for (Command const& command : kCommands) {
        QString const call =
            QStringLiteral("%1 %2").arg(QLatin1String(command.name), QLatin1String(command.arguments));
        text += QStringLiteral("  %1%2\n").arg(call, -26).arg(QLatin1String(command.help));
    }
    return text +
           QStringLiteral(
               "\nAn import holds what the section's lines say, or is refused. With --sensor it is the "
               "record\n"
               "that a calibration of that sensor stores: the correction is off while the registers are\n"
               "loaded and on at the end. Without, a note tells what a record PGA lacks.\n"
               "\nOFFSET is decimal or 0x hexadecimal. TYPE is a name, such as PGA or \"Time Stamp\",\n"
               "or a number. An image has 8 to 65536 bytes; records lie in the first 8176, and the\n"
               "bytes behind them are kept. A file changes as a whole or not at all.\n\n"
               "Exit codes: 0 done, 1 image damaged or operation refused,\n"
               "2 bad command line, or a file that cannot be read or written.");
}

Command const* findCommand(QString const& name) {
    auto const* const found =
        std::find_if(std::begin(kCommands), std::end(kCommands),
                     [&](Command const& row) { return name == QLatin1String(row.name); });
    return found == std::end(kCommands) ? nullptr : found;
}

Outcome runCommand(QStringList const& words, Request request, bool isPaged) {
    if (words.size() < 2)
        return usageError(QStringLiteral("An image and a command are needed."));
    Command const* const command = findCommand(words[1]);
    if (!command)
        return usageError(QStringLiteral("\"%1\" is no command. The image comes first.").arg(words[1]));
    request.image = words[0];
    request.arguments = words.mid(2);
    if (request.arguments.size() < command->fewest || request.arguments.size() > command->most)
        return usageError(QStringLiteral("The command is: %1 %2")
                              .arg(QLatin1String(command->name), QLatin1String(command->arguments)));
    if (isPaged && !command->knowsPages)
        return usageError(QStringLiteral("--paged is for show and import."));
    if (!(request.sensor.isEmpty() && request.label.isEmpty()) && command->run != runImport)
        return usageError(QStringLiteral("--sensor and --label are for import."));
    if (isPaged && !request.sensor.isEmpty())
        return usageError(QStringLiteral("The --sensor tells its addresses; --paged is not for it."));
    request.addressing = isPaged ? Addressing::Paged : Addressing::Plain;
    return command->run(request);
}
} // namespace

Outcome runCommandLine(QStringList const& arguments) {
    QCommandLineParser parser;
    parser.setApplicationDescription(description());
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("IMAGE"), QStringLiteral("The file of device bytes."));
    parser.addPositionalArgument(QStringLiteral("COMMAND"), QStringLiteral("One of the commands above."),
                                 QStringLiteral("COMMAND [ARGUMENTS]"));
    QCommandLineOption const paged(
        QStringLiteral("paged"),
        QStringLiteral("For show and import: the sensor's registers have a page and an 8-bit address."));
    QCommandLineOption const sensor(
        QStringLiteral("sensor"),
        QStringLiteral("For import of a record PGA: the profile of the sensor, as pictara-sim knows it."),
        QStringLiteral("NAME|FILE"));
    QCommandLineOption const label(
        QStringLiteral("label"),
        QStringLiteral(
            "For import: the record's name, of which 8 characters count (default: the section's)."),
        QStringLiteral("NAME"));
    parser.addOptions({paged, sensor, label});
    if (!parser.parse(arguments))
        return usageError(parser.errorText());
    if (parser.isSet(QStringLiteral("help")))
        return {kExitDone, parser.helpText().toStdString(), {}};
    for (QCommandLineOption const& named : {sensor, label})
        if (parser.isSet(named) && parser.value(named).isEmpty())
            return usageError(QStringLiteral("--%1 takes a name.").arg(named.names().first()));
    Request request;
    request.sensor = parser.value(sensor);
    request.label = parser.value(label);
    return runCommand(parser.positionalArguments(), request, parser.isSet(paged));
}
} // namespace headboard_image
