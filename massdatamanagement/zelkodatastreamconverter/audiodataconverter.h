#pragma once

#include <functional>
#include <massdatamanagement/zelkodatastreamconverter/progressreportingconverter.h>

namespace zelkodatastreamconverter {

class IAudioTransformer;

/// Converts audio recordings. They are not framed: each one is handed to the audio export
/// library loaded at run time ("AudioFileExport.DLL", see IAudioTransformer), which writes a
/// Broadcast Wave file and a session file that lists it.
///
/// convertFile() reports two REPORTKIT::Binary records: the WAV ("AudioData", code "WAV",
/// the receive frequency of the job settings) and the session file ("AudioSession"), both
/// with the recording's start time as start and stop time. A library that could not be
/// loaded gives empty results; a failed conversion gives none; a failed session file leaves
/// only the WAV record.
///
/// The library is loaded once, in the constructor; when that fails the message
/// "AudioDataConverter: Cannot load AudioFileExport.DLL" goes to the trace (warning bit) and
/// to standard output. The destructor releases the library on the application's main thread
/// (ThreadingHelper), which must then be processing events if the converter dies elsewhere.
class AudioDataConverter : public ProgressReportingConverter
{
public:
    AudioDataConverter();
    /// Loads the given library file instead of "AudioFileExport.DLL" (a name with a
    /// directory loads exactly that file); messages still name the standard library.
    explicit AudioDataConverter(QString const& libraryFileName);
    ~AudioDataConverter() override;
    AudioDataConverter(AudioDataConverter const&) = delete;
    AudioDataConverter& operator=(AudioDataConverter const&) = delete;

    REPORTKIT::Results convertFile(QString const& inputPath, QString const& outputDirectory,
                                   JobSpec::Settings const& settings,
                                   unsigned long long startTimeMicroseconds) override;

    /// True when the audio export library was loaded.
    bool isLoaded() const { return m_transformer != nullptr; }

    // Progress (setProgressCallback) counts input bytes, estimated from the frames written.

private:
    /// The WAV path for a recording: its file name without the last extension, ".wav"
    /// appended, in outputDirectory, as an absolute path.
    static QString getOutputFilePath(QString const& inputPath, QString const& outputDirectory);

    IAudioTransformer* m_transformer = nullptr; // owned by the start-up library's loader
};

} // namespace zelkodatastreamconverter
