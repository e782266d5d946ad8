#pragma once

#include <QByteArray>
#include <QString>

class QXmlStreamReader;

namespace NerikResultDataXml {

class Utf8XmlWriter;

/// The message of a PDU data block: its label (name), the decoded text (content) with the
/// alphabet settings it was decoded with (content code) and its writing direction, and the
/// undecoded data: bytes holding GetDataElements() elements of GetDataBits() bits each,
/// packed as the producer packed them.
///
/// XML form:
///   <Payload name="Message" contentCode="ITA2" rtl="false">
///     <Content>HELLO</Content>
///     <Data elements="5" bits="8">SEVMTE8=</Data>   (base64)
///   </Payload>
class Payload
{
public:
    Payload() = default;

    QString const& GetName() const { return m_name; }
    void SetName(QString const& name) { m_name = name; }

    QString const& GetContent() const { return m_content; }
    void SetContent(QString const& content) { m_content = content; }
    QString const& GetContentCode() const { return m_contentCode; }
    void SetContentCode(QString const& code) { m_contentCode = code; }
    bool GetContentDirectionRTL() const { return m_rtl; }
    void SetContentDirectionRTL(bool rtl) { m_rtl = rtl; }

    /// Sets the data bytes with their element count and bits per element; the numbers are
    /// kept as given (the bytes are not checked against them).
    void SetData(QByteArray const& data, unsigned elements, unsigned bitsPerElement);
    QByteArray const& GetData() const { return m_data; }
    unsigned GetDataElements() const { return m_elements; }
    unsigned GetDataBits() const { return m_bits; }

    /// True when the payload holds data bytes or content text, i.e. it is worth replacing
    /// another block's payload with.
    bool IsValid() const { return !m_data.isEmpty() || !m_content.isEmpty(); }

    void WriteXml(Utf8XmlWriter& writer) const;
    bool ReadXml(QXmlStreamReader& reader, QString& error);

    bool operator==(Payload const& other) const;
    bool operator!=(Payload const& other) const { return !(*this == other); }

private:
    QString m_name;
    QString m_content;
    QString m_contentCode;
    bool m_rtl = false;
    QByteArray m_data;
    unsigned m_elements = 0;
    unsigned m_bits = 0;
};

} // namespace NerikResultDataXml
