#pragma once

#include <QString>

namespace zelkotool {

/// The converters read some tables from their working directory (the maritime identification
/// digits, MaritimListofCountries.csv), as they do inside a host that starts in its own data
/// directory. The tool runs its conversions from a data directory instead of the user's.

/// The data directory for a run: requested when given (made absolute), else the data installed
/// beside the tool (share/zelko), else the source tree's data/; empty when none of them holds
/// the tables, and the conversions then stay in the user's directory.
QString dataDirectory(QString const& requested);

/// For a directory the user named: false, with a message, when it is no directory; a
/// warning when it lacks the tables (the conversions still run, with unknown countries).
bool checkDataDirectory(QString const& directory);

/// Makes directory the working directory for the object's lifetime (no change when it is
/// empty) and returns to the previous one afterwards. A relative $ZELKO_CONFIG is made
/// absolute first, since the converters read the configuration only after the change.
class WorkingDirectory
{
public:
    explicit WorkingDirectory(QString const& directory);
    ~WorkingDirectory();
    WorkingDirectory(WorkingDirectory const&) = delete;
    WorkingDirectory& operator=(WorkingDirectory const&) = delete;

private:
    QString m_previous;
};

} // namespace zelkotool
