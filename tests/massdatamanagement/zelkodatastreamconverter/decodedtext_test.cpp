// Decoded text: the model and the converter driven by scenario scripts
// (tests/data/decodedtext/scenarios) with golden dumps, the sample recordings against the
// checked-in documents, damaged recordings kept as regressions, conversions side by side, and
// real RTTY traffic against the text minimodem printed.

#include <QDir>
#include <QFileInfo>
#include <QMap>
#include <QTemporaryDir>
#include <alphabetkit/codechandler.h>
#include <climits>
#include <gtest/gtest.h>
#include <jobspec/settings.h>
#include <massdatamanagement/zelkodatastreamconverter/clock.h>
#include <massdatamanagement/zelkodatastreamconverter/decodedtextconverter.h>
#include <massdatamanagement/zelkodatastreamconverter/decodedtextmodel.h>
#include <massdatamanagement/zelkodatastreamconverter/frameformat.h>
#include <memory>
#include <nerikresultdataxml/datablock.h>
#include <nerikresultdataxml/nerikresultdata.h>
#include <nerikresultdataxml/transmission.h>
#include <nerikresultdataxml/userdata.h>
#include <recordingwriter/decodedtextpayload.h>
#include <recordingwriter/recordingwriter.h>
#include <support/golden.h>
#include <support/qstringprinter.h>
#include <support/scenarioscript.h>
#include <support/schemavalidator.h>
#include <support/tracecapture.h>
#include <thread>

using namespace zelkodatastreamconverter;
using NerikResultDataXml::DataBlock;
using NerikResultDataXml::NerikResultData;
using NerikResultDataXml::Transmission;
using zelkorecording::RecordingWriter;

