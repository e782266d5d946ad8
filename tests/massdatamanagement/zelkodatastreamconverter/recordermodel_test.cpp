// The recorder model: station merging and expiry, pending-change timing, channel filtering,
// file names, settings, info records, traced failures, and a result file with station files
// written as a host drives the recorder.

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
#include <nerikresultdataxml/nerikresultdataexception.h>
#include <reportkit/antennasettings.h>
#include <reportkit/audiosettings.h>
#include <reportkit/ffmsettings.h>
#include <reportkit/rgexception.h>
#include <reportkit/tunersettings.h>
#include <support/golden.h>
#include <support/qstringprinter.h>
#include <support/rowname.h>
#include <support/schemavalidator.h>
#include <support/tracecapture.h>
#include <sys/mount.h>
#include <vector>

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
QString const None; // a field left out

// Position texts as the PDU decoder writes them (degree sign, minute and second marks).
QString const NorthEast = QString::fromUtf8("N 53°32'10.5'' E 9°58'0''");   // 53.53625, 9.966667
QString const SouthWestFar = QString::fromUtf8("S 33°51'0'' W 151°12'0''"); // longitude kept out
QString const SouthWestNear = QString::fromUtf8("S 33°51'0'' W 70°0'0''");

PDUDataBlock pdu(int id, qint64 secondsAfterT0, QString const& name,
                 std::vector<Field> const& fields)
{
    PDUDataBlock block;
    block.SetID(id);
    block.SetType(1);
    block.SetTimeStamp(T0.addSecs(secondsAfterT0));
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
    std::vector<Field> fields{Field("MMSI", "int", QString::number(mmsi))};
    if (!sign.isNull()) {
        fields.push_back(Field("Call Sign", "string", sign));
    }
    fields.push_back(Field("Navigation Status", "string", "under way using engine"));
    if (!where.isNull()) {
        fields.push_back(Field("Position", "position", where));
    }
    return pdu(id, secondsAfterT0, QStringLiteral("AIS Position Report"), fields);
}

// An AIS unit without an MMSI field: it belongs to the main result file only.
PDUDataBlock channelManagement(int id, qint64 secondsAfterT0)
{
    return pdu(id, secondsAfterT0, QStringLiteral("AIS Channel Management"),
               {Field("Channel A", "int", "2087"), Field("Channel B", "int", "2088")});
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

QStringList filesIn(QString const& directory)
{
    return QDir(directory).entryList(QDir::Files, QDir::Name);
}

/// What the first transmission of a written result file holds: the IDs of its PDU blocks, or
/// the channels of its text blocks.
std::vector<int> writtenBlocks(QString const& path, bool pdus)
{
    NerikResultData written;
    EXPECT_TRUE(written.LoadFile(path)) << written.GetErrorText().toStdString();
    std::vector<int> blocks;
    for (Transmission const* first : written.GetTransmission().mid(0, 1)) {
        if (pdus) {
            for (PDUDataBlock const* block : first->GetPDUDataBlocks()) {
                blocks.push_back(block->GetID());
            }
        } else {
            for (DataBlock const* block : first->GetDataBlock()) {
                blocks.push_back(block->GetChannel());
            }
        }
    }
    return blocks;
}

/// The line at which a message was traced, or -1.
int lineOf(zelkotest::TraceCapture const& capture, QString const& message)
{
    for (zelkotest::TraceLine const& line : capture.lines()) {
        if (line.message == message) {
            return line.line;
        }
    }
    return -1;
}

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

struct Report
{
    QString sign, where;
};
// clang-format off
struct StationRow { char const* name; std::vector<Report> reports; QString stationName;
                    bool positionSet; double latitude; double longitude; };
// clang-format on
using RecorderStation = testing::TestWithParam<StationRow>;

TEST_P(RecorderStation, NameWhenSetPositionWhenBothSet)
{
    // Each report arrives as its own update of the same transmission, so only the new block
    // must be scanned.
    StationRow const& c = GetParam();
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
    EXPECT_EQ(station.IsNameSet(), !c.stationName.isNull());
    EXPECT_EQ(station.GetName(), c.stationName);
    EXPECT_EQ(station.IsLatitudeSet(), c.positionSet);
    EXPECT_EQ(station.IsLongitudeSet(), c.positionSet);
    if (c.positionSet) {
        EXPECT_NEAR(station.GetLatitude(), c.latitude, 5e-7);
        EXPECT_NEAR(station.GetLongitude(), c.longitude, 5e-7);
    }
    EXPECT_EQ(std::size_t(r.stationXml.size()), c.reports.size());
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Recorder, RecorderStation, testing::Values(
    StationRow{"name_kept_when_a_later_report_has_none", {{"DABC", None}, {None, None}}, "DABC",
               false, 0, 0},
    StationRow{"later_name_replaces", {{"DABC", None}, {"DXYZ", None}}, "DXYZ", false, 0, 0},
    StationRow{"empty_call_sign_is_a_name", {{"DABC", None}, {"", None}}, "", false, 0, 0},
    StationRow{"latitude_alone_never_taken", {{None, SouthWestFar}}, None, false, 0, 0},
    StationRow{"latitude_alone_keeps_the_earlier_position",
               {{None, NorthEast}, {None, SouthWestFar}}, None, true, 53.53625, 9.966667},
    StationRow{"later_full_position_replaces", {{None, NorthEast}, {None, SouthWestNear}}, None,
               true, -33.85, -70.0}),
    zelkotest::RowName());
// clang-format on

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

    // A station report, by contrast, marks its station file and leaves the main file alone;
    // an MMSI of 0 is a station too.
    add({report(3, 1, 211234567, "DABC", NorthEast), report(4, 2, 0)});
    EXPECT_FALSE(recorder.getXmlFile().hasPendingChanges());
    EXPECT_EQ(recorder.getAISStationCount(), 2);
    ASSERT_EQ(stationXml.size(), 2);
    JobSpec::Station fromXml;
    ASSERT_TRUE(fromXml.SetXmlString(stationXml[0], 0));
    EXPECT_EQ(fromXml.GetStationID(), 211234567);
    EXPECT_EQ(fromXml.GetName(), QStringLiteral("DABC"));
}

