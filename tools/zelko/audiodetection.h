#pragma once

#include <QString>

namespace zelkotool {

/// Whether `zelko convert` treats a file as an audio recording rather than a framed one: by
/// its extension (wav, flac, aiff, ogg, raw, pcm, ...) or by the signature of an audio format
/// in its first bytes (RIFF, RF64, fLaC, FORM, OggS, ...), which no frame starts with.
/// Headerless PCM under another name needs --kind audio.
bool looksLikeAudio(QString const& path);

} // namespace zelkotool
