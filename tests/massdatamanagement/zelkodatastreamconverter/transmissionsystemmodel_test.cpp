// Transmission-system model: value formatting, frame refusal and dispatch, blocks and their
// nesting, payloads with and without an alphabet; the converter on damaged recordings.

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <jobspec/settings.h>
#include <massdatamanagement/zelkodatastreamconverter/clock.h>
#include <massdatamanagement/zelkodatastreamconverter/frameformat.h>
#include <massdatamanagement/zelkodatastreamconverter/transmissionsystemconverter.h>
#include <massdatamanagement/zelkodatastreamconverter/transmissionsystemmodel.h>
#include <massdatamanagement/zelkodatastreamconverter/transmissionsystemprocessors/recordwords.h>
#include <nerikresultdataxml/nerikresultdata.h>
#include <nerikresultdataxml/transmission.h>
#include <recordingwriter/payloadbuilder.h>
#include <recordingwriter/recordingwriter.h>
#include <support/golden.h>
#include <support/qstringprinter.h>
#include <support/tracecapture.h>

namespace zelkodatastreamconverter {

// The model's private steps, as the per-system processors use them.
struct TransmissionSystemModelTestAccess
{
    using Block = NerikResultDataXml::PDUDataBlock;
    TransmissionSystemModel& model;

    Block* begin(QDateTime const& time, QString const& name = QStringLiteral("ACARS"))
    {
        return model.BeginBlock(9u << 16, time, name);
    }
    void end(Block* block, Block* parent, QDateTime const& time)
    {
        model.EndBlock(block, parent, time);
    }
    bool& continuationPending() { return model.m_continuationPending; }
    // How many words, and which value, a processor sees from byte offset of frame on.
    std::pair<unsigned, quint32> word(QByteArray const& frame, int offset, unsigned index)
    {
        model.m_frameBegin = frame.constData();
        model.m_frameEnd = frame.constData() + frame.size();
        void* const record = const_cast<char*>(frame.constData()) + offset;
        return {model.WordsAvailable(record, index),
                RecordWords(record, model.WordsAvailable(record, 0)).at(index)};
    }
    int& pduOffset() { return model.m_pduOffset; }
    template <typename... Args>
    void addField(Block* block, Args... args)
    {
        model.AddField(block, QStringLiteral("L"), args...);
    }
    void asciiPayload(Block* block, QByteArray const& bytes)
    {
        model.SetASCIIPayload(block, QStringLiteral("Message"), unsigned(bytes.size()),
                              bytes.constData());
    }
    // The first count words (all by default) of words.
    void packed(Block* block, std::vector<int> words, bool unicode, size_t count = 99)
    {
        auto const set = unicode ? &TransmissionSystemModel::SetPackedUnicodePayload
                                 : &TransmissionSystemModel::SetPackedASCIIPayload;
        (model.*set)(block, QStringLiteral("P"), unsigned(std::min(count, words.size())),
                     words.data());
    }
    void binaryPayload(Block* block, std::vector<unsigned> data, unsigned count, unsigned bits)
    {
        model.SetBinaryPayload(block, QStringLiteral("Message"), PDU_REPRESENTATION_STRING, count,
                               bits, data.data());
    }
};

} // namespace zelkodatastreamconverter

