#pragma once

#include <QByteArray>
#include <massdatamanagement/zelkodatastreamconverter/imageframe.h>

namespace zelkorecording {

/// One line of an image frame as a receiver delivers it (layout: imageframe.h).
struct ImageLine
{
    quint64 microseconds = 0;
    quint64 frequencyHz = 0;
    quint32 imageId = 0;
    quint32 lineIndex = 0;
    quint32 width = 0;
    quint32 bitsPerPixel = 8;
    bool colour = false;
    quint32 kind = zelkodatastreamconverter::ImageKind::Unknown;
    quint32 milliLinesPerSecond = 2000;
    /// The packed pixels; their count of bytes is written as the pixel byte count.
    QByteArray pixels;
};

/// The payload of one image frame in host order (RecordingWriter swaps whole words for the
/// other byte order). claimedPixelBytes, when not negative, is written instead of the true
/// count, as in a damaged recording.
QByteArray imageLinePayload(ImageLine const& line, qint64 claimedPixelBytes = -1);

/// 8-bit grey levels packed one bit a pixel (level 128 and above is white), as Hellschreiber
/// and other two-level pictures are sent.
QByteArray packOneBitPixels(QByteArray const& levels);

} // namespace zelkorecording
