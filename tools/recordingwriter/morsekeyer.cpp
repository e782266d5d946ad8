#include "morsekeyer.h"

#include <QtMath>
#include <random>

namespace zelkorecording {

QVector<KeyElement> keyMorse(QString const& code, MorseKeying const& keying)
{
    double const dot = 1.2e6 / keying.wpm;
    // Farnsworth (ARRL): the time a PARIS word loses at the lower speed, spread over its
    // 19 units of character and word gaps.
    double const gapUnit = keying.effectiveWpm > 0
                               ? (60 * keying.wpm - 37.2 * keying.effectiveWpm) /
                                     (keying.wpm * keying.effectiveWpm) * 1e6 / 19
                               : dot;
    std::mt19937 random(keying.seed);
    std::uniform_real_distribution<double> spread(-keying.jitter, keying.jitter);
    auto length = [&](double microseconds) {
        return quint32(qMax(1.0, microseconds * (1 + spread(random))));
    };
    QVector<KeyElement> out;
    bool inCharacter = false;
    for (QChar const unit : code) {
        if (unit == QLatin1Char('.') || unit == QLatin1Char('-')) {
            if (inCharacter) {
                out.append({false, length(dot)});
            }
            out.append({true, length(unit == QLatin1Char('-') ? 3 * dot : dot)});
            inCharacter = true;
        } else if (unit == QLatin1Char(' ') && inCharacter) {
            out.append({false, length(3 * gapUnit)});
            inCharacter = false;
        } else if (unit == QLatin1Char('/') && !out.isEmpty() && !out.last().keyDown) {
            out.last().microseconds += length(4 * gapUnit);
        }
    }
    if (inCharacter) {
        out.append({false, length(3 * gapUnit)});
    }
    return out;
}

QVector<float> cwAudio(QVector<KeyElement> const& elements, double toneHz, int sampleRate,
                       double amplitude, double edgeSeconds)
{
    QVector<double> ends; // of each element, in seconds
    double time = 0;
    for (KeyElement const& element : elements) {
        time += element.microseconds / 1e6;
        ends.append(time);
    }
    // From 0 half an edge before a keying instant to 1 half an edge after it.
    auto rise = [edgeSeconds](double sinceInstant) {
        double const x = qBound(0.0, sinceInstant / edgeSeconds + 0.5, 1.0);
        return 0.5 - 0.5 * qCos(M_PI * x);
    };
    QVector<float> samples(int(time * sampleRate));
    int k = 0; // the element sounding
    for (int i = 0; i < samples.size(); ++i) {
        double const t = double(i) / sampleRate;
        while (k + 1 < ends.size() && t >= ends[k]) {
            ++k;
        }
        double const sinceStart = k > 0 ? t - ends[k - 1] : edgeSeconds;
        double const untilEnd = ends[k] - t;
        double const on = sinceStart < untilEnd ? rise(sinceStart) : 1 - rise(-untilEnd);
        double const gain = elements[k].keyDown ? on : 1 - on;
        samples[i] = float(amplitude * gain * qSin(2 * M_PI * toneHz * t));
    }
    return samples;
}

} // namespace zelkorecording
