#pragma once
// Scenario scripts with golden dumps: a script in tests/data/<area>/<name>.scenario holds one
// operation a line ("#" starts a comment); the test applies each to the real class and writes
// down what happened; the dump is compared with <name>.dump beside the script.

#include <QString>
#include <QStringList>
#include <functional>
#include <gtest/gtest.h>
#include <support/tracecapture.h>

namespace zelkotest {

using ScenarioStep = std::function<void(QStringList const& words)>;
using TraceText = std::function<QString(TraceLine const& trace)>;

/// The words of a line, split at blanks; "..." keeps its blanks, also as key="...".
QStringList scenarioWords(QString const& line);

/// Runs tests/data/<area>/<name>.scenario: each operation line goes into the dump, is applied
/// as its words (the step may add indented lines to dump), and is followed by what it traced.
/// Returns the comparison with the golden dump: empty when equal.
QString checkScenario(QString const& area, QString const& name, ScenarioStep const& step,
                      TraceText const& traceText, QStringList& dump);

/// The scripts of tests/data/<area>, by name without ".scenario".
QStringList scenarioNames(QString const& area);

/// Names a parameterised row after its script, so that each can run on its own.
struct ScenarioName
{
    std::string operator()(testing::TestParamInfo<QString> const& info) const
    {
        return QString(info.param).replace('-', '_').toStdString();
    }
};

} // namespace zelkotest
