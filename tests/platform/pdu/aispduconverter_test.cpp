// The AIS decoder: messages written field by field as ITU-R M.1371 lays them out, decoded
// and named through the PDU library's own interfaces, as the transmission-system model reads
// them.

#include <QStringList>
#include <gtest/gtest.h>
#include <map>
#include <pdu/aisbitreader.h>
#include <pdu/aispduconverter.h>
#include <pdu/cpdu_converter.h>
#include <pdu/pdunaming.h>
#include <recordingwriter/aisencoder.h>
#include <recordingwriter/aivdmreader.h>
#include <recordingwriter/recordingwriter.h>
#include <support/golden.h>
#include <support/qstringprinter.h>

using namespace zelkorecording;

namespace {

QString fromWide(std::wstring const& text)
{
    return QString::fromStdWString(text);
}

/// A field as "label=value", its value rendered the simple way (numbers in decimal).
QString render(QString const& label, CPDU_FieldContainer& field)
{
    if (field.getDataTranslation() != 0) {
        return label + '=' +
               fromWide(PduNaming::PDUDataTranslator::dataIdToString(field.getDataTranslation()));
    }
    unsigned bits = 0;
    unsigned count = 0;
    unsigned* const data = field.getData(bits, count);
    if (field.isExpandable() || !data) {
        return label + QStringLiteral("=<none>");
    }
    switch (field.getDataRepresentation()) {
    case PDU_REPRESENTATION_UNSIGNED:
        return label + '=' + QString::number(*data);
    case PDU_REPRESENTATION_SIGNED:
        return label + '=' + QString::number(int(*data));
    case PDU_REPRESENTATION_FLOAT:
        return label + '=' + QString::asprintf("%g", double(*reinterpret_cast<float const*>(data)));
    case PDU_REPRESENTATION_BOOL:
        return label + '=' + ((*data & 1u) ? "true" : "false");
    case PDU_REPRESENTATION_STRING:
        return label + '=' + QString::fromLatin1(reinterpret_cast<char const*>(data), int(count));
    case PDU_REPRESENTATION_POSITION:
    case PDU_REPRESENTATION_DATETIME:
        return label + '=' +
               fromWide((*reinterpret_cast<CPDU_DisplayObject const* const*>(data))->toWString());
    default:
        break;
    }
    QByteArray const bytes(reinterpret_cast<char const*>(data), int((count + 7) / 8));
    return label + '=' + QString::fromLatin1(bytes.toHex()) + '/' + QString::number(count);
}

struct Decoded
{
    QString name;
    QStringList fields;
    ePDU_CHECKSUM_STATE checkSum = PDU_CHECKSUM_NONE;
    unsigned long long time = 0;
};

/// Decodes a frame through the factory, as the model does, naming blocks and fields.
std::vector<Decoded> decodeFrame(QByteArray const& frame)
{
    CPDU_Converter* const converter =
        CPDU_Converter_Factory::getInstance()->getPDU_ConverterByCOMMSYSTYPE(COMMSYS_AIS);
    std::vector<CPDU*> pdus = converter->decodeFrame(frame);
    std::vector<Decoded> result;
    for (CPDU* pdu : pdus) {
        Decoded decoded{fromWide(PduNaming::PDUIdTranslator::pduIdToString(pdu->getPDU_ID())),
                        {},
                        pdu->getCheckSumState(),
                        pdu->getTimeStamp()};
        std::vector<std::wstring> const headers =
            PduNaming::PDUFieldNameProvider::getHeaders(pdu->getPDU_ID());
        for (std::size_t i = 0; i < pdu->getFields().size(); ++i) {
            QString const label = i < headers.size() ? fromWide(headers[i]) : QStringLiteral("?");
            decoded.fields << render(label, *pdu->getFields()[i]);
        }
        result.push_back(decoded);
    }
    deletePDUs(pdus);
    return result;
}

QByteArray frameOf(QByteArray const& bits, unsigned bitCount, quint32 checkSumState = 1)
{
    quint64 const time = 1715934600250000ull; // 2024-05-17 08:30:00.250 UTC
    return RecordingWriter::frameBytes(
        zelkodatastreamconverter::FrameType::TransmissionSystem,
        AisEncoder::framePayload(time, bits, bitCount, 'B', checkSumState));
}

QByteArray frameOf(AivdmMessage const& message, quint32 checkSumState = 1)
{
    return frameOf(message.bits, message.bitCount, checkSumState);
}

QByteArray frameOf(AisBitWriter const& message)
{
    return frameOf(message.bytes(), message.bitCount());
}

/// The messages of tests/data/ais/messages.nmea by the name of the comment before them.
std::map<std::string, AivdmMessage> const& testMessages()
{
    static std::map<std::string, AivdmMessage> const messages = [] {
        std::map<std::string, AivdmMessage> result;
        AivdmReader reader;
        std::string name;
        for (QByteArray const& line :
             zelkotest::readFile(ZELKO_GOLDEN_DIR "/ais/messages.nmea").split('\n')) {
            if (line.startsWith("# ") && line.contains(':')) {
                name = line.mid(2, line.indexOf(':') - 2).toStdString();
            } else if (auto message = reader.readLine(line)) {
                result[name] = *message;
            }
        }
        return result;
    }();
    return messages;
}

std::vector<std::string> testMessageNames()
{
    std::vector<std::string> names;
    for (auto const& entry : testMessages()) {
        names.push_back(entry.first);
    }
    return names;
}

using AisMessages = ::testing::TestWithParam<std::string>;

// Every field of every message, named and labelled, against decoded/<name>.txt.
TEST_P(AisMessages, DecodeToNamedLabelledFields)
{
    std::vector<Decoded> const pdus = decodeFrame(frameOf(testMessages().at(GetParam())));
    ASSERT_EQ(pdus.size(), 1u);
    QString const dump = pdus[0].name + '\n' + pdus[0].fields.join('\n') + '\n';
    QString const diff = zelkotest::compareWithGolden(
        dump.toUtf8(),
        QStringLiteral("ais/decoded/%1.txt").arg(QString::fromStdString(GetParam())));
    EXPECT_TRUE(diff.isEmpty()) << diff.toStdString();
}

INSTANTIATE_TEST_SUITE_P(Types, AisMessages, ::testing::ValuesIn(testMessageNames()),
                         [](auto const& info) { return info.param; });

TEST(AisFrames, RecordBoundsAndChecksumState)
{
    AivdmMessage const& message = testMessages().at("type1_every_field");
    // Time and checksum state come from the frame.
    std::vector<Decoded> pdus = decodeFrame(frameOf(message, 2));
    ASSERT_EQ(pdus.size(), 1u);
    EXPECT_EQ(pdus[0].time, 1715934600250000ull);
    EXPECT_EQ(pdus[0].checkSum, PDU_CHECKSUM_WRONG);
    EXPECT_EQ(decodeFrame(frameOf(message, 7))[0].checkSum, PDU_CHECKSUM_NONE);

    // Another communication system's record, or a frame cut before the record: nothing.
    QByteArray other = frameOf(message);
    other[52] = 2;
    EXPECT_TRUE(decodeFrame(other).empty());
    EXPECT_TRUE(decodeFrame(frameOf(message).left(67)).empty());
    // Fewer than the six bits of a message type: no message.
    EXPECT_TRUE(decodeFrame(frameOf(AisBitWriter().put(1, 5))).empty());
    EXPECT_EQ(decodeFrame(frameOf(AisBitWriter().put(1, 6))).size(), 1u);

    // A frame cut inside the message: the fields past the cut read as zero, none is lost.
    QByteArray const cut = frameOf(message).left(68 + 8); // 64 of 168 bits
    pdus = decodeFrame(cut);
    ASSERT_EQ(pdus.size(), 1u);
    EXPECT_EQ(pdus[0].fields.size(), 14);
    EXPECT_TRUE(pdus[0].fields.contains("Speed over Ground (kn)=12.3"));
    EXPECT_TRUE(pdus[0].fields.contains(u8"True Heading (\u00B0)=0"));

    // A claimed length beyond five slots is cut to them.
    QByteArray huge = frameOf(message);
    quint32 const claimed = 0xFFFFFFFFu;
    huge.replace(64, 4, QByteArray(reinterpret_cast<char const*>(&claimed), 4));
    EXPECT_EQ(decodeFrame(huge).size(), 1u);
}

TEST(AisNaming, UnknownIdsAndTheLabelsOfEveryLayout)
{
    EXPECT_TRUE(PduNaming::PDUIdTranslator::pduIdToString(0x20000).empty());
    EXPECT_TRUE(PduNaming::PDUFieldNameProvider::getHeaders(5).empty());
    EXPECT_TRUE(PduNaming::PDUDataTranslator::dataIdToString(0xFFFF).empty());
    EXPECT_EQ(CPDU_Converter_Factory::getInstance()->getPDU_ConverterByCOMMSYSTYPE(2), nullptr);
    // Ship types by decade and digit, and the reserved ranges.
    auto ship = [](unsigned type) {
        return fromWide(PduNaming::PDUDataTranslator::dataIdToString(0x200 + type));
    };
    EXPECT_EQ(ship(84), "tanker, carrying DG, HS or MP, hazard category D");
    EXPECT_EQ(ship(99), "other type, no additional information");
    EXPECT_EQ(ship(150), "reserved for regional use");
    EXPECT_EQ(ship(255), "reserved for future use");
    // The ends of the position-fixing and aid-type ranges.
    auto text = [](unsigned id) {
        return fromWide(PduNaming::PDUDataTranslator::dataIdToString(id));
    };
    EXPECT_EQ(text(0x300), "undefined");
    EXPECT_EQ(text(0x309), "not used");
    EXPECT_EQ(text(0x30E), "not used");
    EXPECT_EQ(text(0x500), "not specified");
    EXPECT_EQ(text(0x51F), "light vessel, LANBY or rig");
    EXPECT_EQ(text(0x520), "");
}

TEST(AisPositions, SecondsKeepUpToThreeDecimals)
{
    // One ten-thousandth of a minute is 6 ms of arc.
    EXPECT_EQ(fromWide(CPDU_Position(1, -1).toWString()),
              u8"N 0\u00B00'0.006'' W 0\u00B00'0.006''");
    EXPECT_EQ(fromWide(CPDU_Position(0, 0).toWString()), u8"N 0\u00B00'0'' E 0\u00B00'0''");
    EXPECT_EQ(fromWide(CPDU_Position(54000000, 108000000).toWString()),
              u8"N 90\u00B00'0'' E 180\u00B00'0''");
    EXPECT_EQ(fromWide(CPDU_Position(599999, 5999).toWString()),
              u8"N 0\u00B059'59.994'' E 0\u00B00'35.994''");
}

} // namespace

TEST(AisBits, OneBitSignAndAWholeByteRest)
{
    ais::AisBitReader reader(QByteArray::fromHex("ffff"), 16);
    EXPECT_EQ(reader.takeSigned(1), -1);
    EXPECT_EQ(reader.take(7), 127u);
    unsigned bits = 0;
    EXPECT_EQ(reader.takeRest(bits), QByteArray::fromHex("ff"));
    EXPECT_EQ(bits, 8u);
}
