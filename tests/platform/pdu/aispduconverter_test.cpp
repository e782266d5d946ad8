// The AIS decoder: messages written field by field as ITU-R M.1371 lays them out, decoded
// and named through the PDU library's own interfaces, as the transmission-system model reads
// them.

#include <QStringList>
#include <gtest/gtest.h>
#include <pdu/aisbitreader.h>
#include <pdu/aispduconverter.h>
#include <pdu/cpdu_converter.h>
#include <pdu/pdunaming.h>
#include <recordingwriter/aisencoder.h>
#include <recordingwriter/recordingwriter.h>
#include <support/qstringprinter.h>
#include <support/rowname.h>

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

QByteArray frameOf(AisBitWriter const& message, quint32 checkSumState = 1)
{
    quint64 const time = 1715934600250000ull; // 2024-05-17 08:30:00.250 UTC
    return RecordingWriter::frameBytes(
        zelkodatastreamconverter::FrameType::TransmissionSystem,
        AisEncoder::framePayload(time, message.bytes(), message.bitCount(), 'B', checkSumState));
}

AisVessel hamburgShip()
{
    AisVessel vessel;
    vessel.mmsi = 211234567;
    vessel.latitude = 53.53625;
    vessel.longitude = 9.0 + 58.0 / 60.0;
    vessel.speedKnots = 12.3;
    vessel.courseDegrees = 123.4;
    vessel.heading = 120;
    vessel.navigationalStatus = 0;
    vessel.second = 30;
    vessel.callSign = "DABC";
    vessel.name = "MS ZELKO";
    vessel.destination = "HAMBURG";
    vessel.shipType = 70;
    vessel.imo = 9123456;
    vessel.toBow = 100;
    vessel.toStern = 20;
    vessel.toPort = 8;
    vessel.toStarboard = 12;
    vessel.etaMonth = 5;
    vessel.etaDay = 17;
    vessel.etaHour = 8;
    vessel.etaMinute = 30;
    vessel.draught = 7.5;
    return vessel;
}

AisVessel southWestShip()
{
    AisVessel vessel;
    vessel.mmsi = 503000001;
    vessel.latitude = -(33.0 + 51.0 / 60.0);
    vessel.longitude = -(151.0 + 12.0 / 60.0);
    vessel.speedKnots = 102.2;
    vessel.courseDegrees = 0;
    vessel.heading = 359;
    vessel.navigationalStatus = 14;
    vessel.second = 62;
    vessel.rateOfTurn = 127;
    return vessel;
}

AisVessel withRateOfTurn(int indicator)
{
    AisVessel vessel = hamburgShip();
    vessel.rateOfTurn = indicator;
    return vessel;
}

// A message of the given type whose every bit after the header is set: a spare field of the
// wrong width shifts a zero into the last field, the communication state.
AisBitWriter allOnesAfterHeader(unsigned type, int bits)
{
    AisBitWriter message;
    message.put(type, 6).put(0, 2).put(1, 30);
    for (int left = bits - 38; left > 0; left -= 16) {
        message.put(0xFFFFu >> (16 - std::min(left, 16)), std::min(left, 16));
    }
    return message;
}

struct MessageRow
{
    char const* name;
    AisBitWriter message;
    char const* blockName;
    QStringList expected; ///< fields that must be among the decoded ones, in this order
};

using AisMessages = ::testing::TestWithParam<MessageRow>;

TEST_P(AisMessages, DecodeToNamedLabelledFields)
{
    std::vector<Decoded> const pdus = decodeFrame(frameOf(GetParam().message));
    ASSERT_EQ(pdus.size(), 1u);
    EXPECT_EQ(pdus[0].name, QString::fromUtf8(GetParam().blockName));
    int from = 0;
    for (QString const& field : GetParam().expected) {
        int const at = pdus[0].fields.indexOf(field, from);
        EXPECT_GE(at, 0) << field.toStdString() << "\nin:\n"
                         << pdus[0].fields.join('\n').toStdString();
        from = at < 0 ? from : at + 1;
    }
}

QStringList const classAHamburg = {"Message Type=1",
                                   "Repeat Indicator=0",
                                   "MMSI=211234567",
                                   "Navigational Status=under way using engine",
                                   u8"Rate of Turn (\u00B0/min)=not available",
                                   "Speed over Ground (kn)=12.3",
                                   "Position Accuracy=high (10 m or less)",
                                   u8"Position=N 53\u00B032'10.5'' E 9\u00B058'0''",
                                   u8"Course over Ground (\u00B0)=123.4",
                                   u8"True Heading (\u00B0)=120",
                                   "Time Stamp (s)=30",
                                   "Special Manoeuvre=not available",
                                   "RAIM=false",
                                   "Communication State=0"};

