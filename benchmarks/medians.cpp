#include "benchmarks/medians.h"

#include <algorithm>
#include <cstdio>

namespace {

std::optional<double> median(std::vector<double> values) {
    if (values.empty())
        return std::nullopt;
    auto const middle = values.begin() + ptrdiff_t(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

} // namespace

bool Medians::ReportContext(Context const&) {
    return true;
}

void Medians::ReportRuns(std::vector<Run> const& runs) {
    for (Run const& run : runs) {
        if (run.error_occurred) {
            std::fprintf(stderr, "%s: %s\n", run.benchmark_name().c_str(), run.error_message.c_str());
            m_hasFailures = true;
        } else if (run.report_rms) {
            m_lineDeviations[run.run_name.function_name] = run.GetAdjustedCPUTime();
        } else if (run.run_type == Run::RT_Iteration) {
            collect(run);
        }
    }
}

void Medians::collect(Run const& run) {
    std::string name = run.run_name.function_name;
    if (!run.run_name.args.empty())
        name += "/" + run.run_name.args;
    Samples& samples = m_samples[name];
    samples.processor.push_back(run.cpu_accumulated_time / double(run.iterations));
    samples.clock.push_back(run.real_accumulated_time / double(run.iterations));
    for (auto const& [counter, value] : run.counters) {
        double& largest = samples.counters[counter];
        largest = std::max(largest, double(value));
    }
}

std::optional<double> Medians::processorTime(std::string const& name) const {
    auto const found = m_samples.find(name);
    return found == m_samples.end() ? std::nullopt : median(found->second.processor);
}

std::optional<double> Medians::clockTime(std::string const& name) const {
    auto const found = m_samples.find(name);
    return found == m_samples.end() ? std::nullopt : median(found->second.clock);
}

std::optional<double> Medians::counter(std::string const& name, std::string const& counter) const {
    auto const found = m_samples.find(name);
    if (found == m_samples.end() || !found->second.counters.count(counter))
        return std::nullopt;
    return found->second.counters.at(counter);
}

std::optional<double> Medians::lineDeviation(std::string const& family) const {
    auto const found = m_lineDeviations.find(family);
    return found == m_lineDeviations.end() ? std::nullopt : std::optional(found->second);
}
