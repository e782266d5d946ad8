#include "audiosessionfile.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>
#include <QXmlStreamWriter>

namespace audiofileexport {

QString AudioSessionFile::pathFor(QString const& firstWavPath)
{
    QFileInfo const wav(firstWavPath);
    return wav.absoluteDir().absoluteFilePath(wav.completeBaseName() +
                                              QStringLiteral(".session.xml"));
}

QByteArray AudioSessionFile::toXml() const
{
    QByteArray text;
    QXmlStreamWriter writer(&text);
    writer.setAutoFormatting(true);
    writer.writeStartDocument();
    writer.writeStartElement(QStringLiteral("AudioSession"));
    writer.writeAttribute(QStringLiteral("version"), QStringLiteral("1"));
    for (Entry const& entry : m_entries) {
        writer.writeEmptyElement(QStringLiteral("WavFile"));
        writer.writeAttribute(QStringLiteral("path"), entry.path);
        if (entry.startTime.isValid()) {
            writer.writeAttribute(QStringLiteral("startTime"),
                                  entry.startTime.toUTC().toString(Qt::ISODateWithMs));
        }
        writer.writeAttribute(QStringLiteral("sampleRate"), QString::number(entry.sampleRate));
        writer.writeAttribute(QStringLiteral("channels"), QString::number(entry.channels));
        writer.writeAttribute(QStringLiteral("frames"), QString::number(entry.frames));
        // libsndfile opens no file with a sample rate of 0.
        writer.writeAttribute(QStringLiteral("duration"),
                              QString::number(double(entry.frames) / entry.sampleRate, 'f', 6));
    }
    writer.writeEndElement();
    writer.writeEndDocument();
    text.append('\n');
    return text;
}

bool AudioSessionFile::save(QString const& path, QString& error) const
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        error = file.errorString();
        return false;
    }
    QByteArray const text = toXml();
    if (file.write(text) != text.size() || !file.commit()) {
        error = file.errorString();
        return false;
    }
    return true;
}

} // namespace audiofileexport
