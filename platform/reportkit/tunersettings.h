#pragma once

#include "antennasettings.h"
#include "audiosettings.h"
#include "ffmsettings.h"

namespace REPORTKIT {

/// Everything that describes how the receiver was tuned: the device name, the RF
/// attenuation in dB, and the antenna, audio and FFM settings.
///
/// XML form (every part optional; the three children in this order):
///   <Tuner_Settings device="EB500" attenuation="10">
///     <AntennaSettings .../>
///     <Audio_Settings .../>
///     <FFM_Settings .../>
///   </Tuner_Settings>
class Tuner_Settings : public XmlElementObject
{
public:
    void SetDevice(QString const& device) { m_device = device; }
    QString const& GetDevice() const { return m_device; }
    /// Throws RGException for a negative or non-finite value while validating.
    void SetAttenuation(double decibel);
    double GetAttenuation() const { return m_attenuation; }

    Antenna_Settings& GetAntennaSettings() { return m_antenna; }
    Antenna_Settings const& GetAntennaSettings() const { return m_antenna; }
    void SetAntennaSettings(Antenna_Settings const& antenna) { m_antenna = antenna; }

    Audio_Settings& GetAudio_Settings() { return m_audio; }
    Audio_Settings const& GetAudio_Settings() const { return m_audio; }
    void SetAudio_Settings(Audio_Settings const& audio) { m_audio = audio; }

    FFM_Settings& GetFFM_Settings() { return m_ffm; }
    FFM_Settings const& GetFFM_Settings() const { return m_ffm; }
    void SetFFM_Settings(FFM_Settings const& ffm) { m_ffm = ffm; }

    /// Also switches validation of the three parts.
    void SetValidate(bool validate) override;

    QString ElementName() const override;
    void WriteXml(QXmlStreamWriter& writer) const override;
    bool ReadXml(QXmlStreamReader& reader, QString& error) override;

    bool operator==(Tuner_Settings const& other) const;
    bool operator!=(Tuner_Settings const& other) const { return !(*this == other); }

private:
    QString m_device;
    double m_attenuation = 0.0;
    Antenna_Settings m_antenna;
    Audio_Settings m_audio;
    FFM_Settings m_ffm;
};

} // namespace REPORTKIT
