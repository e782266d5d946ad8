#pragma once

#include <QDataStream>
#include <QString>

namespace zelkodatastreamconverter::BurstEmissionList {

/// A rectangle in frequency (hertz) and time (frame time units): "FTW".
struct FrequencyTimeWindow
{
    double startFrequency = 0.0;
    double stopFrequency = 0.0;
    unsigned long long startTime = 0;
    unsigned long long stopTime = 0;

    FrequencyTimeWindow() = default;
    FrequencyTimeWindow(double startFrequency, double stopFrequency, unsigned long long startTime,
                        unsigned long long stopTime);

    /// "FTW{[<start MHz>M;<stop MHz>M], [<start time>, <stop time>]}", the frequencies cut to
    /// whole megahertz.
    QString toString() const;

    bool operator==(FrequencyTimeWindow const& other) const;
    bool operator!=(FrequencyTimeWindow const& other) const { return !(*this == other); }
};

/// startFrequency, stopFrequency (double), startTime, stopTime (qint64).
QDataStream& operator<<(QDataStream& stream, FrequencyTimeWindow const& window);
QDataStream& operator>>(QDataStream& stream, FrequencyTimeWindow& window);

} // namespace zelkodatastreamconverter::BurstEmissionList
