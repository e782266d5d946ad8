#include "imagedataconverter.h"

#include "frameconversiondriver.h"
#include "imagedatamodel.h"
#include "recordermodel.h"

namespace zelkodatastreamconverter {

REPORTKIT::Results ImageDataConverter::convertFile(QString const& inputPath,
                                                   QString const& outputDirectory,
                                                   JobSpec::Settings const& settings,
                                                   unsigned long long)
{
    ImageDataModel model;
    FrameConversionDriver::Steps steps;
    steps.prepareRecorder = [](RecorderModel& recorder) {
        recorder.setFileCode(QStringLiteral("Image"));
    };
    steps.prepareOutputs = [&model](FileInfoCallback& files, QString const& directory) {
        model.setOutput(directory, &files);
    };
    steps.processFrame = [&model](QByteArray const& frame) { return model.processData(frame); };
    steps.finishModel = [&model] { model.finish(); };
    return FrameConversionDriver::run(model, steps, inputPath, outputDirectory, settings,
                                      QStringLiteral("imagedataconverter"), progress());
}

} // namespace zelkodatastreamconverter
