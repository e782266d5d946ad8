#include "aisencoder.h"

#include "payloadbuilder.h"

#include <algorithm>
#include <cmath>

namespace zelkorecording {

AisBitWriter& AisBitWriter::put(quint32 value, unsigned bits)
{
    for (unsigned i = bits; i-- > 0;) {
        if (m_bits % 8 == 0) {
            m_bytes.append('\0');
        }
        if ((value >> i) & 1u) {
            m_bytes[int(m_bits / 8)] =
                char(quint8(m_bytes[int(m_bits / 8)]) | (0x80u >> (m_bits % 8)));
        }
        ++m_bits;
    }
    return *this;
}

AisBitWriter& AisBitWriter::putSigned(qint32 value, unsigned bits)
{
    return put(quint32(value) & (bits >= 32 ? 0xFFFFFFFFu : (1u << bits) - 1u), bits);
}

AisBitWriter& AisBitWriter::putText(QByteArray const& text, unsigned chars)
{
    for (unsigned i = 0; i < chars; ++i) {
        char const c = int(i) < text.size() ? text[int(i)] : '@';
        quint8 const code = quint8(c) >= 64 ? quint8(c) - 64 : quint8(c);
        put(code & 0x3Fu, 6);
    }
    return *this;
}

namespace {

void header(AisBitWriter& bits, int type, quint32 mmsi)
{
    bits.put(quint32(type), 6).put(0, 2).put(mmsi, 30);
}

quint32 tenths(double value, double scale, quint32 notAvailable)
{
    return value < 0 ? notAvailable : quint32(std::lround(value * scale));
}

void position(AisBitWriter& bits, double latitude, double longitude)
{
    bits.putSigned(qint32(std::lround(longitude * 600000.0)), 28);
    bits.putSigned(qint32(std::lround(latitude * 600000.0)), 27);
}

void dimensions(AisBitWriter& bits, AisVessel const& vessel)
{
    bits.put(quint32(vessel.toBow), 9).put(quint32(vessel.toStern), 9);
    bits.put(quint32(vessel.toPort), 6).put(quint32(vessel.toStarboard), 6);
}

// Class B reports (types 18 and 19) begin alike: reserved byte, speed, accuracy, position,
// course, heading and time stamp.
void classBMotion(AisBitWriter& bits, AisVessel const& vessel)
{
    bits.put(0, 8).put(tenths(vessel.speedKnots, 10, 1023), 10).put(0, 1);
    position(bits, vessel.latitude, vessel.longitude);
    bits.put(tenths(vessel.courseDegrees, 10, 3600), 12).put(quint32(vessel.heading), 9);
    bits.put(quint32(vessel.second), 6);
}

} // namespace

AisBitWriter AisEncoder::positionReportA(AisVessel const& vessel, int type)
{
    AisBitWriter bits;
    header(bits, type, vessel.mmsi);
    bits.put(quint32(vessel.navigationalStatus), 4).putSigned(vessel.rateOfTurn, 8);
    bits.put(tenths(vessel.speedKnots, 10, 1023), 10).put(1, 1);
    position(bits, vessel.latitude, vessel.longitude);
    bits.put(tenths(vessel.courseDegrees, 10, 3600), 12).put(quint32(vessel.heading), 9);
    bits.put(quint32(vessel.second), 6).put(0, 2).put(0, 3).put(0, 1).put(0, 19);
    return bits;
}

AisBitWriter AisEncoder::staticAndVoyage(AisVessel const& vessel)
{
    AisBitWriter bits;
    header(bits, 5, vessel.mmsi);
    bits.put(0, 2).put(vessel.imo, 30).putText(vessel.callSign, 7).putText(vessel.name, 20);
    bits.put(quint32(vessel.shipType), 8);
    dimensions(bits, vessel);
    bits.put(1, 4).put(quint32(vessel.etaMonth), 4).put(quint32(vessel.etaDay), 5);
    bits.put(quint32(vessel.etaHour), 5).put(quint32(vessel.etaMinute), 6);
    bits.put(tenths(vessel.draught, 10, 0), 8).putText(vessel.destination, 20).put(0, 1).put(0, 1);
    return bits;
}

AisBitWriter AisEncoder::positionReportB(AisVessel const& vessel)
{
    AisBitWriter bits;
    header(bits, 18, vessel.mmsi);
    classBMotion(bits, vessel);
    bits.put(0, 2).put(1, 1).put(0, 5).put(0, 1).put(0, 1);
    bits.put(1, 1).put(0, 19);
    return bits;
}

AisBitWriter AisEncoder::staticDataReport(AisVessel const& vessel, int part)
{
    AisBitWriter bits;
    header(bits, 24, vessel.mmsi);
    bits.put(quint32(part), 2);
    if (part == 0) {
        bits.putText(vessel.name, 20).put(0, 8);
        return bits;
    }
    bits.put(quint32(vessel.shipType), 8).putText("ZLK", 3).put(1, 4).put(4711, 20);
    bits.putText(vessel.callSign, 7);
    dimensions(bits, vessel);
    bits.put(1, 4).put(0, 2);
    return bits;
}

AisBitWriter AisEncoder::safetyBroadcast(quint32 mmsi, QByteArray const& text)
{
    AisBitWriter bits;
    header(bits, 14, mmsi);
    bits.put(0, 2).putText(text, unsigned(text.size()));
    return bits;
}

AisBitWriter AisEncoder::baseStation(quint32 mmsi, int year, int month, int day, int hour,
                                     int minute, int second, double latitude, double longitude)
{
    AisBitWriter bits;
    header(bits, 4, mmsi);
    bits.put(quint32(year), 14).put(quint32(month), 4).put(quint32(day), 5);
    bits.put(quint32(hour), 5).put(quint32(minute), 6).put(quint32(second), 6).put(1, 1);
    position(bits, latitude, longitude);
    bits.put(7, 4).put(0, 1).put(0, 9).put(0, 1).put(0, 19);
    return bits;
}

AisBitWriter AisEncoder::sarAircraft(AisVessel const& vessel)
{
    AisBitWriter bits;
    header(bits, 9, vessel.mmsi);
    bits.put(quint32(vessel.altitude), 12).put(tenths(vessel.speedKnots, 1, 1023), 10).put(0, 1);
    position(bits, vessel.latitude, vessel.longitude);
    bits.put(tenths(vessel.courseDegrees, 10, 3600), 12).put(quint32(vessel.second), 6);
    bits.put(0, 1).put(0, 7).put(0, 1).put(0, 3).put(0, 1).put(0, 1).put(0, 1).put(0, 19);
    return bits;
}

AisBitWriter AisEncoder::extendedClassB(AisVessel const& vessel)
{
    AisBitWriter bits;
    header(bits, 19, vessel.mmsi);
    classBMotion(bits, vessel);
    bits.put(0, 4).putText(vessel.name, 20);
    bits.put(quint32(vessel.shipType), 8);
    dimensions(bits, vessel);
    bits.put(1, 4).put(0, 1).put(0, 1).put(0, 1).put(0, 4);
    return bits;
}

AisBitWriter AisEncoder::aidToNavigation(AisVessel const& aid, int aidType)
{
    AisBitWriter bits;
    header(bits, 21, aid.mmsi);
    bits.put(quint32(aidType), 5).putText(aid.name.left(20), 20).put(1, 1);
    position(bits, aid.latitude, aid.longitude);
    dimensions(bits, aid);
    bits.put(7, 4).put(quint32(aid.second), 6).put(0, 1).put(0, 8).put(0, 1).put(1, 1);
    bits.put(0, 1).put(0, 1);
    QByteArray const extension = aid.name.mid(20, 14);
    bits.putText(extension, unsigned(extension.size()));
    return bits;
}

AisBitWriter AisEncoder::longRange(AisVessel const& vessel)
{
    AisBitWriter bits;
    header(bits, 27, vessel.mmsi);
    bits.put(0, 1).put(0, 1).put(quint32(vessel.navigationalStatus), 4);
    bits.putSigned(qint32(std::lround(vessel.longitude * 600.0)), 18);
    bits.putSigned(qint32(std::lround(vessel.latitude * 600.0)), 17);
    // 0 to 62 knots; 63 says "not available".
    bits.put(vessel.speedKnots < 0 ? 63u : quint32(std::min(62L, std::lround(vessel.speedKnots))),
             6);
    bits.put(vessel.courseDegrees < 0 ? 511u : quint32(std::lround(vessel.courseDegrees)) % 360u,
             9);
    bits.put(0, 1).put(0, 1);
    return bits;
}

namespace {

QByteArray record(QByteArray bytes, unsigned bitCount, char channel, quint32 checkSumState)
{
    PayloadBuilder record;
    record.word(1).word(quint32(quint8(channel))).word(checkSumState).word(bitCount);
    bytes.append(QByteArray((4 - bytes.size() % 4) % 4, '\0'));
    for (int i = 0; i < bytes.size(); i += 4) {
        record.word(quint32(quint8(bytes[i])) << 24 | quint32(quint8(bytes[i + 1])) << 16 |
                    quint32(quint8(bytes[i + 2])) << 8 | quint32(quint8(bytes[i + 3])));
    }
    return record.data();
}

QByteArray frameStart(quint64 microseconds)
{
    PayloadBuilder payload;
    payload.uint64(microseconds).bytes(QByteArray("AIS").leftJustified(16, '\0')).word(16);
    return payload.data();
}

} // namespace

QByteArray AisEncoder::frameRecord(AisBitWriter const& message, char channel, quint32 checkSumState)
{
    return record(message.bytes(), message.bitCount(), channel, checkSumState);
}

QByteArray AisEncoder::framePayload(quint64 microseconds, AisBitWriter const& message, char channel)
{
    return frameStart(microseconds) + frameRecord(message, channel);
}

QByteArray AisEncoder::framePayload(quint64 microseconds, QByteArray const& bits, unsigned bitCount,
                                    char channel, quint32 checkSumState)
{
    return frameStart(microseconds) + record(bits, bitCount, channel, checkSumState);
}

quint8 AisEncoder::checksum(QByteArray const& body)
{
    quint8 sum = 0;
    for (char const c : body) {
        sum ^= quint8(c);
    }
    return sum;
}

QByteArray AisEncoder::withChecksum(QByteArray const& body)
{
    return body + '*' + QByteArray::number(checksum(body), 16).rightJustified(2, '0').toUpper();
}

QByteArray AisEncoder::tagBlock(QByteArray const& tags)
{
    return '\\' + withChecksum(tags) + '\\';
}

QStringList AisEncoder::sentences(AisBitWriter const& message, char channel, int sequenceId,
                                  QByteArray const& talker)
{
    // Six bits a character: values 0-39 from '0', 40-63 from '`'.
    QByteArray armoured;
    unsigned const characters = (message.bitCount() + 5) / 6;
    for (unsigned i = 0; i < characters; ++i) {
        unsigned value = 0;
        for (unsigned bit = 0; bit < 6; ++bit) {
            unsigned const index = i * 6 + bit;
            bool const set = index < message.bitCount() &&
                             (quint8(message.bytes()[int(index / 8)]) >> (7 - index % 8)) & 1u;
            value = value << 1 | (set ? 1u : 0u);
        }
        armoured.append(char(value < 40 ? value + 48 : value + 56));
    }
    int const fill = int(characters * 6 - message.bitCount());
    int const count = qMax(1, (armoured.size() + 59) / 60);
    QStringList result;
    for (int part = 0; part < count; ++part) {
        QByteArray const body =
            talker + ',' + QByteArray::number(count) + ',' + QByteArray::number(part + 1) + ',' +
            (sequenceId >= 0 && count > 1 ? QByteArray::number(sequenceId) : QByteArray()) + ',' +
            QByteArray(1, channel) + ',' + armoured.mid(part * 60, 60) + ',' +
            QByteArray::number(part == count - 1 ? fill : 0);
        result << QString::fromLatin1('!' + withChecksum(body));
    }
    return result;
}

} // namespace zelkorecording
