#include <QFile>
#include <alphabetkit/alphabet.h>
#include <alphabetkit/codetranslator.h>
#include <gtest/gtest.h>
#include <support/rowname.h>

using namespace AlphabetKit;

namespace {

QString const origin = QStringLiteral("t.alphabet");

// A small valid two-shift alphabet; the malformed cases below are edits of it.
char const* const validText = "name = Test\n"        // 1
                              "decoders = RTTY\n"    // 2
                              "width = 5\n"          // 3
                              "\n"                   // 4
                              "[letters]\n"          // 5
                              "1 = E\n"              // 6
                              "27 = shift figures\n" // 7
                              "31 = shift letters\n" // 8
                              "[figures]\n"          // 9
                              "1 = 3\n"              // 10
                              "27 = shift figures\n" // 11
                              "31 = shift letters\n" // 12
                              "end\n";               // 13

QString parseError(QByteArray const& text)
{
    QString error;
    AlphabetPtr const alphabet = Alphabet::parse(text, origin, error);
    if (alphabet) {
        return QStringLiteral("(parsed)");
    }
    EXPECT_FALSE(error.isEmpty());
    return error;
}

// An edit that misses leaves the valid text, which then fails its row.
QByteArray edited(char const* from, char const* to)
{
    return QByteArray(validText).replace(from, to);
}

struct MalformedCase
{
    char const* name;
    QByteArray text;
    char const* error;
};

std::vector<MalformedCase> malformedCases()
{
    return {
        {"value only a comment", edited("1 = E", "1 = #E"),
         "t.alphabet:6: no value for code \"1\""},
        {"missing table", edited("[figures]\n1 = 3\n27 = shift figures\n31 = shift letters\n", ""),
         "t.alphabet:7: shift to unknown table \"figures\""},
        {"no table at all", "name = X\nwidth = 5\nend\n", "t.alphabet: no table"},
        {"truncated before end", edited("end\n", ""),
         "t.alphabet: file ends before its \"end\" line (truncated?)"},
        {"empty file", "", "t.alphabet: file ends before its \"end\" line (truncated?)"},
        {"width zero", edited("width = 5", "width = 0"),
         "t.alphabet:3: width must be a number from 1 to 16: \"0\""},
        {"width one past maximum", edited("width = 5", "width = 17"),
         "t.alphabet:3: width must be a number from 1 to 16: \"17\""},
        {"width not a number", edited("width = 5", "width = five"),
         "t.alphabet:3: width must be a number from 1 to 16: \"five\""},
        {"missing width", "name = X\nend\n", "t.alphabet: missing width"},
        {"table before width", edited("width = 5\n", ""),
         "t.alphabet:4: width must come before the first table"},
        {"missing name", edited("name = Test\n", "\n"), "t.alphabet: missing name"},
        {"empty name", edited("name = Test", "name ="), "t.alphabet:1: empty name"},
        {"code one past width", edited("1 = 3", "32 = 3"),
         "t.alphabet:10: code 32 does not fit in 5 bits"},
        {"hex code one past width", edited("1 = 3", "0x20 = 3"),
         "t.alphabet:10: code 0x20 does not fit in 5 bits"},
        {"duplicate code", edited("1 = 3\n", "1 = 3\n0b00001 = 4\n"),
         "t.alphabet:11: duplicate code 1 in table \"figures\" (first on line 10)"},
        {"range overlaps a code", edited("1 = E\n", "1 = E\n0-3 = none\n"),
         "t.alphabet:7: duplicate code 1 in table \"letters\" (first on line 6)"},
        {"range runs backwards", edited("1 = E", "3-1 = E"),
         "t.alphabet:6: range runs backwards: \"3-1\""},
        {"not a code", edited("1 = E", "E = E"), "t.alphabet:6: not a code: \"E\""},
        {"no value", edited("1 = E", "1 ="), "t.alphabet:6: no value for code \"1\""},
        {"unknown value word", edited("1 = E", "1 = EE"), "t.alphabet:6: unknown value \"EE\""},
        {"surrogate code point", edited("1 = E", "1 = U+D800"),
         "t.alphabet:6: unknown value \"U+D800\""},
        {"shift without table", edited("27 = shift figures\n31", "27 = shift\n31"),
         "t.alphabet:7: \"shift\" needs exactly one table name"},
        {"shift after text without table", edited("1 = 3", "1 = 3 shift"),
         "t.alphabet:10: \"shift\" needs exactly one table name"},
        {"shift after text to unknown table", edited("1 = 3", "1 = 3 shift russian"),
         "t.alphabet:10: shift to unknown table \"russian\""},
        {"shift after none", edited("1 = 3", "1 = none shift letters"),
         "t.alphabet:10: unknown value \"none\""},
        {"unknown key", edited("width = 5", "width = 5\ncolour = red"),
         "t.alphabet:4: unknown key \"colour\""},
        {"duplicate key", edited("width = 5", "width = 5\nwidth = 5"),
         "t.alphabet:4: duplicate key \"width\""},
        {"bad direction", edited("width = 5", "width = 5\ndirection = up"),
         "t.alphabet:4: direction must be ltr or rtl: \"up\""},
        {"initial table undefined", edited("width = 5", "width = 5\ninitial = russian"),
         "t.alphabet:4: initial table \"russian\" is not defined"},
        {"table defined twice", edited("[figures]", "[letters]"),
         "t.alphabet:9: table \"letters\" defined twice"},
        {"table without name", edited("[figures]", "[ ]"), "t.alphabet:9: table without a name"},
        {"line without equals", edited("1 = E", "1 E"),
         "t.alphabet:6: expected \"key = value\": \"1 E\""},
        {"text after end", QByteArray(validText) + "1 = E\n",
         "t.alphabet:14: text after the end line"},
        {"not UTF-8", edited("= E", "= \xff"), "t.alphabet: not UTF-8 text"},
    };
}

} // namespace

