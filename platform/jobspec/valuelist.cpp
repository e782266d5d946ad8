#include "valuelist.h"

#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <reportkit/xmlreading.h>

namespace JobSpec {

ValueList::~ValueList() = default;

void ValueList::WriteXml(QXmlStreamWriter& writer) const
{
    writer.writeStartElement(ElementName());
    for (QString const& value : m_values) {
        writer.writeTextElement(QStringLiteral("Value"), value);
    }
    writer.writeEndElement();
}

bool ValueList::ReadXml(QXmlStreamReader& reader, QString& error)
{
    REPORTKIT::XmlReading in(reader, GetValidate(), error);
    if (!in.attributes({})) {
        return false;
    }
    QStringList values;
    while (in.nextChild()) {
        if (reader.name() != QLatin1String("Value")) {
            if (!in.unexpectedElement()) {
                return false;
            }
            continue;
        }
        QString value;
        if (!in.attributes({}) || !in.readText(value)) {
            return false;
        }
        values.append(value);
    }
    if (!in.ok()) {
        return false;
    }
    m_values = values;
    return true;
}

QString Decoder::ElementName() const
{
    return QStringLiteral("Decoder");
}

QString ChannelSelection::ElementName() const
{
    return QStringLiteral("ChannelSelection");
}

} // namespace JobSpec
