#pragma once
// Values that render themselves as text: positions and dates of decoded PDUs. A field
// container of representation PDU_REPRESENTATION_POSITION or PDU_REPRESENTATION_DATETIME holds pointers to them.

#include <memory>
#include <string>

class CPDU_DisplayObject
{
public:
    virtual ~CPDU_DisplayObject();
    virtual std::wstring toWString() const = 0;
    virtual std::unique_ptr<CPDU_DisplayObject> clone() const = 0;
};

/// A position in ten-thousandths of a minute of arc, as AIS sends it. Renders as
/// "N 53°32'10.5'' E 9°58'0''": hemisphere, whole degrees, whole minutes, seconds with up to
/// three decimals and no trailing zeros.
class CPDU_Position : public CPDU_DisplayObject
{
public:
    CPDU_Position(long long latitudeTenThousandthMinutes, long long longitudeTenThousandthMinutes);
    std::wstring toWString() const override;
    std::unique_ptr<CPDU_DisplayObject> clone() const override;

    double latitudeDegrees() const;
    double longitudeDegrees() const;

    /// One coordinate: hemisphere letter, then degrees, minutes and seconds.
    static std::wstring coordinate(long long tenThousandthMinutes, wchar_t positive,
                                   wchar_t negative);

private:
    long long m_latitude;
    long long m_longitude;
};

/// A UTC date and time whose parts may each be missing. Renders as "2024-05-17 08:30:00 UTC"
/// with question marks for a missing part ("????-05-17 ??:30:00 UTC").
class CPDU_DateTime : public CPDU_DisplayObject
{
public:
    /// A part outside its range (year 0, month 0 or above 12, day 0 or above 31, hour above
    /// 23, minute or second above 59) counts as missing.
    CPDU_DateTime(int year, int month, int day, int hour, int minute, int second);
    std::wstring toWString() const override;
    std::unique_ptr<CPDU_DisplayObject> clone() const override;

private:
    int m_parts[6];
};
