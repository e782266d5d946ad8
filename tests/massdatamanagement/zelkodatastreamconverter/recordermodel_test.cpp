// AIS station reports (scanAISData) and the recorder model: station merging and expiry,
// pending-change timing, channel filtering, file names, settings, info records, and a result
// file with station files written as a host drives the recorder.

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <algorithm>
#include <gtest/gtest.h>
#include <jobspec/settings.h>
#include <jobspec/station.h>
#include <massdatamanagement/zelkodatastreamconverter/aisrecorderdata.h>
#include <massdatamanagement/zelkodatastreamconverter/clock.h>
#include <massdatamanagement/zelkodatastreamconverter/fileinfolist.h>
#include <massdatamanagement/zelkodatastreamconverter/nerikresultcallback.h>
#include <massdatamanagement/zelkodatastreamconverter/recordermodel.h>
#include <memory>
#include <nerikresultdataxml/nerikresultdata.h>
#include <reportkit/antennasettings.h>
#include <reportkit/audiosettings.h>
#include <reportkit/ffmsettings.h>
#include <reportkit/tunersettings.h>
#include <support/golden.h>
#include <support/qstringprinter.h>
#include <support/schemavalidator.h>
#include <support/tracecapture.h>
#include <vector>

inline std::ostream& operator<<(std::ostream& os, QString const& text)
{
    return os << text.toStdString();
}
using namespace zelkodatastreamconverter;
using NerikResultDataXml::DataBlock;
using NerikResultDataXml::Field;
using NerikResultDataXml::Info;
using NerikResultDataXml::NerikResultData;
using NerikResultDataXml::PDUDataBlock;
using NerikResultDataXml::TimeStamp;
using NerikResultDataXml::Transmission;

