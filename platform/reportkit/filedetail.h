#pragma once

#include "frequency.h"

#include <QString>

namespace REPORTKIT {

/// What a produced file holds: receive frequency, file code and, for text records, the
/// channel it was taken from.
class FileDetail
{
public:
    Frequency& GetFrequency() { return m_frequency; }
    Frequency const& GetFrequency() const { return m_frequency; }

    void SetCode(QString const& code) { m_code = code; }
    QString const& GetCode() const { return m_code; }

    void SetChannel(int channel)
    {
        m_channel = channel;
        m_channelSet = true;
    }
    int GetChannel() const { return m_channel; }
    bool IsChannelSet() const { return m_channelSet; }
    void ClearChannel()
    {
        m_channel = 0;
        m_channelSet = false;
    }

    bool operator==(FileDetail const& other) const;
    bool operator!=(FileDetail const& other) const { return !(*this == other); }

private:
    Frequency m_frequency;
    QString m_code;
    int m_channel = 0;
    bool m_channelSet = false;
};

} // namespace REPORTKIT
