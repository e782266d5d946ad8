#include <QTemporaryDir>
#include <QVector>
#include <alphabetkit/simplemorsehandler.h>
#include <alphabetkit/udadecoder.h>
#include <gtest/gtest.h>

using AlphabetKit::UdaDecoder;

namespace {

QString const dataDir = QStringLiteral(ZELKO_SOURCE_DIR "/data/alphabets");

// Packs codes of `bits` bits from the least significant bit of the first byte on.
QByteArray packBytes(QVector<unsigned> const& codes, unsigned bits)
{
    QByteArray bytes(int((codes.size() * bits + 7) / 8), '\0');
    unsigned position = 0;
    for (unsigned const code : codes) {
        for (unsigned bit = 0; bit < bits; ++bit, ++position) {
            if (code & (1u << bit)) {
                bytes[int(position / 8)] =
                    char(uchar(bytes[int(position / 8)]) | (1u << (position % 8)));
            }
        }
    }
    return bytes;
}

QVector<unsigned> packWords(QVector<unsigned> const& codes, unsigned bits)
{
    QVector<unsigned> words(int((codes.size() * bits + 31) / 32), 0u);
    unsigned position = 0;
    for (unsigned const code : codes) {
        for (unsigned bit = 0; bit < bits; ++bit, ++position) {
            if (code & (1u << bit)) {
                words[int(position / 32)] |= 1u << (position % 32);
            }
        }
    }
    return words;
}

std::unique_ptr<UdaDecoder> decoderWith(QString const& alphabet)
{
    auto decoder = std::make_unique<UdaDecoder>();
    decoder->LoadAlphabets(dataDir);
    EXPECT_TRUE(decoder->SelectAlphabet(alphabet)) << alphabet.toStdString();
    return decoder;
}

} // namespace

TEST(UdaDecoder, WithoutAlphabetEveryDecodeFailsAndLeavesOutAlone)
{
    UdaDecoder decoder;
    decoder.LoadAlphabets(dataDir);
    EXPECT_EQ(decoder.GetCurrentAlphabet(), QStringLiteral("None"));
    QString out = QStringLiteral("untouched");
    QByteArray bytes("AB");
    unsigned words[1] = {0x41};
    EXPECT_FALSE(decoder.DecodeASCII(out, bytes));
    EXPECT_FALSE(decoder.DecodeUnicode(out, bytes));
    EXPECT_FALSE(decoder.DecodeBinary(out, bytes, 2, 8));
    EXPECT_FALSE(decoder.DecodeBinary(out, words, 1, 8));
    EXPECT_EQ(out, QStringLiteral("untouched"));
}

TEST(UdaDecoder, BinaryPackingBoundaries)
{
    auto decoder = decoderWith(QStringLiteral("International"));
    QVector<unsigned> const ryry{31, 10, 21, 10, 21, 27, 23}; // 35 bits: crosses a word
    struct
    {
        char const* name;
        unsigned elements;
        unsigned bits;
        int bytes;
        bool ok;
        QString text;
    } const cases[] = {
        {"all elements", 7, 5, 5, true, "RYRY1"}, {"zero elements", 0, 5, 0, true, ""},
        {"one element", 1, 5, 1, true, ""},       {"one byte too few", 7, 5, 4, false, ""},
        {"zero bits", 7, 0, 5, false, ""},        {"33 bits", 1, 33, 5, false, ""},
    };
    QByteArray const packed = packBytes(ryry, 5);
    QVector<unsigned> words = packWords(ryry, 5);
    for (auto const& c : cases) {
        decoder->ClearBuffer();
        QByteArray bytes = packed.left(c.bytes);
        QString out = QStringLiteral("x");
        EXPECT_EQ(decoder->DecodeBinary(out, bytes, c.elements, c.bits), c.ok) << c.name;
        EXPECT_EQ(out, c.ok ? c.text : QStringLiteral("x")) << c.name;
        if (c.bytes == packed.size()) {
            decoder->ClearBuffer();
            out = QStringLiteral("x");
            EXPECT_EQ(decoder->DecodeBinary(out, words.data(), c.elements, c.bits), c.ok) << c.name;
            EXPECT_EQ(out, c.ok ? c.text : QStringLiteral("x")) << c.name;
        }
    }
    // A 7-bit code in 8-bit elements: CCIR 476 "ZCZC".
    auto ccir = decoderWith(QStringLiteral("CCIR 476"));
    QByteArray zczc("\x63\x1D\x63\x1D");
    QString out;
    EXPECT_TRUE(ccir->DecodeBinary(out, zczc, 4, 8));
    EXPECT_EQ(out, QStringLiteral("ZCZC"));
}

