#include "datablock.h"

#include "utf8xmlwriter.h"
#include "xmltext.h"

#include <QXmlStreamReader>
#include <memory>
#include <reportkit/xmlreading.h>
#include <reportkit/xmltime.h>

namespace NerikResultDataXml {

QString const DataBlock::sRawData_DecodedText = QStringLiteral("DecodedText");

DataBlock::DataBlock(int channel, int contentStart, int rawStart)
    : m_channel(channel), m_contentStart(contentStart), m_rawStart(rawStart)
{
}

DataBlock::~DataBlock() = default;

void DataBlock::BeginFrame()
{
    m_rawFramePos = m_rawContent.size();
    m_contentFramePos = m_content.size();
    m_timeStamps.append(
        TimeStamp(m_frameTime, m_contentStart + m_contentFramePos, m_rawStart + m_rawFramePos));
    m_inFrame = true;
}

void DataBlock::EndFrame()
{
    if (!m_inFrame) {
        return;
    }
    m_inFrame = false;
    bool const empty =
        m_rawContent.size() == m_rawFramePos && m_content.size() == m_contentFramePos;
    if (empty && !m_timeStamps.isEmpty()) {
        TimeStamp const& last = m_timeStamps.last();
        if (last.GetPosition() == m_contentStart + m_contentFramePos &&
            last.GetRawPosition() == m_rawStart + m_rawFramePos) {
            m_timeStamps.removeLast();
        }
    }
}

void DataBlock::AddUserData(UserData* userData)
{
    m_userData.append(userData);
}

void DataBlock::DeleteUserData()
{
    m_userData.clear();
}

void DataBlock::WriteXml(Utf8XmlWriter& writer) const
{
    writer.writeStartElement(QLatin1String("DataBlock"));
    writer.writeAttribute(QLatin1String("id"), m_id);
    writer.writeAttribute(QLatin1String("channel"), m_channel);
    if (m_contentStart != 0) {
        writer.writeAttribute(QLatin1String("contentStart"), m_contentStart);
    }
    if (m_rawStart != 0) {
        writer.writeAttribute(QLatin1String("rawStart"), m_rawStart);
    }
    if (!m_contentCode.isEmpty()) {
        XmlText::writeTextAttribute(writer, QLatin1String("contentCode"), m_contentCode);
    }
    if (m_rtl) {
        writer.writeAttribute(QLatin1String("rtl"), QStringLiteral("true"));
    }
    if (!m_rawContentType.isEmpty()) {
        XmlText::writeTextAttribute(writer, QLatin1String("rawContentType"), m_rawContentType);
    }
    for (TimeStamp const& stamp : m_timeStamps) {
        writer.writeEmptyElement(QLatin1String("TimeStamp"));
        if (stamp.GetTime().isValid()) {
            writer.writeAttribute(QLatin1String("time"),
                                  REPORTKIT::XmlTime::toText(stamp.GetTime()));
        }
        writer.writeAttribute(QLatin1String("position"), stamp.GetPosition());
        writer.writeAttribute(QLatin1String("rawPosition"), stamp.GetRawPosition());
    }
    XmlText::writeTextElement(writer, QLatin1String("Content"), m_content);
    if (!m_rawContent.isEmpty()) {
        XmlText::writeBase64Element(writer, QLatin1String("RawContent"), m_rawContent);
    }
    for (UserData const* item : m_userData) {
        item->WriteXml(writer);
    }
    writer.writeEndElement();
}

bool DataBlock::ReadXml(QXmlStreamReader& reader, QString& error)
{
    REPORTKIT::XmlReading in(reader, true, error);
    DataBlock read;
    bool present = false;
    if (!in.attributes({QStringLiteral("id"), QStringLiteral("channel"),
                        QStringLiteral("contentStart"), QStringLiteral("rawStart"),
                        QStringLiteral("contentCode"), QStringLiteral("contentCode64"),
                        QStringLiteral("rtl"), QStringLiteral("rawContentType"),
                        QStringLiteral("rawContentType64")}) ||
        !in.requiredInt(QStringLiteral("id"), read.m_id) ||
        !in.requiredInt(QStringLiteral("channel"), read.m_channel) ||
        !in.optionalInt(QStringLiteral("contentStart"), read.m_contentStart, present) ||
        !in.optionalInt(QStringLiteral("rawStart"), read.m_rawStart, present) ||
        !XmlText::readTextAttribute(reader, in, QStringLiteral("contentCode"), read.m_contentCode,
                                    present) ||
        !in.optionalBool(QStringLiteral("rtl"), read.m_rtl) ||
        !XmlText::readTextAttribute(reader, in, QStringLiteral("rawContentType"),
                                    read.m_rawContentType, present)) {
        return false;
    }
    // Order: TimeStamp*, Content, RawContent?, UserData*.
    enum
    {
        Stamps,
        AfterContent,
        AfterRaw
    } stage = Stamps;
    bool haveContent = false;
    while (in.nextChild()) {
        QStringRef const name = reader.name();
        if (stage == Stamps && name == QLatin1String("TimeStamp")) {
            TimeStamp stamp;
            QDateTime time;
            int position = 0;
            int rawPosition = 0;
            if (!in.attributes({QStringLiteral("time"), QStringLiteral("position"),
                                QStringLiteral("rawPosition")}) ||
                !in.optionalTime(QStringLiteral("time"), time) ||
                !in.requiredInt(QStringLiteral("position"), position) ||
                !in.requiredInt(QStringLiteral("rawPosition"), rawPosition) || !in.skipContent()) {
                return false;
            }
            read.m_timeStamps.append(TimeStamp(time, position, rawPosition));
        } else if (stage == Stamps && name == QLatin1String("Content")) {
            if (!in.attributes({}) || !XmlText::readText(reader, in, read.m_content)) {
                return false;
            }
            haveContent = true;
            stage = AfterContent;
        } else if (stage == AfterContent && name == QLatin1String("RawContent")) {
            QString base64;
            if (!in.attributes({}) || !in.readText(base64)) {
                return false;
            }
            if (!XmlText::fromBase64(base64.toLatin1(), read.m_rawContent)) {
                return in.fail(QStringLiteral("<RawContent> is not base64 of UTF-16 code units"));
            }
            stage = AfterRaw;
        } else if (stage != Stamps && name == QLatin1String("UserData")) {
            auto item = std::make_unique<UserData>();
            if (!item->ReadXml(reader, error)) {
                return false;
            }
            read.m_userData.append(item.release());
            stage = AfterRaw;
        } else {
            return in.fail(
                QStringLiteral("unexpected element <%1> in <DataBlock>").arg(name.toString()));
        }
    }
    if (!in.ok()) {
        return false;
    }
    if (!haveContent) {
        return in.fail(QStringLiteral("<DataBlock> lacks <Content>"));
    }
    *this = std::move(read);
    return true;
}

bool DataBlock::operator==(DataBlock const& other) const
{
    if (m_id != other.m_id || m_channel != other.m_channel ||
        m_contentStart != other.m_contentStart || m_rawStart != other.m_rawStart ||
        m_timeStamps != other.m_timeStamps || m_content != other.m_content ||
        m_rawContent != other.m_rawContent || m_contentCode != other.m_contentCode ||
        m_rtl != other.m_rtl || m_rawContentType != other.m_rawContentType) {
        return false;
    }
    return m_userData == other.m_userData;
}

} // namespace NerikResultDataXml
