#pragma once

#include <QVector>
#include <alphabetkit/morsecharacter.h>
#include <optional>

/// Turns the key-down and key-up durations of one Morse stream into element groups (".-"),
/// word gaps and a confidence for each, without an alphabet: SimpleMorseHandler prints them.
///
/// Timing model (PARIS: a dot lasts 1.2 s / words per minute): a dash is three dots, the gap
/// inside a character one dot, between characters three and between words seven. The decoder
/// adapts to any speed from 5 to 60 words per minute and to speed changes within a message:
/// dots and dashes are told apart by a two-class split of the last marks (so a sudden change
/// of speed is followed within a character or two), gaps inside a character by a running
/// estimate of the element gap. Character and word gaps are told apart relative to the
/// character gaps actually sent (a low percentile of the recent long gaps, one gap ahead
/// included), so Farnsworth spacing (characters at one speed, longer gaps) reads like normal
/// spacing. Marks or gaps shorter than a third of a dot are taken as noise and added to the
/// element they interrupt; consecutive elements of the same state add up.
///
/// Output lags the input by one character: a character is returned once the gap after the
/// next one has ended, because telling a word gap from a character gap looks one gap ahead.
/// finish() returns the rest.
///
/// Confidence (0 to 100): each decision inside a character (each mark dot or dash, each gap
/// element gap or not, and the gap after it character or word gap) scores 1 at its ideal
/// length and 0 at the decision threshold, on a logarithmic scale; the character gets
/// 50 * (worst + mean). Gaps longer than ideal between characters or words do not lower it.
class MorseTimingDecoder
{
public:
    MorseTimingDecoder();

    /// Reads more elements of the stream; returns the characters (text empty, elements set)
    /// and word gaps (text " ") they complete.
    QVector<MorseCharacter> add(QVector<MorseElement> const& elements);
    /// Ends the stream: returns what is still held and starts over.
    QVector<MorseCharacter> finish();
    void reset();

private:
    struct Run
    {
        bool keyDown = false;
        qint64 microseconds = 0;
        qint64 start = 0; ///< from the start of the stream
    };
    struct PendingCharacter
    {
        MorseCharacter character;
        QVector<double> scores;
        qint64 gapStart = 0; ///< where the gap after it starts
        qint64 gap = 0;      ///< its length; 0 while the stream has not gone on
    };

    void append(MorseElement const& element);
    void finishRun();
    void process(Run const& run);
    void initialise();
    void processMark(Run const& mark);
    void processGap(Run const& gap);
    void closeCharacter(Run const& gap);
    void resolveHeld(bool lastGap);
    double dotDashThreshold() const;
    double spikeLimit() const;

    QVector<MorseCharacter> m_out;
    Run m_run;             ///< the run being summed up
    QVector<Run> m_warmUp; ///< runs read before the speed is known
    bool m_ready = false;
    double m_dot = 0;            ///< estimated dot length (marks), microseconds
    double m_elementGap = 0;     ///< estimated gap inside a character
    double m_gapInCharacter = 0; ///< the last gap inside the current character; 0: none yet
    QVector<double> m_recentMarks;
    QVector<qint64> m_recentLongGaps;
    PendingCharacter m_current; ///< the character being keyed
    std::optional<PendingCharacter> m_held;
};