namespace {

QDateTime const T0(QDate(2024, 5, 17), QTime(8, 30, 0), Qt::UTC);
QString const Schema = QStringLiteral("nerikresultdata.xsd");
QString const Source = QStringLiteral("massdatamanagement/zelkodatastreamconverter/");
QString const AISReport = QStringLiteral("AIS Position Report");
QString const None; // a field left out

QString u(char const* utf8)
{
    return QString::fromUtf8(utf8);
}

// Position texts as the PDU decoder writes them (degree sign, minute and second marks).
QString const NorthEast = u("N 53°32'10.5'' E 9°58'0''");   // 53.53625, 9.966667
QString const SouthWestFar = u("S 33°51'0'' W 151°12'0''"); // longitude above 90: kept out
QString const SouthWestNear = u("S 33°51'0'' W 70°0'0''");

Field mmsiField(QString const& value)
{
    return Field(QStringLiteral("MMSI"), QStringLiteral("int"), value);
}
Field callSign(QString const& value)
{
    return Field(QStringLiteral("Call Sign"), QStringLiteral("string"), value);
}
Field position(QString const& value)
{
    return Field(QStringLiteral("Position"), QStringLiteral("position"), value);
}

PDUDataBlock pdu(int id, QDateTime const& time, QString const& name,
                 std::vector<Field> const& fields)
{
    PDUDataBlock block;
    block.SetID(id);
    block.SetType(1);
    block.SetTimeStamp(time);
    block.SetName(name);
    block.SetMethod(QStringLiteral("AIS"));
    block.SetCRC(QStringLiteral("ok"));
    for (Field const& field : fields) {
        block.AddField(field);
    }
    return block;
}

// A position report of one ship; a null call sign or position leaves the field out.
PDUDataBlock report(int id, qint64 secondsAfterT0, int mmsi, QString const& sign = None,
                    QString const& where = None)
{
    std::vector<Field> fields{mmsiField(QString::number(mmsi))};
    if (!sign.isNull()) {
        fields.push_back(callSign(sign));
    }
    fields.push_back(Field(QStringLiteral("Navigation Status"), QStringLiteral("string"),
                           QStringLiteral("under way using engine")));
    if (!where.isNull()) {
        fields.push_back(position(where));
    }
    return pdu(id, T0.addSecs(secondsAfterT0), AISReport, fields);
}

// An AIS unit without an MMSI field: it belongs to the main result file only.
PDUDataBlock channelManagement(int id, qint64 secondsAfterT0)
{
    return pdu(id, T0.addSecs(secondsAfterT0), QStringLiteral("AIS Channel Management"),
               {Field(QStringLiteral("Channel A"), QStringLiteral("int"), QStringLiteral("2087")),
                Field(QStringLiteral("Channel B"), QStringLiteral("int"), QStringLiteral("2088"))});
}

DataBlock textBlock(int channel, QString const& content, qint64 secondsAfterT0)
{
    DataBlock block(channel, 0, 0);
    block.SetContent(content);
    block.GetTimeStamp().append(TimeStamp(T0.addSecs(secondsAfterT0), 0));
    return block;
}

Transmission transmission(std::vector<PDUDataBlock> const& blocks,
                          std::vector<DataBlock> const& texts = {}, qint64 stopSeconds = 60)
{
    Transmission result;
    result.SetStartTime(T0);
    result.SetStopTime(T0.addSecs(stopSeconds));
    for (DataBlock const& text : texts) {
        result.AddDataBlock(new DataBlock(text));
    }
    for (PDUDataBlock const& block : blocks) {
        result.AddPDUDataBlock(new PDUDataBlock(block));
    }
    return result;
}

QByteArray readAll(QString const& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList filesIn(QString const& directory)
{
    return QDir(directory).entryList(QDir::Files, QDir::Name);
}

/// The number of PDU data blocks in the first transmission of a written result file.
int pduCount(QString const& path)
{
    NerikResultData written;
    EXPECT_TRUE(written.LoadFile(path)) << written.GetErrorText();
    return written.GetTransmission().isEmpty()
               ? -1
               : written.GetTransmission()[0]->GetPDUDataBlocks().size();
}

// ---- scanAISData ---------------------------------------------------------------------------

// timeFromBlock false: the earlier time stamp is still there.
struct StationValues
{
    int id;
    QString name;
    double latitude;
    double longitude;
    bool timeFromBlock;
};

// What the station holds before each scan, so that a row can show what was left alone.
StationValues const Before{7, QStringLiteral("OLD"), 1.5, 2.5, false};
QString const Old = Before.name;

StationValues scanned(int id, QString const& name = Before.name, double lat = Before.latitude,
                      double lon = Before.longitude)
{
    return {id, name, lat, lon, true};
}

TEST(ScanAISData, FillsTheStationOnlyFromTheFieldsAfterTheMMSI)
{
    // clang-format off
    struct Case { char const* name; QString blockName; std::vector<Field> fields; int result;
                  StationValues after; } const cases[] = {
    {"lower-case ais name", "ais Position Report", {mmsiField("211234567"), position(NorthEast)}, -1, Before},
    {"AIS not at the start", "Position AIS", {mmsiField("211234567")}, -1, Before},
    {"no MMSI field", AISReport, {callSign("DABC"), position(NorthEast)}, -1, Before},
    {"MMSI name in lower case", AISReport, {Field("mmsi", "int", "211234567"), position(NorthEast)}, -1, Before},
    {"MMSI last sets only ID and time", AISReport, {callSign("DABC"), position(NorthEast), mmsiField("211234567")}, 211234567, scanned(211234567)},
    {"north east example", AISReport, {mmsiField("211234567"), position(NorthEast)}, 211234567, scanned(211234567, Old, 53.536250, 9.966667)},
    {"south west beyond 90 keeps the longitude", AISReport, {mmsiField("503000001"), position(SouthWestFar)}, 503000001, scanned(503000001, Old, -33.85, Before.longitude)},
    {"west within 90 is negative", AISReport, {mmsiField("1"), position(u("N 10°0'0'' W 45°30'0''"))}, 1, scanned(1, Old, 10.0, -45.5)},
    {"seconds missing rejected", AISReport, {mmsiField("211234567"), position(u("N 53°32'"))}, 211234567, scanned(211234567)},
    {"call sign before MMSI ignored", AISReport, {callSign("EARLY"), mmsiField("211234567")}, 211234567, scanned(211234567)},
    {"call sign after MMSI", AISReport, {mmsiField("211234567"), callSign("DABC")}, 211234567, scanned(211234567, "DABC")},
    {"non-numeric MMSI gives 0", AISReport, {mmsiField("unknown")}, 0, scanned(0)},
    {"exactly 90 degrees accepted", AISReport, {mmsiField("2"), position(u("N 90°0'0'' E 90°0'0''"))}, 2, scanned(2, Old, 90.0, 90.0)},
    {"one second past 90 rejected", AISReport, {mmsiField("2"), position(u("N 90°0'1'' E 90°0'1''"))}, 2, scanned(2)},
    {"zero degrees accepted", AISReport, {mmsiField("3"), position(u("S 0°0'0'' W 0°0'0''"))}, 3, scanned(3, Old, 0.0, 0.0)},
    {"decimal minutes", AISReport, {mmsiField("4"), position(u("N 53°32.5'0'' E 9°0'36''"))}, 4, scanned(4, Old, 53.0 + 32.5 / 60.0, 9.01)},
    {"full stop after a letter skipped", AISReport, {mmsiField("4"), position(u("N. 53°32'10.5'' E. 9°58'0''"))}, 4, scanned(4, Old, 53.536250, 9.966667)},
    // Without a blank the second mark and the next letter form one token ("''E"), so
    // neither coordinate has its marks where they belong.
    {"hemisphere glued to the second mark", AISReport, {mmsiField("5"), position(u("N 53°32'10.5''E 9°58'0''"))}, 5, scanned(5)},
    {"type text is case-sensitive", AISReport, {mmsiField("6"), Field("Position", "Position", NorthEast)}, 6, scanned(6)},
    {"degree sign missing", AISReport, {mmsiField("6"), position(u("N 53 32'10.5'' E 9 58'0''"))}, 6, scanned(6)},
    };
    // clang-format on
    QDateTime const beforeTime = T0.addSecs(-3600);
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        PDUDataBlock const block = pdu(5, T0, c.blockName, c.fields);
        JobSpec::Station station;
        station.SetValidate(false);
        station.SetStationID(Before.id);
        station.SetName(Before.name);
        station.SetLatitude(Before.latitude);
        station.SetLongitude(Before.longitude);
        station.SetTimeStamp(beforeTime);
        EXPECT_EQ(NerikResultModel().scanAISData(&block, station), c.result);
        EXPECT_EQ(station.GetStationID(), c.after.id);
        EXPECT_EQ(station.GetName(), c.after.name);
        EXPECT_NEAR(station.GetLatitude(), c.after.latitude, 5e-7);
        EXPECT_NEAR(station.GetLongitude(), c.after.longitude, 5e-7);
        EXPECT_EQ(station.GetTimeStamp(), c.after.timeFromBlock ? T0 : beforeTime);
    }
}

TEST(ScanAISData, TraceIsTheInformationalTextAtLine1014)
{
    // The station ID appears as the one character of its low 16 bits (0x2F07 for the first).
    // clang-format off
    struct Case { char const* name; std::vector<Field> fields; QString expected; } const cases[] = {
        {"full report", {mmsiField("211234567"), callSign("DABC"), position(NorthEast)},
         u("MMSI=211234567 CallSign=DABC position=N 53°32'10.5'' E 9°58'0'' "
           "StationID=\u2F07 StationName=DABC latitude=53.5362 longitude=9.96667")},
        {"ID 65 is the letter A", {mmsiField("65")},
         "MMSI=65 StationID=A StationName= latitude=0 longitude=0"},
        {"only the low 16 bits", {mmsiField("65602")}, // 0x10042
         "MMSI=65602 StationID=B StationName= latitude=0 longitude=0"},
        {"non-numeric MMSI as character 0", {mmsiField("n/a")},
         "MMSI=n/a StationID=" + QString(QChar(0)) + " StationName= latitude=0 longitude=0"},
        {"rejected longitude still listed", {mmsiField("66"), position(SouthWestFar)},
         u("MMSI=66 position=S 33°51'0'' W 151°12'0'' StationID=B StationName= "
           "latitude=-33.85 longitude=0")},
    };
    // clang-format on
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        PDUDataBlock const block = pdu(5, T0.addMSecs(250), AISReport, c.fields);
        JobSpec::Station station;
        station.SetValidate(false);
        zelkotest::TraceCapture capture(0x40);
        NerikResultModel().scanAISData(&block, station);
        ASSERT_EQ(capture.lines().size(), 1u);
        EXPECT_EQ(capture.lines()[0].message,
                  QStringLiteral("scanAISData: 2024-05-17 08:30:00.250 ") + c.expected);
        EXPECT_EQ(capture.lines()[0].sourceFile, Source + QStringLiteral("nerikresultmodel"));
        EXPECT_EQ(capture.lines()[0].line, 1014);
    }
}

