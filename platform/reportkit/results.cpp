#include "results.h"

#include "xmlreading.h"
#include "xmlwriting.h"

#include <QXmlStreamReader>
#include <QXmlStreamWriter>

namespace REPORTKIT {

namespace {

template <typename Record>
void writeAll(QXmlStreamWriter& writer, std::vector<Record> const& records)
{
    for (Record const& record : records) {
        record.WriteXml(writer);
    }
}

template <typename Record>
bool readOne(QXmlStreamReader& reader, bool validate, std::vector<Record>& into, QString& error)
{
    Record record;
    record.SetValidate(validate);
    if (!record.ReadXml(reader, error)) {
        return false;
    }
    into.push_back(record);
    return true;
}

} // namespace

QString Results::GetXmlString() const
{
    return XmlWriting::documentText([this](QXmlStreamWriter& writer) {
        writer.writeStartElement(QStringLiteral("Results"));
        writeAll(writer, m_binary);
        writeAll(writer, m_text);
        writeAll(writer, m_picture);
        writer.writeEndElement();
    });
}

bool Results::SetXmlString(QString const& xml, int options)
{
    QString error;
    if (options != 0) {
        setLastXmlError(QStringLiteral("unsupported options %1").arg(options));
        return false;
    }
    QXmlStreamReader reader(xml);
    Results read;
    bool ok = XmlReading::readRoot(reader, QStringLiteral("Results"), error);
    if (ok) {
        XmlReading in(reader, GetValidate(), error);
        ok = in.attributes({});
        while (ok && in.nextChild()) {
            if (reader.name() == QLatin1String("Binary")) {
                ok = readOne(reader, GetValidate(), read.m_binary, error);
            } else if (reader.name() == QLatin1String("Text")) {
                ok = readOne(reader, GetValidate(), read.m_text, error);
            } else if (reader.name() == QLatin1String("Picture")) {
                ok = readOne(reader, GetValidate(), read.m_picture, error);
            } else {
                ok = in.unexpectedElement();
            }
        }
        ok = ok && in.ok() && XmlReading::readEnd(reader, error);
    }
    setLastXmlError(error);
    if (ok) {
        m_binary = std::move(read.m_binary);
        m_text = std::move(read.m_text);
        m_picture = std::move(read.m_picture);
    }
    return ok;
}

bool Results::operator==(Results const& other) const
{
    return m_binary == other.m_binary && m_text == other.m_text && m_picture == other.m_picture;
}

} // namespace REPORTKIT
