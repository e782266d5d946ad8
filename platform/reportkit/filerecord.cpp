#include "filerecord.h"

#include "rgexception.h"
#include "xmlreading.h"
#include "xmltime.h"

#include <QXmlStreamReader>
#include <QXmlStreamWriter>

namespace REPORTKIT {

FileRecord::FileRecord() = default;
FileRecord::FileRecord(FileRecord const&) = default;
FileRecord& FileRecord::operator=(FileRecord const&) = default;
FileRecord::~FileRecord() = default;

void FileRecord::SetURL(QString const& url)
{
    if (GetValidate() && url.isEmpty()) {
        throw RGException(QStringLiteral("%1: empty URL").arg(ElementName()));
    }
    m_url = url;
}

bool FileRecord::sameContent(FileRecord const& other) const
{
    return m_url == other.m_url && m_type == other.m_type && m_metadata == other.m_metadata;
}

void FileRecord::WriteXml(QXmlStreamWriter& writer) const
{
    writer.writeStartElement(ElementName());
    writer.writeAttribute(QStringLiteral("url"), m_url);
    if (!m_type.isEmpty()) {
        writer.writeAttribute(QStringLiteral("type"), m_type);
    }
    writer.writeStartElement(QStringLiteral("Metadata"));
    if (m_metadata.GetStartTime().isValid()) {
        writer.writeAttribute(QStringLiteral("startTime"),
                              XmlTime::toText(m_metadata.GetStartTime()));
    }
    if (m_metadata.GetStopTime().isValid()) {
        writer.writeAttribute(QStringLiteral("stopTime"),
                              XmlTime::toText(m_metadata.GetStopTime()));
    }
    FileDetail const& detail = m_metadata.GetDetail();
    writer.writeStartElement(QStringLiteral("Detail"));
    writer.writeAttribute(QStringLiteral("frequency"),
                          QString::number(detail.GetFrequency().GetValue(), 'g', 17));
    if (!detail.GetCode().isEmpty()) {
        writer.writeAttribute(QStringLiteral("code"), detail.GetCode());
    }
    if (detail.IsChannelSet()) {
        writer.writeAttribute(QStringLiteral("channel"), QString::number(detail.GetChannel()));
    }
    writer.writeEndElement(); // Detail
    writer.writeEndElement(); // Metadata
    writer.writeEndElement();
}

bool FileRecord::ReadXml(QXmlStreamReader& reader, QString& error)
{
    XmlReading in(reader, GetValidate(), error);
    QString url;
    QString type;
    FileMetadata metadata;
    if (!in.attributes({QStringLiteral("url"), QStringLiteral("type")}) ||
        !in.requiredText(QStringLiteral("url"), url)) {
        return false;
    }
    type = reader.attributes().value(QStringLiteral("type")).toString();
    bool haveMetadata = false;
    while (in.nextChild()) {
        if (reader.name() != QLatin1String("Metadata") || haveMetadata) {
            if (!in.unexpectedElement()) {
                return false;
            }
            continue;
        }
        haveMetadata = true;
        QDateTime start;
        QDateTime stop;
        if (!in.attributes({QStringLiteral("startTime"), QStringLiteral("stopTime")}) ||
            !in.optionalTime(QStringLiteral("startTime"), start) ||
            !in.optionalTime(QStringLiteral("stopTime"), stop)) {
            return false;
        }
        metadata.SetStartTime(start);
        metadata.SetStopTime(stop);
        bool haveDetail = false;
        while (in.nextChild()) {
            if (reader.name() != QLatin1String("Detail") || haveDetail) {
                if (!in.unexpectedElement()) {
                    return false;
                }
                continue;
            }
            haveDetail = true;
            FileDetail& detail = metadata.GetDetail();
            double frequency = 0.0;
            int channel = 0;
            bool channelSet = false;
            if (!in.attributes({QStringLiteral("frequency"), QStringLiteral("code"),
                                QStringLiteral("channel")}) ||
                !in.optionalDouble(QStringLiteral("frequency"), frequency) ||
                !in.optionalInt(QStringLiteral("channel"), channel, channelSet)) {
                return false;
            }
            detail.GetFrequency().SetValue(frequency);
            detail.SetCode(reader.attributes().value(QStringLiteral("code")).toString());
            if (channelSet) {
                detail.SetChannel(channel);
            }
            if (!in.skipContent()) {
                return false;
            }
        }
        if (!in.ok()) {
            return false;
        }
    }
    if (!in.ok()) {
        return false;
    }
    m_url = url;
    m_type = type;
    m_metadata = metadata;
    return true;
}

} // namespace REPORTKIT
