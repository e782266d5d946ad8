#pragma once
// Runs a program as a child process for the benchmarks that compare our tools with a peer's:
// wall time and peak resident set of one run, the better of two runs, a warm page cache.

#include <QFile>
#include <QString>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace zelkobench {

struct Run
{
    bool ok = false;
    double seconds = 0;
    double peakMiB = 0;
};

/// Runs arguments[0] with the rest as arguments, standard output to /dev/null and standard
/// input from `input` (none: inherited).
inline Run runProgram(std::vector<std::string> const& arguments, std::string const& input = {})
{
    std::vector<char*> argv;
    for (std::string const& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);
    auto const start = std::chrono::steady_clock::now();
    std::fflush(stdout);
    pid_t const child = fork();
    if (child == 0) {
        if (!freopen("/dev/null", "w", stdout) ||
            (!input.empty() && !freopen(input.c_str(), "r", stdin))) {
            _exit(126);
        }
        execvp(argv[0], argv.data());
        _exit(127);
    }
    Run run;
    int status = 0;
    rusage usage{};
    if (child < 0 || wait4(child, &status, 0, &usage) != child) {
        return run;
    }
    run.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    run.ok = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    run.peakMiB = double(usage.ru_maxrss) / 1024.0; // kilobytes on Linux
    return run;
}

inline void warmCache(QString const& path)
{
    QFile file(path);
    if (file.open(QIODevice::ReadOnly)) {
        while (!file.read(1 << 24).isEmpty()) {
        }
    }
}

inline Run better(Run const& a, Run const& b)
{
    if (!a.ok || (b.ok && b.seconds < a.seconds)) {
        return b;
    }
    return a;
}

/// Two runs one after the other as one: times add up, the larger peak counts.
inline Run chained(Run const& first, Run const& second)
{
    return {first.ok && second.ok, first.seconds + second.seconds,
            first.peakMiB > second.peakMiB ? first.peakMiB : second.peakMiB};
}

} // namespace zelkobench
