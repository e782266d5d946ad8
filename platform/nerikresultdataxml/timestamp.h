#pragma once

#include <QDateTime>

namespace NerikResultDataXml {

/// One time mark of a text data block: the text received at GetTime() begins at character
/// GetPosition() of the block's content and at code unit GetRawPosition() of its raw
/// content.
///
/// XML form: <TimeStamp time="2024-01-31T23:59:59.123Z" position="12" rawPosition="12"/>
class TimeStamp
{
public:
    TimeStamp() = default;
    TimeStamp(QDateTime const& time, int position, int rawPosition = 0)
        : m_time(time), m_position(position), m_rawPosition(rawPosition)
    {
    }

    QDateTime const& GetTime() const { return m_time; }
    void SetTime(QDateTime const& time) { m_time = time; }
    int GetPosition() const { return m_position; }
    void SetPosition(int position) { m_position = position; }
    int GetRawPosition() const { return m_rawPosition; }
    void SetRawPosition(int position) { m_rawPosition = position; }

    bool operator==(TimeStamp const& other) const
    {
        return m_time == other.m_time && m_position == other.m_position &&
               m_rawPosition == other.m_rawPosition;
    }
    bool operator!=(TimeStamp const& other) const { return !(*this == other); }

private:
    QDateTime m_time;
    int m_position = 0;
    int m_rawPosition = 0;
};

} // namespace NerikResultDataXml
