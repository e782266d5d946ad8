#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// Translates the character codes that a receiver's decoder delivers into readable text
/// through a selectable alphabet.
///
/// A handler reads its alphabets from a directory (SetAlphabetsDir) and offers, for the
/// current decoder (SetDecoder), the alphabets that decoder can produce (AvailableAlphabets);
/// the decoder name "All" lists every alphabet. "None" is the alphabet that passes every code
/// unit through as it is. Translate is stateful: a shift code or a code that spans two calls
/// affects what the next call prints, until ResetInternalState.
///
/// One handler serves one thread. Implementations: CodecHandler (table-driven teleprinter and
/// character codes), SimpleMorseHandler (dots and dashes).
class IAlphabetHandler
{
public:
    virtual ~IAlphabetHandler() = default;

    /// Reads the alphabets of the directory, replacing those read before. The current alphabet
    /// stays selected when the directory has one of that name; otherwise "None" is selected.
    virtual void SetAlphabetsDir(QString const& directory) = 0;
    /// Selects an alphabet that the current decoder offers (exact name) and resets the
    /// translation state. Returns false and changes nothing when it is not offered.
    virtual bool SetAlphabet(QString const& alphabet) = 0;
    /// Sets the decoder whose alphabets are offered; the current alphabet is kept.
    virtual void SetDecoder(QString const& decoder) = 0;
    /// The current alphabet's name, written with translated text as its content code.
    virtual QString Alphabet() const = 0;
    virtual QStringList AvailableAlphabets() const = 0;
    /// True when the current alphabet's text is written right to left.
    virtual bool TextDirectionRTL() const = 0;
    virtual void ResetInternalState() = 0;
    /// Translates raw character codes, one per UTF-16 code unit.
    virtual QString Translate(QString const& raw) = 0;
    /// The same for size codes at raw, appended to text: a caller that translates many short
    /// pieces keeps one buffer instead of making two strings a piece.
    virtual void Translate(QChar const* raw, int size, QString& text)
    {
        text += Translate(QString(raw, size));
    }
    /// The raw codes that print `text` with the current alphabet; does not change the state.
    virtual QString Backtranslate(QString const& text) = 0;

    /// The translation state (shift table, a code begun but not finished) as an opaque value,
    /// so that a caller that interleaves several independent streams, such as the channels
    /// of one recording, can keep one state per stream. Empty when the handler keeps none.
    virtual QByteArray SaveInternalState() const { return QByteArray(); }
    /// Returns to a state that SaveInternalState() gave for the current alphabet; an empty or
    /// unknown value resets the state.
    virtual void RestoreInternalState(QByteArray const& state) { ResetInternalState(); }
};
