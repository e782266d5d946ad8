// NMEA AIS sentences into messages: round trips through our encoder's sentences, and every
// way a log line can fail, each counted where it belongs.

#include <gtest/gtest.h>
#include <recordingwriter/aisencoder.h>
#include <recordingwriter/aivdmreader.h>
#include <support/rowname.h>

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

QByteArray withChecksum(QByteArray const& body)
{
    return '!' + AisEncoder::withChecksum(body);
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

struct BadLines
{
    char const* name;
    QList<QByteArray> lines;
    qint64 checksumErrors, broken, incomplete, messages;
};

using AivdmReaderSkips = ::testing::TestWithParam<BadLines>;

TEST_P(AivdmReaderSkips, AndCountsWhy)
{
    Feed const result = feed(GetParam().lines);
    EXPECT_EQ(result.counts.checksumErrors, GetParam().checksumErrors);
    EXPECT_EQ(result.counts.broken, GetParam().broken);
    EXPECT_EQ(result.counts.incomplete, GetParam().incomplete);
    EXPECT_EQ(result.counts.messages, GetParam().messages);
}

QList<QByteArray> const twoParts = sentencesOf(AisEncoder::staticAndVoyage(vessel()));
QByteArray const single = sentencesOf(AisEncoder::positionReportA(vessel()))[0];

INSTANTIATE_TEST_SUITE_P(
    Lines, AivdmReaderSkips,
    ::testing::Values(
        BadLines{"wrong_checksum", {single.left(single.size() - 2) + "00"}, 1, 0, 0, 0},
        BadLines{"no_checksum", {single.left(single.size() - 3)}, 0, 1, 0, 0},
        BadLines{"six_fields", {withChecksum("AIVDM,1,1,,A,15M67FC000G")}, 0, 1, 0, 0},
        BadLines{"part_beyond_count", {withChecksum("AIVDM,1,2,,A,15M67FC000G,0")}, 0, 1, 0, 0},
        BadLines{"fill_6", {withChecksum("AIVDM,1,1,,A,15M67FC000G,6")}, 0, 1, 0, 0},
        BadLines{"character_outside_the_armour",
                 {withChecksum("AIVDM,1,1,,A,15M67FC0Z0G,0")},
                 0,
                 1,
                 0,
                 0},
        BadLines{"second_part_alone", {twoParts[1]}, 0, 1, 0, 0},
        BadLines{"first_part_alone", {twoParts[0]}, 0, 0, 1, 0},
        BadLines{"first_part_twice", {twoParts[0], twoParts[0], twoParts[1]}, 0, 0, 1, 1},
        BadLines{"parts_of_other_channels_apart",
                 {twoParts[0], sentencesOf(AisEncoder::staticAndVoyage(vessel()), 3, 'A')[0],
                  twoParts[1]},
                 0,
                 0,
                 1,
                 1},
        BadLines{"own_station_sentence", {withChecksum("AIVDO,1,1,,,15M67FC000G,0")}, 0, 0, 0, 1},
        BadLines{"empty_payload", {withChecksum("AIVDM,1,1,,A,,0")}, 0, 1, 0, 0}),
    zelkotest::RowName());

} // namespace
