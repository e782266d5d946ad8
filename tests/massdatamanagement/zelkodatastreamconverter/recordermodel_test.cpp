// AIS station reports (scanAISData) and the recorder model: station merging and expiry,
// pending-change timing, channel filtering, file names, settings, info records, and a result
// file with station files written as a host drives the recorder.

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <functional>
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
#include <support/schemavalidator.h>
#include <support/tracecapture.h>
#include <vector>

inline std::ostream& operator<<(std::ostream& os, QString const& text)
{
    return os << text.toStdString();
}
inline void PrintTo(QString const& text, std::ostream* os)
{
    *os << '"' << text.toStdString() << '"';
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
QString const ModelSource =
    QStringLiteral("massdatamanagement/zelkodatastreamconverter/nerikresultmodel");

QString u(char const* utf8)
{
    return QString::fromUtf8(utf8);
}

// Position texts as the PDU decoder writes them (degree sign, minute and second marks).
QString const NorthEast = u("N 53°32'10.5'' E 9°58'0''");   // 53.53625, 9.966667
QString const SouthWestFar = u("S 33°51'0'' W 151°12'0''"); // longitude above 90: kept out

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
PDUDataBlock report(int id, qint64 secondsAfterT0, int mmsi, QString const& sign = QString(),
                    QString const& where = QString())
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
    return pdu(id, T0.addSecs(secondsAfterT0), QStringLiteral("AIS Position Report"), fields);
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

// ---- scanAISData ---------------------------------------------------------------------------

struct StationValues
{
    int id;
    QString name;
    double latitude;
    double longitude;
    bool timeFromBlock; // false: the earlier time stamp is still there
};

// What the station holds before each scan, so that a row can show what was left alone.
StationValues const Before{7, QStringLiteral("OLD"), 1.5, 2.5, false};
QDateTime const BeforeTime = T0.addSecs(-3600);

struct ScanCase
{
    char const* name;
    QString blockName;
    std::vector<Field> fields;
    int result;
    StationValues after;
};

class ScanAISData : public ::testing::TestWithParam<ScanCase>
{
};

TEST_P(ScanAISData, FillsTheStationOnlyFromTheFieldsAfterTheMMSI)
{
    ScanCase const& c = GetParam();
    PDUDataBlock const block = pdu(5, T0, c.blockName, c.fields);
    JobSpec::Station station;
    station.SetValidate(false);
    station.SetStationID(Before.id);
    station.SetName(Before.name);
    station.SetLatitude(Before.latitude);
    station.SetLongitude(Before.longitude);
    station.SetTimeStamp(BeforeTime);

    NerikResultModel model;
    EXPECT_EQ(model.scanAISData(&block, station), c.result);
    EXPECT_EQ(station.GetStationID(), c.after.id);
    EXPECT_EQ(station.GetName(), c.after.name);
    EXPECT_NEAR(station.GetLatitude(), c.after.latitude, 5e-7);
    EXPECT_NEAR(station.GetLongitude(), c.after.longitude, 5e-7);
    EXPECT_EQ(station.GetTimeStamp(), c.after.timeFromBlock ? T0 : BeforeTime);
}

QString const AISReport = QStringLiteral("AIS Position Report");
StationValues scanned(int id, QString const& name = Before.name, double lat = Before.latitude,
                      double lon = Before.longitude)
{
    return {id, name, lat, lon, true};
}
QString const Old = Before.name;

// clang-format off
INSTANTIATE_TEST_SUITE_P(Rows, ScanAISData, ::testing::Values(
    ScanCase{"lower_case_ais_name", "ais Position Report", {mmsiField("211234567"), position(NorthEast)}, -1, Before},
    ScanCase{"AIS_not_at_the_start", "Position AIS", {mmsiField("211234567")}, -1, Before},
    ScanCase{"no_MMSI_field", AISReport, {callSign("DABC"), position(NorthEast)}, -1, Before},
    ScanCase{"MMSI_name_in_lower_case", AISReport, {Field("mmsi", "int", "211234567"), position(NorthEast)}, -1, Before},
    ScanCase{"MMSI_last_sets_only_ID_and_time", AISReport, {callSign("DABC"), position(NorthEast), mmsiField("211234567")}, 211234567, scanned(211234567)},
    ScanCase{"north_east_example", AISReport, {mmsiField("211234567"), position(NorthEast)}, 211234567, scanned(211234567, Old, 53.536250, 9.966667)},
    ScanCase{"south_west_beyond_90_keeps_the_longitude", AISReport, {mmsiField("503000001"), position(SouthWestFar)}, 503000001, scanned(503000001, Old, -33.85, Before.longitude)},
    ScanCase{"west_within_90_is_negative", AISReport, {mmsiField("1"), position(u("N 10°0'0'' W 45°30'0''"))}, 1, scanned(1, Old, 10.0, -45.5)},
    ScanCase{"seconds_missing_rejected", AISReport, {mmsiField("211234567"), position(u("N 53°32'"))}, 211234567, scanned(211234567)},
    ScanCase{"call_sign_before_MMSI_ignored", AISReport, {callSign("EARLY"), mmsiField("211234567")}, 211234567, scanned(211234567)},
    ScanCase{"call_sign_after_MMSI", AISReport, {mmsiField("211234567"), callSign("DABC")}, 211234567, scanned(211234567, "DABC")},
    ScanCase{"non_numeric_MMSI_gives_0", AISReport, {mmsiField("unknown")}, 0, scanned(0)},
    ScanCase{"exactly_90_degrees_accepted", AISReport, {mmsiField("2"), position(u("N 90°0'0'' E 90°0'0''"))}, 2, scanned(2, Old, 90.0, 90.0)},
    ScanCase{"one_second_past_90_rejected", AISReport, {mmsiField("2"), position(u("N 90°0'1'' E 90°0'1''"))}, 2, scanned(2)},
    ScanCase{"zero_degrees_accepted", AISReport, {mmsiField("3"), position(u("S 0°0'0'' W 0°0'0''"))}, 3, scanned(3, Old, 0.0, 0.0)},
    ScanCase{"decimal_minutes", AISReport, {mmsiField("4"), position(u("N 53°32.5'0'' E 9°0'36''"))}, 4, scanned(4, Old, 53.0 + 32.5 / 60.0, 9.01)},
    ScanCase{"full_stop_after_a_letter_skipped", AISReport, {mmsiField("4"), position(u("N. 53°32'10.5'' E. 9°58'0''"))}, 4, scanned(4, Old, 53.536250, 9.966667)},
    // Without a blank the second mark and the next letter form one token ("''E"), so
    // neither coordinate has its marks where they belong.
    ScanCase{"hemisphere_glued_to_the_second_mark", AISReport, {mmsiField("5"), position(u("N 53°32'10.5''E 9°58'0''"))}, 5, scanned(5)},
    ScanCase{"type_text_is_case_sensitive", AISReport, {mmsiField("6"), Field("Position", "Position", NorthEast)}, 6, scanned(6)},
    ScanCase{"degree_sign_missing", AISReport, {mmsiField("6"), position(u("N 53 32'10.5'' E 9 58'0''"))}, 6, scanned(6)}),
    [](auto const& info) { return std::string(info.param.name); });
// clang-format on

struct TraceCase
{
    char const* name;
    std::vector<Field> fields;
    QString expected; // after "scanAISData: 2024-05-17 08:30:00.250 "
};

class ScanAISDataTrace : public ::testing::TestWithParam<TraceCase>
{
};

TEST_P(ScanAISDataTrace, IsTheInformationalTextAtLine1014)
{
    TraceCase const& c = GetParam();
    PDUDataBlock const block = pdu(5, T0.addMSecs(250), AISReport, c.fields);
    JobSpec::Station station;
    station.SetValidate(false);
    NerikResultModel model;

    zelkotest::TraceCapture capture(0x40);
    model.scanAISData(&block, station);
    ASSERT_EQ(capture.lines().size(), 1u);
    EXPECT_EQ(capture.lines()[0].message,
              QStringLiteral("scanAISData: 2024-05-17 08:30:00.250 ") + c.expected);
    EXPECT_EQ(capture.lines()[0].sourceFile, ModelSource);
    EXPECT_EQ(capture.lines()[0].line, 1014);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ScanAISDataTrace,
    ::testing::Values(
        // The station ID appears as the one character of its low 16 bits (0x2F07 here).
        TraceCase{"full_report",
                  {mmsiField("211234567"), callSign("DABC"), position(NorthEast)},
                  u("MMSI=211234567 CallSign=DABC position=N 53°32'10.5'' E 9°58'0'' "
                    "StationID=\u2F07 StationName=DABC latitude=53.5362 longitude=9.96667")},
        TraceCase{"ID_65_is_the_letter_A",
                  {mmsiField("65")},
                  u("MMSI=65 StationID=A StationName= latitude=0 longitude=0")},
        TraceCase{"only_the_low_16_bits",
                  {mmsiField("65602")}, // 0x10042
                  u("MMSI=65602 StationID=B StationName= latitude=0 longitude=0")},
        TraceCase{"non_numeric_MMSI_as_character_0",
                  {mmsiField("n/a")},
                  QStringLiteral("MMSI=n/a StationID=") + QChar(0) +
                      QStringLiteral(" StationName= latitude=0 longitude=0")},
        TraceCase{"rejected_longitude_still_listed",
                  {mmsiField("66"), position(SouthWestFar)},
                  u("MMSI=66 position=S 33°51'0'' W 151°12'0'' StationID=B StationName= "
                    "latitude=-33.85 longitude=0")}),
    [](auto const& info) { return std::string(info.param.name); });

TEST(ScanAISDataTraceMask, NothingWithoutTheInformationalBit)
{
    PDUDataBlock const block = pdu(5, T0, AISReport, {mmsiField("211234567")});
    JobSpec::Station station;
    NerikResultModel model;
    zelkotest::TraceCapture capture(0x20);
    EXPECT_EQ(model.scanAISData(&block, station), 211234567);
    EXPECT_TRUE(capture.lines().empty());
}

// ---- RecorderModel -------------------------------------------------------------------------

struct ClosedLog : NerikResultCallback
{
    int closed = 0;
    void onTransmissionClosed(Transmission*) override { ++closed; }
};

class Recorder : public ::testing::Test
{
public: // the table rows drive the fixture from outside
    Clock::Override clock{T0};
    QTemporaryDir dir;
    FileInfoList files;
    RecorderModel recorder{&files};
    QStringList stationXml;

    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        recorder.setDirectoryPath(dir.path());
    }

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

// -- Station entries --

struct Report
{
    QString sign;  // null: no call sign field
    QString where; // null: no position field
};

struct MergeCase
{
    char const* name;
    std::vector<Report> reports;
    bool nameSet;
    QString name2;
    bool positionSet;
    double latitude;
    double longitude;
};

class StationMerge : public Recorder, public ::testing::WithParamInterface<MergeCase>
{
};

TEST_P(StationMerge, NameWhenSetPositionWhenBothSet)
{
    MergeCase const& c = GetParam();
    setAISMode();
    QVector<int> ids;
    for (std::size_t i = 0; i < c.reports.size(); ++i) {
        int const id = int(i) + 1;
        ids << id;
        // Each report arrives as its own update of the same transmission, so only the new
        // block must be scanned.
        add({report(id, qint64(i) * 10, 211234567, c.reports[i].sign, c.reports[i].where)});
    }
    auto const entry = recorder.getAISRecorderData(211234567);
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
    EXPECT_EQ(std::size_t(stationXml.size()), c.reports.size());
}

QString const None;
QString const SouthWestNear = u("S 33°51'0'' W 70°0'0''");

// clang-format off
INSTANTIATE_TEST_SUITE_P(Rows, StationMerge, ::testing::Values(
    MergeCase{"name_taken_when_set", {{"DABC", None}}, true, "DABC", false, 0, 0},
    MergeCase{"name_kept_when_a_later_report_has_none", {{"DABC", None}, {None, None}}, true, "DABC", false, 0, 0},
    MergeCase{"later_name_replaces", {{"DABC", None}, {"DXYZ", None}}, true, "DXYZ", false, 0, 0},
    MergeCase{"empty_call_sign_is_a_name", {{"DABC", None}, {"", None}}, true, "", false, 0, 0},
    MergeCase{"position_taken_when_both_set", {{None, NorthEast}}, false, None, true, 53.53625, 9.966667},
    MergeCase{"latitude_alone_never_taken", {{None, SouthWestFar}}, false, None, false, 0, 0},
    MergeCase{"latitude_alone_keeps_the_earlier_position", {{None, NorthEast}, {None, SouthWestFar}}, false, None, true, 53.53625, 9.966667},
    MergeCase{"later_full_position_replaces", {{None, NorthEast}, {None, SouthWestNear}}, false, None, true, -33.85, -70.0}),
    [](auto const& info) { return std::string(info.param.name); });
// clang-format on

TEST_F(Recorder, StationsOnlyInAISMode)
{
    recorder.setDemodulatorSettings(
        QStringLiteral("<Demodulator_Settings transmissionSystem=\"POCSAG\"/>"));
    EXPECT_FALSE(recorder.isAISMode());
    add({report(1, 0, 211234567, "DABC", NorthEast)});
    EXPECT_EQ(recorder.getAISStationCount(), 0);
    EXPECT_TRUE(stationXml.isEmpty());
    EXPECT_EQ(recorder.getXmlFile().getDueTime(), now().addSecs(-60));
}

TEST_F(Recorder, BlockWithoutMMSIGoesOnlyToTheMainFile)
{
    setAISMode();
    add({channelManagement(1, 0)});
    EXPECT_EQ(recorder.getAISStationCount(), 0);
    EXPECT_TRUE(stationXml.isEmpty());
    ASSERT_TRUE(recorder.getXmlFile().hasPendingChanges());
    EXPECT_EQ(recorder.getXmlFile().getDueTime(), now().addSecs(-60));

    recorder.saveExpiredPendingChanges(now());
    ASSERT_FALSE(recorder.getXmlFile().hasPendingChanges());

    // A station report, by contrast, marks its station file and leaves the main file alone.
    add({report(2, 1, 211234567, "DABC", NorthEast)});
    EXPECT_FALSE(recorder.getXmlFile().hasPendingChanges());
    ASSERT_EQ(recorder.getAISStationCount(), 1);
    ASSERT_EQ(stationXml.size(), 1);
    JobSpec::Station fromXml;
    ASSERT_TRUE(fromXml.SetXmlString(stationXml[0], 0)) << fromXml.LastXmlError();
    EXPECT_EQ(fromXml.GetStationID(), 211234567);
    EXPECT_EQ(fromXml.GetName(), QStringLiteral("DABC"));
}

struct ExpiryCase
{
    char const* name;
    int pollAfterSeconds;
    bool closed;
};

class StationExpiry : public Recorder, public ::testing::WithParamInterface<ExpiryCase>
{
};

TEST_P(StationExpiry, SilentStationClosedAfter180Seconds)
{
    ExpiryCase const& c = GetParam();
    setAISMode();
    add({report(1, 0, 211234567, "DABC", NorthEast)});
    recorder.saveExpiredPendingChanges(now()); // first write of the station file
    QString const path = stationPath(211234567);
    ASSERT_FALSE(path.isEmpty());

    zelkotest::TraceCapture capture(0x60);
    Clock::advance(qint64(c.pollAfterSeconds) * 1000);
    recorder.saveExpiredPendingChanges(now());
    EXPECT_EQ(recorder.getAISStationCount(), c.closed ? 0 : 1);
    EXPECT_EQ(capture.count(QStringLiteral("AISRecorderData::close 211234567")), c.closed ? 1 : 0);
    // Completed files are reported with a stop time.
    int completed = 0;
    for (REPORTKIT::Text const& record : records()) {
        if (record.GetURL() == path && record.GetMetadata().GetStopTime().isValid()) {
            ++completed;
        }
    }
    EXPECT_EQ(completed, c.closed ? 1 : 0);
    EXPECT_EQ(zelkotest::validateXmlFile(path, Schema), QString());
}

INSTANTIATE_TEST_SUITE_P(Rows, StationExpiry,
                         ::testing::Values(ExpiryCase{"after_179_s", 179, false},
                                           ExpiryCase{"after_180_s", 180, false},
                                           ExpiryCase{"after_181_s", 181, true}),
                         [](auto const& info) { return std::string(info.param.name); });

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
    EXPECT_EQ(
        capture.count(QStringLiteral("AISRecorderData::saveFile 211234567 file %1").arg(path)), 1);

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
    EXPECT_EQ(
        capture.count(QStringLiteral("AISRecorderData::saveFile 211234567 file %1").arg(path)), 1);

    NerikResultData written;
    ASSERT_TRUE(written.LoadFile(path)) << written.GetErrorText();
    ASSERT_EQ(written.GetTransmission().size(), 1);
    EXPECT_EQ(written.GetTransmission()[0]->GetPDUDataBlocks().size(), 3);
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

    NerikResultData written;
    ASSERT_TRUE(written.LoadFile(path)) << written.GetErrorText();
    EXPECT_EQ(written.GetTransmission()[0]->GetPDUDataBlocks().size(), 1);
}

