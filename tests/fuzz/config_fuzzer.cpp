// Arbitrary bytes as the configuration file: the converters' one key is read from it, and
// every key the file holds.
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <appstartup/cfgcenter.h>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    static QTemporaryDir directory;
    static int run = 0;
    // A new name every run: the settings cache would otherwise serve the previous content.
    QString const path = directory.filePath(QStringLiteral("zelko-%1.ini").arg(run++));
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly)) {
            return 0;
        }
        file.write(reinterpret_cast<char const*>(data), qint64(size));
    }
    qputenv("ZELKO_CONFIG", QFile::encodeName(path));
    for (QString const& secondName : {QString(), QStringLiteral("second")}) {
        auto const cfg = CfgCenter::CreateCfg(QStringLiteral("JobManagement"), secondName, 4);
        if (cfg) {
            cfg->GetValue(QStringLiteral("MorseAlphabets"), QStringLiteral("."));
            for (QString const& key : cfg->Keys()) {
                cfg->GetInt(key, 0);
            }
        }
    }
    QFile::remove(path);
    return 0;
}
