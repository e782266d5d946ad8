// The result model, driven by the scripts tests/data/nerikresultmodel/<name>.scenario (language
// in the README.md there): the transcript of each (operations, answers, callbacks, traces, then
// the model's state and result document) must equal <name>.golden beside it.

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QUrl>
#include <gtest/gtest.h>
#include <jobspec/settings.h>
#include <jobspec/station.h>
#include <jobspec/valuelist.h>
#include <limits>
#include <map>
#include <massdatamanagement/zelkodatastreamconverter/clock.h>
#include <massdatamanagement/zelkodatastreamconverter/nerikresultcallback.h>
#include <massdatamanagement/zelkodatastreamconverter/nerikresultmodel.h>
#include <memory>
#include <nerikresultdataxml/field.h>
#include <nerikresultdataxml/nerikresultdata.h>
#include <nerikresultdataxml/nerikresultdataexception.h>
#include <nerikresultdataxml/utf8xmlwriter.h>
#include <reportkit/rgexception.h>
#include <support/golden.h>
#include <support/schemavalidator.h>
#include <support/tracecapture.h>
#include <vector>

using namespace zelkodatastreamconverter;
using namespace NerikResultDataXml;

namespace {

QDateTime const T0(QDate(2024, 1, 31), QTime(12, 0, 0), Qt::UTC);
QString const ScenarioDir = QStringLiteral(ZELKO_GOLDEN_DIR "/nerikresultmodel");

QDateTime at(QString const& token)
{
    return token == QLatin1String("@none") ? QDateTime() : T0.addMSecs(token.mid(1).toLongLong());
}

QString show(QDateTime const& time)
{
    return time.isValid() ? '@' + QString::number(T0.msecsTo(time)) : QStringLiteral("@none");
}

QString startOf(Transmission const* transmission)
{
    return transmission ? show(transmission->GetStartTime()) : QStringLiteral("none");
}

void fail(QString const& kind)
{
    if (kind == QLatin1String("document")) {
        throw NerikResultDataException(QStringLiteral("doc"));
    } else if (kind == QLatin1String("report")) {
        throw REPORTKIT::RGException(QStringLiteral("rep"));
    } else if (kind == QLatin1String("other")) {
        throw 1;
    }
}

/// A model that writes what reaches its callback and virtual operations into the transcript;
/// it can throw before two of them.
class SpyModel : public NerikResultModel, public NerikResultCallback
{
public:
    QStringList* log;
    QString failInFFM;
    QString failInDemodulator;

    explicit SpyModel(QStringList* transcript) : log(transcript) { setCallback(this); }
    SpyModel(SpyModel const& other) : NerikResultModel(other), log(other.log) {}
    void onTransmissionClosed(Transmission* t) override
    {
        *log << "  closed " + show(t->GetStartTime());
    }
    void majorSettingsChanged() override
    {
        *log << QStringLiteral("  major settings change");
        NerikResultModel::majorSettingsChanged();
    }
    void addCurrentInfo(QDateTime const& time, bool isNew) override
    {
        *log << "  current info " + show(time) + (isNew ? " new" : " old");
    }
    bool setAlphabet(QString const& alphabet, bool& changed) override
    {
        *log << "  alphabet " + alphabet;
        return NerikResultModel::setAlphabet(alphabet, changed);
    }
    void setFFMSettings(QString const& xml) override
    {
        fail(failInFFM);
        NerikResultModel::setFFMSettings(xml);
    }
    bool setDemodulatorSettings(QString const& xml) override
    {
        *log << QStringLiteral("  demodulator settings");
        return NerikResultModel::setDemodulatorSettings(xml);
    }
    bool setDemodulator(QString const& demodulator) override
    {
        fail(failInDemodulator);
        return NerikResultModel::setDemodulator(demodulator);
    }
};

/// A transmission whose rendering fails.
class BrokenTransmission : public Transmission
{
public:
    void WriteXml(Utf8XmlWriter&) const override
    {
        throw NerikResultDataException(QStringLiteral("cannot render"));
    }
};

/// Splits a line into words; a word in double quotes may hold blanks, and "#" starts a
/// comment (so texts in scripts cannot hold one).
QStringList words(QString const& line)
{
    static QRegularExpression const word(QStringLiteral("(?:[^\\s\"]|\"[^\"]*\")+"));
    QStringList result;
    for (auto it = word.globalMatch(line.section('#', 0, 0)); it.hasNext();) {
        result << it.next().captured().remove('"');
    }
    return result;
}

QString describe(DataBlock const* block)
{
    if (block == nullptr) {
        return QStringLiteral("none");
    }
    QStringList out{'"' + block->GetContent() + '"'};
    for (TimeStamp const& stamp : block->GetTimeStamp()) {
        out << show(stamp.GetTime()) + ':' + QString::number(stamp.GetPosition());
    }
    for (UserData const* item : block->GetUserData()) {
        out << QStringLiteral("[%1 %2..%3 \"%4\" over \"%5\"]")
                   .arg(item->type, QString::number(item->start), QString::number(item->end),
                        item->text, item->coveredText);
    }
    return out.join(' ');
}

/// What a script works on: the models (the last one; "copy" adds one), the blocks it has
/// built, and the transcript.
struct Scenario
{
    Clock::Override clock{T0};
    std::vector<std::unique_ptr<SpyModel>> models;
    QStringList log;
    QStringList w; // the words of the line being applied
    QDateTime latest;
    DataBlock block;
    std::unique_ptr<PDUDataBlock> pdu;
    std::map<int, PDUDataBlock*> built; // pdu and its descendants by ID
    bool lastIsPdu = false;
    std::unique_ptr<Transmission> held;
    Transmission incoming;

