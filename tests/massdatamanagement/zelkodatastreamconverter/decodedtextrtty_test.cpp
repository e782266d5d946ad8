// Real RTTY traffic: recordings of the codes that minimodem demodulated from its own RTTY
// audio (tests/data/rtty), converted and compared with the text minimodem printed. Senders
// leave out LTRS after a space, so only the unshift-on-space alphabets read them right.

#include "decodedtexttesting.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <nerikresultdataxml/datablock.h>
#include <nerikresultdataxml/transmission.h>
#include <set>

using namespace decodedtexttest;

namespace {

QString rttyFile(QString const& name)
{
    return QStringLiteral(ZELKO_SOURCE_DIR "/tests/data/rtty/") + name;
}

struct Translation
{
    QString content;
    QString raw;
};

// The content and raw codes of channel 1, the channel the recordings use.
Translation convertRecording(QString const& recording, QString const& alphabet)
{
    QTemporaryDir output;
    Conversion const conversion =
        convert(recording, output.path(), textSettings(QStringLiteral("RTTY"), alphabet));
    NerikResultDataXml::NerikResultData document;
    EXPECT_EQ(loadDocument(conversion.xml, document), QString());
    Translation translation;
    if (document.GetTransmission().isEmpty()) {
        return translation;
    }
    for (NerikResultDataXml::DataBlock const* block :
         document.GetTransmission().back()->GetDataBlock()) {
        EXPECT_EQ(block->GetChannel(), 1);
        translation.content += block->GetContent();
        translation.raw += block->GetRawContent();
    }
    return translation;
}

// Where a receiver without unshift on space prints figures that the sender meant as letters:
// every printing character after a space received in figures, up to the next shift code.
// Worked out from the ITA2 codes alone, apart from the alphabets under test.
std::set<int> unshiftOnSpacePositions(QString const& raw)
{
    constexpr ushort Blank = 0, LineFeed = 2, Space = 4, CarriageReturn = 8, Figures = 27,
                     Letters = 31;
    std::set<int> positions;
    bool figures = false;
    bool afterSpace = false;
    int position = 0;
    for (QChar const unit : raw) {
        ushort const code = unit.unicode();
        if (code == Figures || code == Letters) {
            figures = code == Figures;
            afterSpace = false;
            continue;
        }
        if (code == Blank) {
            continue;
        }
        bool const sameInBothShifts = code == Space || code == LineFeed || code == CarriageReturn;
        if (figures && afterSpace && !sameInBothShifts) {
            positions.insert(position);
        }
        afterSpace = afterSpace || (figures && code == Space);
        ++position;
    }
    return positions;
}

struct Bulletin
{
    char const* name;
    char const* plainAlphabet;
    char const* usosAlphabet;
};

class MinimodemRoundTrip : public ::testing::TestWithParam<Bulletin>
{
};

TEST_P(MinimodemRoundTrip, UsosAgreesEverywherePlainOnlyWhereTheSpaceUnshifts)
{
    QString const name = QString::fromLatin1(GetParam().name);
    QString const minimodem =
        QString::fromUtf8(readFile(rttyFile(name + QStringLiteral(".minimodem.txt"))));
    ASSERT_FALSE(minimodem.isEmpty());
    QString const recording = rttyFile(name + QStringLiteral(".zdr"));

    Translation const usos =
        convertRecording(recording, QString::fromLatin1(GetParam().usosAlphabet));
    EXPECT_EQ(usos.content, minimodem);

    Translation const plain =
        convertRecording(recording, QString::fromLatin1(GetParam().plainAlphabet));
    ASSERT_EQ(plain.content.size(), minimodem.size());
    std::set<int> differences;
    for (int i = 0; i < minimodem.size(); ++i) {
        if (plain.content[i] != minimodem[i]) {
            differences.insert(i);
        }
    }
    std::set<int> const expected = unshiftOnSpacePositions(plain.raw);
    EXPECT_FALSE(expected.empty()) << "the bulletin never relies on unshift on space";
    EXPECT_EQ(differences, expected);
}

INSTANTIATE_TEST_SUITE_P(
    Bulletins, MinimodemRoundTrip,
    ::testing::Values(Bulletin{"weather-50", "International", "International USOS"},
                      Bulletin{"navwarn-50", "International", "International USOS"},
                      Bulletin{"qso-45", "International", "International USOS"},
                      Bulletin{"weather-50", "US-TTY", "US-TTY USOS"},
                      Bulletin{"qso-45", "US-TTY", "US-TTY USOS"}),
    [](::testing::TestParamInfo<Bulletin> const& info) {
        return QString::fromLatin1("%1_%2")
            .arg(QString::fromLatin1(info.param.name),
                 QString::fromLatin1(info.param.plainAlphabet))
            .replace(QLatin1Char('-'), QLatin1Char('_'))
            .toStdString();
    });

} // namespace
