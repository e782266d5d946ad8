#include "transmissionsystemrecords.h"

#include "payloadbuilder.h"

namespace zelkorecording {

namespace {

quint32 wordsFor(int bytes)
{
    return quint32((bytes + 3) / 4);
}

quint32 flag(bool value)
{
    return value ? 1u : 0u;
}

// Word count, then the characters; the receiver ends a text with a zero byte, so a text
// that fills its last word exactly gets one more word.
void appendCountedText(PayloadBuilder& out, QByteArray const& text)
{
    QByteArray const terminated = text + '\0';
    out.word(wordsFor(terminated.size())).bytes(terminated);
}

void appendAddress(PayloadBuilder& out, Ax25Address const& address)
{
    out.text(address.callSign, 2).word(address.ssid).word(flag(address.chBit));
}

} // namespace

QByteArray transmissionSystemPayload(TransmissionSystem system, quint64 microseconds,
                                     QByteArray const& blockName, QByteArray const& record)
{
    PayloadBuilder out;
    out.uint64(microseconds).text(blockName, 4).word(quint32(system));
    return out.data() + record;
}

QByteArray AsciiRecord::record() const
{
    PayloadBuilder out;
    appendCountedText(out, text);
    return out.data();
}

QByteArray UnicodeRecord::record() const
{
    PayloadBuilder out;
    QString const terminated = text + QChar(0);
    out.word(wordsFor(terminated.size() * 2)).utf16(terminated);
    return out.data();
}

QByteArray AtisRecord::record() const
{
    PayloadBuilder out;
    out.word(mid).text(shipId, 2);
    return out.data();
}

quint32 FmsBosRecord::controlByte() const
{
    return flag(stageOne) | (flag(toVehicle) << 1) | ((shortInfo & 3u) << 2);
}

QByteArray FmsBosRecord::record() const
{
    PayloadBuilder out;
    out.word(organisation)
        .word(state)
        .word(district)
        .text(vehicle, 1)
        .word(status)
        .word(controlByte());
    return out.data();
}

QByteArray ZveiRecord::record() const
{
    PayloadBuilder out;
    out.word(flag(crcOk)).word(mode).word(status).word(evuWord()).text(callNumber, 1);
    return out.data();
}

QByteArray ZveiVdewRecord::record() const
{
    PayloadBuilder out;
    quint32 const words = wordsFor(callNumber.size());
    out.word(flag(crcOk))
        .word(mode)
        .word(status)
        .word(evuWord())
        .word(words)
        .text(callNumber, int(words));
    return out.data();
}

QByteArray PocsagRecord::record() const
{
    PayloadBuilder out;
    out.word(flag(crcOk)).word(rate).word(codeWord());
    appendCountedText(out, message);
    return out.data();
}

QByteArray PacketRadioRecord::record() const
{
    PayloadBuilder out;
    out.word(flag(crcOk)).word(frameType).word(pid);
    for (Ax25Address const* address : {&sender, &relay1, &relay2, &receiver}) {
        appendAddress(out, *address);
    }
    out.word(word19)
        .word(word20)
        .word(word21)
        .word(wordsFor(information.size()))
        .bytes(information);
    return out.data();
}

QByteArray Mpt1327Record::shortData(QByteArray const& text)
{
    PayloadBuilder out;
    out.word(4);
    appendCountedText(out, text);
    return out.data();
}

QByteArray Mpt1327Record::call(quint32 transmissionType, QByteArray const& calling,
                               QByteArray const& called, quint32 channel, quint64 frequencyHz,
                               quint32 frames)
{
    PayloadBuilder out;
    out.word(2).word(transmissionType).text(calling, 2).text(called, 2).word(channel);
    out.uint64(frequencyHz).word(frames);
    return out.data();
}

QByteArray Mpt1327Record::controlChannel(quint32 systemId, quint32 channel, quint64 frequencyHz)
{
    PayloadBuilder out;
    out.word(1).word(systemId).word(channel).uint64(frequencyHz);
    return out.data();
}

QByteArray AcarsRecord::record() const
{
    PayloadBuilder out;
    out.word(flag(crcOk)).text(mode, 1).text(aircraft, 2).text(linkType, 1);
    out.text(acknowledgement, 1).text(label, 1).text(blockId, 1).word(flag(lastBlock));
    appendCountedText(out, message);
    return out.data();
}

QByteArray PactorRecord::record() const
{
    PayloadBuilder out;
    out.word(variant).word(burstType).word(speedLevel).word(pathMode).word(transmissionMode);
    out.word(dataMode).word(0).float32(burstLength).word(frequency).float32(symbolRate);
    out.float32(signalLevel).float32(snr).word(sideband).word(packetNumber).word(coding);
    out.word(dataModeSuggestion).word(speedLevelRequest).word(qrtPacket).word(crcValue);
    out.word(decodingQuality).word(contentType).word(quint32(message.size())).bytes(message);
    return out.data();
}

QByteArray CloverRecord::record() const
{
    PayloadBuilder out;
    out.word(blockType).word(header).word(modulation).word(codeEfficiency).word(blockSize);
    out.word(packetNumber).word(sideband).word(frequency).word(0);
    out.word(quint32(message.size())).bytes(message);
    return out.data();
}

F7WSubChannel F7WSubChannel::text(quint32 number, QByteArray const& name, QByteArray const& text,
                                  quint32 payloadType)
{
    F7WSubChannel subChannel;
    subChannel.number = number;
    subChannel.name = name;
    subChannel.payloadType = payloadType;
    subChannel.elementCount = quint32(text.size());
    subChannel.bitsPerElement = 8;
    subChannel.data = text;
    return subChannel;
}

QByteArray F7WRecord::record() const
{
    PayloadBuilder out;
    out.word(quint32(channels.size()));
    for (F7WChannel const& channel : channels) {
        out.word(channel.number).word(channel.rateCode).word(quint32(channel.subChannels.size()));
        for (F7WSubChannel const& sub : channel.subChannels) {
            out.word(sub.number).text(sub.name, 10).word(sub.payloadType);
            out.word(sub.elementCount).word(sub.bitsPerElement);
            int const dataBytes =
                int((quint64(sub.elementCount) * sub.bitsPerElement + 31) / 32 * 4);
            out.text(sub.data, dataBytes / 4);
        }
    }
    return out.data();
}

} // namespace zelkorecording
