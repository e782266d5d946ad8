#pragma once

#include <QByteArray>
#include <QIODevice>
#include <cstdint>
#include <massdatamanagement/zelkodatastreamconverter/frameformat.h>

namespace zelkorecording {

enum class ByteOrder
{
    Host,   ///< as the receiver writes on this machine (little-endian: 72 65 74 FB)
    Swapped ///< every 32-bit word byte-reversed (FB 74 65 72)
};

/// The three header words the reader does not interpret.
struct HeaderExtras
{
    quint32 word2 = 0;
    quint32 word4 = 0;
    quint32 word5 = 0;
};

/// Writes recordings: frames of any type in either byte order, and on request the damage
/// that real recordings show (garbage, zero padding, bad headers, truncated frames).
///
/// Payloads are given in host order (see PayloadBuilder) and padded to whole words; in
/// swapped order every word, header and payload, is byte-reversed. The frame format itself
/// (magic word, header size, frame types) is the library's frameformat.h.
class RecordingWriter
{
public:
    /// Writes to device, which must be open for writing; not owned.
    explicit RecordingWriter(QIODevice* device);

    /// The complete bytes of one frame.
    static QByteArray frameBytes(quint32 frameType, QByteArray const& payload,
                                 ByteOrder order = ByteOrder::Host, HeaderExtras extras = {});
    /// A bare header with any magic and length, for damaged recordings.
    static QByteArray headerBytes(quint32 magic, quint32 lengthWords, quint32 frameType,
                                  ByteOrder order = ByteOrder::Host, HeaderExtras extras = {});

    bool writeFrame(quint32 frameType, QByteArray const& payload, ByteOrder order = ByteOrder::Host,
                    HeaderExtras extras = {});
    /// Only the first keepBytes bytes of the frame, as at the end of a cut recording.
    bool writeTruncatedFrame(quint32 frameType, QByteArray const& payload, int keepBytes,
                             ByteOrder order = ByteOrder::Host);
    bool writeHeader(quint32 magic, quint32 lengthWords, quint32 frameType,
                     ByteOrder order = ByteOrder::Host);
    /// count pseudo-random bytes from seed. Without allowMagicBytes the bytes 0x72 and 0xFB
    /// are left out, so that the garbage holds no resynchronisation candidate.
    bool writeGarbage(int count, quint32 seed, bool allowMagicBytes = false);
    bool writeZeroPadding(int count);
    bool writeBytes(QByteArray const& bytes);

    qint64 bytesWritten() const { return m_written; }

    static void swapWords(QByteArray& data);
    static QByteArray garbage(int count, quint32 seed, bool allowMagicBytes);

private:
    QIODevice* m_device;
    qint64 m_written = 0;
};

} // namespace zelkorecording
