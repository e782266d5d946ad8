#include <QFile>
#include <QTemporaryDir>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/burstemissionlistconverter.h>
#include <recordingwriter/hoppergenerator.h>
#include <set>
#include <support/allocationcounter.h>
#include <support/golden.h>
#include <support/rowname.h>

using namespace zelkodatastreamconverter::BurstEmissionList;
using zelkodatastreamconverter::SwappedFrameMagic;
namespace FrameType = zelkodatastreamconverter::FrameType;
using zelkorecording::BurstListFrame;
using zelkorecording::BurstRecord;

namespace {

using Result = std::tuple<bool, unsigned, FrequencyTimeWindow>;
Result const Ignored{false, 0u, FrequencyTimeWindow()};

BurstListFrame frame(unsigned radioID, quint64 startTime, quint32 duration,
                     std::vector<BurstRecord> records)
{
    BurstListFrame f;
    f.radioID = radioID;
    f.startTime = startTime;
    f.duration = duration;
    f.centreFrequency = 100000000;
    f.bandwidth = 25;
    f.records = std::move(records);
    return f;
}

std::vector<BurstRecord> levels(int count, float firstLevel = -100.f)
{
    std::vector<BurstRecord> records;
    for (int i = 0; i < count; ++i) {
        // Levels descending with i, so level order differs from record order.
        records.push_back({quint32(i), 1, qint32(i * 1000), 500, firstLevel - float(i)});
    }
    return records;
}

/// One radio hopping over a single evenly spaced segment at 30 MHz.
zelkorecording::HopperScenario scenario(double spacing, unsigned channels, unsigned burstsPerFrame,
                                        double jitterHz = 0)
{
    zelkorecording::HopperRadio radio;
    radio.segments = {{30e6, spacing, channels, {}}};
    radio.jitterHz = jitterHz;
    radio.bandwidthHz = 10000;
    zelkorecording::HopperScenario result;
    result.radios = {radio};
    result.burstsPerFrame = burstsPerFrame;
    return result;
}

void writeAll(QString const& path, QByteArray const& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bytes);
}

void setWord(QByteArray& bytes, int word, quint32 value)
{
    std::memcpy(bytes.data() + 4 * word, &value, 4);
}

} // namespace

// A frame becomes one segment sorted by frequency; the records lie where the header extension
// ends, one stride apart (both wider than usual here).
TEST(BurstConverter, FrameBecomesASegmentSortedByFrequency)
{
    BurstEmissionListConverter converter;
    BurstListFrame f = frame(9, 1000, 5, {{10, 3, -5000, 1000, -50.f}, {0, 1, 2000, 3000, -60.f}});
    f.strideWords = 11;
    f.headerExtensionWords = 15;
    // Bandwidth 25 gives ±ceil(12.5).
    EXPECT_EQ(converter.processFrame(f.frameBytes()),
              Result(true, 9u, FrequencyTimeWindow(99999987.0, 100000013.0, 1000, 6000)));
    RadioBurstData const& radio = converter.getDataMap().at(9);
    EXPECT_EQ(std::vector<BurstData>(radio.bursts.begin(), radio.bursts.end()),
              (std::vector<BurstData>{BurstData(99995000.0, 1000.0, 1010, 3, -50.f),
                                      BurstData(100002000.0, 3000.0, 1000, 1, -60.f)}));
    EXPECT_EQ(radio.segmentStopTimes, (std::vector<unsigned long long>{6000}));
}

struct BadFrame
{
    char const* name;
    int word;
    quint32 value;
};

using BurstConverterBadFrame = testing::TestWithParam<BadFrame>;

TEST_P(BurstConverterBadFrame, IsIgnoredWithoutChange)
{
    QByteArray bytes = frame(5, 0, 1, levels(3)).frameBytes();
    setWord(bytes, GetParam().word, GetParam().value);
    BurstEmissionListConverter converter;
    EXPECT_EQ(converter.processFrame(bytes), Ignored);
    EXPECT_TRUE(converter.getDataMap().empty());
}

