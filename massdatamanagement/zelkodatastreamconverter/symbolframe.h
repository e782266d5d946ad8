#pragma once

#include <QtGlobal>

/// The payload of a symbol frame (FrameType::Symbols, 304): a run of demodulated symbols of
/// one channel as the receiver's demodulator delivers them, either raw symbols of a fixed width
/// (the bits of a modem before any character decoding) or the key-down and key-up elements of a
/// Morse (CW) signal.
///
/// All fields are 32-bit words in the recording's byte order (the frame reader hands them out
/// in host order):
///
///   word  0, 1  time of the first symbol or element, microseconds since 1970-01-01 UTC
///               (low word first)
///   word  2, 3  receive frequency in hertz (low word first)
///   word  4     channel, as in decoded-text frames
///   word  5     kind of content (SymbolKind)
///   word  6     raw symbols: symbol width in bits (1 to 32);
///               Morse: tone frequency of the keyed carrier in hertz, as heard (0: unknown)
///   word  7     raw symbols: symbol rate in thousandths of a baud (50 baud: 50000);
///               Morse: signal level in tenths of dB relative to full scale, signed
///               (-235: -23.5 dBFS)
///   word  8     count of symbols or elements that follow
///   word  9...  raw symbols: packed most significant bit first into 32-bit words, the first
///               symbol in the highest bits of word 9, padded with zero bits to a whole word;
///               Morse: one word per element, bit 31 set while the key is down (tone),
///               bits 0-30 the element's duration in microseconds
///
/// Symbols and elements follow one another without gaps: the time of one is the frame time
/// plus the durations (or symbol periods) before it. The frames of one channel continue one
/// another; a key-up element may be split over two frames (two key-up elements in a row add
/// up), and a key-up element longer than a word gap just means silence.
///
/// Because the packing is by value within a word, a recording of the other byte order swaps
/// the words and nothing else; what the reader hands out is the same.
///
/// Header only, like frameformat.h: writers of recordings need no library code.
namespace zelkodatastreamconverter {

namespace SymbolKind {
enum Value : quint32
{
    RawSymbols = 1,
    MorseElements = 2,
};
} // namespace SymbolKind

/// Word indexes of the symbol frame header within the payload.
namespace SymbolFrameWord {
enum Value : int
{
    TimeLow = 0,
    TimeHigh = 1,
    FrequencyLow = 2,
    FrequencyHigh = 3,
    Channel = 4,
    Kind = 5,
    WidthOrTone = 6,
    RateOrLevel = 7,
    Count = 8,
    Symbols = 9, ///< the first symbol or element word
};
} // namespace SymbolFrameWord

constexpr int SymbolFrameHeaderBytes = SymbolFrameWord::Symbols * 4;
constexpr quint32 MorseKeyDownFlag = 0x80000000u;
constexpr quint32 MorseDurationMask = 0x7FFFFFFFu;
/// The widest raw symbol.
constexpr quint32 MaxSymbolWidth = 32;

constexpr quint32 morseElementWord(bool keyDown, quint32 microseconds)
{
    return (keyDown ? MorseKeyDownFlag : 0u) | (microseconds & MorseDurationMask);
}

constexpr bool isKeyDown(quint32 elementWord)
{
    return (elementWord & MorseKeyDownFlag) != 0;
}

constexpr quint32 elementMicroseconds(quint32 elementWord)
{
    return elementWord & MorseDurationMask;
}

/// Payload words that `count` packed symbols of `width` bits take; 0 for a width out of range.
constexpr quint64 packedSymbolWords(quint64 count, quint32 width)
{
    return width == 0 || width > MaxSymbolWidth ? 0 : (count * width + 31) / 32;
}

} // namespace zelkodatastreamconverter
