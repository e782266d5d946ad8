#include "tunersettings.h"

#include "rgexception.h"
#include "xmlreading.h"

#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <cmath>

namespace REPORTKIT {

void Tuner_Settings::SetAttenuation(double decibel)
{
    if (GetValidate() && (!std::isfinite(decibel) || decibel < 0.0)) {
        throw RGException(
            QStringLiteral("Tuner_Settings: attenuation %1 dB is not usable").arg(decibel));
    }
    m_attenuation = decibel;
}

void Tuner_Settings::SetValidate(bool validate)
{
    XmlElementObject::SetValidate(validate);
    m_antenna.SetValidate(validate);
    m_audio.SetValidate(validate);
    m_ffm.SetValidate(validate);
}

QString Tuner_Settings::ElementName() const
{
    return QStringLiteral("Tuner_Settings");
}

void Tuner_Settings::WriteXml(QXmlStreamWriter& writer) const
{
    writer.writeStartElement(ElementName());
    if (!m_device.isEmpty()) {
        writer.writeAttribute(QStringLiteral("device"), m_device);
    }
    if (m_attenuation != 0.0) {
        writer.writeAttribute(QStringLiteral("attenuation"),
                              QString::number(m_attenuation, 'g', 17));
    }
    m_antenna.WriteXml(writer);
    m_audio.WriteXml(writer);
    m_ffm.WriteXml(writer);
    writer.writeEndElement();
}

bool Tuner_Settings::ReadXml(QXmlStreamReader& reader, QString& error)
{
    XmlReading in(reader, GetValidate(), error);
    double attenuation = 0.0;
    if (!in.attributes({QStringLiteral("device"), QStringLiteral("attenuation")}) ||
        !in.optionalDouble(QStringLiteral("attenuation"), attenuation)) {
        return false;
    }
    if (!std::isfinite(attenuation) || attenuation < 0.0) {
        return in.fail(QStringLiteral("attenuation must be a non-negative number of dB"));
    }
    Tuner_Settings read;
    read.SetValidate(GetValidate());
    read.m_device = reader.attributes().value(QStringLiteral("device")).toString();
    read.m_attenuation = attenuation;
    // The children keep a fixed order, each at most once, as the schema says.
    if (!ReadChildrenInOrder(in, reader, {&read.m_antenna, &read.m_audio, &read.m_ffm}, error)) {
        return false;
    }
    *this = read;
    return true;
}

bool Tuner_Settings::operator==(Tuner_Settings const& other) const
{
    return m_device == other.m_device && m_attenuation == other.m_attenuation &&
           m_antenna == other.m_antenna && m_audio == other.m_audio && m_ffm == other.m_ffm;
}

} // namespace REPORTKIT
