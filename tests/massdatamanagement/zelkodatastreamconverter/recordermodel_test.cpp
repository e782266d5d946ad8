// The recorder model driven by scenario scripts (tests/data/recordermodel/*.scenario): each
// script applies host operations to a recorder writing into a temporary directory, with the
// clock fixed, and its dump (every trace, the recorder's state, the files written and their
// records) is compared with the golden .dump beside it. Only the full-disk test stays code.

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <algorithm>
#include <gtest/gtest.h>
#include <jobspec/demodulatorsettings.h>
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
#include <reportkit/rgexception.h>
#include <reportkit/tunersettings.h>
#include <set>
#include <support/golden.h>
#include <support/qstringprinter.h>
#include <support/scenarioscript.h>
#include <support/schemavalidator.h>
#include <support/tracecapture.h>
#include <sys/mount.h>

using namespace zelkodatastreamconverter;
using NerikResultDataXml::DataBlock;
using NerikResultDataXml::Field;
using NerikResultDataXml::NerikResultData;
using NerikResultDataXml::PDUDataBlock;
using NerikResultDataXml::Transmission;

namespace {

QDateTime const T0(QDate(2024, 5, 17), QTime(8, 30, 0), Qt::UTC);

QString seconds(QDateTime const& time)
{
    return time.isValid() ? QStringLiteral("%1s").arg(T0.msecsTo(time) / 1000.0) : "-";
}

QString oneLine(QString xml)
{
    return xml.remove(QRegularExpression(R"(<\?xml[^>]*\?>\s*)"))
        .replace(QRegularExpression(R"(>\s+<)"), "><")
        .trimmed();
}

/// Throws, once told to, from the virtual operations the recorder calls inside guarded steps.
class FailingRecorder : public RecorderModel
{
public:
    using RecorderModel::RecorderModel;
    QString failure; // "doc", "rep", "other"; empty: no failure
    void addCurrentInfo(QDateTime const& time, bool isNew) override
    {
        fail();
        RecorderModel::addCurrentInfo(time, isNew);
    }
    void setFrequency(double hertz) override
    {
        fail();
        RecorderModel::setFrequency(hertz);
    }

private:
    void fail() const
    {
        if (failure == QLatin1String("doc")) {
            throw NerikResultDataXml::NerikResultDataException(failure);
        }
        if (failure == QLatin1String("rep")) {
            throw REPORTKIT::RGException(failure);
        }
        if (!failure.isEmpty()) {
            throw 1;
        }
    }
};

/// A recorder writing into a temporary directory; the clock starts at T0.
struct Rig : NerikResultCallback
{
    Clock::Override clock{T0};
    QTemporaryDir dir;
    FileInfoList files;
    FailingRecorder recorder{&files};
    QStringList& out;
    explicit Rig(QStringList& out) : out(out)
    {
        recorder.setDirectoryPath(dir.path());
        recorder.setCallback(this);
    }
    void onTransmissionClosed(Transmission*) override { out << "  transmission closed"; }
};

/// Applies the operations of one script and writes down what they did.
class Scenario
{
public:
    QString check(QString const& name)
    {
        return zelkotest::checkScenario(
            "recordermodel", name, [this](QStringList const& words) { apply(words); },
            [this](zelkotest::TraceLine const& trace) {
                // The recorder's trace lines are fixed numbers that hosts rely on; elsewhere
                // they follow the source and are left out.
                QString const module = trace.sourceFile.section('/', -1);
                return (module == "recordermodel" ? module + ':' + QString::number(trace.line)
                                                  : module) +
                       ' ' + printable(trace.message).replace('\n', "\\n");
            },
            m_out);
    }

private:
    // File names carry the local creation time, the directory is a new one every run.
    QString printable(QString text) const
    {
        text.replace(m_rig->dir.path(), QStringLiteral("<dir>"))
            .replace(QRegularExpression(QStringLiteral("_\\d{8}_\\d{6}")), "_yyyyMMdd_hhmmss");
        for (QChar& ch : text) {
            if (!ch.isPrint() && ch != '\n') {
                ch = QChar('?');
            }
        }
        return text;
    }

