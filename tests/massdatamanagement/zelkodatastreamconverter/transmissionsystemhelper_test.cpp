#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTranslator>
#include <functional>
#include <gtest/gtest.h>
#include <massdatamanagement/zelkodatastreamconverter/transmissionsystemhelper.h>
#include <support/golden.h>
#include <support/rowname.h>
#include <support/scopedworkingdirectory.h>

using zelkodatastreamconverter::TransmissionSystemHelper;

namespace {

// Every answer of every table up to one past its last own text, and far beyond; the status
// tables for each direction; the country names that the built-in table knows, and unknown
// ones. Old spellings users search for are kept as they are.
QByteArray tableDump()
{
    TransmissionSystemHelper helper;
    // clang-format off
#define TABLE(name) {#name, [&helper](quint32 i) { return QString(helper.Get##name(i)); }}
#define STATUS(direction) {"BOS_STATUS direction " #direction, \
                           [&helper](quint32 i) { return helper.GetBOS_STATUS(i, direction); }}
    std::vector<std::pair<char const*, std::function<QString(quint32)>>> const tables = {
        TABLE(BOS_BOS), TABLE(BOS_STATE), TABLE(ZVEI_BAK), TABLE(VDEW_BAK), TABLE(PR_FRAME_TYPE),
        TABLE(PR_MODIFIER_FUNCTION), TABLE(PR_SUPERVISOR_FUNCTION), TABLE(PR_PID),
        TABLE(CLOVER_BLOCK_TYPE), TABLE(CLOVER_CODE_EFFICIENCY), TABLE(CLOVER_SPEED_LEVEL),
        TABLE(PACTOR_BURST_TYPE), TABLE(PACTOR_CLOVER_CONTENT_TYPE),
        TABLE(PACTOR_CLOVER_SIDEBAND_MODE), TABLE(PACTOR_DATA_CHAT_MODE),
        TABLE(PACTOR_DATA_MODE_SUGGESTION), TABLE(PACTOR_DATA_TYPE), TABLE(PACTOR_DECODING_QUALITY),
        TABLE(PACTOR_PATH_MODE), TABLE(PACTOR_QRT_PACKET), TABLE(PACTOR_SPEED_LEVEL),
        TABLE(PACTOR_SPEED_LEVEL_REQUEST), TABLE(PACTOR_TRANSMISSION_MODE), TABLE(PACTOR_VARIANT),
        TABLE(F7W_PAYLOAD_TYPE), TABLE(MPT_TRANSMISSION_TYPE), STATUS(0), STATUS(1), STATUS(2),
        STATUS(3), {"CountryName", [&helper](quint32 i) { return helper.GetCountryName(i); }}};
#undef TABLE
#undef STATUS
    // clang-format on
    QByteArray dump = "CRCText: " + helper.GetCRCText(true).toUtf8() + " / " +
                      helper.GetCRCText(false).toUtf8() + '\n';
    for (auto const& [name, lookup] : tables) {
        quint32 last = 0;
        for (quint32 i = 0; i < 1000; ++i) {
            QString const text = lookup(i);
            bool const known = !text.endsWith(QLatin1String(" (unknown)")) &&
                               !text.startsWith(QLatin1String("0x")) && text != lookup(999);
            if (known) {
                last = i;
            }
        }
        auto const write = [&](quint32 i) {
            dump +=
                QByteArray(name) + ' ' + QByteArray::number(i) + ": " + lookup(i).toUtf8() + '\n';
        };
        for (quint32 i = 0; i <= last + 1; ++i) {
            write(i);
        }
        for (quint32 i : {999u, 1000u, 0x1FFu, 0xFFFFFFFFu}) {
            if (i > last + 1) {
                write(i);
            }
        }
    }
    return dump;
}

// Regenerate with ZELKO_REGENERATE_GOLDEN=1 and review the diff.
TEST(TransmissionSystemHelper, TablesMatchTheirDump)
{
    EXPECT_EQ(zelkotest::compareWithGolden(tableDump(),
                                           QStringLiteral("transmissionsystem/helper-tables.dump")),
              QString());
}

class BracketTranslator : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(char const* context, char const* text, char const*, int) const override
    {
        return qstrcmp(context, "zelkodatastreamconverter::TransmissionSystemHelper") == 0
                   ? QStringLiteral("[%1]").arg(QString::fromUtf8(text))
                   : QString();
    }
};

