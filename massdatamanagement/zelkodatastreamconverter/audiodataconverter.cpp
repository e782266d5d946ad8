#include "audiodataconverter.h"

#include "iaudiotransformer.h"
#include "moduletrace.h"
#include "nerikresultmodel.h"

#include <QDir>
#include <QFileInfo>
#include <appstartup/cfgcenter.h>
#include <appstartup/threadinghelper.h>
#include <cstdio>
#include <reportkit/binary.h>

namespace zelkodatastreamconverter {

namespace {

ModuleTrace const trace(QStringLiteral("audiodataconverter"));

QString const standardLibraryName = QStringLiteral("AudioFileExport.DLL");

// Whole seconds as a time of the epoch plus the millisecond part; the microseconds below a
// millisecond are dropped.
QDateTime startTimeOf(unsigned long long microseconds)
{
    QDateTime time = QDateTime::fromSecsSinceEpoch(qint64(microseconds / 1000000ULL), Qt::UTC);
    return time.addMSecs(qint64((microseconds / 1000ULL) % 1000ULL)).toUTC();
}

REPORTKIT::Binary recordOf(QString const& type, QString const& url, QDateTime const& time)
{
    REPORTKIT::Binary record;
    record.SetValidate(false);
    record.SetType(type);
    record.SetURL(url);
    record.GetMetadata().SetStartTime(time);
    record.GetMetadata().SetStopTime(time);
    return record;
}

IAudioTransformer* loadTransformer(QString const& libraryFileName)
{
    IDllInstance* instance = nullptr;
    try {
        instance = CfgCenter::CreateDllInstanceByFileName(libraryFileName, QString(), false, false);
    } catch (...) {
        return nullptr;
    }
    auto* const transformer = dynamic_cast<IAudioTransformer*>(instance);
    if (instance && !transformer) {
        CfgCenter::DestroyDllInstanceByPointer(instance); // some other library's object
    }
    return transformer;
}

} // namespace

AudioDataConverter::AudioDataConverter() : AudioDataConverter(standardLibraryName) {}

AudioDataConverter::AudioDataConverter(QString const& libraryFileName)
    : m_transformer(loadTransformer(libraryFileName))
{
    if (!m_transformer) {
        QString const message =
            QStringLiteral("AudioDataConverter: Cannot load %1").arg(standardLibraryName);
        trace.warning(message, __LINE__);
        std::fprintf(stdout, "%s\n", message.toLocal8Bit().constData());
        std::fflush(stdout);
    }
}

AudioDataConverter::~AudioDataConverter()
{
    if (!m_transformer) {
        return;
    }
    // The library instance belongs to the main thread, whatever thread converted with it.
    IDllInstance* const instance = m_transformer;
    try {
        ThreadingHelper::RunInMainThread(
            [instance] { CfgCenter::DestroyDllInstanceByPointer(instance); });
    } catch (...) {
        trace.warning(QStringLiteral("~AudioDataConverter: Unknown exception"), __LINE__);
    }
}

QString AudioDataConverter::getOutputFilePath(QString const& inputPath,
                                              QString const& outputDirectory)
{
    QString name = QFileInfo(inputPath).fileName();
    int const lastDot = name.lastIndexOf(QLatin1Char('.'));
    if (lastDot >= 0) {
        name.truncate(lastDot);
    }
    return QDir(outputDirectory).absoluteFilePath(name + QStringLiteral(".wav"));
}

REPORTKIT::Results AudioDataConverter::convertFile(QString const& inputPath,
                                                   QString const& outputDirectory,
                                                   JobSpec::Settings const& settings,
                                                   unsigned long long startTimeMicroseconds)
{
    REPORTKIT::Results results;
    results.SetValidate(false);
    if (!m_transformer) {
        return results;
    }
    NerikResultModel model; // only to read the receive frequency the way every model does
    model.setParameter(settings);

    QString const wavPath = getOutputFilePath(inputPath, outputDirectory);
    QDateTime const startTime = startTimeOf(startTimeMicroseconds);

    qint64 const inputBytes = QFileInfo(inputPath).size();
    if (progress()) {
        m_transformer->SetProgress([this, inputBytes](qint64 framesDone, qint64 framesTotal) {
            if (framesTotal > 0) {
                progress()(qint64(double(inputBytes) * double(framesDone) / double(framesTotal)),
                           inputBytes);
            }
        });
    }
    bool const converted = m_transformer->ConvertToWav(inputPath, wavPath, startTime);
    m_transformer->SetProgress(IAudioTransformer::Progress());
    if (!converted) {
        return results;
    }

    REPORTKIT::Binary audio =
        recordOf(QStringLiteral("AudioData"), QFileInfo(wavPath).absoluteFilePath(), startTime);
    audio.GetMetadata().GetDetail().GetFrequency().SetValue(model.getFrequency());
    audio.GetMetadata().GetDetail().SetCode(QStringLiteral("WAV"));
    results.AppendBinary(audio);

    QString sessionPath;
    if (m_transformer->WriteSession(QStringList{wavPath}, sessionPath)) {
        results.AppendBinary(recordOf(QStringLiteral("AudioSession"), sessionPath, startTime));
    }
    return results;
}

} // namespace zelkodatastreamconverter
