#include "station.h"

#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <cmath>
#include <reportkit/rgexception.h>
#include <reportkit/xmlreading.h>
#include <reportkit/xmltime.h>

namespace JobSpec {

namespace {

bool inRange(double value, double limit)
{
    return std::isfinite(value) && value >= -limit && value <= limit;
}

QString degreesText(double value)
{
    return QString::number(value, 'g', 17);
}

} // namespace

void Station::SetName(QString const& name)
{
    m_name = name;
    m_nameSet = true;
}

void Station::SetLatitude(double degrees)
{
    if (GetValidate() && !inRange(degrees, 90.0)) {
        throw REPORTKIT::RGException(
            QStringLiteral("Station: latitude %1 is outside -90..90").arg(degrees));
    }
    m_latitude = degrees;
    m_latitudeSet = true;
}

void Station::SetLongitude(double degrees)
{
    if (GetValidate() && !inRange(degrees, 180.0)) {
        throw REPORTKIT::RGException(
            QStringLiteral("Station: longitude %1 is outside -180..180").arg(degrees));
    }
    m_longitude = degrees;
    m_longitudeSet = true;
}

QString Station::ElementName() const
{
    return QStringLiteral("Station");
}

void Station::WriteXml(QXmlStreamWriter& writer) const
{
    writer.writeStartElement(ElementName());
    writer.writeAttribute(QStringLiteral("id"), QString::number(m_id));
    if (m_timeStamp.isValid()) {
        writer.writeAttribute(QStringLiteral("timeStamp"), REPORTKIT::XmlTime::toText(m_timeStamp));
    }
    if (m_nameSet) {
        writer.writeAttribute(QStringLiteral("name"), m_name);
    }
    if (m_latitudeSet) {
        writer.writeAttribute(QStringLiteral("latitude"), degreesText(m_latitude));
    }
    if (m_longitudeSet) {
        writer.writeAttribute(QStringLiteral("longitude"), degreesText(m_longitude));
    }
    writer.writeEndElement();
}

bool Station::ReadXml(QXmlStreamReader& reader, QString& error)
{
    REPORTKIT::XmlReading in(reader, GetValidate(), error);
    Station read;
    read.SetValidate(GetValidate());
    QXmlStreamAttributes const attributes = reader.attributes();
    if (!in.attributes({QStringLiteral("id"), QStringLiteral("timeStamp"), QStringLiteral("name"),
                        QStringLiteral("latitude"), QStringLiteral("longitude")}) ||
        !in.requiredInt(QStringLiteral("id"), read.m_id) ||
        !in.optionalTime(QStringLiteral("timeStamp"), read.m_timeStamp) ||
        !in.optionalDouble(QStringLiteral("latitude"), read.m_latitude) ||
        !in.optionalDouble(QStringLiteral("longitude"), read.m_longitude)) {
        return false;
    }
    read.m_nameSet = attributes.hasAttribute(QStringLiteral("name"));
    read.m_name = attributes.value(QStringLiteral("name")).toString();
    read.m_latitudeSet = attributes.hasAttribute(QStringLiteral("latitude"));
    read.m_longitudeSet = attributes.hasAttribute(QStringLiteral("longitude"));
    if (read.m_latitudeSet && !inRange(read.m_latitude, 90.0)) {
        return in.fail(QStringLiteral("latitude must lie in -90..90"));
    }
    if (read.m_longitudeSet && !inRange(read.m_longitude, 180.0)) {
        return in.fail(QStringLiteral("longitude must lie in -180..180"));
    }
    if (!in.skipContent()) {
        return false;
    }
    *this = read;
    return true;
}

bool Station::operator==(Station const& other) const
{
    return m_id == other.m_id && m_timeStamp == other.m_timeStamp && m_nameSet == other.m_nameSet &&
           m_name == other.m_name && m_latitudeSet == other.m_latitudeSet &&
           (!m_latitudeSet || m_latitude == other.m_latitude) &&
           m_longitudeSet == other.m_longitudeSet &&
           (!m_longitudeSet || m_longitude == other.m_longitude);
}

} // namespace JobSpec
