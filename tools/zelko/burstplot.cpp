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

// A pixel position kept finite and near the panel: numbers from a damaged recording can
// put a burst anywhere, and painting far outside the image gains nothing.
double nearPanel(double position, double low, double high)
{
    constexpr double Slack = 20.0;
    return std::isfinite(position) ? std::clamp(position, low - Slack, high + Slack) : low - Slack;
}

// What the picture spans: every burst window and every estimated channel, with a small
// margin, and the level range of the bursts; maps frequency and time to pixels.
struct PlotExtent
{
    double fLow = std::numeric_limits<double>::infinity();
    double fHigh = -std::numeric_limits<double>::infinity();
    float levelLow = std::numeric_limits<float>::infinity();
    float levelHigh = -std::numeric_limits<float>::infinity();
    unsigned long long tLow = ~0ull;
    unsigned long long tHigh = 0;

    static constexpr double plotWidth = PlotRight - PlotLeft;

    double xOf(double f) const
    {
        return nearPanel(PlotLeft + (f - fLow) / (fHigh - fLow) * plotWidth, PlotLeft, PlotRight);
    }
    double yOf(unsigned long long t) const
    {
        return nearPanel(WaterfallTop + double(t - tLow) / double(tHigh - tLow) *
                                            (WaterfallBottom - WaterfallTop),
                         WaterfallTop, WaterfallBottom);
    }
    // Where a level lies between the lowest and the highest, 0 to 1, computed in double: in
    // float, equal levels beyond 2^24 leave no room between low and high, and the difference
    // of extreme levels overflows.
    double levelFraction(float level) const
    {
        double const span = double(levelHigh) - double(levelLow);
        double const t = (double(level) - double(levelLow)) / span;
        return std::isfinite(t) && span > 0.0 ? t : 0.0;
    }
};

// Channel counts beyond these are not drawn: a degenerate estimate would take for ever.
constexpr unsigned int MaxExtentChannels = 100000;
constexpr unsigned int MaxDrawnChannels = 20000;

bool drawable(HopperFrequencyGridSegment const& segment)
{
    return segment.channelCount != 0 && segment.channelCount <= MaxDrawnChannels;
}

PlotExtent plotExtent(RadioBurstData const& data, HopperFrequencyGridEstimation const& grid)
{
    PlotExtent extent;
    for (BurstData const& burst : data.bursts) {
        if (std::isfinite(burst.frequency - burst.bandwidth / 2) &&
            std::isfinite(burst.frequency + burst.bandwidth / 2)) {
            extent.fLow = std::min(extent.fLow, burst.frequency - burst.bandwidth / 2);
            extent.fHigh = std::max(extent.fHigh, burst.frequency + burst.bandwidth / 2);
        }
        if (std::isfinite(burst.level_dBm)) {
            extent.levelLow = std::min(extent.levelLow, burst.level_dBm);
            extent.levelHigh = std::max(extent.levelHigh, burst.level_dBm);
        }
        extent.tLow = std::min(extent.tLow, burst.time);
        extent.tHigh = std::max(extent.tHigh, burst.time + burst.length);
    }
    if (!data.segmentStartTimes.empty()) {
        extent.tLow = std::min(extent.tLow, data.segmentStartTimes.front());
        extent.tHigh = std::max(extent.tHigh, *std::max_element(data.segmentStopTimes.begin(),
                                                                data.segmentStopTimes.end()));
    }
    for (auto const& segment : grid.segments) {
        if (segment.channelCount > 0 && segment.channelCount < MaxExtentChannels) {
            extent.fLow =
                std::min(extent.fLow, segment.startFrequency - segment.channelSpacing / 2);
            extent.fHigh =
                std::max(extent.fHigh, segment.getStopFrequency() + segment.channelSpacing / 2);
        }
    }
    if (!(extent.fHigh >= extent.fLow)) { // no finite frequency at all
        extent.fLow = extent.fHigh = 0.0;
    }
    // The margin also covers a few units in the last place, or at 2^53 Hz and beyond a
    // 1 Hz margin would vanish and leave a range of zero width.
    double const margin =
        std::max({1.0, (extent.fHigh - extent.fLow) * 0.015,
                  std::max(std::abs(extent.fLow), std::abs(extent.fHigh)) * 1e-12});
    extent.fLow -= margin;
    extent.fHigh += margin;
    if (!(extent.levelHigh > extent.levelLow)) {
        extent.levelHigh = extent.levelLow + 1.0f;
    }
    if (extent.tHigh <= extent.tLow) {
        extent.tHigh = extent.tLow + 1;
    }
    return extent;
}

