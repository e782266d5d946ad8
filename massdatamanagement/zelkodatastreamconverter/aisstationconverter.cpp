#include "aisstationconverter.h"

#include "recordermodel.h"
#include "transmissionsystemconverter.h"
#include "transmissionsystemmodel.h"

#include <jobspec/settings.h>
#include <memory>
#include <nerikresultdataxml/transmission.h>

namespace zelkodatastreamconverter {

using NerikResultDataXml::Transmission;

REPORTKIT::Results AISStationConverter::convertFile(QString const& inputPath,
                                                    QString const& outputDirectory,
                                                    JobSpec::Settings const& settings,
                                                    unsigned long long)
{
    JobSpec::Settings aisSettings = settings;
    JobSpec::Demodulator_Settings& demodulator = aisSettings.GetDemodulator_Settings();
    if (demodulator.GetTransmissionSystemMode().isEmpty()) {
        demodulator.SetTransmissionSystemMode(QStringLiteral("AIS"));
    }
    TransmissionSystemModel model;
    FrameConversionDriver::Steps steps = TransmissionSystemConverter::frameSteps(model);
    steps.prepareRecorder = [setFileCode = steps.prepareRecorder](RecorderModel& recorder) {
        setFileCode(recorder);
        // The job's settings arrive before the recording's first frame: no change during it.
        std::unique_ptr<Transmission>(recorder.takeCurrentTransmission());
    };
    steps.rejectLine = 0; // this converter's trace cites the driver
    steps.recordFrame = [&model](RecorderModel& recorder) {
        int const firstNew = model.getPDUOffset();
        if (firstNew < 0) {
            return;
        }
        Transmission added;
        model.extractTransmission(added, firstNew);
        QStringList stationXml;
        recorder.addTransmission(added, stationXml);
        // Station reports leave the result file alone; this one holds every report.
        recorder.markChanged();
    };
    return FrameConversionDriver::run(model, steps, inputPath, outputDirectory, aisSettings,
                                      QStringLiteral("aisstationconverter"), progress());
}

} // namespace zelkodatastreamconverter
