#include "aispduconverter.h"

#include "aisbitreader.h"
#include "aismessagetable.h"

#include <cmath>
#include <cstring>

using namespace ais;

namespace {

using Field = std::unique_ptr<CPDU_FieldContainer>;

quint32 wordAt(QByteArray const& frame, int position)
{
    quint32 word = 0;
    if (position >= 0 && position + 4 <= frame.size()) {
        std::memcpy(&word, frame.constData() + position, 4);
    }
    return word;
}

Field notAvailable()
{
    return CPDU_FieldContainer::translatedValue(NotAvailable);
}

/// The raw value's own text where it has one, else null.
Field markedValue(FieldSpec const& spec, int raw)
{
    if (raw == spec.notAvailable) {
        return notAvailable();
    }
    if (raw == spec.special) {
        return CPDU_FieldContainer::translatedValue(spec.specialTranslation);
    }
    return nullptr;
}

QByteArray trimmedText(QByteArray text)
{
    // '@' is the six-bit code 0, the filler after the last character.
    while (!text.isEmpty() && (text.endsWith('@') || text.endsWith(' '))) {
        text.chop(1);
    }
    return text;
}

Field rateOfTurn(int indicator)
{
    switch (indicator) {
    case -128:
        return notAvailable();
    case 127:
        return CPDU_FieldContainer::translatedValue(TurningRightFast);
    case -127:
        return CPDU_FieldContainer::translatedValue(TurningLeftFast);
    default:
        break;
    }
    // The indicator is 4.733 times the square root of the rate, with the rate's sign.
    double const rate = std::round(std::pow(indicator / 4.733, 2.0) * 10.0) / 10.0;
    // A slow left turn rounds to 0, not to -0.
    return CPDU_FieldContainer::floatValue(float(indicator < 0 && rate > 0 ? -rate : rate));
}

Field position(AisBitReader& bits, unsigned longitudeBits, unsigned latitudeBits,
               long long toTenThousandths)
{
    long long const longitude = bits.takeSigned(longitudeBits) * toTenThousandths;
    long long const latitude = bits.takeSigned(latitudeBits) * toTenThousandths;
    // 181° and 91° say "not available"; anything beyond the globe is as good as missing.
    if (std::llabs(longitude) > 180LL * 600000 || std::llabs(latitude) > 90LL * 600000) {
        return notAvailable();
    }
    return CPDU_FieldContainer::objectValue(PDU_REPRESENTATION_POSITION,
                                            std::make_unique<CPDU_Position>(latitude, longitude));
}

Field dateTime(AisBitReader& bits)
{
    int const year = int(bits.take(14));
    int const month = int(bits.take(4));
    int const day = int(bits.take(5));
    int const hour = int(bits.take(5));
    int const minute = int(bits.take(6));
    int const second = int(bits.take(6));
    return CPDU_FieldContainer::objectValue(
        PDU_REPRESENTATION_DATETIME,
        std::make_unique<CPDU_DateTime>(year, month, day, hour, minute, second));
}

Field eta(AisBitReader& bits)
{
    unsigned const month = bits.take(4);
    unsigned const day = bits.take(5);
    unsigned const hour = bits.take(5);
    unsigned const minute = bits.take(6);
    if (month == 0 && day == 0 && hour == 24 && minute == 60) {
        return notAvailable();
    }
    auto part = [](unsigned value, bool missing) {
        return missing ? QStringLiteral("??")
                       : QStringLiteral("%1").arg(value, 2, 10, QLatin1Char('0'));
    };
    QString const text = QStringLiteral("%1-%2 %3:%4 UTC")
                             .arg(part(month, month == 0 || month > 12), part(day, day == 0),
                                  part(hour, hour > 23), part(minute, minute > 59));
    return CPDU_FieldContainer::stringValue(text.toLatin1());
}

Field decodeField(FieldSpec const& spec, AisBitReader& bits)
{
    switch (spec.kind) {
    case FieldKind::Unsigned: {
        int const raw = int(bits.take(spec.bits));
        Field marked = markedValue(spec, raw);
        return marked ? std::move(marked) : CPDU_FieldContainer::unsignedValue(unsigned(raw));
    }
    case FieldKind::TimeStamp: {
        unsigned const second = bits.take(spec.bits);
        return second < 60 ? CPDU_FieldContainer::unsignedValue(second)
                           : CPDU_FieldContainer::translatedValue(TimeStampBase + second);
    }
    case FieldKind::Scaled: {
        int const raw = spec.isSigned ? bits.takeSigned(spec.bits) : int(bits.take(spec.bits));
        Field marked = markedValue(spec, raw);
        // Rounded to the scale's decimals, so that 0.1 steps print as written.
        double const value = std::round(raw * spec.scale * 1000.0) / 1000.0;
        return marked ? std::move(marked) : CPDU_FieldContainer::floatValue(float(value));
    }
    case FieldKind::RateOfTurn:
        return rateOfTurn(bits.takeSigned(spec.bits));
    case FieldKind::Enum:
        return CPDU_FieldContainer::translatedValue(spec.translationBase + bits.take(spec.bits));
    case FieldKind::Bool:
        return CPDU_FieldContainer::boolValue(bits.take(spec.bits) != 0);
    case FieldKind::Text: {
        QByteArray const text = trimmedText(bits.takeText(spec.bits / 6));
        return text.isEmpty() ? notAvailable() : CPDU_FieldContainer::stringValue(text);
    }
    case FieldKind::TextToEnd:
        return CPDU_FieldContainer::stringValue(trimmedText(bits.takeText(bits.remaining() / 6)));
    case FieldKind::Position:
        return position(bits, 28, 27, 1);
    case FieldKind::LowPosition:
        return position(bits, 18, 17, 1000);
    case FieldKind::DateTime:
        return dateTime(bits);
    case FieldKind::Eta:
        return eta(bits);
    case FieldKind::PayloadToEnd: {
        unsigned count = 0;
        QByteArray const rest = bits.takeRest(count);
        return CPDU_FieldContainer::payload(rest, count);
    }
    case FieldKind::Spare:
        bits.take(spec.bits);
        break;
    }
    return nullptr;
}

} // namespace