// ---- RecorderModel -------------------------------------------------------------------------

struct ClosedLog : NerikResultCallback
{
    int closed = 0;
    void onTransmissionClosed(Transmission*) override { ++closed; }
};

/// A recorder writing into a temporary directory, with the clock fixed at T0.
struct Rig
{
    Clock::Override clock{T0};
    QTemporaryDir dir;
    FileInfoList files;
    RecorderModel recorder{&files};
    QStringList stationXml;

    Rig() { recorder.setDirectoryPath(dir.path()); }

    void setAISMode()
    {
        ASSERT_TRUE(recorder.setDemodulatorSettings(
            QStringLiteral("<Demodulator_Settings mode=\"FM\" transmissionSystem=\"AIS\"/>")));
        ASSERT_TRUE(recorder.isAISMode());
    }
    bool add(std::vector<PDUDataBlock> const& blocks, std::vector<DataBlock> const& texts = {})
    {
        return recorder.addTransmission(transmission(blocks, texts), stationXml);
    }
    static QDateTime now() { return Clock::currentDateTimeUtc(); }
    QString mainPath() const
    {
        QFile const* file = recorder.getXmlFile().getOpenFile();
        return file ? file->fileName() : QString();
    }
    QString stationPath(int mmsi) const
    {
        auto const station = recorder.getAISRecorderData(mmsi);
        QFile const* file = station ? station->getFile().getOpenFile() : nullptr;
        return file ? file->fileName() : QString();
    }
    std::vector<REPORTKIT::Text> const& records() const { return files.getResults().GetText(); }
};

class Recorder : public ::testing::Test, public Rig
{
};

// -- Station entries --

