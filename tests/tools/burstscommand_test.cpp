// Runs "zelko bursts" as a user would, on recordings of synthetic hoppers.

#include <QColor>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <recordingwriter/hoppergenerator.h>
#include <support/qstringprinter.h>
#include <support/toolrun.h>
#include <support/transcript.h>

using namespace zelkorecording;

namespace {

using zelkotest::ToolRun;

ToolRun runZelko(QStringList const& arguments)
{
    return zelkotest::runTool(QStringLiteral(ZELKO_TOOL),
                              QStringList{QStringLiteral("bursts")} + arguments);
}

// Radio 7: 25 kHz channels in two runs (120 from 30.025 MHz, 80 from 36 MHz); radio 12:
// 60 channels of 12.5 kHz at 150 MHz. No jitter, so every figure is exact. Two frames of
// each radio, swapped byte order, with a decoded-text frame and garbage in between.
void writeRecording(QString const& path)
{
    HopperRadio seven;
    seven.radioID = 7;
    seven.bandwidthHz = 12000;
    seven.segments = {{30025000, 25000, 120, HopperGenerator::randomChannelUse(120, 0.7, 3)},
                      {36000000, 25000, 80, HopperGenerator::randomChannelUse(80, 1.0, 4)}};
    // The outermost channels must be used for the channel counts to be exact.
    seven.segments[0].usedChannels.front() = true;
    seven.segments[0].usedChannels.back() = true;
    HopperRadio twelve;
    twelve.radioID = 12;
    twelve.bandwidthHz = 6000;
    twelve.segments = {{150000000, 12500, 60, {}}};
    HopperScenario scenario;
    scenario.radios = {seven, twelve};
    scenario.burstsPerFrame = 2048;
    scenario.startTime = 1700000000000000ull;
    HopperGenerator generator(scenario);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    RecordingWriter writer(&file);
    ASSERT_TRUE(generator.writeFrames(writer, 2, ByteOrder::Swapped));
    ASSERT_TRUE(
        writer.writeFrame(zelkodatastreamconverter::FrameType::DecodedText, QByteArray(40, 'x')));
    ASSERT_TRUE(writer.writeGarbage(100, 9));
    ASSERT_TRUE(generator.writeFrames(writer, 2, ByteOrder::Swapped));
}

class BurstsCommand : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        m_recording = m_dir.filePath(QStringLiteral("hoppers.zdr"));
        writeRecording(m_recording);
    }
    QTemporaryDir m_dir;
    QString m_recording;
};

int countPixels(QImage const& image, QRect const& area, bool (*predicate)(QColor const&))
{
    int count = 0;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            count += predicate(image.pixelColor(x, y)) ? 1 : 0;
        }
    }
    return count;
}

class BurstsCalls : public BurstsCommand, public testing::WithParamInterface<zelkotest::ToolCall>
{
};

} // namespace

TEST_P(BurstsCalls, MatchTheirTranscripts)
{
    EXPECT_EQ(zelkotest::transcriptDifference(ZELKO_TOOL, GetParam(), "tools/bursts", {},
                                              {{m_recording, QStringLiteral("HOPPERS")}}),
              QString());
}

INSTANTIATE_TEST_SUITE_P(Calls, BurstsCalls,
                         testing::ValuesIn(zelkotest::readToolCalls("tools/bursts.calls")),
                         zelkotest::ToolCallName());

TEST_F(BurstsCommand, PlotShowsBurstsGridAndLegend)
{
    QString const plot = m_dir.filePath(QStringLiteral("radio7.png"));
    ToolRun const run = runZelko({m_recording, "--radio", "7", "--plot", plot});
    ASSERT_EQ(run.exitCode, 0) << qPrintable(run.err);
    EXPECT_TRUE(run.out.contains(QStringLiteral("plot of radio 7: ") + plot));
    QImage const image(plot);
    ASSERT_FALSE(image.isNull());
    EXPECT_EQ(image.size(), QSize(1500, 950));
    // Bursts: bright level colours on the dark waterfall panel.
    int const bright = countPixels(image, QRect(95, 200, 1050, 660), [](QColor const& c) {
        return c.red() > 120 && c.blue() < 200 && c.green() < 240;
    });
    EXPECT_GT(bright, 4000);
    // Segment boundaries: the orange of the dashed lines above the panels.
    int const orange = countPixels(image, QRect(90, 50, 1060, 12), [](QColor const& c) {
        return c.red() > 230 && c.green() > 120 && c.green() < 180 && c.blue() < 80;
    });
    EXPECT_GT(orange, 300);
    // Legend text: dark glyph pixels on the light background.
    int const text = countPixels(image, QRect(1180, 60, 300, 400),
                                 [](QColor const& c) { return c.lightness() < 120; });
    EXPECT_GT(text, 1500) << "the legend's text is drawn";
    // The empty band between the two grid segments holds no burst.
    int const gap = countPixels(image, QRect(520, 300, 200, 500),
                                [](QColor const& c) { return c.red() > 120; });
    EXPECT_EQ(gap, 0);
}

TEST_F(BurstsCommand, SeveralProcessesAtOnce)
{
    std::vector<std::unique_ptr<QProcess>> processes;
    for (int i = 0; i < 4; ++i) {
        auto process = std::make_unique<QProcess>();
        process->start(QStringLiteral(ZELKO_TOOL),
                       {QStringLiteral("bursts"), m_recording, QStringLiteral("--plot"),
                        m_dir.filePath(QStringLiteral("p%1.png").arg(i)),
                        QStringLiteral("--dump-dir"),
                        m_dir.filePath(QStringLiteral("d%1").arg(i))});
        processes.push_back(std::move(process));
    }
    QByteArray firstOutput;
    for (std::size_t i = 0; i < processes.size(); ++i) {
        ASSERT_TRUE(processes[i]->waitForFinished(60000));
        EXPECT_EQ(processes[i]->exitCode(), 0);
        QByteArray const output = processes[i]->readAllStandardOutput();
        QByteArray const withoutPlotLine = output.left(output.lastIndexOf("\nplot of radio"));
        if (i == 0) {
            firstOutput = withoutPlotLine;
        } else {
            EXPECT_EQ(withoutPlotLine.left(withoutPlotLine.indexOf("random sample")),
                      firstOutput.left(firstOutput.indexOf("random sample")));
        }
        EXPECT_FALSE(QImage(m_dir.filePath(QStringLiteral("p%1.png").arg(i))).isNull());
    }
}
