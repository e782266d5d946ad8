#include "xmlwriting.h"

#include <QXmlStreamWriter>

namespace REPORTKIT {

QString XmlWriting::documentText(std::function<void(QXmlStreamWriter&)> const& write, bool* failed)
{
    QString xml;
    QXmlStreamWriter writer(&xml);
    writer.setAutoFormatting(true);
    writer.writeStartDocument();
    write(writer);
    writer.writeEndDocument();
    if (failed) {
        *failed = writer.hasError();
    }
    return xml;
}

} // namespace REPORTKIT
