// POCSAG: a page of the radio paging code No. 1. The address code word carries the pager's
// address, its frame position and the function bits, which tell numeric from alphanumeric
// messages.
#include "recordwords.h"

namespace zelkodatastreamconverter {

namespace {

QString alphabetText(quint32 function)
{
    switch (function) {
    case 0:
        return TransmissionSystemModel::tr("0 (numeric-only)");
    case 3:
        return TransmissionSystemModel::tr("3 (Alphabet #5)");
    default:
        return TransmissionSystemModel::tr("%1 (non-standard)").arg(function);
    }
}

} // namespace

void TransmissionSystemModel::Process_POCSAG(PDUDataBlock* block, void* record)
{
    if (record == nullptr) {
        return;
    }
    RecordWords const words(record, WordsAvailable(record, 0));
    quint32 const codeWord = words.at(2);
    SetCRC(block, words.at(0) != 0);
    AddField(block, tr("ID"), unsigned((codeWord >> 2) & 7u));
    AddField(block, tr("Address"), unsigned(codeWord >> 5));
    AddField(block, tr("Rate"), unsigned(words.at(1)));
    AddField(block, tr("Alphabet"), alphabetText(codeWord & 3u), QStringLiteral("string"));
    unsigned const length = words.textLength(4, 4u * quint64(words.at(3)));
    SetASCIIPayload(block, tr("Message"), length, words.bytes(4));
}

} // namespace zelkodatastreamconverter
