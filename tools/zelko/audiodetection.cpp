#include "audiodetection.h"

#include <QFile>
#include <QFileInfo>

namespace zelkotool {

namespace {

bool hasAudioExtension(QString const& path)
{
    static QStringList const extensions = {
        QStringLiteral("wav"),  QStringLiteral("wave"), QStringLiteral("bwf"),
        QStringLiteral("rf64"), QStringLiteral("w64"),  QStringLiteral("flac"),
        QStringLiteral("aif"),  QStringLiteral("aiff"), QStringLiteral("aifc"),
        QStringLiteral("ogg"),  QStringLiteral("oga"),  QStringLiteral("opus"),
        QStringLiteral("au"),   QStringLiteral("snd"),  QStringLiteral("caf"),
        QStringLiteral("raw"),  QStringLiteral("pcm"),  QStringLiteral("s16")};
    return extensions.contains(QFileInfo(path).suffix().toLower());
}

bool hasAudioSignature(QByteArray const& start)
{
    static QList<QByteArray> const signatures = {"RIFF", "RIFX", "RF64", "riff", "fLaC",
                                                 "FORM", "OggS", "caff", ".snd"};
    for (QByteArray const& signature : signatures) {
        if (start.startsWith(signature)) {
            return true;
        }
    }
    return false;
}

} // namespace

bool looksLikeAudio(QString const& path)
{
    if (hasAudioExtension(path)) {
        return true;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    return hasAudioSignature(file.read(4));
}

} // namespace zelkotool
