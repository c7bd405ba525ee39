#pragma once

#include <benchmark/benchmark.h>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// The middle one; there must be one.
[[nodiscard]] double medianOf(std::vector<double> values);

/// Collects what the benchmark library measures: a benchmark's repetitions become one figure. A benchmark is
/// named "subject way/size"; what was not measured is empty.
class Measurements : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(Context const& context) override;
    void ReportRuns(std::vector<Run> const& runs) override;

    /// Seconds of one iteration, by the clock: the median.
    [[nodiscard]] std::optional<double> clockTime(std::string const& name) const;
    /// In processor time, of the fastest repetition: what else goes on in the machine only adds to it.
    [[nodiscard]] std::optional<double> leastProcessorTime(std::string const& name) const;
    /// A counter that the benchmark set, in the repetition in which it was least or largest.
    [[nodiscard]] std::optional<double> least(std::string const& name, std::string const& counter) const;
    [[nodiscard]] std::optional<double> largest(std::string const& name, std::string const& counter) const;
    /// How far the least processor times of a family of sizes lie off the straight line through zero that
    /// fits them best: root mean square over the mean.
    [[nodiscard]] std::optional<double> lineDeviation(std::string const& family) const;
    [[nodiscard]] bool hasFailures() const { return m_hasFailures; }

private:
    struct Samples {
        std::vector<double> processor;
        std::vector<double> clock;
        std::map<std::string, std::vector<double>> counters;
        std::string family;
        double size = 0; // in the unit that the cost is to grow with; 0 for none
    };

    void collect(Run const& run);
    [[nodiscard]] std::vector<double> counted(std::string const& name, std::string const& counter) const;

    std::map<std::string, Samples> m_samples;
    bool m_hasFailures = false;
};
