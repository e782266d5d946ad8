#pragma once

#include <QDataStream>
#include <QString>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/hopperfrequencygridsegment.h>
#include <vector>

namespace zelkodatastreamconverter::BurstEmissionList {

/// The channel grid of one radio: equally spaced segments, their channels counted one after
/// another (channel 0 is the first channel of the first segment).
struct HopperFrequencyGridEstimation
{
    std::vector<HopperFrequencyGridSegment> segments;

    HopperFrequencyGridEstimation() = default;
    /// Exactly one segment.
    HopperFrequencyGridEstimation(double startFrequency, double channelSpacing,
                                  unsigned int channelCount);

    unsigned int getSegmentCount() const { return unsigned(segments.size()); }
    unsigned int getTotalChannelCount() const;
    bool isNull() const { return getTotalChannelCount() == 0; }

    /// Channel index counted across the segments; 0.0 beyond the last channel.
    double getFrequencyOfChannelIndex(unsigned int index) const;
    double getStartFrequency() const { return getFrequencyOfChannelIndex(0); }
    double getStopFrequency() const
    {
        return getFrequencyOfChannelIndex(getTotalChannelCount() - 1u);
    }
    /// For each segment, the running channel index at which it begins.
    std::vector<unsigned int> getSegmentStartChannelIndices() const;

    /// Occupied channels / channels over all segments (not a number without channels).
    float getOccupationRatio() const;
    /// sqrt(sum of squared deviations / occupied channels) over all segments (not a number
    /// without occupied channels).
    double getQuadraticMeanDeviation() const;
    /// Spacing averaged over the channel gaps of all segments; 0 without gaps.
    double getMeanChannelSpacing() const;
    /// The smallest spacing of at least 1 Hz; 0.0 when there is none.
    double getMinChannelSpacing() const;

    /// Every channel frequency of every segment, in segment order.
    std::vector<double> createFullFrequencyList() const;
    /// The channels on which one of the given (ascending) frequencies lies.
    std::vector<double>
    createFrequencyListWithoutUnoccupiedFrequencies(std::vector<double> const& frequencies) const;

    /// One segment from start to at least stop.
    static HopperFrequencyGridEstimation fromStartStop(double start, double stop, double spacing);

    /// "FreqGrid{ <segment>, <segment> }".
    QString toString() const;

    bool operator==(HopperFrequencyGridEstimation const& other) const
    {
        return segments == other.segments;
    }
    bool operator!=(HopperFrequencyGridEstimation const& other) const { return !(*this == other); }
};

/// Segment count (qint64), then the segments.
QDataStream& operator<<(QDataStream& stream, HopperFrequencyGridEstimation const& estimation);
/// A stream that ends early leaves no segments and the stream's status set.
QDataStream& operator>>(QDataStream& stream, HopperFrequencyGridEstimation& estimation);

} // namespace zelkodatastreamconverter::BurstEmissionList
