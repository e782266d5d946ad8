#include "hopperfrequencyalgorithm.h"

#include "saturatingconversion.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace zelkodatastreamconverter::BurstEmissionList {

namespace {

// round(numerator / denominator), half away from zero; a quotient that is not finite (a
// spacing of 0) counts as multiplier 0, so the frequency is taken as lying on channel 0.
double roundedQuotient(double numerator, double denominator)
{
    double const quotient = numerator / denominator;
    return std::isfinite(quotient) ? std::round(quotient) : 0.0;
}

// More candidates than this come only from frequencies no radio uses (a damaged frame's
// bandwidths or offsets): such a range gets no estimate rather than gigabytes of candidates.
constexpr unsigned long long MaxCandidates = 1ull << 20;

// Number of resolution steps in a span that is a whole multiple of the resolution; the
// small allowance keeps representation error from losing a step. Counts beyond the
// candidate limit are refused anyway, so they stop one past it, before an infinite span
// (frequencies of a damaged frame) could reach the conversion.
unsigned long long wholeSteps(double span, double resolution)
{
    double const steps = std::floor(span / resolution + 1e-9);
    if (!(steps > 0.0)) {
        return 0;
    }
    return steps <= double(MaxCandidates) ? static_cast<unsigned long long>(steps)
                                          : MaxCandidates + 1;
}

bool tooManyCandidates(unsigned long long count)
{
    return count > MaxCandidates;
}

template <typename Value, typename MeanOf, typename Merge>
void mergeRuns(std::vector<Value>& values, double tolerance, MeanOf meanOf, Merge merge)
{
    if (values.size() < 2) {
        return;
    }
    std::size_t write = 0;
    std::size_t i = 0;
    while (i < values.size()) {
        std::size_t end = i + 1;
        while (end < values.size() && meanOf(values[end]) - meanOf(values[end - 1]) < tolerance) {
            ++end;
        }
        values[write++] =
            merge(values.begin() + std::ptrdiff_t(i), values.begin() + std::ptrdiff_t(end));
        i = end;
    }
    values.resize(write);
}

} // namespace

void HopperFrequencyAlgorithm::calculateHopperFrequencySet(std::vector<double>& frequencies,
                                                           double const& tolerance)
{
    mergeRuns(
        frequencies, tolerance, [](double value) { return value; },
        [](auto begin, auto end) {
            if (end - begin == 1) {
                return *begin;
            }
            double sum = 0.0;
            for (auto it = begin; it != end; ++it) {
                sum += *it;
            }
            return sum / double(end - begin);
        });
}

void HopperFrequencyAlgorithm::calculateHopperFrequencySet(
    std::vector<FrequencyMeanAndSampleSize>& bins, double const& tolerance)
{
    mergeRuns(
        bins, tolerance, [](FrequencyMeanAndSampleSize const& bin) { return bin.mean; },
        [](auto begin, auto end) {
            if (end - begin == 1) {
                return *begin;
            }
            double weighted = 0.0;
            double samples = 0.0;
            unsigned int sampleSize = 0;
            for (auto it = begin; it != end; ++it) {
                weighted += double(it->sampleSize) * it->mean;
                samples += double(it->sampleSize);
                sampleSize += it->sampleSize;
            }
            return FrequencyMeanAndSampleSize(weighted / samples, sampleSize);
        });
}

double HopperFrequencyAlgorithm::calculatePooledMean(double const& mean1, double const& count1,
                                                     double const& mean2, double const& count2)
{
    return (count1 * mean1 + count2 * mean2) / (count1 + count2);
}

std::pair<double, double> HopperFrequencyAlgorithm::calculatePooledMeanAndVariance(
    double const& mean1, double const& variance1, double const& count1, double const& mean2,
    double const& variance2, double const& count2)
{
    double const count = count1 + count2;
    double const mean = (mean1 * count1 + mean2 * count2) / count;
    double const secondMoment =
        ((mean1 * mean1 + variance1) * count1 + (mean2 * mean2 + variance2) * count2) / count;
    return {mean, secondMoment - mean * mean};
}

bool HopperFrequencyAlgorithm::significantDifference(std::vector<double> const& a,
                                                     std::vector<double> const& b,
                                                     double const& tolerance)
{
    if (a.size() != b.size()) {
        return true;
    }
    for (std::size_t k = 0; k < a.size(); ++k) {
        if (std::abs(a[k] - b[k]) > tolerance) {
            return true;
        }
    }
    return false;
}