// -- Pending changes of the main result file --

struct PendingCase
{
    char const* name;
    // "c": a new current transmission; "d": new data; "w": new data, written at once;
    // "+N": the clock N seconds on.
    char const* steps;
    qint64 dueAfterT0Seconds;
};

class PendingRows : public Recorder, public ::testing::WithParamInterface<PendingCase>
{
};

TEST_P(PendingRows, DueTime)
{
    int nextId = 1;
    for (QString const& step : QString::fromLatin1(GetParam().steps).split(' ')) {
        if (step.startsWith('+')) {
            Clock::advance(step.mid(1).toLongLong() * 1000);
        } else if (step == QLatin1String("c")) {
            recorder.setCurrentTransmission(
                new Transmission(transmission({channelManagement(nextId++, 0)})));
        } else {
            add({channelManagement(nextId++, 0)});
            if (step == QLatin1String("w")) {
                recorder.saveExpiredPendingChanges(now());
                ASSERT_FALSE(mainPath().isEmpty());
            }
        }
    }
    ASSERT_TRUE(recorder.getXmlFile().hasPendingChanges());
    QDateTime const due = T0.addSecs(GetParam().dueAfterT0Seconds);
    EXPECT_EQ(recorder.getXmlFile().getDueTime(), due);
    EXPECT_FALSE(recorder.getXmlFile().hasExpiredPendingChanges(due.addMSecs(-1)));
    EXPECT_TRUE(recorder.getXmlFile().hasExpiredPendingChanges(due));
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Rows, PendingRows, ::testing::Values(
    PendingCase{"setCurrentTransmission_10_s", "c", 10},
    PendingCase{"new_data_without_a_file_due_at_once", "d", -60},
    PendingCase{"new_data_with_a_file_30_s", "w +5 d", 35},
    PendingCase{"first_change_wins_with_a_file", "w +5 d +20 d", 35},
    PendingCase{"due_at_once_does_not_advance_a_pending_change", "c +2 d", 10},
    PendingCase{"setCurrentTransmission_keeps_an_earlier_due_time", "d c", -60},
    PendingCase{"written_then_setCurrentTransmission_10_s", "w +3 c", 13}),
    [](auto const& info) { return std::string(info.param.name); });
