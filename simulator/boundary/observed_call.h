#pragma once

#include "simulator/boundary/call_observer.h"
#include "simulator/boundary/call_text.h"

#include <QByteArray>
#include <QScopeGuard>
#include <tuple>
#include <type_traits>

#ifdef _MSC_VER
// Declared without an export, no definition may have one there; the linker exports all.
#define LIBRARY_FUNCTION extern "C"
#elif defined(_WIN32)
#define LIBRARY_FUNCTION extern "C" __declspec(dllexport)
#else
#define LIBRARY_FUNCTION extern "C" __attribute__((visibility("default")))
#endif

/// One bracket for every call that somebody may watch: functions of the stand-in libraries, services of a
/// host, entries of its plug-in. A watch is whoever is told:
///
///     bool isWatching() const;                                        // of the call that is about to begin
///     void began(char const* function, QByteArray const& arguments);  // only when watching
///     void ended(QByteArray const& result);                           // once for each `began`
///
/// Texts are in the local code page. Without somebody who watches no text is made.
namespace simulator {
/// What is called with what. Borrows everything.
template <typename... Arguments>
class Call {
public:
    explicit Call(char const* name, Arguments const&... arguments)
        : function(name), m_arguments(arguments...) {}

    [[nodiscard]] QByteArray texts() const {
        return std::apply([](auto const&... arguments) { return callTexts(arguments...); }, m_arguments);
    }

    char const* const function;

private:
    std::tuple<Arguments const&...> m_arguments;
};

/// The answer of a call that answers by its result alone, or not at all.
struct ResultText {
    QByteArray operator()() const { return {}; }
    template <typename Result>
    QByteArray operator()(Result const& result) const {
        return callText(result);
    }
};

/// Calls `work` between the two messages to the watch and returns its result. `answer(result)`, or `answer()`
/// of a work without one, is made after the work, so that it can tell what was stored for the caller.
template <typename Watch, typename... Arguments, typename Work, typename Answer = ResultText>
auto observed(Watch&& watch, Call<Arguments...> const& call, Work work, Answer answer = {}) {
    if (!watch.isWatching())
        return work();
    watch.began(call.function, call.texts());
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

/// The watch of a stand-in library, which tells an observer that was handed over by its export. A function
/// that another one of the library uses is not told.
class LibraryWatch {
public:
    void setObserver(CallObserver const* observer) { m_observer = observer; }

    [[nodiscard]] bool isWatching() const { return m_observer && !m_isInside; }
    void began(char const* function, QByteArray const& arguments) {
        m_observer->began(m_observer->context, function, arguments.constData());
        m_isInside = true;
    }
    void ended(QByteArray const& result) {
        m_isInside = false;
        if (m_observer) // who stops watching inside a call is not there any more at its end
            m_observer->ended(m_observer->context, result.constData());
    }

private:
    CallObserver const* m_observer = nullptr;
    bool m_isInside = false;
};

/// Of the library into which this is compiled: nothing of it is exported.
inline LibraryWatch libraryWatch;

/// A call of a function of the library.
template <typename... Arguments, typename Work, typename Answer = ResultText>
auto observed(Call<Arguments...> const& call, Work work, Answer answer = {}) {
    return observed(libraryWatch, call, work, answer);
}
} // namespace simulator
