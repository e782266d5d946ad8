#pragma once
// Runs one of our command-line tools as a user would and collects what it printed. Shared by
// every test that starts a tool, so that time limits and crash reporting are the same.

#include <QString>
#include <QStringList>
#include <utility>
#include <vector>

namespace zelkotest {

struct ToolRun
{
    /// The tool's exit status; -1 when it did not end within the time limit (it is killed),
    /// -2 when it crashed.
    int exitCode = -1;
    QString out;
    QString err;
};

struct ToolSetup
{
    QString workingDirectory; ///< empty: the test's own
    /// Environment changes: a null value removes the variable.
    std::vector<std::pair<QString, QString>> environment;
    bool mergeChannels = false; ///< standard error into `out`, interleaved as printed
    int timeoutMs = 120000;
};

ToolRun runTool(QString const& program, QStringList const& arguments, ToolSetup const& setup = {});

} // namespace zelkotest
