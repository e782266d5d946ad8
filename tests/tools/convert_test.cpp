// Runs "zelko convert" as a user would: settings from a file or flags, several inputs at
// once, bad inputs among good ones.

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <reportkit/results.h>
#include <support/rowname.h>
#include <support/schemavalidator.h>
#include <support/toolrun.h>

namespace {

using zelkotest::ToolRun;

QString sample(char const* name)
{
    return QStringLiteral(ZELKO_SOURCE_DIR "/data/samples/") + QString::fromLatin1(name);
}

class ZelkoConvert : public testing::Test
{
protected:
    ToolRun run(QStringList const& arguments)
    {
        zelkotest::ToolSetup setup;
        setup.environment = {
            {QStringLiteral("ZELKO_TRACE_MASK"), QString()},
            {QStringLiteral("ZELKO_CONFIG"), m_dir.filePath(QStringLiteral("none.ini"))}};
        return zelkotest::runTool(
            QStringLiteral(ZELKO_TOOL),
            QStringList{QStringLiteral("convert"), QStringLiteral("--quiet")} + arguments, setup);
    }

    QString output() const { return m_dir.filePath(QStringLiteral("out")); }

    QStringList resultFiles() const
    {
        return QDir(output()).entryList({QStringLiteral("*.xml")}, QDir::Files, QDir::Name);
    }

    QString readResult(QString const& name) const
    {
        QFile file(QDir(output()).filePath(name));
        file.open(QIODevice::ReadOnly);
        return QString::fromUtf8(file.readAll());
    }

