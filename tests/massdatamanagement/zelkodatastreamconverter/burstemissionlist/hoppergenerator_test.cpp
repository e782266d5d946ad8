#include <cstring>
#include <gtest/gtest.h>
#include <recordingwriter/hoppergenerator.h>
#include <set>

using namespace zelkorecording;

namespace {

std::vector<quint32> words(QByteArray const& bytes)
{
    std::vector<quint32> result(std::size_t(bytes.size() / 4));
    std::memcpy(result.data(), bytes.constData(), result.size() * 4);
    return result;
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
    std::vector<quint32> w = words(frame.frameBytes());
    quint32 level;
    std::memcpy(&level, "\0\0\xf0\xc0", 4); // -7.5f
    EXPECT_EQ(w[0], zelkodatastreamconverter::FRAME_MAGIC);
    EXPECT_EQ(w[3], zelkodatastreamconverter::FrameType::BurstList);
    // Length, extension, 64-bit values low word first, padding up to the extension, a record
    // and the zeros of its wider stride.
    w[0] = w[2] = w[3] = w[5] = w[17] = 0;
    EXPECT_EQ(w, (std::vector<quint32>{
                     0,           25, 0,     0,  11, 0, 0x23456789u, 0x1u, 25000u, 0x55667788u,
                     0x11223344u, 7u, 42u,   1u, 8u, 0, 0,           0,    3u,     4u,
                     quint32(-5), 6u, level, 0,  0}));
    frame.recordCountOverride = 99;
    EXPECT_EQ(words(frame.frameBytes())[13], 99u);
    EXPECT_EQ(frame.frameBytes(ByteOrder::Swapped).left(4).toHex(), QByteArray("fb746572"));
}

TEST(HopperGenerator, RadiosTakeTurnsAndBurstsStayOnTheirChannels)
{
    HopperScenario scenario;
    HopperRadio a;
    a.radioID = 10;
    a.segments = {{30e6, 25000, 8, {true, false, true, true, false, false, true, true}},
                  {31e6, 12500, 4, {}}};
    a.jitterHz = 500;
    HopperRadio b = a;
    b.radioID = 20;
    scenario.radios = {a, b};
    scenario.burstsPerFrame = 300;
    scenario.startTime = 5000000;
    scenario.frameDuration = 50;
    scenario.timeRunsBackwardsAfterFrame = 3;
    HopperGenerator generator(scenario);
    HopperGenerator twin(scenario);
    std::vector<BurstListFrame> frames;
    for (int i = 0; i < 5; ++i) {
        frames.push_back(generator.nextFrame());
        EXPECT_EQ(frames.back().frameBytes(), twin.nextFrame().frameBytes()) << "same seed";
        EXPECT_EQ(frames.back().radioID, i % 2 ? 20u : 10u);
        EXPECT_EQ(frames.back().startTime, 5000000u + quint64(i % 3) * 50000u) << "back at 3";
    }
    scenario.seed = 2;
    EXPECT_NE(HopperGenerator(scenario).nextFrame().frameBytes(), frames[0].frameBytes());

    // Bursts lie on used channels within the jitter and inside the frame, in time order.
    std::vector<double> const channels = a.usedChannelFrequencies();
    EXPECT_EQ(channels.size(), 5u + 4u);
    std::set<double> hit;
    quint32 previous = 0;
    for (BurstRecord const& record : frames[0].records) {
        double const f = double(frames[0].centreFrequency) + record.frequencyOffset;
        auto const nearest = std::lower_bound(channels.begin(), channels.end(), f - 501.0);
        ASSERT_TRUE(nearest != channels.end() && *nearest <= f + 501.0) << f;
        hit.insert(*nearest);
        EXPECT_LE(quint64(record.timeOffset) + record.length, 50000u);
        EXPECT_GE(record.timeOffset, previous);
        previous = record.timeOffset;
    }
    EXPECT_EQ(hit.size(), channels.size()) << "300 bursts reach all 9 channels";
}

TEST(HopperGenerator, ChannelUseHasTheAskedOccupancy)
{
    for (auto const& [channels, occupancy, used] :
         {std::make_tuple(200u, 0.75, 150), std::make_tuple(7u, 0.0, 1),
          std::make_tuple(0u, 0.5, 0)}) {
        auto const flags = HopperGenerator::randomChannelUse(channels, occupancy, 5);
        EXPECT_EQ(flags.size(), channels);
        EXPECT_EQ(std::count(flags.begin(), flags.end(), true), used) << channels;
    }
    EXPECT_NE(HopperGenerator::randomChannelUse(200, 0.5, 5),
              HopperGenerator::randomChannelUse(200, 0.5, 6));
}
