#include "transmissionsystemconverter.h"

#include "recordermodel.h"
#include "transmissionsystemmodel.h"

#include <memory>
#include <nerikresultdataxml/transmission.h>

namespace zelkodatastreamconverter {

namespace {
using NerikResultDataXml::Transmission;
// The line that hosts know the rejected-frame trace of this converter by.
constexpr int RejectedFrameLine = 50;
} // namespace

REPORTKIT::Results TransmissionSystemConverter::convertFile(QString const& inputPath,
                                                            QString const& outputDirectory,
                                                            JobSpec::Settings const& settings,
                                                            unsigned long long)
{
    TransmissionSystemModel model;
    return FrameConversionDriver::run(model, frameSteps(model), inputPath, outputDirectory,
                                      settings, QStringLiteral("transmissionsystemconverter"),
                                      progress());
}

FrameConversionDriver::Steps TransmissionSystemConverter::frameSteps(TransmissionSystemModel& model)
{
    FrameConversionDriver::Steps steps;
    steps.prepareRecorder = [](RecorderModel& recorder) {
        recorder.setFileCode(QStringLiteral("TransmissionSystem"));
    };
    steps.processFrame = [&model, firstFrame = true](QByteArray const& frame) mutable {
        if (firstFrame) {
            // Taking the settings of the job is no change during the recording: left pending,
            // it would let every frame stamped before the conversion's wall-clock time close
            // the transmission of the frame before it, and only the last would be written.
            // Taking the (still absent) transmission drops the pending change.
            std::unique_ptr<Transmission>(model.takeCurrentTransmission());
            firstFrame = false;
        }
        // A shallow copy: the model reads the frame in place.
        QByteArray shared = frame;
        return model.processData(shared);
    };
    steps.rejectLine = RejectedFrameLine;
    return steps;
}

} // namespace zelkodatastreamconverter
