// The result model: transmission time and idle rules, text block merging, user channel and
// user edits, PDU block merging, infos, size check, message data, settings and channel
// selection.

#include <QRandomGenerator>
#include <functional>
#include <gtest/gtest.h>
#include <jobspec/settings.h>
#include <limits>
#include <massdatamanagement/zelkodatastreamconverter/clock.h>
#include <massdatamanagement/zelkodatastreamconverter/nerikresultcallback.h>
#include <massdatamanagement/zelkodatastreamconverter/nerikresultmodel.h>
#include <nerikresultdataxml/nerikresultdata.h>
#include <nerikresultdataxml/nerikresultdataexception.h>
#include <reportkit/rgexception.h>
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
using NerikResultDataXml::Info;
using NerikResultDataXml::NerikResultData;
using NerikResultDataXml::PDUDataBlock;
using NerikResultDataXml::TimeStamp;
using NerikResultDataXml::Transmission;
using NerikResultDataXml::UserData;

namespace {

QDateTime const T0(QDate(2024, 1, 31), QTime(12, 0, 0), Qt::UTC);

QDateTime at(qint64 milliseconds)
{
    return T0.addMSecs(milliseconds);
}

struct ClosedLog : NerikResultCallback
{
    std::vector<Transmission*> closed;
    void onTransmissionClosed(Transmission* transmission) override
    {
        closed.push_back(transmission);
    }
};

/// Counts what the base calls of its virtual operations.
class SpyModel : public NerikResultModel
{
public:
    int majorChanges = 0;
    QStringList alphabets;
    std::vector<std::pair<QDateTime, bool>> currentInfos;
    std::function<void()> beforeFFM;
    std::function<void()> beforeDemodulator;
    int demodulatorSettingsCalls = 0;

    void majorSettingsChanged() override
    {
        ++majorChanges;
        NerikResultModel::majorSettingsChanged();
    }
    bool setAlphabet(QString const& alphabet, bool& changed) override
    {
        alphabets << alphabet;
        return NerikResultModel::setAlphabet(alphabet, changed);
    }
    void addCurrentInfo(QDateTime const& time, bool isNew) override
    {
        currentInfos.emplace_back(time, isNew);
    }
    void setFFMSettings(QString const& xml) override
    {
        if (beforeFFM) {
            beforeFFM();
        }
        NerikResultModel::setFFMSettings(xml);
    }
    bool setDemodulatorSettings(QString const& xml) override
    {
        ++demodulatorSettingsCalls;
        return NerikResultModel::setDemodulatorSettings(xml);
    }
    bool setDemodulator(QString const& demodulator) override
    {
        if (beforeDemodulator) {
            beforeDemodulator();
        }
        return NerikResultModel::setDemodulator(demodulator);
    }
};

DataBlock textBlock(int channel, QString const& content,
                    std::vector<std::pair<qint64, int>> const& stamps, QString const& raw = {})
{
    DataBlock block(channel, 0, 0);
    block.SetContent(content);
    block.SetRawContent(raw);
    for (auto const& stamp : stamps) {
        block.GetTimeStamp().append(TimeStamp(at(stamp.first), stamp.second));
    }
    return block;
}

std::vector<int> positions(DataBlock const& block)
{
    std::vector<int> result;
    for (TimeStamp const& stamp : block.GetTimeStamp()) {
        result.push_back(stamp.GetPosition());
    }
    return result;
}

struct Item
{
    int start;
    int end;
    QString type;
    QString text;
    QString covered;
};

std::vector<Item> items(DataBlock const& block)
{
    std::vector<Item> result;
    for (UserData const* data : block.GetUserData()) {
        result.push_back({data->start, data->end, data->type, data->text, data->coveredText});
    }
    return result;
}

bool operator==(Item const& a, Item const& b)
{
    return a.start == b.start && a.end == b.end && a.type == b.type && a.text == b.text &&
           a.covered == b.covered;
}

void PrintTo(Item const& item, std::ostream* os)
{
    *os << "[" << item.start << "," << item.end << ") " << item.type.toStdString() << " \""
        << item.text.toStdString() << "\" over \"" << item.covered.toStdString() << "\"";
}

// ---------------------------------------------------------------------------------------------
// Transmission time and the settings-change rule

TEST(NerikResultModelTransmissions, DataAroundASettingsChange)
{
    struct Case
    {
        char const* name;
        bool change;
        qint64 dataOffsetMs; // data time relative to the change (or to "now")
        bool joins;
    } const cases[] = {
        {"exactly at the change", true, 0, false},
        {"1 ms before", true, -1, true},
        {"a minute before", true, -60000, true},
        {"a minute and 1 ms before", true, -60001, false},
        {"1 ms after", true, 1, false},
        {"long after", true, 3600000, false},
        {"no change pending, long after", false, 3600000, true},
        {"no change pending, long before", false, -3600000, true},
    };
    QDateTime const changeTime = at(600000);
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        Clock::Override const clock(changeTime);
        NerikResultModel model;
        ClosedLog log;
        model.setCallback(&log);
        Transmission* const open = model.createTransmission(T0);
        if (c.change) {
            model.majorSettingsChanged();
        }
        QDateTime const dataTime = changeTime.addMSecs(c.dataOffsetMs);
        QDateTime const result = model.getTransmissionTime(dataTime);
        if (c.joins) {
            EXPECT_EQ(result, T0);
            EXPECT_EQ(model.getCurrentTransmission(), open);
            EXPECT_TRUE(log.closed.empty());
            EXPECT_EQ(model.getSettingsChangeTime().isValid(), c.change);
        } else {
            EXPECT_EQ(result, dataTime);
            EXPECT_EQ(model.getCurrentTransmission(), nullptr);
            ASSERT_EQ(log.closed.size(), 1u);
            EXPECT_EQ(log.closed[0], open);
            EXPECT_FALSE(model.getSettingsChangeTime().isValid());
            EXPECT_EQ(model.getResultData()->GetTransmission().size(), 1); // still held
        }
    }
    NerikResultModel empty;
    EXPECT_EQ(empty.getTransmissionTime(at(5)), at(5));
}

TEST(NerikResultModelTransmissions, IdleProcessingClosesOneSecondAfterAChange)
{
    struct Case
    {
        char const* name;
        bool change;
        qint64 elapsedMs;
        bool closes;
    } const cases[] = {
        {"999 ms after", true, 999, false},    {"1000 ms after", true, 1000, true},
        {"long after", true, 86400000, true},  {"clock went back", true, -5000, false},
        {"no change", false, 86400000, false},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        Clock::Override const clock(at(0));
        NerikResultModel model;
        ClosedLog log;
        model.setCallback(&log);
        model.createTransmission(T0);
        if (c.change) {
            model.majorSettingsChanged();
        }
        Clock::advance(c.elapsedMs);
        model.doIdleProcessing();
        model.doIdleProcessing(); // a second call never closes again
        EXPECT_EQ(log.closed.size(), c.closes ? 1u : 0u);
        EXPECT_EQ(model.getCurrentTransmission() == nullptr, c.closes);
        EXPECT_EQ(model.getSettingsChangeTime().isValid(), c.change && !c.closes);
    }
}

