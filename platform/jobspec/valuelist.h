#pragma once

#include <QStringList>
#include <reportkit/xmlelementobject.h>

namespace JobSpec {

/// A settings element that holds an ordered list of text values, one <Value> child each:
///   <Decoder><Value>ITA2</Value><Value>SITOR</Value></Decoder>
/// The values are kept as written (no trimming), in order; duplicates are kept.
class ValueList : public REPORTKIT::XmlElementObject
{
public:
    ~ValueList() override;

    /// True when at least one value is held.
    bool IsValueSet() const { return !m_values.isEmpty(); }
    QStringList const& GetValue() const { return m_values; }
    void SetValue(QStringList const& values) { m_values = values; }
    void AppendValue(QString const& value) { m_values.append(value); }
    void ClearValue() { m_values.clear(); }

    void WriteXml(QXmlStreamWriter& writer) const override;
    bool ReadXml(QXmlStreamReader& reader, QString& error) override;

protected:
    ValueList() = default;
    ValueList(ValueList const&) = default;
    ValueList& operator=(ValueList const&) = default;

private:
    QStringList m_values;
};

/// The decoders a demodulator feeds, by name ("ITA2", "POCSAG", ...). Element <Decoder>.
class Decoder : public ValueList
{
public:
    QString ElementName() const override;
    bool operator==(Decoder const& other) const { return GetValue() == other.GetValue(); }
    bool operator!=(Decoder const& other) const { return !(*this == other); }
};

/// The channels of a multi-channel stream that a job wants, as decimal texts ("3").
/// The texts are not checked here: the consumer decides what a usable channel number is.
/// No value at all means "every channel". Element <ChannelSelection>.
class ChannelSelection : public ValueList
{
public:
    QString ElementName() const override;
    bool operator==(ChannelSelection const& other) const { return GetValue() == other.GetValue(); }
    bool operator!=(ChannelSelection const& other) const { return !(*this == other); }
};

} // namespace JobSpec
