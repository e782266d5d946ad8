#pragma once

#include <QString>

class QXmlStreamReader;

namespace REPORTKIT {
class XmlReading;
}

namespace NerikResultDataXml {

class Utf8XmlWriter;

/// Lossless text in XML 1.0, shared by the writers and readers of the result document.
///
/// Element text: characters XML cannot carry (C0 controls other than tab and line feed,
/// unpaired surrogates, U+FFFE, U+FFFF) become <c u="HHHH"/>, one empty element per UTF-16
/// code unit; a carriage return becomes the reference &#13; so that parsers do not turn it
/// into a line feed; "<", ">" and "&" become &lt; &gt; &amp;. Everything else is written as
/// it is.
///
/// Attributes: a value XML can carry is written as it is (the writer escapes tab, line feed
/// and carriage return as references); any other value is written as the attribute
/// "<name>64" holding the base64 of the UTF-16LE code units.
///
/// The escaping of element text itself is Utf8XmlWriter::writeText(), which encodes in the
/// same pass.
class XmlText
{
public:
    /// True when every code unit can be written as XML character data.
    static bool isXmlSafe(QString const& text);

    /// Writes text as the content of the element just started, then ends that element.
    static void writeTextAndEnd(Utf8XmlWriter& writer, QString const& text);
    static void writeTextElement(Utf8XmlWriter& writer, QLatin1String name, QString const& text);
    static void writeTextAttribute(Utf8XmlWriter& writer, QLatin1String name, QString const& text);

    /// Reads the text of the current element (just after its start tag) up to its end tag,
    /// with <c/> escapes resolved. Other child elements are errors.
    static bool readText(QXmlStreamReader& reader, REPORTKIT::XmlReading& in, QString& text);
    /// Reads the attribute name or name64; present tells whether either was there. Both at
    /// once, or base64 that does not decode to whole code units, are errors.
    static bool readTextAttribute(QXmlStreamReader& reader, REPORTKIT::XmlReading& in,
                                  QString const& name, QString& value, bool& present);

    /// Writes an element whose text is base64 of the UTF-16LE code units of text.
    static void writeBase64Element(Utf8XmlWriter& writer, QLatin1String name, QString const& text);

    /// base64 of the UTF-16LE code units of text, and back (false for bad input).
    static QByteArray toBase64(QString const& text);
    static bool fromBase64(QByteArray const& base64, QString& text);
};

} // namespace NerikResultDataXml
