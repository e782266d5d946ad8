#pragma once

#include <QDateTime>
#include <QString>
#include <vector>

namespace audiofileexport {

/// A session file: an XML list of WAV files that belong together (schemas/audiosession.xsd):
///
///     <AudioSession version="1">
///       <WavFile path="/out/rec.wav" startTime="2017-07-14T02:40:00.123Z" sampleRate="48000"
///                channels="1" frames="96000" duration="2.000000"/>
///     </AudioSession>
///
/// Paths are absolute; startTime is UTC with milliseconds and left out when the WAV carries
/// none; duration is frames / sampleRate in seconds.
class AudioSessionFile
{
public:
    struct Entry
    {
        QString path;
        QDateTime startTime;
        int sampleRate = 0;
        int channels = 0;
        qint64 frames = 0;
    };

    void append(Entry entry) { m_entries.push_back(std::move(entry)); }

    /// The session file's name for a list that starts with firstWavPath: beside it, its base
    /// name with ".session.xml" ("/out/rec.wav" -> "/out/rec.session.xml").
    static QString pathFor(QString const& firstWavPath);

    /// The document's text.
    QByteArray toXml() const;

    /// Writes the document in one step (never a cut-off file); false with error set when the
    /// file cannot be written.
    bool save(QString const& path, QString& error) const;

private:
    std::vector<Entry> m_entries;
};

} // namespace audiofileexport