namespace {

QString const DataDir = QStringLiteral(ZELKO_SOURCE_DIR "/tests/data/");
QString const SampleDir = QStringLiteral(ZELKO_SOURCE_DIR "/data/samples/");
constexpr quint64 BaseTime = 1710496800ull * 1000000ull; // 2024-03-15 10:00:00 UTC, in µs
// The wall clock names the result file and stamps its record; fixed, both are repeatable.
QDateTime const ConversionTime(QDate(2026, 2, 1), QTime(12, 30, 45), Qt::LocalTime);

// Every test process reads its alphabets from the shipped set, through a configuration file
// of its own, before the first model is constructed.
class AlphabetsConfiguration : public ::testing::Environment
{
public:
    void SetUp() override
    {
        QString const path = m_directory.filePath(QStringLiteral("zelko.ini"));
        QFile ini(path);
        ASSERT_TRUE(ini.open(QIODevice::WriteOnly));
        ini.write("[JobManagement]\nMorseAlphabets=" ZELKO_SOURCE_DIR "/data/alphabets\n");
        qputenv("ZELKO_CONFIG", QFile::encodeName(path));
    }

private:
    QTemporaryDir m_directory;
};
::testing::Environment* const configuration =
    ::testing::AddGlobalTestEnvironment(new AlphabetsConfiguration);

JobSpec::Settings textSettings(QString const& decoder, QString const& alphabet)
{
    JobSpec::Settings settings;
    settings.SetValidate(false);
    settings.GetDemodulator_Settings().GetDecoder().AppendValue(decoder);
    settings.GetDemodulator_Settings().SetAlphabet(alphabet);
    return settings;
}

/// The text of a document's blocks: channel, then content.
std::map<int, QString> contents(QByteArray const& xml)
{
    NerikResultData document;
    EXPECT_TRUE(document.SetXmlString(QString::fromUtf8(xml)))
        << qPrintable(document.GetErrorText());
    std::map<int, QString> texts;
    for (Transmission const* transmission : document.GetTransmission()) {
        for (DataBlock const* block : transmission->GetDataBlock()) {
            texts[block->GetChannel()] += block->GetContent();
        }
    }
    return texts;
}

// ITA2 codes as a teleprinter decoder delivers them (ITU-T S.1), by name; else a number.
quint16 codeOf(QString const& name)
{
    static QHash<QString, quint16> const ita2{
        {"E", 1},  {"LF", 2}, {"A", 3},  {"SP", 4}, {"S", 5},     {"I", 6},    {"U", 7},  {"CR", 8},
        {"D", 9},  {"R", 10}, {"N", 12}, {"T", 16}, {"Z", 17},    {"L", 18},   {"W", 19}, {"H", 20},
        {"Y", 21}, {"P", 22}, {"Q", 23}, {"O", 24}, {"FIGS", 27}, {"LTRS", 31}};
    return ita2.value(name, quint16(name.toUInt(nullptr, 0)));
}

QString escaped(QString const& text)
{
    QString out;
    for (QChar const ch : text) {
        out += ch.isPrint() && ch != '\\' ? QString(ch)
                                          : QStringLiteral("\\x%1").arg(ch.unicode(), 0, 16);
    }
    return out;
}

QString msAfterBase(QDateTime const& time)
{
    return time.isValid()
               ? QString::number(time.toMSecsSinceEpoch() - qint64(BaseTime / 1000)) + "ms"
               : "-";
}

/// Everything a transmission holds, one line per item.
QStringList described(Transmission const* transmission)
{
    if (!transmission) {
        return {"  no transmission"};
    }
    QStringList out{QStringLiteral("  transmission %1..%2")
                        .arg(msAfterBase(transmission->GetStartTime()),
                             msAfterBase(transmission->GetStopTime()))};
    for (DataBlock const* b : transmission->GetDataBlock()) {
        out << QStringLiteral("  block ch=%1 id=%2 code=\"%3\" rtl=%4 %5 start=%6/%7 frame=%8/%9 "
                              "userdata=%10")
                   .arg(b->GetChannel())
                   .arg(b->GetID())
                   .arg(b->GetContentCode())
                   .arg(b->GetContentDirectionRTL())
                   .arg(b->GetRawContentType())
                   .arg(b->GetContentStart())
                   .arg(b->GetRawStart())
                   .arg(b->GetContentFramePos())
                   .arg(b->GetRawFramePos())
                   .arg(b->GetUserData().size());
        QStringList raw;
        for (QChar const ch : b->GetRawContent()) {
            raw << QString::number(ch.unicode(), 16);
        }
        out << "    raw " + raw.join(' ') << "    text \"" + escaped(b->GetContent()) + '"';
        for (NerikResultDataXml::TimeStamp const& stamp : b->GetTimeStamp()) {
            out << QStringLiteral("    stamp %1 %2/%3")
                       .arg(msAfterBase(stamp.GetTime()))
                       .arg(stamp.GetPosition())
                       .arg(stamp.GetRawPosition());
        }
    }
    return out;
}

/// Applies the operations of one script (see tests/data/decodedtext/scenarios/README.md).
class Scenario
{
public:
    QString check(QString const& name)
    {
        return zelkotest::checkScenario(
            "decodedtext/scenarios", name, [this](QStringList const& words) { apply(words); },
            [this](zelkotest::TraceLine const& trace) {
                return trace.sourceFile.section('/', -1) + ' ' +
                       QString(trace.message).replace(m_dir.path(), "<dir>");
            },
            m_out);
    }

private:
    void apply(QStringList const& w)
    {
        QString const& op = w[0];
        bool changed = false;
        if (op == "model") {
            m_nextMs = 0;
            m_model = std::make_unique<DecodedTextModel>();
            m_model->setAlphabetHandler(std::make_shared<CodecHandler>());
            m_model->setDecoder(w[1]);
            if (w[2] != "None") {
                m_model->setAlphabet(w[2], changed);
            }
        } else if (op == "bare") {
            m_model = std::make_unique<DecodedTextModel>();
        } else if (op == "frame") {
            frame(w);
        } else if (op == "alphabet") {
            bool const result = m_model->setAlphabet(w.value(1), changed);
            m_out << QStringLiteral("  -> %1 changed=%2 now \"%3\"")
                         .arg(result)
                         .arg(changed)
                         .arg(m_model->getAlphabet());
        } else if (op == "decoder") {
            bool const result = m_model->setDecoder(w[1]);
            m_out << QStringLiteral("  -> %1 decoder %2 alphabet \"%3\"")
                         .arg(result)
                         .arg(m_model->getDecoder(), m_model->getAlphabet());
        } else if (op == "alphabets") {
            m_out << "  available " + m_model->getAvailableAlphabets().join(", ");
            m_out << "  all " + m_model->getAllAlphabets().join(", ");
            m_out << "  available " + m_model->getAvailableAlphabets().join(", ");
            m_out << "  alphabet \"" + m_model->getAlphabet() + '"';
        } else if (op == "clear") {
            m_model->clear();
        } else if (op == "translate") {
            m_model->translateBlock(nullptr);
            m_model->translateCurrentTransmission();
        } else if (op == "userdata") {
            DecodedTextModel::getDataBlock(m_model->getCurrentTransmission(), w[1].toInt())
                ->AddUserData(new NerikResultDataXml::UserData(0, 1, "Comment", "x"));
        } else if (op == "continue") {
            continueChannel(w);
        } else if (op == "show") {
            m_out << described(m_model->getCurrentTransmission());
        } else if (op == "garbage") {
            m_recording += RecordingWriter::garbage(w[1].toInt(), w[2].toUInt(), false);
        } else if (op == "convert") {
            convert(w);
        } else {
            ADD_FAILURE() << "unknown operation " << op.toStdString();
        }
    }

