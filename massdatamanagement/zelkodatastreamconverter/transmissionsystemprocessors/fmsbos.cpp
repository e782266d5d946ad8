// FMS/BOS: a status telegram of the German vehicle radio of the authorities and
// organisations with security tasks, from a vehicle or from its control centre.
#include "../transmissionsystemhelper.h"
#include "recordwords.h"

namespace zelkodatastreamconverter {

namespace {
// Bits of the control byte (word 5).
constexpr quint32 StageOneBit = 1;
constexpr quint32 ToVehicleBit = 2;
} // namespace

void TransmissionSystemModel::Process_FMS_BOS(PDUDataBlock* block, void* record)
{
    if (record == nullptr) {
        return;
    }
    RecordWords const words(record, WordsAvailable(record, 0));
    quint32 const organisation = words.at(0);
    quint32 const state = words.at(1);
    quint32 const status = words.at(4);
    quint32 const control = words.at(5);
    quint32 const controlByte = control & 0xFFu;
    AddField(block, tr("BOS"), codeWithText(organisation, m_helper->GetBOS_BOS(organisation)));
    AddField(block, tr("State"), codeWithText(state, m_helper->GetBOS_STATE(state)));
    AddField(block, tr("Vehicle"), words.text(3, 1));
    AddField(block, tr("District"), unsigned(words.at(2)), 16, 2, QStringLiteral("0x"));
    // The receiver's own display writes the control bits binary behind "0x"; analysts know it
    // so.
    AddField(block, tr("ZBV"), unsigned(control), 2, 8, QStringLiteral("0x"));
    AddField(block, tr("Status"), codeWithText(status, m_helper->GetBOS_STATUS(status, control)));
    static char const* const shortInfos[] = {QT_TR_NOOP("Kurzinfo I"), QT_TR_NOOP("Kurzinfo II"),
                                             QT_TR_NOOP("Kurzinfo III"), QT_TR_NOOP("Kurzinfo IV")};
    AddField(block, tr("Short Info"), tr(shortInfos[(controlByte >> 2) & 3u]),
             QStringLiteral("string"));
    AddField(block, tr("Direction"),
             (controlByte & ToVehicleBit) ? tr("to vehicle") : tr("from vehicle"));
    AddField(block, tr("Stage ID"),
             (controlByte & StageOneBit) ? tr("Baustufe 1 (Tonquittung)")
                                         : tr("Baustufe 2 (Quittungstelegramm)"));
}

} // namespace zelkodatastreamconverter
