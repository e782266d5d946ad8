// Symbol frames into symbol files, text files and data blocks: symbol widths read back from
// the symbol file, damaged frames, the choice of translation, the text-file form of Morse
// characters, splitting, and the samples against their golden dumps.

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
#include <support/golden.h>
#include <support/qstringprinter.h>
#include <support/rowname.h>
#include <support/schemavalidator.h>
#include <support/scopedworkingdirectory.h>
#include <support/textrows.h>
#include <support/tracecapture.h>

using namespace zelkodatastreamconverter;
using zelkorecording::KeyElement;
using zelkorecording::SymbolRun;
using Streams = testing::TestWithParam<zelkotest::TextRow>;
using Translation = testing::TestWithParam<zelkotest::TextRow>;
using TextFileForm = testing::TestWithParam<zelkotest::TextRow>;

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

// A model writing into a directory of its own, and what it wrote there.
struct Output
{
    QTemporaryDir dir;
    FileInfoList files;
    SymbolDataModel model;
    Output() { model.setOutput(dir.path(), &files); }

    /// The records of every symbol file, and the text files' contents, in the listed order.
    QVector<SymbolRecord> records(QByteArray* text = nullptr)
    {
        QVector<SymbolRecord> read;
        for (auto const& record : files.getResults().GetBinary()) {
            QByteArray const content = zelkotest::readFile(record.GetURL());
            QString reason;
            if (record.GetType() == QLatin1String("Text") && text != nullptr) {
                *text += content;
            } else if (record.GetType() == QLatin1String("Symbols")) {
                EXPECT_TRUE(SymbolFile::read(content, read, reason)) << reason.toStdString();
            }
        }
        return read;
    }
};

struct WidthRow
{
    char const* name;
    quint32 width;
    QVector<quint32> symbols;
};

using SymbolWidths = testing::TestWithParam<WidthRow>;

