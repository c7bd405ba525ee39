#include "simulator/host/recording/script.h"

#include "simulator/files/whole_file.h"
#include "simulator/host/recording/seen_lines.h"
#include "simulator/host/session/words.h"

#include <QDir>
#include <algorithm>

namespace pictara {
namespace {
constexpr qint64 kMostBytes = 64 << 20; // an hour of a recording
constexpr int kRowSize = 32;            // bytes of an EEPROM in a line
constexpr char kComment[] = "# pictara-sim recording: below each line the calls that came from it\n";

bool readCommand(QString const& line, int number, Script& script, QString* error) {
    auto words = wordsOf(line, error);
    if (!words || words->isEmpty())
        return words.has_value();
    QString const name = words->takeFirst();
    auto const all = verbs();
    auto const verb = std::find_if(all.begin(), all.end(),
                                   [&](Verb const& row) { return name == QLatin1String(row.name); });
    if (verb == all.end()) {
        *error = QStringLiteral("there is no command \"%1\"").arg(name);
        return false;
    }
    bool const begins = verb->begin && script.commands.empty();
    bool isGood = words->size() >= verb->fewest && words->size() <= verb->most;
    if (begins)
        isGood = isGood && verb->begin(*words, script);
    else if (verb->perform)
        isGood = isGood && (!verb->isGood || verb->isGood(*words));
    if (!isGood)
        *error =
            QStringLiteral("it must be: %1 (texts with blanks in quotes)").arg(QLatin1String(verb->usage));
    else if (!begins && !verb->perform)
        *error = QStringLiteral("\"%1\" belongs before all that is done").arg(name);
    else if (!begins)
        script.commands.push_back({&*verb, *words, number, line.toUtf8()});
    return error->isEmpty();
}

// One that cannot be read ends the session before it begins.
QByteArray contentsOf(QString const& file) {
    QString error;
    return files::read(file, files::kMostText, &error).value_or(QByteArray());
}

void addLine(QByteArray& text, QStringList const& words) { text += lineOf(words).toUtf8() + '\n'; }

// Rows that hold nothing but erased bytes are left out.
void addEeprom(QByteArray& text, QByteArray const& contents) {
    if (!contents.isEmpty())
        addLine(text, {"eeprom", "blank"});
    for (int at = 0; at < contents.size(); at += kRowSize)
        if (QByteArray const row = contents.mid(at, kRowSize); row.count('\xFF') != row.size())
            addLine(text, {"eeprom", QString::number(at), QString::fromLatin1(row.toHex())});
}
} // namespace

std::optional<Script> readScript(QString const& name, Options const& options, QString* error) {
    auto const text = files::read(name, kMostBytes, error);
    if (!text)
        return std::nullopt;
    error->clear();
    Script script{options};
    int number = 0;
    for (QByteArray line : text->split('\n')) {
        ++number;
        while (line.endsWith('\r'))
            line.chop(1);
        if (bool const isSeen = line.startsWith(' ') && !script.commands.empty(); isSeen)
            script.commands.back().seen.emplace_back(number, line);
        else if (!readCommand(QString::fromUtf8(line), number, script, error)) {
            *error = QStringLiteral("%1:%2: %3").arg(name).arg(number).arg(*error);
            return std::nullopt;
        }
    }
    return script;
}

QByteArray beginningOf(Options const& options) {
    QDir const output(options.outputFolder);
    QByteArray text = kComment;
    addLine(text, {"profile", options.profile});
    addLine(text, {"seed", QString::number(options.seed)});
    addLine(text, lightWords(lightOf(options)));
    for (auto const& [verb, file] : {std::pair("shading", options.shadingFile), {"ini", options.iniFile}})
        if (!file.isEmpty())
            addLine(text, {verb, file});
    // One that waits for a save is done at its time.
    if (options.fault && options.fault->operation)
        addLine(text, {"fault", textOf(*options.fault)});
    for (QByteArray const& line : contentsOf(output.filePath("settings.ini")).split('\n'))
        if (QByteArray const setting = line.trimmed(); !setting.isEmpty())
            addLine(text, {"setting", QString::fromUtf8(placeholdersOf(options).hide(setting))});
    addEeprom(text,
              contentsOf(options.eepromFile.isEmpty() ? output.filePath("eeprom.bin") : options.eepromFile));
    return text;
}

bool layOut(Script const& script, QString const& folder, QString* error) {
    Placeholders placeholders;
    placeholders.add(folder, "<output>");
    QByteArray settings;
    for (QByteArray const& line : script.settings)
        settings += placeholders.reveal(line) + '\n';
    QDir const place(folder);
    place.mkpath(QStringLiteral("."));
    return (settings.isEmpty() || files::replace(place.filePath("settings.ini"), settings, error)) &&
           (script.eeprom.isEmpty() || files::replace(place.filePath("eeprom.bin"), script.eeprom, error));
}
} // namespace pictara
