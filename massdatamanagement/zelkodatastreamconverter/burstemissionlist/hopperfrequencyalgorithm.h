#pragma once

#include <cstddef>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/frequencymeanandsamplesize.h>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/hopperfrequencygridsegment.h>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/hopperfrequencyset.h>
#include <utility>
#include <vector>

namespace zelkodatastreamconverter::BurstEmissionList {

/// Hop-frequency and channel-grid estimation: stateless, every operation static.
///
/// Frequencies are hertz. Ranges are half-open pairs of positions (first, last) into a vector
/// sorted ascending. A channel grid is a start frequency f0, a spacing s and a channel count;
/// channel k lies at f0 + k × s.
///
/// Resolution: an operation that takes a resolution r for start frequencies or spacings
/// replaces an r below 1.0 by the automatic resolution max(1, 10^(floor(log10(s)) − 2)): one
/// hundredth of the decade of the spacing (25 kHz → 100 Hz, 50 Hz → 1 Hz).
///
/// Rounding is half away from zero throughout. Where a spacing of 0 would divide (a segment
/// for which no spacing was found) every frequency counts as lying on channel 0.
class HopperFrequencyAlgorithm
{
public:
    using ConstIterator = std::vector<double>::const_iterator;
    /// A segment of a grid estimate: the position of its first frequency (counted from the
    /// range's first position) and its channel spacing.
    using SegmentStart = std::pair<std::size_t, double>;

    // --- hop-frequency set --------------------------------------------------------------

    /// Merges sorted frequencies in place: runs in which each value lies less than tolerance
    /// above its neighbour (single linkage) become their arithmetic mean.
    static void calculateHopperFrequencySet(std::vector<double>& frequencies,
                                            double const& tolerance);
    /// The same walk over bin means; a run becomes the sample-weighted mean with the summed
    /// sample size.
    static void calculateHopperFrequencySet(std::vector<FrequencyMeanAndSampleSize>& bins,
                                            double const& tolerance);

    static double calculatePooledMean(double const& mean1, double const& count1,
                                      double const& mean2, double const& count2);
    /// (mean, population variance) of the union of two samples.
    static std::pair<double, double>
    calculatePooledMeanAndVariance(double const& mean1, double const& variance1,
                                   double const& count1, double const& mean2,
                                   double const& variance2, double const& count2);

    /// True when the lengths differ or some pair differs by more than tolerance.
    static bool significantDifference(std::vector<double> const& a, std::vector<double> const& b,
                                      double const& tolerance);

    /// Removes each element with the given probability (u ≤ probability, u uniform in
    /// [0, 1) from a fresh mt19937 seeded from the platform's random device); survivors keep
    /// their order.
    static void randomlyRemoveFrequenciesFromVector(std::vector<double>& frequencies,
                                                    double probability);
    /// The same with a fixed seed, for reproducible runs.
    static void randomlyRemoveFrequenciesFromVector(std::vector<double>& frequencies,
                                                    double probability, unsigned int seed);

    /// Rounds the frequencies to whole hertz, cuts them into segments at gaps of at least
    /// segmentationThreshold, estimates each segment's spacing (resolution, factor) and grid.
    static HopperFrequencySet makeUniqueFrequencySetAndGridEstimation(
        std::vector<double> const& frequencies, double segmentationThreshold,
        double firstEstimationParameter, double secondEstimationParameter);

    // --- channel grid -------------------------------------------------------------------

    /// The automatic resolution for the given spacing when resolution is below 1.0,
    /// otherwise resolution itself.
    static double effectiveResolution(double resolution, double spacing);

    /// Neighbour differences f[i+1] − f[i]; empty for fewer than two frequencies.
    static std::vector<double> calculateChannelSpacings(ConstIterator first, ConstIterator last);
    /// round(distance / spacing).
    static int findBestSpacingMultiplicatorK(double distance, double spacing);
    /// round((frequency − startFrequency) / spacing).
    static int findBestFrequencyMultiplicatorK(double startFrequency, double frequency,
                                               double spacing);
    /// Sum of squared distances of the values from the nearest multiple of spacing.
    static double calculateSpacingCostForCandidate(ConstIterator first, ConstIterator last,
                                                   double spacing);
    /// Sum of squared distances of the frequencies from the nearest channel of the grid.
    static double calculateFrequencyCostForCandidate(ConstIterator first, ConstIterator last,
                                                     double startFrequency, double spacing);
    /// The resolution grid across one spacing centred on referenceFrequency; empty when the
    /// reference is not positive.
    static std::vector<double> findStartFrequencyCandidates(double referenceFrequency,
                                                            double spacing, double resolution);
    /// The least-cost grid of one segment (earliest start wins ties). occupiedChannelCount
    /// is the number of frequencies, squaredDeviationSum the least cost.
    static HopperFrequencyGridSegment estimateBestFrequencyGrid(ConstIterator first,
                                                                ConstIterator last, double spacing,
                                                                double resolution);
    /// Occupied channels / channels; a frequency on the border between two channels makes
    /// both occupied. 0 for no frequencies or a non-positive start, spacing or count.
    static float calculateChannelOccupationRatio(double startFrequency, double spacing,
                                                 unsigned int channelCount,
                                                 std::vector<double> const& frequencies);
    /// (root mean square distance of the frequencies from their channels, frequencies
    /// counted); frequencies below channel 0 are skipped, the walk stops above the last
    /// channel. Not a number when none is counted.
    static std::pair<double, unsigned int>
    calculateQuadraticMeanOfDeviation(double startFrequency, double spacing,
                                      unsigned int channelCount,
                                      std::vector<double> const& frequencies);

    /// Indices of the local minima (strict on both sides; the ends against their single
    /// neighbour) whose value does not exceed factor × the smallest of values[0] and the
    /// interior minima.
    static std::vector<unsigned long long> computeLocalMinima(std::vector<double> const& values,
                                                              double factor);
    /// The mirror image for maxima: kept are those not below (largest of values[0] and the
    /// interior maxima) / factor.
    static std::vector<unsigned long long> computeLocalMaxima(std::vector<double> const& values,
                                                              double factor);

    /// Candidate spacings over a range of observed spacings: from about a third of the
    /// smallest to the largest, in resolution steps (automatic resolution from the
    /// smallest).
    static std::vector<double> findSpacingCandidates(ConstIterator first, ConstIterator last,
                                                     double resolution);
    /// Segments of a sorted frequency range (a gap of at least segmentationThreshold ends
    /// one) with the spacing of each: the largest candidate among the local cost minima that
    /// lie within factor of the best; 0 when none is found.
    static std::vector<SegmentStart>
    estimateBestChannelSpacingAndSegment(ConstIterator first, ConstIterator last, double resolution,
                                         double factor, double segmentationThreshold);
};

} // namespace zelkodatastreamconverter::BurstEmissionList
