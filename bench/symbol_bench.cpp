// Morse elements through SymbolDataConverter (element timing, result document, symbol and
// text files) beside reading the same recording frame by frame with FileReader, in the same
// run: four channels of CW at 18 to 30 words a minute with jittered timing, 64 elements a
// frame, default 32 MiB of recording. Each side runs twice, alternately, the better run
// counts; the recording is read once first so that it comes from the page cache.
//
//   build/bin/symbol_bench                    (32 MiB in $TMPDIR)
//   ZELKO_BENCH_MB=8 build/bin/symbol_bench   (a quicker look)

#include "conversiontiming.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <jobspec/settings.h>
#include <massdatamanagement/zelkodatastreamconverter/filereader.h>
#include <massdatamanagement/zelkodatastreamconverter/symboldataconverter.h>
#include <random>
#include <recordingwriter/morsekeyer.h>
#include <recordingwriter/recordingwriter.h>
#include <recordingwriter/symbolpayload.h>

namespace {

using zelkorecording::KeyElement;

constexpr int Channels = 4;
constexpr int PerFrame = 64;

// Random letters, a word of five now and then, keyed at the channel's speed with every
// duration off by up to a tenth.
class Keyer
{
public:
    explicit Keyer(int channel) : m_random(quint32(channel) * 7919u)
    {
        m_keying.wpm = 18 + 4 * channel;
        m_keying.jitter = 0.1;
    }

    QVector<KeyElement> next(int count)
    {
        static char const* const letters[] = {".-",   "-...", "-.-.", "-..", ".",    "..-.", "--.",
                                              "....", "..",   ".---", "-.-", ".-..", "--",   "-."};
        while (m_pending.size() < count) {
            QString code;
            for (int i = 0; i < 50; ++i) {
                code += QLatin1String(letters[m_random() % 14]) +
                        QLatin1String(i % 5 == 4 ? " / " : " ");
            }
            m_keying.seed = m_random();
            m_pending += zelkorecording::keyMorse(code, m_keying);
        }
        QVector<KeyElement> out = m_pending.mid(0, count);
        m_pending.remove(0, count);
        return out;
    }

private:
    std::mt19937 m_random;
    zelkorecording::MorseKeying m_keying;
    QVector<KeyElement> m_pending;
};

} // namespace

int main()
{
    int const megabytes = std::max(1, qEnvironmentVariableIntValue("ZELKO_BENCH_MB") > 0
                                          ? qEnvironmentVariableIntValue("ZELKO_BENCH_MB")
                                          : 32);
    QTemporaryDir dir;
    QString const recording = dir.filePath(QStringLiteral("morse.zdr"));
    qint64 elements = 0;
    qint64 bytes = 0;
    {
        QFile file(recording);
        if (!file.open(QIODevice::WriteOnly)) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(recording));
            return 1;
        }
        zelkorecording::RecordingWriter writer(&file);
        std::vector<Keyer> keyers;
        std::vector<quint64> times(Channels, 1700000000000000ull);
        for (int channel = 0; channel < Channels; ++channel) {
            keyers.emplace_back(channel);
        }
        for (int frame = 0; bytes < qint64(megabytes) << 20; ++frame) {
            int const channel = frame % Channels;
            QVector<KeyElement> const run = keyers[std::size_t(channel)].next(PerFrame);
            zelkorecording::SymbolRun header{times[std::size_t(channel)], 7025000,
                                             quint32(channel)};
            writer.writeFrame(zelkodatastreamconverter::FrameType::Symbols,
                              zelkorecording::morseElementPayload(header, 700, -200, run));
            for (KeyElement const& element : run) {
                times[std::size_t(channel)] += element.microseconds;
            }
            elements += run.size();
            bytes = writer.bytesWritten();
        }
    }
    zelkobench::warmPageCache(recording);

    auto const convert = zelkobench::conversionStep<zelkodatastreamconverter::SymbolDataConverter>(
        recording, [](REPORTKIT::Results const& results) { return !results.GetBinary().empty(); },
        "no symbol file written");
    auto const read = [&recording] {
        QElapsedTimer timer;
        timer.start();
        zelkodatastreamconverter::FileReader reader(recording);
        QByteArray type;
        QByteArray frame;
        qint64 frames = 0;
        while (reader.isWorking()) {
            if (reader.readFrame()) {
                reader.takeFrameData(type, frame);
                ++frames;
            }
        }
        if (frames == 0) {
            std::fprintf(stderr, "no frame read\n");
            return -1.0;
        }
        return zelkobench::seconds(timer);
    };
    std::vector<double> const best = zelkobench::bestOfTwoRounds({convert, read});
    if (best.empty()) {
        return 1;
    }
    double const mb = double(bytes) / 1e6;
    std::printf("Morse elements: %lld elements on %d channels, %.0f MB of recording\n",
                static_cast<long long>(elements), Channels, mb);
    std::printf("  SymbolDataConverter  %11.0f elements/s %7.1f MB/s\n", elements / best[0],
                mb / best[0]);
    std::printf("  FileReader alone     %11.0f elements/s %7.1f MB/s\n", elements / best[1],
                mb / best[1]);
    std::printf("  ratio %.4f (converter speed / reading speed)\n", best[1] / best[0]);
    return 0;
}
