#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <appstartup/cfgcenter.h>
#include <cstring>
#include <memory>

/// What the models of framed recordings read alike: values at byte offsets of a frame (host
/// order, any alignment), frame time stamps, and the configured alphabets directory.
namespace zelkodatastreamconverter {

/// The value at offset; the caller has checked that the frame is long enough.
template <typename T>
T readAt(QByteArray const& frame, int offset)
{
    T value;
    std::memcpy(&value, frame.constData() + offset, sizeof value);
    return value;
}

/// Whole seconds plus the millisecond part; what lies below a millisecond is dropped.
inline QDateTime timeFromMicroseconds(quint64 microseconds)
{
    return QDateTime::fromMSecsSinceEpoch(
        qint64(microseconds / 1000000u) * 1000 + qint64((microseconds / 1000u) % 1000u), Qt::UTC);
}

/// The configuration's "JobManagement"/"MorseAlphabets", "." (the working directory) when
/// unset.
inline QString configuredAlphabetsDirectory()
{
    // View 4: the configuration is only read here.
    std::unique_ptr<Cfg> const configuration =
        CfgCenter::CreateCfg(QStringLiteral("JobManagement"), QString(), 4);
    return configuration
               ? configuration->GetValue(QStringLiteral("MorseAlphabets"), QStringLiteral("."))
               : QStringLiteral(".");
}

} // namespace zelkodatastreamconverter
