#include <QDataStream>
#include <cmath>
#include <gtest/gtest.h>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/burstdata.h>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/hopperfrequencygridestimation.h>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/hopperfrequencyset.h>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/hopperradiosegmentdata.h>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/radioburstdata.h>
#include <support/qstringprinter.h>

using namespace zelkodatastreamconverter::BurstEmissionList;

namespace {

template <typename T>
QByteArray streamed(T const& value)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << value;
    return bytes;
}

template <typename T>
T readBack(QByteArray const& bytes, QDataStream::Status& status)
{
    QDataStream stream(bytes);
    T value;
    stream >> value;
    status = stream.status();
    return value;
}

HopperFrequencyGridSegment segment(double start, double spacing, unsigned count,
                                   unsigned occupied = 0, double deviation = 0.0)
{
    HopperFrequencyGridSegment s(start, spacing, count);
    s.occupiedChannelCount = occupied;
    s.squaredDeviationSum = deviation;
    return s;
}

RadioBurstData twoSegmentRadio()
{
    RadioBurstData radio;
    radio.appendBurstsOfNewSegment(
        100, 200, {BurstData(1e6, 5e3, 110, 5, -50.f), BurstData(2e6, 6e3, 120, 6, -60.f)});
    radio.appendBurstsOfNewSegment(200, 300, {BurstData(3e6, 7e3, 210, 7, -70.f)});
    return radio;
}

} // namespace

TEST(BurstRecordTexts, EachRecordPrintsItsExactForm)
{
    HopperRadioSegmentData segmentData;
    segmentData.minimumLevel_dBm = -90.5;
    segmentData.meanLevel_dBm = -70;
    segmentData.medianLevel_dBm = -71.25;
    segmentData.maximumLevel_dBm = -40;
    segmentData.bandwidth = 12500;
    segmentData.frequencies = {{30025000.0, 3}, {30050000.0, 12}};
    HopperFrequencySet set;
    set.frequencies = {30025000.0, 30075000.0};
    set.gridEstimation.segments = {segment(30025000.0, 25000.0, 3),
                                   segment(31000000.0, 12500.0, 1)};

    EXPECT_EQ(BurstData(123456789.0, 1234567.0, 0, 0, 0.f).toString(),
              "BurstData[123.457M;0;1234.57k]");
    EXPECT_EQ(BurstData(10.0, 0.0, 0, 0, 0.f).toString(), "BurstData[1e-05M;0;0k]");
    EXPECT_EQ(FrequencyTimeWindow(99999999.9, 100000000.0, 5, 18446744073709551615ull).toString(),
              "FTW{[99M;100M], [5, 18446744073709551615]}");
    // Below zero shows 0; 2^64 MHz and beyond the largest count.
    EXPECT_EQ(FrequencyTimeWindow(-5e6, 18446744073709551616e6, 0, 0).toString(),
              "FTW{[0M;18446744073709551615M], [0, 0]}");
    EXPECT_EQ(
        segmentData.toString(),
        "HopperRadioSegmentData[L=-90.5:-70:-71.25:-40;BW=12500;CH=2;(30.025M:3;30.05M:12;)]");
    // Mean spacing: (2 gaps × 25000 + 0) / 2 = 25 kHz.
    EXPECT_EQ(set.toString(),
              "HopperFrequencySet[2;25k;30.025M;30.075M;FreqGrid{ Segment[3.0025e+07; 3; 25000], "
              "Segment[3.1e+07; 1; 12500] }]");
}

TEST(BurstRecords, WindowOfBurstSpansBandwidthAndLength)
{
    EXPECT_EQ(BurstData(1000.0, 25.0, 50, 4294967295u, 0.f).toFTW(),
              FrequencyTimeWindow(987.5, 1012.5, 50, 4294967345ull));
}

