// Conversion speed and peak resident memory of `zelko convert` on a 16-bit stereo WAV
// (default 1024 MiB of samples), beside `sox in.wav out.wav` on the same file in the same
// run. Both run as child processes, alternately, twice each, from a warm page cache; the
// better run of each counts. The conversion is repeated on a file an eighth as long to show
// that its memory does not grow with the recording.
//
//   build/bin/audioexport_bench                    (1024 MiB in $TMPDIR)
//   ZELKO_BENCH_MB=64 build/bin/audioexport_bench  (a quicker look)

#include "childprocess.h"

#include <QByteArray>
#include <QFile>
#include <QStandardPaths>
#include <QString>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <random>
#include <sndfile.h>
#include <vector>

using namespace zelkobench;

namespace {

qint64 recordingMegabytes()
{
    int const fromEnvironment = qEnvironmentVariableIntValue("ZELKO_BENCH_MB");
    return fromEnvironment > 0 ? fromEnvironment : 1024;
}

// Noise, so that no stage can shortcut silence.
bool writeWav(QString const& path, qint64 bytes)
{
    SF_INFO info{};
    info.samplerate = 48000;
    info.channels = 2;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* file = sf_open(QFile::encodeName(path).constData(), SFM_WRITE, &info);
    if (!file) {
        return false;
    }
    std::vector<short> chunk(1 << 20);
    std::mt19937 random(14);
    for (short& sample : chunk) {
        sample = short(random());
    }
    qint64 const frames = bytes / 4;
    qint64 const framesPerChunk = qint64(chunk.size()) / 2;
    bool ok = true;
    for (qint64 written = 0; ok && written < frames; written += framesPerChunk) {
        sf_count_t const count = std::min(framesPerChunk, frames - written);
        ok = sf_writef_short(file, chunk.data(), count) == count;
    }
    return sf_close(file) == 0 && ok;
}

} // namespace

int main()
{
    qint64 const bytes = recordingMegabytes() << 20;
    QTemporaryDir directory;
    QString const input = directory.filePath(QStringLiteral("in.wav"));
    QString const shortInput = directory.filePath(QStringLiteral("short.wav"));
    std::printf("writing %lld MiB of 16-bit stereo WAV to %s\n", bytes >> 20,
                qPrintable(directory.path()));
    if (!writeWav(input, bytes) || !writeWav(shortInput, bytes / 8)) {
        std::fprintf(stderr, "cannot write the input files\n");
        return 1;
    }
    double const megabytes = double(QFile(input).size()) / 1e6;
    std::string const out = directory.filePath(QStringLiteral("out")).toStdString();
    std::vector<std::string> const zelko = {ZELKO_TOOL, "convert", "--quiet", "--trace", "0",
                                            "-o", out, input.toStdString()};
    QString const soxPath = QStandardPaths::findExecutable(QStringLiteral("sox"));
    std::vector<std::string> const sox = {soxPath.toStdString(), input.toStdString(),
                                          directory.filePath(QStringLiteral("sox.wav")).toStdString()};

    Run ours;
    Run baseline;
    for (int round = 0; round < 2; ++round) {
        warmCache(input);
        if (!soxPath.isEmpty()) {
            baseline = better(baseline, runProgram(sox));
            QFile::remove(directory.filePath(QStringLiteral("sox.wav")));
        }
        warmCache(input);
        ours = better(ours, runProgram(zelko));
        QFile::remove(directory.filePath(QStringLiteral("out/in.wav")));
    }
    Run const shortRun = runProgram({ZELKO_TOOL, "convert", "--quiet", "--trace", "0", "-o", out,
                                     shortInput.toStdString()});
    if (!ours.ok || !shortRun.ok) {
        std::fprintf(stderr, "zelko convert failed\n");
        return 1;
    }

    std::printf("input: %.1f MB\n", megabytes);
    std::printf("zelko convert:  %8.1f MB/s  peak RSS %6.1f MiB (%.1f MiB on a file 1/8 as long)\n",
                megabytes / ours.seconds, ours.peakMiB, shortRun.peakMiB);
    if (soxPath.isEmpty()) {
        std::printf("sox: not installed, no baseline (apt-get install sox)\n");
        return 0;
    }
    if (!baseline.ok) {
        std::printf("sox: failed on the input, no baseline\n");
        return 0;
    }
    std::printf("sox in.wav out.wav: %5.1f MB/s  peak RSS %6.1f MiB\n", megabytes / baseline.seconds,
                baseline.peakMiB);
    std::printf("ratio to sox: %.2f (speed), goal at least 0.8\n", baseline.seconds / ours.seconds);
    return 0;
}
