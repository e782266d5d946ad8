#pragma once

#include "antennasettings.h"
#include "demodulatorsettings.h"
#include "valuelist.h"

#include <reportkit/tunersettings.h>

namespace JobSpec {

/// The settings under which a recording was made: what a user writes into a job settings
/// file by hand (see data/jobsettings-example.xml and schemas/jobsettings.xsd).
///
/// XML form (every part optional; the children in this order):
///   <JobSettings name="Night watch 12 MHz">
///     <Tuner_Settings device="EB500" attenuation="10">
///       <AntennaSettings name="HE600" port="1"/>
///       <Audio_Settings mode="USB" sampleRate="48000"/>
///       <FFM_Settings frequency="12579000" bandwidth="2400"/>
///     </Tuner_Settings>
///     <Demodulator_Settings mode="USB" transmissionSystem="AIS">...</Demodulator_Settings>
///     <ChannelSelection><Value>3</Value></ChannelSelection>
///   </JobSettings>
///
/// The antenna, audio and FFM settings live inside the tuner settings; their getters here are
/// shortcuts to those parts.
class Settings : public REPORTKIT::XmlElementObject
{
public:
    /// The job's name; free text, empty when not given.
    void SetName(QString const& name) { m_name = name; }
    QString const& GetName() const { return m_name; }

    REPORTKIT::Tuner_Settings& GetTuner_Settings() { return m_tuner; }
    REPORTKIT::Tuner_Settings const& GetTuner_Settings() const { return m_tuner; }
    void SetTuner_Settings(REPORTKIT::Tuner_Settings const& tuner) { m_tuner = tuner; }

    /// The tuner's FFM settings (receive frequency and bandwidth).
    REPORTKIT::FFM_Settings& GetFFM_Settings() { return m_tuner.GetFFM_Settings(); }
    REPORTKIT::FFM_Settings const& GetFFM_Settings() const { return m_tuner.GetFFM_Settings(); }
    void SetFFM_Settings(REPORTKIT::FFM_Settings const& ffm) { m_tuner.SetFFM_Settings(ffm); }

    /// The tuner's antenna.
    AntennaSettings GetAntennaSettings() const { return m_tuner.GetAntennaSettings(); }
    void SetAntennaSettings(REPORTKIT::Antenna_Settings const& antenna)
    {
        m_tuner.SetAntennaSettings(antenna);
    }

    /// The tuner's audio settings.
    REPORTKIT::Audio_Settings& GetAudio_Settings() { return m_tuner.GetAudio_Settings(); }
    REPORTKIT::Audio_Settings const& GetAudio_Settings() const
    {
        return m_tuner.GetAudio_Settings();
    }
    void SetAudio_Settings(REPORTKIT::Audio_Settings const& audio)
    {
        m_tuner.SetAudio_Settings(audio);
    }

    Demodulator_Settings& GetDemodulator_Settings() { return m_demodulator; }
    Demodulator_Settings const& GetDemodulator_Settings() const { return m_demodulator; }
    void SetDemodulator_Settings(Demodulator_Settings const& demodulator)
    {
        m_demodulator = demodulator;
    }

    ChannelSelection& GetChannelSelection() { return m_channels; }
    ChannelSelection const& GetChannelSelection() const { return m_channels; }
    void SetChannelSelection(ChannelSelection const& channels) { m_channels = channels; }

    /// Reads a job settings file (UTF-8 or as its XML declaration says). Returns false when
    /// the file cannot be read or is not a valid job settings document; LastXmlError() then
    /// names the file and the reason (with line and column for XML errors).
    bool LoadFile(QString const& path);
    /// Writes GetXmlString() to path as UTF-8; false when it cannot, with the reason in
    /// error (if given).
    bool SaveFile(QString const& path, QString* error = nullptr) const;

    void SetValidate(bool validate) override;

    QString ElementName() const override;
    void WriteXml(QXmlStreamWriter& writer) const override;
    bool ReadXml(QXmlStreamReader& reader, QString& error) override;

    bool operator==(Settings const& other) const;
    bool operator!=(Settings const& other) const { return !(*this == other); }

private:
    QString m_name;
    REPORTKIT::Tuner_Settings m_tuner;
    Demodulator_Settings m_demodulator;
    ChannelSelection m_channels;
};

} // namespace JobSpec
