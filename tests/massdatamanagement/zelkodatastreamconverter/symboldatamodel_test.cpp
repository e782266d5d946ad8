// Symbol frames into symbol files, text files and data blocks: symbol widths read back from
// the symbol file, damaged frames, the choice of translation, the text-file form of Morse
// characters, splitting, and the samples against their golden dumps.

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <cstring>
#include <gtest/gtest.h>
#include <jobspec/settings.h>
#include <massdatamanagement/zelkodatastreamconverter/clock.h>
#include <massdatamanagement/zelkodatastreamconverter/fileinfolist.h>
#include <massdatamanagement/zelkodatastreamconverter/frameformat.h>
#include <massdatamanagement/zelkodatastreamconverter/symboldataconverter.h>
#include <massdatamanagement/zelkodatastreamconverter/symboldatamodel.h>
#include <massdatamanagement/zelkodatastreamconverter/symbolfile.h>
#include <nerikresultdataxml/datablock.h>
#include <nerikresultdataxml/transmission.h>
#include <recordingwriter/recordingwriter.h>
#include <recordingwriter/symbolpayload.h>
#include <reportkit/binary.h>
#include <support/golden.h>
#include <support/qstringprinter.h>
#include <support/rowname.h>
#include <support/schemavalidator.h>
#include <support/scopedworkingdirectory.h>
#include <support/tracecapture.h>

using namespace zelkodatastreamconverter;
using zelkorecording::KeyElement;
using zelkorecording::SymbolRun;

