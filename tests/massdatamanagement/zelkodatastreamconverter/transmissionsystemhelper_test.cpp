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

using Getter = std::function<QString const&(TransmissionSystemHelper const&, quint32)>;

#define GETTER(name)                                                                               \
    [](TransmissionSystemHelper const& h, quint32 i) -> QString const& { return h.name(i); }

// A bounded table: its first and last texts, and "unknown" from its size on.
struct TableRow
{
    char const* name;
    Getter get;
    quint32 size;
    char const* first;
    char const* last;
};

std::ostream& operator<<(std::ostream& out, TableRow const& row)
{
    return out << row.name;
}

class BoundedTable : public testing::TestWithParam<TableRow>
{
};

TEST_P(BoundedTable, EndsWithItsLastTextAndAnswersUnknownBeyond)
{
    TableRow const& row = GetParam();
    TransmissionSystemHelper const helper;
    EXPECT_EQ(row.get(helper, 0), QString::fromUtf8(row.first));
    EXPECT_EQ(row.get(helper, row.size - 1), QString::fromUtf8(row.last));
    EXPECT_EQ(row.get(helper, row.size), QStringLiteral("unknown"));
    EXPECT_EQ(row.get(helper, 0xFFFFFFFFu), QStringLiteral("unknown"));
}

Getter statusFrom(quint32 direction)
{
    return [direction](TransmissionSystemHelper const& h, quint32 i) -> QString const& {
        return h.GetBOS_STATUS(i, direction);
    };
}

INSTANTIATE_TEST_SUITE_P(
    Helper, BoundedTable,
    testing::Values(
        TableRow{"BOS", GETTER(GetBOS_BOS), 16, "", "Fernwirktelegramme"},
        TableRow{"State", GETTER(GetBOS_STATE), 18, "Sachsen", "Thüringen (District 50:99)"},
        TableRow{"StatusFromVehicle", statusFrom(0), 16, "Notruf", "Sprechtaste"},
        TableRow{"StatusDirectionBit0IsNotBit2", statusFrom(1), 16, "Notruf", "Sprechtaste"},
        TableRow{"StatusFromControlCentre", statusFrom(2), 16, "Statusabfrage",
                 "Automatische Quittung"},
        TableRow{"StatusDirectionBits1And2", statusFrom(3), 16, "Statusabfrage",
                 "Automatische Quittung"},
        TableRow{"StatusDirectionBit3IsNotBit2", statusFrom(4), 16, "Notruf", "Sprechtaste"},
        TableRow{"CloverBlock", GETTER(GetCLOVER_BLOCK_TYPE), 4, "USER DATA", "IDLE"},
        TableRow{"CloverEfficiency", GETTER(GetCLOVER_CODE_EFFICIENCY), 5, "UNKNOWN", "OFF"},
        TableRow{"CloverSpeed", GETTER(GetCLOVER_SPEED_LEVEL), 7, "n.a.", "PSK16A/ASK4"},
        TableRow{"F7W", GETTER(GetF7W_PAYLOAD_TYPE), 3, "RAW", "MORSE"},
        TableRow{"PactorBurst", GETTER(GetPACTOR_BURST_TYPE), 5, "UNKNOWN", "CALLSIGN"},
        TableRow{"Content", GETTER(GetPACTOR_CLOVER_CONTENT_TYPE), 3, "unknown", "binary data"},
        TableRow{"Sideband", GETTER(GetPACTOR_CLOVER_SIDEBAND_MODE), 3, "unknown", "LSB"},
        TableRow{"Chat", GETTER(GetPACTOR_DATA_CHAT_MODE), 4, "n.a.", "no"},
        TableRow{"Suggestion", GETTER(GetPACTOR_DATA_MODE_SUGGESTION), 2, "OFF", "ON"},
        TableRow{"DataType", GETTER(GetPACTOR_DATA_TYPE), 8, "ASCII-8-bit",
                 "PMC ENGLISH (swapped)"},
        TableRow{"Quality", GETTER(GetPACTOR_DECODING_QUALITY), 16, "n.a.", "100 %"},
        TableRow{"Path", GETTER(GetPACTOR_PATH_MODE), 4, "n.a.", "long"},
        TableRow{"QRT", GETTER(GetPACTOR_QRT_PACKET), 2, "NO", "YES"},
        TableRow{"PactorSpeed", GETTER(GetPACTOR_SPEED_LEVEL), 7, "n.a.", "SL6"},
        TableRow{"SpeedRequest", GETTER(GetPACTOR_SPEED_LEVEL_REQUEST), 2, "OFF", "ON"},
        TableRow{"TransmissionMode", GETTER(GetPACTOR_TRANSMISSION_MODE), 4, "n.a.", "unpronto"},
        TableRow{"Variant", GETTER(GetPACTOR_VARIANT), 4, "UNKNOWN", "PACTOR III"},
        TableRow{"FrameType", GETTER(GetPR_FRAME_TYPE), 3, "Information", "Unnumbered"},
        TableRow{"Modifier", GETTER(GetPR_MODIFIER_FUNCTION), 10,
                 "UI (Unnumbered Information Frame)", "MF_UNKNOWN (Type Not Determined)"},
        TableRow{"Supervisor", GETTER(GetPR_SUPERVISOR_FUNCTION), 5, "RR (Receive Ready)",
                 "SF_UNKNOWN (Type Not Determined)"},
        TableRow{"VDEW", GETTER(GetVDEW_BAK), 16, "available", "not used"},
        TableRow{"ZVEI", GETTER(GetZVEI_BAK), 16, "disposible", "emergency call"}),
    [](testing::TestParamInfo<TableRow> const& info) { return std::string(info.param.name); });

