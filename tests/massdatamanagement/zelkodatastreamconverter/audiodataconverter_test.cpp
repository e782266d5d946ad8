// The audio converter with the real audio export library, with a library that fails on
// request, and with none, driven by scripts: each tests/data/audio/<name>.scenario makes
// inputs and converts them; the driver echoes each line with what came of it (records,
// progress, traces, the files written, the WAV read back by libsndfile with its bext chunk,
// the session file) and compares the whole with <name>.dump beside the script. Operations:
//
//   audio NAME wav|wavex|w64|rf64|flac|aiff|au pcm16|pcm24|pcm32|u8|s8|float|double RATE CHANNELS
//   FRAMES
//                      an input of a ramp that every format from 8-bit PCM up keeps exactly
//   file NAME hex=... | text=a b\r\nc | comment=SIZE   a raw input or sidecar (a comment of SIZE)
//   mkdir NAME | link-full NAME     in the output directory: a directory, a link to /dev/full
//   library standard|failing|counter|FILE | release   a new converter with that library, none
//   convert NAME [out=DIR]          into the output directory (or a directory DIR inside it)
//   wav NAME | session NAME         an output read back

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>
#include <appstartup/cfgcenter.h>
#include <gtest/gtest.h>
#include <jobspec/settings.h>
#include <map>
#include <massdatamanagement/zelkodatastreamconverter/audiodataconverter.h>
#include <sndfile.h>
#include <support/golden.h>
#include <support/qstringprinter.h>
#include <support/schemavalidator.h>
#include <support/tracecapture.h>

using zelkodatastreamconverter::AudioDataConverter;

namespace {

// 2017-07-14 02:40:00.123456 UTC: the trailing microseconds are dropped.
constexpr unsigned long long StartMicroseconds = 1500000000123456ULL;

std::map<QString, int> const formats{
    {"wav", SF_FORMAT_WAV},      {"wavex", SF_FORMAT_WAVEX},  {"w64", SF_FORMAT_W64},
    {"rf64", SF_FORMAT_RF64},    {"flac", SF_FORMAT_FLAC},    {"aiff", SF_FORMAT_AIFF},
    {"au", SF_FORMAT_AU},        {"pcm16", SF_FORMAT_PCM_16}, {"pcm24", SF_FORMAT_PCM_24},
    {"pcm32", SF_FORMAT_PCM_32}, {"u8", SF_FORMAT_PCM_U8},    {"s8", SF_FORMAT_PCM_S8},
    {"float", SF_FORMAT_FLOAT},  {"double", SF_FORMAT_DOUBLE}};

QString formatName(int format)
{
    QStringList names;
    for (auto const& [name, code] : formats) {
        if ((format & SF_FORMAT_TYPEMASK) == code || (format & SF_FORMAT_SUBMASK) == code) {
            names << name;
        }
    }
    return names.join('/');
}

class AudioScenario
{
public:
    QString run(QString const& script)
    {
        for (QString const& line : script.split('\n')) {
            if (!line.trimmed().isEmpty() && !line.startsWith('#')) {
                m_out << line << '\n';
                apply(line, line.split(' ', Qt::SkipEmptyParts));
            }
        }
        return m_text.replace(m_in.path(), "IN").replace(m_outDir.path(), "OUT");
    }

private:
    QTemporaryDir m_in;
    QTemporaryDir m_outDir;
    std::unique_ptr<AudioDataConverter> m_converter = std::make_unique<AudioDataConverter>();
    std::map<QString, std::vector<int>> m_ramps; // by base name
    QString m_text;
    QTextStream m_out{&m_text};

    QString in(QString const& name) const { return m_in.filePath(name); }
    QString out(QString const& name) const { return m_outDir.filePath(name); }
    static QString base(QString const& name) { return QFileInfo(name).completeBaseName(); }

