#include "transmissionsystemsamples.h"

#include <recordingwriter/recordingwriter.h>
#include <recordingwriter/transmissionsystemrecords.h>

using namespace zelkorecording;
namespace FrameType = zelkodatastreamconverter::FrameType;

namespace zelkosamples {

namespace {

constexpr quint64 Second = 1000000ull;

// 2024-03-15 UTC at the given time of day.
constexpr quint64 at(int hours, int minutes, int seconds)
{
    return (1710460800ull + quint64(hours) * 3600 + quint64(minutes) * 60 + quint64(seconds)) *
           Second;
}

// Writes frames of one system with a running clock.
class SystemWriter
{
public:
    SystemWriter(RecordingWriter& out, TransmissionSystem system, QByteArray blockName,
                 quint64 start, ByteOrder order = ByteOrder::Host)
        : m_out(out), m_system(system), m_name(std::move(blockName)), m_time(start), m_order(order)
    {
    }

    void write(QByteArray const& record, quint64 gap = 2 * Second)
    {
        m_out.writeFrame(FrameType::TransmissionSystem,
                         transmissionSystemPayload(m_system, m_time, m_name, record), m_order);
        m_time += gap;
    }
    void pause(quint64 microseconds) { m_time += microseconds; }
    void setSystem(TransmissionSystem system, QByteArray const& blockName)
    {
        m_system = system;
        m_name = blockName;
    }

private:
    RecordingWriter& m_out;
    TransmissionSystem m_system;
    QByteArray m_name;
    quint64 m_time;
    ByteOrder m_order;
};

// A regional paging channel at 1200 baud: numeric pages to on-call staff, alphanumeric
// alerts, a tone-only page (function 1) and one page received with a bad checksum.
void writePaging(RecordingWriter& out)
{
    SystemWriter channel(out, TransmissionSystem::POCSAG, "POCSAG", at(7, 12, 0));
    auto page = [&](quint32 address, quint32 function, QByteArray const& text, bool ok = true,
                    quint32 rate = 1200) {
        PocsagRecord record;
        record.address = address;
        record.function = function;
        record.message = text;
        record.crcOk = ok;
        record.rate = rate;
        channel.write(record.record(), 7 * Second);
    };
    page(1234567, 0, "0172 555 0134");
    page(1234567, 3, "BITTE RUECKRUF LEITSTELLE NORD");
    page(208004, 3, "ALARM: B3 WOHNHAUS, HAUPTSTR. 12, 2 PERSONEN VERMISST");
    page(208005, 1, QByteArray());
    page(1002112, 0, "112-U-0730");
    page(517632, 3, "WARTUNG AUFZUG 4 ERLEDIGT [TECHNIK]", false);
    page(1002112, 0, "0815 [3] 4711", true, 512);
    page(1234567, 3, "Schichtwechsel 19:00 - Besprechung Raum 2.14");
}

// An evening on a county's BOS channel: FMS status telegrams of fire brigade and ambulance
// vehicles, acknowledgements from the control centre, and the five-tone (ZVEI) alerting of
// volunteer fire brigades, with a utility's VDEW call in between.
void writeFmsZveiEvening(RecordingWriter& out)
{
    SystemWriter fms(out, TransmissionSystem::FmsBos, "FMS", at(19, 3, 10));
    auto status = [&](quint32 organisation, quint32 state, quint32 district,
                      QByteArray const& vehicle, quint32 code, bool toVehicle, bool stageOne,
                      quint32 shortInfo = 0) {
        FmsBosRecord record;
        record.organisation = organisation;
        record.state = state;
        record.district = district;
        record.vehicle = vehicle;
        record.status = code;
        record.toVehicle = toVehicle;
        record.stageOne = stageOne;
        record.shortInfo = shortInfo;
        fms.write(record.record(), 3 * Second);
    };
    auto tone = [&](quint32 mode, QByteArray const& call, bool ok = true) {
        ZveiRecord record;
        record.mode = mode;
        record.callNumber = call;
        record.crcOk = ok;
        record.manufacturer = 0x21;
        record.model = 3;
        fms.setSystem(TransmissionSystem::ZVEI, "ZVEI");
        fms.write(record.record(), 4 * Second);
        fms.setSystem(TransmissionSystem::FmsBos, "FMS");
    };
    status(6, 3, 0x42, "4401", 2, false, false);  // fire engine on the station
    status(13, 3, 0x42, "8312", 3, false, false); // ambulance takes a call
    status(13, 3, 0x42, "8312", 15, true, false); // automatic acknowledgement
    tone(1, "2154");                              // alerting of a brigade
    tone(1, "2155");
    status(6, 3, 0x42, "4401", 3, false, false);     // fire engine takes the call
    status(6, 3, 0x42, "4401", 10, true, true, 1);   // control: follow-up telegram
    status(6, 3, 0x42, "4402", 5, false, true);      // wish to speak
    status(9, 14, 0x12, "7101", 4, false, false);    // Mecklenburg-Vorpommern
    status(9, 15, 0x63, "7215", 8, false, false, 2); // Sachsen-Anhalt
    tone(15, "2199", false);                         // emergency call, bad checksum
    fms.pause(60 * Second);
    ZveiVdewRecord utility;
    utility.mode = 1;
    utility.status = 7;
    utility.manufacturer = 0x05;
    utility.model = 1;
    utility.callNumber = "41287305";
    fms.setSystem(TransmissionSystem::ZveiVdew, "VDEW");
    fms.write(utility.record(), 5 * Second);
    fms.setSystem(TransmissionSystem::FmsBos, "FMS");
    status(13, 3, 0x42, "8312", 8, false, false);   // ambulance free at hospital
    status(6, 3, 0x42, "4401", 1, false, false, 3); // fire engine free on radio
    status(13, 3, 0x42, "8312", 0, true, false);    // control polls the status
}

Ax25Address address(QByteArray const& call, quint32 ssid, bool ch = false)
{
    Ax25Address result;
    result.callSign = call;
    result.ssid = ssid;
    result.chBit = ch;
    return result;
}

// A connected AX.25 session on 144.800 MHz through one digipeater: connect, two information
// frames each way with acknowledgements, a beacon from a third station, and the disconnect
// request that ends the link. The receiver stored it in the other byte order.
void writeAx25Session(RecordingWriter& out)
{
    SystemWriter link(out, TransmissionSystem::PacketRadio, "AX.25", at(20, 41, 5),
                      ByteOrder::Swapped);
    auto frame = [&](bool fromA, quint32 type, quint32 w19, quint32 w20, quint32 w21,
                     QByteArray const& info = QByteArray(), quint32 pid = 0xF0) {
        PacketRadioRecord record;
        record.frameType = type;
        record.pid = pid;
        record.sender = fromA ? address("DL1ABC", 0) : address("DB0XYZ", 5);
        record.receiver = fromA ? address("DB0XYZ", 5) : address("DL1ABC", 0);
        record.relay1 = address("DB0RPT", 1, true);
        record.word19 = w19;
        record.word20 = w20;
        record.word21 = w21;
        record.information = info;
        link.write(record.record(), 1 * Second);
    };
    using R = PacketRadioRecord;
    frame(true, R::Unnumbered, R::SABM, 1, 0, QByteArray(), 0);
    frame(false, R::Unnumbered, R::UA, 1, 0, QByteArray(), 0);
    frame(false, R::Information, 0, 0, 0, "Welcome to DB0XYZ mailbox. 3 messages for DL1ABC.\r");
    frame(true, R::Supervisory, 0, 0, 0, QByteArray(), 0);
    frame(true, R::Information, 0, 1, 1, "R 1\r");
    frame(false, R::Information, 1, 1, 0,
          "Msg 1 from DK2QRZ: Meeting at the club station on Friday, 19:30.\r");
    PacketRadioRecord beacon;
    beacon.frameType = R::Unnumbered;
    beacon.word19 = R::UI;
    beacon.sender = address("DO7BCN", 9);
    beacon.receiver = address("APRS", 0);
    beacon.relay1 = address("WIDE1", 1, true);
    beacon.relay2 = address("WIDE2", 1);
    beacon.information = "!5230.00N/01322.00E-QRV 144.800";
    beacon.crcOk = false;
    link.write(beacon.record(), Second);
    frame(true, R::Supervisory, 2, 0, 0, QByteArray(), 0);
    frame(true, R::Unnumbered, R::DISC, 1, 0, QByteArray(), 0);
}

// ACARS traffic of one airliner: a position report, a three-block free-text downlink
// (blocks 1 and 2 end in ETB, block 3 in ETX) and the ground station's acknowledgement.
void writeAcars(RecordingWriter& out)
{
    SystemWriter channel(out, TransmissionSystem::ACARS, "ACARS", at(14, 22, 40));
    AcarsRecord block;
    block.aircraft = ".D-AIZQ";
    block.acknowledgement = "A";
    block.label = "H1";
    block.blockId = "1";
    block.message = "#DFB POS N5012.4 E00836.2 FL350 ETA EDDF 1512";
    channel.write(block.record(), 20 * Second);
    block.label = "H1";
    block.lastBlock = false;
    block.message = "#DFB/FREE TEXT/TO OPS: PAX 172 CREW 8. REQ WHEELCHAIR ASSIST FOR 2 PAX ";
    block.blockId = "2";
    channel.write(block.record(), Second);
    block.blockId = "3";
    block.message = "AT ARRIVAL GATE. CATERING SHORT BY 12 SPECIAL MEALS, PLS ADVISE ";
    channel.write(block.record(), Second);
    block.blockId = "4";
    block.lastBlock = true;
    block.message = "GROUND HANDLING. END OF MESSAGE";
    channel.write(block.record(), 4 * Second);
    AcarsRecord uplink;
    uplink.aircraft = ".D-AIZQ";
    uplink.acknowledgement = "4";
    uplink.label = "_d";
    uplink.blockId = "B";
    channel.write(uplink.record());
}

// One PACTOR-II ARQ link on 14.1075 MHz: a callsign burst, data bursts at rising speed
// levels with their control signals, a repeated burst after a bad one, and the QRT packet.
void writePactor(RecordingWriter& out)
{
    SystemWriter link(out, TransmissionSystem::PACTOR, "PACTOR", at(16, 5, 0));
    PactorRecord burst;
    burst.frequency = 14107500;
    burst.signalLevel = 18.5f;
    burst.snr = 12.25f;
    burst.burstLength = 0.96f;
    burst.symbolRate = 100.0f;
    burst.coding = 1;
    auto send = [&](quint32 type, quint32 level, QByteArray const& message, quint32 quality,
                    quint32 crc) {
        burst.burstType = type;
        burst.speedLevel = level;
        burst.message = message;
        burst.decodingQuality = quality;
        burst.crcValue = crc;
        ++burst.packetNumber;
        link.write(burst.record(), 1250000);
    };
    burst.contentType = 1;
    send(4, 1, "DL2PAC", 15, 0x3A71);
    send(1, 1, QByteArray(), 15, 0);
    send(2, 2, "DE DL2PAC QSP TO OE3XYZ PSE QSL", 14, 0x91C4);
    burst.speedLevelRequest = 1;
    send(2, 3, "WX VIENNA 12C RAIN, QNH 1008. ", 11, 0x0F2E);
    burst.speedLevelRequest = 0;
    burst.snr = 4.5f;
    send(2, 3, "WX VIENNA 12C RAIN, QNH 1008. ", 6, 0x0F2F);
    burst.snr = 11.0f;
    burst.contentType = 2;
    burst.coding = 0;
    send(2, 4, QByteArray("\x01\x02\xfe\xff\x00\x10", 6), 13, 0xBEEF);
    burst.contentType = 1;
    send(3, 4, QByteArray(), 15, 0);
    burst.qrtPacket = 1;
    send(2, 4, "73 QRT", 15, 0x5A5A);
}

// A CLOVER link on 7.0655 MHz: connection blocks, user data at two modulations, a
// control block, idle blocks.
void writeClover(RecordingWriter& out)
{
    SystemWriter link(out, TransmissionSystem::CLOVER, "CLOVER", at(21, 30, 0));
    CloverRecord block;
    block.frequency = 7065500;
    auto send = [&](quint32 type, quint32 header, quint32 modulation, quint32 efficiency,
                    QByteArray const& message) {
        block.blockType = type;
        block.header = header;
        block.modulation = modulation;
        block.codeEfficiency = efficiency;
        block.message = message;
        ++block.packetNumber;
        link.write(block.record(), 2 * Second);
    };
    send(2, 0x8001, 1, 1, "W1AW DE K3CLV");
    send(2, 0x8002, 1, 1, "K3CLV DE W1AW");
    send(0, 0x0103, 3, 2, "GA OM, RCVD YOUR FILE OK. SENDING LOG NOW.");
    send(0, 0x0104, 4, 3, "QSO LOG 21:30Z 7065.5 KHZ CLOVER 500 BPS");
    send(1, 0x4005, 2, 1, QByteArray());
    send(0, 0x0106, 6, 4, "END OF LOG");
    block.sideband = 2;
    send(3, 0x0007, 0, 0, QByteArray());
}

// A short stretch of a trunked network: control-channel idles, a voice call, a data call,
// a short data message.
void writeMpt1327(RecordingWriter& out)
{
    SystemWriter network(out, TransmissionSystem::MPT1327, "MPT1327", at(9, 15, 0));
    network.write(Mpt1327Record::controlChannel(4021, 231, 165387500));
    network.write(Mpt1327Record::call(0, "2010344", "2010121", 245, 165537500, 412));
    network.write(Mpt1327Record::call(1, "2010344", "2010900", 238, 165450000, 96));
    network.write(Mpt1327Record::shortData("UNIT 344 AT DEPOT"));
    network.write(Mpt1327Record::call(3, "2010001", "", 231, 165387500, 4));
    network.write(Mpt1327Record::controlChannel(4021, 231, 165387500));
}

// Two F7W channels, each split into two sub-channels: teletype traffic, an idle raw
// sub-channel (alternating bits in 7-bit elements), and a Morse identification.
void writeF7W(RecordingWriter& out)
{
    SystemWriter emission(out, TransmissionSystem::F7W, "F7W", at(3, 40, 0));
    F7WSubChannel raw;
    raw.number = 2;
    raw.name = "B2";
    raw.payloadType = F7WSubChannel::Raw;
    raw.elementCount = 12;
    raw.bitsPerElement = 7;
    raw.data = QByteArray("\x55\x55\x55\x55\x55\x55\x55\x55\x55\x55\x55", 11);
    F7WChannel first{1, 0, {F7WSubChannel::text(1, "A1", "ZCZC NR 0117 RYRYRYRY"), raw}};
    F7WChannel second{2,
                      4,
                      {F7WSubChannel::text(1, "B1 ID", "VVV DE XYZ9 XYZ9", F7WSubChannel::Morse),
                       F7WSubChannel::text(2, "B2 TRAFFIC", "QTC 3 GROUPS 5 FOLLOW")}};
    emission.write(F7WRecord{{first, second}}.record(), 10 * Second);
    first.subChannels[0] = F7WSubChannel::text(1, "A1", "BT 12345 67890 11121 BT");
    first.rateCode = 99;
    emission.write(F7WRecord{{first}}.record());
}

// The text systems and ATIS: plain and UTF-16 text frames, two ATIS identifications on the
// Rhine, the receiver's keep-alive frames (code 13) in between and one frame of a system
// the converter does not know (code 14).
void writeTextAndAtis(RecordingWriter& out)
{
    SystemWriter frames(out, TransmissionSystem::ASCII, "TEXT", at(11, 0, 0));
    frames.write(AsciiRecord{"CQ CQ CQ DE DL0ZEL DL0ZEL PSE K\r\n"}.record());
    frames.setSystem(TransmissionSystem::Ignored, "");
    frames.write(QByteArray(8, '\0'));
    frames.setSystem(TransmissionSystem::Unicode, "UNICODE");
    frames.write(UnicodeRecord{QString::fromUtf8("Καλησπέρα — Добрый вечер")}.record());
    frames.setSystem(TransmissionSystem::ATIS, "ATIS");
    frames.write(AtisRecord{211, "123456"}.record(), 30 * Second);
    frames.write(AtisRecord{244, "690213"}.record());
    frames.setSystem(TransmissionSystem::Ignored, "");
    frames.write(QByteArray(8, '\0'));
    frames.setSystem(TransmissionSystem(14), "SYSTEM 14");
    frames.write(QByteArray(16, '\x11'));
    frames.setSystem(TransmissionSystem::ASCII, "TEXT");
    frames.write(AsciiRecord{"QRT"}.record());
}

} // namespace

std::vector<TransmissionSystemSample> transmissionSystemSamples()
{
    return {
        {QStringLiteral("pocsag-paging.zdr"), writePaging},
        {QStringLiteral("fms-zvei-evening.zdr"), writeFmsZveiEvening},
        {QStringLiteral("ax25-session.zdr"), writeAx25Session},
        {QStringLiteral("acars-multiblock.zdr"), writeAcars},
        {QStringLiteral("pactor-exchange.zdr"), writePactor},
        {QStringLiteral("clover-exchange.zdr"), writeClover},
        {QStringLiteral("mpt1327-trunking.zdr"), writeMpt1327},
        {QStringLiteral("f7w-subchannels.zdr"), writeF7W},
        {QStringLiteral("text-and-atis.zdr"), writeTextAndAtis},
    };
}

} // namespace zelkosamples