INSTANTIATE_TEST_SUITE_P(
    Headers, BurstConverterBadFrame,
    testing::Values(
        BadFrame{"wrong magic", 0, SwappedFrameMagic},
        BadFrame{"another frame type", 3, FrameType::TransmissionSystem},
        BadFrame{"type one past", 3, FrameType::BurstList + 1}, BadFrame{"no records", 13, 0},
        BadFrame{"one record too many", 13, 4}, BadFrame{"record count at maximum", 13, 0xFFFFFFFF},
        BadFrame{"stride below six words", 14, 5}, BadFrame{"stride pointing past the end", 14, 7},
        BadFrame{"stride at maximum", 14, 0xFFFFFFFF}, BadFrame{"extension past the end", 4, 1000}),
    zelkotest::RowName());

TEST(BurstConverter, EveryCutFrameIsIgnoredAndSlackIsNot)
{
    QByteArray const good = frame(5, 0, 1, levels(3)).frameBytes();
    for (int cut = 0; cut < good.size(); ++cut) {
        BurstEmissionListConverter fresh;
        EXPECT_EQ(fresh.processFrame(good.left(cut)), Ignored) << "cut at " << cut;
    }
    BurstEmissionListConverter converter;
    EXPECT_TRUE(std::get<0>(converter.processFrame(good))) << "records ending at the frame end";
    EXPECT_TRUE(std::get<0>(converter.processFrame(good + QByteArray(4, '\0'))))
        << "slack after the records";
    // The smallest frame that holds the fixed fields: no extension, one record over them.
    BurstListFrame smallest = frame(5, 0, 1, levels(1));
    smallest.headerExtensionWords = 0;
    smallest.strideWords = 9;
    ASSERT_EQ(smallest.frameBytes().size(), 60);
    EXPECT_TRUE(std::get<0>(converter.processFrame(smallest.frameBytes())));
}

// Frame i holds 1 + i % 3 bursts, so a wrong segment dropped shows in the burst count.
TEST(BurstConverter, OldestSegmentIsDroppedAtTheMaximum)
{
    for (auto const [maximum, frames, kept] :
         {std::make_tuple(16, 20, 16), std::make_tuple(0, 3, 1)}) {
        BurstEmissionListConverter converter;
        converter.setMaxSegmentsPerRadioID((unsigned short)maximum);
        std::size_t expectedBursts = 0;
        for (int i = 0; i < frames; ++i) {
            converter.processFrame(frame(7, quint64(i) * 1000, 1, levels(1 + i % 3)).frameBytes());
            expectedBursts += i >= frames - kept ? std::size_t(1 + i % 3) : 0;
        }
        RadioBurstData const& radio = converter.getDataMap().at(7);
        EXPECT_EQ(radio.segmentCount(), std::size_t(kept)) << "maximum " << maximum;
        EXPECT_EQ(radio.segmentStartTimes.front(), quint64(frames - kept) * 1000);
        EXPECT_EQ(radio.segmentStartIndices.front(), 0u);
        EXPECT_EQ(radio.bursts.size(), expectedBursts);
    }
}

TEST(BurstConverter, TimeRunningBackwardsForgetsEveryRadio)
{
    BurstEmissionListConverter converter;
    converter.processFrame(frame(1, 10000, 5, levels(2)).frameBytes()); // stop 15000
    converter.processFrame(frame(2, 15000, 5, levels(2)).frameBytes()); // stop 20000
    converter.processFrame(frame(1, 20000, 0, levels(2)).frameBytes()); // stop 20000: same
    EXPECT_EQ(converter.getDataMap().size(), 2u) << "an equal stop time is not backwards";
    EXPECT_EQ(converter.getDataMap().at(1).segmentCount(), 2u);
    converter.processFrame(frame(3, 0, 19, levels(2)).frameBytes()); // stop 19000 < 20000
    ASSERT_EQ(converter.getDataMap().size(), 1u);
    EXPECT_EQ(converter.getDataMap().count(3), 1u);
    // An ignored frame does not move the clock.
    QByteArray wrongType = frame(4, 0, 0, levels(1)).frameBytes();
    setWord(wrongType, 3, FrameType::DecodedText);
    converter.processFrame(wrongType);
    converter.processFrame(frame(5, 18000, 1, levels(1)).frameBytes()); // stop 19000
    EXPECT_EQ(converter.getDataMap().size(), 2u);
}

