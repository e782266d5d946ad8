#include "xmlelementobject.h"

#include "xmlreading.h"
#include "xmlwriting.h"

#include <QXmlStreamReader>
#include <QXmlStreamWriter>

namespace REPORTKIT {

XmlElementObject::~XmlElementObject() = default;

QString XmlElementObject::GetXmlString() const
{
    return XmlWriting::documentText([this](QXmlStreamWriter& writer) { WriteXml(writer); });
}

bool XmlElementObject::SetXmlString(QString const& xml, int options)
{
    if (options != 0) {
        setLastXmlError(QStringLiteral("unsupported options %1").arg(options));
        return false;
    }
    // ReadXml() commits when its element ends, before the rest of the text has been seen; a
    // first pass checks that the whole text is one well-formed element of the right name, so
    // that a fault after it cannot leave the object half-accepted.
    QString error;
    QXmlStreamReader check(xml);
    bool ok = XmlReading::readRoot(check, ElementName(), error);
    if (ok) {
        check.skipCurrentElement();
        ok = XmlReading::readEnd(check, error);
    }
    if (ok) {
        QXmlStreamReader reader(xml);
        ok = XmlReading::readRoot(reader, ElementName(), error) && ReadXml(reader, error);
    }
    setLastXmlError(error);
    return ok;
}

bool XmlElementObject::ReadChildrenInOrder(XmlReading& in, QXmlStreamReader& reader,
                                           std::initializer_list<XmlElementObject*> parts,
                                           QString& error)
{
    auto next = parts.begin();
    while (in.nextChild()) {
        auto found = next;
        while (found != parts.end() && reader.name() != (*found)->ElementName()) {
            ++found;
        }
        if (found == parts.end()) {
            if (!in.unexpectedElement()) {
                return false;
            }
            continue;
        }
        if (!(*found)->ReadXml(reader, error)) {
            return false;
        }
        next = found + 1;
    }
    return in.ok();
}

} // namespace REPORTKIT
