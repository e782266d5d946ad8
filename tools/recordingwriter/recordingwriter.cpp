#include "recordingwriter.h"

#include <QtEndian>
#include <cstring>
#include <random>

namespace zelkorecording {

using zelkodatastreamconverter::FRAME_MAGIC;
using zelkodatastreamconverter::FrameHeaderSize;

RecordingWriter::RecordingWriter(QIODevice* device) : m_device(device) {}

void RecordingWriter::swapWords(QByteArray& data)
{
    char* bytes = data.data();
    for (int i = 0; i + 4 <= data.size(); i += 4) {
        quint32 word;
        std::memcpy(&word, bytes + i, 4);
        word = qbswap(word);
        std::memcpy(bytes + i, &word, 4);
    }
}

QByteArray RecordingWriter::headerBytes(quint32 magic, quint32 lengthWords, quint32 frameType,
                                        ByteOrder order, HeaderExtras extras)
{
    quint32 const words[6] = {magic,     lengthWords,  extras.word2,
                              frameType, extras.word4, extras.word5};
    QByteArray header(reinterpret_cast<char const*>(words), FrameHeaderSize);
    if (order == ByteOrder::Swapped) {
        swapWords(header);
    }
    return header;
}

QByteArray RecordingWriter::frameBytes(quint32 frameType, QByteArray const& payload,
                                       ByteOrder order, HeaderExtras extras)
{
    QByteArray body = payload;
    while (body.size() % 4 != 0) {
        body.append('\0');
    }
    quint32 const lengthWords = quint32((FrameHeaderSize + body.size()) / 4);
    if (order == ByteOrder::Swapped) {
        swapWords(body);
    }
    return headerBytes(FRAME_MAGIC, lengthWords, frameType, order, extras) + body;
}

bool RecordingWriter::writeBytes(QByteArray const& bytes)
{
    qint64 const count = m_device->write(bytes);
    if (count > 0) {
        m_written += count;
    }
    return count == bytes.size();
}

bool RecordingWriter::writeFrame(quint32 frameType, QByteArray const& payload, ByteOrder order,
                                 HeaderExtras extras)
{
    return writeBytes(frameBytes(frameType, payload, order, extras));
}

bool RecordingWriter::writeTruncatedFrame(quint32 frameType, QByteArray const& payload,
                                          int keepBytes, ByteOrder order)
{
    return writeBytes(frameBytes(frameType, payload, order).left(keepBytes));
}

bool RecordingWriter::writeHeader(quint32 magic, quint32 lengthWords, quint32 frameType,
                                  ByteOrder order)
{
    return writeBytes(headerBytes(magic, lengthWords, frameType, order));
}

QByteArray RecordingWriter::garbage(int count, quint32 seed, bool allowMagicBytes)
{
    std::mt19937 engine(seed);
    std::uniform_int_distribution<int> byteValue(0, 255);
    QByteArray bytes;
    bytes.reserve(count);
    while (bytes.size() < count) {
        int const value = byteValue(engine);
        if (!allowMagicBytes && (value == 0x72 || value == 0xFB)) {
            continue;
        }
        bytes.append(char(value));
    }
    return bytes;
}

bool RecordingWriter::writeGarbage(int count, quint32 seed, bool allowMagicBytes)
{
    return writeBytes(garbage(count, seed, allowMagicBytes));
}

bool RecordingWriter::writeZeroPadding(int count)
{
    return writeBytes(QByteArray(count, '\0'));
}

} // namespace zelkorecording
