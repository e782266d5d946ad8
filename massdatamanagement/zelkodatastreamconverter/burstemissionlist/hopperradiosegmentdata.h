#pragma once

#include <QString>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/frequencymeanandsamplesize.h>
#include <vector>

namespace zelkodatastreamconverter::BurstEmissionList {

/// A summary of one segment of a radio: four level figures, a bandwidth and the frequency
/// bins. The figures are plain values filled in by whoever produces the record.
struct HopperRadioSegmentData
{
    double minimumLevel_dBm = 0.0;
    double meanLevel_dBm = 0.0;
    double medianLevel_dBm = 0.0;
    double maximumLevel_dBm = 0.0;
    double bandwidth = 0.0;
    std::vector<FrequencyMeanAndSampleSize> frequencies;

    /// Sum of the bins' sample sizes (wraps at 2^32).
    unsigned int sampleCount() const;
    /// 16 × bins + 68.
    unsigned long long serializedSizeInBytes() const { return 16ull * frequencies.size() + 68ull; }
    /// The bin means, ascending.
    std::vector<double> sortedFrequencyVector() const;

    /// Merges sorted bins in place (HopperFrequencyAlgorithm::calculateHopperFrequencySet).
    static void calculateHopperFrequencySet(std::vector<FrequencyMeanAndSampleSize>& bins,
                                            double const& tolerance);

    /// "HopperRadioSegmentData[L=<4 levels>;BW=<bw>;CH=<bins>;(<MHz>M:<n>;...)]".
    QString toString() const;
};

} // namespace zelkodatastreamconverter::BurstEmissionList