    QTemporaryDir m_dir;
};

TEST_F(ZelkoConvert, SettingsFileTranslatesTheTeleprinterSample)
{
    ToolRun const result =
        run({QStringLiteral("-o"), output(), QStringLiteral("--settings"),
             sample("teleprinter-job.xml"), sample("teleprinter-two-channels.zdr")});
    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    QStringList const files = resultFiles();
    ASSERT_EQ(files.size(), 1);
    QString const document = readResult(files.front());
    EXPECT_TRUE(document.contains(QStringLiteral("SMDL01 EDZW 151000")));
    EXPECT_TRUE(document.contains(QStringLiteral("THE PORT REPORTED 1.234 CONTAINERS (+3 PCT)")));
    EXPECT_EQ(zelkotest::validateXmlFile(QDir(output()).filePath(files.front()),
                                         QStringLiteral("nerikresultdata.xsd")),
              QString());
    // One table row: record kind, code, frequency from the settings, the file's path.
    QStringList const rows = result.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    ASSERT_EQ(rows.size(), 2) << result.out.toStdString();
    EXPECT_TRUE(rows[1].startsWith(QStringLiteral("Text")));
    EXPECT_TRUE(rows[1].contains(QStringLiteral("DecodedText")));
    EXPECT_TRUE(rows[1].contains(QStringLiteral("10100800")));
    EXPECT_TRUE(rows[1].endsWith(files.front()));
}

TEST_F(ZelkoConvert, FlagsOverrideAndXmlListsTheResults)
{
    ToolRun const result = run(
        {QStringLiteral("-o"), output(), QStringLiteral("--decoder"), QStringLiteral("NAVTEX"),
         QStringLiteral("--alphabet"), QStringLiteral("CCIR 476"), QStringLiteral("--frequency"),
         QStringLiteral("518000"), QStringLiteral("--xml"), sample("navtex-ccir476.zdr")});
    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    REPORTKIT::Results results;
    ASSERT_TRUE(results.SetXmlString(result.out, 0)) << results.LastXmlError().toStdString();
    ASSERT_EQ(results.GetText().size(), 1u);
    auto const& record = results.GetText().front();
    EXPECT_EQ(record.GetMetadata().GetDetail().GetCode(), QStringLiteral("DecodedText"));
    EXPECT_EQ(record.GetMetadata().GetDetail().GetFrequency().GetValue(), 518000.0);
    EXPECT_TRUE(record.GetMetadata().GetStopTime().isValid());
    EXPECT_EQ(zelkotest::validateXmlText(result.out, QStringLiteral("reportkit.xsd")), QString());
    EXPECT_TRUE(readResult(resultFiles().front()).contains(QStringLiteral("NAV WARN NR 112")));
}

TEST_F(ZelkoConvert, ParallelInputsGetDistinctFilesAndOneRowEach)
{
    QStringList inputs;
    for (int i = 0; i < 6; ++i) {
        QString const copy = m_dir.filePath(QStringLiteral("in%1.zdr").arg(i));
        ASSERT_TRUE(QFile::copy(
            sample(i % 2 ? "navtex-ccir476.zdr" : "teleprinter-two-channels.zdr"), copy));
        inputs << copy;
    }
    ToolRun const result = run(QStringList{QStringLiteral("-o"), output(), QStringLiteral("-j"),
                                           QStringLiteral("3"), QStringLiteral("--xml")} +
                               inputs);
    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    REPORTKIT::Results results;
    ASSERT_TRUE(results.SetXmlString(result.out, 0));
    QSet<QString> urls;
    for (auto const& record : results.GetText()) {
        urls.insert(record.GetURL());
    }
    EXPECT_EQ(urls.size(), 6);
    EXPECT_EQ(resultFiles().size(), 6);
}

TEST_F(ZelkoConvert, AudioByExtensionOrContentBecomesBroadcastWaveAndSession)
{
    // The same FLAC under a name that tells nothing: its signature picks the audio kind.
    QString const unnamed = m_dir.filePath(QStringLiteral("unnamed.bin"));
    ASSERT_TRUE(QFile::copy(sample("audio-tone-bursts.flac"), unnamed));
    ToolRun const result =
        run({QStringLiteral("-o"), output(), QStringLiteral("--xml"), QStringLiteral("-j"),
             QStringLiteral("2"), QStringLiteral("--frequency"), QStringLiteral("7000000"),
             QStringLiteral("--start"), QStringLiteral("2024-01-31T23:59:58.001"),
             sample("audio-tone-bursts.flac"), unnamed});
    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    REPORTKIT::Results results;
    ASSERT_TRUE(results.SetXmlString(result.out, 0)) << result.out.toStdString();
    QStringList rows;
    for (auto const& record : results.GetBinary()) {
        rows << QStringLiteral("%1 %2 %3 %4")
                    .arg(record.GetType(), QFileInfo(record.GetURL()).fileName(),
                         record.GetMetadata().GetStartTime().toString(Qt::ISODateWithMs))
                    .arg(record.GetMetadata().GetDetail().GetFrequency().GetValue(), 0, 'f', 0);
    }
    EXPECT_EQ(rows.join(QLatin1Char('\n')).toStdString(),
              "AudioData audio-tone-bursts.wav 2024-01-31T23:59:58.001Z 7000000\n"
              "AudioSession audio-tone-bursts.session.xml 2024-01-31T23:59:58.001Z 0\n"
              "AudioData unnamed.wav 2024-01-31T23:59:58.001Z 7000000\n"
              "AudioSession unnamed.session.xml 2024-01-31T23:59:58.001Z 0");
    EXPECT_EQ(
        zelkotest::validateXmlFile(QDir(output()).filePath(QStringLiteral("unnamed.session.xml")),
                                   QStringLiteral("audiosession.xsd")),
        QString());
}

struct BadCall
{
    char const* name;
    QStringList arguments; // "OUT" stands for the output directory
    int exitCode;
    char const* message;
};

class ZelkoConvertRefuses : public ZelkoConvert, public testing::WithParamInterface<BadCall>
{
};

TEST_P(ZelkoConvertRefuses, WithAClearMessage)
{
    QStringList arguments;
    for (QString const& argument : GetParam().arguments) {
        arguments << (argument == QLatin1String("OUT") ? output() : argument);
    }
    ToolRun const result = run(arguments);
    EXPECT_EQ(result.exitCode, GetParam().exitCode) << result.err.toStdString();
    EXPECT_TRUE(result.err.contains(QString::fromUtf8(GetParam().message)))
        << result.err.toStdString();
}

INSTANTIATE_TEST_SUITE_P(
    Calls, ZelkoConvertRefuses,
    testing::Values(
        BadCall{"no_output", {sample("navtex-ccir476.zdr")}, 2, "-o DIR is required"},
        BadCall{"no_input", {QStringLiteral("-o"), QStringLiteral("OUT")}, 2, "no input given"},
        BadCall{"unknown_kind",
                {QStringLiteral("-o"), QStringLiteral("OUT"), QStringLiteral("--kind"),
                 QStringLiteral("video"), sample("navtex-ccir476.zdr")},
                2,
                "unknown kind 'video'"},
        BadCall{"bad_jobs",
                {QStringLiteral("-o"), QStringLiteral("OUT"), QStringLiteral("-j"),
                 QStringLiteral("0"), sample("navtex-ccir476.zdr")},
                2,
                "-j needs a number of 1 or more"},
        BadCall{"bad_start",
                {QStringLiteral("-o"), QStringLiteral("OUT"), QStringLiteral("--start"),
                 QStringLiteral("yesterday"), sample("audio-tone-bursts.flac")},
                2,
                "--start needs a time such as 2024-01-31T23:59:58Z"},
        BadCall{"bad_mode",
                {QStringLiteral("-o"), QStringLiteral("OUT"), QStringLiteral("--mode"),
                 QStringLiteral("SSB"), sample("navtex-ccir476.zdr")},
                2,
                "unknown demodulation mode 'SSB'"},
        BadCall{"settings_not_xml",
                {QStringLiteral("-o"), QStringLiteral("OUT"), QStringLiteral("--settings"),
                 sample("README.md"), sample("navtex-ccir476.zdr")},
                2,
                "line 1"},
        BadCall{"missing_input_among_good",
                {QStringLiteral("-o"), QStringLiteral("OUT"), QStringLiteral("no-such.zdr"),
                 sample("navtex-ccir476.zdr")},
                1,
                "no-such.zdr: no such file"},
        BadCall{"burst_list_input",
                {QStringLiteral("-o"), QStringLiteral("OUT"), sample("hoppers.zdr")},
                1,
                "a burst list: use 'zelko bursts'"},
        BadCall{"kind_not_converted_yet",
                {QStringLiteral("-o"), QStringLiteral("OUT"), QStringLiteral("--kind"),
                 QStringLiteral("image"), sample("navtex-ccir476.zdr")},
                1,
                "recordings of kind 'image' are not converted yet"},
        BadCall{"garbage_only",
                {QStringLiteral("-o"), QStringLiteral("OUT"), sample("README.md")},
                1,
                "no frame found"}),
    zelkotest::RowName());

// Transmission-system and AIS recordings are told apart by their first frame.
struct KindRow
{
    char const* name;
    char const* sample;
    char const* code;
    int rows; // with that code
};

class ZelkoConvertKind : public ZelkoConvert, public testing::WithParamInterface<KindRow>
{
};

TEST_P(ZelkoConvertKind, IsChosenByTheFirstFrame)
{
    ToolRun const result = run({QStringLiteral("-o"), output(), sample(GetParam().sample)});
    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    QStringList const rows = result.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts).mid(1);
    QStringList const files = resultFiles();
    ASSERT_EQ(files.size(), rows.size());
    int coded = 0;
    for (QString const& row : rows) {
        coded += row.split(QLatin1Char(' '), Qt::SkipEmptyParts).value(2) == GetParam().code;
    }
    EXPECT_EQ(coded, GetParam().rows) << result.out.toStdString();
    EXPECT_EQ(zelkotest::validateXmlFile(QDir(output()).filePath(files.front()),
                                         QStringLiteral("nerikresultdata.xsd")),
              QString());
}

