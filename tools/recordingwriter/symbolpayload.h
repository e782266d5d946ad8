#pragma once

#include <QByteArray>
#include <QVector>
#include <massdatamanagement/zelkodatastreamconverter/symbolframe.h>

namespace zelkorecording {

/// The header fields of a symbol frame (layout: symbolframe.h).
struct SymbolRun
{
    quint64 microseconds = 0;
    quint64 frequencyHz = 0;
    quint32 channel = 0;
};

/// The payload of a frame of raw symbols of `width` bits (1 to 32) at `milliBaud`, in host
/// order (RecordingWriter swaps whole words for the other byte order). claimedCount, when not
/// negative, is written instead of the true count, as in a damaged recording.
QByteArray rawSymbolPayload(SymbolRun const& run, quint32 width, quint32 milliBaud,
                            QVector<quint32> const& symbols, qint64 claimedCount = -1);

/// One Morse element: the key down (tone) or up (silence) for a time.
struct KeyElement
{
    bool keyDown = false;
    quint32 microseconds = 0;
};

/// The payload of a frame of Morse elements heard at `toneHz` and `levelTenthsDb` (tenths of
/// dB relative to full scale).
QByteArray morseElementPayload(SymbolRun const& run, quint32 toneHz, qint32 levelTenthsDb,
                               QVector<KeyElement> const& elements, qint64 claimedCount = -1);

} // namespace zelkorecording
