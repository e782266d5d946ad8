// Transmission-system model: what the scripted scenarios and samples (linked in from
// transmissionsystemprocessors_test.cpp) cannot reach: positions, text helpers, a start time
// without a date; the converter on damaged recordings and its progress.

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <jobspec/settings.h>
#include <massdatamanagement/zelkodatastreamconverter/clock.h>
#include <massdatamanagement/zelkodatastreamconverter/frameformat.h>
#include <massdatamanagement/zelkodatastreamconverter/transmissionsystemconverter.h>
#include <massdatamanagement/zelkodatastreamconverter/transmissionsystemmodel.h>
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
};

} // namespace zelkodatastreamconverter

namespace {

using namespace zelkodatastreamconverter;
using Access = TransmissionSystemModelTestAccess;
using NerikResultDataXml::PDUDataBlock;

constexpr quint64 BaseTime = 1700000000123456ull; // 2023-11-14 22:13:20.123456 UTC

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

// --- Formatting (frames, fields, payloads and most formats are scripted scenarios: see
// transmissionsystemprocessors_test.cpp) ---------------------------------------------------

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

TEST(TransmissionSystemModel, StartTimeOfATimeWithoutDate)
{
    TransmissionSystemModel model;
    Access access{model};
    Clock::Override const clock(QDateTime(QDate(2026, 3, 4), QTime(1, 2, 3), Qt::UTC));
    model.createTransmission(utc(BaseTime));
    QDateTime timeOnly;
    timeOnly.setTime(QTime(17, 30, 15, 250));
    // The block itself has no valid time stamp and is dropped.
    access.end(access.begin(timeOnly), nullptr, timeOnly);
    EXPECT_EQ(model.getCurrentTransmission()->GetStartTime(),
              QDateTime(QDate(2026, 3, 4), QTime(17, 30, 15, 250), Qt::UTC));
    // Only the first block that stays sets it.
    access.end(access.begin(utc(BaseTime)), nullptr, utc(BaseTime));
    access.end(access.begin(utc(BaseTime + 5000000)), nullptr, utc(BaseTime));
    EXPECT_EQ(model.getCurrentTransmission()->GetStartTime(), utc(BaseTime));
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
