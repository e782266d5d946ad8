// Arbitrary bytes as a transmission-system recording: every frame through the model's
// per-system processors, the document rendered as XML. Records that state counts beyond
// their frame, cut sub-channel lists and unknown codes must neither read out of bounds nor
// loop.
#include "memoryframereader.h"

#include <QBuffer>
#include <massdatamanagement/zelkodatastreamconverter/transmissionsystemmodel.h>
#include <memory>
#include <nerikresultdataxml/nerikresultdata.h>
#include <nerikresultdataxml/transmission.h>

using namespace zelkodatastreamconverter;

namespace {

// One model for every run, cleared in between as a converter's model is between recordings.
TransmissionSystemModel& model()
{
    static TransmissionSystemModel* const instance = new TransmissionSystemModel;
    return *instance;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    TransmissionSystemModel& systems = model();
    systems.clear();
    zelkofuzz::forEachFrame(data, size, [&systems](QByteArray const&, QByteArray const& frame) {
        QByteArray copy = frame;
        systems.processData(copy);
    });
    QBuffer out;
    out.open(QIODevice::WriteOnly);
    systems.getResultData()->Save(out);
    std::unique_ptr<NerikResultDataXml::Transmission> const taken(systems.takeCurrentTransmission());
    return 0;
}
