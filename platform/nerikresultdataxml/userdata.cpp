#include "userdata.h"

#include "utf8xmlwriter.h"
#include "xmltext.h"

#include <QXmlStreamReader>
#include <reportkit/xmlreading.h>

namespace NerikResultDataXml {

QString const UserData::ChangeType = QStringLiteral("Change");
QString const UserData::CommentType = QStringLiteral("Comment");

UserData::UserData(int startPosition, int endPosition, QString const& userDataType,
                   QString const& replacement, QString const& second, QString const& covered)
    : start(startPosition), end(endPosition), type(userDataType), text(replacement), text2(second),
      coveredText(covered)
{
}

UserData::~UserData() = default;

void UserData::WriteXml(Utf8XmlWriter& writer) const
{
    writer.writeStartElement(QLatin1String("UserData"));
    writer.writeAttribute(QLatin1String("start"), start);
    writer.writeAttribute(QLatin1String("end"), end);
    XmlText::writeTextAttribute(writer, QLatin1String("type"), type);
    XmlText::writeTextElement(writer, QLatin1String("Text"), text);
    XmlText::writeTextElement(writer, QLatin1String("Text2"), text2);
    XmlText::writeTextElement(writer, QLatin1String("CoveredText"), coveredText);
    writer.writeEndElement();
}

bool UserData::ReadXml(QXmlStreamReader& reader, QString& error)
{
    REPORTKIT::XmlReading in(reader, true, error);
    UserData read;
    bool typeSet = false;
    if (!in.attributes({QStringLiteral("start"), QStringLiteral("end"), QStringLiteral("type"),
                        QStringLiteral("type64")}) ||
        !in.requiredInt(QStringLiteral("start"), read.start) ||
        !in.requiredInt(QStringLiteral("end"), read.end) ||
        !XmlText::readTextAttribute(reader, in, QStringLiteral("type"), read.type, typeSet)) {
        return false;
    }
    // Three text children, in this order, each once.
    QString* const texts[] = {&read.text, &read.text2, &read.coveredText};
    QString const names[] = {QStringLiteral("Text"), QStringLiteral("Text2"),
                             QStringLiteral("CoveredText")};
    int next = 0;
    while (in.nextChild()) {
        if (next >= 3 || reader.name() != names[next]) {
            return in.fail(QStringLiteral("unexpected element <%1> in <UserData>")
                               .arg(reader.name().toString()));
        }
        if (!in.attributes({}) || !XmlText::readText(reader, in, *texts[next])) {
            return false;
        }
        ++next;
    }
    if (!in.ok()) {
        return false;
    }
    *this = read;
    return true;
}

bool UserData::operator==(UserData const& other) const
{
    return start == other.start && end == other.end && type == other.type && text == other.text &&
           text2 == other.text2 && coveredText == other.coveredText;
}

} // namespace NerikResultDataXml
