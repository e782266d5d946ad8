// Arbitrary text as a result document: what loads must save and load again to an equal
// document, and what does not load must leave the document as it was.
#include <QBuffer>
#include <cstdlib>
#include <nerikresultdataxml/nerikresultdata.h>

using NerikResultDataXml::NerikResultData;

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    QString const text = QString::fromUtf8(reinterpret_cast<char const*>(data), int(size));
    NerikResultData document;
    NerikResultData const empty;
    if (!document.SetXmlString(text)) {
        if (!(document == empty)) {
            std::abort();
        }
        return 0;
    }
    QBuffer saved;
    saved.open(QIODevice::WriteOnly);
    if (!document.Save(saved)) {
        std::abort();
    }
    NerikResultData reloaded;
    if (!reloaded.SetXmlString(QString::fromUtf8(saved.data())) || !(reloaded == document)) {
        std::abort();
    }
    return 0;
}
