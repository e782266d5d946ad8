#include "radioburstdata.h"

#include <algorithm>

namespace zelkodatastreamconverter::BurstEmissionList {

namespace {

void writeVector(QDataStream& stream, std::vector<unsigned long long> const& values)
{
    stream << qint64(values.size());
    for (unsigned long long value : values) {
        stream << qint64(value);
    }
}

// Reads element by element: a damaged count ends in a stream error, not a huge allocation.
bool readVector(QDataStream& stream, std::vector<unsigned long long>& values)
{
    values.clear();
    qint64 count = 0;
    stream >> count;
    for (qint64 i = 0; i < count && stream.status() == QDataStream::Ok; ++i) {
        qint64 value = 0;
        stream >> value;
        if (stream.status() == QDataStream::Ok) {
            values.push_back(quint64(value));
        }
    }
    return stream.status() == QDataStream::Ok && count >= 0;
}

} // namespace

void RadioBurstData::appendBurstsOfNewSegment(unsigned long long startTime,
                                              unsigned long long stopTime,
                                              std::vector<BurstData> const& newBursts)
{
    if (newBursts.empty()) {
        return;
    }
    segmentStartIndices.push_back(bursts.size());
    segmentStartTimes.push_back(startTime);
    segmentStopTimes.push_back(stopTime);
    bursts.insert(bursts.end(), newBursts.begin(), newBursts.end());
}

void RadioBurstData::removeFirstSegment()
{
    if (segmentStartIndices.size() < 2) {
        bursts.clear();
        segmentStartIndices.clear();
        segmentStartTimes.clear();
        segmentStopTimes.clear();
        return;
    }
    unsigned long long const removed = segmentStartIndices[1];
    bursts.erase(bursts.begin(), bursts.begin() + std::ptrdiff_t(removed));
    segmentStartIndices.erase(segmentStartIndices.begin());
    segmentStartTimes.erase(segmentStartTimes.begin());
    segmentStopTimes.erase(segmentStopTimes.begin());
    for (unsigned long long& index : segmentStartIndices) {
        index -= removed;
    }
}

std::vector<double> RadioBurstData::sortedFrequencyVector() const
{
    std::vector<double> frequencies;
    frequencies.reserve(bursts.size());
    for (BurstData const& burst : bursts) {
        frequencies.push_back(burst.frequency);
    }
    // Segments filed by the converter are already ascending: merging the runs pairwise costs
    // log2(segments) passes instead of a full sort. Anything else is sorted as a whole.
    std::vector<std::size_t> runs;
    runs.reserve(segmentStartIndices.size() + 1);
    bool runsSorted = !segmentStartIndices.empty() && segmentStartIndices.front() == 0;
    for (std::size_t i = 0; runsSorted && i < segmentStartIndices.size(); ++i) {
        std::size_t const begin = std::size_t(segmentStartIndices[i]);
        std::size_t const end = i + 1 < segmentStartIndices.size()
                                    ? std::size_t(segmentStartIndices[i + 1])
                                    : frequencies.size();
        runsSorted = begin <= end && end <= frequencies.size() &&
                     std::is_sorted(frequencies.begin() + std::ptrdiff_t(begin),
                                    frequencies.begin() + std::ptrdiff_t(end));
        runs.push_back(begin);
    }
    if (!runsSorted) {
        std::sort(frequencies.begin(), frequencies.end());
        return frequencies;
    }
    runs.push_back(frequencies.size());
    while (runs.size() > 2) {
        std::vector<std::size_t> merged;
        merged.reserve(runs.size() / 2 + 2);
        std::size_t i = 0;
        for (; i + 2 < runs.size(); i += 2) {
            std::inplace_merge(frequencies.begin() + std::ptrdiff_t(runs[i]),
                               frequencies.begin() + std::ptrdiff_t(runs[i + 1]),
                               frequencies.begin() + std::ptrdiff_t(runs[i + 2]));
            merged.push_back(runs[i]);
        }
        for (; i < runs.size(); ++i) {
            merged.push_back(runs[i]);
        }
        runs.swap(merged);
    }
    return frequencies;
}

double RadioBurstData::meanBandwidth() const
{
    if (bursts.empty()) {
        return 0.0;
    }
    double sum = 0.0;
    for (BurstData const& burst : bursts) {
        sum += burst.bandwidth;
    }
    return sum / double(bursts.size());
}

QString RadioBurstData::toString() const
{
    return QStringLiteral("RadioBurstData[%1:%2]").arg(bursts.size()).arg(segmentCount());
}

bool RadioBurstData::operator==(RadioBurstData const& other) const
{
    return bursts == other.bursts && segmentStartIndices == other.segmentStartIndices &&
           segmentStartTimes == other.segmentStartTimes &&
           segmentStopTimes == other.segmentStopTimes;
}

QDataStream& operator<<(QDataStream& stream, RadioBurstData const& data)
{
    stream << qint64(data.bursts.size());
    for (BurstData const& burst : data.bursts) {
        stream << burst;
    }
    writeVector(stream, data.segmentStartIndices);
    writeVector(stream, data.segmentStartTimes);
    writeVector(stream, data.segmentStopTimes);
    return stream;
}

QDataStream& operator>>(QDataStream& stream, RadioBurstData& data)
{
    data = RadioBurstData();
    qint64 count = 0;
    stream >> count;
    for (qint64 i = 0; i < count && stream.status() == QDataStream::Ok; ++i) {
        BurstData burst;
        stream >> burst;
        if (stream.status() == QDataStream::Ok) {
            data.bursts.push_back(burst);
        }
    }
    bool const ok = count >= 0 && stream.status() == QDataStream::Ok &&
                    readVector(stream, data.segmentStartIndices) &&
                    readVector(stream, data.segmentStartTimes) &&
                    readVector(stream, data.segmentStopTimes);
    if (!ok) {
        if (stream.status() == QDataStream::Ok) {
            stream.setStatus(QDataStream::ReadCorruptData);
        }
        data = RadioBurstData();
    }
    return stream;
}

} // namespace zelkodatastreamconverter::BurstEmissionList
