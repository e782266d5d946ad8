#pragma once

#include "xmlelementobject.h"

namespace REPORTKIT {

/// The antenna a tuner receives through: its name, its type text and the antenna port
/// (input) of the receiver, counting from 1; 0 means "not given".
///
/// XML form:
///   <AntennaSettings name="HE600" type="Active rod" port="1"/>
/// All attributes are optional; port is a non-negative integer.
class Antenna_Settings : public XmlElementObject
{
public:
    void SetName(QString const& name) { m_name = name; }
    QString const& GetName() const { return m_name; }
    void SetType(QString const& type) { m_type = type; }
    QString const& GetType() const { return m_type; }
    /// Throws RGException for a negative port while validating.
    void SetPort(int port);
    int GetPort() const { return m_port; }

    QString ElementName() const override;
    void WriteXml(QXmlStreamWriter& writer) const override;
    bool ReadXml(QXmlStreamReader& reader, QString& error) override;

    bool operator==(Antenna_Settings const& other) const;
    bool operator!=(Antenna_Settings const& other) const { return !(*this == other); }

private:
    QString m_name;
    QString m_type;
    int m_port = 0;
};

} // namespace REPORTKIT
