#include "frequencytimewindow.h"

namespace zelkodatastreamconverter::BurstEmissionList {

namespace {

// Whole megahertz, as an unsigned number; a negative frequency shows as 0 instead of
// wrapping.
unsigned long long wholeMegahertz(double frequency)
{
    double const megahertz = frequency / 1e6;
    if (!(megahertz > 0.0)) {
        return 0;
    }
    if (megahertz >= 18446744073709551615.0) {
        return 18446744073709551615ull;
    }
    return static_cast<unsigned long long>(megahertz);
}

} // namespace

FrequencyTimeWindow::FrequencyTimeWindow(double startFrequency, double stopFrequency,
                                         unsigned long long startTime, unsigned long long stopTime)
    : startFrequency(startFrequency), stopFrequency(stopFrequency), startTime(startTime),
      stopTime(stopTime)
{
}

QString FrequencyTimeWindow::toString() const
{
    return QStringLiteral("FTW{[%1M;%2M], [%3, %4]}")
        .arg(wholeMegahertz(startFrequency))
        .arg(wholeMegahertz(stopFrequency))
        .arg(startTime)
        .arg(stopTime);
}

bool FrequencyTimeWindow::operator==(FrequencyTimeWindow const& other) const
{
    return startFrequency == other.startFrequency && stopFrequency == other.stopFrequency &&
           startTime == other.startTime && stopTime == other.stopTime;
}

QDataStream& operator<<(QDataStream& stream, FrequencyTimeWindow const& window)
{
    return stream << window.startFrequency << window.stopFrequency << qint64(window.startTime)
                  << qint64(window.stopTime);
}

QDataStream& operator>>(QDataStream& stream, FrequencyTimeWindow& window)
{
    qint64 startTime = 0;
    qint64 stopTime = 0;
    stream >> window.startFrequency >> window.stopFrequency >> startTime >> stopTime;
    window.startTime = quint64(startTime);
    window.stopTime = quint64(stopTime);
    return stream;
}

} // namespace zelkodatastreamconverter::BurstEmissionList
