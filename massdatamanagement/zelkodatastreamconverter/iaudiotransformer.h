#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <appstartup/dllinstance.h>
#include <functional>

namespace zelkodatastreamconverter {

/// The object that the audio export library ("AudioFileExport.DLL", on this platform
/// libAudioFileExport.so) hands out through CfgCenter::CreateDllInstanceByFileName().
/// AudioDataConverter down-casts the loaded object to this interface; a plugin that offers
/// another object is treated as not loaded.
///
/// Header only: a plugin implements it without linking the converter library.
class IAudioTransformer : public IDllInstance
{
public:
    /// Told now and then during ConvertToWav(): frames written so far and the total (0 when
    /// the input does not tell its length).
    using Progress = std::function<void(qint64 framesDone, qint64 framesTotal)>;

    /// Writes the recording at inputPath as a Broadcast Wave file at wavPath whose "bext"
    /// chunk carries startTime (UTC). False, with no file left at wavPath, when the input
    /// cannot be read or the WAV cannot be written.
    virtual bool ConvertToWav(QString const& inputPath, QString const& wavPath,
                              QDateTime const& startTime) = 0;

    /// Writes a session file that lists the given WAV files and sets sessionPath to its
    /// absolute path. False when a WAV cannot be read or the session file cannot be written.
    virtual bool WriteSession(QStringList const& wavPaths, QString& sessionPath) = 0;

    /// Installs (or with an empty function removes) the progress callback of ConvertToWav().
    virtual void SetProgress(Progress progress) = 0;
};

} // namespace zelkodatastreamconverter
