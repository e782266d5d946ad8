#pragma once

#include <QHash>
#include <QVector>
#include <alphabetkit/ialphabethandler.h>
#include <alphabetkit/morsecharacter.h>
#include <alphabetkit/morsetimingdecoder.h>

/// An alphabet handler for Morse element streams: "." is a dot, "-" a dash, a blank ends a
/// character and "/" ends a word (printed as one blank); any other code unit ends the
/// character and is passed through. A character whose elements are split over two
/// Translate calls is completed by the second call.
///
/// Alphabets: "None" (everything passed through) and "Morse", read from the file "morse.csv"
/// of the alphabets directory (lines "character;elements", "#" starts a comment line). Both
/// are offered by every decoder. Unknown element groups print U+FFFD.
class SimpleMorseHandler : public IAlphabetHandler
{
public:
    static QString const& morseName(); ///< "Morse"
    static QString const& tableFile(); ///< "morse.csv"

    SimpleMorseHandler();
    ~SimpleMorseHandler() override;

    void SetAlphabetsDir(QString const& directory) override;
    bool SetAlphabet(QString const& alphabet) override;
    void SetDecoder(QString const& decoder) override;
    QString Alphabet() const override;
    QStringList AvailableAlphabets() const override;
    bool TextDirectionRTL() const override;
    void ResetInternalState() override;
    QString Translate(QString const& raw) override;
    QString Backtranslate(QString const& text) override;

    QStringList LoadErrors() const { return m_errors; }

    /// Element timing: reads key-down and key-up durations of one stream (one handler per
    /// stream) with an adaptive speed estimate (5 to 60 words per minute, Farnsworth spacing,
    /// speed changes within a message) and returns the characters that these elements
    /// complete, with a word gap as a " " character. Consecutive elements of the same state
    /// add up. The characters are printed through the current alphabet ("Morse"; with "None"
    /// the dots and dashes themselves).
    QVector<MorseCharacter> AddElements(QVector<MorseElement> const& elements);
    /// Ends the stream: returns the character still pending, if any, and resets the timing.
    QVector<MorseCharacter> FlushElements();

private:
    void flush(QString& out);
    QVector<MorseCharacter> printed(QVector<MorseCharacter> characters) const;

    QString m_decoder;
    QString m_alphabet;
    QHash<QString, QString> m_toText;  // elements -> character
    QHash<QString, QString> m_toMorse; // character -> elements
    int m_longestText = 0;
    QString m_pending;
    QStringList m_errors;
    MorseTimingDecoder m_timing;
};