INSTANTIATE_TEST_SUITE_P(Samples, ZelkoConvertKind,
                         testing::Values(KindRow{"pager", "pocsag-paging.zdr", "TransmissionSystem",
                                                 1},
                                         KindRow{"ais_stations", "ais-elbe.zdr", "AISStation", 8}),
                         zelkotest::RowName());

// An alphabet is never dropped unseen: without a decoder the first that offers it is used,
// and where the decoder cannot use it a note says so.
struct AlphabetCall
{
    char const* name;
    QString input;
    QStringList arguments;
    char const* note; // on stderr; nullptr: no note
    char const* document;
};

class ZelkoConvertAlphabet : public ZelkoConvert, public testing::WithParamInterface<AlphabetCall>
{
};

TEST_P(ZelkoConvertAlphabet, IsUsedOrNamed)
{
    ToolRun const result = run(QStringList{QStringLiteral("-o"), output()} + GetParam().arguments +
                               QStringList{GetParam().input});
    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    if (GetParam().note) {
        EXPECT_TRUE(result.err.contains(QStringLiteral("zelko convert: ") +
                                        QString::fromUtf8(GetParam().note) + QLatin1Char('\n')))
            << result.err.toStdString();
    } else {
        EXPECT_FALSE(result.err.contains(QStringLiteral("not offered")))
            << result.err.toStdString();
    }
    ASSERT_EQ(resultFiles().size(), 1);
    EXPECT_TRUE(readResult(resultFiles().front()).contains(QString::fromUtf8(GetParam().document)));
}

