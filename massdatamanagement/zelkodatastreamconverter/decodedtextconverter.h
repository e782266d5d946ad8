#pragma once

#include <massdatamanagement/zelkodatastreamconverter/frameconversiondriver.h>
#include <massdatamanagement/zelkodatastreamconverter/progressreportingconverter.h>

namespace zelkodatastreamconverter {

/// Converts decoded-text recordings (frame type 64) into a result document: one data block
/// per channel, the receiver's character codes kept as raw data and translated with the
/// alphabet of the job settings (a CodecHandler reading the configured alphabets directory).
///
/// The result file is named "NerikResultData_<yyyyMMdd_hhmmss>.xml" in the output directory
/// and listed as a REPORTKIT::Text record with the file code "DecodedText". A frame of any
/// other type ends the conversion; what was converted before it is kept.
class DecodedTextConverter : public ProgressReportingConverter
{
public:
    REPORTKIT::Results convertFile(QString const& inputPath, QString const& outputDirectory,
                                   JobSpec::Settings const& settings,
                                   unsigned long long startTimeMicroseconds) override;
};

} // namespace zelkodatastreamconverter
