#include "imagesamples.h"

#include <QRandomGenerator>
#include <cmath>
#include <massdatamanagement/zelkodatastreamconverter/hellschreiberfont.h>
#include <recordingwriter/imagelinepayload.h>
#include <recordingwriter/recordingwriter.h>

namespace zelkosamples {

namespace {

using zelkodatastreamconverter::HellschreiberFont;
using zelkorecording::ImageLine;
using zelkorecording::RecordingWriter;
namespace FrameType = zelkodatastreamconverter::FrameType;
namespace ImageKind = zelkodatastreamconverter::ImageKind;

constexpr quint64 FaxStart = 1710496800000000ull; // 2024-03-15 10:00:00 UTC
constexpr int FaxWidth = 576;
constexpr int FaxHeight = 400;

// Whether the chart is inked at (x, y): border, a 48-pixel grid, isobars round a low and a
// high, and the title in the Hellschreiber glyphs, three times their size.
bool chartInk(int x, int y)
{
    if (x < 3 || x >= FaxWidth - 3 || y < 3 || y >= FaxHeight - 3) {
        return true;
    }
    if ((x % 48 == 0 || y % 48 == 0) && (x + y) % 4 == 0) {
        return true; // dotted grid
    }
    for (auto const& [cx, cy] : {std::pair<double, double>{180, 220}, {420, 260}}) {
        double const r = std::hypot((x - cx) * 1.0, (y - cy) * 1.3);
        if (r > 15 && r < 170 && std::fmod(r, 36.0) < 1.6) {
            return true;
        }
    }
    static QByteArray const title("SURFACE ANALYSIS 1200 UTC");
    int const column = (x - 12) / 3;
    int const row = (y - 12) / 3;
    if (x >= 12 && y >= 12 && row < HellschreiberFont::Rows &&
        column < title.size() * HellschreiberFont::Columns) {
        HellschreiberFont::Glyph const* glyph =
            HellschreiberFont::find(QLatin1Char(title[column / HellschreiberFont::Columns]));
        return glyph && HellschreiberFont::inked(*glyph, column % HellschreiberFont::Columns, row);
    }
    return false;
}

ImageLine faxLine(int index)
{
    QByteArray levels(FaxWidth, char(255));
    for (int x = 0; x < FaxWidth; ++x) {
        if (chartInk(x, index)) {
            levels[x] = 0;
        }
    }
    ImageLine line;
    line.microseconds = FaxStart + quint64(index) * 500000u; // 120 lines a minute
    line.frequencyHz = 3855000;
    line.imageId = 1;
    line.lineIndex = quint32(index);
    line.width = FaxWidth;
    line.bitsPerPixel = 1;
    line.kind = ImageKind::WeatherFax;
    line.milliLinesPerSecond = 2000;
    line.pixels = zelkorecording::packOneBitPixels(levels);
    return line;
}

void writeWeatherFax(RecordingWriter& out)
{
    for (int index = 0; index < FaxHeight; ++index) {
        if (index >= 200 && index < 204) {
            continue; // lost in a fade
        }
        out.writeFrame(FrameType::Image, zelkorecording::imageLinePayload(faxLine(index)));
        if (index == 300) {
            out.writeFrame(FrameType::Image, zelkorecording::imageLinePayload(faxLine(index)));
        }
    }
}

void writeFeldHell(RecordingWriter& out)
{
    QRandomGenerator random(1935);
    QByteArray const text("CQ CQ CQ DE DK0ZL DK0ZL PSE K");
    quint32 index = 0;
    for (char const c : text) {
        HellschreiberFont::Glyph const* glyph = HellschreiberFont::find(QLatin1Char(c));
        for (int column = 0; column < HellschreiberFont::Columns; ++column, ++index) {
            // Fourteen levels a column, bottom first: each glyph row is two, as sent.
            QByteArray levels(14, char(0));
            for (int pixel = 0; pixel < 14; ++pixel) {
                int const row = HellschreiberFont::Rows - 1 - pixel / 2;
                bool const ink = glyph && HellschreiberFont::inked(*glyph, column, row);
                levels[pixel] = char((ink ? 30 : 225) + int(random.bounded(-25, 26)));
            }
            ImageLine line;
            line.microseconds = FaxStart + 3600000000ull + quint64(index) * 1000000u * 2 / 35;
            line.frequencyHz = 3583000;
            line.imageId = 2;
            line.lineIndex = index;
            line.width = 14;
            line.bitsPerPixel = 8;
            line.kind = ImageKind::Hellschreiber;
            line.milliLinesPerSecond = 17500;
            line.pixels = levels;
            // The other byte order: pixel words are swapped with the rest and come back.
            out.writeFrame(FrameType::Image, zelkorecording::imageLinePayload(line),
                           zelkorecording::ByteOrder::Swapped);
        }
    }
}

} // namespace

std::vector<TransmissionSystemSample> imageSamples()
{
    return {{QStringLiteral("weatherfax-chart.zdr"), writeWeatherFax},
            {QStringLiteral("feldhell-call.zdr"), writeFeldHell}};
}

} // namespace zelkosamples
