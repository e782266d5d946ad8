#include "xmltext.h"

#include "utf8xmlwriter.h"

#include <QXmlStreamReader>
#include <QtEndian>
#include <reportkit/xmlreading.h>

namespace NerikResultDataXml {

namespace {

QString const cElement = QStringLiteral("c");
QString const uAttribute = QStringLiteral("u");

} // namespace

bool XmlText::isXmlSafe(QString const& text)
{
    ushort const* units = text.utf16();
    int const size = text.size();
    for (int i = 0; i < size; ++i) {
        ushort const u = units[i];
        if (u >= 0x20 && u < 0xD800) {
            continue;
        }
        if (u < 0x20) {
            if (u == '\t' || u == '\n' || u == '\r') {
                continue;
            }
            return false;
        }
        if (QChar::isHighSurrogate(u) && i + 1 < size && QChar::isLowSurrogate(units[i + 1])) {
            ++i;
            continue;
        }
        if (u <= 0xDFFF || u >= 0xFFFE) { // a lone surrogate or a noncharacter
            return false;
        }
    }
    return true;
}

void XmlText::writeTextAndEnd(Utf8XmlWriter& writer, QString const& text)
{
    writer.writeText(text);
    writer.writeEndElement();
}

namespace {

QByteArray toLittleEndianBytes(QString const& text)
{
    QByteArray bytes(text.size() * 2, Qt::Uninitialized);
    ushort const* units = text.utf16();
    uchar* out = reinterpret_cast<uchar*>(bytes.data());
    for (int i = 0; i < text.size(); ++i) {
        qToLittleEndian<quint16>(units[i], out + 2 * i);
    }
    return bytes;
}

} // namespace

void XmlText::writeTextElement(Utf8XmlWriter& writer, QLatin1String name, QString const& text)
{
    writer.writeStartElement(name);
    writeTextAndEnd(writer, text);
}

void XmlText::writeTextAttribute(Utf8XmlWriter& writer, QLatin1String name, QString const& text)
{
    if (isXmlSafe(text)) {
        writer.writeAttribute(name, text);
    } else {
        QByteArray const encodedName = QByteArray(name.data(), name.size()) + "64";
        writer.writeAttribute(QLatin1String(encodedName), QString::fromLatin1(toBase64(text)));
    }
}

bool XmlText::readText(QXmlStreamReader& reader, REPORTKIT::XmlReading& in, QString& text)
{
    text.clear();
    int depth = 0;
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::Characters:
            if (depth > 0) {
                return in.fail(QStringLiteral("text inside <c>"));
            }
            text.append(reader.text());
            break;
        case QXmlStreamReader::EntityReference:
            return in.fail(QStringLiteral("unknown entity &%1;").arg(reader.name().toString()));
        case QXmlStreamReader::StartElement: {
            if (depth > 0 || reader.name() != cElement) {
                return in.fail(QStringLiteral("unexpected element <%1> in text")
                                   .arg(reader.name().toString()));
            }
            QStringRef const hex = reader.attributes().value(uAttribute);
            bool ok = hex.size() == 4;
            uint const code = ok ? hex.toUInt(&ok, 16) : 0;
            if (!ok || reader.attributes().size() != 1) {
                return in.fail(QStringLiteral("<c> needs exactly the attribute u with four hex "
                                              "digits"));
            }
            text.append(QChar(static_cast<ushort>(code)));
            ++depth;
            break;
        }
        case QXmlStreamReader::EndElement:
            if (depth == 0) {
                return true;
            }
            --depth;
            break;
        case QXmlStreamReader::Comment:
        case QXmlStreamReader::ProcessingInstruction:
            break;
        default:
            return in.ok() && in.fail(QStringLiteral("unexpected end of text"));
        }
    }
    return in.ok() && in.fail(QStringLiteral("unexpected end of document"));
}

bool XmlText::readTextAttribute(QXmlStreamReader& reader, REPORTKIT::XmlReading& in,
                                QString const& name, QString& value, bool& present)
{
    QXmlStreamAttributes const attributes = reader.attributes();
    QString const encodedName = name + QLatin1String("64");
    bool const plain = attributes.hasAttribute(name);
    bool const encoded = attributes.hasAttribute(encodedName);
    present = plain || encoded;
    if (plain && encoded) {
        return in.fail(QStringLiteral("both %1 and %2 given").arg(name, encodedName));
    }
    if (plain) {
        value = attributes.value(name).toString();
        return true;
    }
    if (!encoded) {
        value.clear();
        return true;
    }
    if (!fromBase64(attributes.value(encodedName).toLatin1(), value)) {
        return in.fail(QStringLiteral("%1 is not base64 of UTF-16 code units").arg(encodedName));
    }
    return true;
}

void XmlText::writeBase64Element(Utf8XmlWriter& writer, QLatin1String name, QString const& text)
{
    writer.writeStartElement(name);
#if Q_BYTE_ORDER == Q_LITTLE_ENDIAN
    // The code units in memory already are the UTF-16LE bytes.
    writer.writeBase64(reinterpret_cast<char const*>(text.utf16()), qint64(text.size()) * 2);
#else
    QByteArray const bytes = toLittleEndianBytes(text);
    writer.writeBase64(bytes.constData(), bytes.size());
#endif
    writer.writeEndElement();
}

QByteArray XmlText::toBase64(QString const& text)
{
    return toLittleEndianBytes(text).toBase64();
}

bool XmlText::fromBase64(QByteArray const& base64, QString& text)
{
    QByteArray::FromBase64Result const decoded =
        QByteArray::fromBase64Encoding(base64.trimmed(), QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded || decoded.decoded.size() % 2 != 0) {
        return false;
    }
    QByteArray const& bytes = decoded.decoded;
    int const size = bytes.size() / 2;
    text.resize(size);
    QChar* units = text.data();
    uchar const* in = reinterpret_cast<uchar const*>(bytes.constData());
    for (int i = 0; i < size; ++i) {
        units[i] = QChar(qFromLittleEndian<quint16>(in + 2 * i));
    }
    return true;
}

} // namespace NerikResultDataXml
