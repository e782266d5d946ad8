#include <QtEndian>
#include <algorithm>
#include <gtest/gtest.h>
#include <massdatamanagement/zelkodatastreamconverter/wordswap.h>
#include <numeric>
#include <recordingwriter/payloadbuilder.h>
#include <recordingwriter/recordingwriter.h>
#include <support/memoryframereader.h>
#include <support/tracecapture.h>

using zelkodatastreamconverter::FRAME_MAGIC;
using zelkodatastreamconverter::FrameHeaderSize;
using zelkodatastreamconverter::FrameReader;
namespace FrameType = zelkodatastreamconverter::FrameType;
using zelkorecording::ByteOrder;
using zelkorecording::PayloadBuilder;
using zelkorecording::RecordingWriter;
using zelkotest::MemoryFrameReader;
using zelkotest::readAllFrames;

namespace {

QByteArray frame(quint32 type, QByteArray const& payload, ByteOrder order = ByteOrder::Host)
{
    return RecordingWriter::frameBytes(type, payload, order);
}

QByteArray header(quint32 magic, quint32 lengthWords, quint32 type,
                  ByteOrder order = ByteOrder::Host)
{
    return RecordingWriter::headerBytes(magic, lengthWords, type, order);
}

QByteArray samplePayload()
{
    return PayloadBuilder()
        .word(0x11223344)
        .halfWords(0x5566, 0x7788)
        .uint64(0x0102030405060708ull)
        .data();
}

QString msg(char const* format)
{
    return QString::fromLatin1(format).arg(QStringLiteral("mem"));
}

// A stream, what the reader must hand out (the frame types, each frame carrying the sample
// payload in host order, or none when headerOnly) and exactly which messages it traces.
struct StreamCase
{
    char const* name;
    QByteArray stream;
    QByteArray types; // space-separated
    QStringList messages = {};
    bool fatal = false;
    bool headerOnly = false;
    QByteArray payload = {}; // every frame's, when not the sample payload
};

std::vector<StreamCase> streamCases()
{
    QByteArray const payload = samplePayload();
    auto text = [&payload](ByteOrder order = ByteOrder::Host) {
        return frame(FrameType::DecodedText, payload, order);
    };
    QByteArray const garbageNo72 = RecordingWriter::garbage(100, 7, false);
    QByteArray fbOnly(24, '\x11');
    fbOnly[5] = char(0xFB);
    QByteArray const staleLead = payload + QByteArray(8, '\x72');
    auto unknownMagic = [](QByteArray const& bytes) {
        quint32 word;
        std::memcpy(&word, bytes.constData(), 4);
        return msg("readFrame(%1): unknown magic word %2 (expected: 4218709362)").arg(word);
    };
    QString const toSwapped = msg("readFrame(%1): setConvertByteOrder(true)");
    QString const toHost = msg("readFrame(%1): setConvertByteOrder(false)");
    QByteArray const maximumPlusOne = header(FRAME_MAGIC, 0x4000001, FrameType::DecodedText);

    return {
        {"host order", text(), "40"},
        {"swapped order", text(ByteOrder::Swapped), "40", {toSwapped}},
        {"order changes between frames",
         text() + frame(FrameType::TransmissionSystem, payload, ByteOrder::Swapped) +
             frame(FrameType::BurstList, payload, ByteOrder::Swapped) +
             frame(FrameType::Symbols, payload),
         "40 170 150 130",
         {toSwapped, toHost}},
        {"header-only frame",
         header(FRAME_MAGIC, 6, FrameType::DecodedText),
         "40",
         {},
         false,
         true},
        // Handed out as stored: the type word stays swapped.
        {"header-only frames in swapped order",
         header(FRAME_MAGIC, 6, FrameType::DecodedText, ByteOrder::Swapped) +
             header(FRAME_MAGIC, 6, FrameType::DecodedText, ByteOrder::Swapped),
         "40000000 40000000",
         {toSwapped},
         false,
         true},
        {"length 5 stops the reader",
         header(FRAME_MAGIC, 5, FrameType::DecodedText) + text(),
         "",
         {msg("readFrame(%1): invalid frame length (20)")},
         true},
        {"length 0 stops the reader",
         header(FRAME_MAGIC, 0, FrameType::DecodedText),
         "",
         {msg("readFrame(%1): invalid frame length (0)")},
         true},
        {"length one past the maximum is skipped",
         maximumPlusOne + text(),
         "40",
         {msg("readFrame(%1): max. frame length exceeded (67108865)")}},
        {"three garbage bytes before a frame", QByteArray("\x00\x11\x22", 3) + text(), "40"},
        // The 0xFB ahead of the 0x72 is tried first and dropped without a message.
        {"swapped candidate ahead of a native frame", QByteArray("\x00\xFB\x00", 3) + text(), "40"},
        // The 0xFB right behind the header's start is tried before the 0x72 inside the frame.
        {"one byte before a swapped frame",
         QByteArray(1, '\0') + text(ByteOrder::Swapped),
         "40",
         {toSwapped}},
        {"garbage without candidates gives one message",
         garbageNo72 + text() + garbageNo72 + text(),
         "40 40",
         {unknownMagic(garbageNo72), unknownMagic(garbageNo72)}},
        {"zero padding is silent", QByteArray(24, '\0') + text() + QByteArray(48, '\0'), "40"},
        {"a lone 0xFB candidate drops the header", fbOnly + text(), "40", {unknownMagic(fbOnly)}},
        {"ends inside a body", text() + text().left(30), "40"},
        {"ends inside a header", text() + text().left(10), "40"},
        {"empty stream", QByteArray(), ""},
        // The bytes kept by a resynchronisation come first: the header-only frame found at byte
        // 4 ends with the magic word of a frame that a reader looking only ahead would take.
        {"kept bytes before a frame behind them",
         QByteArray(4, '\x11') + header(FRAME_MAGIC, 6, FrameType::DecodedText).left(20) +
             frame(FrameType::TransmissionSystem, payload),
         "40",
         {msg("readFrame(%1): unknown magic word 10 (expected: 4218709362)")},
         false,
         true},
        // A 0x72 left in the buffer by the larger frame before makes the 0xFB candidate of the
        // garbage count, and its bytes are dropped silently (compare "a lone 0xFB candidate").
        {"stale 0x72 makes a 0xFB candidate count",
         frame(FrameType::DecodedText, staleLead) + fbOnly +
             frame(FrameType::DecodedText, staleLead),
         "40 40",
         {},
         false,
         false,
         staleLead},
    };
}

// How the bytes reach the reader and how frames leave it: straight into the frame buffer
// and copied out, or through the read-ahead block (whole frames in one step) and copied out or
// looked at in place. Every way must give the same frames and messages.
struct Way
{
    char const* name;
    MemoryFrameReader::Delivery delivery;
    zelkotest::Access access;
};

Way const ways[] = {
    {"direct", MemoryFrameReader::Delivery::Direct, zelkotest::Access::Take},
    {"readahead", MemoryFrameReader::Delivery::ReadAhead, zelkotest::Access::Take},
    {"view", MemoryFrameReader::Delivery::ReadAhead, zelkotest::Access::View},
};

using FrameReaderStream = testing::TestWithParam<std::tuple<StreamCase, int, Way>>;

TEST_P(FrameReaderStream, HandsOutFramesAndMessages)
{
    StreamCase const& c = std::get<0>(GetParam());
    Way const& way = std::get<2>(GetParam());
    zelkotest::TraceCapture capture;
    MemoryFrameReader reader(c.stream, std::get<1>(GetParam()), way.delivery);
    QByteArrayList types;
    QByteArray const payload = c.payload.isEmpty() ? samplePayload() : c.payload;
    for (auto const& f : readAllFrames(reader, 1000000, way.access)) {
        types << f.type;
        EXPECT_EQ(f.data.mid(FrameHeaderSize), c.headerOnly ? QByteArray() : payload);
    }
    EXPECT_EQ(types.join(' '), c.types);
    EXPECT_EQ(capture.messages(), c.messages);
    EXPECT_EQ(reader.fatalError(), c.fatal);
    for (auto const& line : capture.lines()) {
        EXPECT_EQ(line.sourceFile,
                  QStringLiteral("massdatamanagement/zelkodatastreamconverter/framereader"));
    }
}

// Every stream is read whole at once and a few bytes at a time (40: a frame of the sample
// payload, so that frames behind garbage are split across reads): the result must not depend
// on how the source hands the bytes out.
INSTANTIATE_TEST_SUITE_P(Streams, FrameReaderStream,
                         testing::Combine(testing::ValuesIn(streamCases()),
                                          testing::Values(1, 3, 7, 40, 1 << 20),
                                          testing::ValuesIn(ways)),
                         [](testing::TestParamInfo<std::tuple<StreamCase, int, Way>> const& info) {
                             std::string name = std::get<0>(info.param).name;
                             for (char& ch : name) {
                                 if (!isalnum(static_cast<unsigned char>(ch))) {
                                     ch = '_';
                                 }
                             }
                             return name + "_chunk" + std::to_string(std::get<1>(info.param)) +
                                    "_" + std::get<2>(info.param).name;
                         });

TEST(FrameReader, SwappedFrameIsConvertedWordByWord)
{
    // Distinct bytes in every header word and a body long enough for the widest shuffle to
    // run several times and leave a tail: each byte must land where the host frame has it.
    // 64-bit values keep the order of their halves; 16-bit pairs within a word change places.
    PayloadBuilder payload;
    for (quint32 i = 0; i < 10; ++i) {
        payload.uint64(0x0102030405060708ull * (i + 1)).halfWords(quint16(i), quint16(~i));
    }
    zelkorecording::HeaderExtras const extras{0x0A0B0C0D, 0x11121314, 0x21222324};
    QByteArray const stored = RecordingWriter::frameBytes(FrameType::DecodedText, payload.data(),
                                                          ByteOrder::Swapped, extras);
    EXPECT_EQ(stored.left(4), QByteArray("\xFB\x74\x65\x72"));
    MemoryFrameReader reader(stored);
    auto const frames = readAllFrames(reader);
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(
        frames[0].data.toHex(),
        RecordingWriter::frameBytes(FrameType::DecodedText, payload.data(), ByteOrder::Host, extras)
            .toHex());
}

// Every form of the swap this processor runs, in place and copying, on lengths around the
// shuffle widths, at an odd address and with guard bytes on both sides: each word reversed,
// nothing around it touched, the source of a copy left as it was.
TEST(WordSwap, EveryFormReversesEachWordAndNothingElse)
{
    for (auto const& form : zelkodatastreamconverter::WordSwap::forms()) {
        for (int words : {0, 1, 3, 4, 5, 7, 8, 9, 17}) {
            QByteArray data(4 * words + 5, '\0');
            std::iota(data.begin(), data.end(), char(1));
            QByteArray const source = data;
            QByteArray expected = data;
            for (int w = 0; w < words; ++w) {
                std::reverse(expected.begin() + 1 + 4 * w, expected.begin() + 5 + 4 * w);
            }
            form.swap(data.data() + 1, words);
            EXPECT_EQ(data.toHex(), expected.toHex()) << form.name << ", " << words << " words";
            QByteArray copy(source.size(), '\0');
            std::iota(copy.begin(), copy.end(), char(1));
            form.swapCopy(copy.data() + 1, source.constData() + 1, words);
            EXPECT_EQ(copy.toHex(), expected.toHex()) << form.name << " copying, " << words;
        }
    }
}

// Reader and writer of the test recordings share frameformat.h, so a wrong constant there
// would pass every round trip: the magic word is pinned here as the bytes of a recording.
TEST(FrameFormat, MagicWordReadsInEitherByteOrder)
{
    EXPECT_EQ(frame(FrameType::DecodedText, {}).left(4), QByteArray("\x72\x65\x74\xFB"));
    EXPECT_EQ(qbswap(FRAME_MAGIC), zelkodatastreamconverter::SwappedFrameMagic);
}

TEST(FrameReader, MaximumLengthIsAcceptedAndWaitsForTheBody)
{
    zelkotest::TraceCapture capture;
    MemoryFrameReader reader(header(FRAME_MAGIC, 0x4000000, FrameType::DecodedText) +
                             QByteArray(100, '\x01'));
    EXPECT_TRUE(readAllFrames(reader).empty());
    EXPECT_TRUE(capture.messages().isEmpty());
    EXPECT_FALSE(reader.fatalError());
}

TEST(FrameReader, RemoveFrameDataSkipsAFrame)
{
    QByteArray const payload = samplePayload();
    MemoryFrameReader reader(frame(FrameType::DecodedText, payload) +
                             frame(FrameType::TransmissionSystem, payload));
    QByteArray type("x");
    QByteArray data("x");
    reader.takeFrameData(type, data); // before any frame: no type word, nothing to hand out
    EXPECT_EQ(type, QByteArray("0"));
    EXPECT_TRUE(data.isEmpty());
    while (!reader.readFrame()) {
    }
    reader.removeFrameData();
    auto const frames = readAllFrames(reader);
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(frames[0].type, QByteArray("170"));
}

TEST(FrameReader, ReadDirectReadsRawBytes)
{
    MemoryFrameReader reader(QByteArray("abcdefgh"));
    QByteArray out;
    reader.readDirect(out, 5);
    EXPECT_EQ(out, QByteArray("abcde"));
    reader.readDirect(out, 10);
    EXPECT_EQ(out, QByteArray("fgh"));
    reader.readDirect(out, -3);
    EXPECT_TRUE(out.isEmpty());
}

} // namespace
