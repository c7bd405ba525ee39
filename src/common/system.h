#pragma once

#include <QByteArray>
#include <QDateTime>
#include <chrono>
#include <functional>
#include <utility>

namespace kestra {
/// Whether a path, in the local 8-bit encoding, names an existing directory. An empty path does not.
[[nodiscard]] bool directoryExists(QByteArray const& path);

/// True for a byte that begins a letter of two bytes in the local 8-bit encoding. Some of Windows' code pages
/// have them, and the second byte may look like "\" or "|". Elsewhere it is never true: no byte of a longer
/// letter looks like another letter there.
[[nodiscard]] bool beginsTwoByteLetter(char byte);

/// A function for which tests put another in its place; called like the function itself.
template <typename Signature>
class Replaceable;
template <typename Result, typename... Arguments>
class Replaceable<Result(Arguments...)> {
public:
    explicit Replaceable(Result (*real)(Arguments...)) : m_real(real) {}

    Result operator()(Arguments... arguments) const {
        return m_replacement ? m_replacement(arguments...) : m_real(arguments...);
    }
    /// An empty function restores the real one.
    void replace(std::function<Result(Arguments...)> replacement) { m_replacement = std::move(replacement); }

private:
    Result (*m_real)(Arguments...);
    std::function<Result(Arguments...)> m_replacement;
};

/// Every wait of the plug-in: the calling thread sleeps.
extern Replaceable<void(std::chrono::milliseconds)> pauseFor;

/// The current time in UTC.
extern Replaceable<QDateTime()> currentUtcTime;
} // namespace kestra
