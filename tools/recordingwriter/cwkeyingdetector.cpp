#include "cwkeyingdetector.h"

#include <QtMath>
#include <algorithm>
#include <cmath>

namespace zelkorecording {

namespace {

using Complex = std::complex<double>;

constexpr double lowestTone = 100;
constexpr double highestTone = 4000;
constexpr int blockSteps = 5000; // 5 s of milliseconds
constexpr double keyDownFraction = 0.50;
constexpr double keyUpFraction = 0.35;
constexpr double presentRatio = 1.5; // 3.5 dB
constexpr int firstWidth = 20;       // milliseconds

/// In-place radix-2 FFT with precomputed twiddles (exp(-2 pi i k / n), k < n / 2); the
/// products are written out in real arithmetic, which the compiler keeps inline (std::complex
/// multiplication goes through a library call that checks for infinities).
void fft(QVector<Complex>& a, QVector<Complex> const& twiddles)
{
    int const n = a.size();
    for (int i = 1, j = 0; i < n; ++i) {
        int bit = n >> 1;
        for (; j & bit; bit >>= 1) {
            j ^= bit;
        }
        j ^= bit;
        if (i < j) {
            std::swap(a[i], a[j]);
        }
    }
    Complex* const data = a.data();
    for (int length = 2; length <= n; length <<= 1) {
        int const half = length / 2;
        int const stride = n / length;
        for (int i = 0; i < n; i += length) {
            for (int k = 0; k < half; ++k) {
                Complex const w = twiddles[k * stride];
                Complex const x = data[i + k + half];
                Complex const v(x.real() * w.real() - x.imag() * w.imag(),
                                x.real() * w.imag() + x.imag() * w.real());
                Complex const u = data[i + k];
                data[i + k] = Complex(u.real() + v.real(), u.imag() + v.imag());
                data[i + k + half] = Complex(u.real() - v.real(), u.imag() - v.imag());
            }
        }
    }
}

/// A damaged float file may hold NaN or infinities; one such sample would poison every sum
/// and sort after it.
float finiteOrSilent(float sample)
{
    return std::isfinite(sample) ? sample : 0.0f;
}

float percentile(QVector<float> values, double fraction)
{
    if (values.isEmpty()) {
        return 0;
    }
    auto const at = values.begin() + int(fraction * (values.size() - 1));
    std::nth_element(values.begin(), at, values.end());
    return *at;
}

/// Magnitudes of the I/Q steps summed over `width` steps centred on each (a running sum: the
/// window gains at most one step and loses at most one per step).
QVector<float> envelope(QVector<std::complex<float>> const& steps, int width)
{
    int const n = steps.size();
    QVector<float> out(n);
    std::complex<double> sum;
    int from = 0;
    int to = 0;
    for (int i = 0; i < n; ++i) {
        int const wantedFrom = qMax(0, i - width / 2);
        int const wantedTo = qMin(n, i - width / 2 + width);
        for (; to < wantedTo; ++to) {
            sum += std::complex<double>(steps[to]);
        }
        for (; from < wantedFrom; ++from) {
            sum -= std::complex<double>(steps[from]);
        }
        out[i] = float(std::abs(sum) / width);
    }
    return out;
}

struct Levels
{
    float floor = 0;
    float keyed = 0;
};

/// Floor and keyed level per 5 s block, from the 15 s around it.
QVector<Levels> blockLevels(QVector<float> const& envelope)
{
    int const blocks = (envelope.size() + blockSteps - 1) / blockSteps;
    QVector<Levels> out(blocks);
    for (int b = 0; b < blocks; ++b) {
        int const from = qMax(0, (b - 1) * blockSteps);
        int const to = qMin(envelope.size(), (b + 2) * blockSteps);
        QVector<float> const window = envelope.mid(from, to - from);
        out[b] = {percentile(window, 0.2), percentile(window, 0.95)};
    }
    return out;
}

/// Key-down/key-up runs of the envelope, each crossing placed between milliseconds by
/// linear interpolation.
QVector<KeyElement> key(QVector<float> const& envelope)
{
    QVector<Levels> const levels = blockLevels(envelope);
    QVector<KeyElement> out;
    bool down = false;
    double runStart = 0;
    for (int i = 0; i < envelope.size(); ++i) {
        Levels const& level = levels[i / blockSteps];
        bool const present = level.keyed > presentRatio * level.floor && level.keyed > 0;
        float const span = level.keyed - level.floor;
        float const threshold = level.floor + span * (down ? keyUpFraction : keyDownFraction);
        bool const next = present && (down ? envelope[i] >= threshold : envelope[i] > threshold);
        if (next == down) {
            continue;
        }
        double at = i;
        if (i > 0 && envelope[i] != envelope[i - 1]) {
            at =
                i - 1 + double(threshold - envelope[i - 1]) / double(envelope[i] - envelope[i - 1]);
            at = qBound(double(i - 1), at, double(i));
        }
        double const microseconds = (at - runStart) * CwKeyingDetector::stepMicroseconds;
        if (microseconds >= 1) {
            out.append({down, quint32(qRound(microseconds))});
        }
        runStart = at;
        down = next;
    }
    double const rest = (envelope.size() - runStart) * CwKeyingDetector::stepMicroseconds;
    if (rest >= 1) {
        out.append({down, quint32(qRound(rest))});
    }
    return out;
}

/// A dot's length from the marks not shorter than `shortest`: their 30th percentile (dots are
/// about as common as dashes), 0 without marks.
double dotFromMarks(QVector<KeyElement> const& elements, double shortest = 0)
{
    QVector<float> marks;
    for (KeyElement const& element : elements) {
        if (element.keyDown && element.microseconds >= shortest) {
            marks.append(float(element.microseconds));
        }
    }
    return percentile(marks, 0.3);
}

} // namespace

CwKeyingDetector::CwKeyingDetector(int sampleRate, qint64 expectedSamples)
    : m_sampleRate(qMax(1, sampleRate))
{
    m_fftSize = 256;
    while (m_fftSize < m_sampleRate / 4) {
        m_fftSize *= 2;
    }
    constexpr qint64 searchedBlocks = 480;
    m_searchStride = qMax<qint64>(1, expectedSamples / m_fftSize / searchedBlocks);
    m_power.fill(0, m_fftSize / 2);
    for (int i = 0; i < m_fftSize; ++i) {
        m_window.append(0.5 - 0.5 * qCos(2 * M_PI * i / m_fftSize));
    }
    for (int k = 0; k < m_fftSize / 2; ++k) {
        m_twiddles.append(std::polar(1.0, -2 * M_PI * k / m_fftSize));
    }
    m_block.reserve(m_fftSize);
}

void CwKeyingDetector::addToneSearch(float const* samples, qint64 count)
{
    for (qint64 i = 0; i < count; ++i) {
        m_block.append(finiteOrSilent(samples[i]));
        if (m_block.size() == m_fftSize) {
            if (m_blocks++ % m_searchStride == 0) {
                transformBlock();
            }
            m_block.clear();
        }
    }
}

void CwKeyingDetector::transformBlock()
{
    QVector<Complex> spectrum(m_fftSize);
    for (int i = 0; i < m_fftSize; ++i) {
        spectrum[i] = m_block[i] * m_window[i];
    }
    fft(spectrum, m_twiddles);
    for (int k = 0; k < m_fftSize / 2; ++k) {
        m_power[k] += std::norm(spectrum[k]);
    }
}

double CwKeyingDetector::searchedTone() const
{
    double const binHz = double(m_sampleRate) / m_fftSize;
    int const first = qMax(1, int(lowestTone / binHz));
    int const last = qMin(m_fftSize / 2 - 2, int(highestTone / binHz));
    int best = -1;
    for (int k = first; k <= last; ++k) {
        if (m_power[k] > 0 && (best < 0 || m_power[k] > m_power[best])) {
            best = k;
        }
    }
    if (best < 0) {
        return 0;
    }
    // A parabola through the peak and its neighbours (in dB) places the tone between bins.
    double const a = qLn(m_power[best - 1] + 1e-30);
    double const b = qLn(m_power[best] + 1e-30);
    double const c = qLn(m_power[best + 1] + 1e-30);
    double const denominator = a - 2 * b + c;
    double const offset = denominator < 0 ? 0.5 * (a - c) / denominator : 0;
    return (best + qBound(-0.5, offset, 0.5)) * binHz;
}

void CwKeyingDetector::setTone(double hz)
{
    m_tone = hz;
}

void CwKeyingDetector::addSignal(float const* samples, qint64 count)
{
    // A local oscillator turning by one phasor product a sample, held to unit length once a
    // step, instead of a sine and a cosine a sample.
    Complex const turn = std::polar(1.0, -2 * M_PI * m_tone / m_sampleRate);
    for (qint64 i = 0; i < count; ++i) {
        double const x = finiteOrSilent(samples[i]);
        m_sum += Complex(x * m_oscillator.real(), x * m_oscillator.imag());
        m_oscillator =
            Complex(m_oscillator.real() * turn.real() - m_oscillator.imag() * turn.imag(),
                    m_oscillator.real() * turn.imag() + m_oscillator.imag() * turn.real());
        ++m_sampleIndex;
        // Steps end where a whole millisecond of samples has gone by, also at rates such as
        // 22050 Hz that do not divide into milliseconds.
        if (m_sampleIndex * 1000000 >=
            (m_steps.size() + 1) * qint64(stepMicroseconds) * m_sampleRate) {
            qint64 const samplesInStep = m_sampleIndex - m_stepEnd;
            m_steps.append(std::complex<float>(m_sum * (2.0 / samplesInStep)));
            m_stepEnd = m_sampleIndex;
            m_sum = 0;
            m_oscillator /= std::abs(m_oscillator);
        }
    }
}

CwKeying CwKeyingDetector::finish() const
{
    CwKeying out;
    out.toneHz = m_tone;
    // A first look, smoothed enough to keep noise from keying but not so much that 60 wpm
    // dots vanish; marks shorter than a third of it are noise that got through.
    QVector<float> const first = envelope(m_steps, firstWidth);
    double const roughDot = dotFromMarks(key(first), firstWidth * stepMicroseconds / 3);
    int const width =
        roughDot > 0 ? qBound(3, int(roughDot * 0.9 / stepMicroseconds), 120) : firstWidth;
    QVector<float> const smooth = envelope(m_steps, width);
    out.elements = key(smooth);
    // Marks ramp up and down over the smoothing width; the thresholds' offsets from the middle
    // lengthen them by a known part of it.
    double const lengthening = (1 - keyDownFraction - keyUpFraction) * width;
    out.dotMicroseconds = qMax(0.0, dotFromMarks(out.elements) - lengthening * stepMicroseconds);
    float const keyed = percentile(smooth, 0.95);
    if (keyed > 0) {
        out.levelDbfs = 20 * std::log10(double(keyed));
    }
    return out;
}

} // namespace zelkorecording
