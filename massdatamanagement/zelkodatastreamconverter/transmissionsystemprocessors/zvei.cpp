// ZVEI: a five-tone selective call with the status and the radio's maker and model (the EVU
// word) that the receiver read from the tone sequence.
#include "../transmissionsystemhelper.h"
#include "recordwords.h"

namespace zelkodatastreamconverter {

void TransmissionSystemModel::Process_ZVEI(PDUDataBlock* block, void* record)
{
    if (record == nullptr) {
        return;
    }
    RecordWords const words(record, WordsAvailable(record, 0));
    quint32 const mode = words.at(1);
    SetCRC(block, words.at(0) != 0);
    AddFiveToneFields(block, words.at(3), words.at(2),
                      codeWithText(mode, m_helper->GetZVEI_BAK(mode)));
    AddField(block, tr("Callnumber"), words.text(4, 1));
}

void TransmissionSystemModel::AddFiveToneFields(PDUDataBlock* block, quint32 evu, quint32 status,
                                                QString const& mode)
{
    AddField(block, tr("EVU"), unsigned(evu), 16, 0, QStringLiteral("0x"));
    AddField(block, tr("Manufacturer"), unsigned(evu & 0xFFu));
    AddField(block, tr("Model"), unsigned(evu >> 8));
    AddField(block, tr("Status"), unsigned(status));
    AddField(block, tr("Mode"), mode);
}

} // namespace zelkodatastreamconverter