    void apply(QStringList const& w)
    {
        RecorderModel& r = m_rig->recorder;
        QString const& op = w[0];
        QString const arg = w.value(1);
        QDateTime const now = Clock::currentDateTimeUtc();
        if (op == "reset") {
            m_rig.reset();
            m_rig = std::make_unique<Rig>(m_out);
            m_mmsis.clear();
        } else if (op == "clock") {
            Clock::advance(arg.toLongLong() * 1000);
        } else if (op == "mode") {
            say(r.setDemodulatorSettings(
                QStringLiteral("<Demodulator_Settings transmissionSystem='%1'/>").arg(arg)));
        } else if (op == "demodulator") {
            say(r.setDemodulatorSettings(arg));
        } else if (op == "tuner") {
            r.setTunerSettings(arg);
        } else if (op == "antenna") {
            r.setAntennaSettings(arg);
        } else if (op == "audio") {
            r.setAudioSettings(arg);
        } else if (op == "ffm") {
            r.setFFMSettings(arg);
        } else if (op == "settings") {
            JobSpec::Settings settings;
            say(settings.SetXmlString(arg, 0));
            r.setParameter(settings);
        } else if (op == "filecode") {
            r.setFileCode(arg);
        } else if (op == "channels") {
            r.setChannelSelection(arg);
        } else if (op == "fail") {
            m_rig->recorder.failure = arg;
        } else if (op == "blocked-dir") {
            QFile blocker(m_rig->dir.filePath(QStringLiteral("not-a-directory")));
            blocker.open(QIODevice::WriteOnly);
            r.setDirectoryPath(blocker.fileName());
        } else if (op == "add") {
            add(w);
        } else if (op == "current") {
            Transmission* const current = new Transmission;
            current->SetStartTime(T0.addSecs(w.value(2).toLongLong()));
            current->AddPDUDataBlock(new PDUDataBlock(manage(arg.toInt(), 0)));
            r.setCurrentTransmission(current);
        } else if (op == "create") {
            r.createTransmission(T0);
        } else if (op == "info") {
            r.addCurrentInfo(T0.addSecs(arg.toLongLong()), false);
        } else if (op == "save-expired") {
            r.saveExpiredPendingChanges(arg.isEmpty() ? now : T0.addSecs(arg.toLongLong()));
        } else if (op == "save") {
            r.saveFile();
        } else if (op == "close") {
            r.closeFile();
        } else if (op == "main") {
            m_out << "  main " + fileState(r.getXmlFile());
        } else if (op == "state") {
            state();
        } else if (op == "document") {
            QBuffer buffer;
            buffer.open(QIODevice::WriteOnly);
            r.getResultData()->Save(buffer);
            m_out << QString::fromUtf8(buffer.data()).trimmed();
        } else if (op == "files") {
            writtenFiles();
        } else if (op == "golden") {
            golden(arg);
        } else {
            ADD_FAILURE() << "unknown operation " << op.toStdString();
        }
    }

    void say(bool result) { m_out << QStringLiteral("  -> %1").arg(result ? "true" : "false"); }

    static PDUDataBlock pdu(int id, qint64 at, QString const& name, QVector<Field> const& fields)
    {
        PDUDataBlock block;
        block.SetID(id);
        block.SetType(1);
        block.SetTimeStamp(T0.addSecs(at));
        block.SetName(name);
        block.SetMethod(QStringLiteral("AIS"));
        block.SetCRC(QStringLiteral("ok"));
        for (Field const& field : fields) {
            block.AddField(field);
        }
        return block;
    }
    // An AIS unit without an MMSI: it belongs to the main result file only.
    static PDUDataBlock manage(int id, qint64 at)
    {
        return pdu(id, at, QStringLiteral("AIS Channel Management"),
                   {Field("Channel A", "int", "2087"), Field("Channel B", "int", "2088")});
    }

