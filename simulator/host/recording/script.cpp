#include "simulator/host/recording/script.h"

#include "simulator/files/whole_file.h"
#include "simulator/host/session/fault_wish.h"
#include "simulator/host/session/light_ranges.h"

#include <QRegularExpression>
#include <algorithm>
#include <iterator>
#include <optional>

namespace pictara {
namespace {
constexpr int kMostFrames = 1'000'000;

bool isNumber(QString const& text, Range const& range) {
    bool ok = false;
    double const number = text.toDouble(&ok);
    return ok && number >= range.low && number <= range.high;
}

bool isCount(QString const& text) {
    bool ok = false;
    int const number = text.toInt(&ok);
    return ok && number >= 1 && number <= kMostFrames;
}

bool isLight(QStringList const& words) {
    return isNumber(words[0], kColourTemperatures) && (words.size() == 1 || isNumber(words[1], kLevels));
}

bool isFault(QStringList const& words) {
    auto const wish = parseFaultWish(words[0]);
    return wish && canStrike(*wish);
}

struct VerbRow {
    char const* name;
    ScriptVerb verb;
    int fewest, most;                         // words behind the name
    bool (*isGood)(QStringList const& words); // null: any are
    char const* usage;
};

constexpr VerbRow kVerbs[] = {
    {"press", ScriptVerb::Press, 1, 1, nullptr, "press NAME"},
    {"set", ScriptVerb::Set, 2, 2, nullptr, "set NAME TEXT"},
    {"light", ScriptVerb::Light, 1, 2, isLight, "light KELVIN [LEVEL], 2000 to 12000 and 0.001 to 10000"},
    {"frames", ScriptVerb::Frames, 1, 1, [](QStringList const& words) { return isCount(words[0]); },
     "frames N"},
    {"tick", ScriptVerb::Tick, 0, 1,
     [](QStringList const& words) { return words.isEmpty() || isCount(words[0]); }, "tick [N]"},
    {"fault", ScriptVerb::Fault, 1, 1, isFault, "fault NAME[@N][+] with N from 1"},
    {"expect", ScriptVerb::Expect, 2, 2, nullptr,
     "expect NAME TEXT, expect enabled NAME or expect disabled NAME"},
    {"wait", ScriptVerb::Wait, 2, 3,
     [](QStringList const& words) { return words.size() == 2 || isCount(words[2]); },
     "wait NAME TEXT [FRAMES]"},
    {"screenshot", ScriptVerb::Screenshot, 1, 1, nullptr, "screenshot FILE"},
};

std::optional<QStringList> wordsOf(QString const& line, QString* error) {
    static QRegularExpression const word(QStringLiteral(R"re(\s*(?:"([^"]*)"(?=\s|$)|([^"\s]\S*)))re"));
    QStringList words;
    int at = 0;
    QString const text = line.trimmed();
    while (at < text.size()) {
        auto const match =
            word.match(text, at, QRegularExpression::NormalMatch, QRegularExpression::AnchoredMatchOption);
        if (!match.hasMatch()) {
            *error = QStringLiteral("a quote is not closed");
            return std::nullopt;
        }
        if (match.captured(2).startsWith(QLatin1Char('#')))
            break;
        words.append(match.capturedStart(1) >= 0 ? match.captured(1) : match.captured(2));
        at = match.capturedEnd();
    }
    return words;
}

bool read(QStringList words, ScriptCommand& command, QString* error) {
    QString const name = words.takeFirst();
    auto const* const row = std::find_if(std::begin(kVerbs), std::end(kVerbs), [&](VerbRow const& verb) {
        return name == QLatin1String(verb.name);
    });
    if (row == std::end(kVerbs)) {
        *error = QStringLiteral("there is no command \"%1\"").arg(name);
        return false;
    }
    bool const isGood =
        words.size() >= row->fewest && words.size() <= row->most && (!row->isGood || row->isGood(words));
    command.verb = row->verb;
    command.arguments = words;
    if (!isGood)
        *error =
            QStringLiteral("it must be: %1 (texts with blanks in quotes)").arg(QLatin1String(row->usage));
    return isGood;
}
} // namespace

std::optional<std::vector<ScriptCommand>> readScript(QString const& name, QString* error) {
    auto const text = files::read(name, files::kMostText, error);
    if (!text) {
        *error = QStringLiteral("The script %1 cannot be read: %2").arg(name, *error);
        return std::nullopt;
    }
    std::vector<ScriptCommand> commands;
    int number = 0;
    for (QByteArray const& line : text->split('\n')) {
        ++number;
        auto const words = wordsOf(QString::fromUtf8(line), error);
        if (words && words->isEmpty())
            continue;
        ScriptCommand command{ScriptVerb::Press, {}, number};
        if (!words || !read(*words, command, error)) {
            *error = QStringLiteral("%1:%2: %3").arg(name).arg(number).arg(*error);
            return std::nullopt;
        }
        commands.push_back(command);
    }
    return commands;
}

bool matches(QString const& text, QString const& pattern) {
    QStringList parts = pattern.split(QLatin1Char('*'));
    std::transform(parts.begin(), parts.end(), parts.begin(),
                   [](QString const& part) { return QRegularExpression::escape(part); });
    QRegularExpression const whole(QRegularExpression::anchoredPattern(parts.join(QLatin1String(".*"))),
                                   QRegularExpression::DotMatchesEverythingOption);
    return whole.match(text).hasMatch();
}
} // namespace pictara
