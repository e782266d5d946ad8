#include "settings.h"

#include <QFile>
#include <QSaveFile>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <reportkit/xmlreading.h>

namespace JobSpec {

namespace {
// A job settings file is a few kilobytes; anything far larger is not one, and reading it
// would only fill memory with decoder names and channel numbers.
constexpr qint64 MaxFileSize = 1024 * 1024;
} // namespace

void Settings::SetValidate(bool validate)
{
    XmlElementObject::SetValidate(validate);
    m_tuner.SetValidate(validate);
    m_demodulator.SetValidate(validate);
    m_channels.SetValidate(validate);
}

QString Settings::ElementName() const
{
    return QStringLiteral("JobSettings");
}

void Settings::WriteXml(QXmlStreamWriter& writer) const
{
    writer.writeStartElement(ElementName());
    if (!m_name.isEmpty()) {
        writer.writeAttribute(QStringLiteral("name"), m_name);
    }
    m_tuner.WriteXml(writer);
    m_demodulator.WriteXml(writer);
    if (m_channels.IsValueSet()) {
        m_channels.WriteXml(writer);
    }
    writer.writeEndElement();
}

bool Settings::ReadXml(QXmlStreamReader& reader, QString& error)
{
    REPORTKIT::XmlReading in(reader, GetValidate(), error);
    if (!in.attributes({QStringLiteral("name"), QStringLiteral("version")})) {
        return false;
    }
    Settings read;
    read.SetValidate(GetValidate());
    read.m_name = reader.attributes().value(QStringLiteral("name")).toString();
    if (!ReadChildrenInOrder(in, reader, {&read.m_tuner, &read.m_demodulator, &read.m_channels},
                             error)) {
        return false;
    }
    *this = read;
    return true;
}

bool Settings::LoadFile(QString const& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        setLastXmlError(QStringLiteral("%1: cannot open: %2").arg(path, file.errorString()));
        return false;
    }
    if (file.size() > MaxFileSize) {
        setLastXmlError(QStringLiteral("%1: larger than %2 bytes, not a job settings file")
                            .arg(path)
                            .arg(MaxFileSize));
        return false;
    }
    QString error;
    QXmlStreamReader reader(&file);
    bool ok = REPORTKIT::XmlReading::readRoot(reader, ElementName(), error);
    if (ok) {
        Settings read;
        read.SetValidate(GetValidate());
        ok = read.ReadXml(reader, error) && REPORTKIT::XmlReading::readEnd(reader, error);
        if (ok) {
            *this = read;
        }
    }
    setLastXmlError(ok ? QString() : QStringLiteral("%1: %2").arg(path, error));
    return ok;
}

bool Settings::SaveFile(QString const& path, QString* error) const
{
    QSaveFile file(path);
    bool const ok = file.open(QIODevice::WriteOnly) && file.write(GetXmlString().toUtf8()) >= 0 &&
                    file.commit();
    if (!ok && error) {
        *error = QStringLiteral("%1: cannot write: %2").arg(path, file.errorString());
    }
    return ok;
}

bool Settings::operator==(Settings const& other) const
{
    return m_name == other.m_name && m_tuner == other.m_tuner &&
           m_demodulator == other.m_demodulator && m_channels == other.m_channels;
}

} // namespace JobSpec