    // add [start=S] [stop=S] then blocks: "report ID AT MMSI [sign=X] [pos=TEXT]",
    // "manage ID AT", "text CHANNEL AT CONTENT".
    void add(QStringList const& w)
    {
        Transmission t;
        t.SetStartTime(T0);
        t.SetStopTime(T0.addSecs(60));
        for (int i = 1; i < w.size(); ++i) {
            QString const key = w[i].section('=', 0, 0);
            QString const value = w[i].section('=', 1);
            QVector<Field>* const fields = t.GetPDUDataBlocks().isEmpty()
                                               ? nullptr
                                               : &t.GetPDUDataBlocks().last()->GetFields();
            if (key == "start") {
                t.SetStartTime(T0.addSecs(value.toLongLong()));
            } else if (key == "stop") {
                t.SetStopTime(T0.addSecs(value.toLongLong()));
            } else if (key == "report") {
                t.AddPDUDataBlock(new PDUDataBlock(
                    pdu(w[i + 1].toInt(), w[i + 2].toLongLong(), "AIS Position Report",
                        {Field("MMSI", "int", w[i + 3]),
                         Field("Navigation Status", "string", "under way using engine")})));
                m_mmsis.insert(w[i + 3].toInt());
                i += 3;
            } else if (key == "sign") {
                fields->insert(1, Field("Call Sign", "string", value));
            } else if (key == "pos") {
                fields->append(Field("Position", "position", value));
            } else if (key == "manage") {
                t.AddPDUDataBlock(new PDUDataBlock(manage(w[i + 1].toInt(), w[i + 2].toInt())));
                i += 2;
            } else if (key == "text") {
                auto* block = new DataBlock(w[i + 1].toInt(), 0, 0);
                block->SetContent(w[i + 3]);
                block->GetTimeStamp().append(
                    NerikResultDataXml::TimeStamp(T0.addSecs(w[i + 2].toLongLong()), 0));
                t.AddDataBlock(block);
                i += 3;
            }
        }
        QStringList stationXml;
        m_out << QStringLiteral("  -> %1").arg(
            m_rig->recorder.addTransmission(t, stationXml) ? "new" : "update");
        for (QString const& xml : stationXml) {
            m_out << "  station-xml " + oneLine(xml);
        }
    }

    static QString blocksOf(Transmission const& t)
    {
        QStringList pdus, texts;
        for (PDUDataBlock const* block : t.GetPDUDataBlocks()) {
            pdus << QString::number(block->GetID());
        }
        for (DataBlock const* block : t.GetDataBlock()) {
            texts << QStringLiteral("%1:%2").arg(block->GetChannel()).arg(block->GetContent());
        }
        QStringList infos;
        for (NerikResultDataXml::Info const* info : t.GetInfos()) {
            QStringList names;
            for (auto const& item : info->GetItems()) {
                names << item.name;
            }
            infos << seconds(info->GetTimestamp()) + '(' + names.join(',') + ')';
        }
        return QStringLiteral("%1..%2 infos=%3 pdus=%4 texts=%5")
            .arg(seconds(t.GetStartTime()), seconds(t.GetStopTime()), infos.join(' '),
                 pdus.join(','), texts.join(','));
    }

    QString fileState(XmlFile const& file) const
    {
        QFile const* open = file.getOpenFile();
        return QStringLiteral("pending=%1 due=%2 file=%3")
            .arg(file.hasPendingChanges())
            .arg(seconds(file.getDueTime()), open ? printable(open->fileName()) : "-");
    }

    void state()
    {
        FailingRecorder& r = m_rig->recorder;
        m_out << QStringLiteral("  ais-mode=%1 stations=%2 frequency=%3 file-frequency=%4")
                     .arg(r.isAISMode())
                     .arg(r.getAISStationCount())
                     .arg(r.getFrequency(), 0, 'f', 0)
                     .arg(r.getXmlFile().getFrequency(), 0, 'f', 0);
        m_out << "  main " + fileState(r.getXmlFile());
        Transmission const* current = r.getCurrentTransmission();
        m_out << "  current " + (current ? blocksOf(*current) : "-");
        m_out << QStringLiteral("  transmissions=%1")
                     .arg(r.getResultData()->GetTransmission().size());
        for (int const mmsi : m_mmsis) {
            auto const station = r.getAISRecorderData(mmsi);
            if (!station) {
                continue;
            }
            JobSpec::Station const& s = station->getStation();
            QStringList ids;
            for (int id : station->getBlockIDs()) {
                ids << QString::number(id);
            }
            m_out << QStringLiteral("  station %1 name=%2 lat=%3 lon=%4 time=%5 blocks=%6 "
                                    "expiry=%7 %8")
                         .arg(mmsi)
                         .arg(s.IsNameSet() ? '"' + s.GetName() + '"' : "-")
                         .arg(s.IsLatitudeSet() ? QString::number(s.GetLatitude(), 'f', 6) : "-")
                         .arg(s.IsLongitudeSet() ? QString::number(s.GetLongitude(), 'f', 6) : "-")
                         .arg(seconds(s.GetTimeStamp()), ids.join(','),
                              seconds(station->getExpiryTime()), fileState(station->getFile()));
        }
        m_out << "  names " + printable(r.getFileName()).replace('\n', " | ");
        REPORTKIT::Tuner_Settings& tuner = r.getTunerSettings();
        m_out << QStringLiteral("  tuner validate=%1 antenna-validate=%2 %3")
                     .arg(tuner.GetValidate())
                     .arg(tuner.GetAntennaSettings().GetValidate())
                     .arg(oneLine(tuner.GetXmlString()));
        m_out << QStringLiteral("  demodulator validate=%1 %2")
                     .arg(r.getDemodulatorSettings().GetValidate())
                     .arg(oneLine(r.getDemodulatorSettings().GetXmlString()));
    }

