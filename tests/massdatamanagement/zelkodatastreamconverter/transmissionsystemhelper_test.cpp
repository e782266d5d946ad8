#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTranslator>
#include <functional>
#include <gtest/gtest.h>
#include <massdatamanagement/zelkodatastreamconverter/transmissionsystemhelper.h>

using zelkodatastreamconverter::TransmissionSystemHelper;

namespace {

template <typename Row>
std::string rowName(testing::TestParamInfo<Row> const& info)
{
    return info.param.name;
}

// Tables share one bounded lookup: their first and last texts, and "unknown" from their size
// on. The status tables are chosen by the telegram's direction.
struct TableRow
{
    char const* name;
    std::function<QString(TransmissionSystemHelper const&, quint32)> get;
    quint32 size;
    char const* first;
    char const* last;
};

using BoundedTable = testing::TestWithParam<TableRow>;

TEST_P(BoundedTable, EndsWithItsLastTextAndAnswersUnknownBeyond)
{
    TableRow const& row = GetParam();
    TransmissionSystemHelper const helper;
    EXPECT_EQ(row.get(helper, 0), QString::fromUtf8(row.first));
    EXPECT_EQ(row.get(helper, row.size - 1), QString::fromUtf8(row.last));
    EXPECT_EQ(row.get(helper, row.size), QStringLiteral("unknown"));
    EXPECT_EQ(row.get(helper, 0xFFFFFFFFu), QStringLiteral("unknown"));
}

#define GETTER(call) [](TransmissionSystemHelper const& h, quint32 i) { return h.call; }

// clang-format off
INSTANTIATE_TEST_SUITE_P(Helper, BoundedTable, testing::Values(
    TableRow{"StatusFromVehicle", GETTER(GetBOS_STATUS(i, 0)), 16, "Notruf", "Sprechtaste"},
    TableRow{"StatusDirectionBit0", GETTER(GetBOS_STATUS(i, 1)), 16, "Notruf", "Sprechtaste"},
    TableRow{"StatusFromCentre", GETTER(GetBOS_STATUS(i, 2)), 16, "Statusabfrage", "Automatische Quittung"},
    TableRow{"CloverSpeed", GETTER(GetCLOVER_SPEED_LEVEL(i)), 7, "n.a.", "PSK16A/ASK4"},
    TableRow{"F7W", GETTER(GetF7W_PAYLOAD_TYPE(i)), 3, "RAW", "MORSE"}),
    rowName<TableRow>);
// clang-format on

// Old spellings users search for, and the answers that do not follow the common rule.
struct TextRow
{
    char const* name;
    std::function<QString(TransmissionSystemHelper&)> get;
    char const* expected;
};

using Texts = testing::TestWithParam<TextRow>;

TEST_P(Texts, ReadExactlyAsKnown)
{
    TransmissionSystemHelper helper;
    EXPECT_EQ(GetParam().get(helper), QString::fromUtf8(GetParam().expected));
}

#define CALL(call) [](TransmissionSystemHelper& h) { return QString(h.call); }

// clang-format off
INSTANTIATE_TEST_SUITE_P(Helper, Texts, testing::Values(
    TextRow{"BadenWuerttemberg", CALL(GetBOS_STATE(2)), "Baden-Würtemberg"},
    TextRow{"EndFromVehicle", CALL(GetBOS_STATUS(11, 0)), "Ende Folgetelegramm"},
    TextRow{"EndFromCentre", CALL(GetBOS_STATUS(11, 2)), "Ende Folgetelegram"},
    TextRow{"Pager", CALL(GetBOS_STATUS(14, 2)), "Digitaler Meldeempfänger"},
    TextRow{"VdewEmergency", CALL(GetVDEW_BAK(8)), "ermergency call"},
    TextRow{"MptLast", CALL(GetMPT_TRANSMISSION_TYPE(3)), "System Operation"},
    TextRow{"MptOwnDefault", CALL(GetMPT_TRANSMISSION_TYPE(4)), "unkown"},
    TextRow{"MptBeyond", CALL(GetMPT_TRANSMISSION_TYPE(7)), "unkown"},
    TextRow{"CrcOk", CALL(GetCRCText(true)), "ok"},
    TextRow{"CrcNotOk", CALL(GetCRCText(false)), "not ok"},
    TextRow{"PidNoData", CALL(GetPR_PID(0x00)), "No data burst"},
    TextRow{"PidUnnamedPadded", CALL(GetPR_PID(0x02)), "0x02"},
    TextRow{"PidUnnamed", CALL(GetPR_PID(0x10)), "0x10"},
    TextRow{"PidEscape", CALL(GetPR_PID(0xFF)), "Escape character. Next octet contains more Level 3 protocol information."},
    TextRow{"PidBeyondOneOctet", CALL(GetPR_PID(0x1FF)), "0x1ff"},
    TextRow{"CountryVatican", CALL(GetCountryName(39)), "Vatican City State"},
    TextRow{"CountryZero", CALL(GetCountryName(0)), "000 (unknown)"},
    TextRow{"CountryOneDigit", CALL(GetCountryName(5)), "005 (unknown)"},
    TextRow{"CountryBeyond", CALL(GetCountryName(999)), "999 (unknown)"},
    TextRow{"CountryFourDigits", CALL(GetCountryName(1000)), "1000 (unknown)"}),
    rowName<TextRow>);
// clang-format on

// The built-in E.164 table is the shipped list, row for row, with the Vatican on code 39.
TEST(TransmissionSystemHelper, CountryTableIsTheShippedList)
{
    QFile file(QStringLiteral(ZELKO_SOURCE_DIR "/data/e164_country_codes.csv"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text));
    TransmissionSystemHelper helper;
    int rows = 0;
    while (!file.atEnd()) {
        QString const line = QString::fromUtf8(file.readLine()).trimmed();
        if (!line.startsWith(QLatin1Char('#'))) {
            quint32 const code = line.section(QLatin1Char(';'), 0, 0).toUInt();
            EXPECT_EQ(helper.GetCountryName(code), code == 39 ? QStringLiteral("Vatican City State")
                                                              : line.section(QLatin1Char(';'), 1));
            ++rows;
        }
    }
    EXPECT_EQ(rows, 225);
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

class InDirectory
{
public:
    explicit InDirectory(QString const& path) : m_previous(QDir::currentPath())
    {
        QDir::setCurrent(path);
    }
    ~InDirectory() { QDir::setCurrent(m_previous); }

private:
    QString m_previous;
};

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
    InDirectory const inside(directory.path());
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
    rowName<MIDRow>);
// clang-format on

TEST(TransmissionSystemHelper, MIDFileIsReadOncePerHelper)
{
    QTemporaryDir directory;
    InDirectory const inside(directory.path());
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
    InDirectory const inside(QStringLiteral(ZELKO_SOURCE_DIR "/data"));
    TransmissionSystemHelper helper;
    EXPECT_EQ(helper.GetMIDCountryName(201), QStringLiteral(";Albania\n"));
    EXPECT_EQ(helper.GetMIDCountryName(775), QStringLiteral(";Venezuela\n"));
    EXPECT_EQ(helper.GetMIDCountryName(0), QStringLiteral("000 (unknown)"));
}

} // namespace
