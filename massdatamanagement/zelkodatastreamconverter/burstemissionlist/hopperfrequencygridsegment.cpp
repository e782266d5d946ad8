#include "hopperfrequencygridsegment.h"

#include "saturatingconversion.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zelkodatastreamconverter::BurstEmissionList {

namespace {

// The usual fuzzy comparison of doubles: two exact zeros are equal through a − b = 0.
bool fuzzyEqual(double a, double b)
{
    return std::abs(a - b) * 1e12 <= std::min(std::abs(a), std::abs(b));
}

} // namespace

HopperFrequencyGridSegment::HopperFrequencyGridSegment(double startFrequency, double channelSpacing,
                                                       unsigned int channelCount)
    : startFrequency(startFrequency), channelSpacing(channelSpacing), channelCount(channelCount)
{
}

std::vector<double> HopperFrequencyGridSegment::createFullFrequencyList() const
{
    std::vector<double> list;
    list.reserve(channelCount);
    for (unsigned int k = 0; k < channelCount; ++k) {
        list.push_back(getFrequencyOfChannelIndex(k));
    }
    return list;
}

std::vector<double> HopperFrequencyGridSegment::createFrequencyListWithoutUnoccupiedFrequencies(
    std::vector<double> const& frequencies) const
{
    std::vector<double> list;
    double const half = channelSpacing * 0.5;
    auto position = frequencies.begin();
    for (unsigned int k = 0; k < channelCount; ++k) {
        double const centre = getFrequencyOfChannelIndex(k);
        position = std::lower_bound(position, frequencies.end(), centre - half);
        if (position == frequencies.end()) {
            break;
        }
        if (*position <= centre + half) {
            list.push_back(centre);
        }
    }
    return list;
}

HopperFrequencyGridSegment HopperFrequencyGridSegment::fromStartStop(double start, double stop,
                                                                     double spacing)
{
    return HopperFrequencyGridSegment(
        start, spacing,
        SaturatingConversion::toUnsigned32(std::ceil((stop - start) / spacing)) + 1u);
}

QString HopperFrequencyGridSegment::toString() const
{
    return QStringLiteral("Segment[%1; %2; %3]")
        .arg(QString::number(startFrequency, 'g', 6))
        .arg(channelCount)
        .arg(QString::number(channelSpacing, 'g', 6));
}

bool HopperFrequencyGridSegment::operator==(HopperFrequencyGridSegment const& other) const
{
    return fuzzyEqual(startFrequency, other.startFrequency) &&
           fuzzyEqual(channelSpacing, other.channelSpacing) && channelCount == other.channelCount &&
           occupiedChannelCount == other.occupiedChannelCount &&
           fuzzyEqual(squaredDeviationSum, other.squaredDeviationSum);
}

QDataStream& operator<<(QDataStream& stream, HopperFrequencyGridSegment const& segment)
{
    return stream << segment.startFrequency << segment.channelSpacing
                  << qint32(segment.channelCount) << qint32(segment.occupiedChannelCount)
                  << segment.squaredDeviationSum;
}

QDataStream& operator>>(QDataStream& stream, HopperFrequencyGridSegment& segment)
{
    qint32 channelCount = 0;
    qint32 occupiedChannelCount = 0;
    stream >> segment.startFrequency >> segment.channelSpacing >> channelCount >>
        occupiedChannelCount >> segment.squaredDeviationSum;
    segment.channelCount = quint32(channelCount);
    segment.occupiedChannelCount = quint32(occupiedChannelCount);
    return stream;
}

} // namespace zelkodatastreamconverter::BurstEmissionList
