#pragma once

#include "symbolpayload.h"

#include <QVector>
#include <complex>

namespace zelkorecording {

/// What CwKeyingDetector heard.
struct CwKeying
{
    QVector<KeyElement> elements; ///< from the start of the audio, starting key up
    double toneHz = 0;
    double levelDbfs = -200;    ///< the keyed tone's amplitude (a full-scale sine: 0 dBFS)
    double dotMicroseconds = 0; ///< rough, from the marks; 0 when no keying was heard
};

/// Finds the keyed carrier of a CW (Morse) signal in audio and turns it into key-down and
/// key-up durations, in two passes over mono samples (-1..1):
///
/// 1. addToneSearch(): the audio's power spectrum (Hann-windowed FFT blocks of about a
///    quarter second, summed); the strongest line between 100 and 4000 Hz is the tone,
///    refined between FFT bins. setTone() skips this pass.
/// 2. addSignal(): the audio mixed down at the tone and summed per millisecond (I/Q).
///
/// finish() smooths the I/Q coherently over nine tenths of a dot (first guessed with 20 ms, then
/// from the marks this finds), takes the magnitude as the envelope, estimates the noise floor
/// (20th percentile) and the keyed level (95th percentile) over 15 s around each 5 s block,
/// and keys with hysteresis at 50 % (down) and 35 % (up) between them, the crossings
/// interpolated between milliseconds. Thresholds below the middle read noisy audio best (noise
/// lifts the keyed level's estimate, and fades within a mark are bridged); the price is marks
/// about a seventh of a dot longer than keyed and gaps as much shorter, which the element timing
/// absorbs. Blocks whose keyed level is not 3.5 dB above the floor stay key up. Short glitches are
/// left for the element timing to absorb.
class CwKeyingDetector
{
public:
    /// `expectedSamples`, when known, spreads the tone search over at most 480 blocks (two
    /// minutes) evenly across the audio instead of transforming every block.
    explicit CwKeyingDetector(int sampleRate, qint64 expectedSamples = 0);

    void addToneSearch(float const* samples, qint64 count);
    /// The tone found by the search; 0 before any audio.
    double searchedTone() const;
    void setTone(double hz);

    void addSignal(float const* samples, qint64 count);
    CwKeying finish() const;

    static constexpr int stepMicroseconds = 1000;

private:
    void transformBlock();

    int m_sampleRate;
    int m_fftSize;
    qint64 m_searchStride = 1; ///< every how many blocks one is transformed
    qint64 m_blocks = 0;
    QVector<double> m_block;
    QVector<double> m_power;
    QVector<double> m_window; ///< Hann
    QVector<std::complex<double>> m_twiddles;
    double m_tone = 0;
    // mixing
    std::complex<double> m_oscillator{1, 0};
    std::complex<double> m_sum;
    qint64 m_sampleIndex = 0;
    qint64 m_stepEnd = 0;
    QVector<std::complex<float>> m_steps; ///< I/Q per millisecond, amplitude units
};

} // namespace zelkorecording
