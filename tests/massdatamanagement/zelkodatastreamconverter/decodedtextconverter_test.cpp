// Decoded-text converter: the sample recordings against checked-in result documents, the
// result record, bad recordings and settings, byte order, and conversions side by side.

#include "decodedtexttesting.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <climits>
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
using zelkodatastreamconverter::Clock;
using zelkorecording::ByteOrder;
using zelkorecording::RecordingWriter;

namespace {

// The wall clock names the result file and stamps its record; fixed, both are repeatable.
QDateTime const ConversionTime(QDate(2026, 2, 1), QTime(12, 30, 45), Qt::LocalTime);
QString const ResultFileName = QStringLiteral("NerikResultData_20260201_123045.xml");
QString const InvalidFrameMessage = QStringLiteral("convertFile(%1): invalid frame header");
QString const ConverterSource =
    QStringLiteral("massdatamanagement/zelkodatastreamconverter/decodedtextconverter");

class DecodedTextConverterTest : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(m_directory.isValid()); }

    /// A new, empty output directory.
    QString outputDirectory()
    {
        QString const path = m_directory.filePath(QStringLiteral("out%1").arg(m_outputs++));
        EXPECT_TRUE(QDir().mkpath(path));
        return path;
    }

    /// A recording made of the given frames (whole frames as bytes).
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

    static QByteArray frame(quint64 microseconds, std::vector<Entry> const& entries,
                            ByteOrder order = ByteOrder::Host)
    {
        return RecordingWriter::frameBytes(DecodedTextType, textPayload(microseconds, entries),
                                           order);
    }

    Clock::Override const m_clock{ConversionTime};
    QTemporaryDir m_directory;
    int m_outputs = 0;
};

// The samples give the checked-in documents (regenerate with ZELKO_REGENERATE_GOLDEN=1); the
// documents are valid, carry the sample's plain text on every channel, and are listed once.
TEST_F(DecodedTextConverterTest, SamplesGiveTheGoldenDocuments)
{
    struct Row
    {
        char const* sample;
        char const* decoder;
        char const* alphabet;
        char const* golden;
        std::vector<std::pair<int, QString>> channels;
    };
    std::vector<Row> const rows = {
        {"teleprinter-two-channels.zdr",
         "RTTY",
         "International",
         "decodedtext/teleprinter-two-channels.xml",
         {{1, WeatherText}, {2, PressText}}},
        {"navtex-ccir476.zdr",
         "NAVTEX",
         "CCIR 476",
         "decodedtext/navtex-ccir476.xml",
         {{0, NavtexText}}},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.sample);
        zelkotest::TraceCapture const capture(0x20);
        QString const out = outputDirectory();
        Conversion const result = convert(
            samplePath(QString::fromLatin1(row.sample)), out,
            textSettings(QString::fromLatin1(row.decoder), QString::fromUtf8(row.alphabet)));
        ASSERT_EQ(result.files, QStringList{ResultFileName});
        QString const path = QDir(out).filePath(ResultFileName);

        EXPECT_EQ(zelkotest::compareWithGolden(result.xml, QString::fromLatin1(row.golden)),
                  QString());
        EXPECT_EQ(zelkotest::validateXmlFile(path, QStringLiteral("nerikresultdata.xsd")),
                  QString());

        NerikResultDataXml::NerikResultData document;
        ASSERT_EQ(loadDocument(result.xml, document), QString());
        ASSERT_EQ(document.GetTransmission().size(), 1);
        NerikResultDataXml::Transmission const* transmission = document.GetTransmission()[0];
        EXPECT_EQ(transmission->GetDataBlock().size(), int(row.channels.size()));
        for (auto const& [channel, text] : row.channels) {
            EXPECT_EQ(contentOf(document, channel), text) << "channel " << channel;
        }
        for (NerikResultDataXml::DataBlock const* block : transmission->GetDataBlock()) {
            EXPECT_EQ(block->GetContentCode(), QString::fromUtf8(row.alphabet));
        }

        ASSERT_EQ(result.results.GetText().size(), 1u);
        EXPECT_TRUE(result.results.GetBinary().empty());
        EXPECT_TRUE(result.results.GetPicture().empty());
        REPORTKIT::Text const& record = result.results.GetText().front();
        EXPECT_EQ(QFileInfo(record.GetURL()).canonicalFilePath(),
                  QFileInfo(path).canonicalFilePath());
        EXPECT_EQ(record.GetMetadata().GetDetail().GetCode(), QStringLiteral("DecodedText"));
        EXPECT_EQ(record.GetMetadata().GetStartTime(), ConversionTime);
        EXPECT_TRUE(record.GetMetadata().GetStopTime().isValid());
        EXPECT_TRUE(capture.messages().filter(QStringLiteral("invalid frame header")).isEmpty());
    }
}

