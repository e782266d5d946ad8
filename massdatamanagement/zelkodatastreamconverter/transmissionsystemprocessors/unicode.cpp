// UNICODE: free text in UTF-16. Word 0 is the word count, then two 16-bit units a word.
#include "recordwords.h"

namespace zelkodatastreamconverter {

void TransmissionSystemModel::Process_UNICODE(PDUDataBlock* block, void* record)
{
    if (record == nullptr) {
        return;
    }
    RecordWords const words(record, WordsAvailable(record, 0));
    unsigned const count = qMin(words.at(0), words.available(1));
    SetPackedUnicodePayload(block, tr("UNICODE"), count, words.words(1));
}

} // namespace zelkodatastreamconverter
