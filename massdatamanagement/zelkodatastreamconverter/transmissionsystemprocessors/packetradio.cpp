// Packet Radio: one AX.25 frame with its addresses, control field and information bytes.
#include "../transmissionsystemhelper.h"
#include "recordwords.h"

namespace zelkodatastreamconverter {

namespace {

enum Ax25FrameType : quint32
{
    Information = 0,
    Supervisory = 1,
    Unnumbered = 2
};
constexpr quint32 DisconnectRequest = 3; // DISC among the modifier functions

// Words of the record.
constexpr unsigned SenderWord = 3;
constexpr unsigned Relay1Word = 7;
constexpr unsigned Relay2Word = 11;
constexpr unsigned ReceiverWord = 15;
constexpr unsigned InformationWord = 23;

} // namespace

QString TransmissionSystemModel::PACKET_RADIO_Address(void* address)
{
    if (address == nullptr) {
        return QString();
    }
    auto const* words = static_cast<int const*>(address);
    QString const callSign = ToASCII(words, 2);
    if (callSign.isEmpty()) {
        return QString();
    }
    // SSID first: the way the receiver has always shown it.
    return QStringLiteral("%1:%2").arg(quint32(words[2])).arg(callSign);
}

void TransmissionSystemModel::Process_PACKET_RADIO(PDUDataBlock* block, void* record)
{
    if (record == nullptr) {
        return;
    }
    RecordWords const words(record, WordsAvailable(record, 0));
    // An address may lie partly past a cut frame; it is read from a copy.
    auto const address = [&words](unsigned first) {
        int copy[] = {int(words.at(first)), int(words.at(first + 1)), int(words.at(first + 2)),
                      int(words.at(first + 3))};
        return PACKET_RADIO_Address(copy);
    };
    quint32 const frameType = words.at(1);
    quint32 const function = words.at(19);
    SetCRC(block, words.at(0) != 0);
    AddField(block, tr("Sender"), address(SenderWord));
    AddField(block, tr("Receiver"), address(ReceiverWord));
    AddField(block, tr("Relay 1"), address(Relay1Word));
    AddField(block, tr("Relay 2"), address(Relay2Word));
    AddField(block, tr("Protocol"), m_helper->GetPR_PID(words.at(2)));
    AddField(block, tr("Frame Type"), m_helper->GetPR_FRAME_TYPE(frameType));
    switch (frameType) {
    case Information:
        AddField(block, tr("Send Number"), unsigned(function));
        AddField(block, tr("Receive Number"), unsigned(words.at(20)));
        AddField(block, tr("Poll/Final"), words.at(21) != 0);
        break;
    case Supervisory:
        AddField(block, tr("Supervisory Function"), m_helper->GetPR_SUPERVISOR_FUNCTION(function));
        break;
    case Unnumbered:
        AddField(block, tr("Modifier Function"), m_helper->GetPR_MODIFIER_FUNCTION(function));
        AddField(block, tr("Poll/Final"), words.at(20) != 0);
        m_endConnection = function == DisconnectRequest;
        break;
    }
    unsigned const bytes = words.elementCount(InformationWord, 4u * quint64(words.at(22)), 8);
    SetBinaryPayload(block, tr("Message"), PDU_REPRESENTATION_STRING, bytes, 8,
                     reinterpret_cast<unsigned*>(words.words(InformationWord)));
}

} // namespace zelkodatastreamconverter
