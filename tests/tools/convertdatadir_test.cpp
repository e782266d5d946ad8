// "zelko convert --data-dir": conversions run in the data directory, while every path the user
// gives (inputs, -o, a relative configuration and the alphabets it names) still counts from
// the user's own directory.

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

enum class DataDir
{
    Default,
    WithTables,
    WithoutTables,
    Missing
};

struct DataDirRow
{
    char const* name;
    DataDir dataDir;
    int exitCode;
    char const* message; ///< expected on stderr; empty: no message of the tool
};

std::ostream& operator<<(std::ostream& out, DataDirRow const& row)
{
    return out << row.name;
}

class ZelkoConvertDataDir : public testing::TestWithParam<DataDirRow>
{
protected:
    void SetUp() override
    {
        QDir root(m_root.path());
        ASSERT_TRUE(root.mkpath(QStringLiteral("user/cfg")));
        ASSERT_TRUE(root.mkpath(QStringLiteral("tables")));
        ASSERT_TRUE(root.mkpath(QStringLiteral("empty")));
        m_user = root.filePath(QStringLiteral("user"));
        ASSERT_TRUE(
            QFile::copy(QStringLiteral(ZELKO_SOURCE_DIR "/data/MaritimListofCountries.csv"),
                        root.filePath(QStringLiteral("tables/MaritimListofCountries.csv"))));
        ASSERT_TRUE(QFile::copy(QStringLiteral(ZELKO_SOURCE_DIR "/data/samples/navtex-ccir476.zdr"),
                                QDir(m_user).filePath(QStringLiteral("navtex.zdr"))));
        ASSERT_TRUE(QFile::link(QStringLiteral(ZELKO_SOURCE_DIR "/data/alphabets"),
                                QDir(m_user).filePath(QStringLiteral("my-alphabets"))));
        QFile configuration(QDir(m_user).filePath(QStringLiteral("cfg/zelko.ini")));
        ASSERT_TRUE(configuration.open(QIODevice::WriteOnly));
        configuration.write("[JobManagement]\nMorseAlphabets=my-alphabets\n");
    }

    QString dataDirArgument(DataDir which) const
    {
        switch (which) {
        case DataDir::WithTables:
            return QDir(m_root.path()).filePath(QStringLiteral("tables"));
        case DataDir::WithoutTables:
            return QDir(m_root.path()).filePath(QStringLiteral("empty"));
        case DataDir::Missing:
            return QDir(m_root.path()).filePath(QStringLiteral("missing"));
        case DataDir::Default:
            break;
        }
        return QString();
    }

    QTemporaryDir m_root;
    QString m_user;
};

TEST_P(ZelkoConvertDataDir, PathsStillCountFromTheUsersDirectory)
{
    DataDirRow const& row = GetParam();
    QStringList arguments{QStringLiteral("convert"),    QStringLiteral("--quiet"),
                          QStringLiteral("-o"),         QStringLiteral("out"),
                          QStringLiteral("--decoder"),  QStringLiteral("NAVTEX"),
                          QStringLiteral("--alphabet"), QStringLiteral("CCIR 476")};
    if (row.dataDir != DataDir::Default) {
        arguments << QStringLiteral("--data-dir") << dataDirArgument(row.dataDir);
    }
    arguments << QStringLiteral("navtex.zdr");

    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.remove(QStringLiteral("ZELKO_TRACE_MASK"));
    env.insert(QStringLiteral("ZELKO_CONFIG"), QStringLiteral("cfg/zelko.ini"));
    process.setProcessEnvironment(env);
    process.setWorkingDirectory(m_user);
    process.start(QStringLiteral(ZELKO_TOOL), arguments);
    ASSERT_TRUE(process.waitForFinished(120000));
    QString const err = QString::fromUtf8(process.readAllStandardError());
    EXPECT_EQ(process.exitCode(), row.exitCode) << err.toStdString();
    if (*row.message) {
        EXPECT_TRUE(err.contains(QString::fromUtf8(row.message))) << err.toStdString();
    } else {
        EXPECT_FALSE(err.contains(QStringLiteral("zelko convert:"))) << err.toStdString();
    }
    if (row.exitCode != 0) {
        return;
    }
    QDir const out(QDir(m_user).filePath(QStringLiteral("out")));
    QStringList const files = out.entryList({QStringLiteral("*.xml")}, QDir::Files);
    ASSERT_EQ(files.size(), 1);
    QFile document(out.filePath(files.front()));
    ASSERT_TRUE(document.open(QIODevice::ReadOnly));
    // Readable text only if the configured alphabets were found from the user's directory:
    // in the data directory, "my-alphabets" would not be found.
    EXPECT_TRUE(document.readAll().contains("NAV WARN NR 112"));
}

INSTANTIATE_TEST_SUITE_P(
    Runs, ZelkoConvertDataDir,
    testing::Values(DataDirRow{"Default", DataDir::Default, 0, ""},
                    DataDirRow{"DirectoryWithTables", DataDir::WithTables, 0, ""},
                    DataDirRow{
                        "DirectoryWithoutTables", DataDir::WithoutTables, 0,
                        "empty has no MaritimListofCountries.csv: ship countries read as unknown"},
                    DataDirRow{"MissingDirectory", DataDir::Missing, 2, "no data directory "}),
    [](testing::TestParamInfo<DataDirRow> const& info) { return std::string(info.param.name); });

} // namespace