// clang-format on

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
    NerikResultData first;
    ASSERT_TRUE(first.LoadFile(path));
    EXPECT_EQ(first.GetTransmission()[0]->GetPDUDataBlocks().size(), 1);

    recorder.saveExpiredPendingChanges(T0.addSecs(31));
    NerikResultData second;
    ASSERT_TRUE(second.LoadFile(path)) << second.GetErrorText();
    EXPECT_EQ(second.GetTransmission()[0]->GetPDUDataBlocks().size(), 2);
    EXPECT_EQ(filesIn(dir.path()).size(), 1); // rewritten, never split
    EXPECT_EQ(zelkotest::validateXmlFile(path, Schema), QString());
}

// -- Channel selection --

struct ChannelCase
{
    char const* name;
    QString selection; // empty: none set
    std::vector<int> written;
};

class ChannelFilter : public Recorder, public ::testing::WithParamInterface<ChannelCase>
{
};

TEST_P(ChannelFilter, LeavesUnselectedChannelsOutOfTheFileOnly)
{
    ChannelCase const& c = GetParam();
    if (!c.selection.isEmpty()) {
        recorder.setChannelSelection(c.selection);
    }
    add({}, {textBlock(0, QStringLiteral("ZCZC"), 1), textBlock(1, QStringLiteral("NNNN"), 2)});
    recorder.saveFile();
    QString const path = mainPath();
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
    EXPECT_EQ(recorder.getCurrentTransmission()->GetDataBlock().size(), 2); // model keeps all
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ChannelFilter,
    ::testing::Values(
        ChannelCase{"no_selection_writes_every_channel", QString(), {0, 1}},
        ChannelCase{"channel_1_selected",
                    QStringLiteral("<ChannelSelection><Value>1</Value></ChannelSelection>"),
                    {1}},
        ChannelCase{"every_channel_excluded",
                    QStringLiteral("<ChannelSelection><Value>300</Value></ChannelSelection>"),
                    {}}),
    [](auto const& info) { return std::string(info.param.name); });

