#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <massdatamanagement/zelkodatastreamconverter/frameformat.h>
#include <recordingwriter/recordingwriter.h>
#include <support/golden.h>
#include <support/qstringprinter.h>
#include <support/toolrun.h>
#include <support/transcript.h>
#include <sys/resource.h>

namespace {

struct ToolRun
{
    int exitCode;
    QByteArray output; ///< standard output and error as printed
};

ToolRun run(QString const& program, QStringList const& arguments)
{
    zelkotest::ToolSetup setup;
    setup.workingDirectory = QStringLiteral(ZELKO_SOURCE_DIR);
    setup.environment = {{QStringLiteral("ZELKO_TRACE_MASK"), QString()}};
    setup.mergeChannels = true;
    zelkotest::ToolRun const run = zelkotest::runTool(program, arguments, setup);
    return {run.exitCode, run.out.toUtf8()};
}

QStringList const samples = {QStringLiteral("data/samples/mixed-host.zdr"),
                             QStringLiteral("data/samples/mixed-damaged.zdr")};

TEST(ZelkoInspect, SamplesMatchGoldenListing)
{
    ToolRun const result = run(QStringLiteral(ZELKO_TOOL),
                               QStringList{QStringLiteral("inspect")} + QStringList(samples));
    EXPECT_EQ(result.exitCode, 0) << result.output.toStdString();
    EXPECT_EQ(
        zelkotest::compareWithGolden(result.output, QStringLiteral("tools/inspect-samples.txt")),
        QString());
}

using ZelkoCalls = testing::TestWithParam<zelkotest::ToolCall>;

TEST_P(ZelkoCalls, MatchTheirTranscripts)
{
    zelkotest::ToolSetup setup;
    setup.environment = {{QStringLiteral("ZELKO_TRACE_MASK"), QString()}};
    EXPECT_EQ(zelkotest::transcriptDifference(ZELKO_TOOL, GetParam(), "tools/inspect", setup),
              QString());
}

INSTANTIATE_TEST_SUITE_P(Inspect, ZelkoCalls,
                         testing::ValuesIn(zelkotest::readToolCalls("tools/inspect.calls")),
                         zelkotest::ToolCallName());

// The bundled samples are made by zelko-samplegen; a change to the writer that alters them
// must come with regenerated samples.
TEST(SampleGenerator, ReproducesTheBundledSamples)
{
    QTemporaryDir dir;
    ASSERT_EQ(run(QStringLiteral(ZELKO_SAMPLEGEN), {dir.path()}).exitCode, 0);
    QStringList const bundled =
        QDir(QStringLiteral(ZELKO_SOURCE_DIR "/data/samples"))
            .entryList({QStringLiteral("*.zdr"), QStringLiteral("*.nmea")}, QDir::Files);
    EXPECT_GE(bundled.size(), 4);
    for (QString const& sample : bundled) {
        QFile original(QStringLiteral(ZELKO_SOURCE_DIR "/data/samples/") + sample);
        QFile fresh(QDir(dir.path()).filePath(sample));
        ASSERT_TRUE(original.open(QIODevice::ReadOnly)) << sample.toStdString();
        ASSERT_TRUE(fresh.open(QIODevice::ReadOnly)) << sample.toStdString();
        EXPECT_EQ(original.readAll(), fresh.readAll()) << sample.toStdString();
    }
}

// The RTTY recordings of tests/data/rtty are made from minimodem's codes the same way.
TEST(SampleGenerator, ReproducesTheRttyRecordingsFromTheirCodes)
{
    QTemporaryDir dir;
    QString const rtty = QStringLiteral(ZELKO_SOURCE_DIR "/tests/data/rtty/");
    for (auto const& [name, baud] : {std::pair<char const*, char const*>{"weather-50", "50"},
                                     {"navwarn-50", "50"},
                                     {"qso-45", "45.45"}}) {
        QString const fresh = QDir(dir.path()).filePath(QString::fromLatin1(name));
        ASSERT_EQ(run(QStringLiteral(ZELKO_SAMPLEGEN),
                      {QStringLiteral("--from-codes"), rtty + name + QStringLiteral(".bits"),
                       QString::fromLatin1(baud), fresh})
                      .exitCode,
                  0);
        QFile original(rtty + name + QStringLiteral(".zdr"));
        QFile made(fresh);
        ASSERT_TRUE(original.open(QIODevice::ReadOnly) && made.open(QIODevice::ReadOnly));
        EXPECT_EQ(original.readAll(), made.readAll()) << name;
    }
    QString const bad = QDir(dir.path()).filePath(QStringLiteral("bad.bits"));
    QFile file(bad);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("11111\n\n0012\n");
    file.close();
    ToolRun const refused = run(QStringLiteral(ZELKO_SAMPLEGEN),
                                {QStringLiteral("--from-codes"), bad, QStringLiteral("50"),
                                 QDir(dir.path()).filePath(QStringLiteral("bad.zdr"))});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_TRUE(QString::fromUtf8(refused.output)
                    .contains(bad + QStringLiteral(":3: not a code of '0' and '1': 0012")))
        << refused.output.toStdString();
}

} // namespace

namespace {

long childPeakResidentKilobytes()
{
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    return usage.ru_maxrss;
}

} // namespace

// A damaged last header that claims the largest frame (256 MiB) in a short recording: the
// frames before it are listed, the reader ends at the end of the file, and memory stays at
// about what the file holds instead of the claimed size.
TEST(ZelkoInspect, TruncatedFrameClaimingTheMaximumLengthCostsWhatTheFileHolds)
{
    QTemporaryDir dir;
    QString const path = dir.filePath(QStringLiteral("claims-maximum.zdr"));
    {
        QFile sample(QStringLiteral(ZELKO_SOURCE_DIR "/") + samples.front());
        ASSERT_TRUE(sample.open(QIODevice::ReadOnly));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        using namespace zelkodatastreamconverter;
        file.write(sample.readAll() +
                   zelkorecording::RecordingWriter::headerBytes(FRAME_MAGIC, MaxFrameLengthWords,
                                                                FrameType::DecodedText) +
                   QByteArray(4096, 'x'));
    }
    ToolRun const result = run(QStringLiteral(ZELKO_TOOL),
                               {QStringLiteral("inspect"), QStringLiteral("--summary"), path});
    EXPECT_EQ(result.exitCode, 0) << result.output.toStdString();
    EXPECT_TRUE(result.output.contains("6 frames, 816 bytes in frames"))
        << result.output.toStdString();
    EXPECT_LT(childPeakResidentKilobytes(), 128 * 1024);
}