// Round trips compare through equality, so each field must count.
TEST(BurstRecords, EveryFieldCountsForEquality)
{
    BurstData const burst(1, 2, 3, 4, 5.f);
    for (BurstData const& other :
         {BurstData(9, 2, 3, 4, 5.f), BurstData(1, 9, 3, 4, 5.f), BurstData(1, 2, 9, 4, 5.f),
          BurstData(1, 2, 3, 9, 5.f), BurstData(1, 2, 3, 4, 9.f)}) {
        EXPECT_FALSE(burst == other) << other.toString().toStdString();
    }
    FrequencyTimeWindow const window(1, 2, 3, 4);
    for (FrequencyTimeWindow const& other :
         {FrequencyTimeWindow(9, 2, 3, 4), FrequencyTimeWindow(1, 9, 3, 4),
          FrequencyTimeWindow(1, 2, 9, 4), FrequencyTimeWindow(1, 2, 3, 9)}) {
        EXPECT_FALSE(window == other) << other.toString().toStdString();
    }
}

TEST(GridSegment, ChannelArithmeticAndBoundaries)
{
    using Segment = HopperFrequencyGridSegment;
    // Channel count ceil((stop - start) / spacing) + 1, at least one.
    EXPECT_EQ(Segment::fromStartStop(100, 100, 25), segment(100, 25, 1));
    EXPECT_EQ(Segment::fromStartStop(100, 151, 25), segment(100, 25, 4));
    EXPECT_EQ(Segment::fromStartStop(100, 150, 25), segment(100, 25, 3));
    EXPECT_EQ(Segment::fromStartStop(100, 50, 25), segment(100, 25, 1));
    EXPECT_DOUBLE_EQ(segment(100, 25, 4).getStopFrequency(), 175.0);
    EXPECT_DOUBLE_EQ(segment(100, 25, 4).getFrequencyOfChannelIndex(3), 175.0);
    EXPECT_FALSE(segment(100, 25, 1).isNull());
    EXPECT_TRUE(segment(100, 1, 0).isNull());
    EXPECT_DOUBLE_EQ(segment(100, 1, 0).getStopFrequency(), 100.0 + 4294967295.0)
        << "no channels wraps the count";
}

TEST(GridSegment, EqualityIsFuzzyForDoublesAndExactForCounts)
{
    auto const base = segment(30025000.0, 25000.0, 200, 150, 1234.5);
    EXPECT_TRUE(base == segment(30025000.0 * (1 + 1e-13), 25000.0, 200, 150, 1234.5));
    EXPECT_FALSE(base == segment(30025000.0 * (1 + 1e-11), 25000.0, 200, 150, 1234.5));
    EXPECT_FALSE(base == segment(30025000.0, 25000.0, 200, 149, 1234.5));
    EXPECT_FALSE(base == segment(30025000.0, 25000.0, 200, 150, 1234.6));
    // Exact zeros are equal only through a zero difference; 0 and a tiny value are not.
    EXPECT_TRUE(segment(0, 0, 0) == segment(0, 0, 0));
    EXPECT_FALSE(segment(0, 0, 0) == segment(1e-300, 0, 0));
}

