#include "cpdu_displayobject.h"

#include <cstdio>
#include <cstdlib>

CPDU_DisplayObject::~CPDU_DisplayObject() = default;

CPDU_Position::CPDU_Position(long long latitudeTenThousandthMinutes,
                             long long longitudeTenThousandthMinutes)
    : m_latitude(latitudeTenThousandthMinutes), m_longitude(longitudeTenThousandthMinutes)
{
}

std::wstring CPDU_Position::coordinate(long long tenThousandthMinutes, wchar_t positive,
                                       wchar_t negative)
{
    long long const magnitude = std::llabs(tenThousandthMinutes);
    long long const degrees = magnitude / 600000;
    long long const minutes = magnitude % 600000 / 10000;
    // A ten-thousandth of a minute is 6 ms of arc, so the seconds are exact in milliseconds.
    long long const milliseconds = magnitude % 10000 * 6;
    wchar_t text[64];
    std::swprintf(text, 64, L"%lc %lld\u00B0%lld'%lld", tenThousandthMinutes < 0 ? negative : positive,
                  degrees, minutes, milliseconds / 1000);
    std::wstring result(text);
    if (long long fraction = milliseconds % 1000) {
        wchar_t digits[8];
        std::swprintf(digits, 8, L".%03lld", fraction);
        std::wstring decimals(digits);
        decimals.erase(decimals.find_last_not_of(L'0') + 1);
        result += decimals;
    }
    return result + L"''";
}

std::wstring CPDU_Position::toWString() const
{
    return coordinate(m_latitude, L'N', L'S') + L' ' + coordinate(m_longitude, L'E', L'W');
}

std::unique_ptr<CPDU_DisplayObject> CPDU_Position::clone() const
{
    return std::make_unique<CPDU_Position>(*this);
}

double CPDU_Position::latitudeDegrees() const
{
    return double(m_latitude) / 600000.0;
}

double CPDU_Position::longitudeDegrees() const
{
    return double(m_longitude) / 600000.0;
}

CPDU_DateTime::CPDU_DateTime(int year, int month, int day, int hour, int minute, int second)
    : m_parts{year < 1 ? -1 : year,
              month < 1 || month > 12 ? -1 : month,
              day < 1 || day > 31 ? -1 : day,
              hour < 0 || hour > 23 ? -1 : hour,
              minute < 0 || minute > 59 ? -1 : minute,
              second < 0 || second > 59 ? -1 : second}
{
}

std::wstring CPDU_DateTime::toWString() const
{
    static wchar_t const* const separators[] = {L"", L"-", L"-", L" ", L":", L":"};
    std::wstring text;
    for (int i = 0; i < 6; ++i) {
        int const width = i == 0 ? 4 : 2;
        text += separators[i];
        if (m_parts[i] < 0) {
            text.append(std::size_t(width), L'?');
        } else {
            wchar_t digits[8];
            std::swprintf(digits, 8, L"%0*d", width, m_parts[i]);
            text += digits;
        }
    }
    return text + L" UTC";
}

std::unique_ptr<CPDU_DisplayObject> CPDU_DateTime::clone() const
{
    return std::make_unique<CPDU_DateTime>(*this);
}
