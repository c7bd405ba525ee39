#include "hardening/power_cuts/cut_save.h"
#include "tests/support/fake_headboard.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string_view>
#include <thread>

using namespace kestra;

namespace {

constexpr uint32_t kDefaultSaves = 1000;
constexpr size_t kMostFailuresShown = 20;

struct Arguments {
    uint32_t saves = kDefaultSaves;
    uint32_t seed = 1;
};

bool readArguments(int argc, char** argv, Arguments& arguments) {
    for (int i = 1; i < argc; i += 2) {
        std::string_view const name = argv[i];
        char const* const value = i + 1 < argc ? argv[i + 1] : nullptr;
        if (value && name == "--saves")
            arguments.saves = uint32_t(std::strtoul(value, nullptr, 10));
        else if (value && name == "--seed")
            arguments.seed = uint32_t(std::strtoul(value, nullptr, 10));
        else
            return false;
    }
    return true;
}

// The scenes of consecutive numbers, shared out among the cores.
power_cuts::Tally cutAll(Arguments const& arguments) {
    std::atomic<uint32_t> next = 0;
    std::mutex mutex;
    power_cuts::Tally sum;
    auto const work = [&] {
        for (uint32_t i = next++; i < arguments.saves; i = next++) {
            power_cuts::Tally const tally = power_cuts::cutEverywhere(arguments.seed + i);
            std::lock_guard const lock(mutex);
            sum.add(tally);
        }
    };
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < std::max(std::thread::hardware_concurrency(), 1U); ++i)
        threads.emplace_back(work);
    for (std::thread& thread : threads)
        thread.join();
    return sum;
}

} // namespace

int main(int argc, char** argv) {
    Arguments arguments;
    if (!readArguments(argc, argv, arguments)) {
        std::fputs("usage: power-cuts [--saves COUNT] [--seed NUMBER]\n", stderr);
        return 2;
    }
    Veyra2 library;
    FakeHeadboard::fillIn(library);
    installVeyra2(library);
    std::printf("cutting the power after every byte of %u saves; this takes minutes\n", arguments.saves);
    std::fflush(stdout);
    power_cuts::Tally const tally = cutAll(arguments);
    std::printf("%llu saves, %llu cuts\n\n%s", static_cast<unsigned long long>(tally.saves),
                static_cast<unsigned long long>(tally.cuts()), text(tally).c_str());
    std::fflush(stdout);
    for (size_t i = 0; i < std::min(tally.failures.size(), kMostFailuresShown); ++i)
        std::fprintf(stderr, "%s\n", tally.failures[i].c_str());
    if (!tally.failures.empty())
        std::fprintf(stderr, "%zu promises were not kept\n", tally.failures.size());
    if (tally.saves < arguments.saves)
        std::fputs("fewer saves were tried than were asked for\n", stderr);
    return tally.failures.empty() && tally.saves >= arguments.saves ? 0 : 1;
}
