// Arbitrary bytes as an image recording: lines assembled into pictures (widths, depths, line
// indexes and times from the recording become image sizes and row positions), Hellschreiber
// pictures read as text, and the result document rendered.
#include <massdatamanagement/zelkodatastreamconverter/imagedatamodel.h>
#include <support/memoryframereader.h>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    zelkodatastreamconverter::ImageDataModel model;
    zelkotest::forEachFrame(data, size, [&model](QByteArray const&, QByteArray const& frame) {
        model.processData(frame);
    });
    model.finish();
    zelkodatastreamconverter::NerikResultModel::getMessageData(model.getCurrentTransmission());
    return 0;
}