TEST(BurstConverter, QueriesOnRadios)
{
    BurstEmissionListConverter converter;
    converter.processFrame(frame(1, 1000, 2, levels(3)).frameBytes()); // stop 3000
    EXPECT_TRUE(converter.dataAvailableForTime(1, 3000));
    EXPECT_FALSE(converter.dataAvailableForTime(1, 3001));
    EXPECT_FALSE(converter.dataAvailableForTime(2, 0));
    EXPECT_EQ(converter.getFrequencySetForRadioID(2), std::make_pair(HopperFrequencySet(), 0.0));
    converter.eraseDataForRadioID(1);
    EXPECT_FALSE(converter.dataAvailableForTime(1, 0));
}

TEST(BurstConverter, FrequencySetFollowsTheToleranceSettings)
{
    zelkorecording::HopperScenario hopper = scenario(25000, 20, 400, 300);
    hopper.radios[0].radioID = 4;
    zelkorecording::HopperGenerator generator(hopper);
    BurstEmissionListConverter converter;
    for (int i = 0; i < 4; ++i) {
        converter.processFrame(generator.nextFrame().frameBytes());
    }
    // How close the estimate comes is the estimation-quality table's business; here the
    // settings count.
    auto const [set, meanBandwidth] = converter.getFrequencySetForRadioID(4);
    EXPECT_DOUBLE_EQ(meanBandwidth, 10000.0);
    EXPECT_EQ(set.frequencies.size(), 20u);
    EXPECT_EQ(set.gridEstimation.segments.size(), 1u);

    converter.setBinningTolerance(eAbsolute, 1.0);
    EXPECT_GT(converter.getFrequencySetForRadioID(4).first.frequencies.size(), 200u)
        << "1 Hz merges almost nothing";
    converter.setBinningTolerance(eRelative, 0.3);
    converter.setSegmentationParameters(eAbsolute, 30000.0);
    EXPECT_EQ(converter.getFrequencySetForRadioID(4).first.gridEstimation.segments.size(), 1u)
        << "25 kHz gaps stay below a 30 kHz threshold";
    converter.setSegmentationParameters(eAbsolute, 20000.0);
    EXPECT_EQ(converter.getFrequencySetForRadioID(4).first.gridEstimation.segments.size(), 20u)
        << "every gap ends a segment";
}

TEST(BurstSampling, ManyBurstsAreTrimmedAndSampledEvenly)
{
    // 100 bursts: level ranks 15 .. 94 kept (m = 80), every second from a random offset, then
    // topped up from the strongest down with the ones halfway between, to 75.
    std::vector<std::size_t> offsetZero, offsetOne;
    for (std::size_t k = 0; k < 80; k += 2) {
        offsetZero.push_back(k);
        offsetOne.push_back(k + 1);
    }
    for (std::size_t k = 79; k >= 11; k -= 2) {
        offsetZero.push_back(k);
        offsetOne.push_back(k - 1);
    }
    auto const sampledRanks = [](unsigned seed) {
        BurstEmissionListConverter converter;
        converter.seedRandomEngine(seed);
        converter.processFrame(frame(1, 0, 1, levels(100)).frameBytes());
        std::vector<std::size_t> ranks;
        for (auto const& window : converter.drawRandomSampleFTWsForRadioID(1)) {
            // Level rank r (ascending) belongs to record 99 − r at offset (99 − r) kHz.
            auto const record = std::llround((window.startFrequency + 250.0 - 1e8) / 1000.0);
            ranks.push_back(std::size_t(99 - record - 15));
        }
        return ranks;
    };
    std::set<std::vector<std::size_t>> seen;
    for (unsigned seed = 0; seed < 16; ++seed) {
        seen.insert(sampledRanks(seed));
        EXPECT_EQ(sampledRanks(seed), sampledRanks(seed)) << "a fixed seed repeats";
    }
    EXPECT_EQ(seen, (std::set<std::vector<std::size_t>>{offsetZero, offsetOne}));
}