QRectF histogramRect()
{
    return QRectF(PlotLeft, HistogramTop, PlotExtent::plotWidth, HistogramBottom - HistogramTop);
}

QRectF waterfallRect()
{
    return QRectF(PlotLeft, WaterfallTop, PlotExtent::plotWidth, WaterfallBottom - WaterfallTop);
}

// Everything the drawing steps share.
struct Plot
{
    QPainter& painter;
    Labels& labels;
    PlotExtent const& extent;
};

// --- Waterfall: panels, histogram and bursts ------------------------------------------------

void drawPanels(Plot const& plot, RadioBurstData const& data)
{
    plot.painter.fillRect(histogramRect(), PanelBackground);
    plot.painter.fillRect(waterfallRect(), PanelBackground);

    // Frame (segment) boundaries in time, faint.
    plot.painter.setPen(QPen(QColor(255, 255, 255, 28), 1));
    for (unsigned long long start : data.segmentStartTimes) {
        double const y = plot.extent.yOf(start);
        plot.painter.drawLine(QPointF(PlotLeft, y), QPointF(PlotRight, y));
    }
}

// Histogram of burst centre frequencies in 3-pixel bins: narrow enough to separate
// channels a few pixels apart, wide enough that a channel's peak does not split between
// two columns.
constexpr int BinPixels = 3;

std::vector<int> histogramCounts(RadioBurstData const& data, PlotExtent const& extent)
{
    double const plotWidth = PlotExtent::plotWidth;
    std::vector<int> counts(std::size_t(plotWidth) / BinPixels + 1, 0);
    for (BurstData const& burst : data.bursts) {
        auto const bin =
            std::size_t(std::clamp(extent.xOf(burst.frequency) - PlotLeft, 0.0, plotWidth)) /
            BinPixels;
        ++counts[bin];
    }
    return counts;
}

void drawHistogram(Plot const& plot, RadioBurstData const& data)
{
    std::vector<int> const counts = histogramCounts(data, plot.extent);
    int const maxCount = std::max(1, *std::max_element(counts.begin(), counts.end()));
    plot.painter.setPen(Qt::NoPen);
    double const histogramHeight = HistogramBottom - HistogramTop - 6;
    for (std::size_t bin = 0; bin < counts.size(); ++bin) {
        if (counts[bin] == 0) {
            continue;
        }
        double const h = std::max(1.0, histogramHeight * counts[bin] / maxCount);
        plot.painter.fillRect(
            QRectF(PlotLeft + double(bin * BinPixels), HistogramBottom - h, BinPixels - 0.5, h),
            QColor(150, 210, 255));
    }
}

// The window of each burst, shaded by level; at least a pixel so none vanishes.
void drawBursts(Plot const& plot, RadioBurstData const& data)
{
    PlotExtent const& extent = plot.extent;
    plot.painter.setRenderHint(QPainter::Antialiasing, false);
    for (BurstData const& burst : data.bursts) {
        double const x0 = extent.xOf(burst.frequency - burst.bandwidth / 2);
        double const x1 = extent.xOf(burst.frequency + burst.bandwidth / 2);
        double const y0 = extent.yOf(burst.time);
        double const y1 = extent.yOf(burst.time + burst.length);
        double const t = extent.levelFraction(burst.level_dBm);
        plot.painter.fillRect(QRectF(x0, y0, std::max(1.0, x1 - x0), std::max(1.0, y1 - y0)),
                              levelColour(t));
    }
    plot.painter.setRenderHint(QPainter::Antialiasing, true);
}