    static QDateTime timeAt(qint64 ms)
    {
        return QDateTime::fromMSecsSinceEpoch(qint64(BaseTime / 1000) + ms, Qt::UTC);
    }

    // frame [at=MS] [us=N] [count=N] [type=N] [cut=N] [tail=HEX] [magic] [swap] [header-only]
    //       [own] CHANNEL:CODE... (A..B:CODE for each channel from A to B)
    void frame(QStringList const& w)
    {
        QMap<QString, QString> options;
        std::vector<zelkorecording::DecodedTextEntry> entries;
        for (QString const& word : w.mid(1)) {
            if (word.contains(':')) {
                QStringList const range = word.section(':', 0, 0).split("..");
                for (qint64 ch = range[0].toLongLong(); ch <= range.last().toLongLong(); ++ch) {
                    entries.push_back({qint32(ch), codeOf(word.section(':', 1))});
                }
            } else {
                options[word.section('=', 0, 0)] = word.section('=', 1);
            }
        }
        qint64 const at = options.contains("at") ? options["at"].toLongLong() : m_nextMs;
        m_nextMs = at + 1000;
        quint64 const time = BaseTime + quint64(at) * 1000 + options.value("us").toULongLong();
        std::optional<qint32> count;
        if (options.contains("count")) {
            count = qint32(options["count"].toLongLong());
        }
        QByteArray bytes = RecordingWriter::frameBytes(
            options.value("type", QString::number(FrameType::DecodedText)).toUInt(),
            zelkorecording::decodedTextPayload(time, entries, count));
        if (options.contains("header-only")) {
            bytes = RecordingWriter::headerBytes(FRAME_MAGIC, 6, FrameType::DecodedText);
        }
        if (options.contains("cut")) {
            bytes.truncate(options["cut"].toInt());
        }
        bytes += QByteArray::fromHex(options.value("tail").toLatin1());
        if (options.contains("magic")) {
            bytes[0] = char(bytes[0] ^ 0x01);
        }
        if (options.contains("swap")) {
            RecordingWriter::swapWords(bytes);
        }
        if (!m_model) {
            m_recording += bytes;
            return;
        }
        Transmission own;
        if (!m_model->processData(bytes, options.contains("own") ? &own : nullptr)) {
            m_out << "  -> rejected";
        }
        if (options.contains("own")) {
            m_out << described(&own);
        }
    }

    // continue CHANNEL at=MS CODE... [at=MS CODE...]: a new block of the channel made by
    // createDataBlock, filled frame by frame, translated on its own and added.
    void continueChannel(QStringList const& w)
    {
        DataBlock* block = nullptr;
        for (QString const& word : w.mid(2)) {
            if (!word.startsWith("at=")) {
                block->AppendRawData(QChar(codeOf(word)));
            } else if (!block) {
                block = m_model->createDataBlock(w[1].toInt(), timeAt(word.mid(3).toLongLong()));
            } else {
                block->EndFrame();
                block->SetTimeStamp(timeAt(word.mid(3).toLongLong()));
                block->BeginFrame();
            }
        }
        block->EndFrame();
        m_model->translateBlock(block);
        m_model->getCurrentTransmission()->AddDataBlock(block);
    }