TEST(BurstSampling, OnlySegmentsWithinTheTimeSpanCountInLevelOrder)
{
    BurstEmissionListConverter converter;
    converter.setSamplingParameters(5000, 75, 0.15f, 0.95f);
    converter.processFrame(frame(1, 0, 1, levels(10, -10.f)).frameBytes());    // stop 1000
    converter.processFrame(frame(1, 1000, 1, levels(10, -30.f)).frameBytes()); // stop 2000
    converter.processFrame(frame(1, 5000, 2, levels(10, -50.f)).frameBytes()); // stop 7000
    // t0 = 7000 − 5000 = 2000: the first segment whose stop is above it is the third.
    // Fewer bursts than samples are all returned in ascending level, which falls with the
    // record index: descending frequency.
    auto const windows = converter.drawRandomSampleFTWsForRadioID(1);
    ASSERT_EQ(windows.size(), 10u);
    for (std::size_t k = 0; k < windows.size(); ++k) {
        EXPECT_EQ(windows[k].startFrequency, 1e8 + 1000.0 * double(9 - k) - 250.0) << k;
    }
    converter.setSamplingParameters(5001, 75, 0.15f, 0.95f);
    EXPECT_EQ(converter.drawRandomSampleFTWsForRadioID(1).size(), 20u);
    converter.setSamplingParameters(100000, 0, 0.15f, 0.95f);
    EXPECT_TRUE(converter.drawRandomSampleFTWsForRadioID(1).empty()) << "sample count 0";
    converter.setSamplingParameters(100000, 5, 0.9f, 0.1f);
    EXPECT_TRUE(converter.drawRandomSampleFTWsForRadioID(1).empty())
        << "crossed quantiles leave nothing, without reading out of range";

    // A damaged record's NaN level sorts first instead of breaking the level order.
    BurstEmissionListConverter damaged;
    std::vector<BurstRecord> records = levels(3);
    records[2].level_dBm = std::numeric_limits<float>::quiet_NaN();
    damaged.processFrame(frame(1, 0, 1, records).frameBytes());
    std::vector<double> starts;
    for (auto const& window : damaged.drawRandomSampleFTWsForRadioID(1)) {
        starts.push_back(window.startFrequency);
    }
    EXPECT_EQ(starts, (std::vector<double>{1e8 + 1750.0, 1e8 + 750.0, 1e8 - 250.0}));
}

TEST(BurstDumps, FilesMirrorInputAndResults)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    BurstEmissionListConverter converter;
    converter.seedRandomEngine(1);
    ASSERT_TRUE(converter.dumpBinaryFrameData(dir.filePath("frames.bin")));
    ASSERT_TRUE(converter.dumpBinaryBurstData(dir.filePath("bursts.bin")));
    ASSERT_TRUE(converter.dumpTextBurstData(dir.filePath("bursts.txt")));
    ASSERT_TRUE(converter.dumpTextFtwSampleData(dir.filePath("ftw.txt")));
    ASSERT_TRUE(converter.dumpTextGridEstimation(dir.filePath("grid.txt")));
    ASSERT_TRUE(converter.dumpTextBurstData(dir.filePath("old.txt")));
    EXPECT_FALSE(converter.dumpTextBurstData(dir.filePath("missing/bursts.txt")))
        << "an unopenable dump stays off, and the one it replaces is closed";
    ASSERT_TRUE(converter.dumpTextBurstData(dir.filePath("bursts.txt")));

    QByteArray const first =
        frame(9, 1000, 5, {{10, 3, -5000, 1000, -50.f}, {0, 1, 2000, 3000, -60.f}}).frameBytes();
    QByteArray ignored = first;
    setWord(ignored, 3, FrameType::DecodedText);
    QByteArray const second = frame(9, 6000, 5, {{0, 7, 0, 2000, -55.f}}).frameBytes();
    for (QByteArray const& bytes : {first, ignored, second}) {
        converter.processFrame(bytes);
    }
    converter.drawRandomSampleFTWsForRadioID(9);
    converter.drawRandomSampleFTWsForRadioID(77);
    converter.getFrequencySetForRadioID(9);

    EXPECT_EQ(BurstEmissionListConverter::parseBinaryFrameDataFile(dir.filePath("frames.bin")),
              (std::vector<QByteArray>{first, ignored, second}))
        << "every frame, ignored ones too";
    auto const bursts =
        BurstEmissionListConverter::parseBinaryBurstData(dir.filePath("bursts.bin"));
    ASSERT_EQ(bursts.size(), 2u);
    EXPECT_EQ(bursts[0].first, 9u);
    EXPECT_EQ(bursts[0].second,
              (std::vector<BurstData>{BurstData(99995000, 1000, 1010, 3, -50.f),
                                      BurstData(100002000, 3000, 1000, 1, -60.f)}));
    EXPECT_EQ(bursts[1].second, (std::vector<BurstData>{BurstData(1e8, 2000, 6000, 7, -55.f)}));

    EXPECT_EQ(zelkotest::readFile(dir.filePath("bursts.txt")),
              QByteArray("9;2\nBurstData[99.995M;3;1k]\nBurstData[100.002M;1;3k]\n\n\n"
                         "9;1\nBurstData[100M;7;2k]\n\n\n"));
    EXPECT_EQ(zelkotest::readFile(dir.filePath("ftw.txt")),
              QByteArray("9;3\nFTW{[100M;100M], [1000, 1001]}\nFTW{[99M;100M], [6000, 6007]}\n"
                         "FTW{[99M;99M], [1010, 1013]}\n\n\n77;0\n\n\n"))
        << "ascending level: -60, -55, -50 dBm";
    EXPECT_TRUE(zelkotest::readFile(dir.filePath("old.txt")).isEmpty());
    QByteArray const grid = zelkotest::readFile(dir.filePath("grid.txt"));
    EXPECT_TRUE(grid.startsWith("9;HopperFrequencySet[3;")) << grid.constData();
    EXPECT_TRUE(grid.endsWith("]\n\n")) << grid.constData();
}

