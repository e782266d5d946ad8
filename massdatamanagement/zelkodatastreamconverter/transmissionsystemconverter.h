#pragma once

#include <massdatamanagement/zelkodatastreamconverter/frameconversiondriver.h>
#include <massdatamanagement/zelkodatastreamconverter/progressreportingconverter.h>

namespace zelkodatastreamconverter {

class TransmissionSystemModel;

/// Converts transmission-system recordings (frame type 368) into a result document: one
/// transmission whose PDU data blocks are the decoded messages (TransmissionSystemModel).
///
/// The result file is named "NerikResultData_<yyyyMMdd_hhmmss>.xml" in the output directory
/// and listed with the file code "TransmissionSystem". A frame with a wrong magic or header
/// length ends the conversion with the trace "convertFile(<path>): invalid frame header";
/// what was converted before it is kept and written.
///
/// An AX.25 disconnect request does not close the transmission here: a recording is one
/// transmission. Hosts that convert live read TransmissionSystemModel::getEndConnection().
class TransmissionSystemConverter : public ProgressReportingConverter
{
public:
    REPORTKIT::Results convertFile(QString const& inputPath, QString const& outputDirectory,
                                   JobSpec::Settings const& settings,
                                   unsigned long long startTimeMicroseconds) override;

    /// The steps of the frame driver that every transmission-system conversion shares: the
    /// file code, and the model fed frame by frame from the recording's first frame on.
    static FrameConversionDriver::Steps frameSteps(TransmissionSystemModel& model);
};

} // namespace zelkodatastreamconverter