    // convert DECODER ALPHABET [input=missing|none]: the frames so far as a recording.
    void convert(QStringList const& w)
    {
        QString input = m_dir.filePath("recording.zdr");
        QFile file(input);
        file.open(QIODevice::WriteOnly);
        file.write(m_recording);
        file.close();
        QMap<QString, QString> const inputs{{"input=missing", m_dir.filePath("missing.zdr")},
                                            {"input=none", QString()}};
        input = inputs.value(w.value(3), input);
        QDir const out(m_dir.filePath(QString::number(m_conversions++)));
        out.mkpath(".");
        DecodedTextConverter converter;
        REPORTKIT::Results const results =
            converter.convertFile(input, out.path(), textSettings(w[1], w[2]), 0);
        m_recording.clear();
        m_nextMs = 0;
        for (REPORTKIT::Text const& record : results.GetText()) {
            m_out << QStringLiteral("  record %1 %2 start=%3 stop=%4")
                         .arg(record.GetMetadata().GetDetail().GetCode(),
                              QFileInfo(record.GetURL()).fileName(),
                              record.GetMetadata().GetStartTime().toString(Qt::ISODate),
                              record.GetMetadata().GetStopTime().toString(Qt::ISODate));
        }
        for (QString const& name : out.entryList(QDir::Files, QDir::Name)) {
            QString const complaint =
                zelkotest::validateXmlFile(out.filePath(name), "nerikresultdata.xsd");
            m_out << "  file " + name + (complaint.isEmpty() ? " valid" : " " + complaint);
            NerikResultData document;
            if (document.LoadFile(out.filePath(name))) {
                for (Transmission const* transmission : document.GetTransmission()) {
                    m_out << described(transmission);
                }
            }
        }
    }