TEST_P(SymbolWidths, ReadBackFromTheSymbolFileAndTheRawContent)
{
    Output out;
    ASSERT_TRUE(out.model.processData(rawFrame(GetParam().width, GetParam().symbols)));
    out.model.finish();
    QVector<SymbolRecord> const records = out.records();
    ASSERT_EQ(records.size(), 1);
    EXPECT_EQ(records[0].values, GetParam().symbols);
    EXPECT_EQ(records[0].widthOrTone, GetParam().width);
    // The raw content keeps the symbols as code units, two a symbol above 16 bits.
    QString const raw = out.model.getCurrentTransmission()->GetDataBlock().front()->GetRawContent();
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

TEST(SymbolDataModel, OtherFrameTypesAreRefused)
{
    SymbolDataModel model;
    EXPECT_FALSE(model.processData(
        zelkorecording::RecordingWriter::frameBytes(FrameType::Image, QByteArray(40, 0))));
    EXPECT_FALSE(model.processData(QByteArray(10, 0)));
}

// "<alphabet> <symbol width>": the content and content code of ITA2 "C", "Q", figures
// shift, "Q" (a "1" behind the shift) in two frames; raw symbols become text only through an
// alphabet as wide as they are, and the text file holds the content.
TEST_P(Translation, NeedsAnAlphabetOfTheSymbolWidth)
{
    Output out;
    SymbolDataModel& model = out.model;
    model.setAlphabetsDirectory(QStringLiteral(ZELKO_SOURCE_DIR "/data/alphabets"));
    model.setDecoder(QStringLiteral("RTTY"));
    bool changed = false;
    model.setAlphabet(GetParam().input.section(' ', 0, 0), changed);
    quint32 const width = GetParam().input.section(' ', 1).toUInt();
    ASSERT_TRUE(model.processData(rawFrame(width, {14, 23, 27})));
    ASSERT_TRUE(model.processData(rawFrame(width, {23})));
    model.finish();
    auto const* block = model.getCurrentTransmission()->GetDataBlock().front();
    EXPECT_EQ(block->GetContent() + '|' + block->GetContentCode(), GetParam().expected);
    QByteArray text;
    out.records(&text);
    EXPECT_EQ(QString::fromUtf8(text), block->GetContent());
}

INSTANTIATE_TEST_SUITE_P(Rows, Translation,
                         testing::ValuesIn(zelkotest::readTextRows("symbols/translations.rows")),
                         zelkotest::TextRowName());

// A script of frames, "raw<width>@<µs>" (a symbol) or "morse@<µs>" (a dot), times after
// Start: the raw content types of the blocks it makes and the breaks it counts.
TEST_P(Streams, StartAtChangesAndBreaksAreSilence)
{
    SymbolDataModel model;
    for (QString const& frame : GetParam().input.split(' ')) {
        quint64 const time = Start + frame.section('@', 1).toULongLong();
        ASSERT_TRUE(model.processData(
            frame.startsWith("raw")
                ? rawFrame(frame.section('@', 0, 0).mid(3).toUInt(), {1}, -1, time)
                : morseFrame({{true, 60000}}, time)));
    }
    model.finish();
    QStringList blocks;
    for (auto const* block : model.getCurrentTransmission()->GetDataBlock()) {
        blocks << block->GetRawContentType();
    }
    EXPECT_EQ(QStringLiteral("%1; breaks %2").arg(blocks.join(' ')).arg(model.counts().breaks),
              GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Rows, Streams,
                         testing::ValuesIn(zelkotest::readTextRows("symbols/streams.rows")),
                         zelkotest::TextRowName());

// Characters "<text><confidence>@<start µs>" (confidence 100 when left out, each 0.1 s long),
// "_@<start>" a word gap: the text-file form.
TEST_P(TextFileForm, MarksBreaksAndSpaces)
{
    QVector<MorseCharacter> characters;
    for (QString const& token : GetParam().input.split(' ')) {
        MorseCharacter c;
        QString const head = token.section('@', 0, 0);
        c.text = head == "_" ? QStringLiteral(" ") : head.left(1);
        c.elements = head == "_" ? QString() : QStringLiteral(".");
        c.confidence = head.size() > 1 ? head.mid(1).toInt() : 100;
        c.startMicroseconds = token.section('@', 1).toLongLong();
        c.endMicroseconds = c.startMicroseconds + 100000;
        characters.append(c);
    }
    SymbolDataModel::TextLayout layout;
    EXPECT_EQ(SymbolDataModel::textFileForm(characters, layout), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Rows, TextFileForm,
                         testing::ValuesIn(zelkotest::readTextRows("symbols/textform.rows")),
                         zelkotest::TextRowName());

TEST(SymbolDataModel, SymbolFilesSplitBetweenRecords)
{
    Output out;
    out.model.setMaxFileSize(1000);
    QVector<quint32> const symbols(200, 0x15);
    for (int frame = 0; frame < 8; ++frame) {
        out.model.processData(rawFrame(5, symbols, -1, Start + quint64(frame) * 1000000));
    }
    out.model.finish();
    // 36 + 128 bytes a record: the seventh record takes the first file past 1000 bytes.
    EXPECT_EQ(out.files.getResults().GetBinary().size(), 2u);
    QVector<SymbolRecord> const records = out.records();
    ASSERT_EQ(records.size(), 8);
    EXPECT_EQ(records.back().microseconds, Start + 7000000u);
    EXPECT_EQ(records.back().values, symbols);
}

// The words on disk are little-endian whatever the machine; what is no symbol file is refused.
TEST(SymbolFile, LayoutAndRefusals)
{
    Output out;
    out.model.processData(zelkorecording::RecordingWriter::frameBytes(
        FrameType::Symbols, zelkorecording::rawSymbolPayload(SymbolRun{0x1020304u, 0, 0xA0B0C0D}, 8,
                                                             50000, {0x41, 0x42})));
    out.model.finish();
    QByteArray file = zelkotest::readFile(out.files.getResults().GetBinary().front().GetURL());
    EXPECT_EQ(file.left(24),
              QByteArray("ZSYMBOLS\x01\0\0\0\x0D\x0C\x0B\x0A\x04\x03\x02\x01\0\0\0\0", 24));
    QVector<SymbolRecord> records;
    QString reason;
    EXPECT_TRUE(SymbolFile::read(file.left(16), records, reason)); // a header alone: no records
    for (auto const& [damage, why] : std::vector<std::pair<QByteArray, QString>>{
             {file.left(24), "record at byte 16: 8 bytes, a symbol header has 36"},
             {file.left(8) + '\x02' + file.mid(9), "version 2"},
             {"ZSYMBOLX" + file.mid(8), "not a symbol file"}}) {
        EXPECT_FALSE(SymbolFile::read(damage, records, reason));
        EXPECT_EQ(reason, why);
    }
}

// The samples through SymbolDataConverter: the symbol files read back, the text files and
// the result document, as one golden dump (the zelko convert calls list the files).
using SymbolSamples = testing::TestWithParam<char const*>;

TEST_P(SymbolSamples, ConvertToTheGoldenDump)
{
    Clock::Override const clock(QDateTime(QDate(2026, 2, 1), QTime(12, 30, 45), Qt::LocalTime));
    QTemporaryDir out;
    // The configured alphabets directory is the working directory unless set otherwise.
    zelkotest::ScopedWorkingDirectory const alphabets(
        QStringLiteral(ZELKO_SOURCE_DIR "/data/alphabets"));
    JobSpec::Settings settings;
    settings.SetValidate(false);
    settings.GetDemodulator_Settings().SetAlphabet(QStringLiteral("International"));
    JobSpec::Decoder decoder;
    decoder.AppendValue(QStringLiteral("RTTY"));
    settings.GetDemodulator_Settings().SetDecoder(decoder);
    QString const name = QString::fromLatin1(GetParam());
    REPORTKIT::Results const results = SymbolDataConverter().convertFile(
        QStringLiteral(ZELKO_SOURCE_DIR "/data/samples/%1.zdr").arg(name), out.path(), settings, 0);
    QByteArray dump;
    for (auto const& record : results.GetBinary()) {
        QByteArray const content = zelkotest::readFile(record.GetURL());
        dump += QFileInfo(record.GetURL()).fileName().toUtf8() + '\n';
        QVector<SymbolRecord> records;
        QString reason;
        if (record.GetType() != QLatin1String("Symbols")) {
            dump += content;
            continue;
        }
        EXPECT_TRUE(SymbolFile::read(content, records, reason)) << reason.toStdString();
        for (SymbolRecord const& r : records) {
            dump += QString::asprintf("  %llu kind %u %u/%d count %d first %x\n",
                                      static_cast<unsigned long long>(r.microseconds), r.kind,
                                      r.widthOrTone, qint32(r.rateOrLevel), r.values.size(),
                                      r.values.value(0))
                        .toUtf8();
        }
    }
    for (auto const& record : results.GetText()) {
        EXPECT_EQ(zelkotest::validateXmlFile(record.GetURL(), "nerikresultdata.xsd"), QString());
        dump += zelkotest::readFile(record.GetURL());
    }
    EXPECT_EQ(zelkotest::compareWithGolden(dump, QStringLiteral("symbols/%1.txt").arg(name)),
              QString());
}

INSTANTIATE_TEST_SUITE_P(Samples, SymbolSamples,
                         testing::Values("symbols-teleprinter", "morse-exchange"),
                         [](auto const& info) {
                             return QString::fromLatin1(info.param).replace('-', '_').toStdString();
                         });

} // namespace