void HopperFrequencyAlgorithm::randomlyRemoveFrequenciesFromVector(std::vector<double>& frequencies,
                                                                   double probability)
{
    std::random_device device;
    randomlyRemoveFrequenciesFromVector(frequencies, probability, device());
}

void HopperFrequencyAlgorithm::randomlyRemoveFrequenciesFromVector(std::vector<double>& frequencies,
                                                                   double probability,
                                                                   unsigned int seed)
{
    std::mt19937 engine(seed);
    std::uniform_real_distribution<double> uniform(0.0, 1.0);
    frequencies.erase(std::remove_if(frequencies.begin(), frequencies.end(),
                                     [&](double) { return uniform(engine) <= probability; }),
                      frequencies.end());
}

HopperFrequencySet HopperFrequencyAlgorithm::makeUniqueFrequencySetAndGridEstimation(
    std::vector<double> const& frequencies, double segmentationThreshold,
    double firstEstimationParameter, double secondEstimationParameter)
{
    HopperFrequencySet set;
    set.frequencies.reserve(frequencies.size());
    for (double frequency : frequencies) {
        set.frequencies.push_back(std::round(frequency));
    }
    auto const first = set.frequencies.cbegin();
    auto const last = set.frequencies.cend();
    auto const starts = estimateBestChannelSpacingAndSegment(
        first, last, firstEstimationParameter, secondEstimationParameter, segmentationThreshold);
    for (std::size_t k = 0; k < starts.size(); ++k) {
        auto const begin = first + std::ptrdiff_t(starts[k].first);
        auto const end = k + 1 < starts.size() ? first + std::ptrdiff_t(starts[k + 1].first) : last;
        set.gridEstimation.segments.push_back(
            estimateBestFrequencyGrid(begin, end, starts[k].second, firstEstimationParameter));
    }
    return set;
}

double HopperFrequencyAlgorithm::effectiveResolution(double resolution, double spacing)
{
    if (resolution >= 1.0) {
        return resolution;
    }
    double const automatic = std::pow(10.0, std::floor(std::log10(spacing)) - 2.0);
    // A spacing of 0 (or none) gives 10^-inf = 0 or a NaN: 1 Hz then.
    return automatic > 1.0 ? automatic : 1.0;
}

std::vector<double> HopperFrequencyAlgorithm::calculateChannelSpacings(ConstIterator first,
                                                                       ConstIterator last)
{
    std::vector<double> spacings;
    if (last - first < 2) {
        return spacings;
    }
    spacings.reserve(std::size_t(last - first - 1));
    for (auto it = first; it + 1 != last; ++it) {
        spacings.push_back(*(it + 1) - *it);
    }
    return spacings;
}

int HopperFrequencyAlgorithm::findBestSpacingMultiplicatorK(double distance, double spacing)
{
    return SaturatingConversion::toInt32(roundedQuotient(distance, spacing));
}

int HopperFrequencyAlgorithm::findBestFrequencyMultiplicatorK(double startFrequency,
                                                              double frequency, double spacing)
{
    return SaturatingConversion::toInt32(roundedQuotient(frequency - startFrequency, spacing));
}

double HopperFrequencyAlgorithm::calculateSpacingCostForCandidate(ConstIterator first,
                                                                  ConstIterator last,
                                                                  double spacing)
{
    double cost = 0.0;
    for (auto it = first; it != last; ++it) {
        double const distance = *it - roundedQuotient(*it, spacing) * spacing;
        cost += distance * distance;
    }
    return cost;
}

double HopperFrequencyAlgorithm::calculateFrequencyCostForCandidate(ConstIterator first,
                                                                    ConstIterator last,
                                                                    double startFrequency,
                                                                    double spacing)
{
    double cost = 0.0;
    for (auto it = first; it != last; ++it) {
        double const channel =
            roundedQuotient(*it - startFrequency, spacing) * spacing + startFrequency;
        double const distance = *it - channel;
        cost += distance * distance;
    }
    return cost;
}

