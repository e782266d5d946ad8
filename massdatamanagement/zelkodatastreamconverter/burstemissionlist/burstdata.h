#pragma once

#include <QDataStream>
#include <QString>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/frequencytimewindow.h>

namespace zelkodatastreamconverter::BurstEmissionList {

/// One burst as the receiver detected it. Frequencies and bandwidths in hertz, time and
/// length in frame time units, level in dBm.
struct BurstData
{
    double frequency = 0.0; ///< centre frequency
    double bandwidth = 0.0;
    unsigned long long time = 0; ///< start time
    unsigned int length = 0;     ///< duration
    float level_dBm = 0.0f;

    BurstData() = default;
    BurstData(double const& frequency, double const& bandwidth, unsigned long long time,
              unsigned int length, float level_dBm)
        : frequency(frequency), bandwidth(bandwidth), time(time), length(length),
          level_dBm(level_dBm)
    {
    }

    unsigned int getLength() const { return length; }
    float getLevel_dBm() const { return level_dBm; }

    /// The burst's rectangle: frequency ± bandwidth / 2, time .. time + length.
    FrequencyTimeWindow toFTW() const;
    /// "BurstData[<frequency MHz>M;<length>;<bandwidth kHz>k]".
    QString toString() const;

    static bool earlierThan(BurstData const& a, BurstData const& b) { return a.time < b.time; }
    static bool lessThanByFrequency(BurstData const& a, BurstData const& b)
    {
        return a.frequency < b.frequency;
    }
    static bool shorterThan(BurstData const& a, BurstData const& b) { return a.length < b.length; }

    /// Field by field, exactly (round trips of the stream form compare equal).
    bool operator==(BurstData const& other) const;
    bool operator!=(BurstData const& other) const { return !(*this == other); }
};

/// frequency, bandwidth (double), time (qint64), length (qint32), level (float at the
/// stream's floating-point precision).
QDataStream& operator<<(QDataStream& stream, BurstData const& burst);
QDataStream& operator>>(QDataStream& stream, BurstData& burst);

} // namespace zelkodatastreamconverter::BurstEmissionList
