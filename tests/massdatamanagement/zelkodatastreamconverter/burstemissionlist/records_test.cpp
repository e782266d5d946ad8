// What the scenario scripts cannot reach: a radio's segments built by hand, and stream round
// trips of every record, cut at every byte.

#include <QDataStream>
#include <gtest/gtest.h>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/hopperfrequencyset.h>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/radioburstdata.h>
#include <support/qstringprinter.h>

using namespace zelkodatastreamconverter::BurstEmissionList;

namespace {

template <typename T>
T readBack(QByteArray const& bytes, QDataStream::Status& status)
{
    QDataStream stream(bytes);
    T value;
    stream >> value;
    status = stream.status();
    return value;
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

TEST(RadioBurstData, SegmentsAppendAndDropFromTheFront)
{
    RadioBurstData radio = twoSegmentRadio();
    radio.appendBurstsOfNewSegment(300, 400, {});
    EXPECT_EQ(radio.segmentCount(), 2u) << "an empty segment is never appended";
    EXPECT_EQ(radio.segmentStartIndices, (std::vector<unsigned long long>{0, 2}));
    // Runs merged, and a hand-built segment out of order still sorts.
    RadioBurstData runs;
    runs.appendBurstsOfNewSegment(0, 1, {BurstData(5, 0, 0, 0, 0), BurstData(9, 0, 0, 0, 0)});
    runs.appendBurstsOfNewSegment(1, 2, {BurstData(1, 0, 0, 0, 0), BurstData(7, 0, 0, 0, 0)});
    runs.appendBurstsOfNewSegment(2, 3, {BurstData(3, 0, 0, 0, 0)});
    EXPECT_EQ(runs.sortedFrequencyVector(), (std::vector<double>{1, 3, 5, 7, 9}));
    runs.appendBurstsOfNewSegment(3, 4, {BurstData(8, 0, 0, 0, 0), BurstData(2, 0, 0, 0, 0)});
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

// Every value reads back equal, with the stream still good; every cut of a container is an
// error and leaves an empty value, not a half-read one.
TEST(BurstStreams, RoundTripsAndCuts)
{
    auto const check = [](auto const& value, bool container = true) {
        using T = std::decay_t<decltype(value)>;
        QByteArray bytes;
        QDataStream out(&bytes, QIODevice::WriteOnly);
        out << value;
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
    set.gridEstimation.segments = {HopperFrequencyGridSegment(1, 2, 4294967295u),
                                   HopperFrequencyGridSegment(9, 8, 7)};
    set.gridEstimation.segments[0].squaredDeviationSum = 0.25;
    check(set);
    check(HopperFrequencySet());
    // Damaged counts: 2^62 bursts followed by nothing, and a negative segment count.
    QDataStream::Status status = QDataStream::Ok;
    EXPECT_EQ(readBack<RadioBurstData>(QByteArray::fromHex("4000000000000000"), status),
              RadioBurstData());
    EXPECT_NE(status, QDataStream::Ok);
    EXPECT_TRUE(
        readBack<HopperFrequencyGridEstimation>(QByteArray::fromHex("ffffffffffffffff"), status)
            .segments.empty());
    EXPECT_NE(status, QDataStream::Ok);
}
