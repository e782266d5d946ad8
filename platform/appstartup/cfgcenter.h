#pragma once

#include "dllinstance.h"

#include <QString>
#include <QStringList>
#include <QVariant>
#include <memory>

class QSettings;

/// One group of the application's configuration file, opened by CfgCenter::CreateCfg().
///
/// The configuration is an INI file (QSettings IniFormat): with the environment variable
/// ZELKO_CONFIG set, that file; otherwise "zelko/zelko.ini" in the user's configuration
/// directory ($XDG_CONFIG_HOME, by default ~/.config). A missing file reads as empty, so
/// every getter answers its default.
///
/// Keys live in the INI section named after the group ("[JobManagement]"); with a second
/// name they live in the sub-section "group/secondName".
class Cfg
{
public:
    /// View flags of CreateCfg(): the read-only view refuses SetValue().
    enum View
    {
        ReadWrite = 0,
        ReadOnly = 4
    };

    ~Cfg();
    Cfg(Cfg const&) = delete;
    Cfg& operator=(Cfg const&) = delete;

    /// The value of key, or defaultValue when the key is not set.
    QString GetValue(QString const& key, QString const& defaultValue) const;
    /// The same for any value type QSettings can store.
    QVariant GetVariant(QString const& key, QVariant const& defaultValue) const;
    /// An integer, or defaultValue when the key is not set or not a number.
    int GetInt(QString const& key, int defaultValue) const;
    bool Contains(QString const& key) const;
    QStringList Keys() const;

    /// Stores a value (written to the file by Sync() or on destruction). Refused (false) in
    /// the read-only view.
    bool SetValue(QString const& key, QVariant const& value);
    /// Writes pending changes; false when the file cannot be written.
    bool Sync();

    QString const& GetGroup() const { return m_group; }
    QString const& GetSecondName() const { return m_secondName; }
    int GetView() const { return m_view; }
    /// The INI file behind the object.
    QString FilePath() const;

private:
    friend class CfgCenter;
    Cfg(QString const& filePath, QString const& group, QString const& secondName, int view);

    QString m_group;
    QString m_secondName;
    int m_view;
    std::unique_ptr<QSettings> m_settings;
};

/// Start-up services of the host application: configuration and libraries loaded at run
/// time. All operations are thread-safe.
class CfgCenter
{
public:
    /// The configuration file in use (see Cfg).
    static QString ConfigFilePath();

    /// Opens the configuration group (and sub-group secondName, if not empty). view is a
    /// Cfg::View value; any view other than Cfg::ReadOnly may write.
    static std::unique_ptr<Cfg> CreateCfg(QString const& group, QString const& secondName,
                                          int view);

    /// Loads a library by file name and asks its factory for the object named secondName
    /// (empty: its default object). A Windows-style name such as "AudioFileExport.DLL"
    /// (".dll" in any case) maps to this platform's library file, "libAudioFileExport.so";
    /// a name that already is a library file name is used as it is. A name with a directory
    /// is loaded from there; otherwise the library is searched in PluginDirectories().
    ///
    /// shared: hand out the same object again when this library and second name were
    /// already loaded with shared set (each such call must be paired with a
    /// DestroyDllInstanceByPointer()). exportSymbols: load the library with its symbols
    /// visible to libraries loaded later (RTLD_GLOBAL).
    ///
    /// Returns null when the library cannot be found or loaded, exports no factory, or the
    /// factory returns null; the reason, with the loader's error text, goes to the trace
    /// (bit 0x20).
    static IDllInstance* CreateDllInstanceByFileName(QString const& fileName,
                                                     QString const& secondName, bool shared,
                                                     bool exportSymbols);

    /// Deletes an object made by CreateDllInstanceByFileName() and unloads its library when
    /// no other object of it is alive. Returns false (and does nothing) for a null or
    /// unknown pointer.
    static bool DestroyDllInstanceByPointer(IDllInstance* instance);

    /// The library file name for fileName on this platform ("X.DLL" -> "libX.so").
    static QString PlatformLibraryName(QString const& fileName);

    /// Where libraries are searched, in order: the directory of the start-up library
    /// itself, then each entry of ZELKO_PLUGIN_PATH (separated by ':').
    static QStringList PluginDirectories();

    /// Number of objects handed out and not yet destroyed (for tests and diagnostics).
    static int LiveInstanceCount();
};
