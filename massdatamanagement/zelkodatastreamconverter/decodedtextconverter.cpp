#include "decodedtextconverter.h"

#include "decodedtextmodel.h"

#include <alphabetkit/codechandler.h>

namespace zelkodatastreamconverter {

REPORTKIT::Results DecodedTextConverter::convertFile(QString const& inputPath,
                                                     QString const& outputDirectory,
                                                     JobSpec::Settings const& settings,
                                                     unsigned long long)
{
    DecodedTextModel model;
    FrameConversionDriver::Steps steps;
    steps.prepareModel = [&model] { model.setAlphabetHandler(std::make_shared<CodecHandler>()); };
    steps.processFrame = [&model](QByteArray const& frame) {
        return model.processData(frame, nullptr);
    };
    return FrameConversionDriver::run(model, steps, inputPath, outputDirectory, settings,
                                      QStringLiteral("decodedtextconverter"), progress());
}

} // namespace zelkodatastreamconverter
