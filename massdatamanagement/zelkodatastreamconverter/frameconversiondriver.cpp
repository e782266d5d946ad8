#include "frameconversiondriver.h"

#include "fileinfolist.h"
#include "filereader.h"
#include "moduletrace.h"
#include "nerikresultmodel.h"
#include "recordermodel.h"

#include <memory>
#include <nerikresultdataxml/transmission.h>

namespace zelkodatastreamconverter {

using NerikResultDataXml::Transmission;

namespace {
// Progress is reported at most every this many bytes, so a caller's display stays cheap.
constexpr qint64 ProgressStep = 4 << 20;
} // namespace

REPORTKIT::Results FrameConversionDriver::run(NerikResultModel& model, Steps const& steps,
                                              QString const& inputPath,
                                              QString const& outputDirectory,
                                              JobSpec::Settings const& settings,
                                              QString const& module, Progress const& progress)
{
    FileInfoList fileInfoList;
    RecorderModel recorder(&fileInfoList);
    FileReader reader(inputPath);
    QByteArray frameType;
    QByteArray frameData;

    recorder.setDirectoryPath(outputDirectory);
    recorder.setParameter(settings);
    if (steps.prepareRecorder) {
        steps.prepareRecorder(recorder);
    }
    if (steps.prepareModel) {
        steps.prepareModel();
    }
    if (steps.prepareOutputs) {
        steps.prepareOutputs(fileInfoList, outputDirectory);
    }
    model.setParameter(settings);

    qint64 const total = reader.getFile().size();
    qint64 nextReport = ProgressStep;
    while (reader.isWorking()) {
        if (!reader.readFrame()) {
            continue;
        }
        reader.takeFrameData(frameType, frameData);
        if (!steps.processFrame(frameData)) {
            ModuleTrace(module).warning(
                QStringLiteral("convertFile(%1): invalid frame header").arg(inputPath),
                steps.rejectLine != 0 ? steps.rejectLine : __LINE__);
            break;
        }
        if (steps.recordFrame) {
            steps.recordFrame(recorder);
        }
        if (progress && reader.getPosition() >= nextReport) {
            progress(reader.getPosition(), total);
            nextReport = reader.getPosition() + ProgressStep;
        }
    }
    if (progress) {
        progress(total, total);
    }

    if (steps.finishModel) {
        steps.finishModel();
    }
    std::unique_ptr<Transmission> transmission(model.takeCurrentTransmission());
    if (!steps.recordFrame) {
        recorder.setCurrentTransmission(transmission.release());
    }
    recorder.closeFile();
    return fileInfoList.getResults();
}

} // namespace zelkodatastreamconverter
