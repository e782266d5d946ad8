#pragma once

#include <QString>

namespace zelkodatastreamconverter::BurstEmissionList {

/// One bin of the hop-frequency estimation: a mean frequency (hertz) and how many samples
/// were pooled into it. Reads as its mean where a double is expected.
struct FrequencyMeanAndSampleSize
{
    double mean = 0.0;
    unsigned int sampleSize = 0;

    FrequencyMeanAndSampleSize() = default;
    FrequencyMeanAndSampleSize(double mean, unsigned int sampleSize)
        : mean(mean), sampleSize(sampleSize)
    {
    }

    operator double() const { return mean; }

    /// "FrequencyMeanAndSampleSize[<mean MHz>M;<sample size>]".
    QString toString() const;
};

} // namespace zelkodatastreamconverter::BurstEmissionList