TEST(RecorderStations, NameWhenSetPositionWhenBothSet)
{
    // Each report arrives as its own update of the same transmission, so only the new block
    // must be scanned.
    struct Report
    {
        QString sign, where;
    };
    // clang-format off
    struct Case { char const* name; std::vector<Report> reports; bool nameSet; QString name2;
                  bool positionSet; double latitude; double longitude; } const cases[] = {
        {"name taken when set", {{"DABC", None}}, true, "DABC", false, 0, 0},
        {"name kept when a later report has none", {{"DABC", None}, {None, None}}, true, "DABC", false, 0, 0},
        {"later name replaces", {{"DABC", None}, {"DXYZ", None}}, true, "DXYZ", false, 0, 0},
        {"empty call sign is a name", {{"DABC", None}, {"", None}}, true, "", false, 0, 0},
        {"position taken when both set", {{None, NorthEast}}, false, None, true, 53.53625, 9.966667},
        {"latitude alone never taken", {{None, SouthWestFar}}, false, None, false, 0, 0},
        {"latitude alone keeps the earlier position", {{None, NorthEast}, {None, SouthWestFar}}, false, None, true, 53.53625, 9.966667},
        {"later full position replaces", {{None, NorthEast}, {None, SouthWestNear}}, false, None, true, -33.85, -70.0},
    };
    // clang-format on
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        Rig r;
        r.setAISMode();
        QVector<int> ids;
        for (int i = 0; i < int(c.reports.size()); ++i) {
            ids << i + 1;
            r.add({report(i + 1, i * 10, 211234567, c.reports[i].sign, c.reports[i].where)});
        }
        auto const entry = r.recorder.getAISRecorderData(211234567);
        ASSERT_TRUE(entry);
        JobSpec::Station const& station = entry->getStation();
        EXPECT_EQ(station.GetStationID(), 211234567);
        EXPECT_EQ(station.GetTimeStamp(), T0.addSecs(qint64(c.reports.size() - 1) * 10));
        EXPECT_EQ(entry->getBlockIDs(), ids);
        EXPECT_EQ(station.IsNameSet(), c.nameSet);
        EXPECT_EQ(station.GetName(), c.name2);
        EXPECT_EQ(station.IsLatitudeSet(), c.positionSet);
        EXPECT_EQ(station.IsLongitudeSet(), c.positionSet);
        if (c.positionSet) {
            EXPECT_NEAR(station.GetLatitude(), c.latitude, 5e-7);
            EXPECT_NEAR(station.GetLongitude(), c.longitude, 5e-7);
        }
        EXPECT_EQ(std::size_t(r.stationXml.size()), c.reports.size());
    }
}

TEST_F(Recorder, StationsOnlyInAISModeAndOnlyForBlocksWithAnMMSI)
{
    recorder.setDemodulatorSettings(
        QStringLiteral("<Demodulator_Settings transmissionSystem=\"POCSAG\"/>"));
    EXPECT_FALSE(recorder.isAISMode());
    add({report(1, 0, 211234567, "DABC", NorthEast)});
    EXPECT_EQ(recorder.getAISStationCount(), 0);
    EXPECT_TRUE(stationXml.isEmpty());
    EXPECT_EQ(recorder.getXmlFile().getDueTime(), now().addSecs(-60));
    recorder.saveExpiredPendingChanges(now());

    setAISMode();
    add({channelManagement(2, 0)});
    EXPECT_EQ(recorder.getAISStationCount(), 0);
    EXPECT_TRUE(stationXml.isEmpty());
    EXPECT_EQ(recorder.getXmlFile().getDueTime(), now().addSecs(30));
    recorder.saveExpiredPendingChanges(now().addSecs(30));
    ASSERT_FALSE(recorder.getXmlFile().hasPendingChanges());

    // A station report, by contrast, marks its station file and leaves the main file alone.
    add({report(3, 1, 211234567, "DABC", NorthEast)});
    EXPECT_FALSE(recorder.getXmlFile().hasPendingChanges());
    ASSERT_EQ(recorder.getAISStationCount(), 1);
    ASSERT_EQ(stationXml.size(), 1);
    JobSpec::Station fromXml;
    ASSERT_TRUE(fromXml.SetXmlString(stationXml[0], 0)) << fromXml.LastXmlError();
    EXPECT_EQ(fromXml.GetStationID(), 211234567);
    EXPECT_EQ(fromXml.GetName(), QStringLiteral("DABC"));
}

TEST(RecorderStations, SilentStationClosedAfter180Seconds)
{
    for (int const seconds : {179, 180, 181}) {
        SCOPED_TRACE(seconds);
        bool const closed = seconds > 180;
        Rig r;
        r.setAISMode();
        r.add({report(1, 0, 211234567, "DABC", NorthEast)});
        r.recorder.saveExpiredPendingChanges(r.now()); // first write of the station file
        QString const path = r.stationPath(211234567);
        ASSERT_FALSE(path.isEmpty());

        zelkotest::TraceCapture capture(0x60);
        Clock::advance(seconds * 1000);
        r.recorder.saveExpiredPendingChanges(r.now());
        EXPECT_EQ(r.recorder.getAISStationCount(), closed ? 0 : 1);
        EXPECT_EQ(capture.count(QStringLiteral("AISRecorderData::close 211234567")),
                  closed ? 1 : 0);
        // Completed files are reported with a stop time.
        EXPECT_EQ(std::count_if(r.records().begin(), r.records().end(),
                                [&](REPORTKIT::Text const& record) {
                                    return record.GetURL() == path &&
                                           record.GetMetadata().GetStopTime().isValid();
                                }),
                  closed ? 1 : 0);
        EXPECT_EQ(zelkotest::validateXmlFile(path, Schema), QString());
    }
}