TEST(NerikResultModelTransmissions, TakeSetAndCloseTheCurrentTransmission)
{
    Clock::Override const clock(at(0));
    NerikResultModel model;
    ClosedLog log;
    model.setCallback(&log);

    // Nothing current: the pending change is dropped all the same.
    model.majorSettingsChanged();
    EXPECT_EQ(model.takeCurrentTransmission(), nullptr);
    EXPECT_FALSE(model.getSettingsChangeTime().isValid());

    Transmission* const first = model.createTransmission(at(0));
    Transmission* const second = model.createTransmission(at(1000));
    model.majorSettingsChanged();
    std::unique_ptr<Transmission> taken(model.takeCurrentTransmission());
    EXPECT_EQ(taken.get(), second);
    EXPECT_EQ(model.getCurrentTransmission(), nullptr);
    EXPECT_FALSE(model.getSettingsChangeTime().isValid());
    EXPECT_EQ(model.getResultData()->GetTransmission(), QList<Transmission*>{first});
    EXPECT_TRUE(log.closed.empty()); // taking is not closing

    // Carried into another model: closes that model's open transmission first.
    NerikResultModel next;
    ClosedLog nextLog;
    next.setCallback(&nextLog);
    Transmission* const nextOpen = next.createTransmission(at(500));
    next.setCurrentTransmission(nullptr);
    EXPECT_EQ(next.getCurrentTransmission(), nextOpen);
    next.setCurrentTransmission(taken.release());
    EXPECT_EQ(next.getCurrentTransmission(), second);
    EXPECT_EQ(nextLog.closed, std::vector<Transmission*>{nextOpen});
    EXPECT_EQ(next.getResultData()->GetTransmission(), (QList<Transmission*>{nextOpen, second}));

    // Found again by start time, newest first.
    Transmission* const again = model.createTransmission(at(0));
    EXPECT_EQ(model.getTransmission(at(0)), again);
    model.closeCurrentTransmission();
    EXPECT_EQ(model.getTransmission(at(7)), nullptr);
    EXPECT_EQ(model.getCurrentTransmission(), nullptr);
    EXPECT_EQ(log.closed, std::vector<Transmission*>{again});

    // clear() lets the callback see the open transmission before the document goes.
    model.getTransmission(at(0));
    model.getEstimateDataSize() = 4711;
    model.clear();
    EXPECT_EQ(log.closed.size(), 2u);
    EXPECT_TRUE(model.getResultData()->GetTransmission().isEmpty());
    EXPECT_EQ(model.getEstimateDataSize(), 0);
}

TEST(NerikResultModelTransmissions, AddTransmissionMergesIntoTheSameStartTime)
{
    SpyModel model;
    Transmission incoming;
    incoming.SetStartTime(at(0));
    incoming.SetStopTime(at(100));
    incoming.AddInfo(new Info(at(0)));
    incoming.AddDataBlock(new DataBlock(textBlock(3, QStringLiteral("ABC"), {{50, 0}})));
    auto* pdu = new PDUDataBlock;
    pdu->SetID(77);
    pdu->SetTimeStamp(at(400));
    incoming.AddPDUDataBlock(pdu);

    EXPECT_TRUE(model.addTransmission(incoming));
    Transmission* const target = model.getCurrentTransmission();
    ASSERT_NE(target, nullptr);
    EXPECT_EQ(target->GetStopTime(), at(100));

    // The same again, with more text and a later stop: merged, not duplicated.
    incoming.SetStopTime(at(900));
    incoming.GetDataBlock()[0]->SetContent(QStringLiteral("DEF"));
    incoming.GetDataBlock()[0]->GetTimeStamp()[0] = TimeStamp(at(800), 3);
    EXPECT_FALSE(model.addTransmission(incoming));
    EXPECT_EQ(model.getResultData()->GetTransmission().size(), 1);
    EXPECT_EQ(target->GetStopTime(), at(900));
    EXPECT_EQ(target->GetInfos().size(), 1);
    ASSERT_EQ(target->GetDataBlock().size(), 1);
    EXPECT_EQ(target->GetDataBlock()[0]->GetContent(), QStringLiteral("ABCDEF"));
    EXPECT_EQ(target->GetPDUDataBlocks().size(), 1);

    // latest: the stop time unless a block is stamped later.
    ASSERT_EQ(model.currentInfos.size(), 2u);
    EXPECT_EQ(model.currentInfos[0], std::make_pair(at(400), true));
    EXPECT_EQ(model.currentInfos[1], std::make_pair(at(900), false));

    Transmission other;
    other.SetStartTime(at(5000));
    other.SetStopTime(at(5000));
    EXPECT_TRUE(model.addTransmission(other));
    EXPECT_EQ(model.getResultData()->GetTransmission().size(), 2);
}

TEST(NerikResultModelTransmissions, ExtractCopiesPduBlocksFromAnIndexOn)
{
    struct Case
    {
        int first;
        std::vector<int> ids;
        bool touched;
    } const cases[] = {
        {-1, {}, false}, {0, {1, 2, 3}, true}, {2, {3}, true}, {3, {}, true}, {9, {}, true}};
    NerikResultModel model;
    Transmission* const current = model.createTransmission(at(0));
    current->SetStopTime(at(10));
    current->AddDataBlock(new DataBlock(textBlock(1, QStringLiteral("x"), {{0, 0}})));
    for (int id : {1, 2, 3}) {
        auto* pdu = new PDUDataBlock;
        pdu->SetID(id);
        current->AddPDUDataBlock(pdu);
    }
    for (auto const& c : cases) {
        SCOPED_TRACE(c.first);
        Transmission out;
        model.extractTransmission(out, c.first);
        std::vector<int> ids;
        for (PDUDataBlock const* pdu : out.GetPDUDataBlocks()) {
            ids.push_back(pdu->GetID());
        }
        EXPECT_EQ(ids, c.ids);
        EXPECT_TRUE(out.GetDataBlock().isEmpty());
        EXPECT_EQ(out.GetStartTime().isValid(), c.touched);
    }
    EXPECT_EQ(current->GetPDUDataBlocks().size(), 3);
}

// ---------------------------------------------------------------------------------------------
// Text data blocks

