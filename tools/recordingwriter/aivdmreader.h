#pragma once
// Reads NMEA 0183 AIS sentences (!AIVDM, !AIVDO, from any talker) line by line and assembles
// the messages they carry: multi-sentence messages by sequence ID and channel, the fill bits
// of the last sentence, the time of an optional tag block ("\c:1715934600*hh\!AIVDM,...").
// What cannot be used is counted, never thrown at the caller.

#include <QByteArray>
#include <QHash>
#include <optional>

namespace zelkorecording {

struct AivdmMessage
{
    QByteArray bits;  ///< the first bit in the most significant bit of byte 0
    unsigned bitCount = 0;
    char channel = 0; ///< 'A', 'B', or 0 when the sentence names none
    /// Microseconds since 1970 from the tag block of the first sentence; empty without one.
    std::optional<quint64> time;
};

struct AivdmCounts
{
    qint64 lines = 0;
    qint64 sentences = 0;       ///< AIS sentences whose checksum matched
    qint64 messages = 0;        ///< complete messages handed out
    qint64 checksumErrors = 0;  ///< sentences (or tag blocks) whose checksum did not match
    qint64 broken = 0;          ///< AIS-looking lines with missing or impossible fields
    qint64 incomplete = 0;      ///< multi-sentence messages that never got all their parts
    qint64 otherLines = 0;      ///< lines that are no AIS sentence (other NMEA, blanks, text)
};

class AivdmReader
{
public:
    /// One line without its line ending. A message whose last sentence this is comes back.
    std::optional<AivdmMessage> readLine(QByteArray const& line);
    /// Counts what is still waiting for parts as incomplete; call at the end of the input.
    void finish();
    AivdmCounts const& counts() const { return m_counts; }

    /// The message bits of armoured payload characters, less the fill bits; false for a
    /// character outside the armour or a fill outside 0 to 5.
    static bool disarm(QByteArray const& payload, int fill, QByteArray& bits, unsigned& bitCount);

private:
    struct Pending
    {
        int count = 0;
        int next = 1;
        QByteArray payload;
        std::optional<quint64> time;
    };

    std::optional<AivdmMessage> take(QByteArray const& sentence, std::optional<quint64> time);

    QHash<QByteArray, Pending> m_pending; // by sequence ID and channel
    AivdmCounts m_counts;
};

} // namespace zelkorecording