TEST_F(Recorder, NewReportPostponesExpiryAndAISModeLastsWhileStationsAreOpen)
{
    setAISMode();
    add({report(1, 0, 211234567)});
    Clock::advance(100 * 1000);
    add({report(2, 100, 211234567)});
    // The mode changes, but an open station keeps the recorder in AIS mode.
    recorder.setDemodulatorSettings(
        QStringLiteral("<Demodulator_Settings transmissionSystem=\"POCSAG\"/>"));
    recorder.saveExpiredPendingChanges(T0.addSecs(181));
    EXPECT_EQ(recorder.getAISStationCount(), 1);
    EXPECT_TRUE(recorder.isAISMode());
    recorder.saveExpiredPendingChanges(T0.addSecs(281));
    EXPECT_EQ(recorder.getAISStationCount(), 0);
    EXPECT_FALSE(recorder.isAISMode());
}

TEST_F(Recorder, StationFileDueAtOnceThen30SecondsFirstChangeWins)
{
    setAISMode();
    zelkotest::TraceCapture capture(0x40);
    add({report(1, 0, 211234567, "DABC", NorthEast)});
    recorder.saveExpiredPendingChanges(now());
    QString const path = stationPath(211234567);
    ASSERT_FALSE(path.isEmpty());
    QString const saved = QStringLiteral("AISRecorderData::saveFile 211234567 file %1").arg(path);
    EXPECT_EQ(capture.count(saved), 1);

    Clock::advance(10 * 1000);
    add({report(2, 10, 211234567)});
    Clock::advance(10 * 1000);
    add({report(3, 20, 211234567)}); // does not move the due time
    auto const entry = recorder.getAISRecorderData(211234567);
    EXPECT_EQ(entry->getFile().getDueTime(), T0.addSecs(40));
    EXPECT_EQ(entry->getExpiryTime(), T0.addSecs(200));

    capture.clear();
    recorder.saveExpiredPendingChanges(T0.addSecs(39));
    EXPECT_TRUE(capture.lines().empty());
    recorder.saveExpiredPendingChanges(T0.addSecs(40));
    EXPECT_EQ(capture.count(saved), 1);
    EXPECT_EQ(pduCount(path), 3);
}

TEST_F(Recorder, UnitSentAgainIsWrittenOnceToItsStationFile)
{
    setAISMode();
    add({report(1, 0, 211234567, "DABC")});
    Transmission again = transmission({report(1, 0, 211234567, "DABC")});
    again.SetStartTime(T0.addSecs(120)); // a new transmission: scanned from its first unit
    recorder.addTransmission(again, stationXml);
    EXPECT_EQ(recorder.getAISRecorderData(211234567)->getBlockIDs(), (QVector<int>{1, 1}));
    recorder.saveExpiredPendingChanges(now());
    QString const path = stationPath(211234567);
    recorder.closeFile();
    EXPECT_EQ(pduCount(path), 1);
}

// -- Pending changes of the main result file --

TEST(RecorderPendingChanges, DueTime)
{
    // Steps: "c" a new current transmission; "d" new data; "w" new data, written at once;
    // "+N" the clock N seconds on.
    // clang-format off
    struct Case { char const* name; char const* steps; qint64 dueAfterT0Seconds; } const cases[] = {
        {"setCurrentTransmission: 10 s", "c", 10},
        {"new data without a file: due at once", "d", -60},
        {"new data with a file: 30 s", "w +5 d", 35},
        {"first change wins with a file", "w +5 d +20 d", 35},
        {"due at once does not advance a pending change", "c +2 d", 10},
        {"setCurrentTransmission keeps an earlier due time", "d c", -60},
        {"written, then setCurrentTransmission: 10 s", "w +3 c", 13},
    };
    // clang-format on
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        Rig r;
        int nextId = 1;
        for (QString const& step : QString::fromLatin1(c.steps).split(' ')) {
            if (step.startsWith('+')) {
                Clock::advance(step.mid(1).toLongLong() * 1000);
            } else if (step == QLatin1String("c")) {
                r.recorder.setCurrentTransmission(
                    new Transmission(transmission({channelManagement(nextId++, 0)})));
            } else {
                r.add({channelManagement(nextId++, 0)});
                if (step == QLatin1String("w")) {
                    r.recorder.saveExpiredPendingChanges(r.now());
                    ASSERT_FALSE(r.mainPath().isEmpty());
                }
            }
        }
        XmlFile const& file = r.recorder.getXmlFile();
        ASSERT_TRUE(file.hasPendingChanges());
        QDateTime const due = T0.addSecs(c.dueAfterT0Seconds);
        EXPECT_EQ(file.getDueTime(), due);
        EXPECT_FALSE(file.hasExpiredPendingChanges(due.addMSecs(-1)));
        EXPECT_TRUE(file.hasExpiredPendingChanges(due));
    }
}

TEST_F(Recorder, ExpiredChangesWriteTheWholeDocumentAndLeaveTheFileForReopening)
{
    add({channelManagement(1, 0)});
    recorder.saveExpiredPendingChanges(now());
    QString const path = mainPath();
    ASSERT_FALSE(path.isEmpty());
    EXPECT_FALSE(recorder.getXmlFile().getOpenFile()->isOpen());
    EXPECT_FALSE(recorder.getXmlFile().hasPendingChanges());

    Clock::advance(1000);
    add({channelManagement(2, 1)});
    recorder.saveExpiredPendingChanges(T0.addSecs(30)); // due at 31 s
    EXPECT_EQ(pduCount(path), 1);
    recorder.saveExpiredPendingChanges(T0.addSecs(31));
    EXPECT_EQ(pduCount(path), 2);
    EXPECT_EQ(filesIn(dir.path()).size(), 1); // rewritten, never split
    EXPECT_EQ(zelkotest::validateXmlFile(path, Schema), QString());
}

