// Real RTTY traffic: recordings of the codes that minimodem demodulated from its own RTTY
// audio (tests/data/rtty), converted and compared with the text minimodem printed. Senders
// leave out LTRS after a space, so only the unshift-on-space alphabets read them right; the
// plain alphabets must differ from minimodem somewhere.

#include "decodedtexttesting.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace decodedtexttest;

namespace {

QString rttyFile(QString const& name)
{
    return QStringLiteral(ZELKO_SOURCE_DIR "/tests/data/rtty/") + name;
}

// The content of channel 1, the channel the recordings use.
QString convertRecording(QString const& recording, QString const& alphabet)
{
    QTemporaryDir output;
    Conversion const conversion =
        convert(recording, output.path(), textSettings(QStringLiteral("RTTY"), alphabet));
    NerikResultDataXml::NerikResultData document;
    EXPECT_EQ(loadDocument(conversion.xml, document), QString());
    return contentOf(document, 1);
}

struct Bulletin
{
    char const* name;
    char const* plainAlphabet;
    char const* usosAlphabet;
};

using MinimodemRoundTrip = ::testing::TestWithParam<Bulletin>;

TEST_P(MinimodemRoundTrip, OnlyUnshiftOnSpaceAgreesWithMinimodem)
{
    QString const name = QString::fromLatin1(GetParam().name);
    QString const minimodem =
        QString::fromUtf8(readFile(rttyFile(name + QStringLiteral(".minimodem.txt"))));
    ASSERT_FALSE(minimodem.isEmpty());
    QString const recording = rttyFile(name + QStringLiteral(".zdr"));
    EXPECT_EQ(convertRecording(recording, QString::fromLatin1(GetParam().usosAlphabet)), minimodem);
    QString const plain =
        convertRecording(recording, QString::fromLatin1(GetParam().plainAlphabet));
    EXPECT_EQ(plain.size(), minimodem.size());
    EXPECT_NE(plain, minimodem) << "the bulletin never relies on unshift on space";
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
