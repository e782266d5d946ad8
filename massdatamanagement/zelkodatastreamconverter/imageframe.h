#pragma once

#include <QtGlobal>

/// The payload of an image frame (FrameType::Image, 352): one picture line as the receiver's
/// demodulator delivers it, for weather fax, satellite APT, SSTV and Hellschreiber alike.
///
/// All fields are 32-bit words in the recording's byte order (the frame reader hands them out
/// in host order), the pixels packed into the words that follow the header:
///
///   word  0, 1  time of the line, microseconds since 1970-01-01 UTC (low word first)
///   word  2, 3  receive frequency in hertz (low word first)
///   word  4     image ID: lines with one ID belong to one picture
///   word  5     line index within the picture, from 0
///   word  6     width in pixels
///   word  7     format: bits 0-7 bits per pixel (1, 8, 16 or 24), bit 8 set for colour,
///               bits 16-23 the kind of picture (ImageKind)
///   word  8     line rate in thousandths of a line per second (120 lines a minute: 2000)
///   word  9     pixel bytes that follow (at most the rest of the frame)
///   word 10...  the pixels, padded with zeros to a whole word
///
/// Pixel layouts, as the bytes stand in host order: 1 bit per pixel, first pixel in the most
/// significant bit of the first byte, a set bit is white; 8 bits, one grey level a byte;
/// 16 bits, one grey level a 16-bit unit (host order), or RGB 5-6-5 when colour; 24 bits,
/// red, green, blue bytes (colour) or a grey level of three bytes, most significant first.
///
/// Because recordings in the other byte order are swapped word by word, a writer of such a
/// recording swaps the pixel words too; what the reader hands out is then the same.
///
/// Header only, like frameformat.h: writers of recordings need no library code.
namespace zelkodatastreamconverter {

namespace ImageKind {
enum Value : quint32
{
    Unknown = 0,
    WeatherFax = 1,
    SatelliteApt = 2,
    Sstv = 3,
    Hellschreiber = 4,
};
} // namespace ImageKind

/// Word indexes of the line header within the payload.
namespace ImageLineWord {
enum Value : int
{
    TimeLow = 0,
    TimeHigh = 1,
    FrequencyLow = 2,
    FrequencyHigh = 3,
    ImageId = 4,
    LineIndex = 5,
    Width = 6,
    Format = 7,
    LineRate = 8,
    PixelBytes = 9,
    Pixels = 10, ///< the first pixel word
};
} // namespace ImageLineWord

constexpr int ImageLineHeaderBytes = ImageLineWord::Pixels * 4;
constexpr quint32 ImageColourFlag = 0x100u;
/// The widest line a model takes; wider lines are refused as damaged. A fax line has 1810
/// pixels, an APT line 2080; the bound keeps a picture in memory below 8192 x 4096 pixels.
constexpr quint32 MaxImageWidth = 8192;

constexpr quint32 imageFormatWord(quint32 bitsPerPixel, bool colour, quint32 kind)
{
    return (bitsPerPixel & 0xFFu) | (colour ? ImageColourFlag : 0u) | ((kind & 0xFFu) << 16);
}

/// The parts of a format word.
constexpr quint32 bitsPerPixel(quint32 format)
{
    return format & 0xFFu;
}

constexpr bool isColour(quint32 format)
{
    return (format & ImageColourFlag) != 0;
}

constexpr quint32 kindOf(quint32 format)
{
    return (format >> 16) & 0xFFu;
}

/// Bytes of a line of `width` pixels at `bitsPerPixel`; 0 for an unknown depth.
constexpr quint32 imageLineBytes(quint32 width, quint32 bitsPerPixel)
{
    switch (bitsPerPixel) {
    case 1:
        return (width + 7) / 8;
    case 8:
        return width;
    case 16:
        return width * 2;
    case 24:
        return width * 3;
    default:
        return 0;
    }
}

} // namespace zelkodatastreamconverter
