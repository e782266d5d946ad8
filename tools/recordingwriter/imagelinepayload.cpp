#include "imagelinepayload.h"

#include "payloadbuilder.h"

namespace zelkorecording {

using namespace zelkodatastreamconverter;

QByteArray imageLinePayload(ImageLine const& line, qint64 claimedPixelBytes)
{
    PayloadBuilder payload;
    payload.uint64(line.microseconds)
        .uint64(line.frequencyHz)
        .word(line.imageId)
        .word(line.lineIndex)
        .word(line.width)
        .word(imageFormatWord(line.bitsPerPixel, line.colour, line.kind))
        .word(line.milliLinesPerSecond)
        .word(claimedPixelBytes < 0 ? quint32(line.pixels.size()) : quint32(claimedPixelBytes))
        .bytes(line.pixels);
    return payload.data();
}

QByteArray packOneBitPixels(QByteArray const& levels)
{
    QByteArray packed(int(imageLineBytes(quint32(levels.size()), 1)), '\0');
    for (int i = 0; i < levels.size(); ++i) {
        if (quint8(levels[i]) >= 128) {
            packed[i / 8] = char(quint8(packed[i / 8]) | (0x80u >> (i % 8)));
        }
    }
    return packed;
}

} // namespace zelkorecording