// A frame that is no decoded text ends the conversion at once; what came before is written.
TEST_F(DecodedTextConverterTest, ForeignFrameEndsTheConversionOnce)
{
    using namespace ita2;
    QByteArray const first = frame(BaseTime, onChannel(1, {A, S}));
    QByteArray const second = frame(BaseTime + 1000000, {{1, E}, {2, T}});
    QByteArray const after = frame(BaseTime + 3000000, onChannel(1, {I}));
    struct Row
    {
        char const* name;
        QList<QByteArray> frames;
        QString one;       // content of channel 1, or the marker of an empty document
        qint64 stopMs = 0; // stop time after the base time: the last frame read
    };
    std::vector<Row> const rows = {
        {"PDU frame",
         {first, second, RecordingWriter::frameBytes(368, QByteArray(16, 'x')), after},
         "ASE",
         1000},
        {"burst list",
         {first, second, RecordingWriter::frameBytes(336, QByteArray(8, 0)), after},
         "ASE",
         1000},
        {"header-only text frame",
         {first, RecordingWriter::headerBytes(0xFB746572u, 6, 64), after},
         "AS"},
        {"text frame cut before its count",
         {first, second, RecordingWriter::frameBytes(64, QByteArray(8, 0)), after, after},
         "ASE",
         1000},
        {"foreign frame first",
         {RecordingWriter::frameBytes(368, QByteArray(4, 0)), first},
         "<none>"},
    };
    int index = 0;
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        QString const input = recording(QStringLiteral("foreign%1.zdr").arg(index++), row.frames);
        zelkotest::TraceCapture const capture(0x60);
        QString const out = outputDirectory();
        Conversion const result = convert(
            input, out, textSettings(QStringLiteral("RTTY"), QStringLiteral("International")));

        QString const message = InvalidFrameMessage.arg(input);
        EXPECT_EQ(capture.count(message), 1);
        EXPECT_EQ(capture.messages().filter(QStringLiteral("invalid frame header")).size(), 1);
        for (zelkotest::TraceLine const& line : capture.lines()) {
            if (line.message == message) {
                EXPECT_EQ(line.sourceFile, ConverterSource);
            }
        }
        if (row.one == QStringLiteral("<none>")) {
            EXPECT_TRUE(result.files.isEmpty());
            EXPECT_TRUE(result.results.GetText().empty());
            continue;
        }
        ASSERT_EQ(result.files.size(), 1);
        NerikResultDataXml::NerikResultData document;
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
        recording(QStringLiteral("raw.zdr"), {frame(BaseTime, onChannel(5, codes))});
    QString expected;
    for (quint16 const code : codes) {
        expected.append(QChar(code));
    }
    for (char const* alphabet : {"Klingon", "CCIR 476", ""}) {
        SCOPED_TRACE(alphabet);
        QString const out = outputDirectory();
        Conversion const result = convert(
            input, out, textSettings(QStringLiteral("BAUDOT"), QString::fromUtf8(alphabet)));
        ASSERT_EQ(result.files.size(), 1);
        EXPECT_EQ(zelkotest::validateXmlFile(QDir(out).filePath(result.files[0]),
                                             QStringLiteral("nerikresultdata.xsd")),
                  QString());
        NerikResultDataXml::NerikResultData document;
        ASSERT_EQ(loadDocument(result.xml, document), QString());
        NerikResultDataXml::DataBlock const* block =
            document.GetTransmission().back()->GetDataBlock().value(0);
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(block->GetRawContent(), expected);
        if (*alphabet) {
            EXPECT_EQ(block->GetContentCode(), QStringLiteral("None"));
            EXPECT_EQ(block->GetContent(), expected);
        } else {
            // No name at all: the preferred alphabet of the decoder.
            EXPECT_EQ(block->GetContentCode(), QStringLiteral("International"));
            EXPECT_TRUE(block->GetContent().startsWith(QStringLiteral("5H")))
                << block->GetContent();
        }
    }
}

// Channel numbers are whatever the recording says; each gets its block, and the document
// stays valid.
TEST_F(DecodedTextConverterTest, NegativeAndHugeChannelNumbers)
{
    using namespace ita2;
    QString const input =
        recording(QStringLiteral("channels.zdr"),
                  {frame(BaseTime, {{-1, A}, {INT_MIN, S}, {INT_MAX, E}, {1000, I}, {-1, N}}),
                   frame(BaseTime + 1000000, {{INT_MAX, T}, {256, O}})});
    QString const out = outputDirectory();
    Conversion const result =
        convert(input, out, textSettings(QStringLiteral("ITA2"), QStringLiteral("International")));
    ASSERT_EQ(result.files.size(), 1);
    EXPECT_EQ(zelkotest::validateXmlFile(QDir(out).filePath(result.files[0]),
                                         QStringLiteral("nerikresultdata.xsd")),
              QString());
    NerikResultDataXml::NerikResultData document;
    ASSERT_EQ(loadDocument(result.xml, document), QString());
    EXPECT_EQ(contentOf(document, -1), QStringLiteral("AN"));
    EXPECT_EQ(contentOf(document, INT_MIN), QStringLiteral("S"));
    EXPECT_EQ(contentOf(document, INT_MAX), QStringLiteral("ET"));
    EXPECT_EQ(contentOf(document, 1000), QStringLiteral("I"));
    EXPECT_EQ(contentOf(document, 256), QStringLiteral("O"));
}

