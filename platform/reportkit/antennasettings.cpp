#include "antennasettings.h"

#include "rgexception.h"
#include "xmlreading.h"

#include <QXmlStreamReader>
#include <QXmlStreamWriter>

namespace REPORTKIT {

void Antenna_Settings::SetPort(int port)
{
    if (GetValidate() && port < 0) {
        throw RGException(QStringLiteral("AntennaSettings: port %1 is negative").arg(port));
    }
    m_port = port;
}

QString Antenna_Settings::ElementName() const
{
    return QStringLiteral("AntennaSettings");
}

void Antenna_Settings::WriteXml(QXmlStreamWriter& writer) const
{
    writer.writeStartElement(ElementName());
    if (!m_name.isEmpty()) {
        writer.writeAttribute(QStringLiteral("name"), m_name);
    }
    if (!m_type.isEmpty()) {
        writer.writeAttribute(QStringLiteral("type"), m_type);
    }
    if (m_port != 0) {
        writer.writeAttribute(QStringLiteral("port"), QString::number(m_port));
    }
    writer.writeEndElement();
}

bool Antenna_Settings::ReadXml(QXmlStreamReader& reader, QString& error)
{
    XmlReading in(reader, GetValidate(), error);
    int port = 0;
    bool portSet = false;
    if (!in.attributes({QStringLiteral("name"), QStringLiteral("type"), QStringLiteral("port")}) ||
        !in.optionalInt(QStringLiteral("port"), port, portSet)) {
        return false;
    }
    if (port < 0) {
        return in.fail(QStringLiteral("port must not be negative"));
    }
    QString const name = reader.attributes().value(QStringLiteral("name")).toString();
    QString const type = reader.attributes().value(QStringLiteral("type")).toString();
    if (!in.skipContent()) {
        return false;
    }
    m_name = name;
    m_type = type;
    m_port = port;
    return true;
}

bool Antenna_Settings::operator==(Antenna_Settings const& other) const
{
    return m_name == other.m_name && m_type == other.m_type && m_port == other.m_port;
}

} // namespace REPORTKIT
