#include <cstring>
#include <gtest/gtest.h>
#include <recordingwriter/hoppergenerator.h>

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

// Where the bursts lie is the estimation-quality table's business: its estimates must meet the
// generated grids.
TEST(HopperGenerator, RadiosTakeTurnsAndTimeRunsOn)
{
    HopperScenario scenario;
    HopperRadio radio;
    radio.segments = {{30e6, 25000, 8, {}}};
    scenario.radios = {radio, radio};
    scenario.radios[1].radioID = 20;
    scenario.burstsPerFrame = 300;
    scenario.startTime = 5000000;
    scenario.frameDuration = 50;
    scenario.timeRunsBackwardsAfterFrame = 3;
    HopperGenerator generator(scenario);
    HopperGenerator twin(scenario);
    for (int i = 0; i < 5; ++i) {
        BurstListFrame const frame = generator.nextFrame();
        EXPECT_EQ(frame.frameBytes(), twin.nextFrame().frameBytes()) << "same seed";
        EXPECT_EQ(frame.radioID, i % 2 ? 20u : 1u);
        EXPECT_EQ(frame.startTime, 5000000u + quint64(i % 3) * 50000u) << "back at 3";
        EXPECT_EQ(frame.records.size(), 300u);
        EXPECT_LE(quint64(frame.records.back().timeOffset) + frame.records.back().length, 50000u);
    }
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
