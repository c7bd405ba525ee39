#include "benchmarks/report.h"

#include "benchmarks/benchmarks.h"

#include <QDateTime>
#include <QString>
#include <QSysInfo>
#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <opencv2/core/version.hpp>

namespace {
constexpr char const* kSubjects[] = {"block statistics", "white balance"};
constexpr double kTimesOpencv = 1.0;
constexpr double kOfLimit = 0.9;
constexpr double kOfLimitOfFewPixels = 0.75; // rows of some blocks are short runs of pixels
constexpr double kLineDeviation = 0.25;

using Table = std::vector<std::vector<std::string>>;

std::string number(double value, int decimals) { return QString::number(value, 'f', decimals).toStdString(); }

std::string duration(double seconds) {
    if (seconds < 1e-6)
        return number(seconds * 1e9, 1) + " ns";
    if (seconds < 1e-3)
        return number(seconds * 1e6, 1) + " µs";
    if (seconds < 1)
        return number(seconds * 1e3, 1) + " ms";
    return number(seconds, 2) + " s";
}

// Columns of equal width, so that the table also reads well where it is not set.
std::string toMarkdown(Table const& table) {
    std::vector<int> widths(table[0].size());
    auto const length = [](std::string const& cell) { return QString::fromStdString(cell).size(); };
    for (auto const& row : table)
        for (size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], length(row[i]));
    std::string text;
    auto const addLine = [&](auto const& cell) {
        for (size_t i = 0; i < widths.size(); ++i)
            text.append("|").append(cell(i));
        text.append("|\n");
    };
    for (auto const& row : table) {
        addLine([&](size_t i) {
            return ' ' + row[i] + std::string(size_t(widths[i] - length(row[i]) + 1), ' ');
        });
        if (&row == &table[0])
            addLine([&](size_t i) { return std::string(size_t(widths[i]) + 2, '-'); });
    }
    return text + "\n";
}

class Reporter {
public:
    explicit Reporter(Measurements const& measurements) : m_measurements(measurements) {}

    std::string ratios() {
        Table table{{"what", "frame", "plug-in", "plain read", "colours", "OpenCV's best", "of the read",
                     "of the limit", "times OpenCV"}};
        for (char const* subject : kSubjects)
            for (FrameSize const& size : kFrameSizes)
                addRatios(table, subject, size);
        return toMarkdown(table);
    }

    std::string limits(double firstOpening) {
        Table table{{"what", "figure", "at most"}};
        auto const add = [&](std::string const& what, std::optional<double> seconds, double most) {
            table.push_back({what, judged(seconds, seconds && *seconds < most, duration), duration(most)});
        };
        auto const clock = [this](char const* name) { return m_measurements.clockTime(name); };
        add("a frame with nothing to do", clock("frame with nothing to do"), 1e-6);
        add("a tick with nothing to do", clock("tick with nothing to do"), 50e-6);
        add("a tick of a step that waits for frames", clock("tick of a step that waits"), 50e-6);
        add("opening the dialog, until it stands painted", clock("opening the dialog"), 50e-3);
        add("opening it first, libraries loaded", firstOpening, 50e-3);
        add("solving 2 Mpixel", clock("solver/1632/1224"), 1);
        add("solving 12 Mpixel", clock("solver/4000/3000"), 1);
        for (char const* tick : {"tick with nothing to do", "tick of a step that waits"}) {
            auto const repaints = m_measurements.largest(tick, "repaints");
            table.push_back({std::string("repaints in 100 times a ") + tick,
                             judged(repaints, repaints == 0.0, [](double n) { return number(n, 0); }), "0"});
        }
        return toMarkdown(table);
    }

    std::string lines() {
        Table table{{"cost grows with", "from", "to", "root mean square off the line (at most 25 %)"}};
        addLine(table, "pixels of a frame: block statistics", "block statistics plug-in", "640/480",
                "8000/6000");
        addLine(table, "pixels of a frame: white balance", "white balance plug-in", "640/480", "8000/6000");
        addLine(table, "pixels of a frame: solver", "solver", "800/600", "4000/3000");
        addLine(table, "side of the overlay's ring", "overlay by side of the ring", "32", "512");
        return toMarkdown(table);
    }

    std::string runAll(std::optional<double> const& cost) {
        constexpr double kMostSeconds = 10;
        return toMarkdown({{"what", "figure", "at most"},
                           {"the whole run", judged(cost, cost && *cost <= kMostSeconds, duration),
                            duration(kMostSeconds)}});
    }

    std::string eeprom(std::vector<EepromCost> const& costs) {
        Table table{{"way to the EEPROM", "what", "transfers", "least possible", "virtual time"}};
        for (EepromCost const& cost : costs)
            table.push_back({cost.way, cost.what,
                             judged(cost.transfers, cost.transfers == cost.leastTransfers,
                                    [](double n) { return number(n, 0); }),
                             number(cost.leastTransfers, 0), duration(cost.virtualSeconds)});
        return toMarkdown(table);
    }

    [[nodiscard]] bool hasMissed() const { return m_hasMissed; }

private:
    static std::string arguments(FrameSize size) {
        return std::to_string(size.width) + "/" + std::to_string(size.height);
    }
    static std::string picture(FrameSize size) {
        return std::to_string(size.width) + " x " + std::to_string(size.height);
    }

    template <typename Format>
    std::string judged(std::optional<double> value, bool met, Format format) {
        m_hasMissed = m_hasMissed || !value || !met;
        return value ? format(*value) + (met ? "" : " **missed**") : "not measured";
    }

