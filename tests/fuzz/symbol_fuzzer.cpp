// Arbitrary bytes as a symbol recording through the symbol model (raw symbols of any width,
// Morse elements of any duration, stream changes), the document rendered; then as a symbol file.
#include <massdatamanagement/zelkodatastreamconverter/symboldatamodel.h>
#include <massdatamanagement/zelkodatastreamconverter/symbolfile.h>
#include <support/memoryframereader.h>

namespace {

// Reading the alphabets costs far more than a run, so one model serves every run and is
// cleared in between, as a host clears it between recordings.
zelkodatastreamconverter::SymbolDataModel& symbolModel()
{
    static auto* const instance = [] {
        auto* made = new zelkodatastreamconverter::SymbolDataModel;
        made->setAlphabetsDirectory(QStringLiteral(ZELKO_SOURCE_DIR "/data/alphabets"));
        made->setDecoder(QStringLiteral("RTTY"));
        bool changed = false;
        made->setAlphabet(QStringLiteral("International"), changed);
        return made;
    }();
    return *instance;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    zelkodatastreamconverter::SymbolDataModel& model = symbolModel();
    model.clear();
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
