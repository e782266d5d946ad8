#include "inerikresultdata.h"

#include "nerikresultdataexception.h"
#include "utf8xmlwriter.h"

namespace NerikResultDataXml {

INerikResultData::~INerikResultData() = default;

QString INerikResultData::GetXmlString() const
{
    QByteArray xml;
    Utf8XmlWriter writer(xml);
    writer.setAutoFormatting(true);
    writer.writeStartDocument(false); // text, not bytes: no encoding to declare
    WriteXml(writer);
    writer.writeEndDocument();
    if (!writer.flush()) {
        // Only reachable when a writer refuses a character that escaping let through.
        throw NerikResultDataException(QStringLiteral("GetXmlString: the XML writer failed"));
    }
    return QString::fromUtf8(xml);
}

} // namespace NerikResultDataXml
