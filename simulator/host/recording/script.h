#pragma once

#include "simulator/host/session/command_line.h"

#include <QByteArray>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace pictara {
class Player;
struct Script;

/// What is open before a verb does something; the widget is the one that its first word names.
enum class Needs { Session, Page, Widget };

/// A word that begins a line of a script, and what it does.
struct Verb {
    char const* name;
    int fewest, most; ///< words behind it
    char const* usage;
    /// Says with what the session begins. False for bad words; null: it does something to an open session
    /// alone.
    bool (*begin)(QStringList const& words, Script& script) = nullptr;
    /// Does it; false with the cause. Null: it belongs before all that is done.
    bool (*perform)(Player& player, QStringList const& words, QString* error) = nullptr;
    Needs needs = Needs::Session;
    bool (*isGood)(QStringList const& words) = nullptr; ///< of words that do something; null: any are
};

/// All of the language, in the order of its description.
[[nodiscard]] std::span<Verb const> verbs();

/// A line of a script that does something, and, in a recording, the calls that were seen to come from it.
struct Command {
    Verb const* verb;
    QStringList words;                                 ///< as many as the verb takes
    int line = 0;                                      ///< in the file, from 1
    QByteArray text;                                   ///< the whole line
    std::vector<std::pair<int, QByteArray>> seen = {}; ///< each with its line
};

/// What a session begins with, and what is done in it.
struct Script {
    Options options;
    std::vector<QByteArray> settings = {}; ///< lines of the settings file, with placeholders
    QByteArray eeprom = {};                ///< 8192 bytes; empty: as the profile makes it
    std::vector<Command> commands = {};
};

/// Reads a script or a recording; `options` are those with which it begins unless it says otherwise. Empty
/// with "FILE:LINE: cause" in `error`; numbers are checked, names of widgets are not.
[[nodiscard]] std::optional<Script> readScript(QString const& file, Options const& options, QString* error);

/// The lines that say with what a session with these options begins: what its files hold now is part of it.
[[nodiscard]] QByteArray beginningOf(Options const& options);

/// Puts settings and EEPROM with which a script begins into a folder. False with a message.
[[nodiscard]] bool layOut(Script const& script, QString const& folder, QString* error);
} // namespace pictara