// Texts inside the tables that users search for by their old spellings, and the tables
// whose answers do not follow the common rule.
struct TextRow
{
    char const* name;
    std::function<QString(TransmissionSystemHelper&)> get;
    char const* expected;
};

std::ostream& operator<<(std::ostream& out, TextRow const& row)
{
    return out << row.name;
}

class Texts : public testing::TestWithParam<TextRow>
{
};

TEST_P(Texts, ReadExactlyAsKnown)
{
    TransmissionSystemHelper helper;
    EXPECT_EQ(GetParam().get(helper), QString::fromUtf8(GetParam().expected));
}

#define TEXT(name, call, expected)                                                                 \
    TextRow                                                                                        \
    {                                                                                              \
        name, [](TransmissionSystemHelper& h) { return QString(h.call); }, expected                \
    }

INSTANTIATE_TEST_SUITE_P(
    Helper, Texts,
    testing::Values(
        TEXT("BadenWuerttemberg", GetBOS_STATE(2), "Baden-Würtemberg"),
        TEXT("EndFromVehicle", GetBOS_STATUS(11, 0), "Ende Folgetelegramm"),
        TEXT("EndFromControlCentre", GetBOS_STATUS(11, 2), "Ende Folgetelegram"),
        TEXT("StatusBeyondTableWithDirection", GetBOS_STATUS(16, 2), "unknown"),
        TEXT("Pager", GetBOS_STATUS(14, 2), "Digitaler Meldeempfänger"),
        TEXT("VdewEmergency", GetVDEW_BAK(8), "ermergency call"),
        TEXT("ZveiDisposible", GetZVEI_BAK(14), "disposible"),
        TEXT("MptLast", GetMPT_TRANSMISSION_TYPE(3), "System Operation"),
        TEXT("MptOwnDefault", GetMPT_TRANSMISSION_TYPE(4), "unkown"),
        TEXT("MptBeyond", GetMPT_TRANSMISSION_TYPE(7), "unkown"),
        TEXT("MptMaximum", GetMPT_TRANSMISSION_TYPE(0xFFFFFFFFu), "unkown"),
        TEXT("MptFirst", GetMPT_TRANSMISSION_TYPE(0), "Voice"),
        TEXT("CrcOk", GetCRCText(true), "ok"), TEXT("CrcNotOk", GetCRCText(false), "not ok"),
        TEXT("PidNoData", GetPR_PID(0x00), "No data burst"),
        TEXT("PidX25", GetPR_PID(0x01), "ISO 8208/CCITT X.25 PLP"),
        TEXT("PidUnnamedOneDigit", GetPR_PID(0x02), "0x02"),
        TEXT("PidUnnamed", GetPR_PID(0x10), "0x10"),
        TEXT("PidLowerCaseHex", GetPR_PID(0xAB), "0xab"),
        TEXT("PidNoLayer3", GetPR_PID(0xF0), "No Layer 3 protocol implemented unknown"),
        TEXT("PidEscape", GetPR_PID(0xFF),
             "Escape character. Next octet contains more Level 3 protocol information."),
        TEXT("PidBeyondOneOctet", GetPR_PID(0x1FF), "0x1ff"),
        TEXT("CountryFirst", GetCountryName(1), "United States of America"),
        TEXT("CountryVatican", GetCountryName(39), "Vatican City State"),
        TEXT("CountryVaticanOwnCode", GetCountryName(379), "Vatican City State"),
        TEXT("CountryLast", GetCountryName(998), "Uzbekistan (Republic of)"),
        TEXT("CountryZero", GetCountryName(0), "000 (unknown)"),
        TEXT("CountryOneDigit", GetCountryName(5), "005 (unknown)"),
        TEXT("CountryBeyond", GetCountryName(999), "999 (unknown)"),
        TEXT("CountryFourDigits", GetCountryName(1000), "1000 (unknown)")),
    [](testing::TestParamInfo<TextRow> const& info) { return std::string(info.param.name); });

