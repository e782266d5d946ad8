// Estimation quality on synthetic hoppers of at least half occupancy and jitter below 5 % of
// the spacing: the spacing must come within the resolution, every segment must start on the
// true grid and the first within one resolution step of the lowest used channel. Expected
// misses: spacings that are no whole multiple of their resolution (8.33 kHz at 10 Hz), whose
// small spacing error adds up over a long grid and moves the least-squares start by up to
// hundreds of hertz. Every such case must miss and every other pass, so a change either way
// shows. Each row prints its errors.

#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/burstemissionlistconverter.h>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/hopperfrequencyalgorithm.h>
#include <recordingwriter/hoppergenerator.h>

using namespace zelkodatastreamconverter::BurstEmissionList;

namespace {

struct QualityCase
{
    double spacing;
    unsigned channels;
    double occupancy;
    double jitter; ///< fraction of the spacing, uniform ±
    double start;
    zelkorecording::JitterShape shape = zelkorecording::JitterShape::Uniform;
};

/// Whether the estimate lies within the resolution; prints the case and its errors.
bool estimateWithinResolution(QualityCase const& c, quint32 seed)
{
    zelkorecording::HopperRadio radio;
    radio.segments = {
        {c.start, c.spacing, c.channels,
         zelkorecording::HopperGenerator::randomChannelUse(c.channels, c.occupancy, seed)}};
    radio.jitterHz = c.jitter * c.spacing;
    radio.jitterShape = c.shape;
    radio.bandwidthHz = 0.5 * c.spacing;
    zelkorecording::HopperScenario scenario;
    scenario.radios = {radio};
    scenario.burstsPerFrame = 2048;
    scenario.seed = seed;
    zelkorecording::HopperGenerator generator(scenario);
    BurstEmissionListConverter converter;
    // The converter's natural input: its 16 segments of 2048 bursts.
    for (int i = 0; i < 16; ++i) {
        converter.processFrame(generator.nextFrame().frameBytes());
    }
    auto const segments = converter.getFrequencySetForRadioID(1).first.gridEstimation.segments;
    double const resolution = HopperFrequencyAlgorithm::effectiveResolution(-1.0, c.spacing);
    bool within = !segments.empty();
    double spacingError = 0.0;
    for (auto const& s : segments) {
        spacingError = std::max(spacingError, std::abs(s.channelSpacing - c.spacing));
        // Every segment must start on the true grid.
        double const offset = s.startFrequency - c.start;
        within =
            within && std::abs(offset - std::round(offset / c.spacing) * c.spacing) <= resolution;
    }
    double const startError =
        segments.empty() ? 0.0
                         : segments.front().startFrequency - radio.usedChannelFrequencies().front();
    within = within && spacingError <= resolution && std::abs(startError) <= resolution;
    std::printf("%zu segments, spacing %+.1f, start %+.1f%s\n", segments.size(), spacingError,
                startError, within ? "" : "  MISSED");
    return within;
}

std::vector<QualityCase> qualityCases()
{
    std::vector<QualityCase> cases;
    for (double spacing : {100000.0, 25000.0, 12500.0, 8333.333, 6250.0, 5000.0}) {
        for (unsigned channels : {20u, 200u}) {
            for (double occupancy : {0.5, 0.75, 1.0}) {
                for (double jitter : {0.0, 0.02, 0.049}) {
                    for (double start : {30000000.0, 30012345.0}) {
                        cases.push_back({spacing, channels, occupancy, jitter, start});
                    }
                }
            }
        }
    }
    cases.push_back({25000.0, 200, 0.75, 0.049, 30012345.0, zelkorecording::JitterShape::Gaussian});
    cases.push_back({12500.0, 200, 0.5, 0.049, 30000000.0, zelkorecording::JitterShape::Gaussian});
    return cases;
}

} // namespace

using EstimationQuality = testing::TestWithParam<QualityCase>;

TEST_P(EstimationQuality, GeneratedHopperWithinResolution)
{
    QualityCase const& c = GetParam();
    double const resolution = HopperFrequencyAlgorithm::effectiveResolution(-1.0, c.spacing);
    bool const expectedMiss = std::fmod(c.spacing, resolution) != 0.0;
    EXPECT_EQ(estimateWithinResolution(c, 11), !expectedMiss);
}

// Rows named like 25000Hz_200ch_75pc_jitter49pm_start30012345_gauss.
INSTANTIATE_TEST_SUITE_P(Hoppers, EstimationQuality, testing::ValuesIn(qualityCases()),
                         [](testing::TestParamInfo<QualityCase> const& info) {
                             QualityCase const& c = info.param;
                             char name[96];
                             std::snprintf(
                                 name, sizeof name, "%.0fHz_%uch_%.0fpc_jitter%.0fpm_start%.0f%s",
                                 c.spacing, c.channels, c.occupancy * 100, c.jitter * 1000, c.start,
                                 c.shape == zelkorecording::JitterShape::Gaussian ? "_gauss" : "");
                             return std::string(name);
                         });
