#include "audiosettings.h"

#include "rgexception.h"
#include "xmlreading.h"

#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <cmath>

namespace REPORTKIT {

void Audio_Settings::SetSampleRate(int hertz)
{
    if (GetValidate() && hertz < 0) {
        throw RGException(QStringLiteral("Audio_Settings: sample rate %1 is negative").arg(hertz));
    }
    m_sampleRate = hertz;
}

void Audio_Settings::SetSquelch(double level)
{
    if (GetValidate() && !std::isfinite(level)) {
        throw RGException(QStringLiteral("Audio_Settings: squelch level is not a number"));
    }
    m_squelch = level;
    m_squelchSet = true;
}

void Audio_Settings::ClearSquelch()
{
    m_squelch = 0.0;
    m_squelchSet = false;
}

QString Audio_Settings::ElementName() const
{
    return QStringLiteral("Audio_Settings");
}

void Audio_Settings::WriteXml(QXmlStreamWriter& writer) const
{
    writer.writeStartElement(ElementName());
    if (!m_mode.isEmpty()) {
        writer.writeAttribute(QStringLiteral("mode"), m_mode);
    }
    if (m_sampleRate != 0) {
        writer.writeAttribute(QStringLiteral("sampleRate"), QString::number(m_sampleRate));
    }
    if (m_squelchSet) {
        writer.writeAttribute(QStringLiteral("squelch"), QString::number(m_squelch, 'g', 17));
    }
    writer.writeEndElement();
}

bool Audio_Settings::ReadXml(QXmlStreamReader& reader, QString& error)
{
    XmlReading in(reader, GetValidate(), error);
    int rate = 0;
    bool rateSet = false;
    double squelch = 0.0;
    bool const squelchSet = reader.attributes().hasAttribute(QStringLiteral("squelch"));
    if (!in.attributes(
            {QStringLiteral("mode"), QStringLiteral("sampleRate"), QStringLiteral("squelch")}) ||
        !in.optionalInt(QStringLiteral("sampleRate"), rate, rateSet) ||
        !in.optionalDouble(QStringLiteral("squelch"), squelch)) {
        return false;
    }
    if (rate < 0) {
        return in.fail(QStringLiteral("sampleRate must not be negative"));
    }
    if (!std::isfinite(squelch)) {
        return in.fail(QStringLiteral("squelch is not a finite number"));
    }
    QString const mode = reader.attributes().value(QStringLiteral("mode")).toString();
    if (!in.skipContent()) {
        return false;
    }
    m_mode = mode;
    m_sampleRate = rate;
    m_squelch = squelch;
    m_squelchSet = squelchSet;
    return true;
}

bool Audio_Settings::operator==(Audio_Settings const& other) const
{
    return m_mode == other.m_mode && m_sampleRate == other.m_sampleRate &&
           m_squelchSet == other.m_squelchSet && (!m_squelchSet || m_squelch == other.m_squelch);
}

} // namespace REPORTKIT
