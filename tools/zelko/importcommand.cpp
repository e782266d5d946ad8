// zelko import aivdm: NMEA AIS logs into a recording of PDU frames (code 16) that
// "zelko convert" turns into result documents and AIS station files.

#include "command.h"

#include <QCommandLineParser>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QTextStream>
#include <massdatamanagement/zelkodatastreamconverter/frameformat.h>
#include <recordingwriter/aisencoder.h>
#include <recordingwriter/aivdmreader.h>
#include <recordingwriter/recordingwriter.h>
#include <unistd.h>

namespace zelkotool {

namespace {

using zelkorecording::AivdmReader;

int usageError(QString const& message)
{
    QTextStream(stderr) << "zelko import: " << message << " (see --help)\n";
    return 2;
}

QString plural(qint64 count, char const* one, char const* many)
{
    return QStringLiteral("%1 %2").arg(count).arg(QLatin1String(count == 1 ? one : many));
}

struct ImportOptions
{
    QDateTime start; ///< for messages without a tag-block time; null: the log's date
    zelkorecording::ByteOrder order = zelkorecording::ByteOrder::Host;
    bool progress = false;
};

/// Imports one log into the writer; false when the log cannot be read or a frame not written.
bool importLog(QString const& path, zelkorecording::RecordingWriter& writer,
               ImportOptions const& options, qint64& written)
{
    QFile log(path);
    if (!log.open(QIODevice::ReadOnly)) {
        QTextStream(stderr) << "zelko import: " << path << ": " << log.errorString() << '\n';
        return false;
    }
    QDateTime const start =
        options.start.isValid() ? options.start : QFileInfo(log).lastModified().toUTC();
    quint64 const fallbackTime = quint64(start.toMSecsSinceEpoch()) * 1000u;
    AivdmReader reader;
    qint64 const size = qMax<qint64>(1, log.size());
    int shownPercent = -1;
    while (!log.atEnd()) {
        if (auto message = reader.readLine(log.readLine())) {
            QByteArray const payload = zelkorecording::AisEncoder::framePayload(
                message->time.value_or(fallbackTime), message->bits, message->bitCount,
                message->channel);
            if (!writer.writeFrame(zelkodatastreamconverter::FrameType::TransmissionSystem, payload,
                                   options.order)) {
                QTextStream(stderr) << "zelko import: cannot write the recording\n";
                return false;
            }
            ++written;
        }
        int const percent = int(log.pos() * 100 / size);
        if (options.progress && percent != shownPercent) {
            shownPercent = percent;
            QTextStream(stderr) << "\rimport " << QFileInfo(path).fileName() << ": " << percent
                                << " %" << Qt::flush;
        }
    }
    reader.finish();
    if (options.progress) {
        QTextStream(stderr) << '\n';
    }
    zelkorecording::AivdmCounts const& counts = reader.counts();
    QTextStream(stdout) << path << ": " << plural(counts.lines, "line", "lines") << ", "
                        << plural(counts.sentences, "AIS sentence", "AIS sentences") << ", "
                        << plural(counts.messages, "message", "messages") << " written\n"
                        << "  skipped: "
                        << plural(counts.checksumErrors, "checksum error", "checksum errors")
                        << ", " << plural(counts.broken, "broken sentence", "broken sentences")
                        << ", "
                        << plural(counts.incomplete, "incomplete message", "incomplete messages")
                        << ", " << plural(counts.otherLines, "other line", "other lines") << '\n';
    return true;
}

} // namespace

int runImport(QStringList const& arguments)
{
    if (arguments.value(0) == QLatin1String("morse-audio")) {
        return runImportMorseAudio(arguments.mid(1));
    }
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Import logs of another format into a recording.\n\n"
        "aivdm: NMEA 0183 AIS sentences (!AIVDM, !AIVDO), one per line, optionally behind a\n"
        "tag block whose c: field gives the time (\\c:1715934600*hh\\!AIVDM,...). Messages of\n"
        "several sentences are assembled by sequence ID and channel. Each message becomes one\n"
        "PDU frame (code 16, AIS record) stamped with its tag-block time, else with --start,\n"
        "else with the log's modification time. Sentences with a wrong checksum, broken fields\n"
        "or missing parts are skipped and counted.\n\n"
        "morse-audio: CW audio, see 'zelko import morse-audio --help'."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("FORMAT"), QStringLiteral("aivdm or morse-audio"));
    parser.addPositionalArgument(QStringLiteral("LOG"), QStringLiteral("logs to import, in order"),
                                 QStringLiteral("LOG..."));
    parser.addOptions({
        {{QStringLiteral("o"), QStringLiteral("output")},
         QStringLiteral("the recording to write (replaced)"),
         QStringLiteral("RECORDING")},
        {QStringLiteral("start"),
         QStringLiteral("time of messages without a tag-block time, e.g. 2024-05-17T08:30:00Z"),
         QStringLiteral("TIME")},
        {QStringLiteral("swapped"),
         QStringLiteral("write the recording in the other byte order, as big-endian receivers do")},
        {QStringLiteral("quiet"), QStringLiteral("no progress line")},
    });
    if (processCommandLine(parser, QStringLiteral("import"), arguments)) {
        return 0;
    }
    QStringList logs = parser.positionalArguments();
    if (logs.isEmpty() || logs.takeFirst() != QLatin1String("aivdm")) {
        return usageError(QStringLiteral("the formats are 'aivdm' and 'morse-audio'"));
    }
    if (logs.isEmpty()) {
        return usageError(QStringLiteral("no log given"));
    }
    if (!parser.isSet(QStringLiteral("output"))) {
        return usageError(QStringLiteral("-o RECORDING is required"));
    }
    ImportOptions options;
    if (parser.isSet(QStringLiteral("start"))) {
        options.start =
            QDateTime::fromString(parser.value(QStringLiteral("start")), Qt::ISODateWithMs);
        if (!options.start.isValid()) {
            return usageError(QStringLiteral("--start needs a time such as 2024-05-17T08:30:00Z"));
        }
    }
    if (parser.isSet(QStringLiteral("swapped"))) {
        options.order = zelkorecording::ByteOrder::Swapped;
    }
    options.progress = !parser.isSet(QStringLiteral("quiet")) && ::isatty(STDERR_FILENO) == 1;

    // Written aside and put in place at the end: a failed import leaves no half recording.
    QSaveFile recording(parser.value(QStringLiteral("output")));
    if (!recording.open(QIODevice::WriteOnly)) {
        QTextStream(stderr) << "zelko import: cannot write " << recording.fileName() << ": "
                            << recording.errorString() << '\n';
        return 1;
    }
    zelkorecording::RecordingWriter writer(&recording);
    qint64 written = 0;
    bool allRead = true;
    for (QString const& log : logs) {
        allRead = importLog(log, writer, options, written) && allRead;
    }
    if (!recording.commit()) {
        QTextStream(stderr) << "zelko import: cannot write " << recording.fileName() << ": "
                            << recording.errorString() << '\n';
        return 1;
    }
    QTextStream(stdout) << plural(written, "frame", "frames") << " in " << recording.fileName()
                        << '\n';
    return allRead ? 0 : 1;
}

} // namespace zelkotool
