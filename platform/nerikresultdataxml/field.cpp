#include "field.h"

#include "utf8xmlwriter.h"
#include "xmltext.h"

#include <QXmlStreamReader>
#include <reportkit/xmlreading.h>

namespace NerikResultDataXml {

void Field::WriteXml(Utf8XmlWriter& writer) const
{
    writer.writeStartElement(QLatin1String("Field"));
    XmlText::writeTextAttribute(writer, QLatin1String("name"), m_name);
    XmlText::writeTextAttribute(writer, QLatin1String("type"), m_type);
    XmlText::writeTextAndEnd(writer, m_value);
}

bool Field::ReadXml(QXmlStreamReader& reader, QString& error)
{
    REPORTKIT::XmlReading in(reader, true, error);
    Field read;
    bool present = false;
    if (!in.attributes({QStringLiteral("name"), QStringLiteral("name64"), QStringLiteral("type"),
                        QStringLiteral("type64")}) ||
        !XmlText::readTextAttribute(reader, in, QStringLiteral("name"), read.m_name, present) ||
        !XmlText::readTextAttribute(reader, in, QStringLiteral("type"), read.m_type, present) ||
        !XmlText::readText(reader, in, read.m_value)) {
        return false;
    }
    *this = read;
    return true;
}

} // namespace NerikResultDataXml