// A count larger than the frame reads the entries that are there, and the next frame is
// read as usual.
TEST_F(DecodedTextConverterTest, CountLargerThanTheFrame)
{
    using namespace ita2;
    QString const input = recording(
        QStringLiteral("count.zdr"),
        {RecordingWriter::frameBytes(64, textPayload(BaseTime, onChannel(1, {A, S}), INT_MAX)),
         RecordingWriter::frameBytes(64, textPayload(BaseTime + 1000, onChannel(1, {E}), 2)),
         frame(BaseTime + 2000, onChannel(1, {T}))});
    zelkotest::TraceCapture const capture(0x20);
    Conversion const result =
        convert(input, outputDirectory(), textSettings(QStringLiteral("RTTY"), QString()));
    EXPECT_EQ(capture.messages().filter(QStringLiteral("invalid frame header")).size(), 0);
    NerikResultDataXml::NerikResultData document;
    ASSERT_EQ(loadDocument(result.xml, document), QString());
    EXPECT_EQ(contentOf(document, 1), QStringLiteral("ASET"));
}

// Nothing to convert: no result file, no record, no complaint about frames.
TEST_F(DecodedTextConverterTest, NothingToConvert)
{
    QString const empty = recording(QStringLiteral("empty.zdr"), {});
    QString const garbage = m_directory.filePath(QStringLiteral("garbage.zdr"));
    ASSERT_TRUE(writeFile(garbage, RecordingWriter::garbage(4096, 7, false)));
    struct Row
    {
        char const* name;
        QString input;
    };
    std::vector<Row> const rows = {
        {"empty recording", empty},
        {"missing file", m_directory.filePath(QStringLiteral("missing.zdr"))},
        {"directory", m_directory.path()},
        {"no frame in the bytes", garbage},
        {"empty path", QString()},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        zelkotest::TraceCapture const capture(0x20);
        Conversion const result =
            convert(row.input, outputDirectory(), textSettings(QStringLiteral("RTTY"), QString()));
        EXPECT_TRUE(result.files.isEmpty()) << result.files.join(QLatin1Char(' '));
        EXPECT_TRUE(result.results.GetText().empty());
        EXPECT_TRUE(result.results.GetBinary().empty());
        EXPECT_TRUE(result.results.GetPicture().empty());
        EXPECT_EQ(capture.messages().filter(QStringLiteral("invalid frame header")).size(), 0);
    }
}

// The same frames in either byte order, or switching between them, give the same document.
TEST_F(DecodedTextConverterTest, ByteOrderDoesNotChangeTheDocument)
{
    using namespace ita2;
    std::vector<std::vector<Entry>> const frames = {
        {{1, Figures}, {2, A}, {1, T}}, {{2, Figures}, {1, Q}}, {{2, W}, {1, Letters}, {1, Z}}};
    auto build = [&](std::function<ByteOrder(size_t)> const& order) {
        QList<QByteArray> bytes;
        for (size_t i = 0; i < frames.size(); ++i) {
            bytes << frame(BaseTime + i * 1000000, frames[i], order(i));
        }
        return bytes;
    };
    QString const host =
        recording(QStringLiteral("host.zdr"), build([](size_t) { return ByteOrder::Host; }));
    JobSpec::Settings const settings =
        textSettings(QStringLiteral("RTTY"), QStringLiteral("International"));
    Conversion const reference = convert(host, outputDirectory(), settings);
    NerikResultDataXml::NerikResultData document;
    ASSERT_EQ(loadDocument(reference.xml, document), QString());
    EXPECT_EQ(contentOf(document, 1), QStringLiteral("51Z"));
    EXPECT_EQ(contentOf(document, 2), QStringLiteral("A2"));

    struct Row
    {
        char const* name;
        std::function<ByteOrder(size_t)> order;
    };
    std::vector<Row> const rows = {
        {"swapped", [](size_t) { return ByteOrder::Swapped; }},
        {"swapped first", [](size_t i) { return i == 0 ? ByteOrder::Swapped : ByteOrder::Host; }},
        {"alternating", [](size_t i) { return i % 2 ? ByteOrder::Swapped : ByteOrder::Host; }},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        QString const input = recording(QString::fromLatin1(row.name) + ".zdr", build(row.order));
        EXPECT_EQ(convert(input, outputDirectory(), settings).xml, reference.xml);
    }
}

// Conversions on several threads into one directory at the same second: each writes a file
// of its own, and all hold the same document.
TEST_F(DecodedTextConverterTest, SeveralConversionsAtOnce)
{
    constexpr int Count = 4;
    QString const out = outputDirectory();
    JobSpec::Settings const settings =
        textSettings(QStringLiteral("RTTY"), QStringLiteral("International"));
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
        EXPECT_EQ(readFile(QDir(out).filePath(name)), golden) << name;
    }
}

} // namespace
