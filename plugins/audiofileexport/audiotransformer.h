#pragma once

#include <massdatamanagement/zelkodatastreamconverter/iaudiotransformer.h>

namespace audiofileexport {

/// The audio export library's transformer: reads any recording libsndfile reads (WAV, FLAC,
/// AIFF, Ogg/Vorbis, ...) or headerless 16-bit PCM (see RawPcmParameters) and writes it as a
/// Broadcast Wave file, chunk by chunk, so memory does not grow with the recording.
///
/// Input: a recording with a ".params" sidecar is read as raw PCM with the sidecar's
/// parameters; otherwise libsndfile is asked, and what it does not recognise is read as raw
/// PCM with the defaults. Output: WAV with the input's sample format where WAV has it
/// (8/16/24/32-bit PCM, float, double, A-law, mu-law), else 16-bit PCM. The WAV is written
/// under a temporary name ("<wav>.part") and renamed when complete.
///
/// Messages (diagnostics, warning bit, source "plugins/audiofileexport/audiotransformer"):
///   "ConvertToWav(%1): cannot read it: %2"
///   "ConvertToWav(%1): invalid sidecar %2: %3"
///   "ConvertToWav(%1): cannot write %2: %3"
///   "WriteSession(%1): cannot read it: %2"
///   "WriteSession: cannot write %1: %2"
class AudioTransformer : public zelkodatastreamconverter::IAudioTransformer
{
public:
    QString GetInstanceName() const override { return QStringLiteral("AudioTransformer"); }
    bool ConvertToWav(QString const& inputPath, QString const& wavPath,
                      QDateTime const& startTime) override;
    bool WriteSession(QStringList const& wavPaths, QString& sessionPath) override;
    void SetProgress(Progress progress) override { m_progress = std::move(progress); }

private:
    Progress m_progress;
};

} // namespace audiofileexport
