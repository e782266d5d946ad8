// "zelko import morse-audio" on an hour of CW audio (keyed by the recording writer's Morse
// keyer, 20 wpm, 8000 Hz 16-bit WAV) beside two baselines run as child processes on the same
// file: sox reading it ("sox in.wav -n", decoding and nothing else) and multimon-ng's CW
// decoder on the same audio as 22050 Hz raw samples (resampled beforehand, not timed).
// ZELKO_BENCH_MINUTES sets the length (default 60); ZELKO_BENCH_KEEP=1 keeps the files.

#include "childprocess.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <cstdio>
#include <cstdlib>
#include <recordingwriter/morsekeyer.h>
#include <sndfile.h>

namespace {

using zelkobench::Run;

constexpr int sampleRate = 8000;

int minutes()
{
    char const* value = std::getenv("ZELKO_BENCH_MINUTES");
    return value != nullptr && std::atoi(value) > 0 ? std::atoi(value) : 60;
}

/// About a minute of exchange at 20 wpm, keyed once and written `minutes` times.
bool writeAudio(QString const& path, int minutes)
{
    QString const code = QStringLiteral(
        "-.-. --.- / -.-. --.- / -.. . / -.. .-.. .---- .- -... -.-. / .--. ... . / -.- / "
        "- .... . / --.- ..- .. -.-. -.- / -... .-. --- .-- -. / ..-. --- -..- / .--- ..- -- "
        ".--. ... / --- ...- . .-. / - .... . / .-.. .- --.. -.-- / -.. --- --. / "
        ".---- ..--- ...-- ....- ..... -.... --... ---.. ----. ----- / ");
    QVector<zelkorecording::KeyElement> minute;
    quint64 length = 0;
    while (length < 60000000) {
        for (zelkorecording::KeyElement const& element : zelkorecording::keyMorse(code, {20})) {
            minute.append(element);
            length += element.microseconds;
        }
    }
    QVector<float> const samples = zelkorecording::cwAudio(minute, 700, sampleRate);
    SF_INFO info{};
    info.samplerate = sampleRate;
    info.channels = 1;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* file = sf_open(QFile::encodeName(path).constData(), SFM_WRITE, &info);
    if (file == nullptr) {
        return false;
    }
    bool written = true;
    for (int i = 0; i < minutes && written; ++i) {
        written = sf_writef_float(file, samples.constData(), samples.size()) == samples.size();
    }
    return sf_close(file) == 0 && written;
}

void report(char const* name, Run const& run, double audioSeconds, Run const& ours)
{
    std::printf("%-22s %8.2f s  %7.0f x real time  peak RSS %7.1f MiB", name, run.seconds,
                audioSeconds / run.seconds, run.peakMiB);
    if (&run != &ours && run.ok) {
        std::printf("  zelko takes %.2f times as long", ours.seconds / run.seconds);
    }
    std::printf("%s\n", run.ok ? "" : "  FAILED");
}

} // namespace

int main()
{
    QTemporaryDir dir;
    dir.setAutoRemove(std::getenv("ZELKO_BENCH_KEEP") == nullptr);
    QString const wav = dir.filePath(QStringLiteral("cw.wav"));
    QString const raw = dir.filePath(QStringLiteral("cw.raw"));
    QString const recording = dir.filePath(QStringLiteral("cw.zdr"));
    int const length = minutes();
    if (!writeAudio(wav, length)) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(wav));
        return 1;
    }
    double const audioSeconds = length * 60.0;
    std::printf("%d min of CW at 20 wpm, 8000 Hz, %.1f MB WAV in %s\n", length,
                QFileInfo(wav).size() / 1e6, qPrintable(dir.path()));
    zelkobench::warmCache(wav);
    auto const ours = [&] {
        return zelkobench::runProgram({ZELKO_TOOL, "import", "morse-audio", wav.toStdString(), "-o",
                                       recording.toStdString(), "--quiet"});
    };
    Run const zelko = zelkobench::better(ours(), ours());
    report("zelko import", zelko, audioSeconds, zelko);
    auto const soxRead = [&] { return zelkobench::runProgram({"sox", wav.toStdString(), "-n"}); };
    Run const sox = zelkobench::better(soxRead(), soxRead());
    if (sox.ok) {
        report("sox in.wav -n", sox, audioSeconds, zelko);
    } else {
        std::printf("sox not installed: no reading baseline\n");
    }
    Run const resample =
        zelkobench::runProgram({"sox", wav.toStdString(), "-t", "raw", "-r", "22050", "-e",
                                "signed", "-b", "16", raw.toStdString()});
    auto const multimon = [&] {
        return zelkobench::runProgram(
            {"multimon-ng", "-q", "-a", "MORSE_CW", "-t", "raw", raw.toStdString()});
    };
    Run const peer = resample.ok ? zelkobench::better(multimon(), multimon()) : Run{};
    if (peer.ok) {
        report("multimon-ng MORSE_CW", peer, audioSeconds, zelko);
    } else {
        std::printf("multimon-ng (or sox) not installed: no peer\n");
    }
    return zelko.ok ? 0 : 1;
}
