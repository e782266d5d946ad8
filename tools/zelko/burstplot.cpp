#include "burstplot.h"

#include <QDateTime>
#include <QFont>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>
#include <vector>

namespace zelkotool {

using namespace zelkodatastreamconverter::BurstEmissionList;

namespace {

constexpr int Width = 1500;
constexpr int Height = 950;
constexpr int PlotLeft = 90;
constexpr int PlotRight = 1150;
constexpr int HistogramTop = 64;
constexpr int HistogramBottom = 170;
constexpr int WaterfallTop = 178;
constexpr int WaterfallBottom = 880;
constexpr int LegendLeft = 1180;

QColor const Background(250, 250, 252);
QColor const PanelBackground(14, 17, 30);
QColor const AxisColour(60, 64, 80);
QColor const OccupiedChannel(80, 200, 255, 110);
QColor const UnoccupiedChannel(170, 170, 190, 70);
QColor const SegmentBoundary(255, 150, 40);
QColor const HopTick(255, 230, 90);

// A perceptually ordered dark-purple → magenta → orange → pale-yellow ramp that stays
// visible on the dark panel at its low end.
QColor levelColour(double t)
{
    static QColor const stops[] = {QColor(72, 30, 140), QColor(150, 40, 160), QColor(225, 70, 110),
                                   QColor(250, 140, 60), QColor(252, 230, 150)};
    // A NaN passes std::clamp unchanged and would index the table as a garbage integer.
    t = (std::isfinite(t) ? std::clamp(t, 0.0, 1.0) : 0.0) * 4.0;
    int const i = std::min(3, int(t));
    double const f = t - i;
    QColor const& a = stops[i];
    QColor const& b = stops[i + 1];
    return QColor(int(a.red() + f * (b.red() - a.red())),
                  int(a.green() + f * (b.green() - a.green())),
                  int(a.blue() + f * (b.blue() - a.blue())));
}

// 1, 2 or 5 times a power of ten, so that the range holds about `wanted` steps.
double niceStep(double range, int wanted)
{
    if (!(range > 0.0)) {
        return 1.0;
    }
    double const raw = range / wanted;
    double const power = std::pow(10.0, std::floor(std::log10(raw)));
    for (double multiple : {1.0, 2.0, 5.0, 10.0}) {
        if (raw <= multiple * power) {
            return multiple * power;
        }
    }
    return 10.0 * power;
}

// Where a burst's level lies between the lowest and the highest, 0 to 1, computed in double:
// in float, equal levels beyond 2^24 leave no room between low and high, and the difference
// of extreme levels overflows.
double levelFraction(float level, float low, float high)
{
    double const span = double(high) - double(low);
    double const t = (double(level) - double(low)) / span;
    return std::isfinite(t) && span > 0.0 ? t : 0.0;
}

// A pixel position kept finite and near the panel: numbers from a damaged recording can
// put a burst anywhere, and painting far outside the image gains nothing.
double nearPanel(double position, double low, double high)
{
    constexpr double Slack = 20.0;
    return std::isfinite(position) ? std::clamp(position, low - Slack, high + Slack) : low - Slack;
}

int decimalsFor(double step)
{
    return std::max(0, int(std::ceil(-std::log10(step) - 1e-9)));
}

class Labels
{
public:
    explicit Labels(QPainter& painter) : m_painter(painter) {}
    // alignment: 0 left, 1 centre, 2 right of x; y is the baseline.
    void text(QString const& text, double x, double y, double size, QColor const& colour,
              int alignment = 0, bool bold = false)
    {
        QFont const font = fontOf(size, bold);
        double const textWidth = QFontMetricsF(font).horizontalAdvance(text);
        double const left = alignment == 0 ? x : alignment == 1 ? x - textWidth / 2 : x - textWidth;
        m_painter.save();
        m_painter.setFont(font);
        m_painter.setPen(colour);
        m_painter.drawText(QPointF(left, y), text);
        m_painter.restore();
    }
    double width(QString const& text, double size) const
    {
        return QFontMetricsF(fontOf(size, false)).horizontalAdvance(text);
    }

private:
    static QFont fontOf(double size, bool bold)
    {
        QFont font(QStringLiteral("DejaVu Sans"));
        font.setPixelSize(std::max(1, int(std::lround(size))));
        font.setBold(bold);
        return font;
    }

