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
    quint32 const evu = words.at(3);
    quint32 const meaning = words.at(1);
    SetCRC(block, words.at(0) != 0);
    AddField(block, tr("EVU"), unsigned(evu), 16, 0, QStringLiteral("0x"));
    AddField(block, tr("Manufacturer"), unsigned(evu & 0xFFu));
    AddField(block, tr("Model"), unsigned(evu >> 8));
    AddField(block, tr("Status"), unsigned(words.at(2)));
    AddField(block, tr("Mode"), codeWithText(meaning, m_helper->GetVDEW_BAK(meaning)));
    unsigned const callWords = qMin(words.at(4), words.available(5));
    AddField(block, tr("Call Number"), words.text(5, callWords));
}

} // namespace zelkodatastreamconverter
