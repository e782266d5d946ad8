#pragma once

#include <massdatamanagement/zelkodatastreamconverter/frameconversiondriver.h>
#include <massdatamanagement/zelkodatastreamconverter/idatastreamconverter.h>

namespace zelkodatastreamconverter {

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
class TransmissionSystemConverter : public IDataStreamConverter
{
public:
    REPORTKIT::Results convertFile(QString const& inputPath, QString const& outputDirectory,
                                   JobSpec::Settings const& settings,
                                   unsigned long long startTimeMicroseconds) override;

    /// Told of the bytes read now and then during convertFile(), for a progress display.
    void setProgressCallback(FrameConversionDriver::Progress progress)
    {
        m_progress = std::move(progress);
    }

private:
    FrameConversionDriver::Progress m_progress;
};

} // namespace zelkodatastreamconverter
