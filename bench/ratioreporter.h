#pragma once

// The console reporter of every benchmark here, keeping what each run measured so that the
// program can print its figures beside their baselines at the end.

#include <benchmark/benchmark.h>
#include <map>
#include <string>
#include <vector>

namespace zelkobench {

class RatioReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(std::vector<Run> const& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (Run const& run : runs) {
            if (run.run_type != Run::RT_Iteration || run.error_occurred || run.iterations <= 0) {
                continue;
            }
            std::string const name = run.benchmark_name();
            double const iterations = double(run.iterations);
            seconds[name] = run.real_accumulated_time / iterations;
            cpuSeconds[name] = run.cpu_accumulated_time / iterations;
            for (auto const& counter : run.counters) {
                counters[name + ":" + counter.first] = counter.second.value;
            }
        }
    }

    /// Wall seconds per iteration of the first run whose name starts with prefix (names
    /// carry suffixes such as "/min_time:1.000/real_time"); 0 when there is none.
    double find(std::string const& prefix) const { return lookup(seconds, prefix); }
    double findCpu(std::string const& prefix) const { return lookup(cpuSeconds, prefix); }

    std::map<std::string, double> seconds;
    std::map<std::string, double> cpuSeconds;
    std::map<std::string, double> counters;

private:
    static double lookup(std::map<std::string, double> const& values, std::string const& prefix)
    {
        auto const found = values.lower_bound(prefix);
        return found != values.end() && found->first.compare(0, prefix.size(), prefix) == 0
                   ? found->second
                   : 0.0;
    }
};

} // namespace zelkobench
