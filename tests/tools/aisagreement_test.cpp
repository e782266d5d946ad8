// Agreement with gpsdecode (gpsd-clients), an established AIS decoder: the same log through
// gpsdecode and through "zelko import aivdm" + "zelko convert", compared message by message
// and field by field. Skipped where gpsdecode is not installed.

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <map>
#include <nerikresultdataxml/nerikresultdata.h>
#include <nerikresultdataxml/pdudatablock.h>
#include <nerikresultdataxml/transmission.h>
#include <recordingwriter/aisencoder.h>
#include <support/toolrun.h>

using namespace zelkorecording;

namespace {

// Messages the sample lacks: the far hemispheres, nothing available, limits, other types.
QByteArray edgeLog()
{
    AisVessel southWest;
    southWest.mmsi = 503123456;
    southWest.latitude = -33.8568;
    southWest.longitude = -151.2153;
    southWest.speedKnots = 102.2;
    southWest.courseDegrees = 359.9;
    southWest.heading = 359;
    southWest.navigationalStatus = 5;
    southWest.name = "SOUTHERN STAR";
    southWest.shipType = 60;
    AisVessel nothing;
    nothing.mmsi = 1;
    AisVessel northEast = southWest;
    northEast.mmsi = 257000001;
    northEast.latitude = 70.6632;
    northEast.longitude = 23.6817;
    northEast.speedKnots = 0;
    northEast.courseDegrees = 0;
    northEast.heading = 0;
    QList<AisBitWriter> const messages = {
        AisEncoder::positionReportA(southWest, 3), AisEncoder::positionReportA(nothing),
        AisEncoder::positionReportA(northEast, 2), AisEncoder::extendedClassB(southWest),
        AisEncoder::positionReportB(nothing), AisEncoder::staticAndVoyage(nothing),
        AisEncoder::longRange(southWest), AisEncoder::longRange(nothing),
        AisEncoder::safetyBroadcast(2655001, "TEST 123 !\"#$%&'()*+,-./:;<=>?")};
    QByteArray log;
    int sequence = 0;
    for (AisBitWriter const& message : messages) {
        for (QString const& sentence : AisEncoder::sentences(message, 'A', sequence++ % 10)) {
            log += sentence.toLatin1() + '\n';
        }
    }
    return log;
}

std::map<QString, QString> fieldsOf(NerikResultDataXml::PDUDataBlock const& block)
{
    std::map<QString, QString> fields;
    for (NerikResultDataXml::Field const& field : block.GetFields()) {
        fields[field.GetName()] = field.GetValue();
    }
    return fields;
}

// "N 53°32'10.5'' E 9°58'0''" as signed degrees.
bool readPosition(QString const& text, double& latitude, double& longitude)
{
    static QRegularExpression const pattern(
        QString::fromUtf8("^([NS]) (\\d+)\u00B0(\\d+)'([\\d.]+)'' ([EW]) (\\d+)\u00B0(\\d+)'([\\d.]+)''$"));
    QRegularExpressionMatch const match = pattern.match(text);
    if (!match.hasMatch()) {
        return false;
    }
    auto degrees = [&](int first) {
        double const value = match.captured(first + 1).toDouble() +
                             match.captured(first + 2).toDouble() / 60.0 +
                             match.captured(first + 3).toDouble() / 3600.0;
        QString const hemisphere = match.captured(first);
        return hemisphere == "S" || hemisphere == "W" ? -value : value;
    };
    latitude = degrees(1);
    longitude = degrees(5);
    return true;
}

struct Tally
{
    int compared = 0;
    int agreed = 0;
};

class Agreement
{
public:
    void number(char const* name, QJsonObject const& theirs, char const* key, QString const& ours,
                double notAvailable, double tolerance)
    {
        if (!theirs.contains(QLatin1String(key)) || ours.isNull()) {
            return;
        }
        QJsonValue const their = theirs.value(QLatin1String(key));
        // gpsdecode writes a class A speed of 1023 as "nan" and 1022 as "fast".
        double const value = their.toString() == QLatin1String("nan")    ? notAvailable
                             : their.toString() == QLatin1String("fast") ? 102.2
                                                                         : their.toDouble();
        bool agree = false;
        if (ours == QLatin1String("not available")) {
            agree = std::fabs(value - notAvailable) < 1e-9;
        } else {
            // "102.2 or more" is the number itself to gpsdecode.
            agree = std::fabs(ours.section(' ', 0, 0).toDouble() - value) <= tolerance;
        }
        record(name, agree, QString::number(value), ours);
    }

    void text(char const* name, QJsonObject const& theirs, char const* key, QString const& ours)
    {
        // gpsdecode carries part A's name into part B; our part B has no name field.
        if (!theirs.contains(QLatin1String(key)) || ours.isNull()) {
            return;
        }
        QString const value = theirs.value(QLatin1String(key)).toString().trimmed();
        record(name, ours == value || (ours == QLatin1String("not available") && value.isEmpty()),
               value, ours);
    }

