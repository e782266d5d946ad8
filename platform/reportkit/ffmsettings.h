#pragma once

#include "frequency.h"
#include "xmlelementobject.h"

namespace REPORTKIT {

/// Settings of the receiver's fixed-frequency mode (FFM): receive frequency and IF
/// bandwidth, both in hertz; 0 means "not given".
///
/// XML form:
///   <FFM_Settings frequency="10000000" bandwidth="2400"/>
/// Both attributes are optional. Negative or non-numeric values are refused.
class FFM_Settings : public XmlElementObject
{
public:
    Frequency& GetFrequency() { return m_frequency; }
    Frequency const& GetFrequency() const { return m_frequency; }
    /// Throws RGException for a negative or non-finite value while validating.
    void SetFrequency(double hertz);

    Frequency& GetBandwidth() { return m_bandwidth; }
    Frequency const& GetBandwidth() const { return m_bandwidth; }
    /// Throws RGException for a negative or non-finite value while validating.
    void SetBandwidth(double hertz);

    QString ElementName() const override;
    void WriteXml(QXmlStreamWriter& writer) const override;
    bool ReadXml(QXmlStreamReader& reader, QString& error) override;

    bool operator==(FFM_Settings const& other) const;
    bool operator!=(FFM_Settings const& other) const { return !(*this == other); }

private:
    Frequency m_frequency;
    Frequency m_bandwidth;
};

} // namespace REPORTKIT