namespace {

using namespace zelkodatastreamconverter;
using Access = TransmissionSystemModelTestAccess;
using NerikResultDataXml::PDUDataBlock;

constexpr quint64 BaseTime = 1700000000123456ull; // 2023-11-14 22:13:20.123456 UTC
QString const AlphabetsDirectory = QStringLiteral(ZELKO_SOURCE_DIR "/data/alphabets");

QDateTime utc(quint64 microseconds)
{
    return QDateTime::fromMSecsSinceEpoch(qint64(microseconds / 1000), Qt::UTC);
}

// A frame: time, block name, code and record.
QByteArray frame(quint64 time, QByteArray const& name, quint32 code,
                 quint32 type = FrameType::TransmissionSystem, QByteArray const& record = {})
{
    zelkorecording::PayloadBuilder builder;
    builder.uint64(time).bytes(name.leftJustified(16, '\0', true)).word(code).bytes(record);
    return zelkorecording::RecordingWriter::frameBytes(type, builder.data());
}

// --- Formatting (frames and the other formats are scripted: transmissionscenario.cpp) ----

// Position and date-time elements render themselves.
TEST(TransmissionSystemText, PositionsRenderThemselves)
{
    CPDU_Position const position(32121750, -5980000);
    CPDU_DisplayObject const* const positions[] = {&position, &position};
    auto* const data = reinterpret_cast<unsigned*>(const_cast<CPDU_DisplayObject**>(positions));
    QString value;
    QString type;
    TransmissionSystemModel::FormatData(ePDU_DATAREPRESENTATION(7), 2, 64, data, value, type);
    EXPECT_EQ(value + type, QStringLiteral("N 53°32'10.5'' W 9°58'0'' N 53°32'10.5'' W "
                                           "9°58'0''position"));
    TransmissionSystemModel::FormatData(ePDU_DATAREPRESENTATION(8), 1, 64, data, value, type);
    EXPECT_EQ(value + type, QStringLiteral("N 53°32'10.5'' W 9°58'0''datetime"));
}

TEST(TransmissionSystemText, ToASCIIStopsAtZeroOrTheWordCountAndCleans)
{
    int const words[] = {0x44434241, 0x0D07A045, 0x00004847};
    EXPECT_EQ(TransmissionSystemModel::ToASCII(words, 1), QStringLiteral("ABCD"));
    EXPECT_EQ(TransmissionSystemModel::ToASCII(words, 3), QStringLiteral("ABCDE\n_\rGH"));
    EXPECT_EQ(TransmissionSystemModel::ToASCII(words, 0), QString());
    EXPECT_EQ(TransmissionSystemModel::ToASCII(nullptr, 3), QString());
    QString out;
    TransmissionSystemModel::DecodeString(QByteArray("\x01\x12\x03", 3), out, "-abcd", 0x0F);
    EXPECT_EQ(out, QStringLiteral("abc"));
    EXPECT_EQ(TransmissionSystemModel::FloatToString(0.1f), QStringLiteral("0.1"));
}

// --- The model -------------------------------------------------------------------------------

class TransmissionSystemModelTest : public ::testing::Test
{
protected:
    int blockCount() const
    {
        Transmission const* transmission = m_model.getCurrentTransmission();
        return transmission ? transmission->GetPDUDataBlocks().size() : -1;
    }
    using Transmission = NerikResultDataXml::Transmission;

