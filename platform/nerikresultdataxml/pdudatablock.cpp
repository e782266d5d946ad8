#include "pdudatablock.h"

#include "utf8xmlwriter.h"
#include "xmltext.h"

#include <QXmlStreamReader>
#include <memory>
#include <reportkit/xmlreading.h>
#include <reportkit/xmltime.h>

namespace NerikResultDataXml {

bool PDUDataBlock::IsValid() const
{
    if (!m_timeStamp.isValid()) {
        return false;
    }
    return !m_name.isEmpty() || !m_fields.isEmpty() || m_payload.IsValid() || !m_children.isEmpty();
}

PDUDataBlock& PDUDataBlock::operator=(PDUDataBlock const& other)
{
    if (this != &other) {
        // Copy first: other may be one of our own children.
        PDUDataBlock copy(other);
        *this = std::move(copy);
    }
    return *this;
}

PDUDataBlock::~PDUDataBlock() = default;

void PDUDataBlock::AddPDUDataBlock(PDUDataBlock* child)
{
    m_children.append(child);
}

void PDUDataBlock::AddUserData(UserData* userData)
{
    m_userData.append(userData);
}

void PDUDataBlock::DeleteUserData()
{
    m_userData.clear();
}

void PDUDataBlock::WriteXml(Utf8XmlWriter& writer) const
{
    writer.writeStartElement(QLatin1String("PDUDataBlock"));
    writer.writeAttribute(QLatin1String("id"), m_id);
    writer.writeAttribute(QLatin1String("type"), m_type);
    if (m_timeStamp.isValid()) {
        writer.writeAttribute(QLatin1String("timeStamp"), REPORTKIT::XmlTime::toText(m_timeStamp));
    }
    XmlText::writeTextAttribute(writer, QLatin1String("name"), m_name);
    if (!m_method.isEmpty()) {
        XmlText::writeTextAttribute(writer, QLatin1String("method"), m_method);
    }
    if (!m_crc.isEmpty()) {
        XmlText::writeTextAttribute(writer, QLatin1String("crc"), m_crc);
    }
    for (Field const& field : m_fields) {
        field.WriteXml(writer);
    }
    if (m_payload != Payload()) {
        m_payload.WriteXml(writer);
    }
    for (UserData const* item : m_userData) {
        item->WriteXml(writer);
    }
    for (PDUDataBlock const* child : m_children) {
        child->WriteXml(writer);
    }
    writer.writeEndElement();
}

bool PDUDataBlock::ReadXml(QXmlStreamReader& reader, QString& error)
{
    return readXml(reader, error, 1);
}

bool PDUDataBlock::readXml(QXmlStreamReader& reader, QString& error, int depth)
{
    REPORTKIT::XmlReading in(reader, true, error);
    if (depth > MaxNesting) {
        return in.fail(
            QStringLiteral("PDU data blocks nested deeper than %1 levels").arg(MaxNesting));
    }
    PDUDataBlock read;
    bool present = false;
    QString typeText;
    if (!in.attributes({QStringLiteral("id"), QStringLiteral("type"), QStringLiteral("timeStamp"),
                        QStringLiteral("name"), QStringLiteral("name64"), QStringLiteral("method"),
                        QStringLiteral("method64"), QStringLiteral("crc"),
                        QStringLiteral("crc64")}) ||
        !in.requiredInt(QStringLiteral("id"), read.m_id) ||
        !in.requiredText(QStringLiteral("type"), typeText) ||
        !in.optionalTime(QStringLiteral("timeStamp"), read.m_timeStamp) ||
        !XmlText::readTextAttribute(reader, in, QStringLiteral("name"), read.m_name, present) ||
        !XmlText::readTextAttribute(reader, in, QStringLiteral("method"), read.m_method, present) ||
        !XmlText::readTextAttribute(reader, in, QStringLiteral("crc"), read.m_crc, present)) {
        return false;
    }
    bool typeOk = false;
    read.m_type = typeText.toUInt(&typeOk);
    if (!typeOk) {
        return in.fail(QStringLiteral("type is not an unsigned integer: \"%1\"").arg(typeText));
    }
    // Order: Field*, Payload?, UserData*, PDUDataBlock*.
    int stage = 0;
    while (in.nextChild()) {
        QStringRef const name = reader.name();
        if (stage <= 0 && name == QLatin1String("Field")) {
            Field field;
            if (!field.ReadXml(reader, error)) {
                return false;
            }
            read.m_fields.append(field);
        } else if (stage <= 0 && name == QLatin1String("Payload")) {
            if (!read.m_payload.ReadXml(reader, error)) {
                return false;
            }
            stage = 1;
        } else if (stage <= 2 && name == QLatin1String("UserData")) {
            auto item = std::make_unique<UserData>();
            if (!item->ReadXml(reader, error)) {
                return false;
            }
            read.m_userData.append(item.release());
            stage = 2;
        } else if (name == QLatin1String("PDUDataBlock")) {
            auto child = std::make_unique<PDUDataBlock>();
            if (!child->readXml(reader, error, depth + 1)) {
                return false;
            }
            read.m_children.append(child.release());
            stage = 3;
        } else {
            return in.fail(
                QStringLiteral("unexpected element <%1> in <PDUDataBlock>").arg(name.toString()));
        }
    }
    if (!in.ok()) {
        return false;
    }
    *this = std::move(read);
    return true;
}

bool PDUDataBlock::operator==(PDUDataBlock const& other) const
{
    if (m_id != other.m_id || m_type != other.m_type || m_timeStamp != other.m_timeStamp ||
        m_name != other.m_name || m_method != other.m_method || m_crc != other.m_crc ||
        m_fields != other.m_fields || m_payload != other.m_payload) {
        return false;
    }
    return m_children == other.m_children && m_userData == other.m_userData;
}

} // namespace NerikResultDataXml
