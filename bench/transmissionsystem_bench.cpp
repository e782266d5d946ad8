// Transmission-system conversion: frames per second of `zelko convert --kind ts` on a
// recording (default 256 MiB) made of every bundled transmission-system sample over and
// over (all thirteen systems, both byte orders), beside `zelko inspect` over the same file in
// the same run; peak resident memory of the conversion beside the size of its document.
// Child processes, alternately, twice each, from a warm page cache; the better run counts.
//
//   build/bin/transmissionsystem_bench
//   ZELKO_BENCH_MB=32 build/bin/transmissionsystem_bench   (a quicker look)

#include "childprocess.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtEndian>
#include <cstdio>
#include <cstring>

using namespace zelkobench;

namespace {

QStringList const Samples = {"pocsag-paging.zdr",   "fms-zvei-evening.zdr", "ax25-session.zdr",
                             "acars-multiblock.zdr", "pactor-exchange.zdr",  "clover-exchange.zdr",
                             "mpt1327-trunking.zdr", "f7w-subchannels.zdr",  "text-and-atis.zdr"};

qint64 targetBytes()
{
    int const fromEnvironment = qEnvironmentVariableIntValue("ZELKO_BENCH_MB");
    return qint64(fromEnvironment > 0 ? fromEnvironment : 256) << 20;
}

// The samples one after the other until the target size; returns the number of frames.
qint64 writeRecording(QString const& path)
{
    QByteArray round;
    qint64 framesPerRound = 0;
    for (QString const& sample : Samples) {
        QFile file(QStringLiteral(ZELKO_SOURCE_DIR "/data/samples/") + sample);
        if (!file.open(QIODevice::ReadOnly)) {
            return -1;
        }
        QByteArray const bytes = file.readAll();
        round += bytes;
        // Every sample frame is whole; its length word counts 32-bit words in either order.
        for (int at = 0; at + 8 <= bytes.size();) {
            quint32 length = 0;
            std::memcpy(&length, bytes.constData() + at + 4, 4);
            if (length > 0x4000000u) {
                length = qFromBigEndian(length);
            }
            at += int(length) * 4;
            ++framesPerRound;
        }
    }
    QFile out(path);
    if (!out.open(QIODevice::WriteOnly)) {
        return -1;
    }
    qint64 frames = 0;
    while (out.size() < targetBytes()) {
        out.write(round);
        frames += framesPerRound;
    }
    return frames;
}

} // namespace

int main()
{
    QTemporaryDir directory;
    QString const recording = directory.filePath(QStringLiteral("mixed.zdr"));
    std::printf("writing %lld MiB of transmission-system frames to %s\n", targetBytes() >> 20,
                qPrintable(recording));
    qint64 const frames = writeRecording(recording);
    if (frames <= 0) {
        std::fprintf(stderr, "cannot write the recording\n");
        return 1;
    }
    QString const out = directory.filePath(QStringLiteral("out"));
    std::vector<std::string> const convert = {ZELKO_TOOL, "convert", "--quiet", "--trace", "0",
                                              "--kind", "ts", "-o", out.toStdString(),
                                              recording.toStdString()};
    std::vector<std::string> const inspect = {ZELKO_TOOL, "inspect", "--summary", "--trace", "0",
                                              recording.toStdString()};
    Run ours;
    Run baseline;
    qint64 documentBytes = 0;
    for (int round = 0; round < 2; ++round) {
        warmCache(recording);
        baseline = better(baseline, runProgram(inspect));
        warmCache(recording);
        QDir(out).removeRecursively();
        ours = better(ours, runProgram(convert));
        for (QFileInfo const& file : QDir(out).entryInfoList(QDir::Files)) {
            documentBytes = file.size();
        }
    }
    if (!ours.ok || !baseline.ok) {
        std::fprintf(stderr, "zelko convert or inspect failed\n");
        return 1;
    }
    double const megabytes = double(QFileInfo(recording).size()) / 1e6;
    double const documentMiB = double(documentBytes) / (1 << 20);
    std::printf("recording: %.1f MB, %lld frames\n", megabytes, frames);
    std::printf("zelko convert --kind ts: %9.0f frames/s %7.1f MB/s  peak RSS %7.1f MiB, document "
                "%.1f MiB (memory %.2f x the document; goal at most 2)\n",
                double(frames) / ours.seconds, megabytes / ours.seconds, ours.peakMiB, documentMiB,
                ours.peakMiB / documentMiB);
    std::printf("zelko inspect:           %9.0f frames/s %7.1f MB/s\n",
                double(frames) / baseline.seconds, megabytes / baseline.seconds);
    std::printf("ratio to inspect: %.3f (speed), goal at least 0.25\n",
                baseline.seconds / ours.seconds);
    return 0;
}