TEST(NerikResultModelTextBlocks, MergeOfResendsAndContinuations)
{
    struct Case
    {
        char const* name;
        DataBlock existing; // channel 5; no existing block when its content is "-"
        DataBlock added;
        QString content;
        QString raw;
        std::vector<int> stampPositions;
        QDateTime latest;
    };
    Case const cases[] = {
        {"new channel is normalised",
         textBlock(5, QStringLiteral("-"), {}),
         textBlock(5, QStringLiteral("HELLO"), {{10, 5}, {20, 8}}),
         QStringLiteral("HELLO"),
         QString(),
         {0, 3},
         at(10)},
        {"first position 0 replaces",
         textBlock(5, QStringLiteral("OLD TEXT"), {{0, 0}, {5, 4}}, QStringLiteral("ot")),
         textBlock(5, QStringLiteral("NEW"), {{30, 0}}, QStringLiteral("n")),
         QStringLiteral("NEW"),
         QStringLiteral("n"),
         {0},
         at(30)},
        {"first position 1 continues",
         textBlock(5, QStringLiteral("A"), {{0, 0}}, QStringLiteral("a")),
         textBlock(5, QStringLiteral("BC"), {{40, 1}, {41, 2}}, QStringLiteral("bc")),
         QStringLiteral("ABC"),
         QStringLiteral("abc"),
         {0, 1, 2},
         at(40)},
        {"same first position is a resend",
         textBlock(5, QStringLiteral("0123456789"), {{0, 0}}),
         textBlock(5, QStringLiteral("X"), {{50, 0}}),
         QStringLiteral("X"),
         QString(),
         {0},
         at(50)},
        {"resend with several stamps",
         textBlock(5, QStringLiteral("ABCDEFGHIJ"), {{0, 0}}),
         textBlock(5, QStringLiteral("xyz"), {{60, 0}, {61, 2}}),
         QStringLiteral("xyz"),
         QString(),
         {0, 2},
         at(60)},
        {"block earlier than latest leaves latest",
         textBlock(5, QStringLiteral("A"), {{0, 0}}),
         textBlock(5, QStringLiteral("B"), {{-5000, 1}}),
         QStringLiteral("AB"),
         QString(),
         {0, 1},
         at(0)},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.name);
        NerikResultModel model;
        Transmission* const tr = model.createTransmission(at(0));
        QDateTime latest = at(0);
        int existingId = -1;
        if (c.existing.GetContent() != QStringLiteral("-")) {
            QDateTime ignored;
            model.addDataBlock(tr, c.existing, ignored);
            existingId = tr->GetDataBlock()[0]->GetID();
        }
        // Another channel in between must not be touched.
        QDateTime ignored;
        model.addDataBlock(tr, textBlock(6, QStringLiteral("other"), {{0, 0}}), ignored);
        model.addDataBlock(tr, c.added, latest);
        DataBlock const* const merged = NerikResultModel::getDataBlock(tr, 5);
        ASSERT_NE(merged, nullptr);
        EXPECT_EQ(merged->GetContent(), c.content);
        EXPECT_EQ(merged->GetRawContent(), c.raw);
        EXPECT_EQ(positions(*merged), c.stampPositions);
        EXPECT_EQ(latest, c.latest);
        EXPECT_EQ(tr->GetDataBlock().size(), 2);
        if (existingId >= 0) {
            EXPECT_EQ(merged->GetID(), existingId);
        } else {
            EXPECT_GT(merged->GetID(), 0);
        }
        EXPECT_EQ(NerikResultModel::getDataBlock(tr, 6)->GetContent(), QStringLiteral("other"));
    }
}

TEST(NerikResultModelTextBlocks, BlocksWithoutTimeStampsOrTransmissionAreIgnored)
{
    NerikResultModel model;
    Transmission* const tr = model.createTransmission(at(0));
    QDateTime latest = at(0);
    model.addDataBlock(tr, textBlock(1, QStringLiteral("no stamps"), {}), latest);
    model.addDataBlock(nullptr, textBlock(1, QStringLiteral("x"), {{9, 0}}), latest);
    EXPECT_TRUE(tr->GetDataBlock().isEmpty());
    EXPECT_EQ(latest, at(0));
    EXPECT_EQ(NerikResultModel::getDataBlock(nullptr, 1), nullptr);
}

TEST(NerikResultModelTextBlocks, NormalisationMovesStampsAndUserData)
{
    struct Case
    {
        char const* name;
        std::vector<std::pair<qint64, int>> stamps;
        std::vector<int> expectedStamps;
        int expectedItemStart;
    } const cases[] = {
        {"first at 5", {{0, 5}, {1, 9}}, {0, 4}, 2},
        {"first at 1", {{0, 1}, {1, 9}}, {0, 8}, 6},
        {"first at 0", {{0, 0}, {1, 9}}, {0, 9}, 7},
        {"no stamps", {}, {}, 7},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        NerikResultModel model;
        DataBlock block = textBlock(1, QStringLiteral("text"), c.stamps);
        block.AddUserData(new UserData(7, 8, UserData::CommentType, QStringLiteral("n")));
        model.normalizeDataBlock(&block);
        EXPECT_EQ(positions(block), c.expectedStamps);
        EXPECT_EQ(block.GetUserData()[0]->start, c.expectedItemStart);
        EXPECT_EQ(block.GetUserData()[0]->end, c.expectedItemStart + 1);
    }
}

TEST(NerikResultModelTextBlocks, FindDataBlockLooksInOneTransmission)
{
    NerikResultModel model;
    QDateTime latest;
    Transmission* const t0 = model.createTransmission(at(0));
    model.addDataBlock(t0, textBlock(1, QStringLiteral("t0c1"), {{0, 0}}), latest);
    model.addDataBlock(t0, textBlock(2, QStringLiteral("t0c2"), {{0, 0}}), latest);
    Transmission* const t10 = model.createTransmission(at(10000));
    model.addDataBlock(t10, textBlock(1, QStringLiteral("t10c1"), {{10000, 0}}), latest);
    Transmission* const t20 = model.createTransmission(at(20000));
    model.addDataBlock(t20, textBlock(3, QStringLiteral("t20c3"), {{20000, 0}}), latest);

    struct Case
    {
        int channel;
        QDateTime time;
        char const* content; // nullptr: none
    } const cases[] = {
        {1, at(0), "t0c1"},      {1, at(9999), "t0c1"},     {1, at(10000), "t10c1"},
        {1, at(15000), "t10c1"}, {2, at(15000), nullptr},   {2, at(5), "t0c2"},
        {1, at(-1), nullptr},    {3, QDateTime(), "t20c3"}, {1, QDateTime(), nullptr},
        {1, at(99999), nullptr},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(::testing::Message()
                     << c.channel << " at " << c.time.toString().toStdString());
        DataBlock const* const found = model.findDataBlock(c.channel, c.time);
        if (c.content == nullptr) {
            EXPECT_EQ(found, nullptr);
        } else {
            ASSERT_NE(found, nullptr);
            EXPECT_EQ(found->GetContent(), QString::fromLatin1(c.content));
        }
    }
    EXPECT_EQ(NerikResultModel().findDataBlock(1, QDateTime()), nullptr);
}

// ---------------------------------------------------------------------------------------------
// User edits

/// Channel 4 of a transmission at T0 holds the text; edits arrive one call each.
struct EditCase
{
    char const* name;
    QString content;
    std::vector<int> stampPositions;
    std::vector<Item> initialItems; // placed directly, not applied
    std::vector<std::vector<Item>> calls;
    QString expectedContent;
    std::vector<int> expectedStamps;
    std::vector<Item> expectedItems;
};

QString const Change = UserData::ChangeType;
QString const Comment = UserData::CommentType;

