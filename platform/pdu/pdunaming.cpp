#include "pdunaming.h"

#include "aismessagetable.h"

namespace PduNaming {

std::wstring PDUIdTranslator::pduIdToString(unsigned pduID)
{
    ais::MessageLayout const* layout = ais::layoutForPduId(pduID);
    return layout ? QString::fromUtf8(layout->name).toStdWString() : std::wstring();
}

std::vector<std::wstring> PDUFieldNameProvider::getHeaders(unsigned pduID)
{
    std::vector<std::wstring> headers;
    if (ais::MessageLayout const* layout = ais::layoutForPduId(pduID)) {
        for (QString const& label : ais::labels(*layout)) {
            headers.push_back(label.toStdWString());
        }
    }
    return headers;
}

std::wstring PDUDataTranslator::dataIdToString(unsigned translationID)
{
    return ais::translation(translationID).toStdWString();
}

} // namespace PduNaming
