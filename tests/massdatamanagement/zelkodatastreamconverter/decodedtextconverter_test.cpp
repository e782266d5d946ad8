// Decoded-text converter: the sample recordings against checked-in result documents, bad
// recordings and settings, byte order, and conversions side by side.

#include "decodedtexttesting.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <algorithm>
#include <gtest/gtest.h>
#include <massdatamanagement/zelkodatastreamconverter/clock.h>
#include <massdatamanagement/zelkodatastreamconverter/decodedtextconverter.h>
#include <nerikresultdataxml/datablock.h>
#include <nerikresultdataxml/transmission.h>
#include <support/golden.h>
#include <support/schemavalidator.h>
#include <support/tracecapture.h>
#include <thread>

using namespace decodedtexttest;
using NerikResultDataXml::NerikResultData;
using zelkodatastreamconverter::Clock;
using zelkorecording::RecordingWriter;

namespace {

// The wall clock names the result file and stamps its record; fixed, both are repeatable.
QDateTime const ConversionTime(QDate(2026, 2, 1), QTime(12, 30, 45), Qt::LocalTime);
QString const ResultFileName = QStringLiteral("NerikResultData_20260201_123045.xml");
QString const InvalidFrame = QStringLiteral("invalid frame header");

class DecodedTextConverterTest : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(m_directory.isValid()); }

    QString outputDirectory()
    {
        QString const path = m_directory.filePath(QStringLiteral("out%1").arg(m_outputs++));
        EXPECT_TRUE(QDir().mkpath(path));
        return path;
    }

    QString recording(QString const& name, QList<QByteArray> const& frames)
    {
        QByteArray bytes;
        for (QByteArray const& frame : frames) {
            bytes += frame;
        }
        QString const path = m_directory.filePath(name);
        EXPECT_TRUE(writeFile(path, bytes));
        return path;
    }

    /// Converts into a new directory; the single result file must be valid.
    Conversion convertValid(QString const& input, JobSpec::Settings const& settings)
    {
        QString const out = outputDirectory();
        Conversion result = convert(input, out, settings);
        EXPECT_EQ(result.files.size(), 1);
        if (result.files.size() == 1) {
            EXPECT_EQ(zelkotest::validateXmlFile(QDir(out).filePath(result.files[0]),
                                                 QStringLiteral("nerikresultdata.xsd")),
                      QString());
        }
        return result;
    }

    Clock::Override const m_clock{ConversionTime};
    QTemporaryDir m_directory;
    int m_outputs = 0;
};

// The samples give the checked-in documents (regenerate with ZELKO_REGENERATE_GOLDEN=1),
// carrying the sample's plain text on every channel, and are listed once.
TEST_F(DecodedTextConverterTest, SamplesGiveTheGoldenDocuments)
{
    struct Row
    {
        char const* sample;
        char const* decoder;
        char const* alphabet;
        std::vector<std::pair<int, QString>> channels;
    };
    std::vector<Row> const rows = {
        {"teleprinter-two-channels", "RTTY", "International", {{1, WeatherText}, {2, PressText}}},
        {"navtex-ccir476", "NAVTEX", "CCIR 476", {{0, NavtexText}}},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.sample);
        zelkotest::TraceCapture const capture(0x20);
        QString const name = QString::fromLatin1(row.sample);
        Conversion const result =
            convertValid(samplePath(name + ".zdr"),
                         textSettings(QString::fromLatin1(row.decoder), row.alphabet));
        ASSERT_EQ(result.files, QStringList{ResultFileName});
        EXPECT_EQ(zelkotest::compareWithGolden(result.xml, "decodedtext/" + name + ".xml"),
                  QString());

        NerikResultData document;
        ASSERT_EQ(loadDocument(result.xml, document), QString());
        ASSERT_EQ(document.GetTransmission().size(), 1);
        EXPECT_EQ(document.GetTransmission()[0]->GetDataBlock().size(), int(row.channels.size()));
        for (auto const& [channel, text] : row.channels) {
            EXPECT_EQ(contentOf(document, channel), text) << "channel " << channel;
        }

        ASSERT_EQ(result.results.GetText().size(), 1u);
        REPORTKIT::Text const& record = result.results.GetText().front();
        EXPECT_EQ(QFileInfo(record.GetURL()).fileName(), ResultFileName);
        EXPECT_EQ(record.GetMetadata().GetDetail().GetCode(), QStringLiteral("DecodedText"));
        EXPECT_EQ(record.GetMetadata().GetStartTime(), ConversionTime);
        EXPECT_TRUE(capture.messages().filter(InvalidFrame).isEmpty());
    }
}