TEST(NerikResultModelUserData, EditsAppliedRevertedAndMoved)
{
    EditCase const cases[] = {
        {"edit applied once",
         QStringLiteral("HELLO WORLD"),
         {0, 6, 8},
         {},
         {{{6, 11, Change, QStringLiteral("THERE!"), QStringLiteral("WORLD")}}},
         QStringLiteral("HELLO THERE!"),
         {0, 6, 9},
         {{6, 11, Change, QStringLiteral("THERE!"), QStringLiteral("WORLD")}}},
        {"same edit twice is one edit",
         QStringLiteral("HELLO WORLD"),
         {0, 6, 8},
         {},
         {{{6, 11, Change, QStringLiteral("THERE!"), QStringLiteral("WORLD")}},
          {{6, 11, Change, QStringLiteral("THERE!"), QStringLiteral("WORLD")}}},
         QStringLiteral("HELLO THERE!"),
         {0, 6, 9},
         {{6, 11, Change, QStringLiteral("THERE!"), QStringLiteral("WORLD")}}},
        {"overlapping edit reverts the first, then applies at its own positions",
         QStringLiteral("ABCDEFGHIJ"),
         {0},
         {},
         {{{2, 5, Change, QStringLiteral("x"), QStringLiteral("CDE")}},
          {{4, 7, Change, QStringLiteral("123456"), QStringLiteral("GHI")}}},
         QStringLiteral("ABCD123456HIJ"),
         {0},
         {{4, 7, Change, QStringLiteral("123456"), QStringLiteral("GHI")}}},
        {"separate edits both stay",
         QStringLiteral("ABCDEFGHIJ"),
         {0, 5},
         {},
         {{{0, 1, Change, QStringLiteral("aa"), QStringLiteral("A")}},
          {{5, 6, Change, QString(), QStringLiteral("E")}}},
         QStringLiteral("aaBCDFGHIJ"),
         {0, 5},
         {{0, 1, Change, QStringLiteral("aa"), QStringLiteral("A")},
          {5, 6, Change, QString(), QStringLiteral("E")}}},
        {"comment behind an edit moves with the text",
         QStringLiteral("HELLO WORLD"),
         {0},
         {{6, 11, Comment, QStringLiteral("n"), QStringLiteral("WORLD")}},
         {{{0, 5, Change, QStringLiteral("HI"), QStringLiteral("HELLO")}}},
         QStringLiteral("HI WORLD"),
         {0},
         {{3, 8, Comment, QStringLiteral("n"), QStringLiteral("WORLD")},
          {0, 5, Change, QStringLiteral("HI"), QStringLiteral("HELLO")}}},
        {"edit inside a comment resizes it; the edit item past the end is dropped",
         QStringLiteral("HELLO WORLD"),
         {0},
         {{0, 11, Comment, QStringLiteral("all"), QStringLiteral("HELLO WORLD")}},
         {{{6, 11, Change, QStringLiteral("X"), QStringLiteral("WORLD")}}},
         QStringLiteral("HELLO X"),
         {0},
         {{0, 7, Comment, QStringLiteral("all"), QStringLiteral("HELLO X")}}},
        {"shrinking edit inside a comment keeps one character",
         QStringLiteral("ABCDEFGH"),
         {0},
         {{1, 3, Comment, QStringLiteral("c"), QStringLiteral("BC")}},
         {{{2, 8, Change, QString(), QStringLiteral("CDEFGH")}}},
         QStringLiteral("AB"),
         {0},
         {{1, 2, Comment, QStringLiteral("c"), QStringLiteral("B")}}},
        {"pure deletion of an edit restores the text",
         QStringLiteral("HELLO WORLD"),
         {0, 6, 8},
         {},
         {{{6, 11, Change, QStringLiteral("THERE!"), QStringLiteral("WORLD")}},
          {{7, 8, Change, QString(), QString()}}},
         QStringLiteral("HELLO WORLD"),
         {0, 6, 8},
         {}},
        {"pure deletion removes overlapping items of its type only",
         QStringLiteral("HELLO WORLD"),
         {0},
         {{0, 5, Comment, QStringLiteral("a"), QStringLiteral("HELLO")},
          {6, 11, Comment, QStringLiteral("b"), QStringLiteral("WORLD")},
          {6, 11, QStringLiteral("Mark"), QStringLiteral("m"), QStringLiteral("WORLD")}},
         {{{10, 11, Comment, QString(), QString()}}},
         QStringLiteral("HELLO WORLD"),
         {0},
         {{0, 5, Comment, QStringLiteral("a"), QStringLiteral("HELLO")},
          {6, 11, QStringLiteral("Mark"), QStringLiteral("m"), QStringLiteral("WORLD")}}},
        {"touching ranges do not overlap",
         QStringLiteral("HELLO WORLD"),
         {0},
         {{0, 5, Comment, QStringLiteral("a"), QStringLiteral("HELLO")}},
         {{{5, 6, Comment, QStringLiteral("b"), QStringLiteral(" ")}}},
         QStringLiteral("HELLO WORLD"),
         {0},
         {{0, 5, Comment, QStringLiteral("a"), QStringLiteral("HELLO")},
          {5, 6, Comment, QStringLiteral("b"), QStringLiteral(" ")}}},
        {"insertion moves later stamps, not the one at its position",
         QStringLiteral("ABCD"),
         {0, 2, 3},
         {},
         {{{2, 2, Change, QStringLiteral("xy"), QString()}}},
         QStringLiteral("ABxyCD"),
         {0, 2, 5},
         {{4, 4, Change, QStringLiteral("xy"), QString()}}},
        {"several items in one call act in order",
         QStringLiteral("one two three"),
         {0},
         {},
         {{{0, 3, Change, QStringLiteral("1"), QStringLiteral("one")},
           {2, 5, Comment, QStringLiteral("c"), QStringLiteral("two")}}},
         QStringLiteral("1 two three"),
         {0},
         {{0, 3, Change, QStringLiteral("1"), QStringLiteral("one")},
          {2, 5, Comment, QStringLiteral("c"), QStringLiteral("two")}}},
    };
    for (EditCase const& c : cases) {
        SCOPED_TRACE(c.name);
        NerikResultModel model;
        Transmission* const tr = model.createTransmission(T0);
        DataBlock* const target = new DataBlock(4, 0, 0);
        target->SetContent(c.content);
        for (int position : c.stampPositions) {
            target->GetTimeStamp().append(TimeStamp(T0, position));
        }
        for (Item const& item : c.initialItems) {
            target->AddUserData(
                new UserData(item.start, item.end, item.type, item.text, QString(), item.covered));
        }
        tr->AddDataBlock(target);
        for (auto const& call : c.calls) {
            DataBlock edits = textBlock(4, QString(), {{1000, 0}});
            for (Item const& item : call) {
                edits.AddUserData(new UserData(item.start, item.end, item.type, item.text,
                                               QString(), item.covered));
            }
            EXPECT_TRUE(model.setUserData(edits));
        }
        EXPECT_EQ(target->GetContent(), c.expectedContent);
        EXPECT_EQ(positions(*target), c.expectedStamps);
        EXPECT_EQ(items(*target), c.expectedItems);
    }
}

TEST(NerikResultModelUserData, InRangeIsAnyOverlap)
{
    struct Case
    {
        int itemStart, itemEnd, start, end;
        bool overlaps;
    } const cases[] = {
        {2, 5, 2, 5, true}, {2, 5, 4, 9, true},  {2, 5, 0, 3, true},  {2, 5, 3, 4, true},
        {2, 5, 0, 9, true}, {2, 5, 5, 9, false}, {2, 5, 0, 2, false}, {2, 2, 2, 2, false},
        {2, 2, 1, 3, true}, {2, 5, 5, 5, true},  {2, 5, 3, 3, true},
    };
    for (auto const& c : cases) {
        UserData item(c.itemStart, c.itemEnd, Comment);
        EXPECT_EQ(NerikResultModel::userDataInRange(&item, c.start, c.end), c.overlaps)
            << "[" << c.itemStart << "," << c.itemEnd << ") vs [" << c.start << "," << c.end << ")";
    }
}