// -- Channel selection --

TEST(RecorderChannels, UnselectedChannelsAreLeftOutOfTheFileOnly)
{
    // selection empty: none set.
    // clang-format off
    struct Case { char const* name; QString selection; std::vector<int> written; } const cases[] = {
        {"no selection writes every channel", "", {0, 1}},
        {"channel 1 selected", "<ChannelSelection><Value>1</Value></ChannelSelection>", {1}},
        {"every channel excluded", "<ChannelSelection><Value>300</Value></ChannelSelection>", {}},
    };
    // clang-format on
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        Rig r;
        if (!c.selection.isEmpty()) {
            r.recorder.setChannelSelection(c.selection);
        }
        r.add({},
              {textBlock(0, QStringLiteral("ZCZC"), 1), textBlock(1, QStringLiteral("NNNN"), 2)});
        r.recorder.saveFile();
        QString const path = r.mainPath();
        ASSERT_FALSE(path.isEmpty());
        EXPECT_EQ(zelkotest::validateXmlFile(path, Schema), QString());
        NerikResultData written;
        ASSERT_TRUE(written.LoadFile(path)) << written.GetErrorText();
        ASSERT_EQ(written.GetTransmission().size(), 1);
        std::vector<int> channels;
        for (DataBlock const* block : written.GetTransmission()[0]->GetDataBlock()) {
            channels.push_back(block->GetChannel());
        }
        EXPECT_EQ(channels, c.written);
        EXPECT_EQ(r.recorder.getCurrentTransmission()->GetDataBlock().size(), 2); // model keeps all
    }
}

// -- Closing --

TEST(RecorderClose, WithoutChangesNothingIsWrittenButTheModelIsClosedAndCleared)
{
    for (bool const withTransmission : {false, true}) {
        SCOPED_TRACE(withTransmission);
        Rig r;
        ClosedLog log;
        r.recorder.setCallback(&log);
        if (withTransmission) {
            r.recorder.createTransmission(T0);
        } else {
            r.recorder.setCurrentTransmission(nullptr);
        }
        r.recorder.closeFile();
        EXPECT_TRUE(filesIn(r.dir.path()).isEmpty());
        EXPECT_TRUE(r.records().empty());
        EXPECT_EQ(r.recorder.getCurrentTransmission(), nullptr);
        EXPECT_TRUE(r.recorder.getResultData()->GetTransmission().isEmpty());
        EXPECT_EQ(r.recorder.getFileName(), QString());
        EXPECT_EQ(log.closed, withTransmission ? 1 : 0);
    }
}

TEST_F(Recorder, CloseWritesPendingChangesCompletesAndClears)
{
    ClosedLog log;
    recorder.setCallback(&log);
    recorder.setCurrentTransmission(new Transmission(transmission({channelManagement(1, 0)})));
    recorder.closeFile();
    EXPECT_EQ(filesIn(dir.path()),
              QStringList{QStringLiteral("NerikResultData_%1.xml")
                              .arg(Clock::currentDateTime().toString("yyyyMMdd_hhmmss"))});
    ASSERT_EQ(records().size(), 1u);
    EXPECT_TRUE(records()[0].GetMetadata().GetStopTime().isValid());
    EXPECT_EQ(records()[0].GetMetadata().GetDetail().GetCode(), QStringLiteral("DecodedText"));
    EXPECT_EQ(log.closed, 1);
    EXPECT_EQ(recorder.getCurrentTransmission(), nullptr);
    EXPECT_TRUE(recorder.getResultData()->GetTransmission().isEmpty());
}

TEST_F(Recorder, DirectoryThatRefusesFilesCountsAsAFailedSave)
{
    QFile blocker(dir.filePath(QStringLiteral("not-a-directory")));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    recorder.setDirectoryPath(blocker.fileName());
    add({channelManagement(1, 0)});

    zelkotest::TraceCapture capture(0x20);
    recorder.saveExpiredPendingChanges(now());
    EXPECT_EQ(capture.lines().size(), 2u); // cannot open, cannot create
    EXPECT_FALSE(recorder.getXmlFile().hasPendingChanges());
    capture.clear();
    recorder.saveExpiredPendingChanges(now().addSecs(60));
    EXPECT_TRUE(capture.lines().empty()); // not retried before the next change
    recorder.closeFile();
    EXPECT_TRUE(records().empty());
}

