#include "settingsobject.h"

#include "xmlreading.h"

#include <QXmlStreamReader>
#include <QXmlStreamWriter>

namespace REPORTKIT {

SettingsObject::~SettingsObject() = default;

QString SettingsObject::GetXmlString() const
{
    QString xml;
    QXmlStreamWriter writer(&xml);
    writer.setAutoFormatting(true);
    writer.writeStartDocument();
    WriteXml(writer);
    writer.writeEndDocument();
    return xml;
}

bool SettingsObject::SetXmlString(QString const& xml, int options)
{
    if (options != 0) {
        setLastXmlError(QStringLiteral("unsupported options %1").arg(options));
        return false;
    }
    QString error;
    QXmlStreamReader reader(xml);
    // ReadXml commits only on success; a failure in the trailing part must not leave a
    // half-accepted document, so the object is restored from a copy of its text form.
    bool ok = XmlReading::readRoot(reader, ElementName(), error);
    if (ok) {
        QString const before = GetXmlString();
        ok = ReadXml(reader, error) && XmlReading::readEnd(reader, error);
        if (!ok) {
            QXmlStreamReader restore(before);
            QString ignored;
            if (restore.readNextStartElement()) {
                ReadXml(restore, ignored);
            }
        }
    }
    setLastXmlError(error);
    return ok;
}

} // namespace REPORTKIT
