#include <cmath>
#include <gtest/gtest.h>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/hopperfrequencyalgorithm.h>

using namespace zelkodatastreamconverter::BurstEmissionList;
using Algorithm = HopperFrequencyAlgorithm;
using Doubles = std::vector<double>;
using Indices = std::vector<unsigned long long>;

TEST(HopperFrequencySetMerge, SingleLinkageRunsBecomeTheirMean)
{
    struct Row
    {
        char const* name;
        Doubles input;
        double tolerance;
        Doubles expected;
    } const rows[] = {
        {"chain wider than the tolerance is one run", {100, 104, 108, 200}, 5, {104, 200}},
        {"a gap equal to the tolerance ends a run", {100, 104, 108, 200}, 4, {100, 104, 108, 200}},
        {"empty", {}, 5, {}},
        {"one value", {7}, 5, {7}},
        {"runs at both ends", {1, 2, 50, 99, 100}, 3, {1.5, 50, 99.5}},
        {"tolerance 0 merges nothing, not even equal values", {5, 5, 6}, 0, {5, 5, 6}},
        {"equal values merge", {5, 5, 6}, 0.5, {5, 6}},
    };
    for (auto const& row : rows) {
        Doubles values = row.input;
        Algorithm::calculateHopperFrequencySet(values, row.tolerance);
        EXPECT_EQ(values, row.expected) << row.name;
    }
}

TEST(HopperFrequencySetMerge, BinsPoolWeightedBySampleSize)
{
    std::vector<FrequencyMeanAndSampleSize> bins = {{100, 1}, {200, 1}, {203, 3}, {300, 5}};
    Algorithm::calculateHopperFrequencySet(bins, 5);
    ASSERT_EQ(bins.size(), 3u);
    EXPECT_DOUBLE_EQ(bins[1].mean, 202.25);
    EXPECT_EQ(bins[1].sampleSize, 4u);

    bins = {{100, 0}, {101, 0}};
    Algorithm::calculateHopperFrequencySet(bins, 5);
    ASSERT_EQ(bins.size(), 1u);
    EXPECT_TRUE(std::isnan(bins[0].mean)) << "no samples: 0 / 0 is left unguarded";
}

TEST(HopperStatistics, PooledMeansAndSignificance)
{
    EXPECT_DOUBLE_EQ(Algorithm::calculatePooledMean(10, 1, 20, 3), 17.5);
    EXPECT_EQ(Algorithm::calculatePooledMeanAndVariance(0, 1, 1, 2, 1, 1),
              std::make_pair(1.0, 2.0));

    struct Row
    {
        char const* name;
        Doubles a;
        Doubles b;
        double tolerance;
        bool significant;
    } const rows[] = {
        {"lengths differ", {1, 2}, {1, 2, 3}, 100, true},
        {"both empty", {}, {}, 0, false},
        {"within tolerance", {1.0}, {1.5}, 0.5, false},
        {"beyond tolerance", {1.0}, {1.5}, 0.4, true},
        {"second pair differs", {1, 2}, {1, 3}, 0.5, true},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(Algorithm::significantDifference(row.a, row.b, row.tolerance), row.significant)
            << row.name;
    }
}

TEST(HopperRandomThinning, SeededRemovalIsReproducibleAndKeepsOrder)
{
    Doubles all(1000);
    for (std::size_t i = 0; i < all.size(); ++i) {
        all[i] = double(i);
    }
    auto thinned = [&all](double probability, unsigned seed) {
        Doubles values = all;
        Algorithm::randomlyRemoveFrequenciesFromVector(values, probability, seed);
        return values;
    };
    Doubles const first = thinned(0.3, 42u);
    EXPECT_EQ(first, thinned(0.3, 42u));
    EXPECT_TRUE(std::is_sorted(first.begin(), first.end()));
    EXPECT_GT(first.size(), 620u);
    EXPECT_LT(first.size(), 780u);
    // The boundaries: probability 1 removes all, 0 keeps all.
    Doubles none = all;
    Algorithm::randomlyRemoveFrequenciesFromVector(none, 1.0);
    EXPECT_TRUE(none.empty());
    EXPECT_EQ(thinned(0.0, 7u), all);
}