// --- Grid: estimated channels, hop frequencies, segment boundaries --------------------------

// Estimated channel centres behind the bursts: occupied solid, unoccupied dashed.
void drawChannelCentres(Plot const& plot, HopperFrequencySet const& set)
{
    HopperFrequencyGridEstimation const& grid = set.gridEstimation;
    std::vector<double> occupied =
        grid.createFrequencyListWithoutUnoccupiedFrequencies(set.frequencies);
    std::sort(occupied.begin(), occupied.end());
    for (auto const& segment : grid.segments) {
        if (!drawable(segment)) {
            continue;
        }
        for (unsigned int k = 0; k < segment.channelCount; ++k) {
            double const f = segment.getFrequencyOfChannelIndex(k);
            bool const used = std::binary_search(occupied.begin(), occupied.end(), f);
            plot.painter.setPen(used ? QPen(OccupiedChannel, 1)
                                     : QPen(UnoccupiedChannel, 1, Qt::DashLine));
            double const x = plot.extent.xOf(f);
            plot.painter.drawLine(QPointF(x, HistogramTop), QPointF(x, WaterfallBottom));
        }
    }
}

// Estimated hop frequencies: ticks under the histogram.
void drawHopTicks(Plot const& plot, HopperFrequencySet const& set)
{
    plot.painter.setPen(QPen(HopTick, 1.5));
    for (double f : set.frequencies) {
        double const x = plot.extent.xOf(f);
        plot.painter.drawLine(QPointF(x, HistogramBottom - 5), QPointF(x, HistogramBottom));
    }
}

// Segment boundaries half a spacing outside the outer channels, labelled S1, S2, ...
void drawSegmentBoundaries(Plot const& plot, HopperFrequencyGridEstimation const& grid)
{
    QPainter& painter = plot.painter;
    painter.setPen(QPen(SegmentBoundary, 2, Qt::DashLine));
    for (std::size_t s = 0; s < grid.segments.size(); ++s) {
        auto const& segment = grid.segments[s];
        if (!drawable(segment)) {
            continue;
        }
        double const left = plot.extent.xOf(segment.startFrequency - segment.channelSpacing / 2);
        double const right =
            plot.extent.xOf(segment.getStopFrequency() + segment.channelSpacing / 2);
        painter.setPen(QPen(SegmentBoundary, 2, Qt::DashLine));
        painter.drawLine(QPointF(left, HistogramTop - 6), QPointF(left, WaterfallBottom));
        painter.drawLine(QPointF(right, HistogramTop - 6), QPointF(right, WaterfallBottom));
        painter.setPen(QPen(SegmentBoundary, 3));
        painter.drawLine(QPointF(left, HistogramTop - 6), QPointF(right, HistogramTop - 6));
        plot.labels.text(QStringLiteral("S%1").arg(s + 1), (left + right) / 2, HistogramTop - 11,
                         13, SegmentBoundary, 1, true);
    }
}

// --- Axes -----------------------------------------------------------------------------------

