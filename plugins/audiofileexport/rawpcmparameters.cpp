#include "rawpcmparameters.h"

#include <QList>

namespace audiofileexport {

namespace {

bool parseRange(QByteArray const& value, int maximum, int& target)
{
    bool ok = false;
    int const number = value.toInt(&ok);
    if (!ok || number < 1 || number > maximum) {
        return false;
    }
    target = number;
    return true;
}

} // namespace

QString RawPcmParameters::sidecarPath(QString const& recordingPath)
{
    return recordingPath + QStringLiteral(".params");
}

bool RawPcmParameters::parse(QByteArray const& text, QString& error)
{
    if (text.size() > MaximumSidecarBytes) {
        error = QStringLiteral("larger than %1 bytes").arg(MaximumSidecarBytes);
        return false;
    }
    QList<QByteArray> const lines = text.split('\n');
    for (int index = 0; index < lines.size(); ++index) {
        QByteArray const line = lines[index].trimmed();
        if (line.isEmpty() || line.startsWith('#')) {
            continue;
        }
        int const equals = line.indexOf('=');
        QByteArray const key = line.left(equals).trimmed().toLower();
        QByteArray const value = line.mid(equals + 1).trimmed().toLower();
        bool valid = false;
        if (equals < 0) {
            valid = false;
        } else if (key == "samplerate") {
            valid = parseRange(value, MaximumSampleRate, sampleRate);
        } else if (key == "channels") {
            valid = parseRange(value, MaximumChannels, channels);
        } else if (key == "byteorder") {
            valid = value == "little" || value == "big";
            bigEndian = value == "big";
        }
        if (!valid) {
            error = QStringLiteral("line %1: '%2' is not a valid setting")
                        .arg(index + 1)
                        .arg(QString::fromUtf8(line.left(80)));
            return false;
        }
    }
    return true;
}

} // namespace audiofileexport