    TransmissionSystemModel m_model;
    Access m_access{m_model};
};

TEST_F(TransmissionSystemModelTest, StartTimeOfATimeWithoutDate)
{
    Clock::Override const clock(QDateTime(QDate(2026, 3, 4), QTime(1, 2, 3), Qt::UTC));
    m_model.createTransmission(utc(BaseTime));
    QDateTime timeOnly;
    timeOnly.setTime(QTime(17, 30, 15, 250));
    // The block itself has no valid time stamp and is dropped.
    m_access.end(m_access.begin(timeOnly), nullptr, timeOnly);
    EXPECT_EQ(m_model.getCurrentTransmission()->GetStartTime(),
              QDateTime(QDate(2026, 3, 4), QTime(17, 30, 15, 250), Qt::UTC));
    // Only the first block that stays sets it.
    m_access.end(m_access.begin(utc(BaseTime)), nullptr, utc(BaseTime));
    m_access.end(m_access.begin(utc(BaseTime + 5000000)), nullptr, utc(BaseTime));
    EXPECT_EQ(m_model.getCurrentTransmission()->GetStartTime(), utc(BaseTime));
}

// A multi-block message: the parent stands in the transmission, its parts become children while
// continuation is pending, and the offset is lowered to cover the parent.
TEST_F(TransmissionSystemModelTest, ContinuedMessageNestsUnderItsParent)
{
    QByteArray start = frame(BaseTime, "", 14);
    ASSERT_TRUE(m_model.processData(start));
    QDateTime const time = utc(BaseTime);
    PDUDataBlock* parent = m_access.begin(time);
    m_access.end(parent, nullptr, time);
    m_access.continuationPending() = true;
    for (int part = 0; part < 3; ++part) {
        m_access.end(m_access.begin(time), parent, time.addSecs(part));
        EXPECT_TRUE(m_access.continuationPending());
    }
    m_access.pduOffset() = 0;
    EXPECT_EQ(m_model.getPDUOffset(), 0);
    EXPECT_EQ(blockCount(), 1);
    EXPECT_EQ(parent->GetPDUDataBlocks().size(), 3);

    // Invalid children are dropped; a top-level block ends the continuation.
    m_access.end(m_access.begin(QDateTime()), parent, time);
    EXPECT_EQ(parent->GetPDUDataBlocks().size(), 3);
    m_access.end(m_access.begin(time), nullptr, time);
    EXPECT_FALSE(m_access.continuationPending());
    EXPECT_EQ(blockCount(), 2);

    // A new transmission forgets a pending continuation.
    m_access.continuationPending() = true;
    m_model.clear();
    ASSERT_TRUE(m_model.processData(start));
    EXPECT_FALSE(m_access.continuationPending());
}

TEST_F(TransmissionSystemModelTest, RecordWordsEndWithTheFrame)
{
    QByteArray const frame = QByteArray::fromHex("01000000020000000300");
    using Seen = std::pair<unsigned, quint32>;
    EXPECT_EQ(m_access.word(frame, 0, 0), Seen(2, 1));
    EXPECT_EQ(m_access.word(frame, 0, 1), Seen(1, 2));
    EXPECT_EQ(m_access.word(frame, 0, 2), Seen(0, 0)); // two bytes are no word
    EXPECT_EQ(m_access.word(frame, 4, 0), Seen(1, 2));
    EXPECT_EQ(m_access.word(frame, 10, 0), Seen(0, 0));
    EXPECT_EQ(m_access.word(frame, -4, 1), Seen(0, 0));
}

TEST_F(TransmissionSystemModelTest, FieldForms)
{
    PDUDataBlock block;
    m_access.addField(&block, QStringLiteral("v"), QStringLiteral("t"));
    m_access.addField(&block, QStringLiteral("text"));
    m_access.addField(&block, 4294967295u);
    m_access.addField(&block, 31u, 16, 4, QStringLiteral("0x"));
    m_access.addField(&block, 5u, 2, 8, QStringLiteral("0x"));
    m_access.addField(&block, 0x1234u, 16, 0, QStringLiteral("0x"));
    m_access.addField(&block, 2.5f);
    m_access.addField(&block, 0.1);
    m_access.addField(&block, quint64(1) << 40);
    m_access.addField(&block, true);
    m_access.addField(&block, false);
    QStringList got;
    for (NerikResultDataXml::Field const& field : block.GetFields()) {
        EXPECT_EQ(field.GetName(), QStringLiteral("L"));
        got << field.GetValue() + QLatin1Char('|') + field.GetType();
    }
    EXPECT_EQ(got, QStringList({"v|t", "text|string", "4294967295|int", "0x001f|int",
                                "0x00000101|int", "0x1234|int", "2.5|float", "0.1|float",
                                "1099511627776|int", "true|bool", "false|bool"}));
}

TEST_F(TransmissionSystemModelTest, PayloadsWithoutAlphabetAreCleanedBytes)
{
    PDUDataBlock block;
    m_access.asciiPayload(&block, QByteArray("\x41\xA0\x07\x0D", 4));
    NerikResultDataXml::Payload const& payload = block.GetPayload();
    EXPECT_EQ(payload.GetName(), QStringLiteral("Message"));
    EXPECT_EQ(payload.GetContent(), QStringLiteral("A\n_\r"));
    EXPECT_TRUE(payload.GetContentCode().isNull());
    EXPECT_EQ(payload.GetData(), QByteArray("\x41\xA0\x07\x0D", 4));
    EXPECT_EQ(payload.GetDataElements(), 4u);
    EXPECT_EQ(payload.GetDataBits(), 8u);

    m_access.packed(&block, {0x44434241, 0x00004645, 0x47}, false);
    EXPECT_EQ(block.GetPayload().GetContent(), QStringLiteral("ABCDEF"));
    EXPECT_EQ(block.GetPayload().GetDataElements(), 6u);
    m_access.packed(&block, {0x41414100}, false);
    EXPECT_TRUE(block.GetPayload().GetData().isEmpty());
    m_access.packed(&block, {0x44434241, 0x45}, false, 1);
    EXPECT_EQ(block.GetPayload().GetContent(), QStringLiteral("ABCD"));

    m_access.packed(&block, {0x00E90048, 0x000000A0, 0x41}, true);
    EXPECT_EQ(block.GetPayload().GetContent(), QStringLiteral("Hé\n"));
    EXPECT_EQ(block.GetPayload().GetData(), QByteArray("H\0\xE9\0\xA0\0", 6));
    EXPECT_FALSE(block.GetPayload().GetContentDirectionRTL());
    EXPECT_EQ(block.GetPayload().GetDataElements(), 6u);
    m_access.packed(&block, {0x41410000}, true);
    EXPECT_TRUE(block.GetPayload().GetData().isEmpty());

    m_access.binaryPayload(&block, {0x0D074241u}, 3, 8);
    EXPECT_EQ(block.GetPayload().GetContent(), QStringLiteral("AB_"));
    EXPECT_EQ(block.GetPayload().GetData(), QByteArray("AB\x07", 3));
    m_access.binaryPayload(&block, {0x0FFFu}, 1, 12);
    EXPECT_EQ(block.GetPayload().GetData().size(), 2);
}

TEST_F(TransmissionSystemModelTest, AlphabetDecodesAndRetranslates)
{
    ASSERT_TRUE(m_model.setAlphabetsDirectory(AlphabetsDirectory));
    bool changed = false;
    EXPECT_FALSE(m_model.setAlphabet(QString(), changed));
    EXPECT_FALSE(m_model.setAlphabet(QStringLiteral("None"), changed));
    EXPECT_FALSE(changed);
    EXPECT_FALSE(m_model.setAlphabet(QStringLiteral("Klingon"), changed));
    EXPECT_TRUE(changed);
    EXPECT_EQ(m_model.getAlphabet(), QStringLiteral("None"));

    QByteArray start = frame(BaseTime, "", 14);
    ASSERT_TRUE(m_model.processData(start));
    PDUDataBlock* block = m_access.begin(utc(BaseTime));
    m_access.asciiPayload(block, QByteArray("HI\x07", 3));
    block->AddUserData(new NerikResultDataXml::UserData);
    m_access.end(block, nullptr, utc(BaseTime));

    ASSERT_TRUE(m_model.setAlphabet(QStringLiteral("ASCII"), changed));
    m_model.translateCurrentTransmission();
    EXPECT_EQ(block->GetPayload().GetContent(), QStringLiteral("HI") + QChar(0x2407));
    EXPECT_EQ(block->GetPayload().GetContentCode(), QStringLiteral("ASCII"));
    EXPECT_TRUE(block->GetUserData().isEmpty());

    // A demodulator that does not offer the alphabet falls back to none.
    ASSERT_TRUE(m_model.setDemodulator(QStringLiteral("ASCII")));
    EXPECT_EQ(m_model.getAlphabet(), QStringLiteral("ASCII"));
    EXPECT_TRUE(m_model.getAvailableAlphabets().contains(QStringLiteral("ASCII")));
    ASSERT_TRUE(m_model.setDemodulator(QStringLiteral("PSK31")));
    EXPECT_TRUE(m_model.setDemodulator(QStringLiteral("PSK31")));
    EXPECT_TRUE(m_model.setAlphabetsDirectory(AlphabetsDirectory));
    EXPECT_EQ(m_model.getAlphabet(), QStringLiteral("None"));
    m_model.translateCurrentTransmission();
    EXPECT_EQ(block->GetPayload().GetContent(), QStringLiteral("HI_"));
    EXPECT_EQ(block->GetPayload().GetContentCode(), QStringLiteral("None"));
}

// --- The converter ---------------------------------------------------------------------------

TEST(TransmissionSystemConverter, RejectedThirdFrameEndsTheConversionAndKeepsTheFirstTwo)
{
    QTemporaryDir directory;
    ASSERT_TRUE(directory.isValid());
    // The reader passes frames of any type; one of another type is the model's to refuse.
    QByteArray const bytes = frame(BaseTime, "One", 14) + frame(BaseTime + 1000, "Ignored", 13) +
                             frame(BaseTime + 2000, "Two", 15) +
                             frame(BaseTime + 3000, "Text", 14, FrameType::DecodedText) +
                             frame(BaseTime + 4000, "After", 14);
    QString const input = directory.filePath(QStringLiteral("in.zdr"));
    QFile file(input);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    file.close();

    zelkotest::TraceCapture const capture(0x20);
    TransmissionSystemConverter converter;
    converter.convertFile(input, directory.path(), JobSpec::Settings(), 0);

    ASSERT_EQ(capture.lines().size(), 1u);
    zelkotest::TraceLine const& line = capture.lines().front();
    EXPECT_EQ(line.message, QStringLiteral("convertFile(%1): invalid frame header").arg(input));
    EXPECT_EQ(line.sourceFile, QStringLiteral("massdatamanagement/zelkodatastreamconverter/"
                                              "transmissionsystemconverter"));
    EXPECT_EQ(line.line, 50);

    QDir const output(directory.path());
    QStringList const results = output.entryList({QStringLiteral("NerikResultData_*.xml")});
    ASSERT_EQ(results.size(), 1);
    QFile result(output.filePath(results.front()));
    ASSERT_TRUE(result.open(QIODevice::ReadOnly));
    NerikResultDataXml::NerikResultData document;
    ASSERT_TRUE(document.SetXmlString(QString::fromUtf8(result.readAll())));
    ASSERT_EQ(document.GetTransmission().size(), 1);
    QStringList names;
    for (PDUDataBlock const* block : document.GetTransmission().front()->GetPDUDataBlocks()) {
        names << block->GetName();
    }
    EXPECT_EQ(names, QStringList({"One", "Two"}));
}

// Progress is told whenever another 4 MiB are read, and once at the end.
TEST(TransmissionSystemConverter, ProgressEveryFourMebibytesAndAtTheEnd)
{
    QTemporaryDir directory;
    QString const input = directory.filePath(QStringLiteral("in.zdr"));
    // Ignored frames of 64 KiB each: the 64th ends exactly at 4 MiB.
    int const padding = 65536 - frame(BaseTime, "Pad", 13).size();
    QByteArray const padded =
        frame(BaseTime, "Pad", 13, FrameType::TransmissionSystem, QByteArray(padding, 'p'));
    QFile file(input);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    for (int i = 0; i < 144; ++i) {
        ASSERT_EQ(file.write(padded), padded.size());
    }
    file.close();
    qint64 const mebibyte = 1 << 20;
    zelkotest::TraceCapture const endOfFileTraces;

    TransmissionSystemConverter silent; // no callback: nothing to tell
    silent.convertFile(input, directory.path(), JobSpec::Settings(), 0);
    TransmissionSystemConverter converter;
    std::vector<std::pair<qint64, qint64>> told;
    converter.setProgressCallback(
        [&told](qint64 done, qint64 total) { told.emplace_back(done, total); });
    converter.convertFile(input, directory.path(), JobSpec::Settings(), 0);
    EXPECT_EQ(told, (std::vector<std::pair<qint64, qint64>>{{4 * mebibyte, 9 * mebibyte},
                                                            {8 * mebibyte, 9 * mebibyte},
                                                            {9 * mebibyte, 9 * mebibyte}}));
}

} // namespace
