// Runs "zelko bursts" as a user would, on recordings of synthetic hoppers.

#include <QColor>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <algorithm>
#include <gtest/gtest.h>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/burstemissionlistconverter.h>
#include <recordingwriter/hoppergenerator.h>
#include <support/toolrun.h>

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

} // namespace

TEST_F(BurstsCommand, PrintsEachRadiosEstimate)
{
    ToolRun const run = runZelko({m_recording});
    ASSERT_EQ(run.exitCode, 0) << qPrintable(run.err);
    QStringList const lines = run.out.split(QLatin1Char('\n'));
    QStringList const expected = {
        QStringLiteral("  5 frames: 4 burst lists, 1 ignored"),
        QStringLiteral("  2 radios"),
        QStringLiteral("radio 7"),
        QStringLiteral("  mean bandwidth:  12.000 kHz"),
        QStringLiteral("  frequency set:   164 frequencies [MHz]"),
        QStringLiteral("    segment 1: start 30.025000 MHz, spacing 25.000 kHz, 120 channels, "
                       "84 occupied, deviation 0.0 Hz"),
        QStringLiteral("    segment 2: start 36.000000 MHz, spacing 25.000 kHz, 80 channels, "
                       "80 occupied, deviation 0.0 Hz"),
        QStringLiteral("radio 12"),
        QStringLiteral("  mean bandwidth:  6.000 kHz"),
        QStringLiteral("  grid estimation: 1 segment, 60 channels, mean spacing 12.500 kHz, "
                       "occupation 1.000, deviation 0.0 Hz"),
    };
    for (QString const& line : expected) {
        EXPECT_TRUE(lines.contains(line)) << qPrintable(line) << "\n--- output:\n"
                                          << qPrintable(run.out);
    }
    EXPECT_TRUE(run.out.contains(QStringLiteral("  grid estimation: 2 segments, 200 channels, "
                                                "mean spacing 25.000 kHz, occupation 0.820")))
        << qPrintable(run.out);
    EXPECT_TRUE(run.out.contains(QStringLiteral("    30.025000 ")));
    EXPECT_TRUE(run.err.contains(QStringLiteral("unknown magic word")))
        << "the reader's complaints reach stderr: " << qPrintable(run.err);
    EXPECT_FALSE(run.err.contains(QStringLiteral("end-of-file")));
}

