#include "transmission.h"

#include "utf8xmlwriter.h"

#include <QXmlStreamReader>
#include <memory>
#include <reportkit/xmlreading.h>
#include <reportkit/xmltime.h>

namespace NerikResultDataXml {

Transmission::~Transmission() = default;

void Transmission::AddInfo(Info* info)
{
    m_infos.append(info);
}

void Transmission::AddDataBlock(DataBlock* block)
{
    m_dataBlocks.append(block);
}

void Transmission::AddPDUDataBlock(PDUDataBlock* block)
{
    m_pduDataBlocks.append(block);
}

void Transmission::Clear()
{
    m_infos.clear();
    m_dataBlocks.clear();
    m_pduDataBlocks.clear();
}

void Transmission::WriteXml(Utf8XmlWriter& writer) const
{
    WriteXml(writer, DataBlockFilter());
}

void Transmission::WriteXml(Utf8XmlWriter& writer, DataBlockFilter const& filter) const
{
    writer.writeStartElement(QLatin1String("Transmission"));
    if (m_startTime.isValid()) {
        writer.writeAttribute(QLatin1String("startTime"), REPORTKIT::XmlTime::toText(m_startTime));
    }
    if (m_stopTime.isValid()) {
        writer.writeAttribute(QLatin1String("stopTime"), REPORTKIT::XmlTime::toText(m_stopTime));
    }
    for (Info const* info : m_infos) {
        info->WriteXml(writer);
    }
    for (DataBlock const* block : m_dataBlocks) {
        if (!filter || filter(*block)) {
            block->WriteXml(writer);
        }
    }
    for (PDUDataBlock const* block : m_pduDataBlocks) {
        block->WriteXml(writer);
    }
    writer.writeEndElement();
}

bool Transmission::ReadXml(QXmlStreamReader& reader, QString& error)
{
    REPORTKIT::XmlReading in(reader, true, error);
    Transmission read;
    if (!in.attributes({QStringLiteral("startTime"), QStringLiteral("stopTime")}) ||
        !in.optionalTime(QStringLiteral("startTime"), read.m_startTime) ||
        !in.optionalTime(QStringLiteral("stopTime"), read.m_stopTime)) {
        return false;
    }
    // Order: Info*, DataBlock*, PDUDataBlock*.
    int stage = 0;
    while (in.nextChild()) {
        QStringRef const name = reader.name();
        if (stage <= 0 && name == QLatin1String("Info")) {
            auto info = std::make_unique<Info>();
            if (!info->ReadXml(reader, error)) {
                return false;
            }
            read.m_infos.append(info.release());
        } else if (stage <= 1 && name == QLatin1String("DataBlock")) {
            auto block = std::make_unique<DataBlock>();
            if (!block->ReadXml(reader, error)) {
                return false;
            }
            read.m_dataBlocks.append(block.release());
            stage = 1;
        } else if (name == QLatin1String("PDUDataBlock")) {
            auto block = std::make_unique<PDUDataBlock>();
            if (!block->ReadXml(reader, error)) {
                return false;
            }
            read.m_pduDataBlocks.append(block.release());
            stage = 2;
        } else {
            return in.fail(
                QStringLiteral("unexpected element <%1> in <Transmission>").arg(name.toString()));
        }
    }
    if (!in.ok()) {
        return false;
    }
    *this = std::move(read);
    return true;
}

bool Transmission::SetXmlString(QString const& xml, QString& error)
{
    error.clear();
    QXmlStreamReader reader(xml);
    Transmission read;
    if (!REPORTKIT::XmlReading::readRoot(reader, QStringLiteral("Transmission"), error) ||
        !read.ReadXml(reader, error) || !REPORTKIT::XmlReading::readEnd(reader, error)) {
        return false;
    }
    *this = std::move(read);
    return true;
}

bool Transmission::operator==(Transmission const& other) const
{
    return m_startTime == other.m_startTime && m_stopTime == other.m_stopTime &&
           m_infos == other.m_infos && m_dataBlocks == other.m_dataBlocks &&
           m_pduDataBlocks == other.m_pduDataBlocks;
}

} // namespace NerikResultDataXml
