#pragma once

#include <massdatamanagement/zelkodatastreamconverter/progressreportingconverter.h>

namespace zelkodatastreamconverter {

/// Converts image recordings (frame type 352) into pictures: one PNG per picture
/// ("Image_<yyyyMMdd_hhmmss>.png", a REPORTKIT::Picture record whose file code names the kind:
/// "WeatherFax", "SatelliteAPT", "SSTV", "Hellschreiber" or "Image"), and a result document
/// ("NerikResultData_<yyyyMMdd_hhmmss>.xml", file code "Image") that notes every picture with
/// its size and its missing and repeated lines. How lines become pictures: ImageDataModel.
/// A frame of any other type ends the conversion; the pictures before it are kept.
class ImageDataConverter : public ProgressReportingConverter
{
public:
    REPORTKIT::Results convertFile(QString const& inputPath, QString const& outputDirectory,
                                   JobSpec::Settings const& settings,
                                   unsigned long long startTimeMicroseconds) override;
};

} // namespace zelkodatastreamconverter