TEST_F(BurstsCommand, UsageErrorsAndMissingInput)
{
    struct Row
    {
        char const* name;
        QStringList arguments;
        int exitCode;
        char const* message;
    } const rows[] = {
        {"no recording", {}, 2, "zelko bursts: give exactly one recording (see --help)"},
        {"radio not a number",
         {m_recording, "--radio", "seven"},
         2,
         "zelko bursts: --radio needs a decimal radio ID, not 'seven'"},
        {"unknown radio",
         {m_recording, "--radio", "99"},
         1,
         "zelko bursts: radio 99 has no bursts in"},
        {"missing recording", {m_dir.filePath("none.zdr")}, 1, "zelko bursts: cannot open"},
        {"directory", {m_dir.path()}, 1, "is a directory"},
        {"segments zero",
         {m_recording, "--max-segments", "0"},
         2,
         "--max-segments needs a number from 1 to 65535"},
        {"unwritable plot",
         {m_recording, "--plot", m_dir.filePath("no/such/dir/p.png")},
         1,
         "zelko bursts: cannot write"},
        {"unwritable dump directory",
         {m_recording, "--dump-dir", m_recording + "/dumps"},
         1,
         "zelko bursts: cannot create the dump directory"},
    };
    for (auto const& row : rows) {
        ToolRun const run = runZelko(row.arguments);
        EXPECT_EQ(run.exitCode, row.exitCode) << row.name;
        EXPECT_TRUE(run.err.contains(QString::fromUtf8(row.message)))
            << row.name << ": " << qPrintable(run.err);
    }
    ToolRun const help = runZelko({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    for (char const* option : {"--radio", "--plot", "--dump-dir", "--max-segments"}) {
        EXPECT_TRUE(help.out.contains(QString::fromUtf8(option))) << option;
    }
}

TEST_F(BurstsCommand, RadioOptionSelectsOneRadio)
{
    ToolRun const run = runZelko({m_recording, "--radio", "12", "--max-segments", "1"});
    ASSERT_EQ(run.exitCode, 0) << qPrintable(run.err);
    EXPECT_TRUE(run.out.contains(QStringLiteral("\nradio 12\n")));
    EXPECT_FALSE(run.out.contains(QStringLiteral("radio 7")));
    EXPECT_TRUE(run.out.contains(QStringLiteral("  1 radio\n")));
    EXPECT_TRUE(run.out.contains(QStringLiteral("  bursts:          2048 in 1 segment,")))
        << qPrintable(run.out);
}

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

TEST_F(BurstsCommand, DumpDirectoryHoldsReadableDumps)
{
    QString const dumps = m_dir.filePath(QStringLiteral("dumps"));
    ToolRun const run = runZelko({m_recording, "--dump-dir", dumps});
    ASSERT_EQ(run.exitCode, 0) << qPrintable(run.err);
    using zelkodatastreamconverter::BurstEmissionList::BurstEmissionListConverter;
    EXPECT_EQ(BurstEmissionListConverter::parseBinaryFrameDataFile(dumps + "/frames.bin").size(),
              5u);
    auto const bursts = BurstEmissionListConverter::parseBinaryBurstData(dumps + "/bursts.bin");
    ASSERT_EQ(bursts.size(), 4u);
    EXPECT_EQ(bursts[0].first, 7u);
    EXPECT_EQ(bursts[1].first, 12u);
    EXPECT_EQ(bursts[0].second.size(), 2048u);
    QFile grid(dumps + "/gridestimation.txt");
    ASSERT_TRUE(grid.open(QIODevice::ReadOnly));
    QByteArray const gridText = grid.readAll();
    EXPECT_TRUE(gridText.startsWith("7;HopperFrequencySet[164;25k;30.025M;"))
        << gridText.left(80).constData();
    EXPECT_TRUE(gridText.contains("\n\n12;HopperFrequencySet[60;12.5k;150M;"));
    EXPECT_TRUE(run.out.contains(QStringLiteral("  random sample:   75 windows")));
    QFile samples(dumps + "/ftwsamples.txt");
    ASSERT_TRUE(samples.open(QIODevice::ReadOnly));
    EXPECT_TRUE(samples.readAll().startsWith("7;75\nFTW{["));
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

// Damaged burst lists whose numbers once became indexes and pixel positions through float
// arithmetic: levels that are all equal and beyond 2^24, level differences that overflow,
// centre frequencies of 2^53 Hz and more. Each must draw a plot and end normally.
class BurstsPlotRegression : public ::testing::TestWithParam<char const*>
{
};

TEST_P(BurstsPlotRegression, DrawsAPlotAndEndsNormally)
{
    QTemporaryDir dir;
    QString const plot = dir.filePath(QStringLiteral("plot.png"));
    QString const input =
        QStringLiteral(ZELKO_SOURCE_DIR "/tests/fuzz/regressions/burstplot/%1.zdr")
            .arg(QLatin1String(GetParam()));
    ASSERT_TRUE(QFile::exists(input));
    ToolRun const run = runZelko({input, QStringLiteral("--plot"), plot});
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_FALSE(QImage(plot).isNull());
}

INSTANTIATE_TEST_SUITE_P(Crashers, BurstsPlotRegression,
                         ::testing::Values("bursts-plot-ubsan-index-oob-1",
                                           "bursts-plot-ubsan-index-oob-2",
                                           "bursts-plot-ubsan-index-oob-3",
                                           "bursts-plot-ubsan-index-oob-crafted-1",
                                           "bursts-plot-ubsan-index-oob-crafted-2",
                                           "bursts-plot-ubsan-wild-index-crafted-1"),
                         [](auto const& info) {
                             std::string name = info.param;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });
