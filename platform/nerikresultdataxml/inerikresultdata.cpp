#include "inerikresultdata.h"

#include "nerikresultdataexception.h"

#include <QXmlStreamWriter>
#include <reportkit/xmlwriting.h>

namespace NerikResultDataXml {

INerikResultData::~INerikResultData() = default;

QString INerikResultData::GetXmlString() const
{
    bool failed = false;
    QString const xml = REPORTKIT::XmlWriting::documentText(
        [this](QXmlStreamWriter& writer) { WriteXml(writer); }, &failed);
    if (failed) {
        // Only reachable when a writer refuses a character that escaping let through.
        throw NerikResultDataException(QStringLiteral("GetXmlString: the XML writer failed"));
    }
    return xml;
}

} // namespace NerikResultDataXml
