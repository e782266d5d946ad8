#include <QFile>
#include <alphabetkit/alphabet.h>
#include <alphabetkit/codetranslator.h>
#include <gtest/gtest.h>
#include <support/qstringprinter.h>
#include <support/textrows.h>

using namespace AlphabetKit;

namespace {

QString const origin = QStringLiteral("t.alphabet");

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

} // namespace

using AlphabetText = testing::TestWithParam<zelkotest::TextRow>;

TEST_P(AlphabetText, ParsesOrGivesItsExactMessage)
{
    EXPECT_EQ(parseError(GetParam().input.toUtf8()), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Files, AlphabetText,
                         testing::ValuesIn(zelkotest::readTextRows("alphabetkit/parse.rows")),
                         zelkotest::TextRowName());

TEST(AlphabetParse, BytesOutsideUtf8AndAByteOrderMark)
{
    EXPECT_EQ(parseError("name=A\nwidth=1\n[t]\n1 = \xff\nend\n"),
              QStringLiteral("t.alphabet: not UTF-8 text"));
    EXPECT_EQ(parseError("\xEF\xBB\xBFname=A\nwidth=1\n[t]\n1 = X\nend\n"),
              QStringLiteral("(parsed)"));
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
