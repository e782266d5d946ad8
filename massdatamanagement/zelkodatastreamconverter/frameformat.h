#pragma once

#include <QtGlobal>

/// The frame format of the receiver's recordings, shared by the frame reader, the models, the
/// tools that write and inspect recordings, and their tests.
///
/// A recording is a plain sequence of frames. A frame is a whole number of 32-bit words that
/// begins with a 24-byte header:
///
///   offset  0  magic word FRAME_MAGIC (0xFB746572); the way it reads tells the byte order
///   offset  4  frame length in words, header included (6 = header only, at most
///              MaxFrameLengthWords)
///   offset  8  not interpreted
///   offset 12  frame type (FrameType)
///   offset 16  not interpreted
///   offset 20  not interpreted
///   offset 24  payload, laid out by the model of the frame type
///
/// In a recording in the host's (little-endian) order the magic word's bytes are 72 65 74 FB,
/// in one of the other order FB 74 65 72 (SwappedFrameMagic read in host order).
///
/// Header only: the constants and names have no library code behind them, so writers of
/// recordings can use them without linking the converter library.
namespace zelkodatastreamconverter {

/// The magic word that starts every frame. The name is the one hosts know it by.
constexpr quint32 FRAME_MAGIC = 0xFB746572u;
/// FRAME_MAGIC as it reads in host order from a recording of the other byte order.
constexpr quint32 SwappedFrameMagic = 0x726574FBu;
/// Bytes of the frame header; the payload begins here.
constexpr int FrameHeaderSize = 24;
/// The longest frame a reader accepts, in 32-bit words (256 MiB).
constexpr quint32 MaxFrameLengthWords = 0x4000000u;

/// Byte offsets of the header words a reader or a model interprets.
constexpr int FrameMagicOffset = 0;
constexpr int FrameLengthOffset = 4;
constexpr int FrameTypeOffset = 12;

/// The kinds of frame content. An unscoped enum in a namespace of its own: a value reads as
/// FrameType::DecodedText and passes where a header word (quint32) is expected.
namespace FrameType {
enum Value : quint32
{
    DecodedText = 64,
    Symbols = 304,
    BurstList = 336,
    Image = 352,
    TransmissionSystem = 368, ///< transmission-system protocol units (PDUs)
};
} // namespace FrameType

/// A frame type with its name as tools show it.
struct FrameTypeName
{
    FrameType::Value type;
    char const* name;
};

/// Every known frame type, in ascending order.
constexpr FrameTypeName FrameTypeNames[] = {
    {FrameType::DecodedText, "decoded text"}, {FrameType::Symbols, "symbols"},
    {FrameType::BurstList, "burst list"},     {FrameType::Image, "image"},
    {FrameType::TransmissionSystem, "PDU"},
};

/// The name of a frame type ("decoded text", "PDU"); null for a type the library does not
/// know.
constexpr char const* frameTypeName(quint32 type)
{
    for (FrameTypeName const& entry : FrameTypeNames) {
        if (entry.type == type) {
            return entry.name;
        }
    }
    return nullptr;
}

} // namespace zelkodatastreamconverter