std::vector<double>
HopperFrequencyAlgorithm::findStartFrequencyCandidates(double referenceFrequency, double spacing,
                                                       double resolution)
{
    std::vector<double> candidates;
    if (!(referenceFrequency > 0.0)) {
        return candidates;
    }
    double const r = effectiveResolution(resolution, spacing);
    double const lo = std::floor((referenceFrequency - spacing / 2.0) / r) * r;
    double const hi = std::ceil((referenceFrequency + spacing / 2.0) / r) * r;
    unsigned long long const count = std::max(1ull, wholeSteps(hi - lo, r));
    if (tooManyCandidates(count)) {
        return candidates;
    }
    candidates.reserve(count);
    for (unsigned long long k = 0; k < count; ++k) {
        candidates.push_back(lo + double(k) * r);
    }
    return candidates;
}

HopperFrequencyGridSegment HopperFrequencyAlgorithm::estimateBestFrequencyGrid(ConstIterator first,
                                                                               ConstIterator last,
                                                                               double spacing,
                                                                               double resolution)
{
    double const r = effectiveResolution(resolution, spacing);
    auto const count = last - first;
    if (count <= 0) {
        return HopperFrequencyGridSegment();
    }
    if (count == 1) {
        double const start = std::round(*first / r) * r;
        HopperFrequencyGridSegment segment(start, spacing, 1);
        segment.occupiedChannelCount = 1;
        segment.squaredDeviationSum = (start - *first) * (start - *first);
        return segment;
    }
    auto const candidates = findStartFrequencyCandidates(*first, spacing, r);
    double bestStart = candidates.empty() ? *first : candidates.front();
    double bestCost = std::numeric_limits<double>::infinity();
    for (double candidate : candidates) {
        double const cost = calculateFrequencyCostForCandidate(first, last, candidate, spacing);
        if (cost < bestCost) {
            bestCost = cost;
            bestStart = candidate;
        }
    }
    if (candidates.empty()) {
        bestCost = calculateFrequencyCostForCandidate(first, last, bestStart, spacing);
    }
    HopperFrequencyGridSegment segment(
        bestStart, spacing,
        SaturatingConversion::toUnsigned32(roundedQuotient(*(last - 1) - bestStart, spacing)) + 1u);
    segment.occupiedChannelCount = unsigned(count);
    segment.squaredDeviationSum = bestCost;
    return segment;
}

float HopperFrequencyAlgorithm::calculateChannelOccupationRatio(
    double startFrequency, double spacing, unsigned int channelCount,
    std::vector<double> const& frequencies)
{
    if (frequencies.empty() || !(startFrequency > 0.0) || !(spacing > 0.0) || channelCount == 0) {
        return 0.0f;
    }
    double const half = spacing / 2.0;
    std::size_t position = 0;
    unsigned int occupied = 0;
    for (unsigned int k = 0; k < channelCount; ++k) {
        double const centre = startFrequency + double(k) * spacing;
        while (position < frequencies.size() && centre - half > frequencies[position]) {
            ++position;
        }
        if (position == frequencies.size()) {
            break;
        }
        if (frequencies[position] <= centre + half) {
            ++occupied;
        }
    }
    return float(occupied) / float(channelCount);
}

std::pair<double, unsigned int>
HopperFrequencyAlgorithm::calculateQuadraticMeanOfDeviation(double startFrequency, double spacing,
                                                            unsigned int channelCount,
                                                            std::vector<double> const& frequencies)
{
    if (frequencies.empty() || !(startFrequency > 0.0) || !(spacing > 0.0) || channelCount == 0) {
        return {0.0, 0u};
    }
    double sum = 0.0;
    unsigned int counted = 0;
    long long const lastChannel = (long long)channelCount - 1;
    for (double frequency : frequencies) {
        int const k = findBestFrequencyMultiplicatorK(startFrequency, frequency, spacing);
        if (k < 0) {
            continue;
        }
        if (k > lastChannel) {
            break;
        }
        double const distance = frequency - (double(k) * spacing + startFrequency);
        sum += distance * distance;
        ++counted;
    }
    return {std::sqrt(sum / double(counted)), counted};
}

