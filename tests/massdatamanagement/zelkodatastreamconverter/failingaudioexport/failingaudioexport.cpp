// An audio export library for the converter's failure rules: the conversion fails for an
// input whose path contains "fail-convert", the session for a WAV whose path contains
// "fail-session"; otherwise both succeed, writing empty files. The conversion reports the
// progress of an input of unknown length, then of one frame out of one.

#include <QFile>
#include <massdatamanagement/zelkodatastreamconverter/iaudiotransformer.h>

namespace {

class FailingTransformer : public zelkodatastreamconverter::IAudioTransformer
{
public:
    QString GetInstanceName() const override { return QStringLiteral("FailingTransformer"); }
    bool ConvertToWav(QString const& inputPath, QString const& wavPath, QDateTime const&) override
    {
        if (m_progress) {
            m_progress(0, 0);
            m_progress(1, 1);
        }
        return !inputPath.contains(QLatin1String("fail-convert")) &&
               QFile(wavPath).open(QIODevice::WriteOnly);
    }
    bool WriteSession(QStringList const& wavPaths, QString& sessionPath) override
    {
        if (wavPaths.join(QLatin1Char(';')).contains(QLatin1String("fail-session"))) {
            return false;
        }
        sessionPath = wavPaths.first() + QStringLiteral(".session");
        return QFile(sessionPath).open(QIODevice::WriteOnly);
    }
    void SetProgress(Progress progress) override { m_progress = std::move(progress); }

private:
    Progress m_progress;
};

} // namespace

extern "C" ZELKO_PLUGIN_EXPORT IDllInstance* zelkoCreateDllInstance(char const*)
{
    return new FailingTransformer;
}
