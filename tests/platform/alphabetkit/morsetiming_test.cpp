// Element timing of SimpleMorseHandler: text keyed at known timing, read back.

#include <alphabetkit/simplemorsehandler.h>
#include <gtest/gtest.h>
#include <recordingwriter/morsekeyer.h>
#include <support/qstringprinter.h>

namespace {

QString const dataDir = QStringLiteral(ZELKO_SOURCE_DIR "/data/alphabets");

double dotMicroseconds(double wpm)
{
    return 1.2e6 / wpm;
}

enum class Distortion
{
    None,
    SplitElements,     ///< every element as two of the same state
    CrackleInWordGaps, ///< a mark of `amount` microseconds in the middle of every word gap
    LongWordGaps,      ///< word gaps of `amount` microseconds
    FadeInLaterDashes, ///< a key-up of `amount` dots in the middle of the later half's dashes
};

struct Keying
{
    double wpm = 20;
    double effectiveWpm = 0; ///< Farnsworth: overall speed with longer gaps; 0: none
    double laterWpm = 0;     ///< speed from the middle word on; 0: no change
    double jitter = 0;       ///< each duration times 1 +- up to this
    Distortion distortion = Distortion::None;
    double amount = 0;
};

QVector<MorseElement> distorted(QVector<zelkorecording::KeyElement> const& elements,
                                Keying const& k)
{
    double const dot = dotMicroseconds(k.wpm);
    auto const amount = quint32(k.amount);
    QVector<MorseElement> out{{false, 50000}}; // 50 ms of silence first
    for (int i = 0; i < elements.size(); ++i) {
        quint32 const length = elements[i].microseconds;
        bool const down = elements[i].keyDown;
        bool const wordGap = !down && length > 5 * dot;
        if (k.distortion == Distortion::SplitElements) {
            out += {{down, length / 2}, {down, length - length / 2}};
        } else if (k.distortion == Distortion::CrackleInWordGaps && wordGap) {
            out += {{false, length / 2}, {true, amount}, {false, length - length / 2}};
        } else if (k.distortion == Distortion::LongWordGaps && wordGap) {
            out += {false, amount};
        } else if (k.distortion == Distortion::FadeInLaterDashes && down && length > 2 * dot &&
                   i >= elements.size() / 2) {
            quint32 const fade = quint32(k.amount * dot);
            out += {{true, (length - fade) / 2}, {false, fade}, {true, (length - fade) / 2}};
        } else {
            out += {down, length};
        }
    }
    return out;
}

/// The elements of `text` keyed as `keying` says.
QVector<MorseElement> key(SimpleMorseHandler& handler, QString const& text, Keying const& k)
{
    QStringList const words = text.split(QLatin1Char(' '));
    int const half = k.laterWpm > 0 ? words.size() / 2 : words.size();
    auto keyed = [&](QStringList const& part, double wpm) {
        QString const code = handler.Backtranslate(part.join(QLatin1Char(' ')) + QLatin1Char(' '));
        return zelkorecording::keyMorse(code, {wpm, k.effectiveWpm, k.jitter, 7});
    };
    QVector<zelkorecording::KeyElement> elements = keyed(words.mid(0, half), k.wpm);
    if (half < words.size()) {
        elements += keyed(words.mid(half), k.laterWpm);
    }
    return distorted(elements, k);
}

struct TimingRow
{
    char const* name;
    char const* text;
    Keying keying;
};

void PrintTo(TimingRow const& row, std::ostream* os)
{
    *os << row.name;
}

class MorseTiming : public testing::TestWithParam<TimingRow>
{
protected:
    void SetUp() override
    {
        m_handler.SetAlphabetsDir(dataDir);
        ASSERT_TRUE(m_handler.SetAlphabet(QStringLiteral("Morse")));
    }
    /// The characters read from the elements fed in three calls.
    QVector<MorseCharacter> read(QVector<MorseElement> const& elements)
    {
        QVector<MorseCharacter> out;
        int const third = elements.size() / 3;
        out += m_handler.AddElements(elements.mid(0, third));
        out += m_handler.AddElements(elements.mid(third, third));
        out += m_handler.AddElements(elements.mid(2 * third));
        out += m_handler.FlushElements();
        return out;
    }
    static QString text(QVector<MorseCharacter> const& characters)
    {
        QString out;
        for (MorseCharacter const& c : characters) {
            out += c.text;
        }
        return out;
    }
    SimpleMorseHandler m_handler;
};

TEST_P(MorseTiming, ReadsTheKeyedText)
{
    QString const sent = QString::fromUtf8(GetParam().text);
    EXPECT_EQ(text(read(key(m_handler, sent, GetParam().keying))), sent);
}

char const* const message = "CQ CQ DE DL1ABC/P 599 TU <SK>";
char const* const pangram = "THE QUICK BROWN FOX JUMPS OVER THE LAZY DOG 0123456789";

TimingRow const timingRows[] = {
    {"ideal_20wpm", message, {20}},
    {"boundary_5wpm", message, {5}},
    {"boundary_60wpm", message, {60}},
    {"dashes_first", "TMO 0 MOT", {18}},
    {"jitter_15pct_25wpm", pangram, {25, 0, 0, 0.15}},
    {"jitter_25pct_12wpm", message, {12, 0, 0, 0.25}},
    {"jitter_30pct_25wpm", message, {25, 0, 0, 0.30}},
    {"farnsworth_18_at_8", pangram, {18, 8}},
    {"farnsworth_30_at_5", message, {30, 5}},
    {"speed_change_15_to_25", pangram, {15, 0, 25}},
    {"speed_change_30_to_20", pangram, {30, 0, 20}},
    {"elements_split_in_two", message, {20, 0, 0, 0, Distortion::SplitElements}},
    {"crackle_in_word_gaps", message, {25, 0, 0, 0, Distortion::CrackleInWordGaps, 4000}},
    // Up to a third of a dot, a fade inside a dash is noise; beyond, the dash is two dots.
    {"fade_in_dashes_0_3_dot", message, {20, 0, 0, 0, Distortion::FadeInLaterDashes, 0.3}},
    {"long_silence_ends_word", "QRT SK", {25, 0, 0, 0, Distortion::LongWordGaps, 30e6}},
};

INSTANTIATE_TEST_SUITE_P(Rows, MorseTiming, testing::ValuesIn(timingRows),
                         [](auto const& info) { return std::string(info.param.name); });

TEST_F(MorseTiming, TimesAndSpeedOfEachCharacter)
{
    QVector<MorseCharacter> const out =
        read(key(m_handler, QStringLiteral("PARIS PARIS"), Keying{20}));
    ASSERT_EQ(out.size(), 11);
    double const dot = dotMicroseconds(20);
    EXPECT_EQ(out[0].elements, QStringLiteral(".--."));
    EXPECT_EQ(out[0].startMicroseconds, 50000);
    EXPECT_EQ(out[0].endMicroseconds, 50000 + qint64(11 * dot));
    EXPECT_EQ(out[5].text, QStringLiteral(" "));
    EXPECT_EQ(out[5].elements, QString());
    // "PARIS" is 43 dots up to its word gap, which lasts 7.
    EXPECT_EQ(out[5].startMicroseconds, 50000 + qint64(43 * dot));
    EXPECT_EQ(out[5].endMicroseconds, 50000 + qint64(50 * dot));
    for (MorseCharacter const& c : out) {
        EXPECT_NEAR(c.wordsPerMinute, 20, 0.1) << c.text.toStdString();
        EXPECT_EQ(c.confidence, 100) << c.text.toStdString();
    }
    // Without a gap after it, the last character still has its speed.
    QVector<MorseElement> unended = key(m_handler, QStringLiteral("PARIS PARIS"), Keying{20});
    unended.removeLast();
    QVector<MorseCharacter> const cut = read(unended);
    ASSERT_EQ(text(cut), QStringLiteral("PARIS PARIS"));
    EXPECT_NEAR(cut.last().wordsPerMinute, 20, 0.1);
}

// Speeds beyond the tracked range read as its nearest end, 2.5 or 120 wpm.
TEST_F(MorseTiming, SpeedsOutsideTheRangeReadAsItsEnds)
{
    for (double wpm : {2.0, 150.0}) {
        QVector<MorseCharacter> const out =
            read(key(m_handler, QStringLiteral("PARIS"), Keying{wpm}));
        ASSERT_EQ(text(out), QStringLiteral("PARIS")) << wpm;
        EXPECT_NEAR(out.last().wordsPerMinute, qBound(2.5, wpm, 120.0), 0.01) << wpm;
    }
}

TEST_F(MorseTiming, AFadeOfHalfADotSplitsADash)
{
    EXPECT_EQ(text(read(key(m_handler, QStringLiteral("PARIS TT"),
                            Keying{20, 0, 0, 0, Distortion::FadeInLaterDashes, 0.5}))),
              QStringLiteral("PARIS II"));
}

TEST_F(MorseTiming, PrintsElementsUnderTheNoneAlphabetAndUnknownGroups)
{
    QVector<MorseElement> const elements = key(m_handler, QStringLiteral("HI"), Keying{20});
    ASSERT_TRUE(m_handler.SetAlphabet(QStringLiteral("None")));
    EXPECT_EQ(text(read(elements)), QStringLiteral("......"));
    ASSERT_TRUE(m_handler.SetAlphabet(QStringLiteral("Morse")));
    QVector<MorseElement> unknown = key(m_handler, QStringLiteral("H5"), Keying{20});
    unknown[8].microseconds = 60000; // nine dots once the character gap is an element gap
    EXPECT_EQ(text(read(unknown)), QStringLiteral("\uFFFD"));
    EXPECT_EQ(text(read({{false, 1000000}})), QString());
    EXPECT_EQ(text(read({{true, 60000}})), QStringLiteral("E")); // alone, no gap: a dot
}

// 20 wpm: a dot lasts 60 ms. Stray blanks add nothing; the last character has its gap without
// a closing blank.
TEST(MorseKeyer, KeysEveryCharacterWithItsGap)
{
    QStringList lengths;
    for (zelkorecording::KeyElement const& e :
         zelkorecording::keyMorse(QStringLiteral(".  / .-"))) {
        lengths << QString::number((e.keyDown ? 1 : -1) * qint64(e.microseconds));
    }
    EXPECT_EQ(lengths.join(QLatin1Char(' ')),
              QStringLiteral("60000 -420000 60000 -60000 180000 -180000"));
}

// Confidence: the further one element strays from its ideal length, the lower its
// character's score, whichever element and whichever direction.
TEST_F(MorseTiming, CleanerCharactersNeverScoreLower)
{
    QVector<MorseElement> const context = key(m_handler, QStringLiteral("PARIS "), Keying{20});
    QVector<MorseElement> const k = key(m_handler, QStringLiteral("K PARIS"), Keying{20}).mid(1);
    for (int element : {0, 1, 2, 3, 4, 5}) { // the marks and gaps of "-.-", the gap after it
        for (double direction : {-1.0, 1.0}) {
            if (element == 5 && direction > 0) {
                continue; // a longer word gap is no flaw
            }
            int previous = 101;
            for (double distortion = 0; distortion <= 0.6; distortion += 0.05) {
                QVector<MorseElement> elements = context + k;
                MorseElement& changed = elements[context.size() + element];
                changed.microseconds = quint32(changed.microseconds * (1 + direction * distortion));
                QVector<MorseCharacter> const out = read(elements);
                if (text(out) != QLatin1String("PARIS K PARIS")) {
                    break; // read otherwise: no longer the same kind of character
                }
                SCOPED_TRACE(testing::Message() << element << " " << direction * distortion);
                EXPECT_LE(out[6].confidence, previous);
                EXPECT_EQ(out[6].confidence == 100, distortion == 0);
                previous = out[6].confidence;
            }
            EXPECT_LE(previous, 75) << element << " " << direction;
        }
    }
}

} // namespace