TEST(NerikResultModelUserData, RandomEditsRevertToTheOriginal)
{
    QRandomGenerator random(20240131);
    for (int round = 0; round < 300; ++round) {
        SCOPED_TRACE(round);
        NerikResultModel model;
        Transmission* const tr = model.createTransmission(T0);
        QString original;
        int const length = random.bounded(1, 40);
        for (int i = 0; i < length; ++i) {
            original += QChar('a' + random.bounded(26));
        }
        auto* const target = new DataBlock(2, 0, 0);
        target->SetContent(original);
        std::vector<int> stamps;
        for (int p = 0; p <= length; p += 1 + random.bounded(8)) {
            stamps.push_back(p);
            target->GetTimeStamp().append(TimeStamp(T0, p));
        }
        tr->AddDataBlock(target);

        // Insertions are left out: their item moves past the inserted text, so a removal at
        // the original position does not meet it.
        int const start = random.bounded(0, length);
        int const end = random.bounded(start + 1, length + 1);
        QString replacement;
        for (int i = random.bounded(0, 6); i > 0; --i) {
            replacement += QChar('0' + random.bounded(10));
        }
        DataBlock edit = textBlock(2, QString(), {{5, 0}});
        edit.AddUserData(new UserData(start, end, Change, replacement, QString(),
                                      original.mid(start, end - start)));
        ASSERT_TRUE(model.setUserData(edit));
        EXPECT_EQ(target->GetContent(), original.left(start) + replacement + original.mid(end));
        for (UserData const* item : target->GetUserData()) {
            EXPECT_GE(item->start, 0);
            EXPECT_LE(item->end, target->GetContent().size());
        }
        if (target->GetUserData().isEmpty()) {
            continue; // the edit's own item fell past the end: nothing left to revert by
        }
        DataBlock removal = textBlock(2, QString(), {{6, 0}});
        removal.AddUserData(new UserData(start, end, Change));
        ASSERT_TRUE(model.setUserData(removal));
        EXPECT_EQ(target->GetContent(), original);
        if (replacement.size() >= end - start) {
            // Stamps inside a shortened range are pulled before it and stay there.
            EXPECT_EQ(positions(*target), stamps);
        }
        EXPECT_TRUE(target->GetUserData().isEmpty());
    }
}

// ---------------------------------------------------------------------------------------------
// The user channel

TEST(NerikResultModelUserChannel, TypedTextReplacesWhatWasTypedFromItsTimeOn)
{
    int const User = NerikResultModel::UserChannelID;
    struct Case
    {
        char const* name;
        std::vector<std::pair<qint64, int>> typedStamps;
        QString typed;
        std::vector<Item> typedItems;
        QString expectedContent;
        std::vector<int> expectedStamps;
        std::vector<Item> expectedItems; // placed items; unplaced ones are counted apart
        int unplacedKept;
    } const cases[] = {
        {"later text is appended",
         {{30000, 0}},
         QStringLiteral("!"),
         {},
         QStringLiteral("HELLO WORLD!"),
         {0, 6, 11},
         {{0, 5, Comment, QStringLiteral("k"), QStringLiteral("HELLO")},
          {4, 8, Comment, QStringLiteral("across the cut"), QString()}},
         1},
        {"text at the second stamp replaces the rest",
         {{20000, 0}},
         QStringLiteral("THERE"),
         {{0, 5, Comment, QStringLiteral("c"), QStringLiteral("THERE")}},
         QStringLiteral("HELLO THERE"),
         {0, 6},
         {{0, 5, Comment, QStringLiteral("k"), QStringLiteral("HELLO")},
          {6, 11, Comment, QStringLiteral("c"), QStringLiteral("THERE")}},
         1},
        {"text before everything replaces all",
         {{5000, 0}, {6000, 2}},
         QStringLiteral("NEW"),
         {},
         QStringLiteral("NEW"),
         {0, 2},
         {},
         0},
        {"positions already counted from the channel start stay",
         {{20000, 6}},
         QStringLiteral("YOU"),
         {},
         QStringLiteral("HELLO YOU"),
         {0, 6},
         {{0, 5, Comment, QStringLiteral("k"), QStringLiteral("HELLO")}},
         1},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        NerikResultModel model;
        Transmission* const tr = model.createTransmission(at(0));
        auto* const typedSoFar = new DataBlock(User, 0, 0);
        typedSoFar->SetID(model.getNextID());
        typedSoFar->SetContent(QStringLiteral("HELLO WORLD"));
        typedSoFar->GetTimeStamp() << TimeStamp(at(10000), 0) << TimeStamp(at(20000), 6);
        typedSoFar->AddUserData(
            new UserData(0, 5, Comment, QStringLiteral("k"), QString(), QStringLiteral("HELLO")));
        typedSoFar->AddUserData(new UserData(4, 8, Comment, QStringLiteral("across the cut")));
        typedSoFar->AddUserData(
            new UserData(std::numeric_limits<int>::max(), 3, Comment, QStringLiteral("unplaced")));
        typedSoFar->AddUserData(new UserData(std::numeric_limits<int>::max(), 99, Comment,
                                             QStringLiteral("unplaced, too far")));
        tr->AddDataBlock(typedSoFar);
        model.closeCurrentTransmission();

        DataBlock typed = textBlock(User, c.typed, c.typedStamps);
        for (Item const& item : c.typedItems) {
            typed.AddUserData(
                new UserData(item.start, item.end, item.type, item.text, QString(), item.covered));
        }
        ASSERT_TRUE(model.setUserData(typed));
        EXPECT_EQ(tr->GetDataBlock().size(), 1);
        EXPECT_EQ(typedSoFar->GetContent(), c.expectedContent);
        EXPECT_EQ(positions(*typedSoFar), c.expectedStamps);
        // Kept: items wholly before the cut (and the unplaced one that ends before it).
        std::vector<Item> placed;
        int unplaced = 0;
        for (Item const& item : items(*typedSoFar)) {
            if (item.start == std::numeric_limits<int>::max()) {
                ++unplaced;
            } else {
                placed.push_back(item);
            }
        }
        EXPECT_EQ(placed, c.expectedItems);
        EXPECT_EQ(unplaced, c.unplacedKept);
    }
}

TEST(NerikResultModelUserChannel, FirstTypedTextMakesBlockAndTransmission)
{
    int const User = NerikResultModel::UserChannelID;
    NerikResultModel model;
    DataBlock typed = textBlock(User, QStringLiteral("hi"), {{100, 0}});
    ASSERT_TRUE(model.setUserData(typed));
    ASSERT_EQ(model.getResultData()->GetTransmission().size(), 1);
    Transmission* const tr = model.getCurrentTransmission();
    ASSERT_NE(tr, nullptr);
    EXPECT_EQ(tr->GetStartTime(), at(100));
    DataBlock const* const block = NerikResultModel::getDataBlock(tr, User);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(block->GetContent(), QStringLiteral("hi"));
    EXPECT_GT(block->GetID(), 0);

    // Later text goes into the same block, even typed before the transmission began.
    DataBlock early = textBlock(User, QStringLiteral("x"), {{50, 0}});
    ASSERT_TRUE(model.setUserData(early));
    EXPECT_EQ(block->GetContent(), QStringLiteral("x"));
    DataBlock none = textBlock(User, QStringLiteral("x"), {});
    EXPECT_FALSE(model.setUserData(none));
    EXPECT_TRUE(model.isChannelSelected(User));
}