using MalformedAlphabet = testing::TestWithParam<MalformedCase>;

TEST_P(MalformedAlphabet, GivesItsExactMessage)
{
    EXPECT_EQ(parseError(GetParam().text), QString::fromUtf8(GetParam().error));
}

INSTANTIATE_TEST_SUITE_P(Files, MalformedAlphabet, testing::ValuesIn(malformedCases()),
                         zelkotest::RowName());

TEST(AlphabetParse, ValidTextParses)
{
    ASSERT_EQ(parseError(validText), QStringLiteral("(parsed)"));
}

// Each 16-bit table costs about a megabyte: sixteen tables are the most an alphabet may have.
TEST(AlphabetParse, TableCountBoundary)
{
    auto withTables = [](int count) {
        QByteArray text("name = Wide\nwidth = 16\n");
        for (int i = 0; i < count; ++i) {
            text += "[t" + QByteArray::number(i) + "]\n0xFFFF = same\n";
        }
        return text + "end\n";
    };
    EXPECT_EQ(parseError(withTables(16)), QStringLiteral("(parsed)"));
    EXPECT_EQ(parseError(withTables(17)), QStringLiteral("t.alphabet:35: more than 16 tables"));
}

TEST(AlphabetParse, EveryTruncationOfAShippedFileIsRefused)
{
    QFile file(QStringLiteral(ZELKO_SOURCE_DIR "/data/alphabets/MTK-2.alphabet"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QByteArray const whole = file.readAll();
    ASSERT_TRUE(whole.endsWith("end\n"));
    // Every cut before the final "end" must fail cleanly; cutting only the last newline is
    // still a whole file.
    for (int length = 0; length < whole.size() - 1; ++length) {
        QString error;
        EXPECT_EQ(Alphabet::parse(whole.left(length), origin, error), nullptr) << length;
        EXPECT_FALSE(error.isEmpty()) << length;
    }
    QString error;
    EXPECT_NE(Alphabet::parse(whole.left(whole.size() - 1), origin, error), nullptr)
        << error.toStdString();
}

TEST(AlphabetParse, FormBoundaries)
{
    struct
    {
        char const* name;
        char const* text;
        bool valid;
    } const cases[] = {
        {"width 1, code 1", "name=A\nwidth=1\n[t]\n1 = X\nend\n", true},
        {"width 1, code 2", "name=A\nwidth=1\n[t]\n2 = X\nend\n", false},
        {"width 16, code 0xFFFF", "name=A\nwidth=16\n[t]\n0xFFFF = X\nend\n", true},
        {"width 16, code 0x10000", "name=A\nwidth=16\n[t]\n0x10000 = X\nend\n", false},
        {"width 16, full range", "name=A\nwidth=16\n[t]\n0-0xFFFF = same\nend\n", true},
        {"three-digit decimal code", "name=A\nwidth=8\n[t]\n255 = X\nend\n", true},
        {"short hex code", "name=A\nwidth=4\n[t]\n0x8 = X\nend\n", true},
        {"binary code one past width", "name=A\nwidth=3\n[t]\n0b1000 = X\nend\n", false},
        {"largest code point", "name=A\nwidth=1\n[t]\n1 = U+10FFFF\nend\n", true},
        {"one past the largest code point", "name=A\nwidth=1\n[t]\n1 = U+110000\nend\n", false},
        {"byte order mark", "\xEF\xBB\xBFname=A\nwidth=1\n[t]\n1 = X\nend\n", true},
    };
    for (auto const& c : cases) {
        QString error;
        EXPECT_EQ(Alphabet::parse(c.text, origin, error) != nullptr, c.valid) << c.name;
    }
}

TEST(AlphabetParse, ValueForms)
{
    QString error;
    AlphabetPtr const a = Alphabet::parse(
        "name = Forms  # trailing comment\r\ndecoders = X, y ,,\nwidth = 4\nunknown = _\n"
        "direction = rtl\n[t]\n0 = CR LF\n1 = U+1F600\n2 = U+0023 # hash\n3 = =\n"
        "4-5 = same\n6 = TAB SP\n0B111 = Z\nend\n",
        origin, error);
    ASSERT_NE(a, nullptr) << error.toStdString();
    EXPECT_EQ(a->name(), QStringLiteral("Forms"));
    EXPECT_EQ(a->decoders(), (QStringList{QStringLiteral("X"), QStringLiteral("y")}));
    EXPECT_TRUE(a->rightToLeft());
    EXPECT_TRUE(a->offeredBy(QStringLiteral("x")));
    EXPECT_FALSE(a->offeredBy(QStringLiteral("z")));
    CodeTranslator translator(a);
    QString const codes = QString(QChar(0)) + QChar(1) + QChar(2) + QChar(3) + QChar(4) + QChar(5) +
                          QChar(6) + QChar(7) + QChar(16);
    EXPECT_EQ(translator.translate(codes),
              QStringLiteral("\r\n\U0001F600#=") + QChar(4) + QChar(5) + QStringLiteral("\t Z_"));
}

TEST(AlphabetParse, UnknownTextDefaultsToReplacementCharacter)
{
    QString error;
    AlphabetPtr const a = Alphabet::parse("name=A\nwidth=2\n[t]\n0 = X\nend\n", origin, error);
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(CodeTranslator(a).translate(QString(QChar(1)) + QChar(0) + QChar(4)),
              QStringLiteral("\uFFFDX\uFFFD"));
    AlphabetPtr const silent =
        Alphabet::parse("name=A\nwidth=2\nunknown = none\n[t]\n0 = X\nend\n", origin, error);
    ASSERT_NE(silent, nullptr);
    EXPECT_EQ(CodeTranslator(silent).translate(QString(QChar(1)) + QChar(0)), QStringLiteral("X"));
}
