#pragma once

#include <QByteArray>
#include <QString>

namespace audiofileexport {

/// How to read a headerless recording of 16-bit PCM samples (interleaved channels).
///
/// The parameters come from a sidecar file beside the recording, named like it with
/// ".params" appended ("rec.raw" -> "rec.raw.params"), a text of "key=value" lines:
///
///     # receiver audio, 2 channels
///     samplerate=16000
///     channels=2
///     byteorder=big
///
/// Keys: samplerate (1 to 384000 Hz), channels (1 to 64), byteorder (little or big). Blank
/// lines and lines starting with '#' are ignored; a key left out keeps its default (48000 Hz,
/// one channel, little-endian). An unknown key, a value out of range, a line without '=' or a
/// sidecar over 64 KiB makes the whole sidecar invalid.
struct RawPcmParameters
{
    static constexpr int MaximumSampleRate = 384000;
    static constexpr int MaximumChannels = 64;
    static constexpr int MaximumSidecarBytes = 64 * 1024;

    int sampleRate = 48000;
    int channels = 1;
    bool bigEndian = false;

    /// The sidecar file name of a recording.
    static QString sidecarPath(QString const& recordingPath);

    /// Reads a sidecar text over the defaults. False, with error set (naming the line), when
    /// the text is invalid; the parameters are then unspecified.
    bool parse(QByteArray const& text, QString& error);
};

} // namespace audiofileexport