std::unique_ptr<CPDU> AisPduConverter::decodeMessage(QByteArray const& message, unsigned bitCount,
                                                     unsigned long long timeStamp,
                                                     ePDU_CHECKSUM_STATE checkSumState)
{
    AisBitReader peek(message, bitCount);
    unsigned const type = peek.take(6);
    peek.take(32); // repeat indicator and MMSI
    int const part = type == 24 ? int(peek.take(2)) : -1;
    MessageLayout const& layout = layoutFor(type, part);
    // A part number that is no known part keeps its bits as payload, under an ID of its own:
    // the ID names the block and its labels, which must be the reserved layout's then.
    auto pdu = std::make_unique<CPDU>(pduId(type, part), timeStamp, checkSumState);
    AisBitReader bits(message, bitCount);
    for (FieldSpec const& spec : layout.fields) {
        if (Field field = decodeField(spec, bits)) {
            pdu->addField(std::move(field));
        }
    }
    return pdu;
}

std::vector<CPDU*> AisPduConverter::decodeFrame(QByteArray const& frame)
{
    std::vector<CPDU*> pdus;
    if (frame.size() < RecordPosition + 16 || wordAt(frame, RecordPosition) != COMMSYS_AIS) {
        return pdus;
    }
    unsigned long long const timeStamp =
        wordAt(frame, 24) | (static_cast<unsigned long long>(wordAt(frame, 28)) << 32);
    quint32 const state = wordAt(frame, RecordPosition + 8);
    // A message is at most five slots; longer claims and words past the frame are cut.
    unsigned bitCount = qMin(wordAt(frame, RecordPosition + 12), MaxMessageBits);
    int const firstWord = RecordPosition + 16;
    bitCount = qMin(bitCount, unsigned(frame.size() - firstWord) / 4u * 32u);
    if (bitCount < 6) {
        return pdus; // not even a message type
    }
    QByteArray message;
    for (unsigned word = 0; word < (bitCount + 31) / 32; ++word) {
        quint32 const bits = wordAt(frame, firstWord + int(word) * 4);
        for (int shift = 24; shift >= 0; shift -= 8) {
            message.append(char(bits >> shift));
        }
    }
    ePDU_CHECKSUM_STATE const checkSum = state == PDU_CHECKSUM_OK || state == PDU_CHECKSUM_WRONG
                                             ? ePDU_CHECKSUM_STATE(state)
                                             : PDU_CHECKSUM_NONE;
    pdus.push_back(decodeMessage(message, bitCount, timeStamp, checkSum).release());
    return pdus;
}