    void writtenFiles()
    {
        for (QString const& name : QDir(m_rig->dir.path()).entryList(QDir::Files, QDir::Name)) {
            QString const path = m_rig->dir.filePath(name);
            NerikResultData written;
            QString const complaint = zelkotest::validateXmlFile(path, "nerikresultdata.xsd");
            m_out << "  file " + printable(name) + (complaint.isEmpty() ? " valid" : " INVALID");
            if (written.LoadFile(path)) {
                for (Transmission const* t : written.GetTransmission()) {
                    m_out << "    transmission " + blocksOf(*t);
                }
            }
        }
        for (REPORTKIT::Text const& record : m_rig->files.getResults().GetText()) {
            m_out << QStringLiteral("  record %1 %2 %3 start=%4 stop=%5")
                         .arg(record.GetMetadata().GetDetail().GetCode(),
                              printable(record.GetURL()))
                         .arg(record.GetMetadata().GetDetail().GetFrequency().GetValue(), 0, 'f', 0)
                         .arg(seconds(record.GetMetadata().GetStartTime()),
                              seconds(record.GetMetadata().GetStopTime()));
        }
    }

    // Each written file against its golden copy (named without the creation time), and the
    // records against <prefix>files.txt.
    void golden(QString const& prefix)
    {
        QStringList listing;
        for (REPORTKIT::Text const& record : m_rig->files.getResults().GetText()) {
            listing << QStringLiteral("%1 %2 %3")
                           .arg(record.GetMetadata().GetDetail().GetCode(),
                                printable(QFileInfo(record.GetURL()).fileName()))
                           .arg(record.GetMetadata().GetDetail().GetFrequency().GetValue(), 0, 'f',
                                0);
        }
        QStringList differences{zelkotest::compareWithGolden((listing.join('\n') + '\n').toUtf8(),
                                                             prefix + "files.txt")};
        for (QString const& name : QDir(m_rig->dir.path()).entryList(QDir::Files, QDir::Name)) {
            QString const golden = prefix + printable(name).remove("_yyyyMMdd_hhmmss");
            differences << zelkotest::compareWithGolden(
                zelkotest::readFile(m_rig->dir.filePath(name)), golden);
        }
        differences.removeAll(QString());
        m_out << "  golden " + (differences.isEmpty() ? "equal" : differences.join("; "));
    }

    QStringList m_out;
    std::unique_ptr<Rig> m_rig = std::make_unique<Rig>(m_out);
    std::set<int> m_mmsis; // the stations named so far, for the dump
};

using RecorderScenario = testing::TestWithParam<QString>;

TEST_P(RecorderScenario, GivesTheGoldenDump)
{
    EXPECT_EQ(Scenario().check(GetParam()), QString());
}

INSTANTIATE_TEST_SUITE_P(Scripts, RecorderScenario,
                         testing::ValuesIn(zelkotest::scenarioNames("recordermodel")),
                         zelkotest::ScenarioName());

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
        Transmission transmission;
        transmission.SetStartTime(T0);
        transmission.SetStopTime(T0.addSecs(60));
        auto* block = new DataBlock(1, 0, 0);
        block->SetContent(QString(20000, 'x'));
        block->GetTimeStamp().append(NerikResultDataXml::TimeStamp(T0, 0));
        transmission.AddDataBlock(block);
        QStringList stationXml;
        recorder.addTransmission(transmission, stationXml);
        recorder.closeFile();
    }
    auto const saveFailure = std::find_if(
        capture.lines().begin(), capture.lines().end(),
        [](zelkotest::TraceLine const& line) { return line.message.startsWith("SaveFile: "); });
    ASSERT_NE(saveFailure, capture.lines().end()) << capture.messages().join('\n').toStdString();
    EXPECT_EQ(saveFailure->line, 297);
}

} // namespace
