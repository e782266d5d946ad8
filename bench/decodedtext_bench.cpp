// Conversion speed of DecodedTextConverter over a decoded-text recording (default 256 MiB,
// two ITA2 channels), beside reading the same file frame by frame as `zelko inspect` does,
// in the same run. Also the peak resident memory of the conversion against the size of the
// document it wrote.
//
//   build/bin/decodedtext_bench                    (256 MiB in $TMPDIR)
//   ZELKO_BENCH_MB=32 build/bin/decodedtext_bench  (a quicker look)

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <cstdio>
#include <diagnostics/errorhandler.h>
#include <fstream>
#include <jobspec/settings.h>
#include <massdatamanagement/zelkodatastreamconverter/decodedtextconverter.h>
#include <massdatamanagement/zelkodatastreamconverter/filereader.h>
#include <recordingwriter/decodedtextpayload.h>
#include <recordingwriter/recordingwriter.h>
#include <string>
#include <sys/resource.h>
#include <vector>

using zelkorecording::RecordingWriter;

namespace {

constexpr int EntriesPerFrame = 512;

qint64 recordingMegabytes()
{
    int const fromEnvironment = qEnvironmentVariableIntValue("ZELKO_BENCH_MB");
    return fromEnvironment > 0 ? fromEnvironment : 256;
}

// ITA2 codes of a weather report with frequent figures shifts, on two channels.
QByteArray framePayload(quint64 microseconds, int frameIndex)
{
    static quint16 const text[] = {31, 10, 21, 10, 21, 4,  14, 23, 4,  27, 23, 22, 1, 16,
                                   4,  31, 3,  3,  29, 29, 4,  27, 16, 23, 22, 22, 8, 2};
    std::vector<zelkorecording::DecodedTextEntry> entries;
    entries.reserve(EntriesPerFrame);
    for (int k = 0; k < EntriesPerFrame; ++k) {
        entries.push_back({1 + (k & 1), text[(frameIndex + k / 2) % 28]});
    }
    return zelkorecording::decodedTextPayload(microseconds, entries);
}

qint64 writeRecording(QString const& path, qint64& characters)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        return -1;
    }
    RecordingWriter writer(&file);
    qint64 const target = recordingMegabytes() << 20;
    quint64 time = 1710496800ull * 1000000ull;
    for (int frame = 0; writer.bytesWritten() < target; ++frame) {
        writer.writeFrame(zelkodatastreamconverter::FrameType::DecodedText,
                          framePayload(time, frame));
        characters += EntriesPerFrame;
        time += 200000;
    }
    return writer.bytesWritten();
}

double secondsToRead(QString const& path)
{
    QElapsedTimer timer;
    timer.start();
    zelkodatastreamconverter::FileReader reader(path);
    QByteArray type;
    QByteArray frame;
    while (reader.isWorking()) {
        if (reader.readFrame()) {
            reader.takeFrameData(type, frame);
        }
    }
    return double(timer.nsecsElapsed()) / 1e9;
}

// CPU seconds (user and system) of this process, or of its finished children.
double cpuSeconds(int who)
{
    rusage usage{};
    getrusage(who, &usage);
    auto const seconds = [](timeval const& t) { return double(t.tv_sec) + t.tv_usec / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// `zelko inspect` over the recording, its listing thrown away; -1 when the tool is missing.
// cpu receives the CPU seconds the tool used.
double secondsToInspect(QString const& path, double& cpu)
{
#ifdef ZELKO_TOOL
    double const childrenBefore = cpuSeconds(RUSAGE_CHILDREN);
    QElapsedTimer timer;
    timer.start();
    QProcess inspect;
    inspect.setStandardOutputFile(QProcess::nullDevice());
    inspect.setStandardErrorFile(QProcess::nullDevice());
    inspect.start(QStringLiteral(ZELKO_TOOL), {QStringLiteral("inspect"), QStringLiteral("--trace"),
                                               QStringLiteral("0"), path});
    if (!inspect.waitForFinished(-1) || inspect.exitCode() != 0) {
        return -1;
    }
    double const seconds = double(timer.nsecsElapsed()) / 1e9;
    cpu = cpuSeconds(RUSAGE_CHILDREN) - childrenBefore;
    return seconds;
#else
    Q_UNUSED(path);
    Q_UNUSED(cpu);
    return -1;
#endif
}

// Peak resident set size in kB since the last reset.
long peakResidentKilobytes()
{
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("VmHWM:", 0) == 0) {
            return std::stol(line.substr(6));
        }
    }
    return -1;
}

void resetPeakResident()
{
    std::ofstream("/proc/self/clear_refs") << "5";
}

} // namespace

