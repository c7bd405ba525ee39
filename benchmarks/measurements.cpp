#include "benchmarks/measurements.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

double medianOf(std::vector<double> values) {
    auto const middle = values.begin() + ptrdiff_t(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

bool Measurements::ReportContext(Context const&) { return true; }

void Measurements::ReportRuns(std::vector<Run> const& runs) {
    for (Run const& run : runs) {
        if (run.error_occurred) {
            std::fprintf(stderr, "%s: %s\n", run.benchmark_name().c_str(), run.error_message.c_str());
            m_hasFailures = true;
        } else if (run.run_type == Run::RT_Iteration) {
            collect(run);
        }
    }
}

void Measurements::collect(Run const& run) {
    std::string name = run.run_name.function_name;
    if (!run.run_name.args.empty())
        name += "/" + run.run_name.args;
    Samples& samples = m_samples[name];
    samples.family = run.run_name.function_name;
    samples.size = double(run.complexity_n);
    samples.processor.push_back(run.cpu_accumulated_time / double(run.iterations));
    samples.clock.push_back(run.real_accumulated_time / double(run.iterations));
    for (auto const& [counter, value] : run.counters)
        samples.counters[counter].push_back(value);
}

std::optional<double> Measurements::leastProcessorTime(std::string const& name) const {
    auto const found = m_samples.find(name);
    return found == m_samples.end() ? std::nullopt : std::optional(std::ranges::min(found->second.processor));
}

std::optional<double> Measurements::clockTime(std::string const& name) const {
    auto const found = m_samples.find(name);
    return found == m_samples.end() ? std::nullopt : std::optional(medianOf(found->second.clock));
}

std::optional<double> Measurements::least(std::string const& name, std::string const& counter) const {
    auto const values = counted(name, counter);
    return values.empty() ? std::nullopt : std::optional(std::ranges::min(values));
}

std::optional<double> Measurements::largest(std::string const& name, std::string const& counter) const {
    auto const values = counted(name, counter);
    return values.empty() ? std::nullopt : std::optional(std::ranges::max(values));
}

std::vector<double> Measurements::counted(std::string const& name, std::string const& counter) const {
    auto const found = m_samples.find(name);
    if (found == m_samples.end() || !found->second.counters.count(counter))
        return {};
    return found->second.counters.at(counter);
}

std::optional<double> Measurements::lineDeviation(std::string const& family) const {
    double sizeSquares = 0;
    double products = 0;
    std::vector<std::pair<double, double>> points;
    for (auto const& [name, samples] : m_samples) {
        if (samples.family != family || samples.size == 0)
            continue;
        double const time = std::ranges::min(samples.processor);
        points.emplace_back(samples.size, time);
        sizeSquares += samples.size * samples.size;
        products += samples.size * time;
    }
    if (points.size() < 2)
        return std::nullopt;
    double const slope = products / sizeSquares; // least squares
    double squares = 0;
    double sum = 0;
    for (auto const& [size, time] : points) {
        squares += (time - slope * size) * (time - slope * size);
        sum += time;
    }
    return std::sqrt(squares / double(points.size())) / (sum / double(points.size()));
}
