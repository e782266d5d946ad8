#include "clock.h"

#include <atomic>
#include <limits>

namespace zelkodatastreamconverter {

namespace {

// Milliseconds since the epoch of the fixed time, or this sentinel for the system time.
constexpr qint64 SystemTime = std::numeric_limits<qint64>::min();

std::atomic<qint64>& fixedTime()
{
    static std::atomic<qint64> value(SystemTime);
    return value;
}

} // namespace

QDateTime Clock::currentDateTimeUtc()
{
    qint64 const fixed = fixedTime().load();
    if (fixed == SystemTime) {
        return QDateTime::currentDateTimeUtc();
    }
    return QDateTime::fromMSecsSinceEpoch(fixed, Qt::UTC);
}

QDateTime Clock::currentDateTime()
{
    qint64 const fixed = fixedTime().load();
    if (fixed == SystemTime) {
        return QDateTime::currentDateTime();
    }
    return QDateTime::fromMSecsSinceEpoch(fixed, Qt::LocalTime);
}

void Clock::setFixedTime(QDateTime const& time)
{
    fixedTime().store(time.isValid() ? time.toMSecsSinceEpoch() : SystemTime);
}

void Clock::advance(qint64 milliseconds)
{
    qint64 current = fixedTime().load();
    while (current != SystemTime &&
           !fixedTime().compare_exchange_weak(current, current + milliseconds)) {
    }
}

void Clock::useSystemTime()
{
    fixedTime().store(SystemTime);
}

bool Clock::isFixed()
{
    return fixedTime().load() != SystemTime;
}

Clock::Override::Override(QDateTime const& time) : m_previous(fixedTime().load())
{
    setFixedTime(time);
}

Clock::Override::~Override()
{
    fixedTime().store(m_previous);
}

} // namespace zelkodatastreamconverter