    Scenario() { models.push_back(std::make_unique<SpyModel>(&log)); }
    SpyModel& m() { return *models.back(); }
    Transmission* current() { return m().getCurrentTransmission(); }
    QDateTime time(int index = 1) const { return at(w.value(index)); }
    void say(QString const& text) { log << "  = " + text; }
    void say(bool answer) { say(QString::fromLatin1(answer ? "true" : "false")); }
    QString value(QString const& key) const
    {
        QStringList const found = w.filter(QRegularExpression('^' + key + '='));
        return found.isEmpty() ? QString() : found.front().mid(key.size() + 1);
    }
    std::pair<int, int> range(int index) const
    {
        QStringList const ends = w.value(index).split(QStringLiteral(".."));
        return {ends[0] == "max" ? std::numeric_limits<int>::max() : ends[0].toInt(),
                ends.value(1).toInt()};
    }
    void state();
    QString run(QString const& path);
};

using Operation = void (*)(Scenario&);
std::map<QString, Operation> const Operations{
    {"clock", [](Scenario& s) { Clock::setFixedTime(s.time()); }},
    {"advance", [](Scenario& s) { Clock::advance(s.w[1].toLongLong()); }},
    {"create", [](Scenario& s) { s.m().createTransmission(s.time()); }},
    {"change", [](Scenario& s) { s.m().majorSettingsChanged(); }},
    {"idle", [](Scenario& s) { s.m().doIdleProcessing(); }},
    {"close", [](Scenario& s) { s.m().closeCurrentTransmission(); }},
    {"clear", [](Scenario& s) { s.m().clear(); }},
    {"time", [](Scenario& s) { s.say(show(s.m().getTransmissionTime(s.time()))); }},
    {"get", [](Scenario& s) { s.say(startOf(s.m().getTransmission(s.time()))); }},
    {"take",
     [](Scenario& s) {
         s.held.reset(s.m().takeCurrentTransmission());
         s.say(startOf(s.held.get()));
     }},
    {"put", [](Scenario& s) { s.m().setCurrentTransmission(s.held.release()); }},
    {"extract",
     [](Scenario& s) {
         Transmission out;
         s.m().extractTransmission(out, s.w[1].toInt());
         s.say(out.GetXmlString().section(QStringLiteral("?>"), 1).simplified());
     }},
    {"estimate", [](Scenario& s) { s.m().getEstimateDataSize() = s.w[1].toInt(); }},
    {"size",
     [](Scenario& s) {
         QString const answer = s.m().maxDataSizeExceeded() ? "exceeded" : "within";
         s.say(answer + ", estimate " + QString::number(s.m().getEstimateDataSize()));
     }},
    {"message",
     [](Scenario& s) {
         BrokenTransmission broken;
         Transmission const* const t = s.w.size() > 1 ? &broken : s.current();
         QByteArray const data = NerikResultModel::getMessageData(t);
         Transmission read;
         QString error;
         bool const same = read.SetXmlString(QString::fromUtf8(data), error) && read == *t;
         s.say(QString::number(data.size()) + (same ? " bytes, reads back" : " bytes, unreadable"));
     }},
    {"incoming",
     [](Scenario& s) {
         s.incoming = Transmission();
         s.incoming.SetStartTime(s.time());
         s.incoming.SetStopTime(s.time(2));
     }},
    {"info", [](Scenario& s) { s.incoming.AddInfo(new Info(s.time())); }},
    {"merge", [](Scenario& s) { s.say(s.m().addTransmission(s.incoming)); }},
    {"overlaps",
     [](Scenario& s) {
         UserData item(s.range(1).first, s.range(1).second, UserData::CommentType);
         s.say(NerikResultModel::userDataInRange(&item, s.range(2).first, s.range(2).second));
     }},
    {"block",
     [](Scenario& s) {
         s.block = DataBlock(s.value("ch").toInt());
         s.block.SetContent(QUrl::fromPercentEncoding(s.w[2].toUtf8()));
         s.block.SetRawContent(s.value("raw"));
         for (QString const& stamp : s.value("stamps").split(',', Qt::SkipEmptyParts)) {
             s.block.GetTimeStamp()
                 << TimeStamp(at('@' + stamp.section(':', 0, 0)), stamp.section(':', 1).toInt());
         }
         s.lastIsPdu = false;
     }},
    {"item",
     [](Scenario& s) {
         auto* item =
             new UserData(s.range(2).first, s.range(2).second, s.w[1], s.w[3], {}, s.value("over"));
         s.lastIsPdu ? s.built[-1]->AddUserData(item) : s.block.AddUserData(item);
     }},
    {"latest", [](Scenario& s) { s.latest = s.time(); }},
    {"add",
     [](Scenario& s) {
         Transmission* const t = s.w.size() > 1 ? nullptr : s.current();
         s.lastIsPdu ? s.m().addPDUDataBlock(t, *s.pdu, s.latest)
                     : s.m().addDataBlock(t, s.block, s.latest);
         s.say("latest " + show(s.latest));
     }},
    {"place",
     [](Scenario& s) {
         Transmission* const t = s.w.size() > 1 ? &s.incoming : s.current();
         s.lastIsPdu ? t->AddPDUDataBlock(new PDUDataBlock(*s.pdu))
                     : t->AddDataBlock(new DataBlock(s.block));
     }},
    {"fill",
     [](Scenario& s) {
         s.current()->GetDataBlock()[0]->SetContent(QString(s.w[1].toInt(), s.w[2][0]));
     }},
    {"edit",
     [](Scenario& s) {
         s.say(s.lastIsPdu ? s.m().setUserData(*s.pdu) : s.m().setUserData(s.block));
     }},
    {"find",
     [](Scenario& s) { s.say(describe(s.m().findDataBlock(s.value("ch").toInt(), s.time(2)))); }},
    {"pdu",
     [](Scenario& s) {
         auto* const block = new PDUDataBlock;
         block->SetID(s.value("id").toInt());
         block->SetTimeStamp(s.time(2));
         block->SetName(s.value("name"));
         block->GetPayload().SetContent(s.value("payload"));
         if (s.value("in").isEmpty()) {
             s.built.clear();
             s.pdu.reset(block);
         } else {
             s.built.at(s.value("in").toInt())->AddPDUDataBlock(block);
         }
         s.built[block->GetID()] = s.built[-1] = block; // -1: the last one built
         s.lastIsPdu = true;
     }},
    {"find-pdu",
     [](Scenario& s) {
         int const id = s.w[1].toInt();
         PDUDataBlock const* const found =
             s.w.size() == 2 ? s.m().getPDUDataBlock(id)
                             : NerikResultModel::getPDUDataBlock(s.current(), id, s.w[2] == "deep");
         s.say(found ? found->GetName() : QStringLiteral("none"));
     }},
    {"settings",
     [](Scenario& s) {
         JobSpec::Settings settings;
         settings.GetFFM_Settings().SetFrequency(s.value("freq").toDouble());
         settings.GetDemodulator_Settings().SetXmlString(s.w[2], 0);
         s.m().setParameter(settings);
     }},
    {"ffm", [](Scenario& s) { s.say(s.m().setFFMFrequency(s.w[1])); }},
    {"demod", [](Scenario& s) { s.say(s.m().setDemodulatorSettings(s.w[1])); }},
    {"alphabets-dir", [](Scenario& s) { s.m().setAlphabetsDirectory(s.w[1]); }},
    {"fail-before",
     [](Scenario& s) { (s.w[1] == "ffm" ? s.m().failInFFM : s.m().failInDemodulator) = s.w[2]; }},
    {"copy", [](Scenario& s) { s.models.push_back(std::make_unique<SpyModel>(s.m())); }},
    {"select",
     [](Scenario& s) {
         JobSpec::ChannelSelection selection;
         selection.SetValue(s.w.mid(1));
         s.m().setChannelSelection(selection.GetXmlString());
     }},
    {"select-xml", [](Scenario& s) { s.m().setChannelSelection(s.w[1]); }},
    {"selected?",
     [](Scenario& s) {
         QStringList answers;
         for (QString const& channel : s.w.mid(1)) {
             answers << channel + (s.m().isChannelSelected(channel.toInt()) ? ":yes" : ":no");
         }
         QBitArray const& bits = s.m().getChannelSelectionBits();
         s.say(answers.join(' ') + " bits " +
               (bits.isNull() ? "null" : QString::number(bits.size())));
     }},
    {"ais",
     [](Scenario& s) {
         PDUDataBlock block;
         block.SetName(s.w.value(1));
         block.SetTimeStamp(s.time(2));
         for (QString const& field : s.w.mid(3)) {
             block.AddField(Field(field.section(':', 0, 0),
                                  field.section(':', 1).section('=', 0, 0), field.section('=', 1)));
         }
         JobSpec::Station station;
         station.SetXmlString(QStringLiteral("<Station id='7' name='OLD' latitude='1.5' "
                                             "longitude='2.5'/>"),
                              0);
         int const mmsi = s.m().scanAISData(s.w.size() > 1 ? &block : nullptr, station);
         s.say(QString::number(mmsi) + ' ' + station.GetXmlString().section("?>", 1).simplified());
     }},
    {"state", [](Scenario& s) { s.state(); }},
};

QString Scenario::run(QString const& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    zelkotest::TraceCapture traces(0x60);
    for (QString const& line : QString::fromUtf8(file.readAll()).split('\n')) {
        w = words(line);
        if (w.isEmpty()) {
            continue;
        }
        log << "> " + line.trimmed();
        auto const operation = Operations.find(w[0]);
        if (operation == Operations.end()) {
            ADD_FAILURE() << "unknown operation: " << line.toStdString();
            continue;
        }
        operation->second(*this);
        for (auto const& trace : traces.lines()) {
            // The AIS trace carries a station ID as one character, which may be a control one.
            log << QStringLiteral("  trace %1:%2 %3")
                       .arg(trace.sourceFile, QString::number(trace.line),
                            QString(trace.message).replace(QChar(0), QStringLiteral("\\u0000")));
        }
        traces.clear();
    }
    state();
    log << "--- document" << m().getResultData()->GetXmlString();
    return log.join('\n');
}

void Scenario::state()
{
    Transmission* const open = current();
    auto const& transmissions = m().getResultData()->GetTransmission();
    log << QStringLiteral("--- model %1, callback %2, estimate %3")
               .arg(models.size() == 1 ? "as made" : "copy",
                    m().getCallback() == models.front().get() ? "first model" : "other",
                    QString::number(m().getEstimateDataSize()))
        << QStringLiteral("current %1 (%2 of %3), settings change %4")
               .arg(startOf(open), QString::number(transmissions.indexOf(open) + 1),
                    QString::number(transmissions.size()), show(m().getSettingsChangeTime()))
        << QStringLiteral("frequency %1, demodulator \"%2\", decoder \"%3\", alphabet \"%4\", "
                          "alphabets directory \"%5\"")
               .arg(m().getFrequency(), 0, 'f', 0)
               .arg(m().getDemodulator(), m().getDecoder(), m().getAlphabet(),
                    m().getAlphabetsDirectory())
        << "channel selection \"" + m().getChannelSelection().simplified() + '"';
}

std::vector<std::string> scenarioNames()
{
    std::vector<std::string> names;
    for (QString const& file :
         QDir(ScenarioDir).entryList({QStringLiteral("*.scenario")}, QDir::Files, QDir::Name)) {
        names.push_back(file.chopped(9).toStdString());
    }
    return names;
}

using ResultModelScenario = testing::TestWithParam<std::string>;

TEST_P(ResultModelScenario, TranscriptMatchesGolden)
{
    QString const name = QString::fromStdString(GetParam());
    QString const dump = Scenario().run(ScenarioDir + '/' + name + ".scenario");
    EXPECT_EQ(
        zelkotest::compareWithGolden(dump.toUtf8() + '\n', "nerikresultmodel/" + name + ".golden"),
        QString());
    QString const document = dump.section(QStringLiteral("--- document\n"), -1);
    EXPECT_EQ(zelkotest::validateXmlText(document, QStringLiteral("nerikresultdata.xsd")),
              QString());
}

INSTANTIATE_TEST_SUITE_P(NerikResultModel, ResultModelScenario, testing::ValuesIn(scenarioNames()),
                         [](auto const& info) { return info.param; });

} // namespace
