#pragma once

#include <QString>
#include <QtGlobal>

/// One Morse element as a receiver keys it: the carrier on (key down, a dot or a dash) or off
/// (key up, a gap) for a time.
struct MorseElement
{
    bool keyDown = false;
    quint32 microseconds = 0;
};

/// A character read from Morse elements by SimpleMorseHandler::AddElements.
struct MorseCharacter
{
    /// The character as the alphabet prints it ("A", "<SK>" for a prosign, U+FFFD for an
    /// element group the alphabet lacks, " " for a word gap).
    QString text;
    /// Its elements as dots and dashes (".-"); empty for a word gap.
    QString elements;
    /// How surely the elements and gaps were told apart, 0 (a guess) to 100 (ideal timing).
    int confidence = 0;
    /// Start and end (of its last element) in microseconds from the start of the stream, that
    /// is, the sum of all element durations before them.
    qint64 startMicroseconds = 0;
    qint64 endMicroseconds = 0;
    /// The speed estimate, in words per minute (PARIS), when the character ended.
    double wordsPerMinute = 0;
};
