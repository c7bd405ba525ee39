#pragma once

#include "published/host_records.h"

#include <concepts>
#include <functional>
#include <map>
#include <string>
#include <vector>

/// Calls of a host and of both libraries, one line a call.
using Calls = std::vector<std::string>;

/// A host that answers from maps and keeps a log of every call, for example
/// `setState Gamma 20`. Bracket calls read `begin` and `end`. One host lives at a time.
class FakeHost {
public:
    FakeHost();
    ~FakeHost();

    [[nodiscard]] HostServices services() const;

    Calls log;
    std::map<std::string, int32_t> states;
    std::map<std::string, int32_t> intSettings;
    std::map<std::string, std::string> textSettings;
    std::map<std::string, std::string> options;
    std::map<std::string, uint32_t> registers; ///< by "register.bitfield"
    /// Runs inside every call, after it was logged.
    std::function<void(std::string const& call)> onCall;

    /// The log's lines that begin with `prefix`.
    [[nodiscard]] Calls calls(std::string const& prefix) const;
    /// Whether every `begin` has its `end`, and no `end` came first.
    [[nodiscard]] bool isBalanced() const;
    /// Logs a call that is not the host's own, for example a library's.
    void note(std::string const& call);

    [[nodiscard]] static FakeHost* current();
};

/// An argument of a call as the log shows it.
inline std::string noted(char const* text) { return text; }
inline std::string noted(std::integral auto number) { return std::to_string(number); }

/// Logs a call with its arguments into the current host, if there is one.
template <typename... Parts>
void noteCall(char const* name, Parts const&... parts) {
    FakeHost* const host = FakeHost::current();
    if (!host)
        return;
    std::string line = name;
    ((line += ' ' + noted(parts)), ...);
    host->note(line);
}
