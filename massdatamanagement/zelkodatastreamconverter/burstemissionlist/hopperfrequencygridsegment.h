#pragma once

#include <QDataStream>
#include <QString>
#include <vector>

namespace zelkodatastreamconverter::BurstEmissionList {

/// One equally spaced run of channels: channel k lies at startFrequency + k × channelSpacing
/// (hertz). occupiedChannelCount and squaredDeviationSum say how well estimated hop
/// frequencies fit the run.
struct HopperFrequencyGridSegment
{
    double startFrequency = 0.0; ///< frequency of channel 0
    double channelSpacing = 0.0;
    unsigned int channelCount = 0;
    unsigned int occupiedChannelCount = 0; ///< channels on which an estimated frequency lies
    double squaredDeviationSum = 0.0;      ///< of those frequencies from their channel

    HopperFrequencyGridSegment() = default;
    HopperFrequencyGridSegment(double startFrequency, double channelSpacing,
                               unsigned int channelCount);

    double getFrequencyOfChannelIndex(unsigned int index) const
    {
        return startFrequency + double(index) * channelSpacing;
    }
    /// Frequency of the last channel. The count is lowered in unsigned arithmetic, so a
    /// segment without channels yields start + 4294967295 spacings.
    double getStopFrequency() const
    {
        return startFrequency + double(channelCount - 1u) * channelSpacing;
    }
    bool isNull() const { return channelCount == 0; }

    /// Every channel frequency, ascending.
    std::vector<double> createFullFrequencyList() const;
    /// The channels on which one of the given (ascending) frequencies lies, that is within
    /// half a spacing of the channel, borders included.
    std::vector<double>
    createFrequencyListWithoutUnoccupiedFrequencies(std::vector<double> const& frequencies) const;

    /// Channels from start to at least stop: ceil((stop − start) / spacing) + 1.
    static HopperFrequencyGridSegment fromStartStop(double start, double stop, double spacing);
    static bool lessThanByStartFrequency(HopperFrequencyGridSegment const& a,
                                         HopperFrequencyGridSegment const& b)
    {
        return a.startFrequency < b.startFrequency;
    }

    /// "Segment[<start>; <channel count>; <spacing>]".
    QString toString() const;

    /// Doubles compare with a relative tolerance of 1e-12, counts exactly.
    bool operator==(HopperFrequencyGridSegment const& other) const;
    bool operator!=(HopperFrequencyGridSegment const& other) const { return !(*this == other); }
};

/// startFrequency, channelSpacing (double), channelCount, occupiedChannelCount (qint32),
/// squaredDeviationSum (double).
QDataStream& operator<<(QDataStream& stream, HopperFrequencyGridSegment const& segment);
QDataStream& operator>>(QDataStream& stream, HopperFrequencyGridSegment& segment);

} // namespace zelkodatastreamconverter::BurstEmissionList
