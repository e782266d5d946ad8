#include "xmltext.h"

#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <QtEndian>
#include <algorithm>
#include <array>
#include <reportkit/xmlreading.h>

namespace NerikResultDataXml {

namespace {

enum class Unit
{
    Plain,
    CarriageReturn,
    Escape
};

// Classifies the code unit at i; a valid surrogate pair counts as plain and advances i.
inline Unit classify(ushort const* units, int size, int& i)
{
    ushort const u = units[i];
    if (u >= 0x20 && u < 0xD800) {
        return Unit::Plain;
    }
    if (u < 0x20) {
        if (u == 0x09 || u == 0x0A) {
            return Unit::Plain;
        }
        return u == 0x0D ? Unit::CarriageReturn : Unit::Escape;
    }
    if (u <= 0xDBFF) { // high surrogate: plain only with a low one after it
        if (i + 1 < size && units[i + 1] >= 0xDC00 && units[i + 1] <= 0xDFFF) {
            ++i;
            return Unit::Plain;
        }
        return Unit::Escape;
    }
    if (u <= 0xDFFF) { // low surrogate without a high one before it
        return Unit::Escape;
    }
    return (u == 0xFFFE || u == 0xFFFF) ? Unit::Escape : Unit::Plain;
}

QString const cElement = QStringLiteral("c");
QString const uAttribute = QStringLiteral("u");

} // namespace

bool XmlText::isXmlSafe(QString const& text)
{
    ushort const* units = text.utf16();
    int const size = text.size();
    for (int i = 0; i < size; ++i) {
        if (classify(units, size, i) == Unit::Escape) {
            return false;
        }
    }
    return true;
}

void XmlText::writeTextAndEnd(QXmlStreamWriter& writer, QString const& text)
{
    bool const formatting = writer.autoFormatting();
    writer.setAutoFormatting(false);
    writeEscaped(writer, text);
    writer.writeEndElement();
    writer.setAutoFormatting(formatting);
}

namespace {

// Text is handed to the writer in pieces of this many code units at most.
constexpr int WritePieceUnits = 1 << 16;

// Length of the escape of u: <c u="HHHH"/>.
int const escapeLength = 13;

// What escaping adds to each code unit: markup, the carriage return (kept as a character
// reference, which parsers do not normalise away), other controls and the two
// non-characters. Surrogates are marked for a closer look: a pair is plain, a lone one is
// escaped. One lookup per unit keeps the two passes over long texts cheap.
constexpr unsigned char LookCloser = 255;
std::array<unsigned char, 0x10000> const extraOf = [] {
    std::array<unsigned char, 0x10000> table{};
    for (int u = 0; u < 0x20; ++u) {
        table[size_t(u)] = escapeLength - 1;
    }
    table[0x09] = table[0x0A] = 0;
    table[0x0D] = 4; // &#13;
    table['<'] = table['>'] = 3;
    table['&'] = 4;
    for (int u = 0xD800; u <= 0xDFFF; ++u) {
        table[size_t(u)] = LookCloser;
    }
    table[0xFFFE] = table[0xFFFF] = escapeLength - 1;
    return table;
}();

// Writes the escaped form of units[0, size) to out, which has room for it.
QChar* escapeInto(ushort const* units, int size, QChar* out)
{
    static char const hex[] = "0123456789ABCDEF";
    auto const put = [&out](char const* text) {
        while (*text) {
            *out++ = QLatin1Char(*text++);
        }
    };
    for (int i = 0; i < size; ++i) {
        ushort const u = units[i];
        if (extraOf[u] == 0) { // nothing to escape
            *out++ = QChar(u);
            continue;
        }
        int at = i;
        switch (classify(units, size, at)) {
        case Unit::Plain:
            if (u == '<') {
                put("&lt;");
            } else if (u == '>') {
                put("&gt;");
            } else if (u == '&') {
                put("&amp;");
            } else {
                for (int k = i; k <= at; ++k) { // a surrogate pair is two units
                    *out++ = QChar(units[k]);
                }
            }
            break;
        case Unit::CarriageReturn:
            put("&#13;");
            break;
        case Unit::Escape:
            put("<c u=\"");
            for (int shift = 12; shift >= 0; shift -= 4) {
                *out++ = QLatin1Char(hex[(u >> shift) & 0xF]);
            }
            put("\"/>");
            break;
        }
        i = at;
    }
    return out;
}

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

void XmlText::writeEscaped(QXmlStreamWriter& writer, QString const& text)
{
    // The text is escaped here and handed over through writeDTD(), the writer's one verbatim
    // output: the writer itself has no way to put a character reference or an element into
    // text except one call each, which costs a device write per carriage return, and its own
    // escaping is slower than this. The caller has switched auto-formatting off, so nothing
    // is added around the text. Long texts go out in pieces, so that no copy of a whole
    // channel's text is made on the way to the file.
    ushort const* units = text.utf16();
    int const size = text.size();
    QString piece;
    for (int begin = 0; begin < size;) {
        int end = std::min(size, begin + WritePieceUnits);
        if (end < size && QChar::isHighSurrogate(units[end - 1])) {
            --end; // a surrogate pair stays in one piece
        }
        qint64 extra = 0; // most texts need little or no escaping
        for (int i = begin; i < end; ++i) {
            unsigned char const add = extraOf[units[i]];
            if (add != LookCloser) {
                extra += add;
            } else if (classify(units, end, i) == Unit::Escape) {
                extra += escapeLength - 1;
            }
        }
        if (extra == 0 && begin == 0 && end == size) {
            writer.writeDTD(text);
            return;
        }
        piece.resize(int(end - begin + extra));
        QChar* const written = escapeInto(units + begin, end - begin, piece.data());
        Q_ASSERT(written == piece.constData() + piece.size());
        Q_UNUSED(written);
        writer.writeDTD(piece);
        begin = end;
    }
}

void XmlText::writeTextElement(QXmlStreamWriter& writer, QString const& name, QString const& text)
{
    writer.writeStartElement(name);
    writeTextAndEnd(writer, text);
}

void XmlText::writeTextAttribute(QXmlStreamWriter& writer, QString const& name, QString const& text)
{
    if (isXmlSafe(text)) {
        writer.writeAttribute(name, text);
    } else {
        writer.writeAttribute(name + QLatin1String("64"), QString::fromLatin1(toBase64(text)));
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

void XmlText::writeBase64Element(QXmlStreamWriter& writer, QString const& name, QString const& text)
{
    // Three bytes (one and a half code units) become four characters, written straight
    // into a piece that goes to the writer; pieces end on whole byte triples, so no padding
    // falls inside the text.
    static char const alphabet[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
#if Q_BYTE_ORDER == Q_LITTLE_ENDIAN
    // The code units in memory already are the UTF-16LE bytes.
    QByteArray const bytes =
        QByteArray::fromRawData(reinterpret_cast<char const*>(text.utf16()), text.size() * 2);
#else
    QByteArray const bytes = toLittleEndianBytes(text);
#endif
    writer.writeStartElement(name);
    bool const formatting = writer.autoFormatting();
    writer.setAutoFormatting(false);
    int const size = bytes.size();
    uchar const* in = reinterpret_cast<uchar const*>(bytes.constData());
    constexpr int pieceBytes = WritePieceUnits / 4 * 3;
    QString piece;
    for (int begin = 0; begin < size; begin += pieceBytes) {
        int const end = std::min(size, begin + pieceBytes);
        piece.resize((end - begin + 2) / 3 * 4);
        QChar* out = piece.data();
        int i = begin;
        for (; i + 3 <= end; i += 3) {
            unsigned const triple = unsigned(in[i]) << 16 | unsigned(in[i + 1]) << 8 | in[i + 2];
            *out++ = QLatin1Char(alphabet[triple >> 18]);
            *out++ = QLatin1Char(alphabet[(triple >> 12) & 63]);
            *out++ = QLatin1Char(alphabet[(triple >> 6) & 63]);
            *out++ = QLatin1Char(alphabet[triple & 63]);
        }
        if (i < end) {
            unsigned const triple =
                unsigned(in[i]) << 16 | (i + 1 < end ? unsigned(in[i + 1]) << 8 : 0u);
            *out++ = QLatin1Char(alphabet[triple >> 18]);
            *out++ = QLatin1Char(alphabet[(triple >> 12) & 63]);
            *out++ = i + 1 < end ? QLatin1Char(alphabet[(triple >> 6) & 63]) : QLatin1Char('=');
            *out++ = QLatin1Char('=');
        }
        writer.writeDTD(piece);
    }
    writer.writeEndElement();
    writer.setAutoFormatting(formatting);
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
