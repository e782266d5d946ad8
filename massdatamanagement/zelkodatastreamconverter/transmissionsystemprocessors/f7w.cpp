// F7W: a two-channel frequency-shift emission whose channels are time-multiplexed into
// sub-channels. The record lists, channel by channel, what every sub-channel carried during
// the frame; each sub-channel becomes a child of the frame's block.
//
// Record (32-bit words):
//   channel count C
//   per channel:      channel number, rate code (RatesInBaud), sub-channel count S
//   per sub-channel:  number, name (10 words of text), payload type (0 RAW, 1 ASCII,
//                     2 MORSE), element count E, bits per element B (1 to 32),
//                     (E * B + 31) / 32 words of payload, from the least significant bit of
//                     the first byte on
// RAW payloads are the demodulated bits and go out in binary representation; ASCII and
// MORSE payloads (text the receiver read from on-off keying) are 8-bit characters.
#include "../transmissionsystemhelper.h"
#include "recordwords.h"

#include <iterator>
#include <nerikresultdataxml/pdudatablock.h>

namespace zelkodatastreamconverter {

namespace {

// Symbol rates of the rate codes; a code past the table is a rate the receiver did not
// measure.
constexpr float RatesInBaud[] = {50.0f, 75.0f, 96.0f, 100.0f, 150.0f, 192.0f, 200.0f, 300.0f};

float rateOf(quint32 code)
{
    return code < std::size(RatesInBaud) ? RatesInBaud[code] : 0.0f;
}

constexpr unsigned ChannelHeaderWords = 3;
constexpr unsigned SubChannelHeaderWords = 14;
constexpr unsigned NameWords = 10;
constexpr quint32 RawPayload = 0;
constexpr quint32 AsciiPayload = 1;
constexpr quint32 MorsePayload = 2;
constexpr quint32 MaxBitsPerElement = 32;

struct SubChannel
{
    quint32 number;
    QString name;
    quint32 payloadType;
    quint32 elements;
    quint32 bits;
    unsigned dataWord; // where the payload starts
    quint64 dataWords;
};

// The sub-channel whose header starts at word index; false when it does not fit the frame
// whole, which ends the list.
bool readSubChannel(RecordWords const& words, unsigned index, SubChannel& sub)
{
    if (words.available(index) < SubChannelHeaderWords) {
        return false;
    }
    sub.number = words.at(index);
    sub.name = words.text(index + 1, NameWords);
    sub.payloadType = words.at(index + 11);
    sub.elements = words.at(index + 12);
    sub.bits = words.at(index + 13);
    sub.dataWord = index + SubChannelHeaderWords;
    sub.dataWords = (quint64(sub.elements) * sub.bits + 31) / 32;
    return sub.bits != 0 && sub.bits <= MaxBitsPerElement &&
           sub.dataWords <= words.available(sub.dataWord);
}

} // namespace

TransmissionSystemModel::PDUDataBlock* TransmissionSystemModel::Process_F7W(PDUDataBlock* block,
                                                                            void* record)
{
    if (record == nullptr) {
        return block;
    }
    RecordWords const words(record, WordsAvailable(record, 0));
    quint32 const channels = words.at(0);
    unsigned index = 1;
    for (quint32 channel = 0; channel < channels && words.available(index) >= ChannelHeaderWords;
         ++channel) {
        quint32 const channelNumber = words.at(index);
        float const rate = rateOf(words.at(index + 1));
        quint32 const subChannels = words.at(index + 2);
        index += ChannelHeaderWords;
        for (quint32 i = 0; i < subChannels; ++i) {
            SubChannel sub;
            if (!readSubChannel(words, index, sub)) {
                return block;
            }
            PDUDataBlock* const child =
                BeginBlock(block->GetType(), block->GetTimeStamp(), block->GetName());
            AddField(child, tr("Channel"), unsigned(channelNumber));
            AddField(child, tr("Baudrate"), rate);
            AddField(child, tr("Sub Channel Number"), unsigned(sub.number));
            AddField(child, tr("Sub Channel Name"), sub.name);
            AddField(child, tr("Payload Type"), m_helper->GetF7W_PAYLOAD_TYPE(sub.payloadType));
            if (sub.payloadType == RawPayload) {
                SetBinaryPayload(child, tr("Payload"), PDU_REPRESENTATION_BINARY, sub.elements,
                                 sub.bits, reinterpret_cast<unsigned*>(words.words(sub.dataWord)));
            } else if (sub.payloadType == AsciiPayload || sub.payloadType == MorsePayload) {
                SetASCIIPayload(child, tr("Payload"),
                                words.byteCount(sub.dataWord, quint64(sub.elements) * sub.bits / 8),
                                words.bytes(sub.dataWord));
            }
            EndBlock(child, block, block->GetTimeStamp());
            index = sub.dataWord + unsigned(sub.dataWords);
        }
    }
    return block;
}

} // namespace zelkodatastreamconverter
