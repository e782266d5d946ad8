#include "burstdata.h"

namespace zelkodatastreamconverter::BurstEmissionList {

FrequencyTimeWindow BurstData::toFTW() const
{
    return FrequencyTimeWindow(frequency - bandwidth * 0.5, frequency + bandwidth * 0.5, time,
                               time + length);
}

QString BurstData::toString() const
{
    return QStringLiteral("BurstData[%1M;%2;%3k]")
        .arg(QString::number(frequency / 1e6, 'g', 6))
        .arg(length)
        .arg(QString::number(bandwidth / 1000.0, 'g', 6));
}

bool BurstData::operator==(BurstData const& other) const
{
    return frequency == other.frequency && bandwidth == other.bandwidth && time == other.time &&
           length == other.length && level_dBm == other.level_dBm;
}

QDataStream& operator<<(QDataStream& stream, BurstData const& burst)
{
    return stream << burst.frequency << burst.bandwidth << qint64(burst.time)
                  << qint32(burst.length) << burst.level_dBm;
}

QDataStream& operator>>(QDataStream& stream, BurstData& burst)
{
    qint64 time = 0;
    qint32 length = 0;
    stream >> burst.frequency >> burst.bandwidth >> time >> length >> burst.level_dBm;
    burst.time = quint64(time);
    burst.length = quint32(length);
    return stream;
}

} // namespace zelkodatastreamconverter::BurstEmissionList
