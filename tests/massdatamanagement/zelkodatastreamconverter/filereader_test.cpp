#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <massdatamanagement/zelkodatastreamconverter/filereader.h>
#include <recordingwriter/payloadbuilder.h>
#include <recordingwriter/recordingwriter.h>
#include <support/memoryframereader.h>
#include <support/tracecapture.h>

using zelkodatastreamconverter::FileReader;
using zelkodatastreamconverter::FRAME_MAGIC;
namespace FrameType = zelkodatastreamconverter::FrameType;
using zelkorecording::ByteOrder;
using zelkorecording::PayloadBuilder;
using zelkorecording::RecordingWriter;

namespace {

class FileReaderTest : public testing::Test
{
protected:
    QString write(QString const& name, QByteArray const& bytes)
    {
        QString const path = m_dir.filePath(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return path;
    }

    QTemporaryDir m_dir;
};

TEST_F(FileReaderTest, EmptyFileEndsAtOnceWithEndOfFileMessage)
{
    QString const path = write(QStringLiteral("empty.zdr"), QByteArray());
    zelkotest::TraceCapture capture;
    FileReader reader(path);
    EXPECT_TRUE(reader.isWorking());
    EXPECT_FALSE(reader.readFrame());
    EXPECT_FALSE(reader.isWorking());
    EXPECT_FALSE(reader.fatalError());
    ASSERT_EQ(capture.messages(),
              QStringList{QStringLiteral("readBuffer(%1): end-of-file").arg(path)});
    EXPECT_EQ(capture.lines().front().sourceFile,
              QStringLiteral("massdatamanagement/zelkodatastreamconverter/filereader"));
}

TEST_F(FileReaderTest, HeaderOnlyFrameThenSixStrayBytes)
{
    QString const path =
        write(QStringLiteral("thirty.zdr"),
              RecordingWriter::headerBytes(FRAME_MAGIC, 6, FrameType::DecodedText) +
                  QByteArray("abcdef"));
    zelkotest::TraceCapture capture;
    FileReader reader(path);
    auto const frames = zelkotest::readAllFrames(reader);
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(frames[0].data.size(), 24);
    EXPECT_EQ(capture.messages(),
              QStringList{QStringLiteral("readBuffer(%1): end-of-file").arg(path)});
    EXPECT_EQ(reader.getPosition(), 0) << "closing resets the position";
}

TEST_F(FileReaderTest, PositionCountsConsumedBytes)
{
    QByteArray const first =
        RecordingWriter::frameBytes(FrameType::DecodedText, QByteArray(40, 'x'));
    QString const path = write(QStringLiteral("two.zdr"), first + first);
    FileReader reader(path);
    while (!reader.readFrame()) {
    }
    EXPECT_EQ(reader.getPosition(), first.size());
}

TEST_F(FileReaderTest, MissingFileIsNotWorkingWithoutMessage)
{
    zelkotest::TraceCapture capture;
    FileReader reader(m_dir.filePath(QStringLiteral("missing.zdr")));
    EXPECT_FALSE(reader.isWorking());
    EXPECT_TRUE(reader.fatalError());
    EXPECT_TRUE(zelkotest::readAllFrames(reader).empty());
    EXPECT_TRUE(capture.messages().isEmpty());
}

TEST_F(FileReaderTest, SeekInsideAFrameResynchronisesSilently)
{
    QByteArray const payload = PayloadBuilder().word(1).word(2).word(3).data();
    QByteArray const one = RecordingWriter::frameBytes(FrameType::DecodedText, payload);
    QByteArray const two =
        RecordingWriter::frameBytes(FrameType::TransmissionSystem, payload, ByteOrder::Swapped);
    QString const path = write(QStringLiteral("seek.zdr"), one + two);
    zelkotest::TraceCapture capture;
    FileReader reader(path);
    // Land 8 bytes before the second frame: the 0x72 byte follows within 23 bytes.
    ASSERT_TRUE(reader.seek(one.size() - 8));
    EXPECT_EQ(reader.getPosition(), one.size() - 8);
    auto const frames = zelkotest::readAllFrames(reader);
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(frames[0].type, QByteArray("170"));
    EXPECT_EQ(capture.messages(),
              (QStringList{QStringLiteral("readFrame(%1): setConvertByteOrder(true)").arg(path),
                           QStringLiteral("readBuffer(%1): end-of-file").arg(path)}));
}

TEST_F(FileReaderTest, SeekBackRereadsFromStart)
{
    QByteArray const bytes =
        RecordingWriter::frameBytes(FrameType::DecodedText, QByteArray(8, 'a'));
    QString const path = write(QStringLiteral("again.zdr"), bytes + bytes);
    FileReader reader(path);
    while (!reader.readFrame()) {
    }
    EXPECT_TRUE(reader.seek(0));
    EXPECT_EQ(zelkotest::readAllFrames(reader).size(), 2u);
    EXPECT_FALSE(reader.seek(5)) << "a closed file refuses to seek";
}

// One stray byte first puts the end of a 256 KiB frame one byte behind the first read-ahead
// block: the frame is assembled from a resynchronising read, a short read and a one-byte read.
TEST_F(FileReaderTest, FrameAcrossTheReadAheadBlock)
{
    QByteArray payload(262144 - 24, '\x5A');
    payload[payload.size() - 1] = '\xAB';
    QByteArray const big = RecordingWriter::frameBytes(FrameType::DecodedText, payload);
    QByteArray const small = RecordingWriter::frameBytes(FrameType::Symbols, QByteArray(8, 'x'));
    FileReader reader(write(QStringLiteral("block.zdr"), QByteArray(1, '\x01') + big + small));
    QByteArray nothing("x");
    reader.readDirect(nothing, 0); // asks for no bytes and must not end the file
    EXPECT_TRUE(nothing.isEmpty());
    auto const frames = zelkotest::readAllFrames(reader);
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_TRUE(frames[0].data == big);
    EXPECT_EQ(frames[1].data, small);
}

TEST_F(FileReaderTest, ReadErrorStopsTheReader)
{
    // Reading a process's own memory at address 0 fails with an I/O error.
    QString const path = QStringLiteral("/proc/self/mem");
    zelkotest::TraceCapture capture;
    FileReader reader(path);
    if (!reader.isWorking()) {
        GTEST_SKIP() << "/proc/self/mem cannot be opened here";
    }
    EXPECT_TRUE(zelkotest::readAllFrames(reader).empty());
    EXPECT_TRUE(reader.fatalError());
    EXPECT_EQ(capture.messages(),
              QStringList{QStringLiteral("readBuffer(%1): error (1)").arg(path)});
}

} // namespace
