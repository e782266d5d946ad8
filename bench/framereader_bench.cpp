// Reading speed of FileReader over a page-cached recording, beside a plain read() loop over
// the same file in the same run, for 4 KiB and 64-byte frames in both byte orders: frames
// copied out (takeFrameData) and looked at in place (frameView).
//
//   build/bin/framereader_bench                 (512 MiB recordings in $TMPDIR)
//   ZELKO_BENCH_MB=64 build/bin/framereader_bench   (a quicker look)

#include "ratioreporter.h"

#include <QDir>
#include <QFile>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <diagnostics/errorhandler.h>
#include <fcntl.h>
#include <map>
#include <massdatamanagement/zelkodatastreamconverter/filereader.h>
#include <recordingwriter/recordingwriter.h>
#include <unistd.h>
#include <vector>

using zelkorecording::ByteOrder;
using zelkorecording::RecordingWriter;

namespace {

struct Recording
{
    QString label;
    QString path;
    int frameBytes;
    ByteOrder order;
    qint64 fileBytes = 0;
    qint64 frames = 0;
};

qint64 recordingMegabytes()
{
    int const fromEnvironment = qEnvironmentVariableIntValue("ZELKO_BENCH_MB");
    return fromEnvironment > 0 ? fromEnvironment : 512;
}

bool writeRecording(Recording& recording)
{
    QFile file(recording.path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        return false;
    }
    QByteArray payload(recording.frameBytes - zelkodatastreamconverter::FrameHeaderSize, '\0');
    for (int i = 0; i < payload.size(); ++i) {
        payload[i] = char(i * 7);
    }
    QByteArray const frame = RecordingWriter::frameBytes(
        zelkodatastreamconverter::FrameType::DecodedText, payload, recording.order);
    QByteArray chunk;
    while (chunk.size() < (1 << 20)) {
        chunk += frame;
    }
    qint64 const target = recordingMegabytes() << 20;
    while (recording.fileBytes < target) {
        if (file.write(chunk) != chunk.size()) {
            return false;
        }
        recording.fileBytes += chunk.size();
        recording.frames += chunk.size() / frame.size();
    }
    return true;
}

void plainRead(benchmark::State& state, Recording const* recording)
{
    std::vector<char> buffer(1 << 20);
    for (auto _ : state) {
        int const fd = ::open(recording->path.toLocal8Bit().constData(), O_RDONLY);
        qint64 total = 0;
        ssize_t count;
        while ((count = ::read(fd, buffer.data(), buffer.size())) > 0) {
            total += count;
        }
        ::close(fd);
        benchmark::DoNotOptimize(total);
    }
    state.SetBytesProcessed(state.iterations() * recording->fileBytes);
    state.SetItemsProcessed(state.iterations() * recording->frames);
}

enum class Access
{
    Copy,
    View
};

void fileReader(benchmark::State& state, Recording const* recording, Access access)
{
    ErrorHandler::Instance().setTraceLevelMask(0); // the end-of-file message is not measured
    QByteArray type;
    QByteArray frame;
    for (auto _ : state) {
        zelkodatastreamconverter::FileReader reader(recording->path);
        qint64 frames = 0;
        while (reader.isWorking()) {
            if (!reader.readFrame()) {
                continue;
            }
            ++frames;
            if (access == Access::Copy) {
                reader.takeFrameData(type, frame);
            } else {
                benchmark::DoNotOptimize(reader.frameView().type);
                reader.removeFrameData();
            }
        }
        if (frames != recording->frames) {
            state.SkipWithError("frame count differs");
        }
        benchmark::DoNotOptimize(frame.constData());
    }
    state.SetBytesProcessed(state.iterations() * recording->fileBytes);
    state.SetItemsProcessed(state.iterations() * recording->frames);
}

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    QString const directory = QDir::tempPath();
    std::vector<Recording> recordings = {
        {QStringLiteral("4KiB_host"), directory + QStringLiteral("/zelko-bench-4k-host.zdr"), 4096,
         ByteOrder::Host},
        {QStringLiteral("4KiB_swapped"), directory + QStringLiteral("/zelko-bench-4k-swapped.zdr"),
         4096, ByteOrder::Swapped},
        {QStringLiteral("64B_host"), directory + QStringLiteral("/zelko-bench-64-host.zdr"), 64,
         ByteOrder::Host},
        {QStringLiteral("64B_swapped"), directory + QStringLiteral("/zelko-bench-64-swapped.zdr"),
         64, ByteOrder::Swapped},
    };
    for (Recording& recording : recordings) {
        std::fprintf(stderr, "writing %s (%lld MiB)\n", qPrintable(recording.path),
                     recordingMegabytes());
        if (!writeRecording(recording)) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(recording.path));
            return 1;
        }
        std::string const label = recording.label.toStdString();
        // The plain read runs first and leaves the file in the page cache for the reader.
        benchmark::RegisterBenchmark(("plain_read/" + label).c_str(), plainRead, &recording)
            ->Unit(benchmark::kMillisecond)
            ->MinTime(1.0)
            ->UseRealTime();
        benchmark::RegisterBenchmark(("FileReader_copy/" + label).c_str(), fileReader, &recording,
                                     Access::Copy)
            ->Unit(benchmark::kMillisecond)
            ->MinTime(1.0)
            ->UseRealTime();
        benchmark::RegisterBenchmark(("FileReader_view/" + label).c_str(), fileReader, &recording,
                                     Access::View)
            ->Unit(benchmark::kMillisecond)
            ->MinTime(1.0)
            ->UseRealTime();
    }
    zelkobench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);

    // Ratios are reader speed over read() speed, both measured in this run, in CPU time (the
    // thread's, system time included): the machine is shared, and waiting for a core is no
    // part of reading.
    std::printf("\n%-14s %12s %12s %12s %14s %8s %8s %8s\n", "recording", "read() MB/s",
                "copy MB/s", "view MB/s", "view frames/s", "copy", "view", "target");
    for (Recording const& recording : recordings) {
        std::string const label = recording.label.toStdString();
        double const plain = reporter.findCpu("plain_read/" + label + "/");
        double const copy = reporter.findCpu("FileReader_copy/" + label + "/");
        double const view = reporter.findCpu("FileReader_view/" + label + "/");
        if (plain <= 0 || copy <= 0 || view <= 0) {
            continue;
        }
        double const megabytes = double(recording.fileBytes) / 1e6;
        double const target =
            recording.frameBytes == 64 ? 0.3 : (recording.order == ByteOrder::Host ? 0.85 : 0.75);
        std::printf("%-14s %12.0f %12.0f %12.0f %14.0f %8.2f %8.2f %8.2f\n", label.c_str(),
                    megabytes / plain, megabytes / copy, megabytes / view,
                    double(recording.frames) / view, plain / copy, plain / view, target);
        QFile::remove(recording.path);
    }
    benchmark::Shutdown();
    return 0;
}
