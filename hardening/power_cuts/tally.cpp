#include "hardening/power_cuts/tally.h"

#include <algorithm>
#include <cstdio>
#include <numeric>

using namespace kestra;

namespace power_cuts {
namespace {

constexpr char const* kRemainsTexts[kRemainsCount] = {
    "all records as before the save", "all records as after it",  "broken chain",
    "damaged record, whole chain",    "records missing or twice", "a record nobody stored",
};

struct Column {
    char const* title;
    uint64_t Row::*count;
};
constexpr Column kColumns[] = {
    {"cuts", &Row::cuts},           {"by list", &Row::listNames},
    {"by check", &Row::checkNames}, {"others lost", &Row::othersHarmed},
    {"next save", &Row::nextSaves}, {"mends all", &Row::mended},
};

constexpr size_t kFirstWidth = 31;
constexpr size_t kWidth = 12;

std::string column(std::string const& text) {
    return std::string(kWidth - std::min(kWidth, text.size()), ' ') + text;
}

std::string title() {
    std::string line(kFirstWidth, ' ');
    for (Column const& shown : kColumns)
        line += column(shown.title);
    return line + column("share") + '\n';
}

std::string row(std::string const& what, Row const& counts, uint64_t cuts) {
    std::string line = what + std::string(kFirstWidth - what.size(), ' ');
    for (Column const& shown : kColumns)
        line += column(std::to_string(counts.*shown.count));
    std::array<char, 16> share{};
    std::snprintf(share.data(), share.size(), "%.2f %%",
                  100.0 * double(counts.cuts) / double(std::max<uint64_t>(cuts, 1)));
    return line + column(share.data()) + '\n';
}

void add(Row& sum, Row const& other) {
    for (Column const& counted : kColumns)
        sum.*counted.count += other.*counted.count;
}

} // namespace

void Tally::add(Tally const& other) {
    saves += other.saves;
    savesWithBreak += other.savesWithBreak;
    for (size_t i = 0; i < kRemainsCount; ++i)
        power_cuts::add(rows[i], other.rows[i]);
    failures.insert(failures.end(), other.failures.begin(), other.failures.end());
}

uint64_t Tally::cuts() const {
    return std::accumulate(rows.begin(), rows.end(), uint64_t{0},
                           [](uint64_t sum, Row const& counts) { return sum + counts.cuts; });
}

std::string text(Tally const& tally) {
    std::string lines = title();
    Row sum;
    for (size_t i = 0; i < kRemainsCount; ++i) {
        lines += row(kRemainsTexts[i], tally.rows[i], tally.cuts());
        add(sum, tally.rows[i]);
    }
    return lines + row("all", sum, tally.cuts()) + std::to_string(tally.savesWithBreak) + " of " +
           std::to_string(tally.saves) + " saves break the chain when the power fails at the wrong byte\n";
}

} // namespace power_cuts
