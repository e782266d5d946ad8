// PACTOR: one burst of a PACTOR link as the receiver's analyser reports it: the burst's
// kind and modulation, the signal it measured, and the bytes it decoded.
#include "../transmissionsystemhelper.h"
#include "recordwords.h"

namespace zelkodatastreamconverter {

namespace {

float floatAt(RecordWords const& words, unsigned index)
{
    quint32 const bits = words.at(index);
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

constexpr unsigned MessageWord = 22;

} // namespace

void TransmissionSystemModel::Process_PACTOR(PDUDataBlock* block, void* record)
{
    if (record == nullptr) {
        return;
    }
    RecordWords const words(record, WordsAvailable(record, 0));
    TransmissionSystemHelper const& texts = *m_helper;
    AddField(block, tr("Packet No."), unsigned(words.at(13)));
    AddField(block, tr("Variant"), texts.GetPACTOR_VARIANT(words.at(0)));
    AddField(block, tr("Burst Type"), texts.GetPACTOR_BURST_TYPE(words.at(1)));
    AddField(block, tr("Speed Level"), unsigned(words.at(2)));
    AddField(block, tr("Path Mode"), texts.GetPACTOR_PATH_MODE(words.at(3)));
    AddField(block, tr("Transmission Mode"), texts.GetPACTOR_TRANSMISSION_MODE(words.at(4)));
    AddField(block, tr("Data Mode"), texts.GetPACTOR_DATA_CHAT_MODE(words.at(5)));
    AddField(block, tr("Burst Length"),
             QStringLiteral("%1 s").arg(FloatToString(floatAt(words, 7))));
    AddField(block, tr("Frequency"), FrequencyToString(unsigned(words.at(8))));
    AddField(block, tr("Symbol Rate"), FloatToString(floatAt(words, 9)));
    // "dbµV" and the blank before the SNR are what analysts' filters match.
    AddField(block, tr("Signal Level"),
             QStringLiteral("%1 db\u00B5V").arg(FloatToString(floatAt(words, 10))));
    AddField(block, tr("SNR"), QStringLiteral(" %1 dB").arg(FloatToString(floatAt(words, 11))));
    AddField(block, tr("Sideband"), texts.GetPACTOR_CLOVER_SIDEBAND_MODE(words.at(12)));
    AddField(block, tr("Coding"), texts.GetPACTOR_DATA_TYPE(words.at(14)));
    AddField(block, tr("Data Mode Suggestion"), texts.GetPACTOR_DATA_MODE_SUGGESTION(words.at(15)));
    AddField(block, tr("SL Changeover Request"), texts.GetPACTOR_SPEED_LEVEL_REQUEST(words.at(16)));
    AddField(block, tr("QRT Packet"), texts.GetPACTOR_QRT_PACKET(words.at(17)));
    AddField(block, tr("Decoding Quality"), texts.GetPACTOR_DECODING_QUALITY(words.at(19)));
    AddField(block, tr("Content"), texts.GetPACTOR_CLOVER_CONTENT_TYPE(words.at(20)));
    AddField(block, tr("CRC"), unsigned(words.at(18)), 16, 4, QStringLiteral("0x"));
    quint32 const bytes = words.at(21);
    AddField(block, tr("Bytes"), unsigned(bytes));
    SetASCIIPayload(block, tr("Message"), words.byteCount(MessageWord, bytes),
                    words.bytes(MessageWord));
}

} // namespace zelkodatastreamconverter