TEST(GridEstimationPieces, SpacingsMultipliersAndCosts)
{
    Doubles const frequencies = {10, 35, 85};
    EXPECT_EQ(Algorithm::calculateChannelSpacings(frequencies.begin(), frequencies.end()),
              (Doubles{25, 50}));
    EXPECT_TRUE(
        Algorithm::calculateChannelSpacings(frequencies.begin(), frequencies.begin() + 1).empty());

    struct Multiplier
    {
        double distance;
        double spacing;
        int k;
    } const multipliers[] = {{62.5, 25, 3}, {-62.5, 25, -3},       {37.4, 25, 1},     {0, 25, 0},
                             {100, 0, 0},   {1e12, 1, 2147483647}, {1e300, 1e-300, 0}};
    for (auto const& row : multipliers) {
        EXPECT_EQ(Algorithm::findBestSpacingMultiplicatorK(row.distance, row.spacing), row.k)
            << row.distance << " / " << row.spacing;
    }
    EXPECT_EQ(Algorithm::findBestFrequencyMultiplicatorK(1000, 1062.5, 25), 3);

    Doubles const spacings = {25, 50};
    EXPECT_EQ(Algorithm::calculateSpacingCostForCandidate(spacings.begin(), spacings.end(), 25), 0);
    EXPECT_EQ(Algorithm::calculateSpacingCostForCandidate(spacings.begin(), spacings.end(), 20),
              125)
        << "round(1.25) = 1 and round(2.5) = 3";
    EXPECT_EQ(Algorithm::calculateSpacingCostForCandidate(spacings.end(), spacings.end(), 20), 0);
    Doubles const channels = {1002, 1024, 1051};
    EXPECT_EQ(
        Algorithm::calculateFrequencyCostForCandidate(channels.begin(), channels.end(), 1000, 25),
        4 + 1 + 1);
}

TEST(GridEstimationPieces, ResolutionAndStartCandidates)
{
    struct Resolution
    {
        double asked;
        double spacing;
        double effective;
    } const resolutions[] = {{-1, 25000, 100}, {0.5, 50, 1},  {-1, 8333, 10},
                             {-1, 0, 1},       {1, 25000, 1}, {0.999, 99999, 100}};
    for (auto const& row : resolutions) {
        EXPECT_DOUBLE_EQ(Algorithm::effectiveResolution(row.asked, row.spacing), row.effective)
            << row.asked << " for " << row.spacing;
    }
    EXPECT_EQ(Algorithm::findStartFrequencyCandidates(1000, 25, 5),
              (Doubles{985, 990, 995, 1000, 1005, 1010}));
    EXPECT_TRUE(Algorithm::findStartFrequencyCandidates(0, 25, 5).empty());
    EXPECT_TRUE(Algorithm::findStartFrequencyCandidates(-3, 25, 5).empty());
    EXPECT_EQ(Algorithm::findStartFrequencyCandidates(1000, 0, 5), (Doubles{1000}))
        << "an empty span still yields one candidate";
    auto const automatic = Algorithm::findStartFrequencyCandidates(30012345, 25000, -1);
    ASSERT_EQ(automatic.size(), 251u);
    EXPECT_EQ(automatic.front(), 29999800.0);
}

TEST(GridEstimationPieces, SpacingCandidatesRunFromAThirdOfTheSmallestToTheLargest)
{
    Doubles const spacings = {25000, 50000, 75000};
    auto const candidates = Algorithm::findSpacingCandidates(spacings.begin(), spacings.end(), -1);
    ASSERT_FALSE(candidates.empty());
    EXPECT_EQ(candidates.front(), 8300.0);
    EXPECT_EQ(candidates.back(), 75000.0);
    EXPECT_EQ(candidates.size(), std::size_t((75000 - 8300) / 100 + 1));
    Doubles const tiny = {0.5, 2};
    auto const atLeastR = Algorithm::findSpacingCandidates(tiny.begin(), tiny.end(), 1);
    EXPECT_EQ(atLeastR, (Doubles{1, 2})) << "start and stop are never below the resolution";
    EXPECT_TRUE(Algorithm::findSpacingCandidates(tiny.end(), tiny.end(), 1).empty());
}