TEST(UdaDecoder, BytesUnitsAndBufferAcrossCalls)
{
    auto decoder = decoderWith(QStringLiteral("International"));
    QString out;
    QByteArray figs("\x1B");
    QByteArray q("\x17");
    ASSERT_TRUE(decoder->DecodeASCII(out, figs));
    EXPECT_EQ(out, QString());
    ASSERT_TRUE(decoder->DecodeASCII(out, q));
    EXPECT_EQ(out, QStringLiteral("1")); // figures shift kept from the previous payload
    decoder->ClearBuffer();
    ASSERT_TRUE(decoder->DecodeASCII(out, q));
    EXPECT_EQ(out, QStringLiteral("Q"));

    auto hebrew = decoderWith(QStringLiteral("Hebrew SI 960"));
    QByteArray units("\x60\x00\x7A\x00\x41\x00", 6); // low byte first
    ASSERT_TRUE(hebrew->DecodeUnicode(out, units));
    EXPECT_EQ(out, QStringLiteral("\u05D0\u05EAA"));
    EXPECT_TRUE(hebrew->TextDirectionRTL());
    EXPECT_EQ(hebrew->GetCurrentSettings(), QStringLiteral("Hebrew SI 960"));
    QByteArray odd("\x60\x00\x7A", 3);
    out = QStringLiteral("x");
    EXPECT_FALSE(hebrew->DecodeUnicode(out, odd));
    EXPECT_EQ(out, QStringLiteral("x"));
    QByteArray swapped("\x00\x60", 2); // 0x6000 is no 7-bit code
    ASSERT_TRUE(hebrew->DecodeUnicode(out, swapped));
    EXPECT_EQ(out, QStringLiteral("\uFFFD"));
}

TEST(UdaDecoder, ConvertToStringCleansBytes)
{
    UdaDecoder decoder;
    QString out;
    decoder.ConvertToString(out, QByteArray("\x41\xA0\x07\x0D", 4));
    EXPECT_EQ(out, QStringLiteral("A\n_\r"));
    decoder.ConvertToString(out, QByteArray("\x00\x09\x0A\x7F\xE9 ", 6));
    EXPECT_EQ(out, QStringLiteral("__\n_\u00E9 "));
    decoder.ConvertToString(out, QByteArray());
    EXPECT_EQ(out, QString());
}

TEST(UdaDecoder, AlphabetListsAndSelection)
{
    UdaDecoder decoder;
    decoder.LoadAlphabets(dataDir);
    EXPECT_EQ(decoder.GetAlphabets().size(), 10);
    EXPECT_EQ(decoder.GetAlphabets(QStringLiteral("SITOR-B")), (QStringList{"None", "CCIR 476"}));
    EXPECT_EQ(decoder.GetAlphabets(QStringLiteral("FSK")), QStringList{"None"});
    // Any loaded alphabet can be selected; offering is the caller's check.
    EXPECT_TRUE(decoder.SelectAlphabet(QStringLiteral("MTK-2")));
    EXPECT_FALSE(decoder.SelectAlphabet(QStringLiteral("mtk-2")));
    EXPECT_EQ(decoder.GetCurrentAlphabet(), QStringLiteral("MTK-2"));
    QTemporaryDir empty;
    decoder.LoadAlphabets(empty.path());
    EXPECT_EQ(decoder.GetCurrentAlphabet(), QStringLiteral("None"));
    EXPECT_EQ(decoder.GetAlphabets(), QStringList{"None"});
    EXPECT_EQ(decoder.LoadErrors(), QStringList());
}

TEST(SimpleMorseHandler, TranslatesElementsAcrossCalls)
{
    SimpleMorseHandler handler;
    EXPECT_EQ(handler.AvailableAlphabets(), QStringList{"None"});
    handler.SetAlphabetsDir(dataDir);
    handler.SetDecoder(QStringLiteral("CW"));
    EXPECT_EQ(handler.LoadErrors(), QStringList());
    ASSERT_TRUE(handler.SetAlphabet(QStringLiteral("Morse")));
    struct
    {
        char const* name;
        QStringList calls;
        QString text;
    } const cases[] = {
        {"one call", {"... --- ... "}, "SOS"},
        {"character split over calls", {"..", ". -", "-- ."}, "SO"},
        {"word gap", {".- /-... "}, "A B"},
        {"unknown group", {"........- "}, "\uFFFD"},
        {"prosign and digit", {"...-.- .---- "}, "<SK>1"},
        {"other units pass", {".-\n"}, "A\n"},
    };
    for (auto const& c : cases) {
        handler.ResetInternalState();
        QString text;
        for (QString const& call : c.calls) {
            text += handler.Translate(call);
        }
        EXPECT_EQ(text, c.text) << c.name;
    }
    handler.ResetInternalState();
    QString const raw = handler.Backtranslate(QStringLiteral("cq de <SK> 73?"));
    EXPECT_EQ(handler.Translate(raw), QStringLiteral("CQ DE <SK> 73?"));
    EXPECT_TRUE(handler.SetAlphabet(QStringLiteral("None")));
    EXPECT_EQ(handler.Translate(QStringLiteral(".-")), QStringLiteral(".-"));
}
