#include "payload.h"

#include "utf8xmlwriter.h"
#include "xmltext.h"

#include <QXmlStreamReader>
#include <reportkit/xmlreading.h>

namespace NerikResultDataXml {

void Payload::SetData(QByteArray const& data, unsigned elements, unsigned bitsPerElement)
{
    m_data = data;
    m_elements = elements;
    m_bits = bitsPerElement;
}

void Payload::WriteXml(Utf8XmlWriter& writer) const
{
    writer.writeStartElement(QLatin1String("Payload"));
    if (!m_name.isEmpty()) {
        XmlText::writeTextAttribute(writer, QLatin1String("name"), m_name);
    }
    if (!m_contentCode.isEmpty()) {
        XmlText::writeTextAttribute(writer, QLatin1String("contentCode"), m_contentCode);
    }
    if (m_rtl) {
        writer.writeAttribute(QLatin1String("rtl"), QStringLiteral("true"));
    }
    if (!m_content.isEmpty()) {
        XmlText::writeTextElement(writer, QLatin1String("Content"), m_content);
    }
    if (!m_data.isEmpty() || m_elements != 0 || m_bits != 0) {
        writer.writeStartElement(QLatin1String("Data"));
        writer.writeAttribute(QLatin1String("elements"), m_elements);
        writer.writeAttribute(QLatin1String("bits"), m_bits);
        writer.writeBase64(m_data.constData(), m_data.size());
        writer.writeEndElement();
    }
    writer.writeEndElement();
}

namespace {

bool readUnsigned(QXmlStreamReader& reader, REPORTKIT::XmlReading& in, QString const& name,
                  unsigned& value)
{
    QString text;
    if (!in.requiredText(name, text)) {
        return false;
    }
    bool ok = false;
    value = text.toUInt(&ok);
    return ok || in.fail(QStringLiteral("%1 is not an unsigned integer: \"%2\"").arg(name, text));
}

} // namespace

bool Payload::ReadXml(QXmlStreamReader& reader, QString& error)
{
    REPORTKIT::XmlReading in(reader, true, error);
    Payload read;
    bool present = false;
    if (!in.attributes({QStringLiteral("name"), QStringLiteral("name64"),
                        QStringLiteral("contentCode"), QStringLiteral("contentCode64"),
                        QStringLiteral("rtl")}) ||
        !XmlText::readTextAttribute(reader, in, QStringLiteral("name"), read.m_name, present) ||
        !XmlText::readTextAttribute(reader, in, QStringLiteral("contentCode"), read.m_contentCode,
                                    present) ||
        !in.optionalBool(QStringLiteral("rtl"), read.m_rtl)) {
        return false;
    }
    int next = 0; // Content, then Data, each at most once
    while (in.nextChild()) {
        if (next == 0 && reader.name() == QLatin1String("Content")) {
            if (!in.attributes({}) || !XmlText::readText(reader, in, read.m_content)) {
                return false;
            }
            next = 1;
        } else if (next <= 1 && reader.name() == QLatin1String("Data")) {
            if (!in.attributes({QStringLiteral("elements"), QStringLiteral("bits")}) ||
                !readUnsigned(reader, in, QStringLiteral("elements"), read.m_elements) ||
                !readUnsigned(reader, in, QStringLiteral("bits"), read.m_bits)) {
                return false;
            }
            QString base64;
            if (!in.readText(base64)) {
                return false;
            }
            QByteArray::FromBase64Result const decoded = QByteArray::fromBase64Encoding(
                base64.trimmed().toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
            if (!decoded) {
                return in.fail(QStringLiteral("<Data> is not base64"));
            }
            read.m_data = decoded.decoded;
            next = 2;
        } else {
            return in.fail(QStringLiteral("unexpected element <%1> in <Payload>")
                               .arg(reader.name().toString()));
        }
    }
    if (!in.ok()) {
        return false;
    }
    *this = read;
    return true;
}

bool Payload::operator==(Payload const& other) const
{
    return m_name == other.m_name && m_content == other.m_content &&
           m_contentCode == other.m_contentCode && m_rtl == other.m_rtl && m_data == other.m_data &&
           m_elements == other.m_elements && m_bits == other.m_bits;
}

} // namespace NerikResultDataXml