// Country names are translated when a helper fills its map, PIDs on every call; the short
// tables are built once per process, so this test leaves them alone.
TEST(TransmissionSystemHelper, CountryNamesAndProtocolsAreTranslated)
{
    int argc = 1;
    char name[] = "test";
    char* argv[] = {name, nullptr};
    QCoreApplication application(argc, argv);
    BracketTranslator translator;
    ASSERT_TRUE(QCoreApplication::installTranslator(&translator));
    TransmissionSystemHelper helper;
    EXPECT_EQ(helper.GetCountryName(41), QStringLiteral("[Switzerland (Confederation of)]"));
    EXPECT_EQ(helper.GetPR_PID(0xCF), QStringLiteral("[NET/ROM]"));
}

void writeMIDFile(QString const& directory, QByteArray const& content)
{
    QFile file(QDir(directory).filePath(TransmissionSystemHelper::MIDFileName));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
}

struct MIDRow
{
    char const* name;
    char const* file; ///< null: no file
    quint32 mid;
    char const* expected;
};

using MIDFile = testing::TestWithParam<MIDRow>;

TEST_P(MIDFile, GivesTheValueAsTheFileHasIt)
{
    QTemporaryDir directory;
    if (GetParam().file) {
        writeMIDFile(directory.path(), GetParam().file);
    }
    zelkotest::ScopedWorkingDirectory const inside(directory.path());
    TransmissionSystemHelper helper;
    EXPECT_EQ(helper.GetMIDCountryName(GetParam().mid), QString::fromUtf8(GetParam().expected));
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Helper, MIDFile, testing::Values(
    MIDRow{"Missing", nullptr, 211, "211 (unknown)"},
    MIDRow{"MissingLeavesTheEmptyMarker", nullptr, 0xFFFFFFFFu, ""},
    MIDRow{"ValueKeepsSeparatorAndLineEnd", "201;Albania\n211;Germany\n", 211, ";Germany\n"},
    MIDRow{"CarriageReturnKept", "211;Germany\r\n", 211, ";Germany\r\n"},
    MIDRow{"LastLineWithoutEnd", "201;Albania\n211;Germany", 211, ";Germany"},
    MIDRow{"OnlyFirstSeparatorSplits", "211;Germany;DE\n", 211, ";Germany;DE\n"},
    MIDRow{"CommentSkipped", "#211;Comment\n201;Albania\n", 211, "211 (unknown)"},
    MIDRow{"LineWithoutSeparatorSkipped", "211 Germany\n201;Albania\n", 211, "211 (unknown)"},
    MIDRow{"NoUsableLineLeavesTheMarker", "#211;Comment\n211 Germany\n", 0xFFFFFFFFu, ""},
    MIDRow{"UnparsableKeyIsZero", "21a;Nowhere\n", 0, ";Nowhere\n"},
    MIDRow{"EmptyKeyIsZero", ";Nowhere\n", 0, ";Nowhere\n"},
    MIDRow{"LaterLineWins", "211;Old\n211;New\n", 211, ";New\n"},
    MIDRow{"UsableLineMeansNoMarker", "211;Germany\n", 0xFFFFFFFFu, "4294967295 (unknown)"}),
    zelkotest::RowName());
// clang-format on

TEST(TransmissionSystemHelper, MIDFileIsReadOncePerHelper)
{
    QTemporaryDir directory;
    zelkotest::ScopedWorkingDirectory const inside(directory.path());
    TransmissionSystemHelper missing;
    EXPECT_EQ(missing.GetMIDCountryName(211), QStringLiteral("211 (unknown)"));
    writeMIDFile(directory.path(), "211;Germany\n");
    EXPECT_EQ(missing.GetMIDCountryName(211), QStringLiteral("211 (unknown)"));

    TransmissionSystemHelper helper;
    EXPECT_EQ(helper.GetMIDCountryName(211), QStringLiteral(";Germany\n"));
    writeMIDFile(directory.path(), "211;Changed\n");
    EXPECT_EQ(helper.GetMIDCountryName(211), QStringLiteral(";Germany\n"));
}

TEST(TransmissionSystemHelper, ShippedMIDFileSpansTheMIDs)
{
    zelkotest::ScopedWorkingDirectory const inside(QStringLiteral(ZELKO_SOURCE_DIR "/data"));
    TransmissionSystemHelper helper;
    EXPECT_EQ(helper.GetMIDCountryName(201), QStringLiteral(";Albania\n"));
    EXPECT_EQ(helper.GetMIDCountryName(775), QStringLiteral(";Venezuela\n"));
    EXPECT_EQ(helper.GetMIDCountryName(0), QStringLiteral("000 (unknown)"));
}

} // namespace
