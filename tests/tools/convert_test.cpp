// Runs "zelko convert" as a user would: settings from a file or flags, several inputs at
// once, bad inputs among good ones. Most calls are in tests/data/tools/convert.calls, each
// with its whole transcript (output, files, what the documents hold) as a golden file.

#include <QDir>
#include <QFile>
#include <QSet>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <reportkit/results.h>
#include <support/qstringprinter.h>
#include <support/toolrun.h>
#include <support/transcript.h>

namespace {

zelkotest::ToolSetup setup()
{
    zelkotest::ToolSetup setup;
    // Not UTC, so that a start time without an offset shows whether it is taken as UTC.
    setup.environment = {{QStringLiteral("ZELKO_TRACE_MASK"), QString()},
                         {QStringLiteral("ZELKO_CONFIG"), QStringLiteral("/nonexistent/none.ini")},
                         {QStringLiteral("TZ"), QStringLiteral("Europe/Berlin")}};
    return setup;
}

using ZelkoConvert = testing::TestWithParam<zelkotest::ToolCall>;

TEST_P(ZelkoConvert, MatchesItsTranscript)
{
    EXPECT_EQ(zelkotest::transcriptDifference(ZELKO_TOOL, GetParam(), "tools/convert", setup()),
              QString());
}

INSTANTIATE_TEST_SUITE_P(Calls, ZelkoConvert,
                         testing::ValuesIn(zelkotest::readToolCalls("tools/convert.calls")),
                         zelkotest::ToolCallName());

// Parallel conversions finish in any order, so this one is checked by its properties.
TEST(ZelkoConvertParallel, InputsGetDistinctFilesAndOneRowEach)
{
    QTemporaryDir dir;
    QStringList inputs;
    for (int i = 0; i < 6; ++i) {
        QString const copy = dir.filePath(QStringLiteral("in%1.zdr").arg(i));
        ASSERT_TRUE(QFile::copy(QStringLiteral(ZELKO_SOURCE_DIR "/data/samples/") +
                                    (i % 2 ? "navtex-ccir476.zdr" : "teleprinter-two-channels.zdr"),
                                copy));
        inputs << copy;
    }
    QString const output = dir.filePath(QStringLiteral("out"));
    zelkotest::ToolRun const result = zelkotest::runTool(
        QStringLiteral(ZELKO_TOOL),
        QStringList{QStringLiteral("convert"), QStringLiteral("--quiet"), QStringLiteral("-o"),
                    output, QStringLiteral("-j"), QStringLiteral("3"), QStringLiteral("--xml")} +
            inputs,
        setup());
    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    REPORTKIT::Results results;
    ASSERT_TRUE(results.SetXmlString(result.out, 0));
    QSet<QString> urls;
    for (auto const& record : results.GetText()) {
        urls.insert(record.GetURL());
    }
    EXPECT_EQ(urls.size(), 6);
    EXPECT_EQ(QDir(output).entryList({QStringLiteral("*.xml")}, QDir::Files).size(), 6);
}

} // namespace
