#include "transmissionsystemconverter.h"

#include "recordermodel.h"
#include "transmissionsystemmodel.h"

namespace zelkodatastreamconverter {

namespace {
// The line that hosts know the rejected-frame trace of this converter by.
constexpr int RejectedFrameLine = 50;
} // namespace

REPORTKIT::Results TransmissionSystemConverter::convertFile(QString const& inputPath,
                                                            QString const& outputDirectory,
                                                            JobSpec::Settings const& settings,
                                                            unsigned long long)
{
    TransmissionSystemModel model;
    FrameConversionDriver::Steps steps;
    steps.prepareRecorder = [](RecorderModel& recorder) {
        recorder.setFileCode(QStringLiteral("TransmissionSystem"));
    };
    steps.processFrame = [&model](QByteArray const& frame) {
        // A shallow copy: the model reads the frame in place.
        QByteArray shared = frame;
        return model.processData(shared);
    };
    steps.rejectLine = RejectedFrameLine;
    return FrameConversionDriver::run(model, steps, inputPath, outputDirectory, settings,
                                      QStringLiteral("transmissionsystemconverter"), m_progress);
}

} // namespace zelkodatastreamconverter
