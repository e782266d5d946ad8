#include "broadcastwave.h"

#include <algorithm>
#include <cstring>

namespace audiofileexport {

namespace {

// The fixed-size text fields are not NUL-terminated when full.
template <size_t Size>
void copyText(char (&field)[Size], QByteArray const& text)
{
    std::memset(field, 0, Size);
    std::memcpy(field, text.constData(), std::min(Size, size_t(text.size())));
}

template <size_t Size>
QString textOf(char const (&field)[Size])
{
    return QString::fromLatin1(field, int(::strnlen(field, Size)));
}

} // namespace

SF_BROADCAST_INFO BroadcastWave::makeInfo(QDateTime const& startTime, int sampleRate,
                                          QString const& description)
{
    SF_BROADCAST_INFO info;
    std::memset(&info, 0, sizeof info);
    QDateTime const utc = startTime.toUTC();
    copyText(info.description, description.toUtf8());
    copyText(info.originator, QByteArrayLiteral("ZelkoDataStreamConverter"));
    copyText(info.origination_date, utc.date().toString(QStringLiteral("yyyy-MM-dd")).toLatin1());
    copyText(info.origination_time, utc.time().toString(QStringLiteral("hh:mm:ss")).toLatin1());
    // Samples since midnight, rounded down: a whole millisecond of the start stays exact for
    // every rate that is a multiple of 1000 Hz.
    quint64 const samples = quint64(utc.time().msecsSinceStartOfDay()) * quint64(sampleRate) / 1000u;
    info.time_reference_low = quint32(samples & 0xffffffffu);
    info.time_reference_high = quint32(samples >> 32);
    return info;
}

QDateTime BroadcastWave::startTime(SF_BROADCAST_INFO const& info, int sampleRate)
{
    QDate const date = QDate::fromString(textOf(info.origination_date), QStringLiteral("yyyy-MM-dd"));
    if (!date.isValid()) {
        return QDateTime();
    }
    quint64 const samples = (quint64(info.time_reference_high) << 32) | info.time_reference_low;
    // Round up to the millisecond that makeInfo() rounded down from.
    qint64 const milliseconds = qint64((samples * 1000u + quint64(sampleRate) - 1) / quint64(sampleRate));
    return QDateTime(date, QTime(0, 0), Qt::UTC).addMSecs(milliseconds);
}

} // namespace audiofileexport