// -- Closing --

struct NoDataCase
{
    char const* name;
    std::function<void(RecorderModel&)> before;
    int closedTransmissions;
};

class NoData : public Recorder, public ::testing::WithParamInterface<NoDataCase>
{
};

TEST_P(NoData, CloseWritesNothingButStillClosesAndClears)
{
    ClosedLog log;
    recorder.setCallback(&log);
    GetParam().before(recorder);
    recorder.closeFile();
    EXPECT_TRUE(filesIn(dir.path()).isEmpty());
    EXPECT_TRUE(records().empty());
    EXPECT_EQ(recorder.getCurrentTransmission(), nullptr);
    EXPECT_TRUE(recorder.getResultData()->GetTransmission().isEmpty());
    EXPECT_EQ(recorder.getFileName(), QString());
    EXPECT_EQ(log.closed, GetParam().closedTransmissions);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, NoData,
    ::testing::Values(NoDataCase{"no_transmission",
                                 [](RecorderModel& r) { r.setCurrentTransmission(nullptr); }, 0},
                      NoDataCase{"transmission_without_changes",
                                 [](RecorderModel& r) { r.createTransmission(T0); }, 1}),
    [](auto const& info) { return std::string(info.param.name); });

TEST_F(Recorder, CloseWritesPendingChangesCompletesAndClears)
{
    ClosedLog log;
    recorder.setCallback(&log);
    recorder.setCurrentTransmission(new Transmission(transmission({channelManagement(1, 0)})));
    recorder.closeFile();
    QStringList const written = filesIn(dir.path());
    ASSERT_EQ(written.size(), 1);
    EXPECT_EQ(written[0], QStringLiteral("NerikResultData_%1.xml")
                              .arg(Clock::currentDateTime().toString("yyyyMMdd_hhmmss")));
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

// -- File names --

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
    QString const expected =
        QStringList{mainPath(), stationPath(211234567), stationPath(366999000)}.join('\n');
    EXPECT_EQ(recorder.getFileName(), expected);
    EXPECT_TRUE(stationPath(211234567).contains(QRegularExpression("/AISStation_211234567_"
                                                                   "\\d{8}_\\d{6}\\.xml$")));
    recorder.closeFile();
    EXPECT_EQ(recorder.getFileName(), QString());
}