// ---------------------------------------------------------------------------------------------
// PDU data blocks

PDUDataBlock* pduBlock(int id, qint64 time, QString const& payload = {})
{
    auto* block = new PDUDataBlock;
    block->SetID(id);
    block->SetTimeStamp(at(time));
    block->SetName(QStringLiteral("PDU %1").arg(id));
    if (!payload.isEmpty()) {
        NerikResultDataXml::Payload data;
        data.SetContent(payload);
        block->SetPayload(data);
    }
    return block;
}

QString shape(QList<PDUDataBlock*> const& blocks)
{
    QStringList parts;
    for (PDUDataBlock const* block : blocks) {
        QString part = QString::number(block->GetID());
        if (!block->GetPayload().GetContent().isEmpty()) {
            part += QLatin1Char('=') + block->GetPayload().GetContent();
        }
        if (!block->GetUserData().isEmpty()) {
            part += QStringLiteral("u%1").arg(block->GetUserData().size());
        }
        if (!block->GetPDUDataBlocks().isEmpty()) {
            part += QLatin1Char('(') + shape(block->GetPDUDataBlocks()) + QLatin1Char(')');
        }
        parts << part;
    }
    return parts.join(QLatin1Char(' '));
}

TEST(NerikResultModelPdu, NestedBlocksMergeByIdAtEveryLevel)
{
    struct Case
    {
        char const* name;
        std::function<PDUDataBlock*()> incoming;
        QString expected;
        QDateTime latest;
    } const cases[] = {
        {"new top-level block is appended whole",
         [] {
             PDUDataBlock* b = pduBlock(9, 500);
             b->AddPDUDataBlock(pduBlock(10, 500));
             return b;
         },
         QStringLiteral("1=p1u2(2 3(4)) 9(10)"), at(500)},
        {"same id: payload replaced, children merged one level down",
         [] {
             PDUDataBlock* b = pduBlock(1, 700, QStringLiteral("new"));
             PDUDataBlock* three = pduBlock(3, 700);
             three->AddPDUDataBlock(pduBlock(5, 700));
             b->AddPDUDataBlock(three);
             return b;
         },
         QStringLiteral("1=new(2 3(4 5))"), at(700)},
        {"empty payload keeps the old one; user data replaced",
         [] {
             PDUDataBlock* b = pduBlock(1, 50);
             b->AddUserData(new UserData(0, 1, Comment, QStringLiteral("u")));
             PDUDataBlock* four = pduBlock(4, 50, QStringLiteral("p4"));
             PDUDataBlock* three = pduBlock(3, 50);
             three->AddPDUDataBlock(four);
             b->AddPDUDataBlock(three);
             return b;
         },
         QStringLiteral("1=p1u1(2 3(4=p4))"), at(100)},
        {"a child id at the top level is not matched deep", [] { return pduBlock(4, 100); },
         QStringLiteral("1=p1u2(2 3(4)) 4"), at(100)},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        NerikResultModel model;
        Transmission* const tr = model.createTransmission(at(0));
        PDUDataBlock* const one = pduBlock(1, 0, QStringLiteral("p1"));
        one->AddUserData(new UserData(0, 1, Comment, QStringLiteral("old")));
        one->AddUserData(new UserData(1, 2, Comment, QStringLiteral("old")));
        one->AddPDUDataBlock(pduBlock(2, 0));
        PDUDataBlock* const three = pduBlock(3, 0);
        three->AddPDUDataBlock(pduBlock(4, 0));
        one->AddPDUDataBlock(three);
        tr->AddPDUDataBlock(one);
        std::unique_ptr<PDUDataBlock> incoming(c.incoming());
        QDateTime latest = at(100);
        model.addPDUDataBlock(tr, *incoming, latest);
        EXPECT_EQ(shape(tr->GetPDUDataBlocks()), c.expected);
        EXPECT_EQ(latest, c.latest);
    }
}

TEST(NerikResultModelPdu, SearchesGoNewestFirstAndDepthFirst)
{
    NerikResultModel model;
    Transmission* const first = model.createTransmission(at(0));
    PDUDataBlock* const oldTwo = pduBlock(2, 0);
    first->AddPDUDataBlock(oldTwo);
    Transmission* const second = model.createTransmission(at(1000));
    PDUDataBlock* const a = pduBlock(1, 0);
    PDUDataBlock* const deepTwo = pduBlock(2, 0);
    PDUDataBlock* const middle = pduBlock(5, 0);
    middle->AddPDUDataBlock(deepTwo);
    a->AddPDUDataBlock(middle);
    second->AddPDUDataBlock(a);
    PDUDataBlock* const b = pduBlock(6, 0);
    PDUDataBlock* const laterTwo = pduBlock(2, 0);
    b->AddPDUDataBlock(laterTwo);
    second->AddPDUDataBlock(b);

    EXPECT_EQ(model.getPDUDataBlock(2), laterTwo); // last top-level block searched first
    EXPECT_EQ(NerikResultModel::getPDUDataBlock(second, 2, false), nullptr);
    EXPECT_EQ(NerikResultModel::getPDUDataBlock(second, 2, true), laterTwo);
    EXPECT_EQ(NerikResultModel::getPDUDataBlock(a, 2, true), deepTwo);
    EXPECT_EQ(NerikResultModel::getPDUDataBlock(a, 2, false), nullptr);
    EXPECT_EQ(NerikResultModel::getPDUDataBlock(first, 2, false), oldTwo);
    EXPECT_EQ(NerikResultModel::getPDUDataBlock(static_cast<Transmission*>(nullptr), 2, true),
              nullptr);
    EXPECT_EQ(model.getPDUDataBlock(99), nullptr);

    PDUDataBlock edit;
    edit.SetID(5);
    edit.AddUserData(new UserData(1, 2, Comment, QStringLiteral("one")));
    edit.AddUserData(new UserData(2, 3, Comment, QStringLiteral("two")));
    middle->AddUserData(new UserData(0, 9, Comment, QStringLiteral("gone")));
    EXPECT_TRUE(model.setUserData(edit));
    ASSERT_EQ(middle->GetUserData().size(), 2);
    EXPECT_EQ(middle->GetUserData()[0]->text, QStringLiteral("one"));
    EXPECT_EQ(middle->GetUserData()[1]->text, QStringLiteral("two"));
    EXPECT_NE(middle->GetUserData()[0], edit.GetUserData()[0]); // copies
}

// ---------------------------------------------------------------------------------------------
// Size check and message data

TEST(NerikResultModelSize, ExactCountOnlyPastTheThreshold)
{
    struct Case
    {
        char const* name;
        int estimate;
        int contentCharacters;
        bool exceeded;
        bool recounted;
    } const cases[] = {
        {"estimate at the limit is not rendered", 1024000, 2000000, false, false},
        {"estimate one past, small document", 1024001, 10, false, true},
        {"estimate one past, big document", 1024001, 1100000, true, true},
        {"multi-byte text counts in UTF-8 bytes", 1024001, 400000, true, true},
        {"huge estimate, small document", 2000000000, 0, false, true},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        NerikResultModel model;
        Transmission* const tr = model.createTransmission(at(0));
        QDateTime latest;
        QChar const character = QString(c.name).startsWith(QStringLiteral("multi"))
                                    ? QChar(0x20AC) // three bytes in UTF-8
                                    : QChar('x');
        model.addDataBlock(tr, textBlock(1, QString(c.contentCharacters, character), {{0, 0}}),
                           latest);
        model.getEstimateDataSize() = c.estimate;
        EXPECT_EQ(model.maxDataSizeExceeded(), c.exceeded);
        if (c.recounted) {
            EXPECT_EQ(model.getEstimateDataSize(),
                      model.getResultData()->GetXmlString().toUtf8().size());
        } else {
            EXPECT_EQ(model.getEstimateDataSize(), c.estimate);
        }
    }
}

