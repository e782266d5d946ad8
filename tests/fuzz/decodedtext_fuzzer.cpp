// Arbitrary bytes as a decoded-text recording, translated through a three-shift alphabet and
// rendered as a result document that must be well-formed.
#include <QBuffer>
#include <QXmlStreamReader>
#include <alphabetkit/codechandler.h>
#include <cstdlib>
#include <massdatamanagement/zelkodatastreamconverter/decodedtextmodel.h>
#include <memory>
#include <nerikresultdataxml/nerikresultdata.h>
#include <nerikresultdataxml/transmission.h>
#include <support/memoryframereader.h>

using namespace zelkodatastreamconverter;

namespace {

// Reading the alphabets directory costs far more than a run, so one model serves every run
// and is cleared in between, as a converter clears it between recordings.
DecodedTextModel& model()
{
    static DecodedTextModel* const instance = [] {
        auto* made = new DecodedTextModel;
        made->setAlphabetsDirectory(QStringLiteral(ZELKO_SOURCE_DIR "/data/alphabets"));
        made->setAlphabetHandler(std::make_shared<CodecHandler>());
        made->setDecoder(QStringLiteral("BAUDOT"));
        bool changed = false;
        made->setAlphabet(QStringLiteral("MTK-2"), changed);
        return made;
    }();
    return *instance;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    DecodedTextModel& decoded = model();
    decoded.clear();
    zelkotest::forEachFrame(data, size, [&decoded](QByteArray const&, QByteArray const& frame) {
        decoded.processData(frame, nullptr);
    });
    QBuffer out;
    out.open(QIODevice::WriteOnly);
    decoded.getResultData()->Save(out);
    // Whatever the recording held, the document must stay well-formed XML.
    QXmlStreamReader reader(out.data());
    while (!reader.atEnd()) {
        reader.readNext();
    }
    if (reader.hasError()) {
        std::abort();
    }
    std::unique_ptr<NerikResultDataXml::Transmission> const taken(
        decoded.takeCurrentTransmission());
    return 0;
}
