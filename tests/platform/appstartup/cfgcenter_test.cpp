#include "testplugin/counterinstance.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <appstartup/cfgcenter.h>
#include <atomic>
#include <gtest/gtest.h>
#include <support/qstringprinter.h>
#include <support/rowname.h>
#include <support/scopedenvironment.h>
#include <support/tracecapture.h>
#include <thread>
#include <vector>

namespace {

QString const pluginDir = QStringLiteral(ZELKO_TEST_PLUGIN_DIR);

using zelkotest::ScopedEnvironment;

bool writeFile(QString const& path, QByteArray const& content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

} // namespace

TEST(CfgCenter, ReadsGroupsAndSubGroupsOfTheIniFile)
{
    QTemporaryDir directory;
    QString const path = directory.filePath(QStringLiteral("zelko.ini"));
    ASSERT_TRUE(writeFile(path, "[JobManagement]\n"
                                "MorseAlphabets=/opt/zelko/alphabets\n"
                                "Count=12\n"
                                "Bad=12x\n"
                                "[JobManagement/Station]\n"
                                "MorseAlphabets=/srv/station\n"
                                "[Other]\n"
                                "MorseAlphabets=wrong group\n"));
    ScopedEnvironment config("ZELKO_CONFIG", path);
    struct Case
    {
        char const* secondName;
        char const* key;
        char const* expected;
    };
    Case const cases[] = {
        {"", "MorseAlphabets", "/opt/zelko/alphabets"},
        {"Station", "MorseAlphabets", "/srv/station"},
        {"Station", "Count", "fallback"},
        {"", "morsealphabets", "fallback"}, // keys are case-sensitive
        {"Missing", "MorseAlphabets", "fallback"},
    };
    for (Case const& c : cases) {
        auto const cfg = CfgCenter::CreateCfg(QStringLiteral("JobManagement"),
                                              QString::fromLatin1(c.secondName), Cfg::ReadOnly);
        EXPECT_EQ(cfg->GetValue(QString::fromLatin1(c.key), QStringLiteral("fallback")),
                  QString::fromLatin1(c.expected))
            << c.secondName << "/" << c.key;
    }
    auto const cfg = CfgCenter::CreateCfg(QStringLiteral("JobManagement"), QString(), 4);
    EXPECT_EQ(cfg->GetInt(QStringLiteral("Count"), 0), 12);
    EXPECT_EQ(cfg->GetInt(QStringLiteral("Bad"), -1), -1);
}

TEST(CfgCenter, ReadOnlyViewRefusesWritesOthersPersistThem)
{
    QTemporaryDir directory;
    QString const path = directory.filePath(QStringLiteral("sub/zelko.ini"));
    ScopedEnvironment config("ZELKO_CONFIG", path);
    {
        auto const readOnly =
            CfgCenter::CreateCfg(QStringLiteral("JobManagement"), QString(), Cfg::ReadOnly);
        // A missing file answers the defaults, and reading never creates it.
        EXPECT_EQ(readOnly->GetInt(QStringLiteral("Count"), -7), -7);
        EXPECT_FALSE(readOnly->SetValue(QStringLiteral("MorseAlphabets"), QStringLiteral("/x")));
    }
    EXPECT_FALSE(QFileInfo::exists(path));
    {
        auto const writable =
            CfgCenter::CreateCfg(QStringLiteral("JobManagement"), QString(), Cfg::ReadWrite);
        EXPECT_TRUE(writable->SetValue(QStringLiteral("MorseAlphabets"), QStringLiteral("/x y")));
        EXPECT_TRUE(writable->Sync());
    }
    auto const again = CfgCenter::CreateCfg(QStringLiteral("JobManagement"), QString(), 4);
    EXPECT_EQ(again->GetValue(QStringLiteral("MorseAlphabets"), QString()), QStringLiteral("/x y"));
}

TEST(CfgCenter, DefaultLocationIsInTheUserConfigurationDirectory)
{
    QTemporaryDir directory;
    ScopedEnvironment config("ZELKO_CONFIG", QString());
    ScopedEnvironment xdg("XDG_CONFIG_HOME", directory.path());
    EXPECT_EQ(CfgCenter::ConfigFilePath(), directory.filePath(QStringLiteral("zelko/zelko.ini")));
}

TEST(CfgCenter, WindowsLibraryNamesMapToThisPlatform)
{
    struct Case
    {
        char const* given;
        char const* expected;
    };
    Case const cases[] = {
        {"AudioFileExport.DLL", "libAudioFileExport.so"},
        {"codec.dll", "libcodec.so"},
        {"/opt/zelko/AudioFileExport.DLL", "/opt/zelko/libAudioFileExport.so"},
        {"libready.so", "libready.so"},
        {"libversioned.so.2", "libversioned.so.2"},
        {"Plain", "libPlain.so"},
    };
    for (Case const& c : cases) {
        EXPECT_EQ(CfgCenter::PlatformLibraryName(QString::fromLatin1(c.given)),
                  QString::fromLatin1(c.expected))
            << c.given;
    }
}

TEST(CfgCenter, PluginDirectoriesStartNextToTheLibrary)
{
    ScopedEnvironment path("ZELKO_PLUGIN_PATH", QStringLiteral("/a::/b"));
    QStringList const directories = CfgCenter::PluginDirectories();
    ASSERT_EQ(directories.size(), 3);
    EXPECT_TRUE(QFileInfo::exists(directories[0] + QStringLiteral("/libzelko_appstartup.so")))
        << directories[0].toStdString();
    EXPECT_EQ(directories.mid(1), (QStringList{QStringLiteral("/a"), QStringLiteral("/b")}));
}

TEST(CfgCenter, LoadsPluginsAtRunTimeSharesPerSecondNameAndReleases)
{
    ScopedEnvironment path("ZELKO_PLUGIN_PATH", pluginDir);
    int const before = CfgCenter::LiveInstanceCount();
    auto create = [](char const* secondName, bool shared) {
        return CfgCenter::CreateDllInstanceByFileName(QStringLiteral("ZelkoTestPlugin.DLL"),
                                                      QLatin1String(secondName), shared, false);
    };
    IDllInstance* a = create("s", true);
    IDllInstance* b = create("s", true);
    IDllInstance* other = create("t", true);
    IDllInstance* unshared = create("s", false);
    auto* counter = dynamic_cast<CounterInstance*>(a);
    ASSERT_NE(counter, nullptr) << "the checked down-cast works across the library boundary";
    EXPECT_EQ(counter->Next(), 1);
    EXPECT_EQ(dynamic_cast<CounterInstance*>(b)->Next(), 2) << "one object for both users";
    EXPECT_NE(a, other);
    EXPECT_NE(a, unshared);
    EXPECT_EQ(CfgCenter::LiveInstanceCount(), before + 3);
    bool died = false;
    counter->SetDeathFlag(&died);
    EXPECT_TRUE(CfgCenter::DestroyDllInstanceByPointer(a));
    EXPECT_FALSE(died) << "one user is left";
    EXPECT_TRUE(CfgCenter::DestroyDllInstanceByPointer(b));
    EXPECT_TRUE(died);
    EXPECT_FALSE(CfgCenter::DestroyDllInstanceByPointer(b)) << "unknown now";
    for (IDllInstance* rest : {other, unshared}) {
        EXPECT_TRUE(CfgCenter::DestroyDllInstanceByPointer(rest));
    }
    EXPECT_EQ(CfgCenter::LiveInstanceCount(), before);

    // With a directory in the name no search takes place.
    IDllInstance* direct = CfgCenter::CreateDllInstanceByFileName(
        pluginDir + QStringLiteral("/ZelkoTestPlugin.dll"), QStringLiteral("named"), false, true);
    ASSERT_NE(direct, nullptr);
    EXPECT_EQ(dynamic_cast<CounterInstance*>(direct)->SecondName(), QStringLiteral("named"));
    EXPECT_TRUE(CfgCenter::DestroyDllInstanceByPointer(direct));
}

struct BadLibraryRow
{
    char const* name;
    char const* fileName;
    char const* secondName;
    char const* start;  // the message starts with this exact text
    char const* reason; // and carries the loader's reason
};

using BadLibrary = testing::TestWithParam<BadLibraryRow>;

TEST_P(BadLibrary, AnswersNullWithTheLoaderError)
{
    // The first directory on the path that has the library wins: the broken copy of the test
    // plugin further on must not be taken.
    QTemporaryDir directory;
    for (char const* name : {"libBroken.so", "libZelkoTestPlugin.so"}) {
        ASSERT_TRUE(writeFile(directory.filePath(QLatin1String(name)), "not an ELF file\n"));
    }
    ScopedEnvironment path("ZELKO_PLUGIN_PATH", pluginDir + QLatin1Char(':') + directory.path());
    int const before = CfgCenter::LiveInstanceCount();
    zelkotest::TraceCapture capture(0x20);
    EXPECT_EQ(CfgCenter::CreateDllInstanceByFileName(QString::fromLatin1(GetParam().fileName),
                                                     QString::fromLatin1(GetParam().secondName),
                                                     false, false),
              nullptr);
    ASSERT_EQ(capture.messages().size(), 1);
    QString const message = capture.messages().front();
    EXPECT_TRUE(message.startsWith(QLatin1String(GetParam().start))) << message.toStdString();
    EXPECT_TRUE(message.contains(QLatin1String(GetParam().reason))) << message.toStdString();
    EXPECT_EQ(CfgCenter::LiveInstanceCount(), before);
}

INSTANTIATE_TEST_SUITE_P(
    Libraries, BadLibrary,
    testing::Values(
        BadLibraryRow{
            "missing", "NoSuchPlugin.DLL", "",
            "CreateDllInstanceByFileName(NoSuchPlugin.DLL): cannot load: ", "libNoSuchPlugin.so"},
        BadLibraryRow{"not a library", "Broken.DLL", "",
                      "CreateDllInstanceByFileName(Broken.DLL): cannot load: ", "libBroken.so"},
        BadLibraryRow{"no factory", "ZelkoNoFactoryPlugin.DLL", "",
                      "CreateDllInstanceByFileName(ZelkoNoFactoryPlugin.DLL): no factory: ",
                      "zelkoCreateDllInstance"},
        BadLibraryRow{"factory makes nothing", "ZelkoTestPlugin.DLL", "none",
                      "CreateDllInstanceByFileName(ZelkoTestPlugin.DLL): the library made no "
                      "object \"none\"",
                      ""},
        BadLibraryRow{"factory throws", "ZelkoTestPlugin.DLL", "throw",
                      "CreateDllInstanceByFileName(ZelkoTestPlugin.DLL): the library made no "
                      "object \"throw\"",
                      ""}),
    zelkotest::RowName());

TEST(CfgCenter, TheTraceMaskDecidesWhetherALoadFailureIsTraced)
{
    zelkotest::TraceCapture silent(0);
    EXPECT_EQ(CfgCenter::CreateDllInstanceByFileName(QStringLiteral("NoSuchPlugin.DLL"), QString(),
                                                     false, false),
              nullptr);
    EXPECT_TRUE(silent.lines().empty());
}

TEST(CfgCenter, ManyThreadsLoadAndReleaseAtOnce)
{
    ScopedEnvironment path("ZELKO_PLUGIN_PATH", pluginDir);
    int const before = CfgCenter::LiveInstanceCount();
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&failures, t] {
            for (int i = 0; i < 40; ++i) {
                bool const shared = (i + t) % 2 == 0;
                IDllInstance* instance = CfgCenter::CreateDllInstanceByFileName(
                    QStringLiteral("ZelkoTestPlugin.DLL"), QStringLiteral("x"), shared, false);
                auto* counter = dynamic_cast<CounterInstance*>(instance);
                if (!counter || counter->Next() < 1 ||
                    !CfgCenter::DestroyDllInstanceByPointer(instance)) {
                    ++failures;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(failures.load(), 0);
    EXPECT_EQ(CfgCenter::LiveInstanceCount(), before);
}
