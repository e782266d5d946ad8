// ZVEI/VDEW: a five-tone call under the meanings of the German utilities' radio (VDEW); the
// call number may be longer than a ZVEI one, so the record states its length in words.
#include "../transmissionsystemhelper.h"
#include "recordwords.h"

namespace zelkodatastreamconverter {

void TransmissionSystemModel::Process_ZVEI_VDEW(PDUDataBlock* block, void* record)
{
    if (record == nullptr) {
        return;
    }
    RecordWords const words(record, WordsAvailable(record, 0));
    quint32 const meaning = words.at(1);
    SetCRC(block, words.at(0) != 0);
    AddFiveToneFields(block, words.at(3), words.at(2),
                      codeWithText(meaning, m_helper->GetVDEW_BAK(meaning)));
    unsigned const callWords = qMin(words.at(4), words.available(5));
    AddField(block, tr("Call Number"), words.text(5, callWords));
}

} // namespace zelkodatastreamconverter