namespace {

constexpr quint64 Start = 1700000000000000ull;

QByteArray rawFrame(quint32 width, QVector<quint32> const& symbols, qint64 claimed = -1,
                    quint64 time = Start)
{
    return zelkorecording::RecordingWriter::frameBytes(
        FrameType::Symbols,
        zelkorecording::rawSymbolPayload(SymbolRun{time, 0, 1}, width, 50000, symbols, claimed));
}

QByteArray morseFrame(QVector<KeyElement> const& elements, quint64 time = Start,
                      qint64 claimed = -1)
{
    return zelkorecording::RecordingWriter::frameBytes(
        FrameType::Symbols,
        zelkorecording::morseElementPayload(SymbolRun{time, 0, 1}, 700, -200, elements, claimed));
}

// The content of every symbol file the conversion listed, record by record.
QVector<SymbolRecord> symbolFileRecords(FileInfoList& files)
{
    QVector<SymbolRecord> records;
    for (auto const& record : files.getResults().GetBinary()) {
        if (record.GetType() == QLatin1String("Symbols")) {
            QString reason;
            EXPECT_TRUE(SymbolFile::read(zelkotest::readFile(record.GetURL()), records, reason))
                << reason.toStdString();
        }
    }
    return records;
}

struct WidthRow
{
    char const* name;
    quint32 width;
    QVector<quint32> symbols;
};

using SymbolWidths = testing::TestWithParam<WidthRow>;

TEST_P(SymbolWidths, ReadBackFromTheSymbolFileAndTheRawContent)
{
    QTemporaryDir dir;
    FileInfoList files;
    SymbolDataModel model;
    model.setOutput(dir.path(), &files);
    ASSERT_TRUE(model.processData(rawFrame(GetParam().width, GetParam().symbols)));
    model.finish();
    QVector<SymbolRecord> const records = symbolFileRecords(files);
    ASSERT_EQ(records.size(), 1);
    EXPECT_EQ(records[0].values, GetParam().symbols);
    EXPECT_EQ(records[0].widthOrTone, GetParam().width);
    // The raw content keeps the symbols as code units, two a symbol above 16 bits.
    QString const raw = model.getCurrentTransmission()->GetDataBlock().front()->GetRawContent();
    QVector<quint32> fromRaw;
    bool const wide = GetParam().width > 16;
    for (int i = 0; i < raw.size(); i += wide ? 2 : 1) {
        fromRaw.append(wide ? (quint32(raw[i].unicode()) << 16) | raw[i + 1].unicode()
                            : raw[i].unicode());
    }
    EXPECT_EQ(fromRaw, GetParam().symbols);
}

INSTANTIATE_TEST_SUITE_P(
    Widths, SymbolWidths,
    testing::Values(WidthRow{"one_bit", 1, {1, 0, 1, 1, 0, 0, 1}},
                    WidthRow{"five_bits_across_words", 5, {31, 0, 17, 3, 30, 1, 16, 8}},
                    WidthRow{"sixteen_bits", 16, {0xFFFF, 0, 0x8001}},
                    WidthRow{"seventeen_bits", 17, {0x1FFFF, 0x10000, 1}},
                    WidthRow{"thirty_one_bits", 31, {0x7FFFFFFF, 0x40000001, 2}},
                    WidthRow{"thirty_two_bits", 32, {0xFFFFFFFF, 0x80000000, 0}},
                    WidthRow{"no_symbols", 5, {}}),
    zelkotest::RowName());

struct DamageRow
{
    char const* name;
    QByteArray frame;
    char const* reason;
};

using DamagedFrame = testing::TestWithParam<DamageRow>;

TEST_P(DamagedFrame, IsSkippedAndTheStreamGoesOn)
{
    zelkotest::TraceCapture capture;
    SymbolDataModel model;
    EXPECT_TRUE(model.processData(GetParam().frame));
    EXPECT_TRUE(model.processData(rawFrame(5, {1, 2})));
    EXPECT_EQ(model.counts().damagedFrames, 1);
    EXPECT_EQ(model.counts().symbols, 2);
    EXPECT_EQ(capture.messages(),
              QStringList{QStringLiteral("processData: damaged symbol frame (") +
                          QString::fromUtf8(GetParam().reason) + ')'});
}

QByteArray withKind(quint32 kind)
{
    QByteArray frame = rawFrame(5, {1});
    std::memcpy(frame.data() + FrameHeaderSize + 4 * SymbolFrameWord::Kind, &kind, 4);
    return frame;
}

INSTANTIATE_TEST_SUITE_P(
    Frames, DamagedFrame,
    testing::Values(DamageRow{"header_only", rawFrame(5, {}).left(FrameHeaderSize),
                              "0 bytes, a symbol header has 36"},
                    DamageRow{"header_cut", rawFrame(5, {}).left(FrameHeaderSize + 32),
                              "32 bytes, a symbol header has 36"},
                    DamageRow{"width_zero", rawFrame(0, {}), "symbol width 0"},
                    DamageRow{"width_thirty_three", rawFrame(33, {}), "symbol width 33"},
                    DamageRow{"count_one_past_the_frame", rawFrame(5, {1, 2, 3, 4, 5, 6}, 7),
                              "7 symbols of 5 bits in 4 bytes"},
                    DamageRow{"count_far_beyond", rawFrame(32, {1}, 0xFFFFFFFF),
                              "4294967295 symbols of 32 bits in 4 bytes"},
                    DamageRow{"elements_beyond", morseFrame({{true, 60000}}, Start, 2),
                              "2 elements in 4 bytes"},
                    DamageRow{"unknown_kind", withKind(3), "kind 3"}),
    zelkotest::RowName());

// When a channel's frames begin a new stream (a block of its own) and when a Morse frame
// comes after a break.
struct StreamRow
{
    char const* name;
    std::vector<QByteArray> frames;
    char const* blocks; // raw content types of the blocks, in order
    int breaks;
};

using Streams = testing::TestWithParam<StreamRow>;

TEST_P(Streams, StartAtChangesAndBreaksAreSilence)
{
    SymbolDataModel model;
    for (QByteArray const& frame : GetParam().frames) {
        ASSERT_TRUE(model.processData(frame));
    }
    model.finish();
    QStringList blocks;
    for (auto const* block : model.getCurrentTransmission()->GetDataBlock()) {
        blocks << block->GetRawContentType();
    }
    EXPECT_EQ(blocks.join(' '), QString::fromLatin1(GetParam().blocks));
    EXPECT_EQ(model.counts().breaks, GetParam().breaks);
}

KeyElement const dot{true, 60000};

INSTANTIATE_TEST_SUITE_P(
    Frames, Streams,
    testing::Values(
        StreamRow{"same_width_continues", {rawFrame(5, {1}), rawFrame(5, {2})}, "Symbols/5", 0},
        StreamRow{"new_width", {rawFrame(5, {1}), rawFrame(7, {2})}, "Symbols/5 Symbols/7", 0},
        StreamRow{
            "raw_then_morse", {rawFrame(5, {1}), morseFrame({dot})}, "Symbols/5 MorseElements", 0},
        StreamRow{
            "morse_then_raw", {morseFrame({dot}), rawFrame(5, {1})}, "MorseElements Symbols/5", 0},
        StreamRow{"morse_continues_at_its_end",
                  {morseFrame({dot}), morseFrame({dot}, Start + 60000)},
                  "MorseElements",
                  0},
        StreamRow{"a_millisecond_late_is_no_break",
                  {morseFrame({dot}), morseFrame({dot}, Start + 61000)},
                  "MorseElements",
                  0},
        StreamRow{"later_is_a_break",
                  {morseFrame({dot}), morseFrame({dot}, Start + 61001)},
                  "MorseElements",
                  1},
        StreamRow{"earlier_continues_at_the_end",
                  {morseFrame({dot}), morseFrame({dot}, Start), morseFrame({dot}, Start + 121000)},
                  "MorseElements",
                  0}),
    zelkotest::RowName());

TEST(SymbolDataModel, OtherFrameTypesAreRefused)
{
    SymbolDataModel model;
    EXPECT_FALSE(model.processData(
        zelkorecording::RecordingWriter::frameBytes(FrameType::Image, QByteArray(40, 0))));
    EXPECT_FALSE(model.processData(QByteArray(10, 0)));
}

// Raw symbols become text only through an alphabet as wide as they are.
struct TranslationRow
{
    char const* name;
    char const* alphabet;
    quint32 width;
    char const* content;
    char const* contentCode;
};

using Translation = testing::TestWithParam<TranslationRow>;

TEST_P(Translation, NeedsAnAlphabetOfTheSymbolWidth)
{
    QTemporaryDir dir;
    FileInfoList files;
    SymbolDataModel model;
    model.setOutput(dir.path(), &files);
    model.setAlphabetsDirectory(QStringLiteral(ZELKO_SOURCE_DIR "/data/alphabets"));
    model.setDecoder(QStringLiteral("RTTY"));
    bool changed = false;
    model.setAlphabet(QString::fromLatin1(GetParam().alphabet), changed);
    // ITA2 "C", "Q", figures shift, "Q" read as "1" behind it, split over two frames.
    ASSERT_TRUE(model.processData(rawFrame(GetParam().width, {14, 23, 27})));
    ASSERT_TRUE(model.processData(rawFrame(GetParam().width, {23})));
    model.finish();
    auto const* block = model.getCurrentTransmission()->GetDataBlock().front();
    EXPECT_EQ(block->GetContent(), QString::fromLatin1(GetParam().content));
    EXPECT_EQ(block->GetContentCode(), QString::fromLatin1(GetParam().contentCode));
    auto const isText = [](auto const& r) { return r.GetType() == QLatin1String("Text"); };
    auto const& binaries = files.getResults().GetBinary();
    EXPECT_EQ(std::any_of(binaries.begin(), binaries.end(), isText), *GetParam().content != 0);
}

INSTANTIATE_TEST_SUITE_P(
    Alphabets, Translation,
    testing::Values(TranslationRow{"ita2_five_bits", "International", 5, "CQ1", "International"},
                    TranslationRow{"none_keeps_symbols", "None", 5, "", "None"},
                    TranslationRow{"wider_symbols_than_the_codes", "International", 6, "", "None"}),
    zelkotest::RowName());

MorseCharacter character(char const* text, int confidence, qint64 start, char const* elements = ".")
{
    MorseCharacter c;
    c.text = QString::fromLatin1(text);
    c.elements = QString::fromLatin1(elements);
    c.confidence = confidence;
    c.startMicroseconds = start;
    c.endMicroseconds = start + 100000;
    return c;
}

MorseCharacter wordGap(qint64 start)
{
    return character(" ", 100, start, "");
}

struct TextFormRow
{
    char const* name;
    QVector<MorseCharacter> characters;
    char const* text;
};

using TextFileForm = testing::TestWithParam<TextFormRow>;

TEST_P(TextFileForm, MarksBreaksAndSpaces)
{
    SymbolDataModel::TextLayout layout;
    EXPECT_EQ(SymbolDataModel::textFileForm(GetParam().characters, layout),
              QString::fromLatin1(GetParam().text));
}

qint64 const Pause = qint64(SymbolDataModel::MessagePauseSeconds) * 1000000;

INSTANTIATE_TEST_SUITE_P(
    Characters, TextFileForm,
    testing::Values(
        TextFormRow{"threshold_is_not_low", {character("E", 50, 0)}, "E"},
        TextFormRow{"below_the_threshold", {character("E", 49, 0)}, "~E"},
        TextFormRow{"word_gap_between_words",
                    {character("E", 100, 0), wordGap(1), character("T", 100, 2)},
                    "E T"},
        TextFormRow{
            "no_blank_at_the_start_or_end", {wordGap(0), character("E", 100, 1), wordGap(2)}, "E"},
        TextFormRow{"pause_starts_a_line",
                    {character("E", 100, 0), wordGap(1), character("T", 100, 100000 + Pause + 1)},
                    "E\nT"},
        TextFormRow{"pause_of_exactly_the_limit",
                    {character("E", 100, 0), character("T", 100, 100000 + Pause)},
                    "ET"}),
    zelkotest::RowName());

TEST(SymbolDataModel, SymbolFilesSplitBetweenRecords)
{
    QTemporaryDir dir;
    FileInfoList files;
    SymbolDataModel model;
    model.setOutput(dir.path(), &files);
    model.setMaxFileSize(1000);
    QVector<quint32> const symbols(200, 0x15);
    for (int frame = 0; frame < 8; ++frame) {
        ASSERT_TRUE(model.processData(rawFrame(5, symbols, -1, Start + quint64(frame) * 1000000)));
    }
    model.finish();
    // 36 + 128 bytes a record: the seventh record takes the first file past 1000 bytes.
    EXPECT_EQ(files.getResults().GetBinary().size(), 2u);
    QVector<SymbolRecord> const records = symbolFileRecords(files);
    ASSERT_EQ(records.size(), 8);
    EXPECT_EQ(records.back().microseconds, Start + 7000000u);
    EXPECT_EQ(records.back().values, symbols);
}

TEST(SymbolFile, RefusesWhatIsNoSymbolFile)
{
    QVector<SymbolRecord> records;
    QString reason;
    EXPECT_FALSE(SymbolFile::read(QByteArray("ZSYMBOLX\x01\0\0\0\0\0\0\0", 16), records, reason));
    EXPECT_EQ(reason, "not a symbol file");
    QByteArray file("ZSYMBOLS\x02\0\0\0\0\0\0\0", 16);
    EXPECT_FALSE(SymbolFile::read(file, records, reason));
    EXPECT_EQ(reason, "version 2");
    file[8] = 1;
    EXPECT_FALSE(SymbolFile::read(file + QByteArray(8, 0), records, reason));
    EXPECT_EQ(reason, "record at byte 16: 8 bytes, a symbol header has 36");
}

TEST(SymbolFile, WordsAreLittleEndian)
{
    QTemporaryDir dir;
    FileInfoList files;
    SymbolDataModel model;
    model.setOutput(dir.path(), &files);
    model.processData(zelkorecording::RecordingWriter::frameBytes(
        FrameType::Symbols, zelkorecording::rawSymbolPayload(SymbolRun{0x1020304u, 0, 0xA0B0C0D}, 8,
                                                             50000, {0x41, 0x42})));
    model.finish();
    EXPECT_EQ(zelkotest::readFile(files.getResults().GetBinary().front().GetURL()).left(24),
              QByteArray("ZSYMBOLS\x01\0\0\0\x0D\x0C\x0B\x0A\x04\x03\x02\x01\0\0\0\0", 24));
}

// A break between frames is silence: keyed "E E" at 20 words a minute, the second word a
// whole pause after the first, reads as two lines.
TEST(SymbolDataModel, ABreakBetweenMorseFramesIsSilence)
{
    QTemporaryDir dir;
    FileInfoList files;
    SymbolDataModel model;
    model.setAlphabetsDirectory(QStringLiteral(ZELKO_SOURCE_DIR "/data/alphabets"));
    model.setOutput(dir.path(), &files);
    QVector<KeyElement> paris;
    for (char const* code : {".--.", ".-", ".-.", "..", "..."}) {
        for (char const* e = code; *e != 0; ++e) {
            paris.append({true, *e == '.' ? 60000u : 180000u});
            paris.append({false, e[1] != 0 ? 60000u : 180000u});
        }
    }
    paris.last().microseconds = 420000;
    QVector<KeyElement> const twice = paris + paris;
    ASSERT_TRUE(model.processData(morseFrame(twice)));
    ASSERT_TRUE(model.processData(morseFrame(twice, Start + 20000000u)));
    model.finish();
    for (auto const& record : files.getResults().GetBinary()) {
        if (record.GetType() == QLatin1String("Text")) {
            EXPECT_EQ(zelkotest::readFile(record.GetURL()), "PARIS PARIS\nPARIS PARIS\n");
        }
    }
    EXPECT_EQ(model.counts().elements, 4 * paris.size());
}

// The samples through SymbolDataConverter: records, text files, the symbol files read back
// and the result document, as one golden dump.
struct SampleRow
{
    char const* name;
    char const* alphabet;
};

using SymbolSamples = testing::TestWithParam<SampleRow>;

TEST_P(SymbolSamples, ConvertToTheGoldenDump)
{
    Clock::Override const clock(QDateTime(QDate(2026, 2, 1), QTime(12, 30, 45), Qt::LocalTime));
    QTemporaryDir out;
    // The configured alphabets directory is the working directory unless set otherwise.
    zelkotest::ScopedWorkingDirectory const alphabets(
        QStringLiteral(ZELKO_SOURCE_DIR "/data/alphabets"));
    JobSpec::Settings settings;
    settings.SetValidate(false);
    settings.GetDemodulator_Settings().SetAlphabet(QString::fromLatin1(GetParam().alphabet));
    JobSpec::Decoder decoder;
    decoder.AppendValue(QStringLiteral("RTTY"));
    settings.GetDemodulator_Settings().SetDecoder(decoder);
    QString const name = QString::fromLatin1(GetParam().name).replace('_', '-');
    REPORTKIT::Results const results = SymbolDataConverter().convertFile(
        QStringLiteral(ZELKO_SOURCE_DIR "/data/samples/%1.zdr").arg(name), out.path(), settings, 0);
    QByteArray dump;
    auto const list = [&dump](REPORTKIT::FileRecord const& r) {
        dump += QStringLiteral("%1 %2 %3 %4 %5\n")
                    .arg(QFileInfo(r.GetURL()).fileName(), r.GetType(),
                         r.GetMetadata().GetDetail().GetCode())
                    .arg(r.GetMetadata().GetStopTime().isValid())
                    .arg(r.GetMetadata().GetDetail().GetFrequency().GetValue(), 0, 'f', 0)
                    .toUtf8();
    };
    for (auto const& record : results.GetBinary()) {
        list(record);
        QByteArray const content = zelkotest::readFile(record.GetURL());
        if (record.GetType() != QLatin1String("Symbols")) {
            dump += content;
            continue;
        }
        QVector<SymbolRecord> records;
        QString reason;
        EXPECT_TRUE(SymbolFile::read(content, records, reason)) << reason.toStdString();
        for (SymbolRecord const& r : records) {
            dump += QStringLiteral("  %1 kind %2 %3/%4 count %5 first %6\n")
                        .arg(r.microseconds)
                        .arg(r.kind)
                        .arg(r.widthOrTone)
                        .arg(qint32(r.rateOrLevel))
                        .arg(r.values.size())
                        .arg(r.values.value(0), 0, 16)
                        .toUtf8();
        }
    }
    for (auto const& record : results.GetText()) {
        list(record);
        EXPECT_EQ(zelkotest::validateXmlFile(record.GetURL(), "nerikresultdata.xsd"), QString());
        dump += zelkotest::readFile(record.GetURL());
    }
    EXPECT_EQ(zelkotest::compareWithGolden(dump, QStringLiteral("symbols/%1.txt").arg(name)),
              QString());
}

INSTANTIATE_TEST_SUITE_P(Samples, SymbolSamples,
                         testing::Values(SampleRow{"symbols_teleprinter", "International"},
                                         SampleRow{"morse_exchange", ""}),
                         zelkotest::RowName());

} // namespace