TEST(RecorderStations, SilentStationClosedAfter180Seconds)
{
    for (int const seconds : {180, 181}) {
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
        EXPECT_EQ(lineOf(capture, QStringLiteral("AISRecorderData::close 211234567")),
                  closed ? 246 : -1);
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
    QString const saved = QStringLiteral("AISRecorderData::saveFile 211234567 file %1").arg(path);
    EXPECT_EQ(capture.count(saved), 1);
    EXPECT_EQ(lineOf(capture, saved), 258);

    Clock::advance(10 * 1000);
    add({report(2, 10, 211234567)});
    Clock::advance(10 * 1000);
    add({report(3, 20, 211234567)}); // does not move the due time
    EXPECT_EQ(recorder.getAISRecorderData(211234567)->getExpiryTime(), T0.addSecs(200));
    capture.clear();
    recorder.saveExpiredPendingChanges(T0.addSecs(39));
    EXPECT_TRUE(capture.lines().empty());
    recorder.saveExpiredPendingChanges(T0.addSecs(40));
    EXPECT_EQ(capture.count(saved), 1);
    EXPECT_EQ(writtenBlocks(path, true), (std::vector<int>{1, 2, 3}));
}

TEST_F(Recorder, UnitSentAgainIsWrittenOnceToItsStationFile)
{
    setAISMode();
    add({report(1, 0, 211234567, "DABC")});
    Transmission again = transmission({report(1, 0, 211234567, "DABC")});
    again.SetStartTime(T0.addSecs(120)); // a new transmission: scanned from its first unit
    EXPECT_TRUE(recorder.addTransmission(again, stationXml));
    EXPECT_EQ(recorder.getAISRecorderData(211234567)->getBlockIDs(), (QVector<int>{1, 1}));
    recorder.saveExpiredPendingChanges(now());
    QString const path = stationPath(211234567);
    zelkotest::TraceCapture capture(0x40);
    recorder.closeFile();
    EXPECT_EQ(lineOf(capture, QStringLiteral("AISRecorderData::close 211234567")), 306);
    EXPECT_EQ(writtenBlocks(path, true), std::vector<int>{1});
}

// -- Pending changes of the main result file --

// Steps: "c" a new current transmission; "d" new data; "w" new data, written at once; "+N" the
// clock N seconds on.
// clang-format off
struct DueRow { char const* name; char const* steps; qint64 dueAfterT0Seconds; };
// clang-format on
class RecorderDueTime : public testing::TestWithParam<DueRow>, public Rig
{
};

TEST_P(RecorderDueTime, OfTheMainResultFile)
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
    XmlFile const& file = recorder.getXmlFile();
    ASSERT_TRUE(file.hasPendingChanges());
    QDateTime const due = T0.addSecs(GetParam().dueAfterT0Seconds);
    EXPECT_EQ(file.getDueTime(), due);
    EXPECT_FALSE(file.hasExpiredPendingChanges(due.addMSecs(-1)));
    EXPECT_TRUE(file.hasExpiredPendingChanges(due));
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(Recorder, RecorderDueTime, testing::Values(
    DueRow{"setCurrentTransmission_10_s", "c", 10},
    DueRow{"new_data_without_a_file_due_at_once", "d", -60},
    DueRow{"first_change_wins_with_a_file_30_s", "w +5 d +20 d", 35},
    DueRow{"due_at_once_does_not_advance_a_pending_change", "c +2 d", 10},
    DueRow{"setCurrentTransmission_keeps_an_earlier_due_time", "d c", -60},
    DueRow{"written_then_setCurrentTransmission_10_s", "w +3 c", 13}), zelkotest::RowName());
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
    EXPECT_EQ(writtenBlocks(path, true), std::vector<int>{1});
    recorder.saveExpiredPendingChanges(T0.addSecs(31));
    EXPECT_EQ(writtenBlocks(path, true), (std::vector<int>{1, 2}));
    EXPECT_EQ(filesIn(dir.path()).size(), 1); // rewritten, never split
    EXPECT_EQ(zelkotest::validateXmlFile(path, Schema), QString());
}

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
        EXPECT_EQ(zelkotest::validateXmlFile(r.mainPath(), Schema), QString());
        EXPECT_EQ(writtenBlocks(r.mainPath(), false), c.written);
        EXPECT_EQ(r.recorder.getCurrentTransmission()->GetDataBlock().size(), 2); // model keeps all
    }
}

