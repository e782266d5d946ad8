#include "inerikresultdata.h"

#include "nerikresultdataexception.h"

#include <QXmlStreamWriter>

namespace NerikResultDataXml {

INerikResultData::~INerikResultData() = default;

QString INerikResultData::GetXmlString() const
{
    QString xml;
    QXmlStreamWriter writer(&xml);
    writer.setAutoFormatting(true);
    writer.writeStartDocument();
    WriteXml(writer);
    writer.writeEndDocument();
    if (writer.hasError()) {
        // Only reachable when a writer refuses a character that escaping let through.
        throw NerikResultDataException(QStringLiteral("GetXmlString: the XML writer failed"));
    }
    return xml;
}

} // namespace NerikResultDataXml
