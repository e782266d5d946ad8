#pragma once

#include <QLatin1String>
#include <QString>
#include <vector>

class QIODevice;

namespace NerikResultDataXml {

/// Writes XML as UTF-8 bytes, byte for byte as QXmlStreamWriter with the UTF-8 codec writes
/// the same calls (its auto-formatting with four blanks an indent, its escapes in attributes,
/// its XML declaration), and in one pass: every character is escaped and encoded straight
/// into the output buffer, text of plain ASCII sixteen code units at a time.
///
/// Beside QXmlStreamWriter's calls it has the two forms of element text the result document
/// uses, both written like QXmlStreamWriter::writeDTD() with auto-formatting off (nothing
/// added around them, nothing at all for empty text):
///   - writeText(): the document's lossless text (see XmlText): "<", ">", "&" become
///     &lt; &gt; &amp;, a carriage return &#13;, and every code unit that XML 1.0 cannot
///     carry (C0 controls other than tab and line feed, unpaired surrogates, U+FFFE, U+FFFF)
///     the empty element <c u="HHHH"/>;
///   - writeBase64(): base64 of bytes.
///
/// Attributes are escaped as QXmlStreamWriter escapes them: "<", ">", "&", '"' as entities,
/// tab, line feed and carriage return as &#9; &#10; &#13;. A code unit that XML cannot carry
/// in an attribute is left out and the writer reports an error (hasError()), as
/// QXmlStreamWriter does; the result document never hands it one (XmlText writes such
/// attributes in base64).
///
/// Output goes to a device in writes of about a megabyte (a failed write is an error, and
/// later output is dropped), or is appended to a byte array. Call flush() at the end; the
/// destructor flushes what is left too. Element names are Latin-1 and must stay valid
/// until their element ends (string literals do).
class Utf8XmlWriter
{
public:
    explicit Utf8XmlWriter(QIODevice& device);
    explicit Utf8XmlWriter(QByteArray& bytes);
    Utf8XmlWriter(Utf8XmlWriter const&) = delete;
    Utf8XmlWriter& operator=(Utf8XmlWriter const&) = delete;
    ~Utf8XmlWriter();

    void setAutoFormatting(bool on) { m_autoFormatting = on; }
    bool autoFormatting() const { return m_autoFormatting; }

    /// <?xml version="1.0" encoding="UTF-8"?>; without the encoding it is what
    /// QXmlStreamWriter writes into a QString.
    void writeStartDocument(bool declareEncoding = true);
    void writeStartElement(QLatin1String name);
    void writeEmptyElement(QLatin1String name);
    void writeAttribute(QLatin1String name, QString const& value);
    /// A number in decimal, as QString::number() writes it.
    void writeAttribute(QLatin1String name, qint64 value);
    void writeEndElement();
    /// Ends every open element, then a line feed.
    void writeEndDocument();

    void writeText(QString const& text);
    void writeBase64(char const* data, qint64 size);

    /// Hands what is buffered to the device or byte array; false after any error.
    bool flush();
    /// True after a write to the device failed or an attribute held a character XML cannot
    /// carry.
    bool hasError() const { return m_failed || m_badCharacter; }

private:
    char* room(size_t bytes);
    void commit(char const* end) { m_used = size_t(end - m_buffer.data()); }
    void put(QLatin1String text);
    void indent(int level);
    bool finishStartElement(bool contents = true);
    void writeAttributeValue(QString const& value);
    char* textSlice(ushort const* units, int size, char* out);

    QIODevice* m_device = nullptr;
    QByteArray* m_bytes = nullptr;
    std::vector<char> m_buffer;
    size_t m_used = 0;
    bool m_failed = false;
    bool m_badCharacter = false;

    // QXmlStreamWriter's state, under its names, so that the layout follows its rules.
    std::vector<QLatin1String> m_tags;
    bool m_autoFormatting = false;
    bool m_inStartElement = false;
    bool m_inEmptyElement = false;
    bool m_lastWasStartElement = false;
    bool m_wroteSomething = false;
};

} // namespace NerikResultDataXml
