// Converting image lines into PNG pictures (ImageDataConverter) beside writing the same
// pixels as the same pictures with a bare QImageWriter, in the same run: 8-bit grey lines of
// 2048 pixels, 4096 lines a picture, default 256 MiB of recording. Each side runs twice,
// alternately, the better run counts; the recording is read once first so that it comes from
// the page cache.
//
//   build/bin/image_bench                    (256 MiB in $TMPDIR)
//   ZELKO_BENCH_MB=32 build/bin/image_bench  (a quicker look)

#include "conversiontiming.h"

#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QImageWriter>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <jobspec/settings.h>
#include <massdatamanagement/zelkodatastreamconverter/imagedataconverter.h>
#include <random>
#include <recordingwriter/imagelinepayload.h>
#include <recordingwriter/recordingwriter.h>

namespace {

constexpr int Width = 2048;
constexpr int PictureHeight = 4096;

// Scanned-chart-like content: long runs with some texture, so that PNG compression does real
// work but not the worst case of noise.
QByteArray linePixels(int index)
{
    static std::mt19937 random(52);
    QByteArray pixels(Width, char(255));
    for (int x = 0; x < Width; ++x) {
        if ((x + index) % 97 < 3 || random() % 29 == 0) {
            pixels[x] = char(random() % 200);
        }
    }
    return pixels;
}

} // namespace

int main()
{
    int const megabytes = std::max(1, qEnvironmentVariableIntValue("ZELKO_BENCH_MB") > 0
                                          ? qEnvironmentVariableIntValue("ZELKO_BENCH_MB")
                                          : 256);
    QTemporaryDir dir;
    QString const recording = dir.filePath(QStringLiteral("lines.zdr"));
    std::vector<QByteArray> lines;
    qint64 bytes = 0;
    {
        QFile file(recording);
        if (!file.open(QIODevice::WriteOnly)) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(recording));
            return 1;
        }
        zelkorecording::RecordingWriter writer(&file);
        for (int index = 0; bytes < qint64(megabytes) << 20; ++index) {
            zelkorecording::ImageLine line;
            line.microseconds = 1700000000000000ull + quint64(index) * 500000u;
            line.imageId = 1;
            line.lineIndex = quint32(index);
            line.width = Width;
            line.kind = zelkodatastreamconverter::ImageKind::WeatherFax;
            line.pixels = linePixels(index);
            lines.push_back(line.pixels);
            writer.writeFrame(zelkodatastreamconverter::FrameType::Image,
                              zelkorecording::imageLinePayload(line));
            bytes = writer.bytesWritten();
        }
    }
    zelkobench::warmPageCache(recording);

    auto const convert = zelkobench::conversionStep<zelkodatastreamconverter::ImageDataConverter>(
        recording, [](REPORTKIT::Results const& results) { return !results.GetPicture().empty(); },
        "no picture written");
    auto const bareWriter = [&lines] {
        QTemporaryDir bare;
        QElapsedTimer timer;
        timer.start();
        for (std::size_t first = 0, n = 0; first < lines.size(); first += PictureHeight, ++n) {
            int const height = int(std::min<std::size_t>(PictureHeight, lines.size() - first));
            QImage image(Width, height, QImage::Format_Grayscale8);
            for (int y = 0; y < height; ++y) {
                std::copy_n(lines[first + std::size_t(y)].constData(), Width, image.scanLine(y));
            }
            QImageWriter writer(bare.filePath(QStringLiteral("%1.png").arg(n)), "png");
            writer.write(image);
        }
        return zelkobench::seconds(timer);
    };
    std::vector<double> const best = zelkobench::bestOfTwoRounds({convert, bareWriter});
    if (best.empty()) {
        return 1;
    }
    double const mb = double(bytes) / 1e6;
    std::printf("image lines: %zu lines of %d pixels, %.0f MB of recording\n", lines.size(), Width,
                mb);
    std::printf("  ImageDataConverter  %9.0f lines/s %7.1f MB/s\n", lines.size() / best[0],
                mb / best[0]);
    std::printf("  bare QImageWriter   %9.0f lines/s %7.1f MB/s\n", lines.size() / best[1],
                mb / best[1]);
    std::printf("  ratio %.2f (target at least 0.8)\n", best[1] / best[0]);
    return 0;
}
