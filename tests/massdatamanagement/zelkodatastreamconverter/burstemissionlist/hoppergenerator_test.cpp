#include <cstring>
#include <gtest/gtest.h>
#include <recordingwriter/hoppergenerator.h>
#include <set>

using namespace zelkorecording;

namespace {

quint32 word(QByteArray const& bytes, int index)
{
    quint32 value;
    std::memcpy(&value, bytes.constData() + 4 * index, 4);
    return value;
}

HopperScenario twoRadios()
{
    HopperScenario scenario;
    HopperRadio a;
    a.radioID = 10;
    a.segments = {{30e6, 25000, 8, {true, false, true, true, false, false, true, true}},
                  {31e6, 12500, 4, {}}};
    a.jitterHz = 500;
    a.bandwidthHz = 8000;
    a.bandwidthSpreadHz = 1000;
    a.burstLengthMin = 100;
    a.burstLengthMax = 200;
    a.levelMin_dBm = -80;
    a.levelMax_dBm = -60;
    HopperRadio b;
    b.radioID = 20;
    b.segments = {{150e6, 12500, 10, {}}};
    scenario.radios = {a, b};
    scenario.burstsPerFrame = 300;
    scenario.startTime = 5000000;
    scenario.frameDuration = 50;
    return scenario;
}

} // namespace

TEST(BurstListFrame, PayloadLaysOutFieldsThenRecords)
{
    BurstListFrame frame;
    frame.centreFrequency = 0x0000000123456789ull;
    frame.bandwidth = 25000;
    frame.startTime = 0x1122334455667788ull;
    frame.duration = 7;
    frame.radioID = 42;
    frame.strideWords = 8;
    frame.headerExtensionWords = 11;
    frame.records = {{3, 4, -5, 6, -7.5f}};
    QByteArray const bytes = frame.frameBytes();
    ASSERT_EQ(bytes.size(), 24 + 4 * 11 + 4 * 8);
    EXPECT_EQ(word(bytes, 0), zelkodatastreamconverter::FRAME_MAGIC);
    EXPECT_EQ(word(bytes, 1), quint32(bytes.size() / 4));
    EXPECT_EQ(word(bytes, 3), zelkodatastreamconverter::FrameType::BurstList);
    EXPECT_EQ(word(bytes, 4), 11u);
    EXPECT_EQ(word(bytes, 6), 0x23456789u) << "64-bit values: low word first";
    EXPECT_EQ(word(bytes, 7), 0x1u);
    EXPECT_EQ(word(bytes, 8), 25000u);
    EXPECT_EQ(word(bytes, 9), 0x55667788u);
    EXPECT_EQ(word(bytes, 10), 0x11223344u);
    EXPECT_EQ(word(bytes, 11), 7u);
    EXPECT_EQ(word(bytes, 12), 42u);
    EXPECT_EQ(word(bytes, 13), 1u);
    EXPECT_EQ(word(bytes, 14), 8u);
    EXPECT_EQ(word(bytes, 15), 0u) << "padding up to the extension length";
    int const record = 6 + 11;
    EXPECT_EQ(word(bytes, record + 1), 3u);
    EXPECT_EQ(word(bytes, record + 2), 4u);
    EXPECT_EQ(qint32(word(bytes, record + 3)), -5);
    EXPECT_EQ(word(bytes, record + 4), 6u);
    float level;
    std::memcpy(&level, bytes.constData() + 4 * (record + 5), 4);
    EXPECT_EQ(level, -7.5f);
    EXPECT_EQ(word(bytes, record + 7), 0u);

    frame.recordCountOverride = 99;
    EXPECT_EQ(word(frame.frameBytes(), 13), 99u);
    QByteArray const swapped = frame.frameBytes(ByteOrder::Swapped);
    EXPECT_EQ(swapped.left(4).toHex(), QByteArray("fb746572"));
}

