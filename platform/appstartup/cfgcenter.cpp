#include "cfgcenter.h"

#include <QDir>
#include <QFileInfo>
#include <QLibrary>
#include <QMutexLocker>
#include <QRecursiveMutex>
#include <QSettings>
#include <QStandardPaths>
#include <diagnostics/errorhandler.h>
#include <dlfcn.h>
#include <map>

namespace {

QString const traceSource = QStringLiteral("platform/appstartup/cfgcenter");

void warn(QString const& message, unsigned short line)
{
    if (ErrorHandler::Instance().traceLevelMask() & ErrorHandler::WarningBit) {
        _Q_Trace(message, traceSource, line);
    }
}

struct Loaded
{
    std::unique_ptr<QLibrary> library;
    QString key; // absolute path + second name, for shared objects; empty otherwise
    int references = 1;
};

// One lock serialises every load, object creation, deletion and unload: the system loader's
// reference counts and the registry must change together. Recursive, because a factory may
// itself load a library.
struct Registry
{
    QRecursiveMutex mutex;
    std::map<IDllInstance*, Loaded> instances;
};

Registry& registry()
{
    static Registry instance;
    return instance;
}

QString ownDirectory()
{
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&ownDirectory), &info) && info.dli_fname) {
        return QFileInfo(QString::fromLocal8Bit(info.dli_fname)).absolutePath();
    }
    return QString();
}

} // namespace

Cfg::Cfg(QString const& filePath, QString const& group, QString const& secondName, int view)
    : m_group(group), m_secondName(secondName), m_view(view),
      m_settings(std::make_unique<QSettings>(filePath, QSettings::IniFormat))
{
    m_settings->beginGroup(secondName.isEmpty() ? group : group + QLatin1Char('/') + secondName);
}

Cfg::~Cfg() = default;

QString Cfg::GetValue(QString const& key, QString const& defaultValue) const
{
    return m_settings->value(key, defaultValue).toString();
}

QVariant Cfg::GetVariant(QString const& key, QVariant const& defaultValue) const
{
    return m_settings->value(key, defaultValue);
}

int Cfg::GetInt(QString const& key, int defaultValue) const
{
    bool ok = false;
    int const value = m_settings->value(key).toString().trimmed().toInt(&ok);
    return ok ? value : defaultValue;
}

bool Cfg::Contains(QString const& key) const
{
    return m_settings->contains(key);
}

QStringList Cfg::Keys() const
{
    return m_settings->allKeys();
}

bool Cfg::SetValue(QString const& key, QVariant const& value)
{
    if (m_view == ReadOnly) {
        return false;
    }
    m_settings->setValue(key, value);
    return true;
}

bool Cfg::Sync()
{
    m_settings->sync();
    return m_settings->status() == QSettings::NoError;
}

QString Cfg::FilePath() const
{
    return m_settings->fileName();
}

QString CfgCenter::ConfigFilePath()
{
    QString const configured = qEnvironmentVariable("ZELKO_CONFIG");
    if (!configured.isEmpty()) {
        return configured;
    }
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/zelko/zelko.ini");
}

std::unique_ptr<Cfg> CfgCenter::CreateCfg(QString const& group, QString const& secondName, int view)
{
    return std::unique_ptr<Cfg>(new Cfg(ConfigFilePath(), group, secondName, view));
}

QString CfgCenter::PlatformLibraryName(QString const& fileName)
{
    QFileInfo const info(fileName);
    QString name = info.fileName();
    if (name.endsWith(QLatin1String(".dll"), Qt::CaseInsensitive)) {
        name = QStringLiteral("lib%1.so").arg(name.left(name.size() - 4));
    } else if (!name.endsWith(QLatin1String(".so")) && !name.contains(QLatin1String(".so."))) {
        name = QStringLiteral("lib%1.so").arg(name);
    }
    QString const directory = fileName.contains(QLatin1Char('/')) ? info.path() : QString();
    return directory.isEmpty() ? name : directory + QLatin1Char('/') + name;
}

QStringList CfgCenter::PluginDirectories()
{
    QStringList directories;
    QString const own = ownDirectory();
    if (!own.isEmpty()) {
        directories.append(own);
    }
    for (QString const& entry :
         qEnvironmentVariable("ZELKO_PLUGIN_PATH").split(QLatin1Char(':'), Qt::SkipEmptyParts)) {
        directories.append(entry);
    }
    return directories;
}

IDllInstance* CfgCenter::CreateDllInstanceByFileName(QString const& fileName,
                                                     QString const& secondName, bool shared,
                                                     bool exportSymbols)
{
    QString const libraryName = PlatformLibraryName(fileName);
    QString path;
    if (libraryName.contains(QLatin1Char('/'))) {
        path = libraryName;
    } else {
        for (QString const& directory : PluginDirectories()) {
            QString const candidate = QDir(directory).filePath(libraryName);
            if (QFileInfo::exists(candidate)) {
                path = candidate;
                break;
            }
        }
        if (path.isEmpty()) {
            path = libraryName; // leave it to the system loader; its error names the file
        }
    }
    QString const key = QFileInfo(path).absoluteFilePath() + QLatin1Char('\n') + secondName;

    Registry& reg = registry();
    QMutexLocker lock(&reg.mutex);
    if (shared) {
        for (auto& entry : reg.instances) {
            if (entry.second.key == key) {
                ++entry.second.references;
                return entry.first;
            }
        }
    }

    auto library = std::make_unique<QLibrary>(path);
    if (exportSymbols) {
        library->setLoadHints(QLibrary::ExportExternalSymbolsHint);
    }
    if (!library->load()) {
        warn(QStringLiteral("CreateDllInstanceByFileName(%1): cannot load: %2")
                 .arg(fileName, library->errorString()),
             __LINE__);
        return nullptr;
    }
    auto const create = reinterpret_cast<ZelkoCreateDllInstanceFunction>(
        library->resolve(ZELKO_CREATE_DLL_INSTANCE_SYMBOL));
    if (!create) {
        warn(QStringLiteral("CreateDllInstanceByFileName(%1): no factory: %2 does not export %3")
                 .arg(fileName, library->fileName(),
                      QLatin1String(ZELKO_CREATE_DLL_INSTANCE_SYMBOL)),
             __LINE__);
        library->unload();
        return nullptr;
    }
    IDllInstance* instance = nullptr;
    try {
        instance = create(secondName.toUtf8().constData());
    } catch (...) {
        instance = nullptr;
    }
    if (!instance) {
        warn(QStringLiteral("CreateDllInstanceByFileName(%1): the library made no object \"%2\"")
                 .arg(fileName, secondName),
             __LINE__);
        library->unload();
        return nullptr;
    }
    Loaded loaded;
    loaded.library = std::move(library);
    loaded.key = shared ? key : QString();
    reg.instances.emplace(instance, std::move(loaded));
    return instance;
}

bool CfgCenter::DestroyDllInstanceByPointer(IDllInstance* instance)
{
    if (!instance) {
        return false;
    }
    Registry& reg = registry();
    QMutexLocker lock(&reg.mutex);
    auto const found = reg.instances.find(instance);
    if (found == reg.instances.end()) {
        return false;
    }
    if (--found->second.references > 0) {
        return true;
    }
    std::unique_ptr<QLibrary> library = std::move(found->second.library);
    reg.instances.erase(found);
    // The object's code lives in the library: delete it before unloading.
    delete instance;
    library->unload();
    return true;
}

int CfgCenter::LiveInstanceCount()
{
    Registry& reg = registry();
    QMutexLocker lock(&reg.mutex);
    return static_cast<int>(reg.instances.size());
}
