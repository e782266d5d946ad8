#pragma once

#include <massdatamanagement/zelkodatastreamconverter/frameconversiondriver.h>
#include <massdatamanagement/zelkodatastreamconverter/progressreportingconverter.h>

namespace zelkodatastreamconverter {

/// Converts AIS recordings (transmission-system frames of code 16 whose PDUs the AIS decoder
/// reads) into the result document and one station file per ship, as a host that records a
/// receiver live gets them: every frame's new PDU blocks go to the recorder at once
/// (RecorderModel::addTransmission), with the recorder in AIS mode, so that its station scan
/// sees each report.
///
/// The result file and its record are those of TransmissionSystemConverter; station files
/// are "AISStation_<MMSI>_<yyyyMMdd_hhmmss>.xml" with the file code "AISStation", written and
/// completed at the end. Job settings that name another transmission system are kept, and no
/// station file is written then.
class AISStationConverter : public ProgressReportingConverter
{
public:
    REPORTKIT::Results convertFile(QString const& inputPath, QString const& outputDirectory,
                                   JobSpec::Settings const& settings,
                                   unsigned long long startTimeMicroseconds) override;
};

} // namespace zelkodatastreamconverter