    Clock::Override const m_clock{ConversionTime};
    QTemporaryDir m_dir;
    std::unique_ptr<DecodedTextModel> m_model;
    QByteArray m_recording;
    qint64 m_nextMs = 0;
    int m_conversions = 0;
    QStringList m_out;
};

using DecodedTextScenario = testing::TestWithParam<QString>;

TEST_P(DecodedTextScenario, GivesTheGoldenDump)
{
    EXPECT_EQ(Scenario().check(GetParam()), QString());
}

INSTANTIATE_TEST_SUITE_P(Scripts, DecodedTextScenario,
                         testing::ValuesIn(zelkotest::scenarioNames("decodedtext/scenarios")),
                         zelkotest::ScenarioName());

// The samples give the checked-in documents (regenerate with ZELKO_REGENERATE_GOLDEN=1), which
// carry on every channel the plain text that the sample generator encoded.
struct Sample
{
    char const* name;
    char const* decoder;
    char const* alphabet;
    std::map<int, QString> texts;
};
using DecodedTextSample = testing::TestWithParam<Sample>;

TEST_P(DecodedTextSample, GivesTheGoldenDocument)
{
    Clock::Override const clock(ConversionTime);
    zelkotest::TraceCapture const capture(0x20);
    QTemporaryDir out;
    QString const name = QString::fromLatin1(GetParam().name);
    REPORTKIT::Results const results = DecodedTextConverter().convertFile(
        SampleDir + name + ".zdr", out.path(),
        textSettings(GetParam().decoder, GetParam().alphabet), 0);
    QString const path = out.filePath("NerikResultData_20260201_123045.xml");
    ASSERT_EQ(results.GetText().size(), 1u);
    EXPECT_EQ(results.GetText().front().GetURL(), path);
    EXPECT_EQ(zelkotest::validateXmlFile(path, "nerikresultdata.xsd"), QString());
    QByteArray const xml = zelkotest::readFile(path);
    EXPECT_EQ(zelkotest::compareWithGolden(xml, "decodedtext/" + name + ".xml"), QString());
    EXPECT_EQ(contents(xml), GetParam().texts);
    EXPECT_TRUE(capture.messages().filter("invalid frame header").isEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Samples, DecodedTextSample,
    testing::Values(
        Sample{"teleprinter-two-channels",
               "RTTY",
               "International",
               {{1, "RYRYRYRY CQ CQ DE DDK9\r\nSMDL01 EDZW 151000\r\n"
                    "AAXX 15101 10400 42960 80205 10042 20017 30112 40153 57010\r\n"
                    "10488 42975 70704 10046 20021 30139 40170 52008=\r\nNNNN\r\n"},
                {2, "ZCZC 0412 URGENT\r\nHAMBURG, 15 MARCH (PRESS) - THE PORT REPORTED 1.234 "
                    "CONTAINERS (+3 PCT) IN WEEK 11.\r\nNNNN\r\n"}}},
        Sample{"navtex-ccir476",
               "NAVTEX",
               "CCIR 476",
               {{0, "ZCZC SA14\r\n151030 UTC MAR 24\r\nPINNEBERG NAVTEX\r\nNAV WARN NR 112\r\n"
                    "GERMAN BIGHT. WRECK POSITION 54-02.3N 007-51.6E.\r\n"
                    "SHIPS REQ TO PASS WITH CAUTION.\r\nNNNN\r\n"}}}),
    [](testing::TestParamInfo<Sample> const& info) {
        return QString(info.param.name).replace('-', '_').toStdString();
    });

// Damaged recordings kept as regression inputs (hand-made, or found by fuzzing): each converts
// to one valid document listed with its stop time.
using DecodedTextRegression = testing::TestWithParam<char const*>;

TEST_P(DecodedTextRegression, ConvertsToAValidListedDocument)
{
    zelkotest::TraceCapture const quiet(0x20);
    QTemporaryDir out;
    REPORTKIT::Results const results = DecodedTextConverter().convertFile(
        DataDir + "decodedtext/regressions/" + GetParam() + ".zdr", out.path(),
        textSettings("RTTY", "International"), 0);
    ASSERT_EQ(results.GetText().size(), 1u);
    EXPECT_TRUE(results.GetText().front().GetMetadata().GetStopTime().isValid());
    EXPECT_EQ(zelkotest::validateXmlFile(results.GetText().front().GetURL(), "nerikresultdata.xsd"),
              QString());
}

INSTANTIATE_TEST_SUITE_P(Inputs, DecodedTextRegression,
                         testing::Values("channel-extremes", "entry-count-past-frame",
                                         "frame-of-another-type", "length-below-header"),
                         [](testing::TestParamInfo<char const*> const& info) {
                             return QString(info.param).replace('-', '_').toStdString();
                         });

// Conversions on several threads into one directory at the same second: each writes a file
// of its own, and all hold the same document.
TEST(DecodedTextConverter, SeveralConversionsAtOnce)
{
    constexpr int Count = 4;
    Clock::Override const clock(ConversionTime);
    QTemporaryDir out;
    std::vector<REPORTKIT::Results> results(Count);
    std::vector<std::thread> threads;
    for (REPORTKIT::Results& each : results) {
        threads.emplace_back([&] {
            each = DecodedTextConverter().convertFile(SampleDir + "teleprinter-two-channels.zdr",
                                                      out.path(),
                                                      textSettings("RTTY", "International"), 0);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    QStringList paths;
    for (REPORTKIT::Results const& each : results) {
        ASSERT_EQ(each.GetText().size(), 1u);
        paths << each.GetText().front().GetURL();
    }
    paths.removeDuplicates();
    EXPECT_EQ(paths.size(), Count);
    QByteArray const golden =
        zelkotest::readFile(DataDir + "decodedtext/teleprinter-two-channels.xml");
    for (QString const& path : paths) {
        EXPECT_EQ(zelkotest::readFile(path), golden) << qPrintable(path);
    }
}

// Real RTTY traffic: recordings of the codes that minimodem demodulated from its own RTTY
// audio (tests/data/rtty). Senders leave out LTRS after a space, so only the unshift-on-space
// alphabets read them as minimodem printed them; the plain alphabets differ somewhere.
struct Bulletin
{
    char const* name;
    char const* plainAlphabet;
};
using MinimodemRoundTrip = testing::TestWithParam<Bulletin>;

TEST_P(MinimodemRoundTrip, OnlyUnshiftOnSpaceAgreesWithMinimodem)
{
    QString const base = DataDir + "rtty/" + GetParam().name;
    QString const minimodem = QString::fromUtf8(zelkotest::readFile(base + ".minimodem.txt"));
    ASSERT_FALSE(minimodem.isEmpty());
    auto channelOne = [&](QString const& alphabet) {
        QTemporaryDir out;
        DecodedTextConverter().convertFile(base + ".zdr", out.path(),
                                           textSettings("RTTY", alphabet), 0);
        QStringList const files = QDir(out.path()).entryList({"NerikResultData_*.xml"});
        return contents(zelkotest::readFile(out.filePath(files.value(0))))[1];
    };
    QString const plainAlphabet = QString::fromLatin1(GetParam().plainAlphabet);
    EXPECT_EQ(channelOne(plainAlphabet + " USOS"), minimodem);
    QString const plain = channelOne(plainAlphabet);
    EXPECT_EQ(plain.size(), minimodem.size());
    EXPECT_NE(plain, minimodem) << "the bulletin never relies on unshift on space";
}

INSTANTIATE_TEST_SUITE_P(Bulletins, MinimodemRoundTrip,
                         testing::Values(Bulletin{"weather-50", "International"},
                                         Bulletin{"navwarn-50", "International"},
                                         Bulletin{"qso-45", "International"},
                                         Bulletin{"weather-50", "US-TTY"},
                                         Bulletin{"qso-45", "US-TTY"}),
                         [](testing::TestParamInfo<Bulletin> const& info) {
                             return QString("%1_%2")
                                 .arg(info.param.name, info.param.plainAlphabet)
                                 .replace('-', '_')
                                 .toStdString();
                         });

} // namespace
