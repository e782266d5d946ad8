#pragma once

#include <massdatamanagement/zelkodatastreamconverter/progressreportingconverter.h>

namespace zelkodatastreamconverter {

/// Converts symbol recordings (frame type 304: raw demodulator symbols and Morse elements)
/// into a symbol file and a text file per channel and a result document
/// ("NerikResultData_<yyyyMMdd_hhmmss>.xml", file code "Symbols") with a data block per
/// channel; how, SymbolDataModel says. A frame of any other type ends the conversion; what
/// was read before it is kept.
class SymbolDataConverter : public ProgressReportingConverter
{
public:
    REPORTKIT::Results convertFile(QString const& inputPath, QString const& outputDirectory,
                                   JobSpec::Settings const& settings,
                                   unsigned long long startTimeMicroseconds) override;
};

} // namespace zelkodatastreamconverter