TEST(HopperGenerator, RadiosTakeTurnsAndFramesFollowInTime)
{
    HopperGenerator generator(twoRadios());
    std::vector<BurstListFrame> frames;
    for (int i = 0; i < 4; ++i) {
        frames.push_back(generator.nextFrame());
    }
    EXPECT_EQ(frames[0].radioID, 10u);
    EXPECT_EQ(frames[1].radioID, 20u);
    EXPECT_EQ(frames[2].radioID, 10u);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(frames[std::size_t(i)].startTime, 5000000u + quint64(i) * 50000u);
        EXPECT_EQ(frames[std::size_t(i)].records.size(), 300u);
    }
    // Bursts lie on used channels within the jitter, inside the frame, in time order.
    std::vector<double> const channels = twoRadios().radios[0].usedChannelFrequencies();
    EXPECT_EQ(channels.size(), 5u + 4u);
    std::set<double> hit;
    quint32 previous = 0;
    for (BurstRecord const& record : frames[0].records) {
        double const f = double(frames[0].centreFrequency) + record.frequencyOffset;
        double nearest = channels.front();
        for (double c : channels) {
            if (std::abs(c - f) < std::abs(nearest - f)) {
                nearest = c;
            }
        }
        EXPECT_LE(std::abs(nearest - f), 501.0);
        hit.insert(nearest);
        EXPECT_GE(record.bandwidth, 7000u);
        EXPECT_LE(record.bandwidth, 9000u);
        EXPECT_GE(record.length, 100u);
        EXPECT_LE(record.length, 200u);
        EXPECT_LE(quint64(record.timeOffset) + record.length, 50000u);
        EXPECT_GE(record.timeOffset, previous);
        previous = record.timeOffset;
        EXPECT_GE(record.level_dBm, -80.f);
        EXPECT_LE(record.level_dBm, -60.f);
    }
    EXPECT_EQ(hit.size(), channels.size()) << "300 bursts reach all 9 channels";
    double const lowEdge = double(frames[0].centreFrequency) - frames[0].bandwidth / 2.0;
    EXPECT_LT(lowEdge, 30e6 - 4000);
}

TEST(HopperGenerator, SameSeedSameFramesAndTimeRunsBackwardsOnRequest)
{
    HopperScenario scenario = twoRadios();
    scenario.timeRunsBackwardsAfterFrame = 3;
    HopperGenerator first(scenario);
    HopperGenerator second(scenario);
    std::vector<quint64> starts;
    for (int i = 0; i < 5; ++i) {
        BurstListFrame const a = first.nextFrame();
        EXPECT_EQ(a.frameBytes(), second.nextFrame().frameBytes()) << i;
        starts.push_back(a.startTime);
    }
    EXPECT_EQ(starts, (std::vector<quint64>{5000000, 5050000, 5100000, 5000000, 5050000}));
    scenario.seed = 2;
    EXPECT_NE(HopperGenerator(scenario).nextFrame().frameBytes(),
              HopperGenerator(twoRadios()).nextFrame().frameBytes());
}

TEST(HopperGenerator, ChannelUseHasTheAskedOccupancy)
{
    struct Row
    {
        unsigned channels;
        double occupancy;
        std::size_t used;
    } const rows[] = {{200, 0.5, 100}, {200, 0.75, 150}, {7, 1.0, 7},
                      {7, 0.0, 1},     {0, 0.5, 0},      {3, 0.5, 2}};
    for (auto const& row : rows) {
        auto const flags = HopperGenerator::randomChannelUse(row.channels, row.occupancy, 5);
        EXPECT_EQ(flags.size(), row.channels);
        EXPECT_EQ(std::size_t(std::count(flags.begin(), flags.end(), true)), row.used)
            << row.channels << " × " << row.occupancy;
    }
    EXPECT_EQ(HopperGenerator::randomChannelUse(200, 0.5, 5),
              HopperGenerator::randomChannelUse(200, 0.5, 5));
    EXPECT_NE(HopperGenerator::randomChannelUse(200, 0.5, 5),
              HopperGenerator::randomChannelUse(200, 0.5, 6));
}