int main()
{
    ErrorHandler::Instance().setTraceLevelMask(0);
    QTemporaryDir work;
    // ZELKO_BENCH_KEEP=FILE writes the recording there once and reuses it on later runs, so
    // that a profiler sees the conversion alone.
    QString const kept = qEnvironmentVariable("ZELKO_BENCH_KEEP");
    QString const recording = kept.isEmpty() ? work.filePath(QStringLiteral("text.zdr")) : kept;
    qint64 characters = 0;
    qint64 bytes = 0;
    if (!kept.isEmpty() && QFileInfo::exists(kept)) {
        bytes = QFileInfo(kept).size();
        characters = bytes / (24 + 16 + 8 * EntriesPerFrame) * EntriesPerFrame;
    } else {
        std::fprintf(stderr, "writing %s (%lld MiB)\n", qPrintable(recording),
                     recordingMegabytes());
        bytes = writeRecording(recording, characters);
    }
    if (bytes <= 0) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(recording));
        return 1;
    }
    QString const ini = work.filePath(QStringLiteral("zelko.ini"));
    {
        QFile file(ini);
        file.open(QIODevice::WriteOnly);
        file.write("[JobManagement]\nMorseAlphabets=" ZELKO_SOURCE_DIR "/data/alphabets\n");
    }
    qputenv("ZELKO_CONFIG", QFile::encodeName(ini));

    JobSpec::Settings settings;
    settings.SetValidate(false);
    JobSpec::Decoder decoder;
    decoder.AppendValue(QStringLiteral("RTTY"));
    settings.GetDemodulator_Settings().SetDecoder(decoder);
    settings.GetDemodulator_Settings().SetAlphabet(QStringLiteral("International"));

    double const readSeconds = secondsToRead(recording); // also warms the page cache
    double const readAgain = secondsToRead(recording);
    double const bestRead = std::min(readSeconds, readAgain);
    // The better of two runs each: other work on the machine only ever slows a run down.
    double inspectCpu = 0;
    double inspectSeconds = secondsToInspect(recording, inspectCpu);
    double inspectCpuAgain = 0;
    double const inspectAgain = secondsToInspect(recording, inspectCpuAgain);
    if (inspectAgain > 0 && inspectAgain < inspectSeconds) {
        inspectSeconds = inspectAgain;
    }
    inspectCpu = std::min(inspectCpu, inspectCpuAgain);

    // Two conversions, the better one counts; the peak memory is the first one's.
    long const residentBefore = peakResidentKilobytes();
    resetPeakResident();
    REPORTKIT::Results results;
    long peak = 0;
    double convertSeconds = 1e9;
    double convertCpu = 1e9;
    for (int run = 0; run < 2; ++run) {
        double const cpuBefore = cpuSeconds(RUSAGE_SELF);
        QElapsedTimer timer;
        timer.start();
        zelkodatastreamconverter::DecodedTextConverter converter;
        results = converter.convertFile(recording, work.path(), settings, 0);
        convertSeconds = std::min(convertSeconds, double(timer.nsecsElapsed()) / 1e9);
        convertCpu = std::min(convertCpu, cpuSeconds(RUSAGE_SELF) - cpuBefore);
        if (run == 0) {
            peak = peakResidentKilobytes();
        }
    }

    qint64 documentBytes = 0;
    for (auto const& text : results.GetText()) {
        documentBytes += QFileInfo(text.GetURL()).size();
    }
    double const megabytes = double(bytes) / 1e6;
    std::printf("recording              %10.1f MB, %lld characters\n", megabytes, characters);
    std::printf("zelko inspect          %10.1f MB/s (the tool, listing every frame), "
                "%.2f s CPU\n",
                inspectSeconds > 0 ? megabytes / inspectSeconds : 0.0, inspectCpu);
    std::printf("FileReader loop        %10.1f MB/s (reading alone)\n", megabytes / bestRead);
    std::printf("convert                %10.1f MB/s, %.2f M characters/s, %.2f s CPU\n",
                megabytes / convertSeconds, double(characters) / convertSeconds / 1e6, convertCpu);
    std::printf("ratio convert/inspect  %10.3f   (target 0.35; of CPU time %.3f)\n",
                inspectSeconds > 0 ? inspectSeconds / convertSeconds : 0.0,
                inspectCpu > 0 ? inspectCpu / convertCpu : 0.0);
    std::printf("ratio convert/reading  %10.3f\n", bestRead / convertSeconds);
    std::printf("result document        %10.1f MB\n", double(documentBytes) / 1e6);
    std::printf("peak resident          %10.1f MB during the conversion (%.1f MB before), "
                "%.2f x the document\n",
                double(peak) / 1e3, double(residentBefore) / 1e3,
                double(peak) * 1e3 / double(std::max<qint64>(documentBytes, 1)));
    return results.GetText().empty() ? 1 : 0;
}