TEST(BurstDumps, UnreadableOrDamagedDumpFilesGiveWhatWasIntact)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    EXPECT_TRUE(BurstEmissionListConverter::parseBinaryFrameDataFile(dir.filePath("none")).empty());
    EXPECT_TRUE(BurstEmissionListConverter::parseBinaryBurstData(dir.path()).empty())
        << "a directory";
    {
        BurstEmissionListConverter converter;
        converter.dumpBinaryFrameData(dir.filePath("frames.bin"));
        converter.dumpBinaryBurstData(dir.filePath("bursts.bin"));
        for (int i = 0; i < 3; ++i) {
            converter.processFrame(frame(2, quint64(i) * 1000, 1, levels(4)).frameBytes());
        }
    }
    QByteArray const frames = zelkotest::readFile(dir.filePath("frames.bin"));
    QByteArray const bursts = zelkotest::readFile(dir.filePath("bursts.bin"));
    // Every cut keeps the whole entries before it (three of equal size).
    auto const entriesAfterCut = [&dir](QByteArray const& bytes, auto parse) {
        for (int cut = 0; cut <= bytes.size(); cut += 5) {
            writeAll(dir.filePath("cut.bin"), bytes.left(cut));
            EXPECT_EQ(parse(dir.filePath("cut.bin")).size(), std::size_t(cut / (bytes.size() / 3)))
                << "cut at " << cut;
        }
    };
    entriesAfterCut(frames, BurstEmissionListConverter::parseBinaryFrameDataFile);
    entriesAfterCut(bursts, BurstEmissionListConverter::parseBinaryBurstData);
    // A damaged count asks for 2^62 bursts: the reader stops at the end of the data.
    QByteArray damaged = bursts;
    damaged.replace(4, 8, QByteArray::fromHex("4000000000000000"));
    writeAll(dir.filePath("damaged.bin"), damaged);
    EXPECT_TRUE(
        BurstEmissionListConverter::parseBinaryBurstData(dir.filePath("damaged.bin")).empty());
}

TEST(BurstConverter, SteadyStateFramesDoNotAllocate)
{
    zelkorecording::HopperGenerator generator(scenario(25000, 200, 2048));
    std::vector<QByteArray> frames;
    for (int i = 0; i < 40; ++i) {
        frames.push_back(generator.nextFrame().frameBytes());
    }
    BurstEmissionListConverter converter;
    for (int i = 0; i < 20; ++i) {
        converter.processFrame(frames[std::size_t(i)]); // warm up: 16 segments and a spare
    }
    // The converter promises no heap allocation per frame once the queue has its working size.
    zelkotest::AllocationScope const allocations;
    for (int i = 20; i < 40; ++i) {
        converter.processFrame(frames[std::size_t(i)]);
    }
    EXPECT_EQ(allocations.count(), 0);
    EXPECT_EQ(converter.getDataMap().at(1).bursts.size(), 16u * 2048u);
}