TEST_F(Recorder, GetFileNameListsMainThenStationsByMMSI)
{
    EXPECT_EQ(recorder.getFileName(), QString());
    setAISMode();
    add({channelManagement(1, 0)});
    recorder.saveExpiredPendingChanges(now());
    // Closed between writes, the result file is still the recorder's file.
    EXPECT_EQ(recorder.getFileName(), mainPath());

    add({report(2, 1, 366999000, "WDC1234"), report(3, 2, 211234567, "DABC")});
    EXPECT_EQ(recorder.getFileName(), mainPath()); // station files not created yet
    recorder.saveExpiredPendingChanges(now());
    EXPECT_EQ(recorder.getFileName(),
              QStringList({mainPath(), stationPath(211234567), stationPath(366999000)}).join('\n'));
    EXPECT_TRUE(stationPath(211234567).contains(
        QRegularExpression("/AISStation_211234567_\\d{8}_\\d{6}\\.xml$")));
    recorder.closeFile();
    EXPECT_EQ(recorder.getFileName(), QString());
}

// -- Settings --

template <typename Settings>
QString complaint(QString const& xml)
{
    Settings settings;
    EXPECT_FALSE(settings.SetXmlString(xml, 0));
    return settings.LastXmlError();
}

TEST(RecorderSettings, BadSettingsAreTracedWithTheOperationAndLeaveTheSettingsAlone)
{
    using Setter = void (RecorderModel::*)(QString const&);
    // parseError: the library's own complaint about the text.
    // clang-format off
    struct Case { QString operation; QString xml; Setter set; QString (*parseError)(QString const&); }
    const cases[] = {
        {"setAntennaSettings", "<AntennaSettings name=\"HE600\"", &RecorderModel::setAntennaSettings,
         complaint<REPORTKIT::Antenna_Settings>},
        {"setAudioSettings", "<FFM_Settings frequency=\"1\"/>", &RecorderModel::setAudioSettings,
         complaint<REPORTKIT::Audio_Settings>},
        {"setTunerSettings", "tuner please", &RecorderModel::setTunerSettings,
         complaint<REPORTKIT::Tuner_Settings>},
        {"setFFMSettings", "<FFM_Settings frequency=\"VHF\"/>", &RecorderModel::setFFMSettings,
         complaint<REPORTKIT::FFM_Settings>},
    };
    // clang-format on
    for (auto const& c : cases) {
        SCOPED_TRACE(c.operation);
        Rig r;
        r.recorder.setTunerSettings(QStringLiteral(
            "<Tuner_Settings device=\"EB500\"><AntennaSettings name=\"HE600\" port=\"1\"/>"
            "<Audio_Settings mode=\"FM\"/><FFM_Settings "
            "frequency=\"161975000\"/></Tuner_Settings>"));
        QString const before = r.recorder.getTunerSettings().GetXmlString();
        zelkotest::TraceCapture capture(0x20);
        (r.recorder.*c.set)(c.xml);
        ASSERT_EQ(capture.lines().size(), 1u) << capture.messages().join('\n');
        EXPECT_EQ(capture.lines()[0].message, c.operation + ": " + c.parseError(c.xml));
        EXPECT_TRUE(capture.lines()[0].message.contains(QStringLiteral(": line ")));
        EXPECT_EQ(capture.lines()[0].sourceFile, Source + QStringLiteral("recordermodel"));
        EXPECT_EQ(r.recorder.getTunerSettings().GetXmlString(), before);
        EXPECT_EQ(r.recorder.getFrequency(), 161975000.0);
    }
}

TEST_F(Recorder, GoodSettingsGoIntoTheKeptTuner)
{
    recorder.setTunerSettings(
        QStringLiteral("<Tuner_Settings device=\"EB500\"><FFM_Settings frequency=\"161975000\"/>"
                       "</Tuner_Settings>"));
    EXPECT_EQ(recorder.getFrequency(), 161975000.0);
    recorder.setAudioSettings(QStringLiteral("<Audio_Settings mode=\"FM\" sampleRate=\"48000\"/>"));
    recorder.setFFMSettings(QStringLiteral("<FFM_Settings frequency=\"162025000\"/>"));
    REPORTKIT::Tuner_Settings const& tuner = recorder.getTunerSettings();
    EXPECT_EQ(tuner.GetDevice(), QStringLiteral("EB500"));
    EXPECT_EQ(tuner.GetAudio_Settings().GetSampleRate(), 48000);
    EXPECT_EQ(tuner.GetFFM_Settings().GetFrequency().GetValue(), 162025000.0);
    EXPECT_EQ(recorder.getFrequency(), 162025000.0);
    EXPECT_EQ(recorder.getXmlFile().getFrequency(), 162025000.0);

    // The kept tuner does not validate, and so neither does its antenna; a freshly read
    // antenna would. An equal antenna must therefore leave the kept object as it is.
    QString const he600 = QStringLiteral("<AntennaSettings name=\"HE600\" port=\"1\"/>");
    recorder.setTunerSettings("<Tuner_Settings>" + he600 + "</Tuner_Settings>");
    ASSERT_FALSE(recorder.getTunerSettings().GetAntennaSettings().GetValidate());
    recorder.setAntennaSettings(he600);
    EXPECT_FALSE(recorder.getTunerSettings().GetAntennaSettings().GetValidate());
    QString const hf = QStringLiteral("<AntennaSettings name=\"HF rod\" port=\"2\"/>");
    recorder.setAntennaSettings(hf);
    REPORTKIT::Antenna_Settings expected;
    ASSERT_TRUE(expected.SetXmlString(hf, 0));
    EXPECT_TRUE(recorder.getTunerSettings().GetAntennaSettings() == expected);
}

