#include "demodulatorsettings.h"

#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <cmath>
#include <reportkit/rgexception.h>
#include <reportkit/xmlreading.h>

namespace JobSpec {

namespace {

// Indexed by Demodulator_Settings::Mode.
char const* const modeNames[] = {"UNKNOWN", "AM", "FM", "PM",    "USB", "LSB",
                                 "ISB",     "CW", "IQ", "PULSE", "TV"};
static_assert(sizeof(modeNames) / sizeof(modeNames[0]) == Demodulator_Settings::ModeCount,
              "one name per mode");

} // namespace

QString Demodulator_Settings::ModeToName(Mode mode)
{
    if (mode < Unknown || mode >= ModeCount) {
        mode = Unknown;
    }
    return QLatin1String(modeNames[mode]);
}

Demodulator_Settings::Mode Demodulator_Settings::NameToMode(QString const& name, bool* ok)
{
    for (int mode = Unknown; mode < ModeCount; ++mode) {
        if (name == QLatin1String(modeNames[mode])) {
            if (ok) {
                *ok = true;
            }
            return static_cast<Mode>(mode);
        }
    }
    if (ok) {
        *ok = false;
    }
    return Unknown;
}

void Demodulator_Settings::SetBandwidth(double hertz)
{
    if (GetValidate() && (!std::isfinite(hertz) || hertz < 0.0)) {
        throw REPORTKIT::RGException(
            QStringLiteral("Demodulator_Settings: bandwidth %1 is not usable").arg(hertz));
    }
    m_bandwidth.SetValue(hertz);
}

void Demodulator_Settings::SetValidate(bool validate)
{
    XmlElementObject::SetValidate(validate);
    m_decoder.SetValidate(validate);
}

QString Demodulator_Settings::ElementName() const
{
    return QStringLiteral("Demodulator_Settings");
}

void Demodulator_Settings::WriteXml(QXmlStreamWriter& writer) const
{
    writer.writeStartElement(ElementName());
    if (m_mode != Unknown) {
        writer.writeAttribute(QStringLiteral("mode"), ModeToName(m_mode));
    }
    if (m_bandwidth.GetValue() != 0.0) {
        writer.writeAttribute(QStringLiteral("bandwidth"),
                              QString::number(m_bandwidth.GetValue(), 'g', 17));
    }
    if (!m_alphabet.isEmpty()) {
        writer.writeAttribute(QStringLiteral("alphabet"), m_alphabet);
    }
    if (!m_transmissionSystem.isEmpty()) {
        writer.writeAttribute(QStringLiteral("transmissionSystem"), m_transmissionSystem);
    }
    if (m_decoder.IsValueSet()) {
        m_decoder.WriteXml(writer);
    }
    writer.writeEndElement();
}

bool Demodulator_Settings::ReadXml(QXmlStreamReader& reader, QString& error)
{
    REPORTKIT::XmlReading in(reader, GetValidate(), error);
    double bandwidth = 0.0;
    if (!in.attributes({QStringLiteral("mode"), QStringLiteral("bandwidth"),
                        QStringLiteral("alphabet"), QStringLiteral("transmissionSystem")}) ||
        !in.optionalDouble(QStringLiteral("bandwidth"), bandwidth)) {
        return false;
    }
    if (!std::isfinite(bandwidth) || bandwidth < 0.0) {
        return in.fail(QStringLiteral("bandwidth must be a non-negative number of hertz"));
    }
    Mode mode = Unknown;
    QXmlStreamAttributes const attributes = reader.attributes();
    if (attributes.hasAttribute(QStringLiteral("mode"))) {
        QString const name = attributes.value(QStringLiteral("mode")).toString();
        bool known = false;
        mode = NameToMode(name, &known);
        if (!known) {
            return in.fail(QStringLiteral("unknown demodulation mode \"%1\"").arg(name));
        }
    }
    Demodulator_Settings read;
    read.SetValidate(GetValidate());
    read.m_mode = mode;
    read.m_bandwidth.SetValue(bandwidth);
    read.m_alphabet = attributes.value(QStringLiteral("alphabet")).toString();
    read.m_transmissionSystem = attributes.value(QStringLiteral("transmissionSystem")).toString();
    bool haveDecoder = false;
    while (in.nextChild()) {
        if (reader.name() != read.m_decoder.ElementName() || haveDecoder) {
            if (!in.unexpectedElement()) {
                return false;
            }
            continue;
        }
        haveDecoder = true;
        if (!read.m_decoder.ReadXml(reader, error)) {
            return false;
        }
    }
    if (!in.ok()) {
        return false;
    }
    *this = read;
    return true;
}

bool Demodulator_Settings::operator==(Demodulator_Settings const& other) const
{
    return m_mode == other.m_mode && m_bandwidth == other.m_bandwidth &&
           m_decoder == other.m_decoder && m_alphabet == other.m_alphabet &&
           m_transmissionSystem == other.m_transmissionSystem;
}

} // namespace JobSpec
