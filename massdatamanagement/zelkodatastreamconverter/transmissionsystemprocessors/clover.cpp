// CLOVER: one block of a CLOVER link with its modulation, coding and the bytes it carried.
#include "../transmissionsystemhelper.h"
#include "recordwords.h"

namespace zelkodatastreamconverter {

namespace {
constexpr unsigned MessageWord = 10;
}

void TransmissionSystemModel::Process_CLOVER(PDUDataBlock* block, void* record)
{
    if (record == nullptr) {
        return;
    }
    RecordWords const words(record, WordsAvailable(record, 0));
    TransmissionSystemHelper const& texts = *m_helper;
    AddField(block, tr("Packet No."), unsigned(words.at(5)));
    AddField(block, tr("Block Type"), texts.GetCLOVER_BLOCK_TYPE(words.at(0)));
    AddField(block, tr("Frequency"), FrequencyToString(unsigned(words.at(7))));
    AddField(block, tr("Sideband"), texts.GetPACTOR_CLOVER_SIDEBAND_MODE(words.at(6)));
    AddField(block, tr("Modulation Type"), texts.GetCLOVER_SPEED_LEVEL(words.at(2)));
    AddField(block, tr("RS Code Efficiency"), texts.GetCLOVER_CODE_EFFICIENCY(words.at(3)));
    AddField(block, tr("Header"), unsigned(words.at(1)), 16, 0, QStringLiteral("0x"));
    AddField(block, tr("Block Size"), unsigned(words.at(4)));
    quint32 const bytes = words.at(9);
    AddField(block, tr("Bytes"), unsigned(bytes));
    SetASCIIPayload(block, tr("Message"), words.byteCount(MessageWord, bytes),
                    words.bytes(MessageWord));
}

} // namespace zelkodatastreamconverter