// A frame that is no decoded text ends the conversion at once; what came before is written.
TEST_F(DecodedTextConverterTest, ForeignFrameEndsTheConversionOnce)
{
    using namespace ita2;
    QByteArray const first = textFrame(BaseTime, onChannel(1, {A, S}));
    QByteArray const second = textFrame(BaseTime + 1000000, {{1, E}, {2, T}});
    QByteArray const after = textFrame(BaseTime + 3000000, onChannel(1, {I}));
    struct Row
    {
        char const* name;
        QList<QByteArray> frames;
        QString one;       // content of channel 1; empty: no document at all
        qint64 stopMs = 0; // stop time after the base time: the last frame read
    };
    std::vector<Row> const rows = {
        {"PDU frame",
         {first, second,
          RecordingWriter::frameBytes(zelkodatastreamconverter::FrameType::TransmissionSystem,
                                      QByteArray(16, 'x')),
          after},
         "ASE",
         1000},
        {"header-only text frame",
         {first,
          RecordingWriter::headerBytes(zelkodatastreamconverter::FRAME_MAGIC, 6, DecodedTextType),
          after},
         "AS"},
        {"foreign frame first",
         {RecordingWriter::frameBytes(zelkodatastreamconverter::FrameType::TransmissionSystem,
                                      QByteArray(4, 0)),
          first},
         ""},
    };
    int index = 0;
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        QString const input = recording(QStringLiteral("foreign%1.zdr").arg(index++), row.frames);
        zelkotest::TraceCapture const capture(0x60);
        Conversion const result = convert(input, outputDirectory(),
                                          textSettings(QStringLiteral("RTTY"), "International"));

        QString const message = QStringLiteral("convertFile(%1): invalid frame header").arg(input);
        EXPECT_EQ(capture.count(message), 1);
        EXPECT_EQ(capture.messages().filter(InvalidFrame).size(), 1);
        for (zelkotest::TraceLine const& line : capture.lines()) {
            EXPECT_EQ(line.sourceFile,
                      "massdatamanagement/zelkodatastreamconverter/decodedtextconverter");
        }
        if (row.one.isEmpty()) {
            EXPECT_TRUE(result.files.isEmpty());
            EXPECT_TRUE(result.results.GetText().empty());
            continue;
        }
        ASSERT_EQ(result.files.size(), 1);
        NerikResultData document;
        ASSERT_EQ(loadDocument(result.xml, document), QString());
        EXPECT_EQ(contentOf(document, 1), row.one);
        EXPECT_EQ(document.GetTransmission().back()->GetStopTime(),
                  QDateTime::fromMSecsSinceEpoch(qint64(BaseTime / 1000) + row.stopMs, Qt::UTC));
        EXPECT_EQ(result.results.GetText().size(), 1u);
    }
}

// An alphabet the decoder does not offer translates nothing, but every code is kept.
TEST_F(DecodedTextConverterTest, UnknownAlphabetKeepsTheRawData)
{
    using namespace ita2;
    std::vector<quint16> const codes = {Figures, T, Letters, H, 0x2400, 0xFFFE};
    QString const input =
        recording(QStringLiteral("raw.zdr"), {textFrame(BaseTime, onChannel(5, codes))});
    QString expected;
    for (quint16 const code : codes) {
        expected.append(QChar(code));
    }
    for (char const* alphabet : {"Klingon", ""}) {
        SCOPED_TRACE(alphabet);
        Conversion const result =
            convertValid(input, textSettings(QStringLiteral("BAUDOT"), alphabet));
        NerikResultData document;
        ASSERT_EQ(loadDocument(result.xml, document), QString());
        NerikResultDataXml::DataBlock const* block =
            document.GetTransmission().back()->GetDataBlock().value(0);
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(block->GetRawContent(), expected);
        // No name at all: the preferred alphabet of the decoder.
        bool const preferred = !*alphabet;
        EXPECT_EQ(block->GetContentCode(), preferred ? "International" : "None");
        EXPECT_TRUE(preferred ? block->GetContent().startsWith("5H")
                              : block->GetContent() == expected)
            << qPrintable(block->GetContent());
    }
}

