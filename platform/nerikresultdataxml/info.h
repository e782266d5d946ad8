#pragma once

#include <QDateTime>
#include <QString>
#include <QVector>

class QXmlStreamReader;

namespace NerikResultDataXml {

class Utf8XmlWriter;

/// A record of the receiver settings that were in force from a time on: a time stamp and an
/// ordered list of named items, each a text (typically a settings object's XML text, e.g.
/// name "Tuner_Settings" with the tuner settings XML).
///
/// XML form:
///   <Info timestamp="2024-01-31T23:59:59.123Z">
///     <Item name="Tuner_Settings">&lt;Tuner_Settings .../&gt;</Item>
///   </Info>
class Info
{
public:
    struct Item
    {
        QString name;
        QString value;
        bool operator==(Item const& other) const
        {
            return name == other.name && value == other.value;
        }
        bool operator!=(Item const& other) const { return !(*this == other); }
    };

    Info() = default;
    explicit Info(QDateTime const& timestamp) : m_timestamp(timestamp) {}

    QDateTime const& GetTimestamp() const { return m_timestamp; }
    void SetTimestamp(QDateTime const& timestamp) { m_timestamp = timestamp; }

    /// Appends an item; an existing item of the same name is replaced in place.
    void SetItem(QString const& name, QString const& value);
    /// The value of the named item; a null string when there is none.
    QString GetItem(QString const& name) const;
    QVector<Item>& GetItems() { return m_items; }
    QVector<Item> const& GetItems() const { return m_items; }

    void WriteXml(Utf8XmlWriter& writer) const;
    bool ReadXml(QXmlStreamReader& reader, QString& error);

    bool operator==(Info const& other) const;
    bool operator!=(Info const& other) const { return !(*this == other); }

private:
    QDateTime m_timestamp;
    QVector<Item> m_items;
};

} // namespace NerikResultDataXml
