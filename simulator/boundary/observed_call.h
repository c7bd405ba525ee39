#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QScopeGuard>
#include <QtEndian>
#include <cstdint>
#include <span>
#include <tuple>
#include <type_traits>

#ifdef _MSC_VER
// Declared without an export, no definition may have one there; the linker exports all.
#define LIBRARY_FUNCTION extern "C"
#else
#define LIBRARY_FUNCTION extern "C" Q_DECL_EXPORT
#endif

extern "C" {

/// Who watches the calls on a stand-in library. Each library takes one by an export of its own,
/// `vy_ObserveCalls` and `sf_ObserveCalls`, which is no part of its published interface; null ends the
/// watching. The observer stays the caller's and outlives the watching. Texts are in the local code page and
/// valid during the call; a result is empty when the function has none.
struct CallObserver {
    void* context;
    void (*began)(void* context, char const* function, char const* arguments);
    void (*ended)(void* context, char const* result);
};

using ObserveCalls = void (*)(CallObserver const* observer);

} // extern "C"

/// How the arguments and results of a call are written: texts in quotes, unsigned numbers from 10 on in
/// hexadecimal, signed ones in decimal, pictures and lists by their hash. Types of others bring a `callText`
/// of their own, in their namespace.
namespace simulator {
inline QByteArray callText(char const* text) {
    return text ? '"' + QByteArray(text).replace('\r', "\\r").replace('\n', "\\n") + '"'
                : QByteArrayLiteral("null");
}

inline QByteArray callText(uint32_t number) {
    return number < 10 ? QByteArray::number(number) : "0x" + QByteArray::number(number, 16).toUpper();
}

inline QByteArray callText(int32_t number) { return QByteArray::number(number); }
inline QByteArray callText(double number) { return QByteArray::number(number); }

inline QByteArray callText(std::span<uint32_t const> numbers) {
    QByteArrayList texts;
    for (uint32_t const number : numbers)
        texts.append(callText(number));
    return texts.join(' ');
}

/// Twelve digits that any change of the bytes changes: FNV-1a, over words of eight bytes instead of bytes.
inline QByteArray hashText(std::span<unsigned char const> bytes) {
    constexpr uint64_t kBasis = 0xCBF29CE484222325, kPrime = 0x100000001B3;
    uint64_t hash = kBasis;
    auto const mix = [&](uint64_t word) {
        hash = (hash ^ word) * kPrime;
        hash ^= hash >> 32; // a word's upper bits reach the lower ones, too
    };
    size_t const whole = bytes.size() / 8 * 8;
    for (size_t i = 0; i < whole; i += 8)
        mix(qFromLittleEndian<quint64>(&bytes[i]));
    for (size_t i = whole; i < bytes.size(); ++i)
        mix(bytes[i]);
    return '#' + QByteArray::number(qulonglong(hash >> 16), 16).rightJustified(12, '0');
}

/// The texts one after another with a blank between; empty ones are left out.
template <typename... Arguments>
QByteArray callTexts(Arguments const&... arguments) {
    QByteArrayList texts{callText(arguments)...};
    texts.removeAll(QByteArray());
    return texts.join(' ');
}

/// What is called with what. Borrows everything.
template <typename... Arguments>
struct Call {
    explicit Call(char const* name, Arguments const&... passed) : function(name), arguments(passed...) {}

    char const* const function;
    std::tuple<Arguments const&...> const arguments;
};

/// The answer of a call that answers by its result alone, or not at all.
struct ResultText {
    template <typename... Result>
    QByteArray operator()(Result const&... result) const {
        return callTexts(result...);
    }
};

/// One bracket for every call that somebody may watch: functions of the stand-in libraries, services of a
/// host, entries of its plug-in. Calls `work` between two messages to the watch, and returns its result:
///
///     bool isWatching() const;                                        // of the call that is about to begin
///     void began(char const* function, QByteArray const& arguments);  // only when watching
///     void ended(QByteArray const& result);                           // once for each `began`
///
/// Texts are in the local code page; without somebody who watches none is made. `answer(result)`, or
/// `answer()` of a work without one, is made after the work, so that it can tell what was stored for the
/// caller.
template <typename Watch, typename... Arguments, typename Work, typename Answer = ResultText>
auto observed(Watch&& watch, Call<Arguments...> const& call, Work work, Answer answer = {}) {
    if (!watch.isWatching())
        return work();
    watch.began(call.function, std::apply(callTexts<Arguments...>, call.arguments));
    QByteArray text;
    auto const end = qScopeGuard([&] { watch.ended(text); });
    if constexpr (std::is_void_v<decltype(work())>) {
        work();
        text = answer();
    } else {
        auto const result = work();
        text = answer(result);
        return result;
    }
}

/// The watch of a stand-in library, whose functions do not call one another.
struct LibraryWatch {
    [[nodiscard]] bool isWatching() const { return observer != nullptr; }
    void began(char const* function, QByteArray const& arguments) const {
        observer->began(observer->context, function, arguments.constData());
    }
    void ended(QByteArray const& result) const { observer->ended(observer->context, result.constData()); }

    CallObserver const* observer = nullptr; ///< handed over by the library's export
};

/// Of the library into which this is compiled: nothing of it is exported.
inline LibraryWatch libraryWatch;

/// A call of a function of the library.
template <typename... Arguments, typename Work, typename Answer = ResultText>
auto observed(Call<Arguments...> const& call, Work work, Answer answer = {}) {
    return observed(libraryWatch, call, work, answer);
}
} // namespace simulator
