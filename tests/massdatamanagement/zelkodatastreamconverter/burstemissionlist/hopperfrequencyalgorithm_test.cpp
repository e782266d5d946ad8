#include <cmath>
#include <gtest/gtest.h>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/hopperfrequencyalgorithm.h>
#include <numeric>
#include <support/rowname.h>

using namespace zelkodatastreamconverter::BurstEmissionList;
using Algorithm = HopperFrequencyAlgorithm;
using Doubles = std::vector<double>;
using Indices = std::vector<unsigned long long>;

struct MergeRow
{
    char const* name;
    Doubles input;
    double tolerance;
    Doubles expected;
};

using HopperFrequencySetMerge = testing::TestWithParam<MergeRow>;

TEST_P(HopperFrequencySetMerge, SingleLinkageRunsBecomeTheirMean)
{
    Doubles values = GetParam().input;
    Algorithm::calculateHopperFrequencySet(values, GetParam().tolerance);
    EXPECT_EQ(values, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Runs, HopperFrequencySetMerge,
    testing::Values(
        MergeRow{"chain wider than the tolerance is one run", {100, 104, 108, 200}, 5, {104, 200}},
        MergeRow{"a gap equal to the tolerance ends a run", {100, 104, 200}, 4, {100, 104, 200}},
        MergeRow{"one value", {7}, 5, {7}}, MergeRow{"two values", {7, 8}, 5, {7.5}},
        MergeRow{"runs at both ends", {1, 2, 50, 99, 100}, 3, {1.5, 50, 99.5}},
        MergeRow{"tolerance 0 merges nothing, not even equal values", {5, 5, 6}, 0, {5, 5, 6}}),
    zelkotest::RowName());

TEST(HopperFrequencySetMergeBins, PoolWeightedBySampleSize)
{
    std::vector<FrequencyMeanAndSampleSize> bins = {{100, 1}, {200, 1}, {203, 3}, {300, 5}};
    Algorithm::calculateHopperFrequencySet(bins, 5);
    ASSERT_EQ(bins.size(), 3u);
    EXPECT_DOUBLE_EQ(bins[1].mean, 202.25);
    EXPECT_EQ(bins[1].sampleSize, 4u);
}

TEST(HopperStatistics, PooledMeansAndSignificance)
{
    EXPECT_DOUBLE_EQ(Algorithm::calculatePooledMean(10, 1, 20, 3), 17.5);
    EXPECT_EQ(Algorithm::calculatePooledMeanAndVariance(0, 1, 1, 2, 1, 1),
              std::make_pair(1.0, 2.0));
    EXPECT_TRUE(Algorithm::significantDifference({1, 2}, {1, 2, 3}, 100)) << "lengths differ";
    EXPECT_FALSE(Algorithm::significantDifference({1.0, 2.0}, {1.5, 2.0}, 0.5)) << "within";
    EXPECT_TRUE(Algorithm::significantDifference({1.0, 2.0}, {1.0, 2.6}, 0.5)) << "second pair";
}

TEST(HopperRandomThinning, SeededRemovalIsReproducibleAndKeepsOrder)
{
    auto thinned = [](double probability, unsigned seed) {
        Doubles values(1000);
        std::iota(values.begin(), values.end(), 0.0);
        Algorithm::randomlyRemoveFrequenciesFromVector(values, probability, seed);
        return values;
    };
    Doubles const first = thinned(0.3, 42u);
    EXPECT_EQ(first, thinned(0.3, 42u));
    EXPECT_TRUE(std::is_sorted(first.begin(), first.end()));
    EXPECT_TRUE(first.size() > 620u && first.size() < 780u) << first.size();
    EXPECT_TRUE(thinned(1.0, 7u).empty());
    EXPECT_EQ(thinned(0.0, 7u).size(), 1000u);
}

TEST(GridEstimationPieces, SpacingsMultipliersAndCosts)
{
    Doubles const frequencies = {10, 35, 85};
    EXPECT_EQ(Algorithm::calculateChannelSpacings(frequencies.begin(), frequencies.end()),
              (Doubles{25, 50}));
    EXPECT_TRUE(
        Algorithm::calculateChannelSpacings(frequencies.begin(), frequencies.begin() + 1).empty());
    // Half away from zero; a spacing of 0 is multiplier 0; beyond int saturates.
    EXPECT_EQ(Algorithm::findBestSpacingMultiplicatorK(62.5, 25), 3);
    EXPECT_EQ(Algorithm::findBestSpacingMultiplicatorK(-62.5, 25), -3);
    EXPECT_EQ(Algorithm::findBestSpacingMultiplicatorK(100, 0), 0);
    EXPECT_EQ(Algorithm::findBestSpacingMultiplicatorK(1e12, 1), 2147483647);
    EXPECT_EQ(Algorithm::findBestFrequencyMultiplicatorK(1000, 1062.5, 25), 3);

    Doubles const spacings = {25, 50};
    EXPECT_EQ(Algorithm::calculateSpacingCostForCandidate(spacings.begin(), spacings.end(), 20),
              125)
        << "round(1.25) = 1 and round(2.5) = 3";
    Doubles const channels = {1002, 1024, 1051};
    EXPECT_EQ(
        Algorithm::calculateFrequencyCostForCandidate(channels.begin(), channels.end(), 1000, 25),
        4 + 1 + 1);
}

// Candidate lists: the pipeline's arithmetic is the estimation-quality table's business; here
// the ends and the degenerate inputs.
TEST(GridEstimationPieces, ResolutionAndCandidates)
{
    EXPECT_DOUBLE_EQ(Algorithm::effectiveResolution(-1, 0), 1) << "no spacing";
    EXPECT_DOUBLE_EQ(Algorithm::effectiveResolution(1, 25000), 1) << "asked for";
    EXPECT_DOUBLE_EQ(Algorithm::effectiveResolution(0.999, 99999), 100) << "automatic";
    EXPECT_EQ(Algorithm::findStartFrequencyCandidates(1000, 25, 5),
              (Doubles{985, 990, 995, 1000, 1005, 1010}));
    EXPECT_TRUE(Algorithm::findStartFrequencyCandidates(0, 25, 5).empty());
    EXPECT_EQ(Algorithm::findStartFrequencyCandidates(1000, 0, 5), (Doubles{1000}))
        << "an empty span still yields one candidate";
    Doubles const tiny = {0.5, 2};
    EXPECT_EQ(Algorithm::findSpacingCandidates(tiny.begin(), tiny.end(), 1), (Doubles{1, 2}))
        << "from a third of the smallest spacing, never below the resolution";
    EXPECT_TRUE(Algorithm::findSpacingCandidates(tiny.end(), tiny.end(), 1).empty());
}

struct MinimaRow
{
    char const* name;
    Doubles values;
    double factor;
    Indices minima;
};

using GridEstimationMinima = testing::TestWithParam<MinimaRow>;

TEST_P(GridEstimationMinima, EndsCountAndShallowOnesGo)
{
    EXPECT_EQ(Algorithm::computeLocalMinima(GetParam().values, GetParam().factor),
              GetParam().minima);
}

INSTANTIATE_TEST_SUITE_P(
    Values, GridEstimationMinima,
    testing::Values(MinimaRow{"none", {}, 12, {}}, MinimaRow{"one", {5}, 12, {0}},
                    MinimaRow{"two, second lower or equal", {5, 5}, 12, {1}},
                    MinimaRow{"two, first lower", {4, 5}, 12, {0}},
                    MinimaRow{"ends and interior", {1, 5, 2, 6, 3}, 12, {0, 2, 4}},
                    MinimaRow{"factor removes the shallow ones", {1, 5, 2, 6, 3}, 2.5, {0, 2}},
                    MinimaRow{"interior minimum next to the end", {5, 1, 4, 2, 3}, 12, {1, 3}},
                    MinimaRow{"a minimum at the limit stays", {1, 5, 2, 6, 3}, 2, {0, 2}},
                    MinimaRow{"flat bottom yields none", {5, 3, 3, 3, 5}, 12, {}},
                    MinimaRow{
                        "first value counts for the limit though no minimum", {1, 0.5, 9}, 3, {1}}),
    zelkotest::RowName());

TEST(GridEstimationPieces, LocalMaxima)
{
    EXPECT_EQ(Algorithm::computeLocalMaxima({1, 5, 2, 6, 3}, 12), (Indices{1, 3}));
    EXPECT_EQ(Algorithm::computeLocalMaxima({9, 5, 2, 6, 3}, 2), (Indices{0, 3}));
    EXPECT_EQ(Algorithm::computeLocalMaxima({9, 5, 2, 6, 3}, 1), (Indices{0}));
}

TEST(GridEstimationPieces, BestGridOfOneSegment)
{
    Doubles const single = {1002};
    auto const one = Algorithm::estimateBestFrequencyGrid(single.begin(), single.end(), 25, 5);
    EXPECT_EQ(std::make_tuple(one.startFrequency, one.channelCount, one.occupiedChannelCount,
                              one.squaredDeviationSum),
              std::make_tuple(1000.0, 1u, 1u, 4.0));
    EXPECT_TRUE(Algorithm::estimateBestFrequencyGrid(single.end(), single.end(), 25, 5).isNull());
    // Two equally good starts: the lower wins.
    Doubles const tie = {1005, 1030};
    auto const two = Algorithm::estimateBestFrequencyGrid(tie.begin(), tie.end(), 25, 10);
    EXPECT_EQ(std::make_pair(two.startFrequency, two.channelCount), std::make_pair(1000.0, 2u));
    // No spacing found (0): everything counts as channel 0, one channel.
    Doubles const frequencies = {1001, 1024, 1101};
    auto const flat =
        Algorithm::estimateBestFrequencyGrid(frequencies.begin(), frequencies.end(), 0, 1);
    EXPECT_EQ(std::make_pair(flat.startFrequency, flat.channelCount), std::make_pair(1001.0, 1u));
}

TEST(GridEstimationPieces, OccupationAndDeviation)
{
    auto const ratio = [](double start, double spacing, unsigned count, Doubles frequencies) {
        return Algorithm::calculateChannelOccupationRatio(start, spacing, count, frequencies);
    };
    EXPECT_FLOAT_EQ(ratio(100, 10, 3, {95, 110}), 2.0f / 3.0f) << "lower border counts";
    EXPECT_FLOAT_EQ(ratio(100, 10, 2, {105}), 1.0f) << "a border frequency occupies both";
    EXPECT_FLOAT_EQ(ratio(100, 10, 3, {50, 100, 101, 130}), 1.0f / 3.0f) << "below and above";
    for (auto const& [start, spacing, count] :
         {std::make_tuple(0.0, 10.0, 2u), std::make_tuple(100.0, 0.0, 2u),
          std::make_tuple(100.0, 10.0, 0u)}) {
        EXPECT_EQ(ratio(start, spacing, count, {100}), 0.0f) << start << " " << spacing;
    }
    auto const deviation = Algorithm::calculateQuadraticMeanOfDeviation(100, 10, 2, {90, 101, 130});
    EXPECT_EQ(deviation, std::make_pair(1.0, 1u));
    EXPECT_EQ(Algorithm::calculateQuadraticMeanOfDeviation(100, 10, 2, {}),
              std::make_pair(0.0, 0u));
    EXPECT_TRUE(std::isnan(Algorithm::calculateQuadraticMeanOfDeviation(100, 10, 2, {50}).first));
}

TEST(GridEstimationPieces, SegmentationAtLargeGaps)
{
    Doubles const lone = {5e6};
    EXPECT_EQ(Algorithm::estimateBestChannelSpacingAndSegment(lone.begin(), lone.end(), -1, 12, 1),
              (std::vector<Algorithm::SegmentStart>{{0, 0.0}}));
    // A gap as last spacing leaves the last frequency a segment of its own without spacing.
    Doubles const tail = {1e6, 1.025e6, 1.05e6, 9e6};
    auto const withTail =
        Algorithm::estimateBestChannelSpacingAndSegment(tail.begin(), tail.end(), -1, 12, 1e6);
    EXPECT_EQ(withTail, (std::vector<Algorithm::SegmentStart>{{0, 25000.0}, {3, 0.0}}));
}

TEST(UniqueFrequencySet, RoundsToWholeHertzAndBuildsOneGridSegmentPerSegment)
{
    Doubles const frequencies = {30e6 + 0.5, 30.025e6 - 0.5, 30.075e6 + 0.4,
                                 40e6,       40.0125e6,      40.025e6};
    auto const set = Algorithm::makeUniqueFrequencySetAndGridEstimation(frequencies, 1e6, -1, 12);
    EXPECT_EQ(set.frequencies, (Doubles{30000001, 30025000, 30075000, 40e6, 40.0125e6, 40.025e6}))
        << "halves away from zero";
    ASSERT_EQ(set.gridEstimation.segments.size(), 2u);
    auto const& grid = set.gridEstimation.segments;
    EXPECT_EQ(std::make_tuple(grid[0].startFrequency, grid[0].channelSpacing, grid[0].channelCount),
              std::make_tuple(30e6, 25000.0, 4u));
    EXPECT_EQ(std::make_tuple(grid[1].startFrequency, grid[1].channelSpacing, grid[1].channelCount),
              std::make_tuple(40e6, 12500.0, 3u));
    EXPECT_TRUE(Algorithm::makeUniqueFrequencySetAndGridEstimation({}, 1e6, -1, 12).isEmpty());
}
