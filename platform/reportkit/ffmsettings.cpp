#include "ffmsettings.h"

#include "rgexception.h"
#include "xmlreading.h"

#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <cmath>

namespace REPORTKIT {

namespace {

bool usableHertz(double value)
{
    return std::isfinite(value) && value >= 0.0;
}

void checkHertz(bool validate, double hertz, char const* what)
{
    if (validate && !usableHertz(hertz)) {
        throw RGException(QStringLiteral("FFM_Settings: %1 %2 is not a frequency in hertz")
                              .arg(QLatin1String(what))
                              .arg(hertz));
    }
}

QString hertzText(double hertz)
{
    return QString::number(hertz, 'g', 17);
}

} // namespace

void FFM_Settings::SetFrequency(double hertz)
{
    checkHertz(GetValidate(), hertz, "frequency");
    m_frequency.SetValue(hertz);
}

void FFM_Settings::SetBandwidth(double hertz)
{
    checkHertz(GetValidate(), hertz, "bandwidth");
    m_bandwidth.SetValue(hertz);
}

QString FFM_Settings::ElementName() const
{
    return QStringLiteral("FFM_Settings");
}

void FFM_Settings::WriteXml(QXmlStreamWriter& writer) const
{
    writer.writeStartElement(ElementName());
    if (m_frequency.GetValue() != 0.0) {
        writer.writeAttribute(QStringLiteral("frequency"), hertzText(m_frequency.GetValue()));
    }
    if (m_bandwidth.GetValue() != 0.0) {
        writer.writeAttribute(QStringLiteral("bandwidth"), hertzText(m_bandwidth.GetValue()));
    }
    writer.writeEndElement();
}

bool FFM_Settings::ReadXml(QXmlStreamReader& reader, QString& error)
{
    XmlReading in(reader, GetValidate(), error);
    double frequency = 0.0;
    double bandwidth = 0.0;
    if (!in.attributes({QStringLiteral("frequency"), QStringLiteral("bandwidth")}) ||
        !in.optionalDouble(QStringLiteral("frequency"), frequency) ||
        !in.optionalDouble(QStringLiteral("bandwidth"), bandwidth)) {
        return false;
    }
    if (!usableHertz(frequency)) {
        return in.fail(QStringLiteral("frequency must be a non-negative number of hertz"));
    }
    if (!usableHertz(bandwidth)) {
        return in.fail(QStringLiteral("bandwidth must be a non-negative number of hertz"));
    }
    if (!in.skipContent()) {
        return false;
    }
    m_frequency.SetValue(frequency);
    m_bandwidth.SetValue(bandwidth);
    return true;
}

bool FFM_Settings::operator==(FFM_Settings const& other) const
{
    return m_frequency == other.m_frequency && m_bandwidth == other.m_bandwidth;
}

} // namespace REPORTKIT
