#include "morsetimingdecoder.h"

#include <QtMath>
#include <algorithm>
#include <numeric>

namespace {

constexpr double microsecondsPerWpmDot = 1.2e6; // PARIS: a dot lasts 1.2 s / wpm
// The speed range with room for sloppy keying at either end.
constexpr double shortestDot = microsecondsPerWpmDot / 60 / 2;
constexpr double longestDot = microsecondsPerWpmDot / 5 * 2;
// Before the speed is known, anything shorter than a third of a 60 wpm dot is noise.
constexpr double warmUpSpikeLimit = microsecondsPerWpmDot / 60 / 3;
constexpr int warmUpMarks = 6;
constexpr int markWindow = 8;
constexpr int longGapWindow = 12;
constexpr double adaptation = 0.3;
// Two clusters of marks count as dots and dashes when their typical lengths differ this much.
constexpr double dotDashSeparation = 2.0;
// Word gaps are 7/3 of a character gap; the threshold lies at 5/3.
constexpr double wordThreshold = 5.0 / 3.0;
constexpr double wordIdeal = 7.0 / 3.0;

/// 1 at `ideal`, 0 at `threshold` (either side), linear in the logarithm, clipped to 0..1.
double closeness(double value, double ideal, double threshold)
{
    double const margin = qAbs(qLn(threshold / ideal));
    return qBound(0.0, 1.0 - qAbs(qLn(value / ideal)) / margin, 1.0);
}

/// As closeness, but a value beyond the ideal (away from the threshold) scores 1.
double atLeast(double value, double ideal, double threshold)
{
    bool const beyond = threshold < ideal ? value >= ideal : value <= ideal;
    return beyond ? 1.0 : closeness(value, ideal, threshold);
}

/// The threshold between two clusters of values (Otsu's split of their logarithms), or 0 when
/// the values do not fall into two clusters `separation` apart.
double twoClusterThreshold(QVector<double> values, double separation)
{
    for (double& value : values) {
        value = qLn(value);
    }
    std::sort(values.begin(), values.end());
    double const total = std::accumulate(values.cbegin(), values.cend(), 0.0);
    double best = -1;
    double threshold = 0;
    double lowSum = 0;
    int const n = values.size();
    for (int split = 1; split < n; ++split) {
        lowSum += values[split - 1];
        double const lowMean = lowSum / split;
        double const highMean = (total - lowSum) / (n - split);
        double const spread =
            double(split) * (n - split) * (highMean - lowMean) * (highMean - lowMean);
        if (spread > best) {
            best = spread;
            threshold = highMean - lowMean >= qLn(separation) ? qExp((lowMean + highMean) / 2) : 0;
        }
    }
    return threshold;
}

template <typename T>
void pushLimited(QVector<T>& window, T value, int limit)
{
    window.append(value);
    if (window.size() > limit) {
        window.removeFirst();
    }
}

} // namespace

MorseTimingDecoder::MorseTimingDecoder() = default;

void MorseTimingDecoder::reset()
{
    *this = MorseTimingDecoder();
}

QVector<MorseCharacter> MorseTimingDecoder::add(QVector<MorseElement> const& elements)
{
    for (MorseElement const& element : elements) {
        append(element);
    }
    return std::exchange(m_out, {});
}

QVector<MorseCharacter> MorseTimingDecoder::finish()
{
    finishRun();
    if (!m_ready) {
        initialise();
    }
    if (!m_current.character.elements.isEmpty()) {
        resolveHeld(false);
        m_held = m_current;
    }
    resolveHeld(true);
    QVector<MorseCharacter> out = std::exchange(m_out, {});
    reset();
    return out;
}

void MorseTimingDecoder::append(MorseElement const& element)
{
    qint64 const length = element.microseconds;
    // A mark inside a gap (a crackle) or a gap inside a mark (a fade) shorter than a third of
    // a dot belongs to the element it interrupts.
    if (element.keyDown == m_run.keyDown || length < spikeLimit()) {
        m_run.microseconds += length;
        return;
    }
    finishRun();
    m_run = Run{element.keyDown, length, m_run.start + m_run.microseconds};
}

double MorseTimingDecoder::spikeLimit() const
{
    return m_ready ? m_dot / 3 : warmUpSpikeLimit;
}

void MorseTimingDecoder::finishRun()
{
    if (m_run.microseconds > 0) {
        process(m_run);
    }
    m_run = Run{m_run.keyDown, 0, m_run.start + m_run.microseconds};
}

void MorseTimingDecoder::process(Run const& run)
{
    if (!m_ready) {
        m_warmUp.append(run);
        int const marks = int(std::count_if(m_warmUp.cbegin(), m_warmUp.cend(),
                                            [](Run const& r) { return r.keyDown; }));
        if (marks >= warmUpMarks) {
            initialise();
        }
        return;
    }
    if (run.keyDown) {
        processMark(run);
    } else {
        processGap(run);
    }
}

