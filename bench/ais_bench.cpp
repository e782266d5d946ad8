// AIS messages per second from an NMEA log (default one million sentences) through
// `zelko import aivdm` and then `zelko convert`, beside `gpsdecode` (JSON output) on the same
// log in the same run; peak resident memory of each step beside the size of the documents
// written. Both run as child processes, alternately, twice each, from a warm page cache; the
// better run counts.
//
//   build/bin/ais_bench                                   (1,000,000 sentences in $TMPDIR)
//   ZELKO_BENCH_SENTENCES=100000 build/bin/ais_bench      (a quicker look)

#include "childprocess.h"

#include <QDirIterator>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <cstdio>
#include <recordingwriter/aisencoder.h>

using namespace zelkobench;
using namespace zelkorecording;

namespace {

qint64 sentenceTarget()
{
    int const fromEnvironment = qEnvironmentVariableIntValue("ZELKO_BENCH_SENTENCES");
    return fromEnvironment > 0 ? fromEnvironment : 1000000;
}

QByteArray tagged(quint64 seconds, QString const& sentence)
{
    return AisEncoder::tagBlock("c:" + QByteArray::number(seconds)) + sentence.toLatin1() + '\n';
}

// A busy coast: 2000 vessels report positions in turn, every 50th report comes with the
// vessel's static and voyage data (two sentences). Returns the number of messages.
qint64 writeLog(QString const& path, qint64 sentences)
{
    QFile log(path);
    if (!log.open(QIODevice::WriteOnly)) {
        return -1;
    }
    qint64 written = 0;
    qint64 messages = 0;
    int sequence = 0;
    for (qint64 i = 0; written < sentences; ++i) {
        AisVessel vessel;
        vessel.mmsi = 211000000u + quint32(i % 2000);
        vessel.latitude = 53.0 + double(i % 2000) / 2000.0;
        vessel.longitude = 8.0 + double(i % 997) / 997.0;
        vessel.speedKnots = double(i % 200) / 10.0;
        vessel.courseDegrees = double(i % 3600) / 10.0;
        vessel.heading = int(i % 360);
        vessel.navigationalStatus = 0;
        vessel.second = int(i % 60);
        vessel.callSign = "DA" + QByteArray::number(i % 2000);
        vessel.name = "VESSEL " + QByteArray::number(i % 2000);
        vessel.destination = "HAMBURG";
        vessel.shipType = 70;
        quint64 const seconds = 1715934600u + quint64(i / 100);
        AisBitWriter const message =
            i % 50 == 0 ? AisEncoder::staticAndVoyage(vessel) : AisEncoder::positionReportA(vessel);
        QStringList const lines = AisEncoder::sentences(message, i % 2 ? 'B' : 'A', sequence);
        sequence = (sequence + 1) % 10;
        for (QString const& line : lines) {
            log.write(tagged(seconds, line));
        }
        written += lines.size();
        ++messages;
    }
    return messages;
}

qint64 documentBytes(QString const& directory)
{
    qint64 bytes = 0;
    QDirIterator files(directory, {QStringLiteral("*.xml")}, QDir::Files);
    while (files.hasNext()) {
        bytes += QFileInfo(files.next()).size();
    }
    return bytes;
}

} // namespace

int main()
{
    QTemporaryDir directory;
    QString const log = directory.filePath(QStringLiteral("coast.nmea"));
    std::printf("writing %lld sentences to %s\n", sentenceTarget(), qPrintable(log));
    qint64 const messages = writeLog(log, sentenceTarget());
    if (messages <= 0) {
        std::fprintf(stderr, "cannot write the log\n");
        return 1;
    }
    std::string const recording = directory.filePath(QStringLiteral("coast.zdr")).toStdString();
    QString const out = directory.filePath(QStringLiteral("out"));
    std::vector<std::string> const import = {ZELKO_TOOL,        "import", "aivdm",  "--quiet",
                                             log.toStdString(), "-o",     recording};
    std::vector<std::string> const convert = {ZELKO_TOOL, "convert", "--quiet",         "--trace",
                                              "0",        "-o",      out.toStdString(), recording};
    QString const gpsdecode = QStandardPaths::findExecutable(QStringLiteral("gpsdecode"));

    Run importRun;
    Run convertRun;
    Run ours;
    Run baseline;
    for (int round = 0; round < 2; ++round) {
        if (!gpsdecode.isEmpty()) {
            warmCache(log);
            baseline =
                better(baseline, runProgram({gpsdecode.toStdString(), "-j"}, log.toStdString()));
        }
        warmCache(log);
        QDir(out).removeRecursively();
        Run const imported = runProgram(import);
        Run const converted = runProgram(convert);
        Run const both = chained(imported, converted);
        if (!ours.ok || (both.ok && both.seconds < ours.seconds)) {
            ours = both;
            importRun = imported;
            convertRun = converted;
        }
    }
    if (!ours.ok) {
        std::fprintf(stderr, "zelko import or convert failed\n");
        return 1;
    }
    double const documentMiB = double(documentBytes(out)) / (1 << 20);
    std::printf("log: %lld sentences, %lld messages, %.1f MB\n", sentenceTarget(), messages,
                double(QFileInfo(log).size()) / 1e6);
    std::printf("zelko import:   %9.0f messages/s  peak RSS %7.1f MiB\n",
                double(messages) / importRun.seconds, importRun.peakMiB);
    std::printf("zelko convert:  %9.0f messages/s  peak RSS %7.1f MiB, documents %.1f MiB "
                "(memory %.2f x the documents; goal at most 2)\n",
                double(messages) / convertRun.seconds, convertRun.peakMiB, documentMiB,
                convertRun.peakMiB / documentMiB);
    std::printf("import+convert: %9.0f messages/s\n", double(messages) / ours.seconds);
    if (gpsdecode.isEmpty() || !baseline.ok) {
        std::printf(
            "gpsdecode: not installed or failed, no baseline (apt-get install gpsd-clients)\n");
        return 0;
    }
    std::printf("gpsdecode -j:   %9.0f messages/s  peak RSS %7.1f MiB\n",
                double(messages) / baseline.seconds, baseline.peakMiB);
    std::printf("ratio to gpsdecode: %.2f (speed), goal at least 1\n",
                baseline.seconds / ours.seconds);
    return 0;
}