// -- Closing --

TEST(RecorderClose, WritesPendingChangesOnlyThenClosesAndClears)
{
    // 0: nothing; 1: a transmission without changes; 2: a transmission set as current.
    for (int const what : {0, 1, 2}) {
        SCOPED_TRACE(what);
        Rig r;
        ClosedLog log;
        r.recorder.setCallback(&log);
        if (what == 1) {
            r.recorder.createTransmission(T0);
        } else if (what == 2) {
            r.recorder.setCurrentTransmission(
                new Transmission(transmission({channelManagement(1, 0)})));
        }
        r.recorder.closeFile();
        EXPECT_EQ(filesIn(r.dir.path()).size(), what == 2 ? 1 : 0);
        ASSERT_EQ(r.records().size(), what == 2 ? 1u : 0u);
        if (what == 2) {
            EXPECT_TRUE(r.records()[0].GetMetadata().GetStopTime().isValid());
            EXPECT_EQ(r.records()[0].GetMetadata().GetDetail().GetCode(),
                      QStringLiteral("DecodedText"));
        }
        EXPECT_EQ(log.closed, what == 0 ? 0 : 1);
        EXPECT_EQ(r.recorder.getCurrentTransmission(), nullptr);
        EXPECT_TRUE(r.recorder.getResultData()->GetTransmission().isEmpty());
        EXPECT_EQ(r.recorder.getFileName(), QString());
    }
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

TEST(RecorderClose, FullDiskTracesTheFailedSave)
{
    QTemporaryDir dir;
    QByteArray const mountPoint = dir.path().toLocal8Bit();
    if (::mount("tmpfs", mountPoint.constData(), "tmpfs", 0, "size=4k") != 0) {
        GTEST_SKIP() << "mounting a tmpfs is not permitted here";
    }
    // Unmounted however the test ends, so that no small file system outlives it.
    std::unique_ptr<char const, void (*)(char const*)> const mounted(
        mountPoint.constData(), [](char const* path) { ::umount2(path, MNT_DETACH); });
    zelkotest::TraceCapture capture(0x20);
    {
        Clock::Override const clock(T0);
        RecorderModel recorder(nullptr);
        recorder.setDirectoryPath(dir.path());
        QStringList stationXml;
        recorder.addTransmission(transmission({}, {textBlock(1, QString(20000, 'x'), 0)}),
                                 stationXml);
        recorder.closeFile();
    }
    auto const saveFailure = std::find_if(
        capture.lines().begin(), capture.lines().end(),
        [](zelkotest::TraceLine const& line) { return line.message.startsWith("SaveFile: "); });
    ASSERT_NE(saveFailure, capture.lines().end()) << capture.messages().join('\n').toStdString();
    EXPECT_EQ(saveFailure->line, 297);
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
    struct Case { QString operation; QString xml; Setter set;
                  QString (*parseError)(QString const&); } const cases[] = {
        {"setAntennaSettings", "<AntennaSettings name=\"HE600\"",
         &RecorderModel::setAntennaSettings, complaint<REPORTKIT::Antenna_Settings>},
        {"setAudioSettings", "<FFM_Settings frequency=\"1\"/>", &RecorderModel::setAudioSettings,
         complaint<REPORTKIT::Audio_Settings>},
        {"setTunerSettings", "tuner please", &RecorderModel::setTunerSettings,
         complaint<REPORTKIT::Tuner_Settings>},
        {"setFFMSettings", "<FFM_Settings frequency=\"VHF\"/>", &RecorderModel::setFFMSettings,
         complaint<REPORTKIT::FFM_Settings>},
    };
    // clang-format on
    for (auto const& c : cases) {
        SCOPED_TRACE(c.operation.toStdString());
        Rig r;
        r.recorder.setTunerSettings(QStringLiteral(
            "<Tuner_Settings device=\"EB500\"><AntennaSettings name=\"HE600\" port=\"1\"/>"
            "<Audio_Settings mode=\"FM\"/><FFM_Settings "
            "frequency=\"161975000\"/></Tuner_Settings>"));
        QString const before = r.recorder.getTunerSettings().GetXmlString();
        zelkotest::TraceCapture capture(0x20);
        (r.recorder.*c.set)(c.xml);
        ASSERT_EQ(capture.lines().size(), 1u);
        EXPECT_EQ(capture.lines()[0].message, c.operation + ": " + c.parseError(c.xml));
        EXPECT_TRUE(capture.lines()[0].message.contains(QStringLiteral(": line ")));
        EXPECT_EQ(capture.lines()[0].sourceFile,
                  QStringLiteral("massdatamanagement/zelkodatastreamconverter/recordermodel"));
        EXPECT_EQ(capture.lines()[0].line, 58);
        EXPECT_EQ(r.recorder.getTunerSettings().GetXmlString(), before);
        EXPECT_EQ(r.recorder.getFrequency(), 161975000.0);
    }
}

/// Throws from the virtual operations that the recorder calls inside its guarded steps.
class ThrowingRecorder : public RecorderModel
{
public:
    using RecorderModel::RecorderModel;
    int kind = 0; // 0 document library, 1 report library, 2 anything else
    void addCurrentInfo(QDateTime const&, bool) override { fail(); }
    void setFrequency(double) override { fail(); }

private:
    void fail() const
    {
        if (kind == 0) {
            throw NerikResultDataXml::NerikResultDataException(QStringLiteral("doc"));
        }
        if (kind == 1) {
            throw REPORTKIT::RGException(QStringLiteral("rep"));
        }
        throw 1;
    }
};

TEST(RecorderSettings, ExceptionsInsideAStepAreTracedWithItsName)
{
    std::pair<QString, int> const cases[] = {{"doc", 44}, {"rep", 42}, {"Unknown exception", 46}};
    for (int kind = 0; kind < 3; ++kind) {
        SCOPED_TRACE(kind);
        ThrowingRecorder recorder(nullptr);
        recorder.kind = kind;
        zelkotest::TraceCapture capture(0x20);
        recorder.setTunerSettings(QStringLiteral("<Tuner_Settings/>"));
        QStringList stationXml;
        // A new transmission, but the step broke off before it could say so.
        EXPECT_FALSE(recorder.addTransmission(transmission({}), stationXml));
        QString const text = cases[kind].first;
        EXPECT_EQ(capture.messages(),
                  (QStringList{"setTunerSettings: " + text, "addTransmission: " + text}));
        ASSERT_EQ(capture.lines().size(), 2u);
        EXPECT_EQ(capture.lines()[0].line, cases[kind].second);
        EXPECT_EQ(capture.lines()[1].line, cases[kind].second);
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
    EXPECT_EQ(recorder.getXmlFile().getFrequency(), 162025000.0);

    // The kept tuner does not validate, and so neither does its antenna; a freshly read
    // antenna would. An equal antenna must therefore leave the kept object as it is.
    QString const he600 = QStringLiteral("<AntennaSettings name=\"HE600\" port=\"1\"/>");
    recorder.setTunerSettings("<Tuner_Settings>" + he600 + "</Tuner_Settings>");
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
    recorder.setTunerSettings(QStringLiteral("<Tuner_Settings device=\"EB500\"/>"));
    setAISMode();
    EXPECT_FALSE(recorder.getDemodulatorSettings().GetValidate()); // kept as read, like the tuner
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
        ASSERT_TRUE(settings.SetXmlString(JobSettingsXml, 0));
        recorder.setDirectoryPath(dir.path());
        recorder.setFileCode(QStringLiteral("TransmissionSystem"));
        recorder.setParameter(settings);
        ASSERT_TRUE(recorder.isAISMode());

        QStringList stationXml;
        recorder.addTransmission(
            transmission(
                {report(1, 1, 211234567, "DABC", NorthEast),
                 report(2, 2, 366999000, "WDC1234", QString::fromUtf8("N 40°42'46'' W 74°0'22''")),
                 channelManagement(3, 3),
                 report(4, 20, 211234567, None, QString::fromUtf8("N 53°32'40.5'' E 9°57'30''"))},
                {}, 20),
            stationXml);
        EXPECT_EQ(stationXml.size(), 3);
        recorder.closeFile();
    }

    QStringList const written = filesIn(dir.path());
    ASSERT_EQ(written.size(), 3);
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
                                   .remove(QStringLiteral("_yyyyMMdd_hhmmss"))
                                   .prepend(QStringLiteral("recordermodel/by-hand-"));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_EQ(zelkotest::compareWithGolden(file.readAll(), golden), QString());
    }
}

} // namespace
