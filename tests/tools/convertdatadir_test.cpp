// "zelko convert --data-dir": conversions run in the data directory, while every path the user
// gives (inputs, -o, a relative configuration and the alphabets it names) still counts from
// the user's own directory.

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <support/rowname.h>
#include <support/toolrun.h>

namespace {

struct DataDirRow
{
    char const* name;
    char const* dataDir; ///< under the test's directory; null: no --data-dir
    int exitCode;
    char const* message; ///< expected on stderr; empty: no message of the tool
};

using ZelkoConvertDataDir = testing::TestWithParam<DataDirRow>;

TEST_P(ZelkoConvertDataDir, PathsStillCountFromTheUsersDirectory)
{
    QTemporaryDir root;
    QDir const user(root.filePath(QStringLiteral("user")));
    ASSERT_TRUE(user.mkpath(QStringLiteral("cfg")) && QDir(root.path()).mkdir("tables") &&
                QDir(root.path()).mkdir("empty"));
    ASSERT_TRUE(QFile::copy(ZELKO_SOURCE_DIR "/data/MaritimListofCountries.csv",
                            root.filePath("tables/MaritimListofCountries.csv")));
    ASSERT_TRUE(QFile::copy(ZELKO_SOURCE_DIR "/data/samples/navtex-ccir476.zdr",
                            user.filePath("navtex.zdr")));
    ASSERT_TRUE(QFile::link(ZELKO_SOURCE_DIR "/data/alphabets", user.filePath("my-alphabets")));
    QFile configuration(user.filePath(QStringLiteral("cfg/zelko.ini")));
    ASSERT_TRUE(configuration.open(QIODevice::WriteOnly));
    configuration.write("[JobManagement]\nMorseAlphabets=my-alphabets\n");
    configuration.close();

    QStringList arguments{"convert",   "--quiet", "-o",         "out",
                          "--decoder", "NAVTEX",  "--alphabet", "CCIR 476"};
    if (GetParam().dataDir) {
        arguments << "--data-dir" << root.filePath(QString::fromLatin1(GetParam().dataDir));
    }
    zelkotest::ToolSetup setup;
    setup.workingDirectory = user.path();
    setup.environment = {{QStringLiteral("ZELKO_CONFIG"), QStringLiteral("cfg/zelko.ini")}};
    zelkotest::ToolRun const run =
        zelkotest::runTool(QStringLiteral(ZELKO_TOOL), arguments << "navtex.zdr", setup);
    QString const& err = run.err;
    EXPECT_EQ(run.exitCode, GetParam().exitCode) << err.toStdString();
    QString const message = QString::fromUtf8(GetParam().message);
    EXPECT_TRUE(message.isEmpty() ? !err.contains(QLatin1String("zelko convert:"))
                                  : err.contains(message))
        << err.toStdString();
    if (GetParam().exitCode == 0) {
        QDir const out(user.filePath(QStringLiteral("out")));
        QStringList const files = out.entryList({QStringLiteral("*.xml")}, QDir::Files);
        ASSERT_EQ(files.size(), 1);
        QFile document(out.filePath(files.front()));
        ASSERT_TRUE(document.open(QIODevice::ReadOnly));
        // Readable text only if the configured alphabets were found from the user's
        // directory: in the data directory, "my-alphabets" would not be found.
        EXPECT_TRUE(document.readAll().contains("NAV WARN NR 112"));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Runs, ZelkoConvertDataDir,
    testing::Values(DataDirRow{"Default", nullptr, 0, ""},
                    DataDirRow{"DirectoryWithTables", "tables", 0, ""},
                    DataDirRow{
                        "DirectoryWithoutTables", "empty", 0,
                        "empty has no MaritimListofCountries.csv: ship countries read as unknown"},
                    DataDirRow{"MissingDirectory", "missing", 2, "no data directory "}),
    zelkotest::RowName());

} // namespace
