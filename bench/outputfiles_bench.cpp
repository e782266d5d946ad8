// Writing speed of BinaryFile::saveToFile with 4 KiB writes, beside plain QFile writes of the
// same data to the same directory in the same run (buffered as QFile opens by default, and
// unbuffered like the output files). Figures are bytes per second; the ratio is
// BinaryFile / plain QFile (1.0 = as fast).
//
//   build/bin/outputfiles_bench                    (64 MiB per file in $TMPDIR)
//   ZELKO_BENCH_MB=256 build/bin/outputfiles_bench

#include "ratioreporter.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <diagnostics/errorhandler.h>
#include <map>
#include <massdatamanagement/zelkodatastreamconverter/binaryfile.h>
#include <massdatamanagement/zelkodatastreamconverter/fileinfolist.h>
#include <string>

namespace {

constexpr int WriteSize = 4096;

qint64 fileBytes()
{
    int const fromEnvironment = qEnvironmentVariableIntValue("ZELKO_BENCH_MB");
    return qint64(fromEnvironment > 0 ? fromEnvironment : 64) << 20;
}

QByteArray const& block()
{
    static QByteArray const data = [] {
        QByteArray bytes(WriteSize, '\0');
        for (int i = 0; i < bytes.size(); ++i) {
            bytes[i] = char(i * 13 + 1);
        }
        return bytes;
    }();
    return data;
}

QTemporaryDir& directory()
{
    static QTemporaryDir dir;
    return dir;
}

void removeAll()
{
    QDir dir(directory().path());
    for (QString const& name : dir.entryList(QDir::Files)) {
        dir.remove(name);
    }
}

void plainQFile(benchmark::State& state, QIODevice::OpenMode extraMode)
{
    QString const path = directory().filePath(QStringLiteral("plain.bin"));
    qint64 const total = fileBytes();
    for (auto _ : state) {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | extraMode)) {
            state.SkipWithError("cannot open");
            break;
        }
        for (qint64 written = 0; written < total; written += WriteSize) {
            file.write(block());
        }
        file.close();
        state.PauseTiming();
        removeAll();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * total);
}

void binaryFile(benchmark::State& state)
{
    ErrorHandler::Instance().setTraceLevelMask(0);
    qint64 const total = fileBytes();
    for (auto _ : state) {
        zelkodatastreamconverter::FileInfoList list;
        zelkodatastreamconverter::BinaryFile file(QStringLiteral("Data"), QStringLiteral("BIN"),
                                                  0x7fffffff, &list);
        file.setDirectory(directory().path());
        for (qint64 written = 0; written < total; written += WriteSize) {
            file.saveToFile(block());
        }
        file.closeFile(false);
        state.PauseTiming();
        if (list.getResults().GetBinary().size() != 1) {
            state.SkipWithError("expected one file");
        }
        removeAll();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * total);
}

} // namespace

int main(int argc, char** argv)
{
    if (!directory().isValid()) {
        std::fprintf(stderr, "no temporary directory\n");
        return 1;
    }
    benchmark::RegisterBenchmark("plain_QFile_buffered", plainQFile, QIODevice::OpenMode())
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("plain_QFile_unbuffered", plainQFile,
                                 QIODevice::OpenMode(QIODevice::Unbuffered))
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("BinaryFile_saveToFile", binaryFile)
        ->Unit(benchmark::kMillisecond);
    benchmark::Initialize(&argc, argv);
    zelkobench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);

    // Writing into the page cache is work of this process (user and system time), so the CPU
    // figures are the steady ones on a shared machine; the wall-clock ratio is printed too.
    double const mb = double(fileBytes()) / (1 << 20);
    double const ours = reporter.cpuSeconds["BinaryFile_saveToFile"];
    for (char const* baseline : {"plain_QFile_unbuffered", "plain_QFile_buffered"}) {
        double const theirs = reporter.cpuSeconds[baseline];
        double const theirsReal = reporter.seconds[baseline];
        double const oursReal = reporter.seconds["BinaryFile_saveToFile"];
        if (ours > 0 && theirs > 0 && oursReal > 0) {
            std::printf("BinaryFile::saveToFile %.0f MiB/s vs %s %.0f MiB/s (CPU time): "
                        "ratio %.2f (target >= 0.90); wall-clock ratio %.2f\n",
                        mb / ours, baseline, mb / theirs, theirs / ours, theirsReal / oursReal);
        }
    }
    benchmark::Shutdown();
    return 0;
}
