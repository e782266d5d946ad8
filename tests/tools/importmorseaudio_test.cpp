// CW audio into Morse elements: keying synthesised at known timing, heard by CwKeyingDetector
// and read back as text; "zelko import morse-audio" run as a user would on the CW sample.

#include <alphabetkit/simplemorsehandler.h>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <recordingwriter/cwkeyingdetector.h>
#include <recordingwriter/morsekeyer.h>
#include <support/qstringprinter.h>
#include <support/transcript.h>

using namespace zelkorecording;

namespace {

struct Audio
{
    QVector<float> samples;
    QVector<KeyElement> keying;
};

/// `text` keyed at `wpm` as a tone of amplitude 0.5, between 200 ms of silence before and
/// 300 ms after, plus uniform noise.
Audio synthesise(QString const& text, double wpm, double toneHz, int rate, double noise)
{
    SimpleMorseHandler handler;
    handler.SetAlphabetsDir(QStringLiteral(ZELKO_SOURCE_DIR "/data/alphabets"));
    handler.SetAlphabet(QStringLiteral("Morse"));
    Audio audio;
    audio.keying =
        QVector<KeyElement>{{false, 200000}} + keyMorse(handler.Backtranslate(text), {wpm});
    audio.keying.last().microseconds = 300000;
    audio.samples = cwAudio(audio.keying, toneHz, rate);
    std::mt19937 random(3);
    std::uniform_real_distribution<float> spread(-noise, noise);
    for (float& sample : audio.samples) {
        sample += spread(random);
    }
    return audio;
}

struct DetectorRow
{
    char const* name;
    double wpm;
    double toneHz;
    int rate;
    double noise;
};

void PrintTo(DetectorRow const& row, std::ostream* os)
{
    *os << row.name;
}

class CwDetector : public testing::TestWithParam<DetectorRow>
{
};

TEST_P(CwDetector, HearsTheKeyingAndItsText)
{
    DetectorRow const& row = GetParam();
    QString const text = QStringLiteral("PARIS CQ 73");
    Audio const audio = synthesise(text, row.wpm, row.toneHz, row.rate, row.noise);
    CwKeyingDetector detector(row.rate);
    detector.addToneSearch(audio.samples.constData(), audio.samples.size());
    EXPECT_NEAR(detector.searchedTone(), row.toneHz, 0.25); // a sixteenth of a bin or better
    detector.setTone(detector.searchedTone());
    // In two pieces: the mixer keeps its phase and its millisecond steps across calls.
    int const half = audio.samples.size() / 2 + 17;
    detector.addSignal(audio.samples.constData(), half);
    detector.addSignal(audio.samples.constData() + half, audio.samples.size() - half);
    CwKeying const heard = detector.finish();
    ASSERT_EQ(heard.elements.size(), audio.keying.size());
    double const dot = 1.2e6 / row.wpm;
    for (int i = 1; i + 1 < heard.elements.size(); ++i) {
        EXPECT_EQ(heard.elements[i].keyDown, audio.keying[i].keyDown) << i;
        // Marks come out about a seventh of a dot long, gaps as much short (see the header).
        EXPECT_NEAR(heard.elements[i].microseconds, audio.keying[i].microseconds,
                    qMax(2000.0, (row.noise > 0 ? 0.22 : 0.16) * dot))
            << i;
    }
    EXPECT_NEAR(heard.dotMicroseconds, dot, (row.noise > 0 ? 0.08 : 0.01) * dot);
    EXPECT_NEAR(heard.levelDbfs, -6.02, row.noise > 0 ? 0.5 : 0.05); // amplitude 0.5
    SimpleMorseHandler handler;
    handler.SetAlphabetsDir(QStringLiteral(ZELKO_SOURCE_DIR "/data/alphabets"));
    handler.SetAlphabet(QStringLiteral("Morse"));
    QVector<MorseElement> elements;
    for (KeyElement const& e : heard.elements) {
        elements.append({e.keyDown, e.microseconds});
    }
    QVector<MorseCharacter> characters = handler.AddElements(elements);
    characters += handler.FlushElements();
    QString decoded;
    for (MorseCharacter const& c : qAsConst(characters)) {
        decoded += c.text;
    }
    EXPECT_EQ(decoded, text);
}

DetectorRow const detectorRows[] = {
    {"clean_20wpm_700Hz_8kHz", 20, 700, 8000, 0},
    {"clean_60wpm_1200Hz_44k1Hz", 60, 1200, 44100, 0},
    {"clean_5wpm_500Hz_22k05Hz", 5, 500, 22050, 0},
    {"noisy_25wpm_850Hz_11k025Hz", 25, 850, 11025, 0.4},
    {"band_top_30wpm_3999Hz_44k1Hz", 30, 3999, 44100, 0}, // in the highest bin searched
};

INSTANTIATE_TEST_SUITE_P(Rows, CwDetector, testing::ValuesIn(detectorRows),
                         [](auto const& info) { return std::string(info.param.name); });

// The band's top at 8 kHz lies two bins below Nyquist. (Keying that close to Nyquist is not
// heard cleanly: the tone's mirror image beats with it.)
TEST(CwDetectorToneSearch, ReachesTheHighestBinSearched)
{
    Audio const audio = synthesise(QStringLiteral("PARIS"), 20, 3992, 8000, 0);
    CwKeyingDetector detector(8000);
    detector.addToneSearch(audio.samples.constData(), audio.samples.size());
    EXPECT_NEAR(detector.searchedTone(), 3992, 0.5);
}

// Zeros, and what a damaged float file may hold instead: nothing is heard either way.
TEST(CwDetectorSilence, FindsNoToneAndNoMarks)
{
    QVector<float> silence(8000, 0.0f);
    silence[100] = std::numeric_limits<float>::quiet_NaN();
    silence[200] = std::numeric_limits<float>::infinity();
    CwKeyingDetector detector(8000);
    detector.addToneSearch(silence.constData(), silence.size());
    EXPECT_EQ(detector.searchedTone(), 0);
    detector.setTone(700);
    detector.addSignal(silence.constData(), silence.size());
    CwKeying const heard = detector.finish();
    ASSERT_EQ(heard.elements.size(), 1);
    EXPECT_FALSE(heard.elements[0].keyDown);
    EXPECT_EQ(heard.elements[0].microseconds, 1000000u);
}

using ImportMorseAudioCalls = testing::TestWithParam<zelkotest::ToolCall>;

TEST_P(ImportMorseAudioCalls, MatchTheirTranscripts)
{
    EXPECT_EQ(zelkotest::transcriptDifference(ZELKO_TOOL, GetParam(), "tools/import"), QString());
}

INSTANTIATE_TEST_SUITE_P(Calls, ImportMorseAudioCalls,
                         testing::ValuesIn(zelkotest::readToolCalls("tools/import.calls")),
                         zelkotest::ToolCallName());

} // namespace
