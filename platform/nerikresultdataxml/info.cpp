#include "info.h"

#include "utf8xmlwriter.h"
#include "xmltext.h"

#include <QXmlStreamReader>
#include <reportkit/xmlreading.h>
#include <reportkit/xmltime.h>

namespace NerikResultDataXml {

void Info::SetItem(QString const& name, QString const& value)
{
    for (Item& item : m_items) {
        if (item.name == name) {
            item.value = value;
            return;
        }
    }
    m_items.append(Item{name, value});
}

QString Info::GetItem(QString const& name) const
{
    for (Item const& item : m_items) {
        if (item.name == name) {
            return item.value;
        }
    }
    return QString();
}

void Info::WriteXml(Utf8XmlWriter& writer) const
{
    writer.writeStartElement(QLatin1String("Info"));
    if (m_timestamp.isValid()) {
        writer.writeAttribute(QLatin1String("timestamp"), REPORTKIT::XmlTime::toText(m_timestamp));
    }
    for (Item const& item : m_items) {
        writer.writeStartElement(QLatin1String("Item"));
        XmlText::writeTextAttribute(writer, QLatin1String("name"), item.name);
        XmlText::writeTextAndEnd(writer, item.value);
    }
    writer.writeEndElement();
}

bool Info::ReadXml(QXmlStreamReader& reader, QString& error)
{
    REPORTKIT::XmlReading in(reader, true, error);
    Info read;
    if (!in.attributes({QStringLiteral("timestamp")}) ||
        !in.optionalTime(QStringLiteral("timestamp"), read.m_timestamp)) {
        return false;
    }
    while (in.nextChild()) {
        if (reader.name() != QLatin1String("Item")) {
            return in.fail(
                QStringLiteral("unexpected element <%1> in <Info>").arg(reader.name().toString()));
        }
        Item item;
        bool named = false;
        if (!in.attributes({QStringLiteral("name"), QStringLiteral("name64")}) ||
            !XmlText::readTextAttribute(reader, in, QStringLiteral("name"), item.name, named)) {
            return false;
        }
        if (!named) {
            return in.fail(QStringLiteral("<Item> lacks the attribute name"));
        }
        if (!XmlText::readText(reader, in, item.value)) {
            return false;
        }
        read.m_items.append(item);
    }
    if (!in.ok()) {
        return false;
    }
    *this = read;
    return true;
}

bool Info::operator==(Info const& other) const
{
    return m_timestamp == other.m_timestamp && m_items == other.m_items;
}

} // namespace NerikResultDataXml
