#include "hopperfrequencygridestimation.h"

#include <QStringList>
#include <cmath>
#include <limits>

namespace zelkodatastreamconverter::BurstEmissionList {

HopperFrequencyGridEstimation::HopperFrequencyGridEstimation(double startFrequency,
                                                             double channelSpacing,
                                                             unsigned int channelCount)
    : segments{HopperFrequencyGridSegment(startFrequency, channelSpacing, channelCount)}
{
}

unsigned int HopperFrequencyGridEstimation::getTotalChannelCount() const
{
    unsigned int total = 0;
    for (auto const& segment : segments) {
        total += segment.channelCount;
    }
    return total;
}

double HopperFrequencyGridEstimation::getFrequencyOfChannelIndex(unsigned int index) const
{
    for (auto const& segment : segments) {
        if (index < segment.channelCount) {
            return segment.getFrequencyOfChannelIndex(index);
        }
        index -= segment.channelCount;
    }
    return 0.0;
}

std::vector<unsigned int> HopperFrequencyGridEstimation::getSegmentStartChannelIndices() const
{
    std::vector<unsigned int> indices;
    indices.reserve(segments.size());
    unsigned int running = 0;
    for (auto const& segment : segments) {
        indices.push_back(running);
        running += segment.channelCount;
    }
    return indices;
}

float HopperFrequencyGridEstimation::getOccupationRatio() const
{
    unsigned int occupied = 0;
    unsigned int channels = 0;
    for (auto const& segment : segments) {
        occupied += segment.occupiedChannelCount;
        channels += segment.channelCount;
    }
    return float(occupied) / float(channels);
}

double HopperFrequencyGridEstimation::getQuadraticMeanDeviation() const
{
    double deviation = 0.0;
    unsigned int occupied = 0;
    for (auto const& segment : segments) {
        deviation += segment.squaredDeviationSum;
        occupied += segment.occupiedChannelCount;
    }
    return std::sqrt(deviation / double(occupied));
}

double HopperFrequencyGridEstimation::getMeanChannelSpacing() const
{
    double weighted = 0.0;
    double gaps = 0.0;
    for (auto const& segment : segments) {
        double const g = segment.channelCount >= 2 ? double(segment.channelCount - 1u) : 0.0;
        weighted += g * segment.channelSpacing;
        gaps += g;
    }
    return gaps == 0.0 ? weighted : weighted / gaps;
}

double HopperFrequencyGridEstimation::getMinChannelSpacing() const
{
    double smallest = std::numeric_limits<double>::infinity();
    for (auto const& segment : segments) {
        if (segment.channelSpacing >= 1.0 && segment.channelSpacing < smallest) {
            smallest = segment.channelSpacing;
        }
    }
    return std::isinf(smallest) ? 0.0 : smallest;
}

std::vector<double> HopperFrequencyGridEstimation::createFullFrequencyList() const
{
    std::vector<double> list;
    list.reserve(getTotalChannelCount());
    for (auto const& segment : segments) {
        auto const part = segment.createFullFrequencyList();
        list.insert(list.end(), part.begin(), part.end());
    }
    return list;
}

std::vector<double> HopperFrequencyGridEstimation::createFrequencyListWithoutUnoccupiedFrequencies(
    std::vector<double> const& frequencies) const
{
    std::vector<double> list;
    for (auto const& segment : segments) {
        auto const part = segment.createFrequencyListWithoutUnoccupiedFrequencies(frequencies);
        list.insert(list.end(), part.begin(), part.end());
    }
    return list;
}

HopperFrequencyGridEstimation
HopperFrequencyGridEstimation::fromStartStop(double start, double stop, double spacing)
{
    HopperFrequencyGridEstimation estimation;
    estimation.segments.push_back(HopperFrequencyGridSegment::fromStartStop(start, stop, spacing));
    return estimation;
}

QString HopperFrequencyGridEstimation::toString() const
{
    QStringList parts;
    for (auto const& segment : segments) {
        parts << segment.toString();
    }
    return QStringLiteral("FreqGrid{ ") + parts.join(QStringLiteral(", ")) + QStringLiteral(" }");
}

QDataStream& operator<<(QDataStream& stream, HopperFrequencyGridEstimation const& estimation)
{
    stream << qint64(estimation.segments.size());
    for (auto const& segment : estimation.segments) {
        stream << segment;
    }
    return stream;
}

QDataStream& operator>>(QDataStream& stream, HopperFrequencyGridEstimation& estimation)
{
    estimation.segments.clear();
    qint64 count = 0;
    stream >> count;
    for (qint64 i = 0; i < count && stream.status() == QDataStream::Ok; ++i) {
        HopperFrequencyGridSegment segment;
        stream >> segment;
        if (stream.status() == QDataStream::Ok) {
            estimation.segments.push_back(segment);
        }
    }
    if (count < 0 && stream.status() == QDataStream::Ok) {
        stream.setStatus(QDataStream::ReadCorruptData);
    }
    if (stream.status() != QDataStream::Ok) {
        estimation.segments.clear();
    }
    return stream;
}

} // namespace zelkodatastreamconverter::BurstEmissionList