// Damaged recordings kept as regression inputs (hand-made, or found by fuzzing): each converts
// to one valid document listed with its stop time.
class DecodedTextRegression : public DecodedTextConverterTest,
                              public ::testing::WithParamInterface<char const*>
{
};

TEST_P(DecodedTextRegression, ConvertsToAValidListedDocument)
{
    zelkotest::TraceCapture const quiet(0x20);
    Conversion const result =
        convertValid(QStringLiteral(ZELKO_SOURCE_DIR "/tests/data/decodedtext/regressions/%1.zdr")
                         .arg(GetParam()),
                     textSettings(QStringLiteral("RTTY"), "International"));
    ASSERT_EQ(result.results.GetText().size(), 1u);
    EXPECT_TRUE(result.results.GetText().front().GetMetadata().GetStopTime().isValid());
}

INSTANTIATE_TEST_SUITE_P(Inputs, DecodedTextRegression,
                         ::testing::Values("channel-extremes", "entry-count-past-frame",
                                           "frame-of-another-type", "length-below-header"),
                         [](auto const& info) {
                             std::string name = info.param;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

// Nothing to convert: no result file, no record, no complaint about frames.
TEST_F(DecodedTextConverterTest, NothingToConvert)
{
    QString const garbage = m_directory.filePath(QStringLiteral("garbage.zdr"));
    ASSERT_TRUE(writeFile(garbage, RecordingWriter::garbage(4096, 7, false)));
    struct Row
    {
        char const* name;
        QString input;
    };
    std::vector<Row> const rows = {
        {"empty recording", recording(QStringLiteral("empty.zdr"), {})},
        {"missing file", m_directory.filePath(QStringLiteral("missing.zdr"))},
        {"no frame in the bytes", garbage},
        {"empty path", QString()},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        zelkotest::TraceCapture const capture(0x20);
        Conversion const result =
            convert(row.input, outputDirectory(), textSettings(QStringLiteral("RTTY"), QString()));
        EXPECT_TRUE(result.files.isEmpty()) << qPrintable(result.files.join(QLatin1Char(' ')));
        EXPECT_TRUE(result.results.GetText().empty());
        EXPECT_TRUE(capture.messages().filter(InvalidFrame).isEmpty());
    }
}

// Conversions on several threads into one directory at the same second: each writes a file
// of its own, and all hold the same document.
TEST_F(DecodedTextConverterTest, SeveralConversionsAtOnce)
{
    constexpr int Count = 4;
    QString const out = outputDirectory();
    JobSpec::Settings const settings = textSettings(QStringLiteral("RTTY"), "International");
    std::vector<REPORTKIT::Results> results(Count);
    std::vector<std::thread> threads;
    for (int i = 0; i < Count; ++i) {
        threads.emplace_back([&, i] {
            zelkodatastreamconverter::DecodedTextConverter converter;
            results[size_t(i)] = converter.convertFile(
                samplePath(QStringLiteral("teleprinter-two-channels.zdr")), out, settings, 0);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    QStringList urls;
    for (REPORTKIT::Results const& each : results) {
        ASSERT_EQ(each.GetText().size(), 1u);
        urls << QFileInfo(each.GetText().front().GetURL()).fileName();
    }
    urls.removeDuplicates();
    EXPECT_EQ(urls.size(), Count);
    QByteArray const golden = readFile(
        QStringLiteral(ZELKO_SOURCE_DIR "/tests/data/decodedtext/teleprinter-two-channels.xml"));
    for (QString const& name : urls) {
        EXPECT_EQ(readFile(QDir(out).filePath(name)), golden) << qPrintable(name);
    }
}

} // namespace
