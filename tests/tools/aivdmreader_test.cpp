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

TEST(AivdmReader, TagBlockTimeInSecondsOrMilliseconds)
{
    QByteArray const sentence = sentencesOf(AisEncoder::positionReportA(vessel()))[0];
    auto tagged = [&](QByteArray const& tags) { return AisEncoder::tagBlock(tags) + sentence; };
    Feed const result =
        feed({tagged("s:r003669945,c:1715934600"), tagged("c:1715934600250"), tagged("s:station"),
              "\\c:1715934600*00\\" + sentence, "\\c:1715934600" + sentence});
    ASSERT_EQ(result.messages.size(), 3u);
    EXPECT_EQ(result.messages[0].time, std::optional<quint64>(1715934600000000ull));
    EXPECT_EQ(result.messages[1].time, std::optional<quint64>(1715934600250000ull));
    EXPECT_FALSE(result.messages[2].time.has_value());
    EXPECT_EQ(result.counts.checksumErrors, 1);
    EXPECT_EQ(result.counts.broken, 1);
}

QString countsOf(Feed const& result)
{
    AivdmCounts const& c = result.counts;
    return QStringLiteral("%1 messages, %2 checksum errors, %3 broken, %4 incomplete")
        .arg(c.messages)
        .arg(c.checksumErrors)
        .arg(c.broken)
        .arg(c.incomplete);
}

using AivdmReaderSkips = ::testing::TestWithParam<zelkotest::TextRow>;

TEST_P(AivdmReaderSkips, AndCountsWhy)
{
    EXPECT_EQ(countsOf(feed(GetParam().input.toLatin1().split('\n'))), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Lines, AivdmReaderSkips,
    ::testing::ValuesIn(zelkotest::readTextRows(QStringLiteral("tools/aivdm-skipped.rows"))),
    zelkotest::TextRowName());

} // namespace