INSTANTIATE_TEST_SUITE_P(
    Types, AisMessages,
    ::testing::Values(
        MessageRow{"type1_every_field", AisEncoder::positionReportA(hamburgShip()),
                   "AIS Position Report Class A", classAHamburg},
        MessageRow{"type3_south_west_and_limits",
                   AisEncoder::positionReportA(southWestShip(), 3),
                   "AIS Position Report Class A (Response to Interrogation)",
                   {"Navigational Status=AIS-SART, MOB-AIS or EPIRB-AIS active",
                    u8"Rate of Turn (\u00B0/min)=turning right at more than 5\u00B0 per 30 s",
                    "Speed over Ground (kn)=102.2 or more",
                    u8"Position=S 33\u00B051'0'' W 151\u00B012'0''",
                    u8"Course over Ground (\u00B0)=0", u8"True Heading (\u00B0)=359",
                    "Time Stamp (s)=dead reckoning"}},
        MessageRow{"type1_nothing_available",
                   AisEncoder::positionReportA(AisVessel{}),
                   "AIS Position Report Class A",
                   {"MMSI=0", "Navigational Status=not defined",
                    "Speed over Ground (kn)=not available", "Position=not available",
                    u8"Course over Ground (\u00B0)=not available",
                    u8"True Heading (\u00B0)=not available", "Time Stamp (s)=not available"}},
        MessageRow{"type1_rate_left",
                   AisEncoder::positionReportA(withRateOfTurn(-127)),
                   "AIS Position Report Class A",
                   {u8"Rate of Turn (\u00B0/min)=turning left at more than 5\u00B0 per 30 s"}},
        MessageRow{"type1_rate_64",
                   AisEncoder::positionReportA(withRateOfTurn(64)),
                   "AIS Position Report Class A",
                   {u8"Rate of Turn (\u00B0/min)=182.8"}},
        MessageRow{"type1_rate_minus_1",
                   AisEncoder::positionReportA(withRateOfTurn(-1)),
                   "AIS Position Report Class A",
                   {u8"Rate of Turn (\u00B0/min)=0"}},
        MessageRow{"type4_base_station",
                   AisEncoder::baseStation(2190047, 2024, 5, 17, 8, 30, 0, 55.5, 12.25),
                   "AIS Base Station Report",
                   {"MMSI=2190047", "UTC Date and Time=2024-05-17 08:30:00 UTC",
                    u8"Position=N 55\u00B030'0'' E 12\u00B015'0''",
                    "Position Fixing Device=surveyed"}},
        MessageRow{"type4_earliest_date",
                   AisEncoder::baseStation(2190047, 1, 12, 1, 0, 0, 0, 55.5, 12.25),
                   "AIS Base Station Report",
                   {"UTC Date and Time=0001-12-01 00:00:00 UTC"}},
        MessageRow{"type4_latest_times",
                   AisEncoder::baseStation(2190047, 2024, 1, 31, 23, 59, 59, 55.5, 12.25),
                   "AIS Base Station Report",
                   {"UTC Date and Time=2024-01-31 23:59:59 UTC"}},
        MessageRow{"type1_all_ones",
                   allOnesAfterHeader(1, 168),
                   "AIS Position Report Class A",
                   {"RAIM=true", "Communication State=524287"}},
        MessageRow{"type4_all_ones",
                   allOnesAfterHeader(4, 168),
                   "AIS Base Station Report",
                   {"RAIM=true", "Communication State=524287"}},
        MessageRow{"type9_all_ones",
                   allOnesAfterHeader(9, 168),
                   "AIS Standard SAR Aircraft Position Report",
                   {"Communication State=524287"}},
        MessageRow{"type11_as_base_station",
                   allOnesAfterHeader(11, 168),
                   "AIS UTC and Date Response",
                   {"Communication State=524287"}},
        MessageRow{"type4_missing_date",
                   AisEncoder::baseStation(2190047, 0, 0, 0, 24, 60, 60, 55.5, 12.25),
                   "AIS Base Station Report",
                   {"UTC Date and Time=????-??-?? ??:??:?? UTC"}},
        MessageRow{"type5_static_and_voyage",
                   AisEncoder::staticAndVoyage(hamburgShip()),
                   "AIS Static and Voyage Related Data",
                   {"MMSI=211234567", "IMO Number=9123456", "Call Sign=DABC", "Name=MS ZELKO",
                    "Ship and Cargo Type=cargo, all ships of this type", "Dimension to Bow (m)=100",
                    "Dimension to Stern (m)=20", "Dimension to Port (m)=8",
                    "Dimension to Starboard (m)=12", "Position Fixing Device=GPS",
                    "ETA=05-17 08:30 UTC", "Maximum Draught (m)=7.5", "Destination=HAMBURG"}},
        MessageRow{"type5_nothing_available",
                   AisEncoder::staticAndVoyage(AisVessel{}),
                   "AIS Static and Voyage Related Data",
                   {"IMO Number=not available", "Call Sign=not available", "Name=not available",
                    "Ship and Cargo Type=not available", "ETA=not available",
                    "Maximum Draught (m)=not available", "Destination=not available"}},
        MessageRow{"type5_eta_at_its_limits",
                   AisEncoder::staticAndVoyage(
                       [] {
                           AisVessel v = hamburgShip();
                           v.etaMonth = 12;
                           v.etaDay = 31;
                           v.etaHour = 23;
                           v.etaMinute = 59;
                           return v;
                       }()),
                   "AIS Static and Voyage Related Data",
                   {"ETA=12-31 23:59 UTC"}},
        MessageRow{"type5_eta_one_past",
                   AisEncoder::staticAndVoyage(
                       [] {
                           AisVessel v = hamburgShip();
                           v.etaMonth = 13;
                           v.etaHour = 24;
                           v.etaMinute = 60;
                           return v;
                       }()),
                   "AIS Static and Voyage Related Data",
                   {"ETA=??-17 ??:?? UTC"}},
        MessageRow{"type5_eta_without_month",
                   AisEncoder::staticAndVoyage(
                       [] {
                           AisVessel v = hamburgShip();
                           v.etaMonth = 0;
                           return v;
                       }()),
                   "AIS Static and Voyage Related Data",
                   {"ETA=??-17 08:30 UTC"}},
        MessageRow{"type9_sar_aircraft",
                   AisEncoder::sarAircraft(
                       [] {
                           AisVessel plane = hamburgShip();
                           plane.altitude = 4094;
                           plane.speedKnots = 140;
                           return plane;
                       }()),
                   "AIS Standard SAR Aircraft Position Report",
                   {"Altitude (m)=4094 or more", "Speed over Ground (kn)=140",
                    u8"Position=N 53\u00B032'10.5'' E 9\u00B058'0''"}},
        MessageRow{"type14_safety_text",
                   AisEncoder::safetyBroadcast(2655001, "STORM WARNING GERMAN BIGHT"),
                   "AIS Safety Related Broadcast Message",
                   {"MMSI=2655001", "Text=STORM WARNING GERMAN BIGHT"}},
        MessageRow{"type18_class_b",
                   AisEncoder::positionReportB(hamburgShip()),
                   "AIS Standard Class B CS Position Report",
                   {"Speed over Ground (kn)=12.3", u8"Position=N 53\u00B032'10.5'' E 9\u00B058'0''",
                    "Class B CS Unit=true"}},
        MessageRow{"type19_extended_class_b",
                   AisEncoder::extendedClassB(hamburgShip()),
                   "AIS Extended Class B Position Report",
                   {"Speed over Ground (kn)=12.3", "Name=MS ZELKO",
                    "Ship and Cargo Type=cargo, all ships of this type",
                    "Dimension to Bow (m)=100"}},
        MessageRow{"type21_aid_with_name_extension",
                   AisEncoder::aidToNavigation(
                       [] {
                           AisVessel aid = hamburgShip();
                           aid.name = "ELBE APPROACH CARDINAL NORTH";
                           return aid;
                       }(),
                       20),
                   "AIS Aid-to-Navigation Report",
                   {"Aid Type=cardinal mark N", "Name=ELBE APPROACH CARDIN",
                    "Position Fixing Device=surveyed", "Virtual Aid=true",
                    "Name Extension=AL NORTH"}},
        MessageRow{"type24_part_a",
                   AisEncoder::staticDataReport(hamburgShip(), 0),
                   "AIS Static Data Report Part A",
                   {"Part Number=0", "Name=MS ZELKO"}},
        MessageRow{"type24_part_b",
                   AisEncoder::staticDataReport(hamburgShip(), 1),
                   "AIS Static Data Report Part B",
                   {"Part Number=1", "Ship and Cargo Type=cargo, all ships of this type",
                    "Vendor ID=ZLK", "Unit Model Code=1", "Serial Number=4711", "Call Sign=DABC",
                    "Dimension to Starboard (m)=12"}},
        MessageRow{"type27_long_range",
                   AisEncoder::longRange(hamburgShip()),
                   "AIS Long-Range Position Report",
                   {"Navigational Status=under way using engine",
                    u8"Position=N 53\u00B032'12'' E 9\u00B058'0''", "Speed over Ground (kn)=12",
                    u8"Course over Ground (\u00B0)=123", "Position Latency=less than 5 s"}},
        MessageRow{"type8_binary_payload",
                   AisBitWriter().put(8, 6).put(0, 2).put(1, 30).put(0xABCD, 16),
                   "AIS Binary Broadcast Message",
                   {"MMSI=1", "Data=abcd/16"}},
        MessageRow{"type24_unknown_part",
                   AisBitWriter().put(24, 6).put(0, 2).put(9, 30).put(2, 2).put(1, 3),
                   "AIS Reserved Message",
                   {"Message Type=24", "MMSI=9", "Data=88/5"}},
        MessageRow{"reserved_type_40",
                   AisBitWriter().put(40, 6).put(0, 2).put(7, 30).put(5, 3),
                   "AIS Reserved Message",
                   {"Message Type=40", "MMSI=7", "Data=a0/3"}}),
    zelkotest::RowName());

TEST(AisFrames, RecordBoundsAndChecksumState)
{
    AisBitWriter const message = AisEncoder::positionReportA(hamburgShip());
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
    EXPECT_EQ(pdus[0].fields.size(), classAHamburg.size());
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