TEST(GridEstimationPieces, LocalMinimaAndMaxima)
{
    struct Row
    {
        char const* name;
        Doubles values;
        double factor;
        Indices minima;
    } const rows[] = {
        {"none", {}, 12, {}},
        {"one", {5}, 12, {0}},
        {"two, second lower or equal", {5, 5}, 12, {1}},
        {"two, first lower", {4, 5}, 12, {0}},
        {"ends and interior", {1, 5, 2, 6, 3}, 12, {0, 2, 4}},
        {"factor removes the shallow ones", {1, 5, 2, 6, 3}, 2.5, {0, 2}},
        {"flat bottom yields none", {5, 3, 3, 3, 5}, 12, {}},
        {"last minimum far above the first value is removed", {1, 1, 9, 8}, 2, {}},
        {"first value counts for the limit though no minimum", {1, 0.5, 9}, 3, {1}},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(Algorithm::computeLocalMinima(row.values, row.factor), row.minima) << row.name;
    }
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

    Doubles const frequencies = {1001, 1024, 1101};
    // Two equally good starts: the lower wins.
    Doubles const tie = {1005, 1030};
    EXPECT_EQ(Algorithm::estimateBestFrequencyGrid(tie.begin(), tie.end(), 25, 10).startFrequency,
              1000.0);
    // No spacing found (0): everything counts as channel 0, one channel.
    auto const flat =
        Algorithm::estimateBestFrequencyGrid(frequencies.begin(), frequencies.end(), 0, 1);
    EXPECT_EQ(std::make_pair(flat.startFrequency, flat.channelCount), std::make_pair(1001.0, 1u));
}

TEST(GridEstimationPieces, OccupationAndDeviation)
{
    struct Row
    {
        char const* name;
        double start;
        double spacing;
        unsigned count;
        Doubles frequencies;
        float ratio;
    } const rows[] = {
        {"lower border counts, vector exhausted", 100, 10, 3, {95, 110}, 2.0f / 3.0f},
        {"a border frequency occupies both channels", 100, 10, 2, {105}, 1.0f},
        {"empty vector", 100, 10, 2, {}, 0.0f},
        {"start not positive", 0, 10, 2, {5}, 0.0f},
        {"spacing not positive", 100, 0, 2, {100}, 0.0f},
        {"no channels", 100, 10, 0, {100}, 0.0f},
        {"frequency below the grid", 100, 10, 2, {50}, 0.0f},
    };
    for (auto const& row : rows) {
        EXPECT_FLOAT_EQ(Algorithm::calculateChannelOccupationRatio(row.start, row.spacing,
                                                                   row.count, row.frequencies),
                        row.ratio)
            << row.name;
    }
    auto const deviation = Algorithm::calculateQuadraticMeanOfDeviation(100, 10, 2, {90, 101, 130});
    EXPECT_DOUBLE_EQ(deviation.first, 1.0);
    EXPECT_EQ(deviation.second, 1u);
    EXPECT_EQ(Algorithm::calculateQuadraticMeanOfDeviation(100, 10, 2, {}),
              std::make_pair(0.0, 0u));
    auto const none = Algorithm::calculateQuadraticMeanOfDeviation(100, 10, 2, {50, 200});
    EXPECT_EQ(none.second, 0u);
    EXPECT_TRUE(std::isnan(none.first));
}

TEST(GridEstimationPieces, SegmentationAtLargeGaps)
{
    // Two segments of their own spacing are checked through the unique frequency set below.
    Doubles const lone = {5e6};
    EXPECT_EQ(Algorithm::estimateBestChannelSpacingAndSegment(lone.begin(), lone.end(), -1, 12, 1),
              (std::vector<Algorithm::SegmentStart>{{0, 0.0}}));
    EXPECT_TRUE(
        Algorithm::estimateBestChannelSpacingAndSegment(lone.end(), lone.end(), -1, 12, 1).empty());
    // A gap as last spacing leaves the last frequency a segment of its own without spacing.
    Doubles const tail = {1e6, 1.025e6, 1.05e6, 9e6};
    auto const withTail =
        Algorithm::estimateBestChannelSpacingAndSegment(tail.begin(), tail.end(), -1, 12, 1e6);
    ASSERT_EQ(withTail.size(), 2u);
    EXPECT_EQ(withTail[1], std::make_pair(std::size_t(3), 0.0));
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