TEST(GridEstimation, FoldsOverSegmentsInOrder)
{
    HopperFrequencyGridEstimation const empty;
    EXPECT_TRUE(empty.isNull());
    EXPECT_EQ(empty.getTotalChannelCount(), 0u);
    EXPECT_EQ(empty.getMeanChannelSpacing(), 0.0);
    EXPECT_EQ(empty.getMinChannelSpacing(), 0.0);
    EXPECT_TRUE(std::isnan(empty.getOccupationRatio()));
    EXPECT_TRUE(std::isnan(empty.getQuadraticMeanDeviation()));
    EXPECT_TRUE(empty.createFullFrequencyList().empty());

    HopperFrequencyGridEstimation grid;
    grid.segments = {segment(1000, 10, 3, 2, 8.0), segment(2000, 0.5, 1, 1, 1.0),
                     segment(3000, 40, 2, 2, 0.0)};
    EXPECT_EQ(grid.getTotalChannelCount(), 6u);
    EXPECT_EQ(grid.getSegmentStartChannelIndices(), (std::vector<unsigned>{0, 3, 4}));
    struct Row
    {
        unsigned index;
        double frequency;
    } const channels[] = {{0, 1000}, {2, 1020}, {3, 2000}, {4, 3000}, {5, 3040}, {6, 0.0}};
    for (auto const& row : channels) {
        EXPECT_DOUBLE_EQ(grid.getFrequencyOfChannelIndex(row.index), row.frequency) << row.index;
    }
    EXPECT_EQ(std::make_pair(grid.getStartFrequency(), grid.getStopFrequency()),
              std::make_pair(1000.0, 3040.0));
    EXPECT_FLOAT_EQ(grid.getOccupationRatio(), 5.0f / 6.0f);
    EXPECT_DOUBLE_EQ(grid.getQuadraticMeanDeviation(), std::sqrt(9.0 / 5.0));
    // Gaps: 2 × 10 and 1 × 40 (the one-channel segment has none).
    EXPECT_DOUBLE_EQ(grid.getMeanChannelSpacing(), 60.0 / 3.0);
    EXPECT_DOUBLE_EQ(grid.getMinChannelSpacing(), 10.0);
    EXPECT_EQ(grid.createFullFrequencyList(),
              (std::vector<double>{1000, 1010, 1020, 2000, 3000, 3040}));
    // 1004 lies in channel 1000, 1015 on the border of 1010 and 1020, 3019 in 3000 only.
    EXPECT_EQ(grid.createFrequencyListWithoutUnoccupiedFrequencies({1004, 1015, 3019}),
              (std::vector<double>{1000, 1010, 1020, 3000}));

    EXPECT_EQ(HopperFrequencyGridEstimation(100.0, 0.5, 4).getMinChannelSpacing(), 0.0);
    EXPECT_EQ(HopperFrequencyGridEstimation(100.0, 1.0, 4).getMinChannelSpacing(), 1.0);
    EXPECT_EQ(HopperFrequencyGridEstimation(100.0, 25.0, 1).getMeanChannelSpacing(), 0.0);
}

TEST(SegmentData, SampleCountWrapsAndFrequenciesSort)
{
    HopperRadioSegmentData data;
    data.frequencies = {{3.0, 4000000000u}, {1.0, 400000000u}, {2.0, 0}};
    EXPECT_EQ(data.sampleCount(), (4000000000u + 400000000u)); // modulo 2^32
    EXPECT_EQ(data.sortedFrequencyVector(), (std::vector<double>{1, 2, 3}));
}

TEST(RadioBurstData, SegmentsAppendAndDropFromTheFront)
{
    RadioBurstData radio = twoSegmentRadio();
    radio.appendBurstsOfNewSegment(300, 400, {});
    EXPECT_EQ(radio.segmentCount(), 2u) << "an empty segment is never appended";
    EXPECT_EQ(radio.segmentStartIndices, (std::vector<unsigned long long>{0, 2}));
    EXPECT_DOUBLE_EQ(radio.meanBandwidth(), 6000.0);
    EXPECT_EQ(radio.sortedFrequencyVector(), (std::vector<double>{1e6, 2e6, 3e6}));

    // Runs merged, and a hand-built segment out of order still sorts.
    RadioBurstData runs;
    runs.appendBurstsOfNewSegment(0, 1, {BurstData(5, 0, 0, 0, 0), BurstData(9, 0, 0, 0, 0)});
    runs.appendBurstsOfNewSegment(1, 2, {BurstData(1, 0, 0, 0, 0), BurstData(7, 0, 0, 0, 0)});
    runs.appendBurstsOfNewSegment(2, 3, {BurstData(3, 0, 0, 0, 0)});
    EXPECT_EQ(runs.sortedFrequencyVector(), (std::vector<double>{1, 3, 5, 7, 9}));
    runs.appendBurstsOfNewSegment(3, 4, {BurstData(8, 0, 0, 0, 0), BurstData(2, 0, 0, 0, 0)});
    EXPECT_EQ(runs.sortedFrequencyVector(), (std::vector<double>{1, 2, 3, 5, 7, 8, 9}));
    runs.segmentStartIndices.clear();
    EXPECT_EQ(runs.sortedFrequencyVector(), (std::vector<double>{1, 2, 3, 5, 7, 8, 9}));

    // What is left equals a radio built from the second segment alone.
    RadioBurstData second;
    second.appendBurstsOfNewSegment(200, 300, {BurstData(3e6, 7e3, 210, 7, -70.f)});
    radio.removeFirstSegment();
    EXPECT_EQ(radio, second);
    radio.removeFirstSegment();
    radio.removeFirstSegment();
    EXPECT_EQ(radio, RadioBurstData());
    EXPECT_EQ(radio.meanBandwidth(), 0.0);
}

