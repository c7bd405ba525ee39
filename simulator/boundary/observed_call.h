#pragma once

#include "simulator/boundary/call_observer.h"
#include "simulator/boundary/call_text.h"

#include <QByteArray>
#include <type_traits>

/// For the functions of a stand-in library: each does its work inside `observed`, which tells the library's
/// observer. Without an observer no text is made.
namespace simulator {
/// Of the library into which this is compiled: nothing of it is exported.
struct CallWatch {
    CallObserver const* observer = nullptr;
    bool isInside = false; ///< a function of the library is at work already
};
inline CallWatch callWatch;

/// Calls `work` and returns its result. `arguments()` and `answer(result)` give the texts of the call; the
/// answer is made after the work, so that it can tell what was stored for the caller.
template <typename Arguments, typename Answer, typename Work>
auto observed(char const* function, Arguments arguments, Answer answer, Work work) {
    CallObserver const* const observer = callWatch.observer;
    if (!observer || callWatch.isInside)
        return work();
    observer->began(observer->context, function, QByteArray(arguments()).constData());
    callWatch.isInside = true;
    auto const result = work();
    callWatch.isInside = false;
    observer->ended(observer->context, QByteArray(answer(result)).constData());
    return result;
}

/// The same for a function whose result is its answer, or that has none.
template <typename Arguments, typename Work>
auto observed(char const* function, Arguments arguments, Work work) {
    if constexpr (std::is_void_v<decltype(work())>)
        observed(
            function, arguments, [](int) { return QByteArray(); },
            [&] {
                work();
                return 0;
            });
    else
        return observed(
            function, arguments, [](auto result) { return callText(result); }, work);
}
} // namespace simulator