    /// tolerance: degrees; gpsdecode rounds long-range positions to a tenth of a degree.
    void position(QJsonObject const& theirs, QString const& ours, double tolerance)
    {
        if (!theirs.contains(QLatin1String("lat")) || ours.isNull()) {
            return;
        }
        double const lat = theirs.value(QLatin1String("lat")).toDouble();
        double const lon = theirs.value(QLatin1String("lon")).toDouble();
        double ourLat = 91;
        double ourLon = 181;
        bool const read = readPosition(ours, ourLat, ourLon);
        bool const agree = read ? std::fabs(lat - ourLat) <= tolerance && std::fabs(lon - ourLon) <= tolerance
                                : ours == QLatin1String("not available") && lat >= 91 && lon >= 181;
        record("position", agree, QStringLiteral("%1 %2").arg(lat, 0, 'f', 6).arg(lon, 0, 'f', 6), ours);
    }

    std::map<std::string, Tally> tallies;
    QStringList disagreements;

private:
    void record(char const* name, bool agree, QString const& theirs, QString const& ours)
    {
        Tally& tally = tallies[name];
        ++tally.compared;
        tally.agreed += agree ? 1 : 0;
        if (!agree) {
            disagreements << QStringLiteral("%1: gpsdecode '%2', zelko '%3'").arg(QLatin1String(name), theirs, ours);
        }
    }
};

TEST(AisAgreement, GpsdecodeAndZelkoReadTheSameValues)
{
    QString const gpsdecode = QStandardPaths::findExecutable(QStringLiteral("gpsdecode"));
    if (gpsdecode.isEmpty()) {
        GTEST_SKIP() << "gpsdecode is not installed (apt-get install gpsd-clients)";
    }
    QTemporaryDir dir;
    QString const log = dir.filePath(QStringLiteral("agreement.nmea"));
    {
        QFile sample(QStringLiteral(ZELKO_SOURCE_DIR "/data/samples/ais-elbe.nmea"));
        QFile file(log);
        ASSERT_TRUE(sample.open(QIODevice::ReadOnly) && file.open(QIODevice::WriteOnly));
        file.write(sample.readAll() + edgeLog());
    }
    QProcess decoder;
    decoder.setStandardInputFile(log);
    // -s: the two parts of a static data report apart, as the recording holds them.
    decoder.start(gpsdecode, {QStringLiteral("-j"), QStringLiteral("-s")});
    ASSERT_TRUE(decoder.waitForFinished(60000));
    QList<QJsonObject> theirs;
    for (QByteArray const& line : decoder.readAllStandardOutput().split('\n')) {
        QJsonObject const object = QJsonDocument::fromJson(line).object();
        if (object.value(QLatin1String("class")).toString() == QLatin1String("AIS")) {
            theirs << object;
        }
    }

    QString const recording = dir.filePath(QStringLiteral("agreement.zdr"));
    QString const out = dir.filePath(QStringLiteral("out"));
    ASSERT_EQ(zelkotest::runTool(ZELKO_TOOL, {"import", "aivdm", "--quiet", log, "-o", recording})
                  .exitCode,
              0);
    ASSERT_EQ(zelkotest::runTool(ZELKO_TOOL, {"convert", "--quiet", "--kind", "ts", "-o", out, recording})
                  .exitCode,
              0);
    QStringList const documents = QDir(out).entryList({QStringLiteral("*.xml")}, QDir::Files);
    ASSERT_EQ(documents.size(), 1);
    NerikResultDataXml::NerikResultData document;
    ASSERT_TRUE(document.LoadFile(QDir(out).filePath(documents.front())));
    ASSERT_EQ(document.GetTransmission().size(), 1);
    QList<NerikResultDataXml::PDUDataBlock*> const blocks =
        document.GetTransmission().front()->GetPDUDataBlocks();
    ASSERT_EQ(blocks.size(), theirs.size());

    Agreement agreement;
    for (int i = 0; i < blocks.size(); ++i) {
        std::map<QString, QString> const found = fieldsOf(*blocks[i]);
        auto fields = [&found](char const* label) {
            auto const field = found.find(QString::fromUtf8(label));
            return field == found.end() ? QString() : field->second;
        };
        QJsonObject const& their = theirs[i];
        agreement.number("mmsi", their, "mmsi", fields("MMSI"), -1, 0);
        bool const longRange = their.value(QLatin1String("type")).toInt() == 27;
        agreement.position(their, fields("Position"), longRange ? 0.05 : 2e-6);
        agreement.number("speed", their, "speed", fields("Speed over Ground (kn)"),
                         longRange ? 63 : their.value(QLatin1String("type")).toInt() == 9 ? 1023 : 102.3, 0.05);
        agreement.number("course", their, "course", fields(u8"Course over Ground (\u00B0)"),
                         longRange ? 511 : 360, 0.05);
        agreement.number("heading", their, "heading", fields(u8"True Heading (\u00B0)"), 511, 0);
        agreement.text("call sign", their, "callsign", fields("Call Sign"));
        agreement.text("ship name", their, "shipname", fields("Name"));
        agreement.text("destination", their, "destination", fields("Destination"));
        agreement.text("safety text", their, "text", fields("Text"));
    }
    std::printf("agreement with gpsdecode over %d messages:\n", int(blocks.size()));
    for (auto const& [name, tally] : agreement.tallies) {
        std::printf("  %-12s %d of %d\n", name.c_str(), tally.agreed, tally.compared);
    }
    EXPECT_TRUE(agreement.disagreements.isEmpty())
        << agreement.disagreements.join('\n').toStdString();
}

} // namespace
