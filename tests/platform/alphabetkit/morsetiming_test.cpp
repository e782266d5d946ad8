// Element timing of SimpleMorseHandler: text keyed at known timing, read back.

#include <alphabetkit/simplemorsehandler.h>
#include <gtest/gtest.h>
#include <random>
#include <support/qstringprinter.h>

namespace {

QString const dataDir = QStringLiteral(ZELKO_SOURCE_DIR "/data/alphabets");

double dotMicroseconds(double wpm)
{
    return 1.2e6 / wpm;
}

struct Keying
{
    double wpm = 20;
    double effectiveWpm = 0; ///< Farnsworth: overall speed with longer gaps; 0: none
    double laterWpm = 0;     ///< speed from the middle of the text on; 0: no change
    double jitter = 0;       ///< each duration times 1 +- up to this
    quint32 spikeMicros = 0; ///< a crackle of this length in every word gap; 0: none
    bool splitElements = false;
    quint32 pauseMicros = 0; ///< key-up between words instead of the word gap; 0: normal
    double fadeDots = 0;     ///< from the middle of the text on, a key-up this long (in dots) in
                             ///< the middle of every dash
};

/// The elements of `text` keyed as `keying` says, starting with 50 ms of silence.
QVector<MorseElement> key(SimpleMorseHandler& handler, QString const& text, Keying const& k)
{
    QStringList const codes =
        handler.Backtranslate(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    std::mt19937 random(7);
    std::uniform_real_distribution<double> spread(-k.jitter, k.jitter);
    QVector<MorseElement> out{{false, 50000}};
    auto emit = [&](bool down, double micros) {
        quint32 const length = quint32(micros * (1 + spread(random)));
        if (k.splitElements) {
            out.append({down, length / 2});
            out.append({down, length - length / 2});
        } else {
            out.append({down, length});
        }
    };
    for (int i = 0; i < codes.size(); ++i) {
        double const wpm = k.laterWpm > 0 && i >= codes.size() / 2 ? k.laterWpm : k.wpm;
        double const dot = dotMicroseconds(wpm);
        // Farnsworth: the extra time spread over character and word gaps 3:7.
        double const extra = k.effectiveWpm > 0 ? (60 * wpm - 37.2 * k.effectiveWpm) /
                                                      (wpm * k.effectiveWpm) * 1e6 / 19
                                                : dot;
        QString const& code = codes[i];
        if (code == QLatin1String("/")) {
            if (k.spikeMicros > 0) {
                emit(false, 3 * extra);
                out.append({true, k.spikeMicros});
            }
            emit(false, k.pauseMicros > 0 ? k.pauseMicros : (k.spikeMicros > 0 ? 1 : 4) * extra);
            continue;
        }
        for (int e = 0; e < code.size(); ++e) {
            if (code[e] == QLatin1Char('-') && k.fadeDots > 0 && i >= codes.size() / 2) {
                emit(true, (3 - k.fadeDots) / 2 * dot);
                emit(false, k.fadeDots * dot);
                emit(true, (3 - k.fadeDots) / 2 * dot);
            } else {
                emit(true, code[e] == QLatin1Char('-') ? 3 * dot : dot);
            }
            emit(false, e + 1 < code.size() ? dot : 3 * extra);
        }
    }
    return out;
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

Keying at(double wpm)
{
    Keying k;
    k.wpm = wpm;
    return k;
}

Keying with(Keying k, double Keying::*field, double value)
{
    k.*field = value;
    return k;
}

Keying splitUp()
{
    Keying k;
    k.splitElements = true;
    return k;
}

Keying spiked(quint32 spike, quint32 pause)
{
    Keying k = at(25);
    k.spikeMicros = spike;
    k.pauseMicros = pause;
    return k;
}

char const* const message = "CQ CQ DE DL1ABC/P 599 TU <SK>";
char const* const pangram = "THE QUICK BROWN FOX JUMPS OVER THE LAZY DOG 0123456789";

TimingRow const timingRows[] = {
    {"ideal_20wpm", message, at(20)},
    {"boundary_5wpm", message, at(5)},
    {"boundary_60wpm", message, at(60)},
    {"dashes_first", "TMO 0 MOT", at(18)},
    {"jitter_15pct_25wpm", pangram, with(at(25), &Keying::jitter, 0.15)},
    {"jitter_25pct_12wpm", message, with(at(12), &Keying::jitter, 0.25)},
    {"farnsworth_18_at_8", pangram, with(at(18), &Keying::effectiveWpm, 8)},
    {"farnsworth_30_at_5", message, with(at(30), &Keying::effectiveWpm, 5)},
    {"speed_change_15_to_30", pangram, with(at(15), &Keying::laterWpm, 30)},
    {"speed_change_30_to_20", pangram, with(at(30), &Keying::laterWpm, 20)},
    {"elements_split_in_two", message, splitUp()},
    {"crackle_in_word_gaps", message, spiked(4000, 0)},
    // Up to a third of a dot, a fade inside a dash is noise; beyond, the dash is two dots.
    {"fade_in_dashes_0_3_dot", message, with(at(20), &Keying::fadeDots, 0.3)},
    {"long_silence_ends_word", "QRT SK", spiked(0, 30000000)},
};

INSTANTIATE_TEST_SUITE_P(Rows, MorseTiming, testing::ValuesIn(timingRows),
                         [](auto const& info) { return std::string(info.param.name); });

TEST_F(MorseTiming, TimesAndSpeedOfEachCharacter)
{
    QVector<MorseCharacter> const out = read(key(m_handler, QStringLiteral("PARIS PARIS"), at(20)));
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
    QVector<MorseElement> unended = key(m_handler, QStringLiteral("PARIS PARIS"), at(20));
    unended.removeLast();
    QVector<MorseCharacter> const cut = read(unended);
    ASSERT_EQ(text(cut), QStringLiteral("PARIS PARIS"));
    EXPECT_NEAR(cut.last().wordsPerMinute, 20, 0.1);
}

TEST_F(MorseTiming, AFadeOfHalfADotSplitsADash)
{
    EXPECT_EQ(text(read(key(m_handler, QStringLiteral("PARIS TT"),
                            with(at(20), &Keying::fadeDots, 0.5)))),
              QStringLiteral("PARIS II"));
}

TEST_F(MorseTiming, PrintsElementsUnderTheNoneAlphabetAndUnknownGroups)
{
    QVector<MorseElement> const elements = key(m_handler, QStringLiteral("HI"), at(20));
    ASSERT_TRUE(m_handler.SetAlphabet(QStringLiteral("None")));
    EXPECT_EQ(text(read(elements)), QStringLiteral("......"));
    ASSERT_TRUE(m_handler.SetAlphabet(QStringLiteral("Morse")));
    QVector<MorseElement> unknown = key(m_handler, QStringLiteral("H5"), at(20));
    unknown[8].microseconds = 60000; // nine dots once the character gap is an element gap
    EXPECT_EQ(text(read(unknown)), QStringLiteral("\uFFFD"));
    EXPECT_EQ(text(read({{false, 1000000}})), QString());
}

// Confidence: the further one element strays from its ideal length, the lower its
// character's score, whichever element and whichever direction.
TEST_F(MorseTiming, CleanerCharactersNeverScoreLower)
{
    QVector<MorseElement> const context = key(m_handler, QStringLiteral("PARIS "), at(20));
    QVector<MorseElement> const k = key(m_handler, QStringLiteral("K PARIS"), at(20)).mid(1);
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
                ASSERT_GE(out.size(), 7);
                if (out[6].text != QLatin1String("K")) {
                    break; // misread: no longer the same kind of character
                }
                SCOPED_TRACE(testing::Message() << element << " " << direction * distortion);
                EXPECT_LE(out[6].confidence, previous);
                EXPECT_EQ(out[6].confidence == 100, distortion == 0);
                previous = out[6].confidence;
            }
            EXPECT_LE(previous, 70) << element << " " << direction;
        }
    }
}

} // namespace
