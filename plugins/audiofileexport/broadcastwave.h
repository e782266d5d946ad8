#pragma once

#include <QDateTime>
#include <QString>
#include <sndfile.h>

namespace audiofileexport {

/// The "bext" chunk of a Broadcast Wave file as libsndfile handles it. The origination date
/// and time are the recording's start in UTC ("yyyy-MM-dd", "hh:mm:ss"), and the time
/// reference counts the samples from that day's midnight to the start, so that the start is
/// known to the sample (and read back to the millisecond). libsndfile adds the version and
/// a coding-history line that describes the samples it writes.
class BroadcastWave
{
public:
    /// The chunk for a recording that starts at startTime (taken as UTC) with sampleRate.
    static SF_BROADCAST_INFO makeInfo(QDateTime const& startTime, int sampleRate,
                                      QString const& description);

    /// The start time the chunk carries; invalid when its date does not parse. sampleRate is
    /// positive (libsndfile opens no file without one).
    static QDateTime startTime(SF_BROADCAST_INFO const& info, int sampleRate);
};

} // namespace audiofileexport
