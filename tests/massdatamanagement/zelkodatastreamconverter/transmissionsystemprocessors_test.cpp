// Transmission-system processors: every system's sample recording against its checked-in
// result document, and records cut short or overstating their sizes, which must read as
// far as the frame goes and no further.

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cstring>
#include <gtest/gtest.h>
#include <jobspec/settings.h>
#include <massdatamanagement/zelkodatastreamconverter/clock.h>
#include <massdatamanagement/zelkodatastreamconverter/transmissionsystemconverter.h>
#include <massdatamanagement/zelkodatastreamconverter/transmissionsystemmodel.h>
#include <nerikresultdataxml/pdudatablock.h>
#include <nerikresultdataxml/transmission.h>
#include <recordingwriter/recordingwriter.h>
#include <recordingwriter/transmissionsystemrecords.h>
#include <support/golden.h>
#include <support/rowname.h>
#include <support/schemavalidator.h>
#include <support/tracecapture.h>

using namespace zelkorecording;
using NerikResultDataXml::PDUDataBlock;
using zelkodatastreamconverter::Clock;
using zelkodatastreamconverter::TransmissionSystemModel;

namespace {

QDateTime const ConversionTime(QDate(2026, 2, 1), QTime(12, 30, 45), Qt::LocalTime);
QString const SourceData = QStringLiteral(ZELKO_SOURCE_DIR "/data");

// Runs in the data directory, where the maritime identification digits file lies.
class WorkingDirectory
{
public:
    explicit WorkingDirectory(QString const& path) : m_previous(QDir::currentPath())
    {
        QDir::setCurrent(path);
    }
    ~WorkingDirectory() { QDir::setCurrent(m_previous); }

private:
    QString m_previous;
};

// Converts a sample; the single result document, validated against the schema. A whole
// recording has no frame to refuse, not even at its end.
QByteArray convertSample(QString const& sample)
{
    zelkotest::TraceCapture const warnings(0x20);
    QTemporaryDir output;
    Clock::Override const clock(ConversionTime);
    WorkingDirectory const inData(SourceData);
    JobSpec::Settings settings;
    settings.SetValidate(false);
    zelkodatastreamconverter::TransmissionSystemConverter converter;
    converter.convertFile(SourceData + QStringLiteral("/samples/") + sample, output.path(),
                          settings, 0);
    EXPECT_EQ(warnings.messages().filter(QStringLiteral("invalid frame")), QStringList());
    QStringList const files =
        QDir(output.path()).entryList({QStringLiteral("NerikResultData_*.xml")}, QDir::Files);
    if (files.size() != 1) {
        ADD_FAILURE() << files.size() << " result documents for " << sample.toStdString();
        return QByteArray();
    }
    QString const path = QDir(output.path()).filePath(files.front());
    EXPECT_EQ(zelkotest::validateXmlFile(path, QStringLiteral("nerikresultdata.xsd")), QString())
        << sample.toStdString();
    return zelkotest::readFile(path);
}

class SampleDocument : public ::testing::TestWithParam<char const*>
{
};

// Regenerate with ZELKO_REGENERATE_GOLDEN=1 and review the diff.
TEST_P(SampleDocument, MatchesTheGoldenDocument)
{
    QString const name = QString::fromLatin1(GetParam());
    QByteArray const xml = convertSample(name + QStringLiteral(".zdr"));
    ASSERT_FALSE(xml.isEmpty());
    EXPECT_EQ(zelkotest::compareWithGolden(xml, QStringLiteral("transmissionsystem/") + name +
                                                    QStringLiteral(".xml")),
              QString());
}

INSTANTIATE_TEST_SUITE_P(Samples, SampleDocument,
                         ::testing::Values("pocsag-paging", "fms-zvei-evening", "ax25-session",
                                           "acars-multiblock", "pactor-exchange", "clover-exchange",
                                           "mpt1327-trunking", "f7w-subchannels", "text-and-atis"),
                         [](auto const& info) {
                             QString name = QString::fromLatin1(info.param);
                             return name.remove(QLatin1Char('-')).toStdString();
                         });

// --- Records that overstate their sizes or end early -----------------------------------------

constexpr quint64 FrameTime = 1710496800ull * 1000000ull;

QByteArray frame(TransmissionSystem system, QByteArray const& record)
{
    return RecordingWriter::frameBytes(zelkodatastreamconverter::FrameType::TransmissionSystem,
                                       transmissionSystemPayload(system, FrameTime, "CUT", record));
}

// A record word by word, with word index replaced.
QByteArray withWord(QByteArray record, int index, quint32 value)
{
    std::memcpy(record.data() + 4 * index, &value, 4);
    return record;
}

QString fieldValue(PDUDataBlock const& block, QString const& name)
{
    for (auto const& field : block.GetFields()) {
        if (field.GetName() == name) {
            return field.GetValue();
        }
    }
    return QStringLiteral("<none>");
}

struct CutRow
{
    char const* name;
    TransmissionSystem system;
    QByteArray record;
    char const* field; // checked field, or the payload when null
    char const* expected;
    int children = 0; // F7W: the sub-channel blocks; row.field is read from the last one
};

void PrintTo(CutRow const& row, std::ostream* os)
{
    *os << row.name;
}

PocsagRecord page(QByteArray const& text)
{
    PocsagRecord record;
    record.address = 1234567;
    record.function = 3;
    record.message = text;
    return record;
}

F7WRecord f7w(QVector<F7WSubChannel> const& subChannels)
{
    return F7WRecord{{F7WChannel{7, 3, subChannels}}};
}

std::vector<CutRow> cutRows()
{
    QByteArray const fourWords("ABCDEFGHIJKLMNOP");
    PacketRadioRecord disc;
    disc.sender.callSign = "DL1ABC";
    disc.sender.ssid = 5;
    QByteArray const ax25 = disc.record();
    PacketRadioRecord fullCall;
    fullCall.sender.callSign = "ABCDEFGH";
    fullCall.sender.ssid = 'A';
    F7WSubChannel raw;
    raw.payloadType = F7WSubChannel::Raw;
    raw.elementCount = 64;
    raw.bitsPerElement = 1;
    raw.data = QByteArray(8, '\xA5');
    QByteArray const twoSubChannels = f7w({F7WSubChannel::text(1, "A", "FIRST"), raw}).record();
    // Without its last word: the text's terminating zero.
    auto const unterminated = [](QByteArray const& record) {
        return record.left(record.size() - 4);
    };
    ZveiVdewRecord vdew;
    vdew.callNumber = "12345678";
    AcarsRecord acars;
    acars.message = "H1";
    AcarsRecord acarsText;
    acarsText.message = "ABCDEFGH";
    PacketRadioRecord information;
    information.frameType = PacketRadioRecord::Information;
    information.information = "INFORMATION";
    return {
        // The stated count runs past the frame: the text ends with the frame.
        {"AsciiCountPastFrame", TransmissionSystem::ASCII,
         withWord(unterminated(AsciiRecord{fourWords}.record()), 0, 1000000), nullptr,
         "ABCDEFGHIJKLMNOP"},
        {"UnicodeCountPastFrame", TransmissionSystem::Unicode,
         withWord(unterminated(UnicodeRecord{QStringLiteral("Straße")}.record()), 0, 0xFFFFFFFF),
         nullptr, "Straße"},
        {"PocsagCountPastFrame", TransmissionSystem::POCSAG,
         withWord(unterminated(page(fourWords).record()), 3, 0x40000000), nullptr,
         "ABCDEFGHIJKLMNOP"},
        // A count shorter than the text ends it.
        {"PocsagCountShorterThanText", TransmissionSystem::POCSAG,
         withWord(page(fourWords).record(), 3, 2), nullptr, "ABCDEFGH"},
        {"AcarsCountShorterThanText", TransmissionSystem::ACARS, withWord(acarsText.record(), 9, 1),
         nullptr, "ABCD"},
        {"Mpt1327ShortDataCountShorterThanText", TransmissionSystem::MPT1327,
         withWord(Mpt1327Record::shortData("SDMXYZ"), 1, 1), nullptr, "SDMX"},
        {"Ax25CountShorterThanInformation", TransmissionSystem::PacketRadio,
         withWord(information.record(), 22, 1), nullptr, "INFO"},
        {"UnicodeCountShorterThanText", TransmissionSystem::Unicode,
         withWord(UnicodeRecord{QStringLiteral("Straße")}.record(), 0, 1), nullptr, "St"},
        {"VdewCallNumberCountShorterThanText", TransmissionSystem::ZveiVdew,
         withWord(vdew.record(), 4, 1), "Call Number", "1234"},
        {"VdewCallNumberPastFrame", TransmissionSystem::ZveiVdew,
         withWord(vdew.record(), 4, 0xFFFFFFFF), "Call Number", "12345678"},
        {"PactorBytesPastFrame", TransmissionSystem::PACTOR,
         withWord(PactorRecord{}.record() + "RYRY", 21, 9999), nullptr, "RYRY"},
        // The byte count is taken as stated up to the frame's end, padding included.
        {"CloverBytesPastFrame", TransmissionSystem::CLOVER,
         withWord(CloverRecord{}.record() + "QRV", 9, 0x7FFFFFFF), nullptr, "QRV_"},
        {"AcarsCountPastFrame", TransmissionSystem::ACARS, withWord(acars.record(), 9, 77), nullptr,
         "H1"},
        {"Mpt1327ShortDataPastFrame", TransmissionSystem::MPT1327,
         withWord(unterminated(Mpt1327Record::shortData("SDMX")), 1, 500), nullptr, "SDMX"},
        // A record cut inside a field reads the rest as zeros.
        {"Ax25CutInsideSenderCall", TransmissionSystem::PacketRadio, ax25.left(16), "Sender",
         "0:DL1A"},
        {"Ax25CutBeforeSenderSsid", TransmissionSystem::PacketRadio, ax25.left(20), "Sender",
         "0:DL1ABC"},
        {"Ax25CutAfterSenderSsid", TransmissionSystem::PacketRadio, ax25.left(24), "Sender",
         "5:DL1ABC"},
        // A call sign fills its two words; the SSID behind it is no part of it.
        {"Ax25FullLengthCallSign", TransmissionSystem::PacketRadio, fullCall.record(), "Sender",
         "65:ABCDEFGH"},
        {"AtisCutInsideShipId", TransmissionSystem::ATIS,
         AtisRecord{211, "123456"}.record().left(6), "Ship ID", "12"},
        {"Mpt1327CallCutInFrequency", TransmissionSystem::MPT1327,
         Mpt1327Record::call(0, "A", "B", 1, 0x100000000ull + 145000000ull, 2).left(32),
         "Frequency", "145. MHz"},
        // F7W: a sub-channel that does not fit ends the list; the ones before it stay.
        {"F7WWhole", TransmissionSystem::F7W, twoSubChannels, "Baudrate", "100", 2},
        {"F7WSecondPayloadCut", TransmissionSystem::F7W,
         twoSubChannels.left(twoSubChannels.size() - 4), nullptr, nullptr, 1},
        {"F7WSecondHeaderCut", TransmissionSystem::F7W,
         twoSubChannels.left(twoSubChannels.size() - 12), nullptr, nullptr, 1},
        {"F7WZeroBitElements", TransmissionSystem::F7W,
         f7w({F7WSubChannel{1, "Z", 0, 5, 0, QByteArray()}}).record(), nullptr, nullptr, 0},
        {"F7WThirtyTwoBitElements", TransmissionSystem::F7W,
         f7w({F7WSubChannel{1, "Z", 0, 1, 32, QByteArray("\x01\x02\x03\x04", 4)}}).record(),
         "Sub Channel Name", "Z", 1},
        {"F7WThirtyThreeBitElements", TransmissionSystem::F7W,
         f7w({F7WSubChannel{1, "Z", 0, 1, 33, QByteArray(8, 'x')}}).record(), nullptr, nullptr, 0},
        {"F7WChannelCountPastFrame", TransmissionSystem::F7W,
         withWord(f7w({F7WSubChannel::text(1, "A", "X")}).record(), 0, 0xFFFFFFFF), nullptr,
         nullptr, 1},
        // One channel stated, two in the record: the second is not read.
        {"F7WChannelCountBelowChannels", TransmissionSystem::F7W,
         withWord(F7WRecord{{F7WChannel{1, 0, {F7WSubChannel::text(1, "A", "X")}},
                             F7WChannel{2, 0, {F7WSubChannel::text(1, "B", "Y")}}}}
                      .record(),
                  0, 1),
         "Channel", "1", 1},
        // A long payload: the next sub-channel starts right behind its last word.
        {"F7WLongPayloadThenAnother", TransmissionSystem::F7W,
         f7w({F7WSubChannel::text(1, "LONG", QByteArray(300, 'L')),
              F7WSubChannel::text(2, "NEXT", "X")})
             .record(),
         "Sub Channel Name", "NEXT", 2},
        // A name fills its ten words; an empty last sub-channel ends the record exactly.
        {"F7WFullLengthNameAndEmptyLast", TransmissionSystem::F7W,
         f7w({F7WSubChannel::text(1, QByteArray(40, 'N'), "X"),
              F7WSubChannel{2, "", 1, 0, 8, QByteArray()}})
             .record(),
         nullptr, nullptr, 2},
        {"F7WFullLengthName", TransmissionSystem::F7W,
         f7w({F7WSubChannel::text(1, QByteArray(40, 'N'), "X")}).record(), "Sub Channel Name",
         "NNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNN", 1},
        {"F7WLastRateCode", TransmissionSystem::F7W,
         F7WRecord{{F7WChannel{1, 7, {F7WSubChannel::text(1, "A", "X")}}}}.record(), "Baudrate",
         "300", 1},
        {"F7WRateCodePastTable", TransmissionSystem::F7W,
         F7WRecord{{F7WChannel{1, 8, {F7WSubChannel::text(1, "A", "X")}}}}.record(), "Baudrate",
         "0", 1},
    };
}

using CutRecord = ::testing::TestWithParam<CutRow>;

TEST_P(CutRecord, ReadsAsFarAsTheFrameGoes)
{
    CutRow const& row = GetParam();
    TransmissionSystemModel model;
    QByteArray bytes = frame(row.system, row.record);
    ASSERT_TRUE(model.processData(bytes));
    ASSERT_NE(model.getCurrentTransmission(), nullptr);
    auto const& blocks = model.getCurrentTransmission()->GetPDUDataBlocks();
    ASSERT_EQ(blocks.size(), 1);
    PDUDataBlock const& block = *blocks.front();
    if (row.system == TransmissionSystem::F7W) {
        ASSERT_EQ(block.GetPDUDataBlocks().size(), row.children);
        if (row.field != nullptr) {
            EXPECT_EQ(fieldValue(*block.GetPDUDataBlocks().back(), QString::fromLatin1(row.field)),
                      QString::fromUtf8(row.expected));
        }
    } else if (row.field != nullptr) {
        EXPECT_EQ(fieldValue(block, QString::fromLatin1(row.field)),
                  QString::fromUtf8(row.expected));
    } else {
        EXPECT_EQ(block.GetPayload().GetContent(), QString::fromUtf8(row.expected));
    }
}

INSTANTIATE_TEST_SUITE_P(Records, CutRecord, ::testing::ValuesIn(cutRows()), zelkotest::RowName());

// --- Multi-block ACARS messages and the end of an AX.25 link ------------------------------

// One frame of a sequence: ACARS blocks ('m' more to come, 'l' last block; 'o' and 'n' the
// same without a block name) or a POCSAG page ('p') in between.
QByteArray sequenceFrame(char kind, quint64 time)
{
    if (kind == 'p') {
        return RecordingWriter::frameBytes(zelkodatastreamconverter::FrameType::TransmissionSystem,
                                           transmissionSystemPayload(TransmissionSystem::POCSAG,
                                                                     time, "POCSAG",
                                                                     page("P").record()));
    }
    AcarsRecord block;
    block.lastBlock = kind == 'l' || kind == 'n';
    block.message = "PART";
    return RecordingWriter::frameBytes(
        zelkodatastreamconverter::FrameType::TransmissionSystem,
        transmissionSystemPayload(TransmissionSystem::ACARS, time,
                                  kind == 'n' || kind == 'o' ? QByteArray() : "ACARS",
                                  block.record()));
}

// The transmission's top-level blocks, each as its number of children.
std::string shape(TransmissionSystemModel const& model)
{
    std::string text;
    for (PDUDataBlock const* block : model.getCurrentTransmission()->GetPDUDataBlocks()) {
        text += std::to_string(block->GetPDUDataBlocks().size());
    }
    return text;
}

struct SequenceRow
{
    char const* name;
    char const* frames;  // one kind a frame, see sequenceFrame()
    char const* shape;   // children of each top-level block
    char const* offsets; // getPDUOffset() after each frame, as digits ('-' for -1)
};

using AcarsSequence = ::testing::TestWithParam<SequenceRow>;

TEST_P(AcarsSequence, NestsContinuedBlocksUnderOneParent)
{
    SequenceRow const& row = GetParam();
    TransmissionSystemModel model;
    std::string offsets;
    quint64 time = FrameTime;
    for (char const* kind = row.frames; *kind != '\0'; ++kind) {
        QByteArray bytes = sequenceFrame(*kind, time += 1000000);
        ASSERT_TRUE(model.processData(bytes));
        int const offset = model.getPDUOffset();
        offsets += offset < 0 ? '-' : char('0' + offset);
    }
    EXPECT_EQ(shape(model), row.shape);
    EXPECT_EQ(offsets, row.offsets);
}

INSTANTIATE_TEST_SUITE_P(
    Messages, AcarsSequence,
    ::testing::Values(SequenceRow{"ThreeBlocks", "mml", "3", "000"},
                      SequenceRow{"SingleBlocks", "ll", "00", "01"},
                      SequenceRow{"SingleThenTwoBlocksThenSingle", "lmll", "020", "0112"},
                      // Another system's block ends the message; its last block stands alone.
                      SequenceRow{"InterruptedByAPage", "mpl", "100", "012"},
                      SequenceRow{"TwoMessages", "mlml", "22", "0011"},
                      // Without a name no parent is kept: the blocks stand on their own.
                      SequenceRow{"NamelessBlocks", "oon", "000", "012"}),
    zelkotest::RowName());

TEST(PacketRadioLink, OnlyADisconnectRequestEndsTheConnection)
{
    struct Row
    {
        char const* name;
        quint32 frameType;
        quint32 function;
        bool ends;
    };
    using R = PacketRadioRecord;
    Row const rows[] = {
        {"DISC", R::Unnumbered, R::DISC, true},  {"UA", R::Unnumbered, R::UA, false},
        {"SABM", R::Unnumbered, R::SABM, false}, {"I frame N(S) 3", R::Information, 3, false},
        {"SREJ", R::Supervisory, 3, false},      {"unknown type", 3, 3, false},
    };
    TransmissionSystemModel model;
    for (Row const& row : rows) {
        PacketRadioRecord record;
        record.frameType = row.frameType;
        record.word19 = row.function;
        QByteArray bytes = frame(TransmissionSystem::PacketRadio, record.record());
        ASSERT_TRUE(model.processData(bytes));
        EXPECT_EQ(model.getEndConnection(), row.ends) << row.name;
    }
}

} // namespace
