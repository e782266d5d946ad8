// The audio converter with the real audio export library, with a library that fails on
// request, and with none; the WAV and session files read back.

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <appstartup/cfgcenter.h>
#include <gtest/gtest.h>
#include <jobspec/settings.h>
#include <massdatamanagement/zelkodatastreamconverter/audiodataconverter.h>
#include <sndfile.h>
#include <support/rowname.h>
#include <support/schemavalidator.h>
#include <support/tracecapture.h>
#include <vector>

using zelkodatastreamconverter::AudioDataConverter;

namespace {

// 2017-07-14 02:40:00.123456 UTC: the trailing microseconds are dropped.
constexpr unsigned long long StartMicroseconds = 1500000000123456ULL;
QString const StartText = QStringLiteral("2017-07-14T02:40:00.123Z");

QString const FailingLibrary = QStringLiteral(ZELKO_FAILING_AUDIO_PLUGIN);

struct Audio
{
    int sampleRate = 0;
    int channels = 0;
    int format = 0;
    std::vector<int> samples; // interleaved, full 32-bit scale
    SF_BROADCAST_INFO bext{};
    bool hasBext = false;
};

bool writeAudio(QString const& path, int format, int sampleRate, int channels,
                std::vector<int> const& samples)
{
    SF_INFO info{};
    info.samplerate = sampleRate;
    info.channels = channels;
    info.format = format;
    SNDFILE* file = sf_open(QFile::encodeName(path).constData(), SFM_WRITE, &info);
    if (!file) {
        return false;
    }
    sf_count_t const frames = sf_count_t(samples.size()) / channels;
    bool const written = sf_writef_int(file, samples.data(), frames) == frames;
    return sf_close(file) == 0 && written;
}

Audio readAudio(QString const& path)
{
    Audio audio;
    SF_INFO info{};
    SNDFILE* file = sf_open(QFile::encodeName(path).constData(), SFM_READ, &info);
    if (!file) {
        return audio;
    }
    audio.sampleRate = info.samplerate;
    audio.channels = info.channels;
    audio.format = info.format;
    audio.samples.resize(size_t(info.frames * info.channels));
    sf_readf_int(file, audio.samples.data(), info.frames);
    audio.hasBext =
        sf_command(file, SFC_GET_BROADCAST_INFO, &audio.bext, sizeof audio.bext) == SF_TRUE;
    sf_close(file);
    return audio;
}

bool writeFile(QString const& path, QByteArray const& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// A ramp in 8-bit steps, so that every format from 8-bit PCM up keeps it exactly.
std::vector<int> ramp(int count)
{
    std::vector<int> samples;
    for (int i = 0; i < count; ++i) {
        samples.push_back(((i * 37) % 256 - 128) * (1 << 24));
    }
    return samples;
}

JobSpec::Settings settingsAt(double hertz)
{
    JobSpec::Settings settings;
    settings.SetValidate(false);
    settings.GetFFM_Settings().GetFrequency().SetValue(hertz);
    return settings;
}

class AudioConversion : public ::testing::Test
{
protected:
    QString input(QString const& name) const { return m_in.filePath(name); }
    QString output(QString const& name) const { return m_out.filePath(name); }
    REPORTKIT::Results convert(AudioDataConverter& converter, QString const& inputPath)
    {
        return converter.convertFile(inputPath, m_out.path(), settingsAt(4625000.0),
                                     StartMicroseconds);
    }

    QTemporaryDir m_in;
    QTemporaryDir m_out;
};

// Type, file, start, stop, frequency, code and validation of each record.
QStringList describe(REPORTKIT::Results const& results)
{
    QStringList records;
    for (auto const& record : results.GetBinary()) {
        auto const& metadata = record.GetMetadata();
        records << QStringLiteral("%1 %2 %3 %4 %5 %6 %7")
                       .arg(record.GetType(), QFileInfo(record.GetURL()).fileName(),
                            metadata.GetStartTime().toString(Qt::ISODateWithMs),
                            metadata.GetStopTime().toString(Qt::ISODateWithMs))
                       .arg(metadata.GetDetail().GetFrequency().GetValue(), 0, 'f', 0)
                       .arg(metadata.GetDetail().GetCode())
                       .arg(record.GetValidate());
    }
    return records;
}

TEST_F(AudioConversion, WavBecomesBroadcastWaveWithBothRecordsAndValidSession)
{
    std::vector<int> const samples = ramp(1600);
    ASSERT_TRUE(writeAudio(input("rec.wav"), SF_FORMAT_WAV | SF_FORMAT_PCM_16, 8000, 2, samples));
    AudioDataConverter converter;
    ASSERT_TRUE(converter.isLoaded());

    REPORTKIT::Results const results = convert(converter, input("rec.wav"));

    EXPECT_FALSE(results.GetValidate());
    EXPECT_EQ(
        describe(results),
        QStringList({"AudioData rec.wav " + StartText + " " + StartText + " 4625000 WAV 0",
                     "AudioSession rec.session.xml " + StartText + " " + StartText + " 0  0"}));
    ASSERT_EQ(results.GetBinary().size(), 2u);
    EXPECT_EQ(results.GetBinary()[0].GetURL(), output("rec.wav"));
    QString const session = results.GetBinary()[1].GetURL();
    EXPECT_EQ(session, output("rec.session.xml"));

    Audio const wav = readAudio(output("rec.wav"));
    EXPECT_EQ(wav.format, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    EXPECT_EQ(wav.sampleRate, 8000);
    EXPECT_EQ(wav.channels, 2);
    EXPECT_EQ(wav.samples, samples);
    ASSERT_TRUE(wav.hasBext);
    // The time reference counts samples since midnight: (2 h 40 min 0.123 s) at 8000 Hz.
    EXPECT_EQ(QStringLiteral("%1 %2 %3 %4 %5")
                  .arg(QString::fromLatin1(wav.bext.origination_date, 10),
                       QString::fromLatin1(wav.bext.origination_time, 8))
                  .arg(wav.bext.time_reference_low)
                  .arg(wav.bext.time_reference_high)
                  .arg(QString::fromLatin1(wav.bext.originator)),
              QStringLiteral("2017-07-14 02:40:00 76800984 0 ZelkoDataStreamConverter"));

    EXPECT_EQ(zelkotest::validateXmlFile(session, QStringLiteral("audiosession.xsd")), QString());
    QFile sessionFile(session);
    ASSERT_TRUE(sessionFile.open(QIODevice::ReadOnly));
    QByteArray const text = sessionFile.readAll();
    EXPECT_TRUE(
        text.contains(QStringLiteral("<WavFile path=\"%1\" startTime=\"%2\" sampleRate=\"8000\" "
                                     "channels=\"2\" frames=\"800\" duration=\"0.100000\"/>")
                          .arg(output("rec.wav"), StartText)
                          .toUtf8()))
        << text.constData();
}

struct FormatRow
{
    char const* name;
    char const* fileName;
    int inputFormat;
    int expectedWavSubtype;
};

class InputFormats : public AudioConversion, public ::testing::WithParamInterface<FormatRow>
{
};

TEST_P(InputFormats, SamplesSurviveInTheWidestWavFormat)
{
    FormatRow const& row = GetParam();
    // One frame more than a read chunk: the last read brings a single frame.
    std::vector<int> const samples = ramp((1 << 16) + 1);
    ASSERT_TRUE(writeAudio(input(row.fileName), row.inputFormat, 48000, 1, samples));
    AudioDataConverter converter;
    qint64 lastDone = 0;
    converter.setProgressCallback([&lastDone](qint64 done, qint64) { lastDone = done; });
    ASSERT_EQ(convert(converter, input(row.fileName)).GetBinary().size(), 2u);
    EXPECT_EQ(lastDone, QFileInfo(input(row.fileName)).size());
    Audio const wav = readAudio(output("in.wav"));
    EXPECT_EQ(wav.format, SF_FORMAT_WAV | row.expectedWavSubtype);
    EXPECT_EQ(wav.samples, samples);
}

INSTANTIATE_TEST_SUITE_P(
    Audio, InputFormats,
    ::testing::Values(
        FormatRow{"Flac16", "in.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, SF_FORMAT_PCM_16},
        FormatRow{"Flac24", "in.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24, SF_FORMAT_PCM_24},
        FormatRow{"Aiff32", "in.aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_32, SF_FORMAT_PCM_32},
        FormatRow{"WavFloat", "in.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, SF_FORMAT_FLOAT},
        FormatRow{"WavU8", "in.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_U8, SF_FORMAT_PCM_U8},
        FormatRow{"Wav24", "in.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24, SF_FORMAT_PCM_24},
        FormatRow{"Wav32", "in.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_32, SF_FORMAT_PCM_32},
        FormatRow{"WavDouble", "in.wav", SF_FORMAT_WAV | SF_FORMAT_DOUBLE, SF_FORMAT_DOUBLE},
        FormatRow{"AuDouble", "in.au", SF_FORMAT_AU | SF_FORMAT_DOUBLE, SF_FORMAT_DOUBLE},
        FormatRow{"Au8", "in.au", SF_FORMAT_AU | SF_FORMAT_PCM_S8, SF_FORMAT_PCM_U8}),
    zelkotest::RowName());

struct PathRow
{
    char const* name;
    char const* input;
    char const* wav;
};

class OutputPaths : public AudioConversion, public ::testing::WithParamInterface<PathRow>
{
};

// Raw PCM (no sidecar) so that any name converts.
TEST_P(OutputPaths, OnlyTheLastExtensionIsCut)
{
    QString const path = input(QString::fromUtf8(GetParam().input));
    QDir().mkpath(QFileInfo(path).path());
    ASSERT_TRUE(writeFile(path, QByteArray(400, '\1')));
    AudioDataConverter converter;
    REPORTKIT::Results const results = convert(converter, path);
    ASSERT_FALSE(results.GetBinary().empty());
    EXPECT_EQ(results.GetBinary()[0].GetURL(), output(QString::fromUtf8(GetParam().wav)));
    EXPECT_TRUE(QFileInfo::exists(output(QString::fromUtf8(GetParam().wav))));
}

INSTANTIATE_TEST_SUITE_P(Audio, OutputPaths,
                         ::testing::Values(PathRow{"TwoDots", "abc.def.raw", "abc.def.wav"},
                                           PathRow{"NoDot", "noext", "noext.wav"},
                                           PathRow{"DotInDirectoryOnly", "dir.d/noext",
                                                   "noext.wav"},
                                           PathRow{"LeadingDot", ".raw", ".wav"}),
                         zelkotest::RowName());

TEST_F(AudioConversion, RawPcmFollowsItsSidecarAndDefaults)
{
    // Two big-endian frames of two channels: (1, -2), (256, 32767).
    QByteArray const pcm = QByteArray::fromHex("0001fffe01007fff");
    ASSERT_TRUE(writeFile(input("side.raw"), pcm) && writeFile(input("plain.raw"), pcm));
    ASSERT_TRUE(writeFile(input("side.raw.params"), "samplerate=16000\nchannels=2\nbyteorder=big"));
    AudioDataConverter converter;
    convert(converter, input("side.raw"));
    convert(converter, input("plain.raw"));

    Audio const side = readAudio(output("side.wav"));
    EXPECT_EQ(side.sampleRate, 16000);
    EXPECT_EQ(side.channels, 2);
    // 16-bit samples read back at full 32-bit scale
    EXPECT_EQ(side.samples, (std::vector<int>{1 * 65536, -2 * 65536, 256 * 65536, 32767 * 65536}));
    Audio const plain = readAudio(output("plain.wav"));
    EXPECT_EQ(plain.sampleRate, 48000);
    EXPECT_EQ(plain.channels, 1);
    EXPECT_EQ(plain.samples,
              (std::vector<int>{256 * 65536, -257 * 65536, 1 * 65536, -129 * 65536}));
}

TEST_F(AudioConversion, UnusableInputOrOutputReportsNothingAndLeavesNoFile)
{
    ASSERT_TRUE(writeFile(input("bad.raw"), {}) &&
                writeFile(input("bad.raw.params"), "channels=65"));
    ASSERT_TRUE(writeFile(input("big.raw"), {}) &&
                writeFile(input("big.raw.params"), "#" + QByteArray(64 * 1024, ' ')));
    std::vector<int> const samples = ramp(10);
    ASSERT_TRUE(writeAudio(input("ok.wav"), SF_FORMAT_WAV | SF_FORMAT_PCM_16, 8000, 1, samples));

    AudioDataConverter converter;
    zelkotest::TraceCapture trace;
    EXPECT_TRUE(convert(converter, input("missing.wav")).GetBinary().empty());
    EXPECT_TRUE(convert(converter, input("bad.raw")).GetBinary().empty());
    EXPECT_TRUE(convert(converter, input("big.raw")).GetBinary().empty());
    EXPECT_TRUE(converter
                    .convertFile(input("ok.wav"), m_out.filePath("no/such/dir"), settingsAt(0),
                                 StartMicroseconds)
                    .GetBinary()
                    .empty());
    EXPECT_EQ(QDir(m_out.path()).entryList(QDir::Files), QStringList());
    ASSERT_EQ(trace.lines().size(), 4u) << trace.messages().join(QLatin1Char('\n')).toStdString();
    EXPECT_TRUE(trace.messages()[1].startsWith(
        QStringLiteral("ConvertToWav(%1): invalid sidecar %1.params: line 1:")
            .arg(input("bad.raw"))))
        << trace.messages()[1].toStdString();
}

TEST_F(AudioConversion, AnUnwritableSessionFileLeavesOnlyTheAudioRecord)
{
    ASSERT_TRUE(writeAudio(input("rec.wav"), SF_FORMAT_WAV | SF_FORMAT_PCM_16, 8000, 1, ramp(8)));
    ASSERT_TRUE(QDir(m_out.path()).mkdir(QStringLiteral("rec.session.xml")));
    AudioDataConverter converter;
    zelkotest::TraceCapture trace;
    REPORTKIT::Results const results = convert(converter, input("rec.wav"));
    ASSERT_EQ(results.GetBinary().size(), 1u);
    EXPECT_EQ(results.GetBinary()[0].GetType(), QStringLiteral("AudioData"));
    ASSERT_EQ(trace.messages().size(), 1);
    EXPECT_TRUE(trace.messages()[0].startsWith(
        QStringLiteral("WriteSession: cannot write %1: ").arg(output("rec.session.xml"))));
}

// Both copy paths: WAV samples copied as bytes, FLAC samples decoded and encoded.
TEST_F(AudioConversion, AFullDiskLeavesNoWav)
{
    if (!QFileInfo::exists(QStringLiteral("/dev/full"))) {
        GTEST_SKIP() << "no /dev/full";
    }
    AudioDataConverter converter;
    zelkotest::TraceCapture trace;
    for (char const* name : {"rec.wav", "rec.flac"}) {
        ASSERT_TRUE(writeAudio(input(name),
                               (QByteArray(name).endsWith("wav") ? SF_FORMAT_WAV : SF_FORMAT_FLAC) |
                                   SF_FORMAT_PCM_16,
                               8000, 1, ramp(40000)));
        ASSERT_TRUE(QFile::link(QStringLiteral("/dev/full"), output("rec.wav.part")));
        EXPECT_TRUE(convert(converter, input(name)).GetBinary().empty()) << name;
        EXPECT_EQ(QDir(m_out.path()).entryList(QDir::Files | QDir::System), QStringList()) << name;
    }
    EXPECT_EQ(trace.lines().size(), 2u);
}

struct FailureRow
{
    char const* name;
    char const* input;
    QStringList expectedTypes;
};

class FailingLibrary_ : public AudioConversion, public ::testing::WithParamInterface<FailureRow>
{
};

TEST_P(FailingLibrary_, FailedStepsLeaveOutTheirRecords)
{
    ASSERT_TRUE(writeFile(input(GetParam().input), "0123456789"));
    AudioDataConverter converter(FailingLibrary);
    ASSERT_TRUE(converter.isLoaded());
    std::vector<qint64> progress;
    converter.setProgressCallback([&progress](qint64 done, qint64) { progress.push_back(done); });
    REPORTKIT::Results const results = convert(converter, input(GetParam().input));
    QStringList types;
    for (auto const& record : results.GetBinary()) {
        types << record.GetType();
    }
    EXPECT_EQ(types, GetParam().expectedTypes);
    // An unknown length tells nothing; one frame of one is the whole input.
    EXPECT_EQ(progress, std::vector<qint64>{10});
}

INSTANTIATE_TEST_SUITE_P(
    Audio, FailingLibrary_,
    ::testing::Values(FailureRow{"BothSucceed", "rec.raw", {"AudioData", "AudioSession"}},
                      FailureRow{"ConversionFails", "fail-convert.raw", {}},
                      FailureRow{"SessionFails", "fail-session.raw", {"AudioData"}}),
    zelkotest::RowName());

struct LoadFailureRow
{
    char const* name;
    QString library;
};

class LoadFailures : public AudioConversion, public ::testing::WithParamInterface<LoadFailureRow>
{
};

TEST_P(LoadFailures, AreToldOnceAndEveryConversionIsEmpty)
{
    int const liveBefore = CfgCenter::LiveInstanceCount();
    zelkotest::TraceCapture trace(0x20);
    testing::internal::CaptureStdout();
    {
        AudioDataConverter converter(GetParam().library);
        EXPECT_FALSE(converter.isLoaded());
        EXPECT_EQ(CfgCenter::LiveInstanceCount(), liveBefore);
        ASSERT_FALSE(trace.lines().empty());
        EXPECT_EQ(trace.lines().back().message,
                  QStringLiteral("AudioDataConverter: Cannot load AudioFileExport.DLL"));
        EXPECT_EQ(trace.lines().back().sourceFile,
                  QStringLiteral("massdatamanagement/zelkodatastreamconverter/audiodataconverter"));
        trace.clear();
        ASSERT_TRUE(writeFile(input("rec.raw"), {}));
        EXPECT_TRUE(convert(converter, input("rec.raw")).GetBinary().empty());
        EXPECT_TRUE(trace.lines().empty());
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "AudioDataConverter: Cannot load AudioFileExport.DLL\n");
}

INSTANTIATE_TEST_SUITE_P(Audio, LoadFailures,
                         ::testing::Values(LoadFailureRow{"Missing",
                                                          QStringLiteral("NoSuchAudioExport.DLL")},
                                           LoadFailureRow{"NotAnAudioTransformer",
                                                          QStringLiteral(ZELKO_COUNTER_PLUGIN)}),
                         zelkotest::RowName());

TEST(AudioRelease, TheLibraryIsReleasedWithTheConverter)
{
    int const liveBefore = CfgCenter::LiveInstanceCount();
    {
        AudioDataConverter const first;
        AudioDataConverter const second; // each converter has its own object
        EXPECT_EQ(CfgCenter::LiveInstanceCount(), liveBefore + 2);
    }
    EXPECT_EQ(CfgCenter::LiveInstanceCount(), liveBefore);
}

} // namespace
