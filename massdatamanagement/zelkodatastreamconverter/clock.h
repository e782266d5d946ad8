#pragma once

#include <QDateTime>

namespace zelkodatastreamconverter {

/// The wall clock of the library.
///
/// Every rule of the library that depends on the current time asks this class instead of
/// QDateTime directly: file start and stop times and the names made from them, the due time
/// of pending result-file changes, the settings-change rule and idle processing of the result
/// models, and the expiry of station data. Production code only calls currentDateTimeUtc() or
/// currentDateTime(); they return the system time unless a fixed time has been set.
///
/// Tests (and tools that replay recordings) fix the time instead of sleeping:
///
///     Clock::Override const clock(QDateTime(QDate(2024, 1, 31), QTime(23, 59, 59)));
///     model.majorSettingsChanged();
///     Clock::advance(1000);          // one second later, without waiting
///     model.doIdleProcessing();
///
/// The fixed time stays where it is set until advance() moves it or it is released; it is
/// process-wide and may be read from any thread (one atomic value, no lock).
class Clock
{
public:
    /// The current time in UTC (Qt::UTC), millisecond resolution.
    static QDateTime currentDateTimeUtc();
    /// The current time in the machine's local time (Qt::LocalTime).
    static QDateTime currentDateTime();

    /// Freezes the clock at time (UTC or local; an invalid time releases the clock).
    static void setFixedTime(QDateTime const& time);
    /// Moves a fixed clock by milliseconds (negative moves it back); no effect while the
    /// clock follows the system time.
    static void advance(qint64 milliseconds);
    /// Returns to the system time.
    static void useSystemTime();
    /// Whether a fixed time is set.
    static bool isFixed();

    /// Fixes the clock for the lifetime of the object and restores the previous state (fixed
    /// time or system time) afterwards.
    class Override
    {
    public:
        explicit Override(QDateTime const& time);
        ~Override();
        Override(Override const&) = delete;
        Override& operator=(Override const&) = delete;

    private:
        qint64 m_previous;
    };

private:
    Clock() = delete;
};

} // namespace zelkodatastreamconverter
