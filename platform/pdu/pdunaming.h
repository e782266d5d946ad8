#pragma once
// Names of what the PDU decoders produce: a block name per PDU ID, the field labels of a PDU
// ID in field order, and the text of a translation ID. Unknown IDs give an empty name, no
// labels and an empty text.

#include <string>
#include <vector>

namespace PduNaming {

class PDUIdTranslator
{
public:
    static std::wstring pduIdToString(unsigned pduID);
};

class PDUFieldNameProvider
{
public:
    static std::vector<std::wstring> getHeaders(unsigned pduID);
};

class PDUDataTranslator
{
public:
    static std::wstring dataIdToString(unsigned translationID);
};

} // namespace PduNaming
