#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <jobspec/settings.h>

namespace zelkotool {

/// What `zelko convert` was asked to do.
struct ConversionJob
{
    QStringList inputs;
    QString outputDirectory;
    QString kind; ///< empty: detected from each input's first frame
    JobSpec::Settings settings;
    QDateTime startTime; ///< invalid: each input's modification time (used by audio only)
    QString alphabetsDirectory; ///< empty: the configured or the shipped alphabets
    QString dataDirectory;      ///< working directory of the conversions; empty: unchanged
    int jobs = 1;
    bool showProgress = false;
    bool printXml = false;
};

/// Converts every input (up to job.jobs at once, one converter per thread), prints the
/// produced files, and returns the exit status: 0, or 1 when an input could not be read.
int runConversionJob(ConversionJob const& job);

bool isStderrTerminal();

} // namespace zelkotool