    void apply(QString const& line, QStringList const& args)
    {
        QString const op = args[0];
        if (op == "audio") {
            writeAudio(args[1], formats.at(args[2]) | formats.at(args[3]), args[4].toInt(),
                       args[5].toInt(), args[6].toInt());
        } else if (op == "file") {
            QString const how = line.section(' ', 2); // the rest of the line, spaces and all
            QByteArray const bytes =
                how.startsWith("hex=") ? QByteArray::fromHex(how.mid(4).toLatin1())
                : how.startsWith("text=")
                    ? how.mid(5).replace("\\n", "\n").replace("\\r", "\r").toUtf8()
                    : "#" + QByteArray(how.mid(8).toInt() - 1, ' ');
            QDir().mkpath(QFileInfo(in(args[1])).path());
            QFile file(in(args[1]));
            EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        } else if (op == "mkdir") {
            QDir(m_outDir.path()).mkdir(args[1]);
        } else if (op == "link-full") {
            QFile::link("/dev/full", out(args[1]));
        } else if (op == "library") {
            load(args[1]);
        } else if (op == "release") {
            int const liveBefore = CfgCenter::LiveInstanceCount();
            m_converter.reset();
            m_out << "  -> library instances " << liveBefore - CfgCenter::LiveInstanceCount()
                  << " fewer\n";
        } else if (op == "convert") {
            convert(in(args[1]),
                    args.value(2).startsWith("out=") ? out(args[2].mid(4)) : m_outDir.path());
        } else if (op == "wav") {
            showWav(out(args[1]));
        } else if (op == "session") {
            QString const complaint = zelkotest::validateXmlFile(out(args[1]), "audiosession.xsd");
            m_out << zelkotest::readFile(out(args[1]))
                  << "  -> schema: " << (complaint.isEmpty() ? QStringLiteral("valid") : complaint)
                  << '\n';
        } else {
            m_out << "  -> UNKNOWN OPERATION\n";
        }
    }

    void writeAudio(QString const& name, int format, int rate, int channels, int frames)
    {
        std::vector<int>& samples = m_ramps[base(name)];
        samples.clear();
        for (int i = 0; i < frames * channels; ++i) {
            samples.push_back(((i * 37) % 256 - 128) * (1 << 24));
        }
        SF_INFO info{0, rate, channels, format, 0, 0};
        SNDFILE* file = sf_open(QFile::encodeName(in(name)).constData(), SFM_WRITE, &info);
        ASSERT_NE(file, nullptr) << sf_strerror(nullptr);
        EXPECT_EQ(sf_writef_int(file, samples.data(), frames), frames);
        sf_close(file);
    }

    // The converter before lives on until the new one has loaded: each has its own object.
    void load(QString const& library)
    {
        int const liveBefore = CfgCenter::LiveInstanceCount();
        zelkotest::TraceCapture trace(0x20);
        testing::internal::CaptureStdout();
        auto next = std::make_unique<AudioDataConverter>(
            library == "standard"  ? QStringLiteral("AudioFileExport.DLL")
            : library == "failing" ? QStringLiteral(ZELKO_FAILING_AUDIO_PLUGIN)
            : library == "counter" ? QStringLiteral(ZELKO_COUNTER_PLUGIN)
                                   : library);
        QString const printed = QString::fromStdString(testing::internal::GetCapturedStdout());
        m_out << "  -> loaded " << (next->isLoaded() ? "yes" : "no") << ", library instances "
              << CfgCenter::LiveInstanceCount() - liveBefore << " more than before, stdout: \""
              << printed.trimmed() << "\"\n";
        for (auto const& line : trace.lines()) {
            m_out << "     trace " << line.sourceFile << ": " << line.message << '\n';
        }
        m_converter = std::move(next);
    }