void drawAxes(Plot const& plot)
{
    QPainter& painter = plot.painter;
    Labels& labels = plot.labels;
    PlotExtent const& extent = plot.extent;
    painter.setPen(QPen(AxisColour, 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(histogramRect());
    painter.drawRect(waterfallRect());
    double const fStep = niceStep(extent.fHigh - extent.fLow, 12);
    int const fDecimals = std::max(0, decimalsFor(fStep / 1e6));
    // Counted steps: far from 0 Hz, f + fStep can round back to f.
    double const firstTick = std::ceil(extent.fLow / fStep) * fStep;
    for (int tick = 0; tick < 100 && firstTick + tick * fStep <= extent.fHigh; ++tick) {
        double const f = firstTick + tick * fStep;
        double const x = extent.xOf(f);
        painter.drawLine(QPointF(x, WaterfallBottom), QPointF(x, WaterfallBottom + 6));
        labels.text(megahertz(f, fDecimals), x, WaterfallBottom + 22, 13, AxisColour, 1);
    }
    labels.text(QStringLiteral("frequency [MHz]"), (PlotLeft + PlotRight) / 2.0,
                WaterfallBottom + 50, 14, AxisColour, 1, true);

    double const span = double(extent.tHigh - extent.tLow);
    bool const inSeconds = span / 1e6 >= 10.0;
    double const unit = inSeconds ? 1e6 : 1e3;
    double const tStep = niceStep(span / unit, 10);
    int const tDecimals = decimalsFor(tStep);
    for (double t = 0.0; t <= span / unit + 1e-9; t += tStep) {
        double const y = extent.yOf(extent.tLow + (unsigned long long)std::llround(t * unit));
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
}

// --- Legend ---------------------------------------------------------------------------------

// Writes the legend's lines from the top down; y is the baseline of the next line.
class LegendWriter
{
public:
    LegendWriter(Plot const& plot, double y) : plot(plot), y(y) {}

    void heading(QString const& text)
    {
        plot.labels.text(text, LegendLeft, y, 16, AxisColour, 0, true);
        y += 26;
    }
    void row(QString const& label, QString const& value)
    {
        plot.labels.text(label, LegendLeft, y, 13, QColor(90, 94, 110));
        plot.labels.text(value, LegendLeft + 130, y, 13, AxisColour);
        y += 20;
    }

    Plot const& plot;
    double y;
};

void writeRadioFigures(LegendWriter& legend, unsigned int radioID, RadioBurstData const& data,
                       HopperFrequencySet const& set, double meanBandwidth)
{
    PlotExtent const& extent = legend.plot.extent;
    QDateTime const start = QDateTime::fromMSecsSinceEpoch(qint64(extent.tLow / 1000), Qt::UTC);
    double const spanSeconds = double(extent.tHigh - extent.tLow) / 1e6;
    legend.heading(QStringLiteral("Radio %1").arg(radioID));
    legend.row(QStringLiteral("bursts"), QString::number(data.bursts.size()));
    legend.row(QStringLiteral("segments"), QString::number(data.segmentCount()));
    legend.row(QStringLiteral("date"), start.toString(QStringLiteral("yyyy-MM-dd")));
    legend.row(QStringLiteral("start"),
               start.toString(QStringLiteral("hh:mm:ss.zzz")) + QStringLiteral(" UTC"));
    legend.row(QStringLiteral("span"), QString::number(spanSeconds, 'f', 3) + QStringLiteral(" s"));
    legend.row(QStringLiteral("mean bandwidth"), kilohertz(meanBandwidth));
    legend.row(QStringLiteral("hop frequencies"), QString::number(set.frequencies.size()));
}

void writeGridFigures(LegendWriter& legend, HopperFrequencyGridEstimation const& grid)
{
    Labels& labels = legend.plot.labels;
    double& y = legend.y;
    legend.heading(QStringLiteral("Grid estimate"));
    if (grid.segments.empty()) {
        legend.row(QStringLiteral("segments"), QStringLiteral("none"));
        return;
    }
    unsigned int occupiedTotal = 0;
    for (auto const& segment : grid.segments) {
        occupiedTotal += segment.occupiedChannelCount;
    }
    legend.row(QStringLiteral("segments"), QString::number(grid.getSegmentCount()));
    legend.row(QStringLiteral("spacing"), kilohertz(grid.getMeanChannelSpacing()));
    legend.row(
        QStringLiteral("channels"),
        QStringLiteral("%1 (%2 occupied)").arg(grid.getTotalChannelCount()).arg(occupiedTotal));
    legend.row(QStringLiteral("occupation"),
               QString::number(100.0 * grid.getOccupationRatio(), 'f', 1) + QStringLiteral(" %"));
    legend.row(QStringLiteral("RMS deviation"),
               QString::number(grid.getQuadraticMeanDeviation(), 'f', 1) + QStringLiteral(" Hz"));
    y += 6;
    std::size_t const shown = std::min<std::size_t>(grid.segments.size(), 8);
    for (std::size_t s = 0; s < shown; ++s) {
        auto const& segment = grid.segments[s];
        labels.text(QStringLiteral("S%1").arg(s + 1), LegendLeft, y, 13, SegmentBoundary, 0, true);
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
        labels.text(QStringLiteral("… %1 more").arg(grid.segments.size() - shown), LegendLeft + 34,
                    y, 12, QColor(90, 94, 110));
        y += 22;
    }
}

// Fit: where the bursts lie relative to their nearest estimated channel, in fractions of
// the spacing. A narrow peak at 0 is a grid that fits; a flat spread is one that does not.
constexpr int FitBins = 50;

std::vector<int> gridFitCounts(RadioBurstData const& data,
                               HopperFrequencyGridEstimation const& grid)
{
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
    return fit;
}

void drawGridFit(LegendWriter& legend, RadioBurstData const& data,
                 HopperFrequencyGridEstimation const& grid)
{
    std::vector<int> const fit = gridFitCounts(data, grid);
    int const fitMax = *std::max_element(fit.begin(), fit.end());
    if (fitMax == 0) {
        return;
    }
    QPainter& painter = legend.plot.painter;
    Labels& labels = legend.plot.labels;
    double& y = legend.y;
    y += 8;
    legend.heading(QStringLiteral("Fit to the grid"));
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

void drawKey(LegendWriter& legend)
{
    QPainter& painter = legend.plot.painter;
    Labels& labels = legend.plot.labels;
    PlotExtent const& extent = legend.plot.extent;
    double& y = legend.y;
    y = std::max(y + 14, 640.0);
    legend.heading(QStringLiteral("Key"));
    QLinearGradient gradient(LegendLeft, 0, LegendLeft + 250, 0);
    for (int i = 0; i <= 8; ++i) {
        gradient.setColorAt(i / 8.0, levelColour(i / 8.0));
    }
    painter.fillRect(QRectF(LegendLeft, y - 12, 250, 14), gradient);
    y += 18;
    labels.text(QString::number(extent.levelLow, 'f', 1), LegendLeft, y, 12, AxisColour);
    labels.text(QString::number(extent.levelHigh, 'f', 1), LegendLeft + 250, y, 12, AxisColour, 2);
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
}

void drawLegend(Plot const& plot, unsigned int radioID, RadioBurstData const& data,
                HopperFrequencySet const& set, double meanBandwidth)
{
    LegendWriter legend(plot, 90);
    writeRadioFigures(legend, radioID, data, set, meanBandwidth);
    legend.y += 12;
    writeGridFigures(legend, set.gridEstimation);
    drawGridFit(legend, data, set.gridEstimation);
    drawKey(legend);
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

    labels.text(QStringLiteral("Radio %1: bursts over frequency and time").arg(radioID), PlotLeft,
                38, 22, AxisColour, 0, true);
    if (data.bursts.empty()) {
        labels.text(QStringLiteral("no bursts held for this radio"), PlotLeft, 120, 16, AxisColour);
        return image;
    }

    PlotExtent const extent = plotExtent(data, set.gridEstimation);
    Plot const plot{painter, labels, extent};
    // Back to front: what is drawn later covers what is drawn earlier.
    drawPanels(plot, data);
    drawChannelCentres(plot, set);
    drawHistogram(plot, data);
    drawBursts(plot, data);
    drawHopTicks(plot, set);
    drawSegmentBoundaries(plot, set.gridEstimation);
    drawAxes(plot);
    drawLegend(plot, radioID, data, set, meanBandwidth);
    return image;
}

} // namespace zelkotool