    QPainter& m_painter;
};

QString megahertz(double frequency, int decimals)
{
    return QString::number(frequency / 1e6, 'f', decimals);
}

QString kilohertz(double frequency)
{
    return QString::number(frequency / 1e3, 'f', 3) + QStringLiteral(" kHz");
}

} // namespace

QImage drawBurstPlot(unsigned int radioID, RadioBurstData const& data,
                     HopperFrequencySet const& set, double meanBandwidth)
{
    QImage image(Width, Height, QImage::Format_RGB32);
    image.fill(Background);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    Labels labels(painter);
    HopperFrequencyGridEstimation const& grid = set.gridEstimation;

    labels.text(QStringLiteral("Radio %1: bursts over frequency and time").arg(radioID), PlotLeft,
                38, 22, AxisColour, 0, true);
    if (data.bursts.empty()) {
        labels.text(QStringLiteral("no bursts held for this radio"), PlotLeft, 120, 16, AxisColour);
        return image;
    }

    // Extent: every burst window and every estimated channel, with a small margin.
    double fLow = std::numeric_limits<double>::infinity();
    double fHigh = -fLow;
    float levelLow = std::numeric_limits<float>::infinity();
    float levelHigh = -levelLow;
    unsigned long long tLow = ~0ull;
    unsigned long long tHigh = 0;
    for (BurstData const& burst : data.bursts) {
        if (std::isfinite(burst.frequency - burst.bandwidth / 2) &&
            std::isfinite(burst.frequency + burst.bandwidth / 2)) {
            fLow = std::min(fLow, burst.frequency - burst.bandwidth / 2);
            fHigh = std::max(fHigh, burst.frequency + burst.bandwidth / 2);
        }
        if (std::isfinite(burst.level_dBm)) {
            levelLow = std::min(levelLow, burst.level_dBm);
            levelHigh = std::max(levelHigh, burst.level_dBm);
        }
        tLow = std::min(tLow, burst.time);
        tHigh = std::max(tHigh, burst.time + burst.length);
    }
    if (!data.segmentStartTimes.empty()) {
        tLow = std::min(tLow, data.segmentStartTimes.front());
        tHigh = std::max(
            tHigh, *std::max_element(data.segmentStopTimes.begin(), data.segmentStopTimes.end()));
    }
    for (auto const& segment : grid.segments) {
        if (segment.channelCount > 0 && segment.channelCount < 100000) {
            fLow = std::min(fLow, segment.startFrequency - segment.channelSpacing / 2);
            fHigh = std::max(fHigh, segment.getStopFrequency() + segment.channelSpacing / 2);
        }
    }
    if (!(fHigh >= fLow)) { // no finite frequency at all
        fLow = fHigh = 0.0;
    }
    // The margin also covers a few units in the last place, or at 2^53 Hz and beyond a
    // 1 Hz margin would vanish and leave a range of zero width.
    double const margin = std::max({1.0, (fHigh - fLow) * 0.015,
                                    std::max(std::abs(fLow), std::abs(fHigh)) * 1e-12});
    fLow -= margin;
    fHigh += margin;
    if (!(levelHigh > levelLow)) {
        levelHigh = levelLow + 1.0f;
    }
    if (tHigh <= tLow) {
        tHigh = tLow + 1;
    }
    double const plotWidth = PlotRight - PlotLeft;
    auto xOf = [&](double f) {
        return nearPanel(PlotLeft + (f - fLow) / (fHigh - fLow) * plotWidth, PlotLeft, PlotRight);
    };
    auto yOf = [&](unsigned long long t) {
        return nearPanel(WaterfallTop + double(t - tLow) / double(tHigh - tLow) *
                                            (WaterfallBottom - WaterfallTop),
                         WaterfallTop, WaterfallBottom);
    };

    // Panels.
    QRectF const histogramRect(PlotLeft, HistogramTop, plotWidth, HistogramBottom - HistogramTop);
    QRectF const waterfallRect(PlotLeft, WaterfallTop, plotWidth, WaterfallBottom - WaterfallTop);
    painter.fillRect(histogramRect, PanelBackground);
    painter.fillRect(waterfallRect, PanelBackground);

    // Frame (segment) boundaries in time, faint.
    painter.setPen(QPen(QColor(255, 255, 255, 28), 1));
    for (unsigned long long start : data.segmentStartTimes) {
        painter.drawLine(QPointF(PlotLeft, yOf(start)), QPointF(PlotRight, yOf(start)));
    }

    // Estimated channel centres behind the bursts: occupied solid, unoccupied dashed.
    std::vector<double> occupied =
        grid.createFrequencyListWithoutUnoccupiedFrequencies(set.frequencies);
    std::sort(occupied.begin(), occupied.end());
    for (auto const& segment : grid.segments) {
        if (segment.channelCount == 0 || segment.channelCount > 20000) {
            continue;
        }
        for (unsigned int k = 0; k < segment.channelCount; ++k) {
            double const f = segment.getFrequencyOfChannelIndex(k);
            bool const used = std::binary_search(occupied.begin(), occupied.end(), f);
            painter.setPen(used ? QPen(OccupiedChannel, 1)
                                : QPen(UnoccupiedChannel, 1, Qt::DashLine));
            double const x = xOf(f);
            painter.drawLine(QPointF(x, HistogramTop), QPointF(x, WaterfallBottom));
        }
    }

    // Histogram of burst centre frequencies in 3-pixel bins: narrow enough to separate
    // channels a few pixels apart, wide enough that a channel's peak does not split between
    // two columns.
    constexpr int BinPixels = 3;
    std::vector<int> counts(std::size_t(plotWidth) / BinPixels + 1, 0);
    for (BurstData const& burst : data.bursts) {
        auto const bin =
            std::size_t(std::clamp(xOf(burst.frequency) - PlotLeft, 0.0, plotWidth)) / BinPixels;
        ++counts[bin];
    }
    int const maxCount = std::max(1, *std::max_element(counts.begin(), counts.end()));
    painter.setPen(Qt::NoPen);
    double const histogramHeight = HistogramBottom - HistogramTop - 6;
    for (std::size_t bin = 0; bin < counts.size(); ++bin) {
        if (counts[bin] == 0) {
            continue;
        }
        double const h = std::max(1.0, histogramHeight * counts[bin] / maxCount);
        painter.fillRect(
            QRectF(PlotLeft + double(bin * BinPixels), HistogramBottom - h, BinPixels - 0.5, h),
            QColor(150, 210, 255));
    }

    // Bursts: the window of each, shaded by level; at least a pixel so none vanishes.
    painter.setRenderHint(QPainter::Antialiasing, false);
    for (BurstData const& burst : data.bursts) {
        double const x0 = xOf(burst.frequency - burst.bandwidth / 2);
        double const x1 = xOf(burst.frequency + burst.bandwidth / 2);
        double const y0 = yOf(burst.time);
        double const y1 = yOf(burst.time + burst.length);
        double const t = levelFraction(burst.level_dBm, levelLow, levelHigh);
        painter.fillRect(QRectF(x0, y0, std::max(1.0, x1 - x0), std::max(1.0, y1 - y0)),
                         levelColour(t));
    }
    painter.setRenderHint(QPainter::Antialiasing, true);

    // Estimated hop frequencies: ticks under the histogram.
    painter.setPen(QPen(HopTick, 1.5));
    for (double f : set.frequencies) {
        double const x = xOf(f);
        painter.drawLine(QPointF(x, HistogramBottom - 5), QPointF(x, HistogramBottom));
    }

    // Segment boundaries half a spacing outside the outer channels, labelled S1, S2, ...
    painter.setPen(QPen(SegmentBoundary, 2, Qt::DashLine));
    for (std::size_t s = 0; s < grid.segments.size(); ++s) {
        auto const& segment = grid.segments[s];
        if (segment.channelCount == 0 || segment.channelCount > 20000) {
            continue;
        }
        double const left = xOf(segment.startFrequency - segment.channelSpacing / 2);
        double const right = xOf(segment.getStopFrequency() + segment.channelSpacing / 2);
        painter.setPen(QPen(SegmentBoundary, 2, Qt::DashLine));
        painter.drawLine(QPointF(left, HistogramTop - 6), QPointF(left, WaterfallBottom));
        painter.drawLine(QPointF(right, HistogramTop - 6), QPointF(right, WaterfallBottom));
        painter.setPen(QPen(SegmentBoundary, 3));
        painter.drawLine(QPointF(left, HistogramTop - 6), QPointF(right, HistogramTop - 6));
        labels.text(QStringLiteral("S%1").arg(s + 1), (left + right) / 2, HistogramTop - 11, 13,
                    SegmentBoundary, 1, true);
    }

    // Axes.
    painter.setPen(QPen(AxisColour, 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(histogramRect);
    painter.drawRect(waterfallRect);
    double const fStep = niceStep(fHigh - fLow, 12);
    int const fDecimals = std::max(0, decimalsFor(fStep / 1e6));
    // Counted steps: far from 0 Hz, f + fStep can round back to f.
    double const firstTick = std::ceil(fLow / fStep) * fStep;
    for (int tick = 0; tick < 100 && firstTick + tick * fStep <= fHigh; ++tick) {
        double const f = firstTick + tick * fStep;
        double const x = xOf(f);
        painter.drawLine(QPointF(x, WaterfallBottom), QPointF(x, WaterfallBottom + 6));
        labels.text(megahertz(f, fDecimals), x, WaterfallBottom + 22, 13, AxisColour, 1);
    }
    labels.text(QStringLiteral("frequency [MHz]"), (PlotLeft + PlotRight) / 2.0,
                WaterfallBottom + 50, 14, AxisColour, 1, true);

    double const spanSeconds = double(tHigh - tLow) / 1e6;
    bool const inSeconds = spanSeconds >= 10.0;
    double const unit = inSeconds ? 1e6 : 1e3;
    double const tStep = niceStep(double(tHigh - tLow) / unit, 10);
    int const tDecimals = decimalsFor(tStep);
    for (double t = 0.0; t <= double(tHigh - tLow) / unit + 1e-9; t += tStep) {
        double const y = yOf(tLow + (unsigned long long)std::llround(t * unit));
        painter.drawLine(QPointF(PlotLeft - 6, y), QPointF(PlotLeft, y));
        labels.text(QString::number(t, 'f', tDecimals), PlotLeft - 10, y + 5, 13, AxisColour, 2);
    }
    painter.save();
    painter.translate(28, (WaterfallTop + WaterfallBottom) / 2.0);
    painter.rotate(-90);
    labels.text(inSeconds ? QStringLiteral("time since first segment [s]")
                          : QStringLiteral("time since first segment [ms]"),
                0, 0, 14, AxisColour, 1, true);
    painter.restore();
    painter.save();
    painter.translate(PlotLeft - 14, (HistogramTop + HistogramBottom) / 2.0);
    painter.rotate(-90);
    labels.text(QStringLiteral("bursts"), 0, 0, 12, AxisColour, 1, true);
    painter.restore();

    // Legend.
    double y = 90;
    auto heading = [&](QString const& text) {
        labels.text(text, LegendLeft, y, 16, AxisColour, 0, true);
        y += 26;
    };
    auto row = [&](QString const& label, QString const& value) {
        labels.text(label, LegendLeft, y, 13, QColor(90, 94, 110));
        labels.text(value, LegendLeft + 130, y, 13, AxisColour);
        y += 20;
    };
    QDateTime const start = QDateTime::fromMSecsSinceEpoch(qint64(tLow / 1000), Qt::UTC);
    heading(QStringLiteral("Radio %1").arg(radioID));
    row(QStringLiteral("bursts"), QString::number(data.bursts.size()));
    row(QStringLiteral("segments"), QString::number(data.segmentCount()));
    row(QStringLiteral("date"), start.toString(QStringLiteral("yyyy-MM-dd")));
    row(QStringLiteral("start"),
        start.toString(QStringLiteral("hh:mm:ss.zzz")) + QStringLiteral(" UTC"));
    row(QStringLiteral("span"), QString::number(spanSeconds, 'f', 3) + QStringLiteral(" s"));
    row(QStringLiteral("mean bandwidth"), kilohertz(meanBandwidth));
    row(QStringLiteral("hop frequencies"), QString::number(set.frequencies.size()));
    y += 12;
    heading(QStringLiteral("Grid estimate"));
    if (grid.segments.empty()) {
        row(QStringLiteral("segments"), QStringLiteral("none"));
    } else {
        unsigned int occupiedTotal = 0;
        for (auto const& segment : grid.segments) {
            occupiedTotal += segment.occupiedChannelCount;
        }
        row(QStringLiteral("segments"), QString::number(grid.getSegmentCount()));
        row(QStringLiteral("spacing"), kilohertz(grid.getMeanChannelSpacing()));
        row(QStringLiteral("channels"),
            QStringLiteral("%1 (%2 occupied)").arg(grid.getTotalChannelCount()).arg(occupiedTotal));
        row(QStringLiteral("occupation"),
            QString::number(100.0 * grid.getOccupationRatio(), 'f', 1) + QStringLiteral(" %"));
        row(QStringLiteral("RMS deviation"),
            QString::number(grid.getQuadraticMeanDeviation(), 'f', 1) + QStringLiteral(" Hz"));
        y += 6;
        std::size_t const shown = std::min<std::size_t>(grid.segments.size(), 8);
        for (std::size_t s = 0; s < shown; ++s) {
            auto const& segment = grid.segments[s];
            labels.text(QStringLiteral("S%1").arg(s + 1), LegendLeft, y, 13, SegmentBoundary, 0,
                        true);
            labels.text(QStringLiteral("%1 – %2 MHz")
                            .arg(megahertz(segment.startFrequency, 4),
                                 megahertz(segment.getStopFrequency(), 4)),
                        LegendLeft + 34, y, 13, AxisColour);
            y += 18;
            labels.text(QStringLiteral("%1 × %2 ch")
                            .arg(kilohertz(segment.channelSpacing))
                            .arg(segment.channelCount),
                        LegendLeft + 34, y, 12, QColor(90, 94, 110));
            y += 22;
        }
        if (grid.segments.size() > shown) {
            labels.text(QStringLiteral("… %1 more").arg(grid.segments.size() - shown),
                        LegendLeft + 34, y, 12, QColor(90, 94, 110));
            y += 22;
        }
    }

    // Fit: where the bursts lie relative to their nearest estimated channel, in fractions of
    // the spacing. A narrow peak at 0 is a grid that fits; a flat spread is one that does not.
    constexpr int FitBins = 50;
    std::vector<int> fit(FitBins, 0);
    for (BurstData const& burst : data.bursts) {
        for (auto const& segment : grid.segments) {
            double const s = segment.channelSpacing;
            if (!(s > 0.0) || segment.channelCount == 0 ||
                burst.frequency < segment.startFrequency - s / 2 ||
                burst.frequency > segment.getStopFrequency() + s / 2) {
                continue;
            }
            double const k = std::round((burst.frequency - segment.startFrequency) / s);
            double const offset = (burst.frequency - segment.startFrequency - k * s) / s;
            if (std::isfinite(offset)) {
                ++fit[std::size_t(std::clamp((offset + 0.5) * FitBins, 0.0, FitBins - 1.0))];
            }
            break;
        }
    }
    int const fitMax = *std::max_element(fit.begin(), fit.end());
    if (fitMax > 0) {
        y += 8;
        heading(QStringLiteral("Fit to the grid"));
        QRectF const fitRect(LegendLeft, y - 10, 250, 70);
        painter.fillRect(fitRect, PanelBackground);
        double const binWidth = fitRect.width() / FitBins;
        for (int b = 0; b < FitBins; ++b) {
            double const h = (fitRect.height() - 4) * fit[std::size_t(b)] / fitMax;
            painter.fillRect(
                QRectF(fitRect.left() + b * binWidth, fitRect.bottom() - h, binWidth - 0.5, h),
                QColor(150, 210, 255));
        }
        painter.setPen(QPen(OccupiedChannel, 1));
        painter.drawLine(QPointF(fitRect.center().x(), fitRect.top()),
                         QPointF(fitRect.center().x(), fitRect.bottom()));
        y = fitRect.bottom() + 16;
        labels.text(QStringLiteral("−½"), fitRect.left(), y, 12, AxisColour, 0);
        labels.text(QStringLiteral("0"), fitRect.center().x(), y, 12, AxisColour, 1);
        labels.text(QStringLiteral("+½"), fitRect.right(), y, 12, AxisColour, 2);
        y += 17;
        labels.text(QStringLiteral("burst offset from nearest channel [spacings]"),
                    fitRect.center().x(), y, 12, QColor(90, 94, 110), 1);
        y += 16;
    }

    // Key.
    y = std::max(y + 14, 640.0);
    heading(QStringLiteral("Key"));
    QLinearGradient gradient(LegendLeft, 0, LegendLeft + 250, 0);
    for (int i = 0; i <= 8; ++i) {
        gradient.setColorAt(i / 8.0, levelColour(i / 8.0));
    }
    painter.fillRect(QRectF(LegendLeft, y - 12, 250, 14), gradient);
    y += 18;
    labels.text(QString::number(levelLow, 'f', 1), LegendLeft, y, 12, AxisColour);
    labels.text(QString::number(levelHigh, 'f', 1), LegendLeft + 250, y, 12, AxisColour, 2);
    labels.text(QStringLiteral("burst level [dBm]"), LegendLeft + 125, y, 12, AxisColour, 1);
    y += 28;
    auto keyLine = [&](QPen const& pen, QString const& text) {
        painter.fillRect(QRectF(LegendLeft, y - 12, 40, 14), PanelBackground);
        painter.setPen(pen);
        painter.drawLine(QPointF(LegendLeft + 4, y - 5), QPointF(LegendLeft + 36, y - 5));
        labels.text(text, LegendLeft + 50, y, 12, AxisColour);
        y += 22;
    };
    keyLine(QPen(QColor(80, 200, 255), 2), QStringLiteral("channel centre, occupied"));
    keyLine(QPen(QColor(170, 170, 190), 2, Qt::DashLine),
            QStringLiteral("channel centre, unoccupied"));
    keyLine(QPen(SegmentBoundary, 2, Qt::DashLine), QStringLiteral("grid segment boundary"));
    keyLine(QPen(HopTick, 2), QStringLiteral("estimated hop frequency"));
    return image;
}

} // namespace zelkotool