// -- Settings --

struct BadSettingsCase
{
    char const* name;
    QString operation;
    QString xml;
    std::function<void(RecorderModel&, QString const&)> set;
    std::function<QString(QString const&)> parseError; // the library's own complaint
};

template <typename Settings>
QString complaint(QString const& xml)
{
    Settings settings;
    EXPECT_FALSE(settings.SetXmlString(xml, 0));
    return settings.LastXmlError();
}

class BadSettings : public Recorder, public ::testing::WithParamInterface<BadSettingsCase>
{
};

TEST_P(BadSettings, TracedWithTheOperationAndLeaveTheSettingsAlone)
{
    BadSettingsCase const& c = GetParam();
    recorder.setTunerSettings(QStringLiteral(
        "<Tuner_Settings device=\"EB500\"><AntennaSettings name=\"HE600\" port=\"1\"/>"
        "<Audio_Settings mode=\"FM\"/><FFM_Settings frequency=\"161975000\"/></Tuner_Settings>"));
    QString const before = recorder.getTunerSettings().GetXmlString();

    zelkotest::TraceCapture capture(0x20);
    c.set(recorder, c.xml);
    ASSERT_EQ(capture.lines().size(), 1u) << capture.messages().join('\n').toStdString();
    EXPECT_EQ(capture.lines()[0].message, c.operation + QStringLiteral(": ") + c.parseError(c.xml));
    EXPECT_TRUE(capture.lines()[0].message.contains(QStringLiteral(": line ")));
    EXPECT_EQ(capture.lines()[0].sourceFile,
              QStringLiteral("massdatamanagement/zelkodatastreamconverter/recordermodel"));
    EXPECT_EQ(recorder.getTunerSettings().GetXmlString(), before);
    EXPECT_EQ(recorder.getFrequency(), 161975000.0);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, BadSettings,
    ::testing::Values(
        BadSettingsCase{"antenna_broken_xml", "setAntennaSettings",
                        "<AntennaSettings name=\"HE600\"",
                        [](RecorderModel& r, QString const& x) { r.setAntennaSettings(x); },
                        complaint<REPORTKIT::Antenna_Settings>},
        BadSettingsCase{"audio_wrong_element", "setAudioSettings",
                        "<FFM_Settings frequency=\"1\"/>",
                        [](RecorderModel& r, QString const& x) { r.setAudioSettings(x); },
                        complaint<REPORTKIT::Audio_Settings>},
        BadSettingsCase{"tuner_not_xml", "setTunerSettings", "tuner please",
                        [](RecorderModel& r, QString const& x) { r.setTunerSettings(x); },
                        complaint<REPORTKIT::Tuner_Settings>},
        BadSettingsCase{"ffm_frequency_not_a_number", "setFFMSettings",
                        "<FFM_Settings frequency=\"VHF\"/>",
                        [](RecorderModel& r, QString const& x) { r.setFFMSettings(x); },
                        complaint<REPORTKIT::FFM_Settings>}),
    [](auto const& info) { return std::string(info.param.name); });

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
}