    void addRatios(Table& table, std::string const& subject, FrameSize size) {
        // Of the quietest repetition: who shares the core takes more from computing than from reads.
        std::string const inTurns = subject + " in turns/" + arguments(size);
        auto const time = [&](char const* what) { return m_measurements.least(inTurns, what); };
        auto const reached = [&](char const* what) { return m_measurements.largest(inTurns, what); };
        auto const opencvTime = [&](char const* way) {
            return m_measurements.leastProcessorTime(subject + " " + way + "/" + arguments(size));
        };
        auto const best = [](auto const& figure, std::initializer_list<char const*> ways) {
            std::pair<double, std::string> result(std::numeric_limits<double>::infinity(), "-");
            for (char const* way : ways)
                if (auto const value = figure(way))
                    result = std::min(result, {*value, way});
            return result;
        };
        auto const shown = [](double seconds) { return std::isfinite(seconds) ? duration(seconds) : "-"; };
        auto const ratio = [&](std::optional<double> value, double least) {
            return judged(value, value && *value >= least,
                          [least](double v) { return number(v, 2) + " (≥ " + number(least, 2) + ")"; });
        };
        auto const plugin = time("plug-in");
        auto const [read, readWay] = best(time, {"words", "bytes", "vectors"});
        auto const colours = time("colours"); // none in the white balance
        auto const [opencv, opencvWay] = best(opencvTime, {"cv::mean", "cv::resize", "cv::integral"});
        double const limit =
            best(reached, {"of limit by words", "of limit by bytes", "of limit by vectors"}).first;
        auto const ofLimit = std::isfinite(limit) ? std::optional(limit) : std::nullopt;
        auto const timesOpencv =
            plugin && std::isfinite(opencv) ? std::optional(opencv / *plugin) : std::nullopt;
        table.push_back({subject, picture(size), plugin ? duration(*plugin) : "-",
                         shown(read) + " " + readWay, colours.value_or(0) > 0 ? duration(*colours) : "-",
                         shown(opencv) + " " + opencvWay,
                         number(best(reached, {"of words", "of bytes", "of vectors"}).first, 2),
                         ratio(ofLimit, size.width == kFrameSizes[0].width ? kOfLimitOfFewPixels : kOfLimit),
                         ratio(timesOpencv, kTimesOpencv)});
    }

    void addLine(Table& table, std::string const& what, std::string const& family, std::string const& first,
                 std::string const& last) {
        auto const deviation = m_measurements.lineDeviation(family);
        auto const shown = [&](std::string const& size) {
            auto const seconds = m_measurements.leastProcessorTime(family + "/" + size);
            return seconds ? duration(*seconds) : "-";
        };
        table.push_back({what, shown(first), shown(last),
                         judged(deviation, deviation && *deviation <= kLineDeviation,
                                [](double v) { return number(v * 100, 1) + " %"; })});
    }

    Measurements const& m_measurements;
    bool m_hasMissed = false;
};

std::string processorName() {
    std::ifstream file("/proc/cpuinfo");
    for (std::string line; std::getline(file, line);)
        if (line.starts_with("model name"))
            return line.substr(line.find(':') + 2);
    return QSysInfo::currentCpuArchitecture().toStdString();
}

std::string circumstances(std::string const& command) {
    benchmark::CPUInfo const& cpu = benchmark::CPUInfo::Get();
    return "# Performance\n\n"
           "Written by `" +
           command +
           "`, not by hand.\n\n"
           "- Date: " +
           QDateTime::currentDateTimeUtc().toString(Qt::ISODate).toStdString() +
           "\n"
           "- Machine: " +
           processorName() + ", " + std::to_string(cpu.num_cpus) + " cores, " +
           QSysInfo::prettyProductName().toStdString() +
           "\n"
           "- Built by " COMPILER "; compared with OpenCV " CV_VERSION ", one thread\n\n";
}
} // namespace

Report makeReport(Measured const& measured, std::string const& command) {
    Reporter reporter(measured.benchmarks);
    Report report;
    report.text =
        circumstances(command) +
        R"(The limit is what the machine can read: the fastest of three simple loops over the same bytes, built with the same
options, that add up 32-bit words, bytes, or words in vectors by the compiler; and for block statistics the time that
their colours take, which no read contains. What the plug-in reaches of the read alone stands beside it.

The plug-in and the loops take turns picture by picture, so that what others do to the machine's memory slows them all:
the figures and their ratios are medians over many turns, in processor time. Who else computes on the processor's core
slows the plug-in more than a loop that waits for memory: of seven repetitions, spread over the whole time, the best
is told, as it is of OpenCV, and where a figure misses, all are measured again, twice at most. Two copies of this
program at once tell whether the verdict also holds where others use the memory.

All ways work on the same pictures, which come from memory one after the other, as a camera's do, and not from a
cache.

)" + reporter.ratios() +
        "By the clock, medians:\n\n" + reporter.limits(measured.firstOpening) +
        R"(A full Run All of the default camera without a window, from the program's start to its report, in processor
time:

)" + reporter.runAll(measured.runAll) +
        R"(Bus transfers of an EEPROM of 8176 bytes. A raw write ends with a pause of 20 ms; the bridge is asked every 2 ms
whether it is done:

)" + reporter.eeprom(measured.eeprom) +
        "Straight lines through zero, fitted to the fastest repetitions of the sizes between:\n\n" +
        reporter.lines();
    report.text.pop_back();
    report.hasMissed = reporter.hasMissed() || measured.benchmarks.hasFailures();
    return report;
}