QString const rttyWeather = QStringLiteral(ZELKO_SOURCE_DIR "/tests/data/rtty/weather-50.zdr");

INSTANTIATE_TEST_SUITE_P(
    Calls, ZelkoConvertAlphabet,
    testing::Values(
        AlphabetCall{"usos_without_decoder",
                     rttyWeather,
                     {QStringLiteral("--alphabet"), QStringLiteral("International USOS")},
                     nullptr,
                     "NR 117 ISSUED 1200 UTC 15 MARCH"},
        AlphabetCall{"ccir476_without_decoder",
                     sample("navtex-ccir476.zdr"),
                     {QStringLiteral("--alphabet"), QStringLiteral("CCIR 476")},
                     nullptr,
                     "NAV WARN NR 112"},
        AlphabetCall{"not_offered_by_the_decoder",
                     rttyWeather,
                     {QStringLiteral("--decoder"), QStringLiteral("NAVTEX"),
                      QStringLiteral("--alphabet"), QStringLiteral("International")},
                     "alphabet International is not offered by decoder NAVTEX; writing the codes",
                     "contentCode=\"None\""},
        AlphabetCall{"offered_by_no_decoder",
                     rttyWeather,
                     {QStringLiteral("--alphabet"), QStringLiteral("Klingon")},
                     "alphabet Klingon is not offered by decoder NONE; writing the codes",
                     "contentCode=\"None\""},
        AlphabetCall{"several_decoders",
                     rttyWeather,
                     {QStringLiteral("--decoder"), QStringLiteral("RTTY"),
                      QStringLiteral("--decoder"), QStringLiteral("BAUDOT"),
                      QStringLiteral("--alphabet"), QStringLiteral("International")},
                     "alphabet International is not offered by decoder NONE; writing the codes (of "
                     "several decoders the converter uses none)",
                     "contentCode=\"None\""}),
    zelkotest::RowName());

TEST_F(ZelkoConvert, GoodInputsAreConvertedBesideAMissingOne)
{
    ToolRun const result = run({QStringLiteral("-o"), output(), QStringLiteral("missing.zdr"),
                                sample("navtex-ccir476.zdr")});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(resultFiles().size(), 1);
}

TEST_F(ZelkoConvert, HelpExplainsTheOptions)
{
    ToolRun const result = run({QStringLiteral("--help")});
    EXPECT_EQ(result.exitCode, 0);
    // The command as the user types it, not the path of the binary.
    EXPECT_TRUE(result.out.startsWith(QLatin1String("Usage: zelko convert [options] INPUT...\n")))
        << qPrintable(result.out);
    for (char const* option :
         {"--settings", "--kind", "--channels", "--alphabets", "--xml", "--jobs", "--trace"}) {
        EXPECT_TRUE(result.out.contains(QLatin1String(option))) << option;
    }
}

} // namespace
