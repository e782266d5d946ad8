// Arbitrary bytes as a symbol recording: raw symbols unpacked at any width and count, Morse
// elements of any duration through the element timing, streams started and ended by changes
// of kind and width, and the result document rendered. The symbol files' reader takes the
// same bytes as a symbol file.
#include <massdatamanagement/zelkodatastreamconverter/symboldatamodel.h>
#include <massdatamanagement/zelkodatastreamconverter/symbolfile.h>
#include <support/memoryframereader.h>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    zelkodatastreamconverter::SymbolDataModel model;
    model.setAlphabetsDirectory(QStringLiteral(ZELKO_SOURCE_DIR "/data/alphabets"));
    zelkotest::forEachFrame(data, size, [&model](QByteArray const&, QByteArray const& frame) {
        model.processData(frame);
    });
    model.finish();
    zelkodatastreamconverter::NerikResultModel::getMessageData(model.getCurrentTransmission());

    QVector<zelkodatastreamconverter::SymbolRecord> records;
    QString reason;
    zelkodatastreamconverter::SymbolFile::read(
        QByteArray::fromRawData(reinterpret_cast<char const*>(data), int(size)), records, reason);
    return 0;
}
