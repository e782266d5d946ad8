#pragma once

#include <QByteArray>
#include <QString>
#include <functional>
#include <reportkit/results.h>

namespace JobSpec {
class Settings;
}

namespace zelkodatastreamconverter {

class FileInfoCallback;
class NerikResultModel;
class RecorderModel;

/// The loop every frame-reading converter runs, written once.
///
/// With the converter's data model already constructed, it constructs a FileInfoList, a
/// RecorderModel reporting to it and a FileReader on the recording; hands the output
/// directory and the job settings to the recorder, lets the converter prepare its model,
/// hands the settings to the model, and feeds every frame to the model until the recording
/// ends or the model rejects a frame ("convertFile(<path>): invalid frame header", which ends
/// the conversion). Then the model's current transmission goes to the recorder (unless the
/// converter records frame by frame), which writes and completes the result file, and the
/// collected results are returned.
class FrameConversionDriver
{
public:
    /// Bytes of the recording consumed so far, and its size.
    using Progress = std::function<void(qint64 bytesDone, qint64 bytesTotal)>;

    struct Steps
    {
        /// Kind-specific preparation of the model before it receives the settings.
        std::function<void()> prepareModel;
        /// Optional: for models that write files of their own beside the result document
        /// (pictures): the callback that lists the conversion's files, and the directory.
        std::function<void(FileInfoCallback& files, QString const& outputDirectory)> prepareOutputs;
        /// Optional: after the last frame, before the model's transmission goes to the
        /// recorder (a model completes what it still holds).
        std::function<void()> finishModel;
        /// Optional: set-up of the recorder after it received the settings (file code, ...).
        std::function<void(RecorderModel&)> prepareRecorder;
        /// One frame to the model; false rejects it and ends the conversion.
        std::function<bool(QByteArray const& frame)> processFrame;
        /// Optional: the source line that the trace of a rejected frame cites (the
        /// converter's own, for hosts that filter by it); 0 cites the driver's.
        int rejectLine = 0;
        /// Optional: after each accepted frame, as a host that records live would (the
        /// recorder then has every frame already, and the model's transmission is not handed
        /// to it at the end).
        std::function<void(RecorderModel&)> recordFrame;
    };

    /// module names the reporting converter in the trace ("decodedtextconverter").
    static REPORTKIT::Results run(NerikResultModel& model, Steps const& steps,
                                  QString const& inputPath, QString const& outputDirectory,
                                  JobSpec::Settings const& settings, QString const& module,
                                  Progress const& progress = Progress());
};

} // namespace zelkodatastreamconverter