/// A transmission whose rendering fails.
class BrokenTransmission : public Transmission
{
public:
    void WriteXml(QXmlStreamWriter&) const override
    {
        throw NerikResultDataXml::NerikResultDataException(QStringLiteral("cannot render"));
    }
};

TEST(NerikResultModelSize, MessageDataIsTheTransmissionsXml)
{
    EXPECT_TRUE(NerikResultModel::getMessageData(nullptr).isEmpty());

    NerikResultModel model;
    Transmission* const tr = model.createTransmission(at(0));
    QDateTime latest;
    model.addDataBlock(tr, textBlock(1, QString::fromUtf8("Grüße \x01 <&>"), {{0, 0}}), latest);
    QByteArray const data = NerikResultModel::getMessageData(tr);
    Transmission read;
    QString error;
    ASSERT_TRUE(read.SetXmlString(QString::fromUtf8(data), error)) << error;
    EXPECT_EQ(read, *tr);

    zelkotest::TraceCapture capture(0x20);
    BrokenTransmission broken;
    EXPECT_TRUE(NerikResultModel::getMessageData(&broken).isEmpty());
    ASSERT_EQ(capture.messages(), QStringList{QStringLiteral("getMessageData: cannot render")});
    EXPECT_EQ(capture.lines()[0].line, 696);
    EXPECT_EQ(capture.lines()[0].sourceFile,
              QStringLiteral("massdatamanagement/zelkodatastreamconverter/nerikresultmodel"));
}

TEST(NerikResultModelSize, MergedDocumentValidatesAgainstTheSchema)
{
    NerikResultModel model;
    Transmission* const tr = model.createTransmission(at(0));
    QDateTime latest;
    Info info(at(0));
    info.SetItem(NerikResultModel::TypeFFMSettings, QStringLiteral("<FFM_Settings/>"));
    model.addInfo(tr, info);
    model.addDataBlock(tr, textBlock(1, QStringLiteral("HELLO WORLD"), {{0, 0}, {1, 6}}), latest);
    DataBlock edit = textBlock(1, QString(), {{2, 0}});
    edit.AddUserData(
        new UserData(6, 11, Change, QStringLiteral("THERE"), QString(), QStringLiteral("WORLD")));
    ASSERT_TRUE(model.setUserData(edit));
    std::unique_ptr<PDUDataBlock> pdu(pduBlock(model.getNextID(), 5, QStringLiteral("p")));
    pdu->AddPDUDataBlock(pduBlock(model.getNextID(), 5));
    model.addPDUDataBlock(tr, *pdu, latest);
    EXPECT_EQ(zelkotest::validateXmlText(model.getResultData()->GetXmlString(),
                                         QStringLiteral("nerikresultdata.xsd")),
              QString());
}

// ---------------------------------------------------------------------------------------------
// Settings

JobSpec::Settings jobSettings(double frequency, JobSpec::Demodulator_Settings::Mode mode,
                              QStringList const& decoders, QString const& alphabet)
{
    JobSpec::Settings settings;
    settings.GetFFM_Settings().SetFrequency(frequency);
    settings.GetDemodulator_Settings().SetMode(mode);
    JobSpec::Decoder decoder;
    decoder.SetValue(decoders);
    settings.GetDemodulator_Settings().SetDecoder(decoder);
    settings.GetDemodulator_Settings().SetAlphabet(alphabet);
    return settings;
}

TEST(NerikResultModelSettings, JobSettingsReachTheVirtualSetters)
{
    struct Case
    {
        char const* name;
        QStringList decoders;
        QString expectedDecoder;
    } const cases[] = {
        {"one decoder", {QStringLiteral("ITA2")}, QStringLiteral("ITA2")},
        {"no decoder", {}, QStringLiteral("NONE")},
        {"two decoders leave the decoder",
         {QStringLiteral("ITA2"), QStringLiteral("SITOR")},
         QStringLiteral("kept")},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        Clock::Override const clock(at(0));
        SpyModel model;
        model.setDecoder(QStringLiteral("kept"));
        model.majorChanges = 0;
        model.setParameter(jobSettings(10000000.0, JobSpec::Demodulator_Settings::USB, c.decoders,
                                       QStringLiteral("International")));
        EXPECT_EQ(model.getFrequency(), 10000000.0);
        EXPECT_EQ(model.getDemodulator(), QStringLiteral("USB"));
        EXPECT_EQ(model.getDecoder(), c.expectedDecoder);
        EXPECT_EQ(model.alphabets, QStringList{QStringLiteral("International")});
        EXPECT_EQ(model.getAlphabet(), QStringLiteral("None"));
        int const decoderChange = c.expectedDecoder == QStringLiteral("kept") ? 0 : 1;
        EXPECT_EQ(model.majorChanges, 2 + decoderChange);
        EXPECT_EQ(model.getSettingsChangeTime(), at(0));

        // The same settings again change nothing.
        model.setParameter(jobSettings(10000000.0, JobSpec::Demodulator_Settings::USB, c.decoders,
                                       QStringLiteral("International")));
        EXPECT_EQ(model.majorChanges, 2 + decoderChange);
    }
}

TEST(NerikResultModelSettings, FrequencyZeroAndRepeatsAreNotChanges)
{
    struct Case
    {
        std::vector<double> values;
        double stored;
        int changes;
    } const cases[] = {
        {{0.0}, 0.0, 0},
        {{5e6, 5e6}, 5e6, 1},
        {{5e6, 0.0}, 5e6, 1},
        {{5e6, 6e6, 5e6}, 5e6, 3},
    };
    for (auto const& c : cases) {
        SpyModel model;
        for (double value : c.values) {
            model.setFrequency(value);
        }
        EXPECT_EQ(model.getFrequency(), c.stored);
        EXPECT_EQ(model.majorChanges, c.changes);
    }
    SpyModel model;
    EXPECT_TRUE(model.setFFMFrequency(QStringLiteral("<FFM_Settings frequency=\"12579000\"/>")));
    EXPECT_TRUE(model.setFFMFrequency(QStringLiteral("<FFM_Settings/>")));
    EXPECT_FALSE(model.setFFMFrequency(QStringLiteral("<Tuner_Settings/>")));
    EXPECT_FALSE(model.setFFMFrequency(QStringLiteral("<FFM_Settings frequency=\"abc\"/>")));
    EXPECT_EQ(model.getFrequency(), 12579000.0);
    EXPECT_EQ(model.majorChanges, 1);
}