TEST_F(Recorder, CurrentInfoRecordsTunerAndDemodulatorSettings)
{
    recorder.setTunerSettings(
        QStringLiteral("<Tuner_Settings device=\"EB500\"><FFM_Settings frequency=\"161975000\"/>"
                       "</Tuner_Settings>"));
    setAISMode();
    recorder.setCurrentTransmission(new Transmission(transmission({})));
    Transmission const* current = recorder.getCurrentTransmission();
    ASSERT_EQ(current->GetInfos().size(), 1);
    Info const& info = *current->GetInfos()[0];
    EXPECT_EQ(info.GetTimestamp(), T0);
    ASSERT_EQ(info.GetItems().size(), 2);
    EXPECT_EQ(info.GetItems()[0].name, QStringLiteral("Tuner_Settings"));
    EXPECT_EQ(info.GetItems()[0].value, recorder.getTunerSettings().GetXmlString());
    EXPECT_EQ(info.GetItems()[1].name, QStringLiteral("Demodulator_Settings"));
    EXPECT_EQ(info.GetItems()[1].value, recorder.getDemodulatorSettings().GetXmlString());
    EXPECT_TRUE(info.GetItems()[1].value.contains(QStringLiteral("transmissionSystem=\"AIS\"")));

    recorder.addCurrentInfo(T0, false); // same time: already recorded
    EXPECT_EQ(current->GetInfos().size(), 1);
    recorder.addCurrentInfo(T0.addSecs(1), false);
    EXPECT_EQ(current->GetInfos().size(), 2);
}

// -- Driven by hand, as a host would --

// File names carry the local creation time; the golden copies must not.
QString normalisedName(QString name)
{
    return name.replace(QRegularExpression(QStringLiteral("_\\d{8}_\\d{6}")),
                        QStringLiteral("_yyyyMMdd_hhmmss"));
}

QString const JobSettingsXml = QStringLiteral(
    "<JobSettings name=\"AIS watch\">"
    "<Tuner_Settings device=\"EB500\" attenuation=\"0\">"
    "<AntennaSettings name=\"HE309\" type=\"Active dipole\" port=\"1\"/>"
    "<Audio_Settings mode=\"FM\" sampleRate=\"48000\"/>"
    "<FFM_Settings frequency=\"161975000\" bandwidth=\"25000\"/>"
    "</Tuner_Settings>"
    "<Demodulator_Settings mode=\"FM\" bandwidth=\"25000\" transmissionSystem=\"AIS\"/>"
    "</JobSettings>");

TEST(RecorderByHand, ResultFileAndStationFilesValidateAndMatchTheGoldenCopies)
{
    Clock::Override const clock(T0.addSecs(75));
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    FileInfoList files;
    {
        RecorderModel recorder(&files);
        JobSpec::Settings settings;
        ASSERT_TRUE(settings.SetXmlString(JobSettingsXml, 0)) << settings.LastXmlError();
        recorder.setDirectoryPath(dir.path());
        recorder.setFileCode(QStringLiteral("TransmissionSystem"));
        recorder.setParameter(settings);
        ASSERT_TRUE(recorder.isAISMode());

        QStringList stationXml;
        recorder.addTransmission(
            transmission({report(1, 1, 211234567, "DABC", NorthEast),
                          report(2, 2, 366999000, "WDC1234", u("N 40°42'46'' W 74°0'22''")),
                          channelManagement(3, 3),
                          report(4, 20, 211234567, None, u("N 53°32'40.5'' E 9°57'30''"))},
                         {}, 20),
            stationXml);
        EXPECT_EQ(stationXml.size(), 3);
        recorder.closeFile();
    }

    QStringList const written = filesIn(dir.path());
    ASSERT_EQ(written.size(), 3) << written.join(' ');
    QStringList listing;
    for (REPORTKIT::Text const& record : files.getResults().GetText()) {
        EXPECT_TRUE(record.GetMetadata().GetStopTime().isValid());
        listing << QStringLiteral("%1 %2 %3")
                       .arg(record.GetMetadata().GetDetail().GetCode(),
                            normalisedName(QFileInfo(record.GetURL()).fileName()))
                       .arg(record.GetMetadata().GetDetail().GetFrequency().GetValue(), 0, 'f', 0);
    }
    EXPECT_EQ(zelkotest::compareWithGolden((listing.join('\n') + '\n').toUtf8(),
                                           QStringLiteral("recordermodel/by-hand-files.txt")),
              QString());
    for (QString const& name : written) {
        QString const path = dir.filePath(name);
        EXPECT_EQ(zelkotest::validateXmlFile(path, Schema), QString()) << name;
        QString const golden = normalisedName(name)
                                   .remove(QStringLiteral("_yyyyMMdd_hhmmss"))
                                   .prepend(QStringLiteral("recordermodel/by-hand-"));
        EXPECT_EQ(zelkotest::compareWithGolden(readAll(path), golden), QString());
    }
}

} // namespace