    void convert(QString const& input, QString const& outputDirectory)
    {
        QStringList progress;
        m_converter->setProgressCallback([&progress](qint64 done, qint64 total) {
            progress << QStringLiteral("%1/%2").arg(done).arg(total);
        });
        zelkotest::TraceCapture trace;
        JobSpec::Settings settings;
        settings.SetValidate(false);
        settings.GetFFM_Settings().GetFrequency().SetValue(4625000.0);
        REPORTKIT::Results const results =
            m_converter->convertFile(input, outputDirectory, settings, StartMicroseconds);
        m_out << "  -> validate " << results.GetValidate() << ", " << results.GetBinary().size()
              << " records\n";
        for (auto const& record : results.GetBinary()) {
            auto const& metadata = record.GetMetadata();
            m_out << "     " << record.GetType() << ' ' << record.GetURL() << ' '
                  << metadata.GetStartTime().toString(Qt::ISODateWithMs) << ' '
                  << metadata.GetStopTime().toString(Qt::ISODateWithMs) << ' '
                  << QString::number(metadata.GetDetail().GetFrequency().GetValue(), 'f', 0) << ' '
                  << metadata.GetDetail().GetCode() << ' ' << record.GetValidate() << '\n';
        }
        // Every call for a short input; for a long one how many and the last.
        m_out
            << "     progress: "
            << (progress.size() <= 4
                    ? progress.join(' ')
                    : QStringLiteral("%1 calls, last %2").arg(progress.size()).arg(progress.last()))
            << "\n     files: "
            << QDir(m_outDir.path())
                   .entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot)
                   .join(' ')
            << '\n';
        for (auto const& line : trace.lines()) {
            m_out << "     trace " << line.sourceFile << ": " << line.message << '\n';
        }
    }

    void showWav(QString const& path)
    {
        SF_INFO info{};
        SNDFILE* file = sf_open(QFile::encodeName(path).constData(), SFM_READ, &info);
        if (!file) {
            m_out << "  -> unreadable\n";
            return;
        }
        std::vector<int> samples(std::size_t(info.frames * info.channels));
        sf_readf_int(file, samples.data(), info.frames);
        SF_BROADCAST_INFO bext{};
        bool const hasBext =
            sf_command(file, SFC_GET_BROADCAST_INFO, &bext, sizeof bext) == SF_TRUE;
        sf_close(file);
        auto const ramp = m_ramps.find(base(path));
        m_out << "  -> " << formatName(info.format) << ' ' << info.samplerate << " Hz, "
              << info.channels << " channels, " << info.frames << " frames, samples: ";
        if (ramp != m_ramps.end()) {
            m_out << (ramp->second == samples ? "the input's" : "NOT THE INPUT'S");
        }
        for (std::size_t i = 0; i < samples.size() && i < 8 && ramp == m_ramps.end(); ++i) {
            m_out << ' ' << samples[i];
        }
        m_out << "\n     bext: ";
        if (hasBext) {
            // The time reference counts samples since midnight.
            m_out << QString::fromLatin1(bext.origination_date, 10) << ' '
                  << QString::fromLatin1(bext.origination_time, 8) << ' ' << bext.time_reference_low
                  << ' ' << bext.time_reference_high << ' ' << QString::fromLatin1(bext.originator);
        }
        m_out << '\n';
    }
};

} // namespace

using AudioConversion = testing::TestWithParam<QString>;

TEST_P(AudioConversion, MatchesItsGoldenDump)
{
    QString const base = QStringLiteral(ZELKO_GOLDEN_DIR "/audio/") + GetParam();
    QString const script = QString::fromUtf8(zelkotest::readFile(base + ".scenario"));
    ASSERT_FALSE(script.isEmpty());
    QString const dump = "audio/" + GetParam() + ".dump";
    EXPECT_EQ(zelkotest::compareWithGolden(AudioScenario().run(script).toUtf8(), dump), QString());
}

INSTANTIATE_TEST_SUITE_P(Scripts, AudioConversion,
                         testing::ValuesIn(QDir(ZELKO_GOLDEN_DIR "/audio")
                                               .entryList({"*.scenario"}, QDir::Files, QDir::Name)
                                               .replaceInStrings(".scenario", "")),
                         [](testing::TestParamInfo<QString> const& info) {
                             return QString(info.param).replace('-', '_').toStdString();
                         });
