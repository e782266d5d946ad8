// Arbitrary bytes as a transmission-system recording: every frame through the model (payloads
// decoded with an alphabet), then re-translated and rendered as a result document.
#include <QBuffer>
#include <massdatamanagement/zelkodatastreamconverter/transmissionsystemmodel.h>
#include <memory>
#include <nerikresultdataxml/nerikresultdata.h>
#include <nerikresultdataxml/transmission.h>
#include <support/memoryframereader.h>

using namespace zelkodatastreamconverter;

namespace {

// Loading the alphabets costs far more than a run: one model serves every run, cleared in
// between.
TransmissionSystemModel& model()
{
    static TransmissionSystemModel* const instance = [] {
        auto* made = new TransmissionSystemModel;
        made->setAlphabetsDirectory(QStringLiteral(ZELKO_SOURCE_DIR "/data/alphabets"));
        bool changed = false;
        made->setAlphabet(QStringLiteral("ASCII"), changed);
        return made;
    }();
    return *instance;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    TransmissionSystemModel& messages = model();
    messages.clear();
    zelkotest::forEachFrame(data, size, [&messages](QByteArray const&, QByteArray const& frame) {
        QByteArray copy = frame;
        messages.processData(copy);
    });
    messages.translateCurrentTransmission();
    QBuffer out;
    out.open(QIODevice::WriteOnly);
    messages.getResultData()->Save(out);
    std::unique_ptr<NerikResultDataXml::Transmission> const taken(
        messages.takeCurrentTransmission());
    return 0;
}
