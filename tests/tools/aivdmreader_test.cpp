// NMEA AIS sentences into messages: round trips through our encoder's sentences, and every
// way a log line can fail, each counted where it belongs.

#include <gtest/gtest.h>
#include <recordingwriter/aisencoder.h>
#include <recordingwriter/aivdmreader.h>
#include <support/qstringprinter.h>
#include <support/textrows.h>

using namespace zelkorecording;

namespace {

AisVessel vessel()
{
    AisVessel v;
    v.mmsi = 211234567;
    v.latitude = 53.5;
    v.longitude = 9.9;
    v.callSign = "DABC";
    v.name = "MS ZELKO";
    v.destination = "HAMBURG";
    return v;
}

struct Feed
{
    std::vector<AivdmMessage> messages;
    AivdmCounts counts;
};

Feed feed(QList<QByteArray> const& lines)
{
    AivdmReader reader;
    Feed result;
    for (QByteArray const& line : lines) {
        if (auto message = reader.readLine(line)) {
            result.messages.push_back(*message);
        }
    }
    reader.finish();
    result.counts = reader.counts();
    return result;
}

QList<QByteArray> sentencesOf(AisBitWriter const& message, int sequence = 3, char channel = 'B')
{
    QList<QByteArray> lines;
    for (QString const& sentence : AisEncoder::sentences(message, channel, sequence)) {
        lines << sentence.toLatin1();
    }
    return lines;
}

TEST(AivdmReader, OurSentencesComeBackBitForBit)
{
    for (AisBitWriter const& message :
         {AisEncoder::positionReportA(vessel()), AisEncoder::staticAndVoyage(vessel()),
          AisEncoder::safetyBroadcast(2655001, "SECURITE")}) {
        QList<QByteArray> const lines = sentencesOf(message);
        Feed const result = feed(lines + QList<QByteArray>{"\r\n", "$GPGGA,1*00"});
        ASSERT_EQ(result.messages.size(), 1u) << lines.join('\n').constData();
        EXPECT_EQ(result.messages[0].bitCount, message.bitCount());
        EXPECT_EQ(result.messages[0].bits.left(int((message.bitCount() + 7) / 8)), message.bytes());
        EXPECT_EQ(result.messages[0].channel, 'B');
        EXPECT_FALSE(result.messages[0].time.has_value());
        EXPECT_EQ(result.counts.sentences, lines.size());
        EXPECT_EQ(result.counts.otherLines, 2);
    }
    // Type 5 takes two sentences, the last with fill bits.
    EXPECT_EQ(sentencesOf(AisEncoder::staticAndVoyage(vessel())).size(), 2);
}

// Each message as bits (hexadecimal), bit count, channel and tag-block time, then the counts.
QString summaryOf(Feed const& result)
{
    QStringList messages;
    for (AivdmMessage const& m : result.messages) {
        messages << QStringLiteral("%1/%2 %3 t=%4")
                        .arg(QString::fromLatin1(m.bits.toHex()))
                        .arg(m.bitCount)
                        .arg(m.channel ? QChar::fromLatin1(m.channel) : QChar('-'))
                        .arg(m.time ? QString::number(*m.time) : QStringLiteral("none"));
    }
    AivdmCounts const& c = result.counts;
    return QStringLiteral("%1 messages [%2], %3 checksum errors, %4 broken, %5 incomplete")
        .arg(c.messages)
        .arg(messages.join(QStringLiteral("; ")))
        .arg(c.checksumErrors)
        .arg(c.broken)
        .arg(c.incomplete);
}

using AivdmLines = ::testing::TestWithParam<zelkotest::TextRow>;

TEST_P(AivdmLines, GiveTheirMessagesAndCounts)
{
    EXPECT_EQ(summaryOf(feed(GetParam().input.toLatin1().split('\n'))), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Lines, AivdmLines,
    ::testing::ValuesIn(zelkotest::readTextRows(QStringLiteral("tools/aivdm-lines.rows"))),
    zelkotest::TextRowName());

} // namespace
