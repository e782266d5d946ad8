#pragma once

#include <QHash>
#include <alphabetkit/ialphabethandler.h>

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

private:
    void flush(QString& out);

    QString m_decoder;
    QString m_alphabet;
    QHash<QString, QString> m_toText;  // elements -> character
    QHash<QString, QString> m_toMorse; // character -> elements
    int m_longestText = 0;
    QString m_pending;
    QStringList m_errors;
};
