#pragma once

// What the benchmarks that time a converter on a recording beside a baseline do alike: the
// recording read once into the page cache, and one timed conversion into a fresh directory.

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <functional>
#include <jobspec/settings.h>
#include <limits>
#include <reportkit/results.h>
#include <vector>

namespace zelkobench {

inline double seconds(QElapsedTimer const& timer)
{
    return double(timer.nsecsElapsed()) / 1e9;
}

/// Reads the file once, so that the timed runs do not measure the disk.
inline void warmPageCache(QString const& path)
{
    QFile warm(path);
    warm.open(QIODevice::ReadOnly);
    while (!warm.read(1 << 20).isEmpty()) {
    }
}

/// Wall seconds of converting the recording with default settings; results gets what the
/// converter listed. The directory is gone afterwards.
template <typename Converter>
double timedConversion(QString const& recording, REPORTKIT::Results& results)
{
    QTemporaryDir out;
    JobSpec::Settings settings;
    settings.SetValidate(false);
    QElapsedTimer timer;
    timer.start();
    results = Converter().convertFile(recording, out.path(), settings, 0);
    return seconds(timer);
}

/// A step for bestOfTwoRounds: converting the recording, failed when `produced` finds nothing
/// of what was expected in the converter's list of files.
template <typename Converter>
std::function<double()> conversionStep(QString const& recording,
                                       std::function<bool(REPORTKIT::Results const&)> produced,
                                       char const* failure)
{
    return [recording, produced, failure] {
        REPORTKIT::Results results;
        double const taken = timedConversion<Converter>(recording, results);
        if (!produced(results)) {
            std::fprintf(stderr, "%s\n", failure);
            return -1.0;
        }
        return taken;
    };
}

/// The least seconds of each step over two rounds (the first warms caches and allocators),
/// in the steps' order. A step returns its seconds, or a negative number when it failed, which
/// ends the measurement with no figures.
inline std::vector<double> bestOfTwoRounds(std::vector<std::function<double()>> const& steps)
{
    std::vector<double> best(steps.size(), std::numeric_limits<double>::max());
    for (int round = 0; round < 2; ++round) {
        for (std::size_t i = 0; i < steps.size(); ++i) {
            double const taken = steps[i]();
            if (taken < 0) {
                return {};
            }
            best[i] = std::min(best[i], taken);
        }
    }
    return best;
}

} // namespace zelkobench
