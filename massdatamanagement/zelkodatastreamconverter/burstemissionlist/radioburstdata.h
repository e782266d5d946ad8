#pragma once

#include <QDataStream>
#include <QString>
#include <deque>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/burstdata.h>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/burstqueueallocator.h>
#include <vector>

namespace zelkodatastreamconverter::BurstEmissionList {

/// Bursts in arrival order; blocks are recycled, so dropping a segment at the front and
/// appending one at the back costs no heap allocation once the queue has its working size.
using BurstQueue = std::deque<BurstData, BurstQueueAllocator<BurstData>>;

/// Everything kept for one radio ID: its bursts, segment after segment (one segment per
/// frame), and where each segment starts in the queue and in time.
///
/// The three segment vectors always have the same length, the start indices rise strictly
/// and the first is 0: an empty segment is never appended.
struct RadioBurstData
{
    BurstQueue bursts;
    std::vector<unsigned long long> segmentStartIndices;
    std::vector<unsigned long long> segmentStartTimes; ///< start time of the delivering frame
    std::vector<unsigned long long> segmentStopTimes;  ///< stop time of the delivering frame

    /// Appends a segment (nothing when newBursts is empty).
    void appendBurstsOfNewSegment(unsigned long long startTime, unsigned long long stopTime,
                                  std::vector<BurstData> const& newBursts);
    /// The same for `count` bursts made by burstAt(0), ..., burstAt(count - 1), built straight
    /// into the queue instead of copied there from a vector. Should making one throw, the
    /// record is left as it was.
    template <typename BurstAt>
    void appendNewSegment(unsigned long long startTime, unsigned long long stopTime,
                          std::size_t count, BurstAt burstAt);
    /// Drops the oldest segment; with one segment or none, everything.
    void removeFirstSegment();

    std::size_t segmentCount() const { return segmentStartIndices.size(); }
    /// All burst frequencies, ascending.
    std::vector<double> sortedFrequencyVector() const;
    /// Arithmetic mean of the bursts' bandwidths; 0.0 without bursts.
    double meanBandwidth() const;

    /// "RadioBurstData[<bursts>:<segments>]".
    QString toString() const;

    bool operator==(RadioBurstData const& other) const;
    bool operator!=(RadioBurstData const& other) const { return !(*this == other); }
};

template <typename BurstAt>
void RadioBurstData::appendNewSegment(unsigned long long startTime, unsigned long long stopTime,
                                      std::size_t count, BurstAt burstAt)
{
    if (count == 0) {
        return;
    }
    std::size_t const first = bursts.size();
    try {
        for (std::size_t i = 0; i < count; ++i) {
            bursts.push_back(burstAt(i));
        }
        segmentStartIndices.push_back(first);
        segmentStartTimes.push_back(startTime);
        segmentStopTimes.push_back(stopTime);
    } catch (...) {
        bursts.resize(first);
        segmentStartIndices.resize(segmentStopTimes.size());
        segmentStartTimes.resize(segmentStopTimes.size());
        throw;
    }
}

/// Burst count (qint64) and the bursts; then for each of the start indices, start times and
/// stop times their count (qint64) and elements (qint64 each).
QDataStream& operator<<(QDataStream& stream, RadioBurstData const& data);
/// Replaces the whole content. A stream that ends early leaves the record empty and the
/// stream's status set; counts are not trusted for allocation.
QDataStream& operator>>(QDataStream& stream, RadioBurstData& data);

} // namespace zelkodatastreamconverter::BurstEmissionList