// The first marks set the speed: two clusters are dots and dashes; marks all alike are dots
// unless the gaps between them are much shorter (then they are dashes).
void MorseTimingDecoder::initialise()
{
    QVector<double> marks;
    double shortestGap = 0;
    for (Run const& run : qAsConst(m_warmUp)) {
        if (run.keyDown) {
            marks.append(run.microseconds);
        } else if (!marks.isEmpty() && (shortestGap == 0 || run.microseconds < shortestGap)) {
            shortestGap = run.microseconds;
        }
    }
    if (marks.isEmpty()) {
        m_warmUp.clear();
        return;
    }
    double const threshold = twoClusterThreshold(marks, dotDashSeparation);
    double sum = 0;
    for (double const mark : qAsConst(marks)) {
        sum += threshold > 0 && mark > threshold ? mark / 3 : mark;
    }
    m_dot = sum / marks.size();
    if (threshold == 0 && shortestGap > 0 && m_dot / shortestGap >= dotDashSeparation) {
        m_dot /= 3;
    }
    m_dot = qBound(shortestDot, m_dot, longestDot);
    m_elementGap = m_dot;
    m_ready = true;
    QVector<Run> const runs = std::exchange(m_warmUp, {});
    for (Run const& run : runs) {
        process(run);
    }
}

double MorseTimingDecoder::dotDashThreshold() const
{
    double const split = twoClusterThreshold(m_recentMarks, dotDashSeparation);
    double const marks = split > 0 ? split : 2 * m_dot;
    // Inside a character the gap just keyed is a dot at the present speed: after a change of
    // speed it knows the new dot before the marks do.
    return m_gapInCharacter > 0 ? qSqrt(marks * 2 * m_gapInCharacter) : marks;
}

void MorseTimingDecoder::processMark(Run const& mark)
{
    double const length = double(mark.microseconds);
    pushLimited(m_recentMarks, length, markWindow);
    bool const dash = length > dotDashThreshold();
    MorseCharacter& character = m_current.character;
    if (character.elements.isEmpty()) {
        character.startMicroseconds = mark.start;
    }
    character.elements += QLatin1Char(dash ? '-' : '.');
    character.endMicroseconds = mark.start + mark.microseconds;
    m_current.scores.append(dash ? closeness(length, 3 * m_dot, 2 * m_dot)
                                 : closeness(length, m_dot, 2 * m_dot));
    m_dot =
        qBound(shortestDot, (1 - adaptation) * m_dot + adaptation * (dash ? length / 3 : length),
               longestDot);
    // Keying weight may shift marks against gaps, but not by much more than a third of a dot.
    m_elementGap = qBound(m_dot * 0.6, m_elementGap, m_dot * 1.4);
}

void MorseTimingDecoder::processGap(Run const& gap)
{
    if (m_current.character.elements.isEmpty()) {
        return; // silence before the first mark
    }
    double const length = double(gap.microseconds);
    if (length < 2 * m_elementGap) {
        m_gapInCharacter = length;
        m_current.scores.append(closeness(length, m_elementGap, 2 * m_elementGap));
        m_elementGap =
            qBound(m_dot / 2, (1 - adaptation) * m_elementGap + adaptation * length, m_dot * 1.5);
        return;
    }
    m_current.scores.append(atLeast(length, 3 * m_elementGap, 2 * m_elementGap));
    closeCharacter(gap);
}

void MorseTimingDecoder::closeCharacter(Run const& gap)
{
    m_gapInCharacter = 0;
    m_current.gapStart = gap.start;
    m_current.gap = gap.microseconds;
    m_current.character.wordsPerMinute = microsecondsPerWpmDot / m_dot;
    pushLimited(m_recentLongGaps, gap.microseconds, longGapWindow);
    resolveHeld(false);
    m_held = std::exchange(m_current, PendingCharacter());
}

// Decides whether the held character's gap ends a word, from the character gaps around it
// (the newest gap, one ahead of it, included), and returns the character and the word gap.
void MorseTimingDecoder::resolveHeld(bool lastGap)
{
    if (!m_held) {
        return;
    }
    PendingCharacter held = *std::exchange(m_held, std::nullopt);
    MorseCharacter wordGap;
    if (!lastGap && held.gap > 0) {
        QVector<qint64> gaps = m_recentLongGaps;
        std::sort(gaps.begin(), gaps.end());
        // After a speed-up the window still holds the slower gaps: the gap ahead, unless it
        // is a word gap itself, tells the new character gap at once.
        double const ahead = qMax(double(m_recentLongGaps.constLast()), 3 * m_elementGap);
        double const characterGap = qMin(double(gaps.at(int(0.3 * (gaps.size() - 1)))), ahead);
        double const length = double(held.gap);
        bool const word = length > wordThreshold * characterGap;
        double const score =
            word ? atLeast(length, wordIdeal * characterGap, wordThreshold * characterGap)
                 : atLeast(length, characterGap, wordThreshold * characterGap);
        held.scores.append(score);
        if (word) {
            wordGap.text = QStringLiteral(" ");
            wordGap.confidence = qRound(100 * score);
            wordGap.startMicroseconds = held.gapStart;
            wordGap.endMicroseconds = held.gapStart + held.gap;
            wordGap.wordsPerMinute = held.character.wordsPerMinute;
        }
    }
    if (held.character.wordsPerMinute == 0) {
        held.character.wordsPerMinute = microsecondsPerWpmDot / m_dot;
    }
    QVector<double> const& scores = held.scores;
    double const worst = *std::min_element(scores.cbegin(), scores.cend());
    double const mean = std::accumulate(scores.cbegin(), scores.cend(), 0.0) / scores.size();
    held.character.confidence = qRound(50 * (worst + mean));
    m_out.append(held.character);
    if (!wordGap.text.isEmpty()) {
        m_out.append(wordGap);
    }
}