TEST(BurstStreams, WireLayoutIsBigEndianFieldByField)
{
    // A fresh stream: big-endian, floats at double precision (8 bytes).
    QByteArray const burst = streamed(BurstData(1.0, 2.0, 0x0102030405060708ull, 0x0A0B0C0D, 0.5f));
    ASSERT_EQ(burst.size(), 8 + 8 + 8 + 4 + 8);
    EXPECT_EQ(burst.mid(0, 8).toHex(), QByteArray("3ff0000000000000"));
    EXPECT_EQ(burst.mid(16, 8).toHex(), QByteArray("0102030405060708"));
    EXPECT_EQ(burst.mid(24, 4).toHex(), QByteArray("0a0b0c0d"));
    EXPECT_EQ(burst.mid(28, 8).toHex(), QByteArray("3fe0000000000000"));

    EXPECT_EQ(streamed(RadioBurstData()).toHex(), QByteArray(64, '0'))
        << "an empty radio is four zero counts";
    EXPECT_EQ(streamed(FrequencyTimeWindow()).size(), 32);
    EXPECT_EQ(streamed(segment(1, 2, 3, 4, 5)).size(), 8 + 8 + 4 + 4 + 8);
    HopperFrequencySet set;
    set.frequencies = {7.0};
    set.gridEstimation = HopperFrequencyGridEstimation(1, 2, 3);
    QByteArray const setBytes = streamed(set);
    ASSERT_EQ(setBytes.size(), 8 + 32 + 4 + 8);
    EXPECT_EQ(setBytes.mid(0, 8).toHex(), QByteArray("0000000000000001")) << "grid first";
    EXPECT_EQ(setBytes.mid(40, 4).toHex(), QByteArray("00000001"));
}

// Every value reads back equal, with the stream still good; every cut of a container is an
// error and leaves an empty value, not a half-read one.
TEST(BurstStreams, RoundTripsAndCuts)
{
    auto const check = [](auto const& value, bool container = true) {
        using T = std::decay_t<decltype(value)>;
        QByteArray const bytes = streamed(value);
        QDataStream::Status status = QDataStream::Ok;
        EXPECT_EQ(readBack<T>(bytes, status), value);
        EXPECT_EQ(status, QDataStream::Ok);
        for (int cut = 0; container && cut < bytes.size(); ++cut) {
            EXPECT_EQ(readBack<T>(bytes.left(cut), status), T()) << "cut at " << cut;
            EXPECT_NE(status, QDataStream::Ok) << "cut at " << cut;
        }
    };
    check(twoSegmentRadio());
    check(RadioBurstData());
    check(BurstData(123456789.125, 12500.0, 18446744073709551615ull, 4294967295u, -99.5f), false);
    check(FrequencyTimeWindow(1.5, 2.5, 3, 18446744073709551615ull), false);
    HopperFrequencySet set;
    set.frequencies = {1e6, 2e6};
    set.gridEstimation.segments = {segment(1, 2, 4294967295u, 7, 0.25), segment(9, 8, 7)};
    check(set);
    check(HopperFrequencySet());
}

TEST(BurstStreams, DamagedCountsFailWithoutHugeAllocation)
{
    // A count of 2^62 bursts followed by nothing: a read error, not an allocation.
    QDataStream::Status status = QDataStream::Ok;
    EXPECT_EQ(readBack<RadioBurstData>(QByteArray::fromHex("4000000000000000"), status),
              RadioBurstData());
    EXPECT_NE(status, QDataStream::Ok);
    EXPECT_EQ(
        readBack<HopperFrequencyGridEstimation>(QByteArray::fromHex("ffffffffffffffff"), status)
            .segments.size(),
        0u);
    EXPECT_NE(status, QDataStream::Ok) << "a negative count is damage";
}
