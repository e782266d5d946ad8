#pragma once

#include <QString>

class QXmlStreamReader;

namespace NerikResultDataXml {

class Utf8XmlWriter;

/// One labelled value of a PDU data block: name (label), type text ("int", "string",
/// "bool", ...) and value text.
///
/// XML form: <Field name="MMSI" type="int">211234567</Field>
class Field
{
public:
    Field() = default;
    Field(QString const& name, QString const& type, QString const& value)
        : m_name(name), m_type(type), m_value(value)
    {
    }

    QString const& GetName() const { return m_name; }
    void SetName(QString const& name) { m_name = name; }
    QString const& GetType() const { return m_type; }
    void SetType(QString const& type) { m_type = type; }
    QString const& GetValue() const { return m_value; }
    void SetValue(QString const& value) { m_value = value; }

    void WriteXml(Utf8XmlWriter& writer) const;
    bool ReadXml(QXmlStreamReader& reader, QString& error);

    bool operator==(Field const& other) const
    {
        return m_name == other.m_name && m_type == other.m_type && m_value == other.m_value;
    }
    bool operator!=(Field const& other) const { return !(*this == other); }

private:
    QString m_name;
    QString m_type;
    QString m_value;
};

} // namespace NerikResultDataXml
