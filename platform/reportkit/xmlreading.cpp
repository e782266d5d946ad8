#include "xmlreading.h"

#include "xmltime.h"

#include <QXmlStreamReader>

namespace REPORTKIT {

XmlReading::XmlReading(QXmlStreamReader& reader, bool strict, QString& error)
    : m_reader(reader), m_strict(strict), m_error(error)
{
}

QString XmlReading::position(QXmlStreamReader const& reader)
{
    return QStringLiteral("line %1, column %2").arg(reader.lineNumber()).arg(reader.columnNumber());
}

bool XmlReading::fail(QString const& message)
{
    if (m_error.isEmpty()) {
        m_error = QStringLiteral("%1: %2").arg(position(m_reader), message);
    }
    return false;
}

bool XmlReading::ok()
{
    if (m_reader.hasError()) {
        return fail(m_reader.errorString());
    }
    return m_error.isEmpty();
}

bool XmlReading::attributes(QStringList const& allowed)
{
    if (!m_strict) {
        return true;
    }
    for (QXmlStreamAttribute const& attribute : m_reader.attributes()) {
        if (!attribute.namespaceUri().isEmpty()) {
            continue; // xsi:noNamespaceSchemaLocation and friends
        }
        if (!allowed.contains(attribute.name().toString())) {
            return fail(QStringLiteral("unknown attribute %1 of <%2>")
                            .arg(attribute.name().toString(), m_reader.name().toString()));
        }
    }
    return true;
}

bool XmlReading::requiredText(QString const& name, QString& value)
{
    if (!m_reader.attributes().hasAttribute(name)) {
        return fail(
            QStringLiteral("<%1> lacks the attribute %2").arg(m_reader.name().toString(), name));
    }
    value = m_reader.attributes().value(name).toString();
    return true;
}

bool XmlReading::optionalTime(QString const& name, QDateTime& value)
{
    if (!m_reader.attributes().hasAttribute(name)) {
        value = QDateTime();
        return true;
    }
    return requiredTime(name, value);
}

bool XmlReading::requiredTime(QString const& name, QDateTime& value)
{
    QString text;
    if (!requiredText(name, text)) {
        return false;
    }
    bool ok = false;
    value = XmlTime::fromText(text, &ok);
    return ok || fail(QStringLiteral("%1 is not a date-time: \"%2\"").arg(name, text));
}

bool XmlReading::optionalDouble(QString const& name, double& value)
{
    if (!m_reader.attributes().hasAttribute(name)) {
        return true;
    }
    return requiredDouble(name, value);
}

bool XmlReading::requiredDouble(QString const& name, double& value)
{
    QString text;
    if (!requiredText(name, text)) {
        return false;
    }
    bool ok = false;
    double const parsed = text.toDouble(&ok);
    if (!ok) {
        return fail(QStringLiteral("%1 is not a number: \"%2\"").arg(name, text));
    }
    value = parsed;
    return true;
}

bool XmlReading::optionalInt(QString const& name, int& value, bool& present)
{
    present = m_reader.attributes().hasAttribute(name);
    return !present || requiredInt(name, value);
}

bool XmlReading::requiredInt(QString const& name, int& value)
{
    QString text;
    if (!requiredText(name, text)) {
        return false;
    }
    bool ok = false;
    int const parsed = text.toInt(&ok);
    if (!ok) {
        return fail(QStringLiteral("%1 is not an integer: \"%2\"").arg(name, text));
    }
    value = parsed;
    return true;
}

bool XmlReading::optionalBool(QString const& name, bool& value)
{
    if (!m_reader.attributes().hasAttribute(name)) {
        return true;
    }
    QString const text = m_reader.attributes().value(name).toString();
    if (text == QLatin1String("true") || text == QLatin1String("1")) {
        value = true;
    } else if (text == QLatin1String("false") || text == QLatin1String("0")) {
        value = false;
    } else {
        return fail(QStringLiteral("%1 is not a boolean: \"%2\"").arg(name, text));
    }
    return true;
}

bool XmlReading::nextChild()
{
    return m_reader.readNextStartElement();
}

bool XmlReading::unexpectedElement()
{
    if (m_strict) {
        return fail(QStringLiteral("unexpected element <%1>").arg(m_reader.name().toString()));
    }
    m_reader.skipCurrentElement();
    return !m_reader.hasError();
}

bool XmlReading::skipContent()
{
    while (nextChild()) {
        if (!unexpectedElement()) {
            return false;
        }
    }
    return ok();
}

bool XmlReading::readText(QString& text)
{
    text = m_reader.readElementText(QXmlStreamReader::ErrorOnUnexpectedElement);
    return ok();
}

bool XmlReading::readRoot(QXmlStreamReader& reader, QString const& rootName, QString& error)
{
    XmlReading in(reader, true, error);
    if (!reader.readNextStartElement()) {
        return in.ok() && in.fail(QStringLiteral("no root element"));
    }
    if (reader.name() != rootName) {
        return in.fail(QStringLiteral("root element is <%1>, expected <%2>")
                           .arg(reader.name().toString(), rootName));
    }
    return true;
}

bool XmlReading::readEnd(QXmlStreamReader& reader, QString& error)
{
    XmlReading in(reader, true, error);
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isStartElement()) {
            return in.fail(QStringLiteral("content after the root element"));
        }
    }
    return in.ok();
}

} // namespace REPORTKIT
