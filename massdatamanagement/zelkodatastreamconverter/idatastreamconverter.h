#pragma once

#include <QString>
#include <reportkit/results.h>

namespace JobSpec {
class Settings;
}

namespace zelkodatastreamconverter {

/// A converter of one kind of recording. The host holds any converter through this
/// interface and calls convertFile() once per recording; one object may convert many
/// files one after the other.
class IDataStreamConverter
{
public:
    IDataStreamConverter() = default;
    IDataStreamConverter(IDataStreamConverter const&) = default;
    IDataStreamConverter& operator=(IDataStreamConverter const&) = default;
    virtual ~IDataStreamConverter();

    /// Converts the recording at inputPath into files in outputDirectory and lists them.
    /// settings are the job settings under which the recording was made;
    /// startTimeMicroseconds is the recording's start (microseconds since 1970-01-01 UTC).
    /// There is no error result: failures show in the trace and in what the list lacks.
    virtual REPORTKIT::Results convertFile(QString const& inputPath, QString const& outputDirectory,
                                           JobSpec::Settings const& settings,
                                           unsigned long long startTimeMicroseconds) = 0;
};

} // namespace zelkodatastreamconverter
