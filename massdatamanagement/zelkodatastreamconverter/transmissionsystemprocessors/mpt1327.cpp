// MPT1327: events of a trunked radio network. The flag word tells which kind of event the
// record holds; a record flagged for several kinds is read as the first of short data
// message, call, control channel.
#include "../transmissionsystemhelper.h"
#include "recordwords.h"

namespace zelkodatastreamconverter {

namespace {

constexpr quint32 ShortDataMessage = 4;
constexpr quint32 Call = 2;
constexpr quint32 ControlChannel = 1;

quint64 frequencyAt(RecordWords const& words, unsigned lowWord)
{
    return quint64(words.at(lowWord)) | (quint64(words.at(lowWord + 1)) << 32);
}

} // namespace

void TransmissionSystemModel::Process_MPT1327(PDUDataBlock* block, void* record)
{
    if (record == nullptr) {
        return;
    }
    RecordWords const words(record, WordsAvailable(record, 0));
    quint32 const flags = words.at(0);
    if (flags & ShortDataMessage) {
        unsigned const length = words.textLength(2, 4u * quint64(words.at(1)));
        SetASCIIPayload(block, tr("Message"), length, words.bytes(2));
    } else if (flags & Call) {
        quint32 const type = words.at(1);
        AddField(block, tr("Calling"), words.text(2, 2));
        AddField(block, tr("Called"), words.text(4, 2));
        AddField(block, tr("Channel"), unsigned(words.at(6)));
        AddField(block, tr("Type"), codeWithText(type, m_helper->GetMPT_TRANSMISSION_TYPE(type)));
        AddField(block, tr("Frequency"), FrequencyToString(frequencyAt(words, 7)));
        AddField(block, tr("Frames"), unsigned(words.at(9)));
    } else if (flags & ControlChannel) {
        AddField(block, tr("ID"), unsigned(words.at(1)));
        AddField(block, tr("Control Channel"), unsigned(words.at(2)));
        AddField(block, tr("Frequency"), FrequencyToString(frequencyAt(words, 3)));
    }
}

} // namespace zelkodatastreamconverter
