#include "hopperradiosegmentdata.h"

#include "hopperfrequencyalgorithm.h"

#include <algorithm>

namespace zelkodatastreamconverter::BurstEmissionList {

namespace {
QString g6(double value)
{
    return QString::number(value, 'g', 6);
}
} // namespace

unsigned int HopperRadioSegmentData::sampleCount() const
{
    unsigned int count = 0;
    for (auto const& bin : frequencies) {
        count += bin.sampleSize;
    }
    return count;
}

std::vector<double> HopperRadioSegmentData::sortedFrequencyVector() const
{
    std::vector<double> means;
    means.reserve(frequencies.size());
    for (auto const& bin : frequencies) {
        means.push_back(bin.mean);
    }
    std::sort(means.begin(), means.end());
    return means;
}

void HopperRadioSegmentData::calculateHopperFrequencySet(
    std::vector<FrequencyMeanAndSampleSize>& bins, double const& tolerance)
{
    HopperFrequencyAlgorithm::calculateHopperFrequencySet(bins, tolerance);
}

QString HopperRadioSegmentData::toString() const
{
    QString text = QStringLiteral("HopperRadioSegmentData[L=%1:%2:%3:%4;BW=%5;CH=%6;(")
                       .arg(g6(minimumLevel_dBm), g6(meanLevel_dBm), g6(medianLevel_dBm),
                            g6(maximumLevel_dBm), g6(bandwidth))
                       .arg(frequencies.size());
    for (auto const& bin : frequencies) {
        text += QStringLiteral("%1M:%2;").arg(g6(bin.mean / 1e6)).arg(bin.sampleSize);
    }
    text += QStringLiteral(")]");
    return text;
}

} // namespace zelkodatastreamconverter::BurstEmissionList
