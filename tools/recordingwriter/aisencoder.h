#pragma once
// Writes AIS messages as ITU-R M.1371 lays them out, for tests, samples and benchmarks: the
// bits of a message, the record of a PDU frame (code 16) that carries it, and the NMEA 0183
// AIVDM sentences a receiver would print for it.

#include <QByteArray>
#include <QStringList>

namespace zelkorecording {

/// Appends fields most significant bit first.
class AisBitWriter
{
public:
    AisBitWriter& put(quint32 value, unsigned bits);
    AisBitWriter& putSigned(qint32 value, unsigned bits);
    /// `chars` six-bit characters; a shorter text is filled with '@', the code for none.
    AisBitWriter& putText(QByteArray const& text, unsigned chars);

    QByteArray const& bytes() const { return m_bytes; }
    unsigned bitCount() const { return m_bits; }

private:
    QByteArray m_bytes;
    unsigned m_bits = 0;
};

/// What a vessel reports; the fields not available by default are those of ITU-R M.1371.
struct AisVessel
{
    quint32 mmsi = 0;
    double latitude = 91.0;   ///< degrees, north positive; 91: not available
    double longitude = 181.0; ///< degrees, east positive; 181: not available
    double speedKnots = -1;   ///< -1: not available
    double courseDegrees = -1;
    int heading = 511;
    int rateOfTurn = -128; ///< the raw indicator; -128: not available
    int altitude = 4095;   ///< metres, SAR aircraft; 4095: not available
    int navigationalStatus = 15;
    int second = 60;
    QByteArray callSign;
    QByteArray name;
    QByteArray destination;
    int shipType = 0;
    quint32 imo = 0;
    int toBow = 0, toStern = 0, toPort = 0, toStarboard = 0;
    int etaMonth = 0, etaDay = 0, etaHour = 24, etaMinute = 60;
    double draught = 0;
};

class AisEncoder
{
public:
    /// Types 1, 2, 3: position report class A.
    static AisBitWriter positionReportA(AisVessel const& vessel, int type = 1);
    /// Type 5: static and voyage related data (424 bits, two sentences).
    static AisBitWriter staticAndVoyage(AisVessel const& vessel);
    /// Type 18: class B position report.
    static AisBitWriter positionReportB(AisVessel const& vessel);
    /// Type 24 part A (name) or B (type, call sign, dimensions).
    static AisBitWriter staticDataReport(AisVessel const& vessel, int part);
    /// Type 14: safety related broadcast text.
    static AisBitWriter safetyBroadcast(quint32 mmsi, QByteArray const& text);
    /// Type 4: base station report.
    static AisBitWriter baseStation(quint32 mmsi, int year, int month, int day, int hour,
                                    int minute, int second, double latitude, double longitude);
    /// Type 9: search and rescue aircraft position report.
    static AisBitWriter sarAircraft(AisVessel const& vessel);
    /// Type 19: extended class B position report.
    static AisBitWriter extendedClassB(AisVessel const& vessel);
    /// Type 21: aid-to-navigation report; a name over 20 characters goes on in the extension.
    static AisBitWriter aidToNavigation(AisVessel const& aid, int aidType);
    /// Type 27: long-range position report.
    static AisBitWriter longRange(AisVessel const& vessel);

    /// The record of a PDU frame from frame position 52 (communication-system type 1).
    static QByteArray frameRecord(AisBitWriter const& message, char channel = 'A',
                                  quint32 checkSumState = 1);
    /// The payload of a frame of type 368 from position 24: time stamp, block name "AIS",
    /// code 16, then the record.
    static QByteArray framePayload(quint64 microseconds, AisBitWriter const& message,
                                   char channel = 'A');
    /// The same for message bits that were not written here (an imported log's).
    static QByteArray framePayload(quint64 microseconds, QByteArray const& bits, unsigned bitCount,
                                   char channel, quint32 checkSumState = 1);
    /// "!AIVDM,n,i,s,c,payload,fill*hh" sentences, 60 payload characters each at most;
    /// sequenceId < 0 leaves the field empty (single-sentence messages).
    static QStringList sentences(AisBitWriter const& message, char channel, int sequenceId,
                                 QByteArray const& talker = "AIVDM");
    /// The NMEA checksum: XOR of the characters between '!' or '$' and '*'.
    static quint8 checksum(QByteArray const& body);
    /// body followed by '*' and its checksum in two upper-case hexadecimal digits.
    static QByteArray withChecksum(QByteArray const& body);
    /// A tag block, "\<tags>*hh\", to stand before a sentence.
    static QByteArray tagBlock(QByteArray const& tags);
};

} // namespace zelkorecording
