#pragma once

#include "xmlelementobject.h"

namespace REPORTKIT {

/// Audio output of a tuner: the audio demodulation mode text ("USB", "FM", ...), the sample
/// rate in hertz (0 = not given) and, optionally, a squelch level in dBuV.
///
/// XML form:
///   <Audio_Settings mode="USB" sampleRate="48000" squelch="10.5"/>
/// All attributes are optional; sampleRate is a non-negative integer.
class Audio_Settings : public XmlElementObject
{
public:
    void SetMode(QString const& mode) { m_mode = mode; }
    QString const& GetMode() const { return m_mode; }
    /// Throws RGException for a negative rate while validating.
    void SetSampleRate(int hertz);
    int GetSampleRate() const { return m_sampleRate; }

    void SetSquelch(double level);
    void ClearSquelch();
    double GetSquelch() const { return m_squelch; }
    bool IsSquelchSet() const { return m_squelchSet; }

    QString ElementName() const override;
    void WriteXml(QXmlStreamWriter& writer) const override;
    bool ReadXml(QXmlStreamReader& reader, QString& error) override;

    bool operator==(Audio_Settings const& other) const;
    bool operator!=(Audio_Settings const& other) const { return !(*this == other); }

private:
    QString m_mode;
    int m_sampleRate = 0;
    double m_squelch = 0.0;
    bool m_squelchSet = false;
};

} // namespace REPORTKIT
