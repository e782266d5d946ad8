#include "aissamples.h"

#include <QDateTime>
#include <QFile>
#include <cmath>
#include <massdatamanagement/zelkodatastreamconverter/frameformat.h>
#include <recordingwriter/aisencoder.h>
#include <recordingwriter/aivdmreader.h>
#include <recordingwriter/recordingwriter.h>

using namespace zelkorecording;

namespace zelkosamples {

namespace {

quint64 const LogStart = 1715934600; // 2024-05-17 08:30:00 UTC

struct Ship
{
    AisVessel vessel;
    double northKnots;
    double eastKnots;
    bool classB;
};

AisVessel vessel(quint32 mmsi, double latitude, double longitude, QByteArray callSign,
                 QByteArray name, QByteArray destination, int shipType)
{
    AisVessel v;
    v.mmsi = mmsi;
    v.latitude = latitude;
    v.longitude = longitude;
    v.callSign = callSign;
    v.name = name;
    v.destination = destination;
    v.shipType = shipType;
    v.toBow = 150;
    v.toStern = 30;
    v.toPort = 12;
    v.toStarboard = 14;
    v.etaMonth = 5;
    v.etaDay = 18;
    v.etaHour = 6;
    v.etaMinute = 0;
    v.draught = 9.4;
    v.navigationalStatus = 0;
    v.heading = 0;
    return v;
}

std::vector<Ship> fleet()
{
    return {
        {vessel(211234567, 53.8700, 8.7000, "DABC", "ELBE TRADER", "HAMBURG", 70), 0.0, 14.0,
         false},
        {vessel(244650123, 53.9200, 8.2000, "PDXY", "NOORDZEE", "ROTTERDAM", 80), -3.0, -12.0,
         false},
        {vessel(636019825, 53.8300, 8.9500, "D5QX7", "ATLANTIC STAR", "HAMBURG", 71), 2.0, 10.5,
         false},
        {vessel(503000001, 53.9000, 8.5000, "VJN4321", "SOUTHERN CROSS", "SYDNEY", 60), 0.0, -16.0,
         false},
        {vessel(211998877, 53.8800, 8.6500, "DK1234", "SEESCHWALBE", "", 37), 1.0, 5.0, true},
    };
}

QByteArray tagged(quint64 seconds, QString const& sentence)
{
    return AisEncoder::tagBlock("s:elbe,c:" + QByteArray::number(seconds)) + sentence.toLatin1() +
           '\n';
}

void append(QByteArray& log, quint64 seconds, AisBitWriter const& message, char channel,
            int& sequence)
{
    QStringList const sentences = AisEncoder::sentences(message, channel, sequence);
    if (sentences.size() > 1) {
        sequence = (sequence + 1) % 10;
    }
    for (QString const& sentence : sentences) {
        log += tagged(seconds, sentence);
    }
}

QByteArray makeLog()
{
    QByteArray log;
    std::vector<Ship> ships = fleet();
    int sequence = 0;
    for (int second = 0; second < 600; second += 10) {
        quint64 const now = LogStart + quint64(second);
        char const channel = (second / 10) % 2 ? 'B' : 'A';
        for (Ship& ship : ships) {
            AisVessel& v = ship.vessel;
            // Knots to degrees in ten seconds: a minute of latitude is a nautical mile.
            v.latitude += ship.northKnots * 10.0 / 3600.0 / 60.0;
            v.longitude += ship.eastKnots * 10.0 / 3600.0 / 60.0 / 0.59;
            v.speedKnots =
                std::sqrt(ship.northKnots * ship.northKnots + ship.eastKnots * ship.eastKnots);
            v.courseDegrees = std::fmod(
                std::atan2(ship.eastKnots, ship.northKnots) * 180.0 / M_PI + 360.0, 360.0);
            v.heading = int(v.courseDegrees);
            v.second = second % 60;
            append(log, now,
                   ship.classB ? AisEncoder::positionReportB(v) : AisEncoder::positionReportA(v),
                   channel, sequence);
            if (second % 300 == 0) {
                if (ship.classB) {
                    append(log, now, AisEncoder::staticDataReport(v, 0), channel, sequence);
                    append(log, now, AisEncoder::staticDataReport(v, 1), channel, sequence);
                } else {
                    append(log, now, AisEncoder::staticAndVoyage(v), channel, sequence);
                }
            }
        }
        if (second % 60 == 0) {
            QDateTime const time = QDateTime::fromSecsSinceEpoch(qint64(now), Qt::UTC);
            append(log, now,
                   AisEncoder::baseStation(2111240, time.date().year(), time.date().month(),
                                           time.date().day(), time.time().hour(),
                                           time.time().minute(), time.time().second(), 53.8742,
                                           8.7098),
                   channel, sequence);
        }
        if (second == 120) {
            AisVessel aid;
            aid.mmsi = 992111001;
            aid.name = "ELBE 1 LIGHT VESSEL NORTH";
            aid.latitude = 54.0000;
            aid.longitude = 8.1100;
            aid.second = 0;
            append(log, now, AisEncoder::aidToNavigation(aid, 31), channel, sequence);
            append(
                log, now,
                AisEncoder::safetyBroadcast(2111240, "SECURITE ELBE FAIRWAY BUOY 5 OFF POSITION"),
                channel, sequence);
        }
        if (second == 300) {
            AisVessel plane;
            plane.mmsi = 111211501;
            plane.latitude = 53.95;
            plane.longitude = 8.40;
            plane.altitude = 300;
            plane.speedKnots = 120;
            plane.courseDegrees = 270;
            plane.second = 0;
            append(log, now, AisEncoder::sarAircraft(plane), channel, sequence);
            AisVessel far = ships[3].vessel;
            append(log, now, AisEncoder::longRange(far), channel, sequence);
        }
    }
    // What a real log also holds: another talker's sentence, a line hit by noise (its
    // checksum no longer matches) and the first half of a message whose second half was lost.
    log += "$GPGGA,083000,5352.45,N,00842.59,E,1,08,0.9,5.0,M,46.9,M,,*4D\n";
    QByteArray noisy =
        tagged(LogStart + 600,
               AisEncoder::sentences(AisEncoder::positionReportA(ships[0].vessel), 'A', -1)[0]);
    noisy[noisy.size() - 10] = noisy[noisy.size() - 10] == '0' ? '1' : '0';
    log += noisy;
    log += tagged(LogStart + 600,
                  AisEncoder::sentences(AisEncoder::staticAndVoyage(ships[1].vessel), 'B', 9)[0]);
    return log;
}

} // namespace

bool writeAisSamples(QDir const& directory)
{
    QByteArray const log = makeLog();
    QFile nmea(directory.filePath(QStringLiteral("ais-elbe.nmea")));
    if (!nmea.open(QIODevice::WriteOnly) || nmea.write(log) != log.size()) {
        return false;
    }
    QFile recording(directory.filePath(QStringLiteral("ais-elbe.zdr")));
    if (!recording.open(QIODevice::WriteOnly)) {
        return false;
    }
    RecordingWriter writer(&recording);
    AivdmReader reader;
    for (QByteArray const& line : log.split('\n')) {
        if (auto message = reader.readLine(line)) {
            if (!writer.writeFrame(zelkodatastreamconverter::FrameType::TransmissionSystem,
                                   AisEncoder::framePayload(*message->time, message->bits,
                                                            message->bitCount, message->channel))) {
                return false;
            }
        }
    }
    return true;
}

} // namespace zelkosamples
