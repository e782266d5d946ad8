#include "symboldataconverter.h"

#include "frameconversiondriver.h"
#include "recordermodel.h"
#include "symboldatamodel.h"

namespace zelkodatastreamconverter {

REPORTKIT::Results SymbolDataConverter::convertFile(QString const& inputPath,
                                                    QString const& outputDirectory,
                                                    JobSpec::Settings const& settings,
                                                    unsigned long long)
{
    SymbolDataModel model;
    FrameConversionDriver::Steps steps;
    steps.prepareRecorder = [](RecorderModel& recorder) {
        recorder.setFileCode(SymbolDataModel::SymbolsKind);
    };
    steps.prepareOutputs = [&model](FileInfoCallback& files, QString const& directory) {
        model.setOutput(directory, &files);
    };
    steps.processFrame = [&model](QByteArray const& frame) { return model.processData(frame); };
    steps.finishModel = [&model] { model.finish(); };
    return FrameConversionDriver::run(model, steps, inputPath, outputDirectory, settings,
                                      QStringLiteral("symboldataconverter"), progress());
}

} // namespace zelkodatastreamconverter
