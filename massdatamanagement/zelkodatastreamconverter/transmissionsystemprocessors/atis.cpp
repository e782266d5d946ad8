// ATIS: the automatic identification of inland-waterway vessels on VHF. The country comes
// from the maritime identification digits, the ship from the rest of its ATIS code.
#include "../transmissionsystemhelper.h"
#include "recordwords.h"

namespace zelkodatastreamconverter {

void TransmissionSystemModel::Process_ATIS(PDUDataBlock* block, void* record)
{
    if (record == nullptr) {
        return;
    }
    RecordWords const words(record, WordsAvailable(record, 0));
    AddField(block, tr("Country Code"), m_helper->GetMIDCountryName(words.at(0)));
    AddField(block, tr("Ship ID"), words.text(1, 2));
}

} // namespace zelkodatastreamconverter
