#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTextStream>
#include <alphabetkit/alphabetcatalog.h>
#include <alphabetkit/codechandler.h>
#include <alphabetkit/codetranslator.h>
#include <gtest/gtest.h>
#include <initializer_list>
#include <support/golden.h>
#include <support/qstringprinter.h>
#include <support/textrows.h>
#include <support/tracecapture.h>

using namespace AlphabetKit;

namespace {

QString const dataDir = QStringLiteral(ZELKO_SOURCE_DIR "/data/alphabets");

QString codes(std::initializer_list<unsigned> values)
{
    QString raw;
    for (unsigned const value : values) {
        raw += QChar(ushort(value));
    }
    return raw;
}

std::unique_ptr<CodecHandler> handlerFor(QString const& decoder, QString const& alphabet)
{
    auto handler = std::make_unique<CodecHandler>();
    handler->SetAlphabetsDir(dataDir);
    handler->SetDecoder(decoder);
    EXPECT_TRUE(handler->SetAlphabet(alphabet)) << alphabet.toStdString();
    return handler;
}

void writeFile(QString const& path, QByteArray const& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

} // namespace

TEST(AlphabetCatalog, LoadsEveryShippedAlphabet)
{
    AlphabetCatalog catalog;
    ASSERT_TRUE(catalog.load(dataDir));
    EXPECT_EQ(catalog.errors(), QStringList());
    EXPECT_EQ(catalog.allNames(),
              (QStringList{"None", "ASCII", "CCIR 476", "Hebrew SI 960", "International",
                           "International USOS", "MTK-2", "MTK-2 USOS", "US-TTY", "US-TTY USOS"}));
    EXPECT_EQ(catalog.names(QStringLiteral("baudot")),
              (QStringList{"None", "International", "International USOS", "MTK-2", "MTK-2 USOS",
                           "US-TTY", "US-TTY USOS"}));
    EXPECT_EQ(catalog.names(QStringLiteral("NAVTEX")), (QStringList{"None", "CCIR 476"}));
    EXPECT_EQ(catalog.names(QStringLiteral("NONE")), QStringList{"None"});
    EXPECT_TRUE(catalog.find(QStringLiteral("Hebrew SI 960"))->rightToLeft());
    EXPECT_FALSE(catalog.find(QStringLiteral("International"))->rightToLeft());
}

TEST(AlphabetCatalog, InternationalMatchesTheIta2ReferenceTable)
{
    AlphabetCatalog catalog;
    catalog.load(dataDir);
    AlphabetPtr const ita2 = catalog.find(QStringLiteral("International"));
    ASSERT_NE(ita2, nullptr);
    int const letters = ita2->tableName(0) == QLatin1String("letters") ? 0 : 1;
    QHash<QString, QString> const controls{{"LF", "\n"},      {"CR", "\r"},      {"SP", " "},
                                           {"WRU", "\u2405"}, {"BEL", "\u2407"}, {"NUL", ""}};
    QHash<QString, CodeEntry::Kind> const kinds{
        {"NUL", CodeEntry::Nothing}, {"FIGS", CodeEntry::Shift}, {"LTRS", CodeEntry::Shift}};
    int rows = 0;
    for (QString const& line :
         QString::fromUtf8(zelkotest::readFile(
                               QStringLiteral(ZELKO_SOURCE_DIR "/tests/data/alphabetkit/ita2.csv")))
             .split('\n')) {
        QStringList const fields = line.split(';'); // code;letters;figures
        if (fields.size() != 3 || line.startsWith('#')) {
            continue;
        }
        for (int shift = 0; shift < 2; ++shift) {
            QString const& name = fields[1 + shift];
            CodeEntry const& got =
                ita2->entry(shift == 0 ? letters : 1 - letters, fields[0].toUInt());
            CodeEntry::Kind const kind =
                kinds.value(name, name.isEmpty() ? CodeEntry::Unassigned : CodeEntry::Text);
            EXPECT_EQ(int(got.kind), int(kind)) << line.toStdString();
            EXPECT_EQ(got.text, kind == CodeEntry::Shift ? QString() : controls.value(name, name))
                << line.toStdString();
            if (kind == CodeEntry::Shift) {
                EXPECT_EQ(got.shift, name == QLatin1String("FIGS") ? 1 - letters : letters);
            }
        }
        ++rows;
    }
    EXPECT_EQ(rows, 32);
}

TEST(AlphabetCatalog, Ccir476UsesExactlyTheThirtyFiveFourOfSevenCodes)
{
    AlphabetCatalog catalog;
    catalog.load(dataDir);
    AlphabetPtr const ccir = catalog.find(QStringLiteral("CCIR 476"));
    AlphabetPtr const ita2 = catalog.find(QStringLiteral("International"));
    ASSERT_TRUE(ccir && ita2);
    int used = 0;
    for (unsigned code = 0; code < 128; ++code) {
        bool const valid = __builtin_popcount(code) == 4;
        bool assigned = false;
        for (int table = 0; table < ccir->tableCount(); ++table) {
            assigned = assigned || ccir->entry(table, code).kind != CodeEntry::Unassigned;
        }
        EXPECT_EQ(assigned, valid) << "code " << code;
        used += assigned ? 1 : 0;
    }
    EXPECT_EQ(used, 35);
    // Each CCIR 476 letter carries the figure that ITA2 gives the same letter.
    QHash<QString, QString> ita2Figures;
    for (unsigned code = 0; code < 32; ++code) {
        ita2Figures.insert(ita2->entry(0, code).text, ita2->entry(1, code).text);
    }
    for (unsigned code = 0; code < 128; ++code) {
        QString const letter = ccir->entry(0, code).text;
        if (!letter.isEmpty()) {
            EXPECT_EQ(ccir->entry(1, code).text, ita2Figures.value(letter)) << "code " << code;
        }
    }
}

TEST(AlphabetCatalog, TablesInCodeOrderMatchThePublishedTables)
{
    // What each table prints, code by code in ascending order, as the published tables list it
    // (International is compared with its reference table above).
    struct
    {
        char const* alphabet;
        int table;
        char const* printed;
    } const cases[] = {
        {"US-TTY", 1, "3\n- \u240787\r$4',!:(5\")2#6019?&./;"},
        {"CCIR 476", 0, "JFCKWYPQGMXVASIUDREN ZLH\nOBT\r"},
        {"MTK-2", 0, "Е\nА СИУ\rДРЙНФЦКТЗЛВХЫПЯОБГМЬЖ"},
        {"MTK-2", 2, "3\n- '87\r\u24054Ю,Э:(5+)2Щ6019?Ш./="},
    };
    AlphabetCatalog catalog;
    catalog.load(dataDir);
    for (auto const& c : cases) {
        AlphabetPtr const alphabet = catalog.find(QString::fromUtf8(c.alphabet));
        ASSERT_NE(alphabet, nullptr) << c.alphabet;
        QString printed;
        for (unsigned code = 0; code < (1u << alphabet->width()); ++code) {
            printed += alphabet->entry(c.table, code).text;
        }
        EXPECT_EQ(printed, QString::fromUtf8(c.printed)) << c.alphabet << " table " << c.table;
    }
}

using KnownCodes = testing::TestWithParam<zelkotest::TextRow>;

TEST_P(KnownCodes, TranslateToTheirText)
{
    QStringList const parts = GetParam().input.split(QLatin1Char('|'));
    ASSERT_EQ(parts.size(), 3);
    QString raw;
    for (QString const& code : parts[2].split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        raw += QChar(code.toUShort());
    }
    EXPECT_EQ(handlerFor(parts[0].trimmed(), parts[1].trimmed())->Translate(raw),
              GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, KnownCodes, testing::ValuesIn(zelkotest::readTextRows("alphabetkit/translations.rows")),
    zelkotest::TextRowName());

TEST(CodecHandler, NonePassesCodeUnits)
{
    QString const units = QStringLiteral("\u00E4\U0001F600\x01");
    EXPECT_EQ(handlerFor(QStringLiteral("anything"), QStringLiteral("None"))->Translate(units),
              units);
}

TEST(CodecHandler, ShiftStateSpansCallsUntilReset)
{
    auto handler = handlerFor(QStringLiteral("BAUDOT"), QStringLiteral("International"));
    EXPECT_EQ(handler->Translate(codes({27})), QString());
    EXPECT_EQ(handler->Translate(codes({23})), QStringLiteral("1"));
    EXPECT_EQ(handler->Translate(codes({23})), QStringLiteral("1"));
    handler->ResetInternalState();
    EXPECT_EQ(handler->Translate(codes({23})), QStringLiteral("Q"));
    handler->Translate(codes({27}));
    ASSERT_TRUE(handler->SetAlphabet(QStringLiteral("US-TTY"))); // selecting resets too
    EXPECT_EQ(handler->Translate(codes({23})), QStringLiteral("Q"));

    auto usos = handlerFor(QStringLiteral("RTTY"), QStringLiteral("International USOS"));
    EXPECT_EQ(usos->Translate(codes({27, 23, 4})), QStringLiteral("1 "));
    EXPECT_EQ(usos->Translate(codes({23})), QStringLiteral("Q"));
    usos->Translate(codes({27}));
    usos->ResetInternalState();
    EXPECT_EQ(usos->Translate(codes({23})), QStringLiteral("Q"));

    auto mtk = handlerFor(QStringLiteral("BAUDOT"), QStringLiteral("MTK-2"));
    mtk->Translate(codes({31}));
    mtk->ResetInternalState();
    EXPECT_EQ(mtk->Translate(codes({3})), QStringLiteral("А")); // Cyrillic again
}

// A host keeps the shift state across sessions; a state of another alphabet or a damaged one
// starts afresh in the initial table.
TEST(CodecHandler, SavedShiftStateRestoresOnlyForTheSameAlphabet)
{
    auto saving = handlerFor(QStringLiteral("BAUDOT"), QStringLiteral("International"));
    saving->Translate(codes({27}));
    QByteArray const saved = saving->SaveInternalState();
    auto restored = handlerFor(QStringLiteral("BAUDOT"), QStringLiteral("International"));
    restored->RestoreInternalState(saved);
    EXPECT_EQ(restored->Translate(codes({23})), QStringLiteral("1")) << saved.constData();
    for (QByteArray const& damaged :
         {QByteArray("US-TTY\n1"), QByteArray("International"), QByteArray("International\nx"),
          QByteArray("Internationa\n1"), QByteArray("International\n\n1"), QByteArray()}) {
        restored->Translate(codes({27}));
        restored->RestoreInternalState(damaged);
        EXPECT_EQ(restored->Translate(codes({23})), QStringLiteral("Q")) << damaged.constData();
    }
}

// Random codes of every alphabet: never more text than codes, and cutting the input in two
// never changes the text.
TEST(CodecHandler, RandomCodesStayBoundedAndSplitAnywhere)
{
    QRandomGenerator random(476);
    auto handler = handlerFor(QStringLiteral("All"), QStringLiteral("None"));
    AlphabetCatalog catalog;
    catalog.load(dataDir);
    for (QString const& alphabet : handler->AvailableAlphabets()) {
        ASSERT_TRUE(handler->SetAlphabet(alphabet));
        for (int round = 0; round < 50; ++round) {
            QString raw;
            int const length = int(random.bounded(round == 0 ? 2000 : 40));
            // Mostly codes of the alphabet's width, some from anywhere.
            for (int i = 0; i < length; ++i) {
                raw += QChar(ushort(random.bounded(i % 8 ? 128 : 0x10000)));
            }
            handler->ResetInternalState();
            QString const whole = handler->Translate(raw);
            EXPECT_LE(whole.size(), raw.size()) << alphabet.toStdString();
            int const cut = int(random.bounded(raw.size() + 1));
            handler->ResetInternalState();
            QString split = handler->Translate(raw.left(cut)); // two statements: order matters
            handler->Translate(raw.constData() + cut, raw.size() - cut, split); // appends
            EXPECT_EQ(split, whole) << alphabet.toStdString() << " cut " << cut;
            CodeTranslator single(catalog.find(alphabet)); // code by code, as UdaDecoder does
            QString byCode;
            for (QChar const unit : raw) {
                single.translate(unit.unicode(), byCode);
            }
            EXPECT_EQ(byCode, whole) << alphabet.toStdString();
        }
    }
}

TEST(CodecHandler, BacktranslateRoundTripsFromAnyState)
{
    struct
    {
        char const* alphabet;
        QString text;
        QString stateBefore; // codes translated first, to leave the receiver in another shift
    } const cases[] = {
        {"International", "RYRY THE QUICK BROWN FOX 1234567890 ?:()-+=/.,'\r\n", codes({27})},
        {"US-TTY", "PRICE $5 #2 & \"OK\"; !", codes({27})},
        {"CCIR 476", "ZCZC FA01\r\nNAVAREA 1 (123)", codes({0x36})},
        {"MTK-2", "ПРИВЕТ MIR 123 ЮЭШЩ", codes({27})},
        {"International USOS", "NR 117 ISSUED 1200 UTC\r\nWIND 25 KT, 3 M", codes({27})},
        {"US-TTY USOS", "PRICE $5 #2 & \"OK\"; !", codes({27})},
        {"MTK-2 USOS", "1 ПРИВЕТ MIR 123 ЮЭШЩ 4 Д 5 X 6 Д", codes({31, 27})},
        {"ASCII", "Hello, World ~ {x}", QString()},
        {"Hebrew SI 960", "\u05E9\u05DC\u05D5\u05DD 1", QString()},
        {"None", "\u00E4\U0001F600", QString()},
    };
    for (auto const& c : cases) {
        auto handler = handlerFor(QStringLiteral("All"), QString::fromUtf8(c.alphabet));
        QString const raw = handler->Backtranslate(c.text);
        handler->Translate(c.stateBefore);
        EXPECT_EQ(handler->Translate(raw), c.text) << c.alphabet;
    }
    // Characters that no table prints are left out.
    auto ita2 = handlerFor(QStringLiteral("All"), QStringLiteral("International"));
    EXPECT_EQ(ita2->Translate(ita2->Backtranslate(QStringLiteral("a@B"))), QStringLiteral("B"));
    EXPECT_EQ(ita2->Backtranslate(QStringLiteral("RY")), codes({31, 10, 21}));
    EXPECT_EQ(ita2->Backtranslate(QStringLiteral(" ")), codes({4})); // same in both shifts
    // With unshift on space no LTRS follows a space, exactly as RTTY senders key it.
    auto usos = handlerFor(QStringLiteral("All"), QStringLiteral("International USOS"));
    EXPECT_EQ(usos->Backtranslate(QStringLiteral("NR 117 ISSUED")),
              codes({31, 12, 10, 4, 27, 23, 23, 7, 4, 6, 5, 5, 7, 1, 9}));
    // From an unknown state MTK-2 reaches Russian with its all-spaces code in one step; the
    // USOS variant has a figures table per letters table, so it fixes the letters first.
    auto mtk = handlerFor(QStringLiteral("All"), QStringLiteral("MTK-2"));
    EXPECT_EQ(mtk->Backtranslate(QStringLiteral("П1")), codes({0, 22, 27, 23}));
    auto mtkUsos = handlerFor(QStringLiteral("All"), QStringLiteral("MTK-2 USOS"));
    EXPECT_EQ(mtkUsos->Backtranslate(QStringLiteral("1 П")), codes({0, 27, 23, 4, 22}));
}

TEST(CodecHandler, SelectionRules)
{
    CodecHandler handler;
    EXPECT_EQ(handler.Alphabet(), QStringLiteral("None"));
    handler.SetAlphabetsDir(dataDir);
    handler.SetDecoder(QStringLiteral("NAVTEX"));
    EXPECT_FALSE(handler.SetAlphabet(QStringLiteral("International"))); // not offered
    EXPECT_FALSE(handler.SetAlphabet(QString()));
    EXPECT_EQ(handler.Alphabet(), QStringLiteral("None"));
    EXPECT_TRUE(handler.SetAlphabet(QStringLiteral("CCIR 476")));
    handler.SetDecoder(QStringLiteral("BAUDOT")); // keeps the alphabet; the caller decides
    EXPECT_EQ(handler.Alphabet(), QStringLiteral("CCIR 476"));
    handler.SetDecoder(QStringLiteral("All"));
    EXPECT_EQ(handler.AvailableAlphabets().size(), 10);
    EXPECT_TRUE(handler.SetAlphabet(QStringLiteral("Hebrew SI 960")));
    EXPECT_TRUE(handler.TextDirectionRTL());

    // Reloading keeps an alphabet that the new directory has, else falls back to "None".
    handler.SetAlphabetsDir(dataDir);
    EXPECT_EQ(handler.Alphabet(), QStringLiteral("Hebrew SI 960"));
    zelkotest::TraceCapture capture;
    handler.SetAlphabetsDir(QStringLiteral("/nonexistent/alphabets"));
    EXPECT_EQ(handler.Alphabet(), QStringLiteral("None"));
    EXPECT_FALSE(handler.TextDirectionRTL());
    EXPECT_EQ(handler.AvailableAlphabets(), QStringList{"None"});
    QString const error =
        QStringLiteral("alphabets directory \"/nonexistent/alphabets\" does not exist");
    EXPECT_EQ(handler.LoadErrors(), QStringList{error});
    EXPECT_EQ(capture.messages(), QStringList{error});
}

TEST(CodecHandler, BadFilesAreSkippedWithTheirErrors)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    QByteArray const ita2 = zelkotest::readFile(dataDir + "/International.alphabet");
    writeFile(dir.filePath("a-good.alphabet"), ita2);
    writeFile(dir.filePath("b-copy.alphabet"), ita2); // same name again
    writeFile(dir.filePath("c-truncated.alphabet"), ita2.left(ita2.indexOf("[figures]")));
    writeFile(dir.filePath("d-width.alphabet"),
              QByteArray(ita2).replace("width = 5", "width = 33"));
    writeFile(dir.filePath("e-missing-table.alphabet"),
              ita2.left(ita2.indexOf("[figures]")) + "end\n");
    writeFile(dir.filePath("f-binary.alphabet"), QByteArray("\x00\xff\xfe garbage", 12));
    writeFile(dir.filePath("ignored.txt"), "not an alphabet");

    zelkotest::TraceCapture capture;
    CodecHandler handler;
    handler.SetAlphabetsDir(dir.path());
    QString const p = dir.path() + '/';
    QStringList const expected{
        "alphabet file skipped: " + p +
            "b-copy.alphabet: alphabet \"International\" is already defined in " + p +
            "a-good.alphabet",
        "alphabet file skipped: " + p +
            "c-truncated.alphabet: file ends before its \"end\" line (truncated?)",
        "alphabet file skipped: " + p +
            "d-width.alphabet:11: width must be a number from 1 to 16: \"33\"",
        "alphabet file skipped: " + p +
            "e-missing-table.alphabet:43: shift to unknown table \"figures\"",
        "alphabet file skipped: " + p + "f-binary.alphabet: not UTF-8 text",
    };
    EXPECT_EQ(handler.LoadErrors(), expected);
    EXPECT_EQ(capture.messages(), expected);
    handler.SetDecoder(QStringLiteral("All"));
    EXPECT_EQ(handler.AvailableAlphabets(), (QStringList{"None", "International"}));
}
