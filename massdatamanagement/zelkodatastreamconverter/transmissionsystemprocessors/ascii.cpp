// ASCII: free text. Word 0 is the word count, then the text as packed 8-bit characters.
#include "recordwords.h"

namespace zelkodatastreamconverter {

void TransmissionSystemModel::Process_ASCII(PDUDataBlock* block, void* record)
{
    if (record == nullptr) {
        return;
    }
    RecordWords const words(record, WordsAvailable(record, 0));
    unsigned const count = qMin(words.at(0), words.available(1));
    SetPackedASCIIPayload(block, tr("ASCII"), count, words.words(1));
}

} // namespace zelkodatastreamconverter