// The built-in E.164 table is the shipped list, row for row, with the Vatican on code 39.
TEST(TransmissionSystemHelper, CountryTableIsTheShippedList)
{
    QFile file(QStringLiteral(ZELKO_SOURCE_DIR "/data/e164_country_codes.csv"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text));
    TransmissionSystemHelper helper;
    int rows = 0;
    while (!file.atEnd()) {
        QString const line = QString::fromUtf8(file.readLine()).trimmed();
        if (line.startsWith(QLatin1Char('#'))) {
            continue;
        }
        quint32 const code = line.section(QLatin1Char(';'), 0, 0).toUInt();
        QString const name =
            code == 39 ? QStringLiteral("Vatican City State") : line.section(QLatin1Char(';'), 1);
        EXPECT_EQ(helper.GetCountryName(code), name) << "code " << code;
        ++rows;
    }
    EXPECT_EQ(rows, 225);
}

class FakeTranslator : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(char const* context, char const* text, char const*, int) const override
    {
        bool const mine =
            qstrcmp(context, "zelkodatastreamconverter::TransmissionSystemHelper") == 0;
        return mine ? QStringLiteral("[%1]").arg(QString::fromUtf8(text)) : QString();
    }
};

TEST(TransmissionSystemHelper, CountryNamesAndProtocolsAreTranslated)
{
    int argc = 1;
    char name[] = "test";
    char* argv[] = {name, nullptr};
    QCoreApplication application(argc, argv);
    FakeTranslator translator;
    ASSERT_TRUE(QCoreApplication::installTranslator(&translator));
    TransmissionSystemHelper helper;
    EXPECT_EQ(helper.GetCountryName(41), QStringLiteral("[Switzerland (Confederation of)]"));
    EXPECT_EQ(helper.GetPR_PID(0xCF), QStringLiteral("[NET/ROM]"));
    QCoreApplication::removeTranslator(&translator);
}

// Runs the test in a directory of its own and returns to the previous one afterwards.
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

std::ostream& operator<<(std::ostream& out, MIDRow const& row)
{
    return out << row.name;
}

class MIDFile : public testing::TestWithParam<MIDRow>
{
};

TEST_P(MIDFile, GivesTheValueAsTheFileHasIt)
{
    MIDRow const& row = GetParam();
    QTemporaryDir directory;
    if (row.file) {
        writeMIDFile(directory.path(), row.file);
    }
    InDirectory const inside(directory.path());
    TransmissionSystemHelper helper;
    EXPECT_EQ(helper.GetMIDCountryName(row.mid), QString::fromUtf8(row.expected));
}

INSTANTIATE_TEST_SUITE_P(
    Helper, MIDFile,
    testing::Values(
        MIDRow{"Missing", nullptr, 211, "211 (unknown)"},
        MIDRow{"MissingLeavesTheEmptyMarker", nullptr, 0xFFFFFFFFu, ""},
        MIDRow{"ValueKeepsSeparatorAndLineEnd", "201;Albania\n211;Germany\n", 211, ";Germany\n"},
        MIDRow{"CarriageReturnKept", "211;Germany\r\n", 211, ";Germany\r\n"},
        MIDRow{"LastLineWithoutEnd", "201;Albania\n211;Germany", 211, ";Germany"},
        MIDRow{"OnlyFirstSeparatorSplits", "211;Germany;DE\n", 211, ";Germany;DE\n"},
        MIDRow{"CommentSkipped", "#211;Comment\n201;Albania\n", 211, "211 (unknown)"},
        MIDRow{"CommentOnlyLeavesTheMarker", "#211;Comment\n", 0xFFFFFFFFu, ""},
        MIDRow{"LineWithoutSeparatorSkipped", "211 Germany\n201;Albania\n", 211, "211 (unknown)"},
        MIDRow{"NoUsableLineLeavesTheMarker", "211 Germany\n", 0xFFFFFFFFu, ""},
        MIDRow{"UnparsableKeyIsZero", "21a;Nowhere\n", 0, ";Nowhere\n"},
        MIDRow{"EmptyKeyIsZero", ";Nowhere\n", 0, ";Nowhere\n"},
        MIDRow{"LaterLineWins", "211;Old\n211;New\n", 211, ";New\n"},
        MIDRow{"UsableLineMeansNoMarker", "211;Germany\n", 0xFFFFFFFFu, "4294967295 (unknown)"},
        MIDRow{"PaddedFallback", "211;Germany\n", 7, "007 (unknown)"}),
    [](testing::TestParamInfo<MIDRow> const& info) { return std::string(info.param.name); });

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

TEST(TransmissionSystemHelper, ShippedMIDFileCoversTheMIDRange)
{
    InDirectory const inside(QStringLiteral(ZELKO_SOURCE_DIR "/data"));
    TransmissionSystemHelper helper;
    EXPECT_EQ(helper.GetMIDCountryName(201), QStringLiteral(";Albania\n"));
    EXPECT_EQ(helper.GetMIDCountryName(775), QStringLiteral(";Venezuela\n"));
    EXPECT_EQ(helper.GetMIDCountryName(0), QStringLiteral("000 (unknown)"));
}

} // namespace