namespace {

// Local extrema of a sequence, end points included, kept when they are close enough to the
// most extreme interior one. moreExtreme(a, b) says a lies beyond b (below it for minima);
// kept(value, extreme) says whether an extremum survives.
template <typename MoreExtreme, typename Kept>
std::vector<unsigned long long> localExtrema(std::vector<double> const& values,
                                             MoreExtreme moreExtreme, Kept kept)
{
    std::vector<unsigned long long> indices;
    std::size_t const n = values.size();
    if (n == 0) {
        return indices;
    }
    if (n == 1) {
        return {0};
    }
    if (n == 2) {
        return {moreExtreme(values[0], values[1]) ? 0ull : 1ull};
    }
    double extreme = values[0];
    if (moreExtreme(values[0], values[1])) {
        indices.push_back(0);
    }
    for (std::size_t i = 1; i + 1 < n; ++i) {
        if (moreExtreme(values[i], values[i - 1]) && moreExtreme(values[i], values[i + 1])) {
            indices.push_back(i);
            if (moreExtreme(values[i], extreme)) {
                extreme = values[i];
            }
        }
    }
    if (moreExtreme(values[n - 1], values[n - 2])) {
        indices.push_back(n - 1);
    }
    indices.erase(std::remove_if(indices.begin(), indices.end(),
                                 [&](unsigned long long i) { return !kept(values[i], extreme); }),
                  indices.end());
    return indices;
}

} // namespace

std::vector<unsigned long long>
HopperFrequencyAlgorithm::computeLocalMinima(std::vector<double> const& values, double factor)
{
    return localExtrema(
        values, [](double a, double b) { return a < b; },
        [factor](double value, double smallest) { return value <= smallest * factor; });
}

std::vector<unsigned long long>
HopperFrequencyAlgorithm::computeLocalMaxima(std::vector<double> const& values, double factor)
{
    return localExtrema(
        values, [](double a, double b) { return a > b; },
        [factor](double value, double largest) { return value >= largest / factor; });
}

std::vector<double> HopperFrequencyAlgorithm::findSpacingCandidates(ConstIterator first,
                                                                    ConstIterator last,
                                                                    double resolution)
{
    std::vector<double> candidates;
    if (first == last) {
        return candidates;
    }
    auto const range = std::minmax_element(first, last);
    double const lo = *range.first;
    double const hi = *range.second;
    double const r = effectiveResolution(resolution, lo);
    double const start = std::max(r, std::floor(lo / (3.0 * r)) * r);
    double const stop = std::max(r, std::ceil(hi / r) * r);
    unsigned long long const count = wholeSteps(stop - start + r / 2.0, r) + 1;
    if (tooManyCandidates(count)) {
        return candidates;
    }
    candidates.reserve(count);
    for (unsigned long long k = 0; k < count; ++k) {
        candidates.push_back(start + double(k) * r);
    }
    return candidates;
}

std::vector<HopperFrequencyAlgorithm::SegmentStart>
HopperFrequencyAlgorithm::estimateBestChannelSpacingAndSegment(ConstIterator first,
                                                               ConstIterator last,
                                                               double resolution, double factor,
                                                               double segmentationThreshold)
{
    std::vector<SegmentStart> result;
    if (first == last) {
        return result;
    }
    if (last - first == 1) {
        result.emplace_back(0, 0.0);
        return result;
    }
    std::vector<double> const spacings = calculateChannelSpacings(first, last);
    // Segments as spacing index ranges [begin, end); the gap that ends one belongs to none.
    std::vector<std::pair<std::size_t, std::size_t>> segments;
    std::size_t begin = 0;
    for (std::size_t j = 0; j < spacings.size(); ++j) {
        if (spacings[j] >= segmentationThreshold) {
            segments.emplace_back(begin, j);
            begin = j + 1;
        }
    }
    segments.emplace_back(begin, spacings.size());

    std::vector<double> costs;
    for (auto const& segment : segments) {
        auto const segmentFirst = spacings.cbegin() + std::ptrdiff_t(segment.first);
        auto const segmentLast = spacings.cbegin() + std::ptrdiff_t(segment.second);
        auto const candidates = findSpacingCandidates(segmentFirst, segmentLast, resolution);
        costs.clear();
        costs.reserve(candidates.size());
        for (double candidate : candidates) {
            costs.push_back(calculateSpacingCostForCandidate(segmentFirst, segmentLast, candidate));
        }
        auto const minima = computeLocalMinima(costs, factor);
        double const spacing = minima.empty() ? 0.0 : candidates[std::size_t(minima.back())];
        // Spacing index j starts at frequency j.
        result.emplace_back(segment.first, spacing);
    }
    return result;
}

} // namespace zelkodatastreamconverter::BurstEmissionList