TEST_F(Recorder, AntennaReplacedOnlyWhenDifferent)
{
    QString const he600 = QStringLiteral("<AntennaSettings name=\"HE600\" port=\"1\"/>");
    recorder.setTunerSettings(QStringLiteral("<Tuner_Settings>") + he600 +
                              QStringLiteral("</Tuner_Settings>"));
    // The kept tuner does not validate, and so neither does its antenna; a freshly read
    // antenna would. An equal antenna must therefore leave the kept object as it is.
    ASSERT_FALSE(recorder.getTunerSettings().GetAntennaSettings().GetValidate());
    recorder.setAntennaSettings(he600);
    EXPECT_FALSE(recorder.getTunerSettings().GetAntennaSettings().GetValidate());

    QString const hf = QStringLiteral("<AntennaSettings name=\"HF rod\" port=\"2\"/>");
    recorder.setAntennaSettings(hf);
    REPORTKIT::Antenna_Settings expected;
    ASSERT_TRUE(expected.SetXmlString(hf, 0));
    EXPECT_TRUE(recorder.getTunerSettings().GetAntennaSettings() == expected);
}

// -- Info records --

TEST_F(Recorder, CurrentInfoRecordsTunerAndDemodulatorSettings)
{
    recorder.setTunerSettings(
        QStringLiteral("<Tuner_Settings device=\"EB500\"><FFM_Settings frequency=\"161975000\"/>"
                       "</Tuner_Settings>"));
    recorder.setDemodulatorSettings(
        QStringLiteral("<Demodulator_Settings mode=\"FM\" transmissionSystem=\"AIS\"/>"));
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
QString normalisedName(QString const& name)
{
    QString result = name;
    result.replace(QRegularExpression(QStringLiteral("_\\d{8}_\\d{6}")),
                   QStringLiteral("_yyyyMMdd_hhmmss"));
    return result;
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
    ASSERT_EQ(written.size(), 3) << written.join(' ').toStdString();
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
        EXPECT_EQ(zelkotest::validateXmlFile(path, Schema), QString()) << name.toStdString();
        QString const golden = normalisedName(name)
                                   .replace(QStringLiteral("_yyyyMMdd_hhmmss"), QString())
                                   .prepend(QStringLiteral("recordermodel/by-hand-"));
        EXPECT_EQ(zelkotest::compareWithGolden(readAll(path), golden), QString());
    }
}

} // namespace
