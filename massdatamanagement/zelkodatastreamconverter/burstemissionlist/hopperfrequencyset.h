#pragma once

#include <QDataStream>
#include <QString>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/hopperfrequencygridestimation.h>
#include <vector>

namespace zelkodatastreamconverter::BurstEmissionList {

/// The estimate for one radio: its hop frequencies (hertz, ascending) and the channel grid
/// behind them.
struct HopperFrequencySet
{
    std::vector<double> frequencies;
    HopperFrequencyGridEstimation gridEstimation;

    bool isEmpty() const { return frequencies.empty(); }
    /// 8 × frequencies + 12, whatever the grid holds (a fixed rule of the interface, not the
    /// size of the stream form).
    unsigned long long serializedSizeInBytes() const { return 8ull * frequencies.size() + 12ull; }
    /// Whether the given frequencies differ significantly from this set's (see
    /// HopperFrequencyAlgorithm::significantDifference).
    bool significantChange(std::vector<double> const& otherFrequencies,
                           double const& tolerance) const;

    /// "HopperFrequencySet[<count>;<mean spacing kHz>k;<f MHz>M;...;FreqGrid{ ... }]".
    QString toString() const;

    bool operator==(HopperFrequencySet const& other) const
    {
        return frequencies == other.frequencies && gridEstimation == other.gridEstimation;
    }
    bool operator!=(HopperFrequencySet const& other) const { return !(*this == other); }
};

/// The grid estimation, then the frequency count (qint32) and the frequencies (double).
QDataStream& operator<<(QDataStream& stream, HopperFrequencySet const& set);
/// A stream that ends early leaves the set empty and the stream's status set.
QDataStream& operator>>(QDataStream& stream, HopperFrequencySet& set);

} // namespace zelkodatastreamconverter::BurstEmissionList
