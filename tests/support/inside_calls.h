#pragma once

#include "tests/support/fake_host.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <span>
#include <string>
#include <vector>

namespace kestra {
/// Calls from one on, inside which something was done; empty where nothing was.
using CallsFrom = std::span<std::string const>;

/// The calls of a run inside which something is done: from `first` on, each `step`-th.
struct CallWalk {
    size_t first = 1, step = 1;
};

/// Runs `run` again and again on what `prepare` makes, does `deed` inside one call of a service or a library
/// after the other, and hands `check` the calls from that one on. Answers how often it was done; the last
/// round, without a deed, is checked, too.
template <typename Prepare, typename Run, typename Deed, typename Check>
int doInsideEveryCall(FakeHost& host, Prepare prepare, Run run, Deed deed, Check check, CallWalk walk = {}) {
    int cases = 0;
    for (size_t n = walk.first;; n += walk.step) {
        SCOPED_TRACE("call " + std::to_string(n));
        prepare();
        host.log.clear();
        size_t calls = 0;
        host.onCall = [&](std::string const&) {
            if (++calls == n)
                deed();
        };
        run();
        host.onCall = nullptr;
        EXPECT_TRUE(host.isBalanced());
        check(calls < n ? CallsFrom() : CallsFrom(host.log).subspan(n - 1));
        if (calls < n)
            return cases;
        ++cases;
    }
}

/// The calls for a page that was deleted inside the first one which nobody may make any more: all but those
/// that close what is open, the destruction of the calibration, and the rest of a flush that had begun. A
/// pause is none.
inline std::vector<std::string> callsForNobody(CallsFrom calls) {
    auto const isOneOf = [](std::string const& call, std::initializer_list<char const*> these) {
        return std::ranges::any_of(these, [&](char const* one) { return call.starts_with(one); });
    };
    auto const isOfFlush = [&](std::string const& call) {
        return isOneOf(call, {"setMode 1 16", "setMode 2 8", "writeBus ", "pause 20"});
    };
    std::vector<std::string> found;
    for (size_t i = 1; i < calls.size(); ++i)
        if (!isOneOf(calls[i], {"end", "modalDialog 0", "destroy", "pause"}) &&
            !(isOfFlush(calls[0]) && isOfFlush(calls[i])))
            found.push_back(calls[i]);
    return found;
}
} // namespace kestra