TEST(NerikResultModelSettings, DemodulatorSettingsTexts)
{
    struct Case
    {
        char const* name;
        QString xml;
        bool result;
        QString demodulator;
        QString decoder;
        int alphabetCalls;
    } const cases[] = {
        {"empty text changes nothing", QString(), true, QStringLiteral("old"),
         QStringLiteral("old"), 0},
        {"not settings", QStringLiteral("<FFM_Settings/>"), false, QStringLiteral("old"),
         QStringLiteral("old"), 0},
        {"broken XML", QStringLiteral("<Demodulator_Settings"), false, QStringLiteral("old"),
         QStringLiteral("old"), 0},
        {"mode only", QStringLiteral("<Demodulator_Settings mode=\"CW\"/>"), true,
         QStringLiteral("CW"), QStringLiteral("NONE"), 1},
        {"no mode", QStringLiteral("<Demodulator_Settings/>"), true, QStringLiteral("UNKNOWN"),
         QStringLiteral("NONE"), 1},
        {"two decoders",
         QStringLiteral("<Demodulator_Settings mode=\"USB\" alphabet=\"Cyrillic\"><Decoder>"
                        "<Value>ITA2</Value><Value>SITOR</Value></Decoder></Demodulator_Settings>"),
         true, QStringLiteral("USB"), QStringLiteral("old"), 1},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        SpyModel model;
        model.setDemodulator(QStringLiteral("old"));
        model.setDecoder(QStringLiteral("old"));
        EXPECT_EQ(model.setDemodulatorSettings(c.xml), c.result);
        EXPECT_EQ(model.getDemodulator(), c.demodulator);
        EXPECT_EQ(model.getDecoder(), c.decoder);
        EXPECT_EQ(model.alphabets.size(), c.alphabetCalls);
    }
}

TEST(NerikResultModelSettings, ExceptionsOfDerivedSettersAreTraced)
{
    struct Case
    {
        char const* name;
        bool inFFM; // else in setDemodulator
        int kind;   // 0 document library, 1 report library, 2 other
        QString message;
        int line;
        int demodulatorSettingsCalls;
    } const cases[] = {
        {"document exception in FFM", true, 0, QStringLiteral("setParameter: doc"), 794, 0},
        {"report exception in FFM", true, 1, QStringLiteral("setParameter: rep"), 798, 0},
        {"other exception in FFM", true, 2, QStringLiteral("setParameter: Unknown exception"), 802,
         0},
        {"document exception in demodulator", false, 0,
         QStringLiteral("setDemodulatorSettings: doc"), 833, 1},
        {"report exception in demodulator", false, 1, QStringLiteral("setDemodulatorSettings: rep"),
         837, 1},
        {"other exception in demodulator", false, 2,
         QStringLiteral("setDemodulatorSettings: Unknown exception"), 841, 1},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        SpyModel model;
        int const kind = c.kind;
        auto thrower = [kind] {
            if (kind == 0) {
                throw NerikResultDataXml::NerikResultDataException(QStringLiteral("doc"));
            }
            if (kind == 1) {
                throw REPORTKIT::RGException(QStringLiteral("rep"));
            }
            throw 1;
        };
        (c.inFFM ? model.beforeFFM : model.beforeDemodulator) = thrower;
        zelkotest::TraceCapture capture(0x20);
        model.setParameter(jobSettings(1e6, JobSpec::Demodulator_Settings::AM, {}, QString()));
        ASSERT_EQ(capture.messages(), QStringList{c.message});
        EXPECT_EQ(capture.lines()[0].line, c.line);
        EXPECT_EQ(model.demodulatorSettingsCalls, c.demodulatorSettingsCalls);
    }
}

TEST(NerikResultModelSettings, ChannelSelectionTexts)
{
    struct Case
    {
        char const* name;
        QStringList values; // empty with noValues: a text without values
        bool invalidText;
        std::vector<int> selected;
        std::vector<int> notSelected;
        int bits; // -1: null selection
        QStringList readBack;
    } const cases[] = {
        {"3 and 300",
         {QStringLiteral("3"), QStringLiteral("300")},
         false,
         {3, 1000},
         {0, 2, 4, 255, 300, -1},
         4,
         {QStringLiteral("3")}},
        {"no values selects all", {}, false, {0, 3, 255, 256, 5000, 1000}, {}, -1, {}},
        {"invalid text selects all", {}, true, {0, 77, 1000}, {}, -1, {}},
        {"all skipped selects only the user channel",
         {QStringLiteral("abc"), QStringLiteral("256"), QStringLiteral("-1"), QString()},
         false,
         {1000},
         {0, 1, 255, 256, -1},
         0,
         {}},
        {"bounds 0 and 255",
         {QStringLiteral("255"), QStringLiteral("0"), QStringLiteral("0")},
         false,
         {0, 255, 1000},
         {1, 254, 256},
         256,
         {QStringLiteral("0"), QStringLiteral("255")}},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        NerikResultModel model;
        model.setChannelSelection(
            QStringLiteral("<ChannelSelection><Value>9</Value></ChannelSelection>"));
        JobSpec::ChannelSelection selection;
        selection.SetValue(c.values);
        model.setChannelSelection(c.invalidText ? QStringLiteral("<ChannelSelection><Value>")
                                                : selection.GetXmlString());
        for (int channel : c.selected) {
            EXPECT_TRUE(model.isChannelSelected(channel)) << channel;
        }
        for (int channel : c.notSelected) {
            EXPECT_FALSE(model.isChannelSelected(channel)) << channel;
        }
        EXPECT_EQ(model.getChannelSelectionBits().isNull(), c.bits < 0);
        if (c.bits >= 0) {
            EXPECT_EQ(model.getChannelSelectionBits().size(), c.bits);
        }
        QString const text = model.getChannelSelection();
        if (c.readBack.isEmpty()) {
            EXPECT_EQ(text, QString());
        } else {
            JobSpec::ChannelSelection read;
            ASSERT_TRUE(read.SetXmlString(text, 0)) << text;
            EXPECT_EQ(read.GetValue(), c.readBack);
            // A copy of the model answers alike.
            NerikResultModel copy(model);
            EXPECT_EQ(copy.getChannelSelection(), text);
        }
    }
}

TEST(NerikResultModelSettings, CopyTakesSettingsButNotTheDocument)
{
    Clock::Override const clock(at(0));
    NerikResultModel model;
    ClosedLog log;
    model.setCallback(&log);
    model.setFrequency(7e6);
    model.setDemodulator(QStringLiteral("FM"));
    model.setDecoder(QStringLiteral("POCSAG"));
    model.setAlphabetsDirectory(QStringLiteral("/alphabets"));
    model.createTransmission(at(0));
    model.getEstimateDataSize() = 99;

    NerikResultModel copy(model);
    EXPECT_EQ(copy.getFrequency(), 7e6);
    EXPECT_EQ(copy.getDemodulator(), QStringLiteral("FM"));
    EXPECT_EQ(copy.getDecoder(), QStringLiteral("POCSAG"));
    EXPECT_EQ(copy.getAlphabetsDirectory(), QStringLiteral("/alphabets"));
    EXPECT_EQ(copy.getCallback(), &log);
    EXPECT_EQ(copy.getCurrentTransmission(), nullptr);
    EXPECT_TRUE(copy.getResultData()->GetTransmission().isEmpty());
    EXPECT_NE(copy.getResultData(), model.getResultData());
    EXPECT_EQ(copy.getEstimateDataSize(), 0);
    EXPECT_FALSE(copy.getSettingsChangeTime().isValid());
    bool changed = true;
    EXPECT_FALSE(copy.setAlphabet(QStringLiteral("Greek"), changed));
}

} // namespace
