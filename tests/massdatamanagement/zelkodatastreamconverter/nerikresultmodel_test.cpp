// The result model: transmission time and idle rules, text block merging, user channel and
// user edits, PDU block merging, size check, message data, settings, channel selection and
// AIS station reports.

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <jobspec/settings.h>
#include <jobspec/station.h>
#include <limits>
#include <massdatamanagement/zelkodatastreamconverter/clock.h>
#include <massdatamanagement/zelkodatastreamconverter/nerikresultcallback.h>
#include <massdatamanagement/zelkodatastreamconverter/nerikresultmodel.h>
#include <nerikresultdataxml/field.h>
#include <nerikresultdataxml/nerikresultdata.h>
#include <nerikresultdataxml/nerikresultdataexception.h>
#include <reportkit/rgexception.h>
#include <support/qstringprinter.h>
#include <support/rowname.h>
#include <support/tracecapture.h>
#include <vector>

using namespace zelkodatastreamconverter;
using NerikResultDataXml::DataBlock;
using NerikResultDataXml::Field;
using NerikResultDataXml::Info;
using NerikResultDataXml::PDUDataBlock;
using NerikResultDataXml::TimeStamp;
using NerikResultDataXml::Transmission;
using NerikResultDataXml::UserData;

namespace {

QDateTime const T0(QDate(2024, 1, 31), QTime(12, 0, 0), Qt::UTC);
QString const Change = UserData::ChangeType;
QString const Comment = UserData::CommentType;
int const User = NerikResultModel::UserChannelID;
int const Unplaced = std::numeric_limits<int>::max();
using Closed = std::vector<Transmission*>;
using Stamps = std::vector<std::pair<qint64, int>>; // milliseconds after T0, position

QDateTime at(qint64 milliseconds)
{
    return T0.addMSecs(milliseconds);
}

/// Logs the transmissions it closes and what reaches its virtual operations; can throw
/// before two of them.
class SpyModel : public NerikResultModel, public NerikResultCallback
{
public:
    Closed closed;
    int majorChanges = 0;
    int demodulatorSettingsCalls = 0;
    QStringList alphabets;
    std::vector<std::pair<QDateTime, bool>> currentInfos;
    std::function<void()> beforeFFM = [] {};
    std::function<void()> beforeDemodulator = [] {};

    SpyModel() { setCallback(this); }
    void onTransmissionClosed(Transmission* transmission) override
    {
        closed.push_back(transmission);
    }
    void majorSettingsChanged() override
    {
        ++majorChanges;
        NerikResultModel::majorSettingsChanged();
    }
    void addCurrentInfo(QDateTime const& time, bool isNew) override
    {
        currentInfos.emplace_back(time, isNew);
    }
    bool setAlphabet(QString const& alphabet, bool& changed) override
    {
        alphabets << alphabet;
        return NerikResultModel::setAlphabet(alphabet, changed);
    }
    void setFFMSettings(QString const& xml) override
    {
        beforeFFM();
        NerikResultModel::setFFMSettings(xml);
    }
    bool setDemodulatorSettings(QString const& xml) override
    {
        ++demodulatorSettingsCalls;
        return NerikResultModel::setDemodulatorSettings(xml);
    }
    bool setDemodulator(QString const& demodulator) override
    {
        beforeDemodulator();
        return NerikResultModel::setDemodulator(demodulator);
    }
};

DataBlock textBlock(int channel, QString const& content, Stamps const& stamps,
                    QString const& raw = {})
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

/// A user data item as a value: [start, end), type, text, covered text.
struct Item
{
    int start;
    int end;
    QString type;
    QString text;
    QString covered;

    UserData* make() const { return new UserData(start, end, type, text, QString(), covered); }
    bool operator==(Item const& o) const
    {
        return start == o.start && end == o.end && type == o.type && text == o.text &&
               covered == o.covered;
    }
};

void PrintTo(Item const& item, std::ostream* os)
{
    *os << "[" << item.start << "," << item.end << ") " << item.type.toStdString() << " \""
        << item.text.toStdString() << "\" over \"" << item.covered.toStdString() << "\"";
}

std::vector<Item> items(DataBlock const& block)
{
    std::vector<Item> result;
    for (UserData const* data : block.GetUserData()) {
        result.push_back({data->start, data->end, data->type, data->text, data->coveredText});
    }
    return result;
}

PDUDataBlock* pduBlock(int id, qint64 time, QString const& payload = {},
                       std::initializer_list<PDUDataBlock*> children = {})
{
    auto* block = new PDUDataBlock;
    block->SetID(id);
    block->SetTimeStamp(at(time));
    if (!payload.isEmpty()) {
        NerikResultDataXml::Payload data;
        data.SetContent(payload);
        block->SetPayload(data);
    }
    for (PDUDataBlock* child : children) {
        block->AddPDUDataBlock(child);
    }
    return block;
}

// Transmissions

// dataOffsetMs: the data's time relative to the change (or to "now").
// clang-format off
struct SettingsChangeRow { char const* name; bool change; qint64 dataOffsetMs; bool joins; };
// clang-format on
using DataAroundASettingsChange = testing::TestWithParam<SettingsChangeRow>;

TEST_P(DataAroundASettingsChange, JoinsTheOpenTransmissionOrClosesIt)
{
    SettingsChangeRow const& c = GetParam();
    QDateTime const changeTime = at(600000);
    Clock::Override const clock(changeTime);
    SpyModel model;
    Transmission* const open = model.createTransmission(T0);
    if (c.change) {
        model.majorSettingsChanged();
    }
    QDateTime const dataTime = changeTime.addMSecs(c.dataOffsetMs);
    EXPECT_EQ(model.getTransmissionTime(dataTime), c.joins ? T0 : dataTime);
    EXPECT_EQ(model.closed, c.joins ? Closed{} : Closed{open});
    EXPECT_EQ(model.getCurrentTransmission(), c.joins ? open : nullptr);
    EXPECT_EQ(model.getSettingsChangeTime().isValid(), c.change && c.joins);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(NerikResultModel, DataAroundASettingsChange, testing::Values(
    SettingsChangeRow{"exactly_at_the_change", true, 0, false},
    SettingsChangeRow{"1_ms_before", true, -1, true},
    SettingsChangeRow{"a_minute_before", true, -60000, true},
    SettingsChangeRow{"a_minute_and_1_ms_before", true, -60001, false},
    SettingsChangeRow{"no_change_pending", false, 3600000, true}), zelkotest::RowName());
// clang-format on

TEST(NerikResultModelTransmissions, IdleProcessingClosesOneSecondAfterAChange)
{
    // clang-format off
    struct Case { bool change; qint64 elapsedMs; bool closes; } const cases[] = {
        {true, 999, false}, {true, 1000, true}, {true, -5000, false}, {false, 86400000, false}};
    // clang-format on
    for (auto const& c : cases) {
        SCOPED_TRACE(c.elapsedMs);
        Clock::Override const clock(at(0));
        SpyModel model;
        model.createTransmission(T0);
        if (c.change) {
            model.majorSettingsChanged();
        }
        Clock::advance(c.elapsedMs);
        model.doIdleProcessing();
        model.doIdleProcessing(); // a second call never closes again
        EXPECT_EQ(model.closed.size(), c.closes ? 1u : 0u);
        EXPECT_EQ(model.getSettingsChangeTime().isValid(), c.change && !c.closes);
    }
    EXPECT_EQ(NerikResultModel().getTransmissionTime(at(5)), at(5));
}

TEST(NerikResultModelTransmissions, TakeSetAndCloseTheCurrentTransmission)
{
    Clock::Override const clock(at(0));
    SpyModel model;
    model.majorSettingsChanged(); // dropped even with nothing to take
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
    EXPECT_TRUE(model.closed.empty()); // taking is not closing

    // Carried into another model: null is ignored; a real one closes the open one first.
    SpyModel next;
    Transmission* const nextOpen = next.createTransmission(at(500));
    next.setCurrentTransmission(nullptr);
    EXPECT_EQ(next.getCurrentTransmission(), nextOpen);
    next.setCurrentTransmission(taken.release());
    EXPECT_EQ(next.getCurrentTransmission(), second);
    EXPECT_EQ(next.closed, Closed{nextOpen});
    EXPECT_EQ(next.getResultData()->GetTransmission(), (QList<Transmission*>{nextOpen, second}));

    // Found again by start time, newest first.
    Transmission* const again = model.createTransmission(at(0));
    model.closeCurrentTransmission();
    EXPECT_EQ(model.getTransmission(at(7)), nullptr);
    EXPECT_EQ(model.getCurrentTransmission(), nullptr);
    EXPECT_EQ(model.getTransmission(at(0)), again);

    // clear() lets the callback see the open transmission before the document goes.
    model.getEstimateDataSize() = 4711;
    model.clear();
    EXPECT_EQ(model.closed, (Closed{again, again}));
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
    incoming.AddDataBlock(new DataBlock(textBlock(3, "ABC", {{50, 0}})));
    incoming.AddPDUDataBlock(pduBlock(77, 400));
    EXPECT_TRUE(model.addTransmission(incoming));
    Transmission* const target = model.getCurrentTransmission();
    ASSERT_NE(target, nullptr);

    // The same again, with more text and a later stop: merged, not duplicated.
    incoming.SetStopTime(at(900));
    incoming.GetDataBlock()[0]->SetContent(QStringLiteral("DEF"));
    incoming.GetDataBlock()[0]->GetTimeStamp()[0] = TimeStamp(at(800), 3);
    EXPECT_FALSE(model.addTransmission(incoming));
    EXPECT_EQ(model.getResultData()->GetTransmission().size(), 1);
    EXPECT_EQ(target->GetStopTime(), at(900));
    EXPECT_EQ(target->GetInfos().size(), 1); // an info of the same time is kept once
    ASSERT_EQ(target->GetDataBlock().size(), 1);
    EXPECT_EQ(target->GetDataBlock()[0]->GetContent(), QStringLiteral("ABCDEF"));
    EXPECT_EQ(target->GetPDUDataBlocks().size(), 1);
    // latest: the stop time unless a block is stamped later.
    using Seen = std::vector<std::pair<QDateTime, bool>>;
    EXPECT_EQ(model.currentInfos, (Seen{{at(400), true}, {at(900), false}}));

    // Extraction copies the times and the PDU blocks from an index on, never the text.
    for (int first : {-1, 0, 1}) {
        Transmission out;
        model.extractTransmission(out, first);
        EXPECT_EQ(out.GetPDUDataBlocks().size(), first == 0 ? 1 : 0) << first;
        EXPECT_EQ(out.GetStopTime(), first < 0 ? QDateTime() : at(900)) << first;
        EXPECT_TRUE(out.GetDataBlock().isEmpty());
    }

    Transmission other;
    other.SetStartTime(at(5000));
    EXPECT_TRUE(model.addTransmission(other));
    EXPECT_EQ(model.getResultData()->GetTransmission().size(), 2);
}

// Text data blocks

// existing: the block of channel 5 beforehand, none when its content is "-".
// clang-format off
struct MergeRow { char const* name; DataBlock existing; DataBlock added; QString content;
                  QString raw; std::vector<int> stampPositions; QDateTime latest; };
// clang-format on
using TextBlockMerge = testing::TestWithParam<MergeRow>;

TEST_P(TextBlockMerge, ResendReplacesContinuationAppends)
{
    MergeRow const& c = GetParam();
    NerikResultModel model;
    Transmission* const tr = model.createTransmission(at(0));
    QDateTime latest = at(0);
    QDateTime ignored;
    int existingId = -1;
    if (c.existing.GetContent() != QStringLiteral("-")) {
        model.addDataBlock(tr, c.existing, ignored);
        existingId = tr->GetDataBlock()[0]->GetID();
    }
    // Another channel in between must not be touched.
    model.addDataBlock(tr, textBlock(6, "other", {{0, 0}}), ignored);
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
    }
    EXPECT_EQ(NerikResultModel::getDataBlock(tr, 6)->GetContent(), QStringLiteral("other"));
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(NerikResultModel, TextBlockMerge, testing::Values(
    MergeRow{"new_channel_is_normalised", textBlock(5, "-", {}),
             textBlock(5, "HELLO", {{10, 5}, {20, 8}}), "HELLO", "", {0, 3}, at(10)},
    MergeRow{"first_position_0_is_a_resend", textBlock(5, "OLD TEXT", {{0, 0}, {5, 4}}, "ot"),
             textBlock(5, "NEW", {{30, 0}}, "n"), "NEW", "n", {0}, at(30)},
    MergeRow{"first_position_1_continues", textBlock(5, "A", {{0, 0}}, "a"),
             textBlock(5, "BC", {{40, 1}, {41, 2}}, "bc"), "ABC", "abc", {0, 1, 2}, at(40)},
    MergeRow{"block_earlier_than_latest_leaves_latest", textBlock(5, "A", {{0, 0}}),
             textBlock(5, "B", {{-5000, 1}}), "AB", "", {0, 1}, at(0)}),
    zelkotest::RowName());
// clang-format on

TEST(NerikResultModelTextBlocks, BlocksWithoutStampsOrTransmissionAreIgnored)
{
    NerikResultModel model;
    Transmission* const tr = model.createTransmission(at(0));
    QDateTime latest = at(0);
    model.addDataBlock(tr, textBlock(1, "no stamps", {}), latest);
    model.addDataBlock(nullptr, textBlock(1, "x", {{9, 0}}), latest);
    EXPECT_TRUE(tr->GetDataBlock().isEmpty());
    EXPECT_EQ(latest, at(0));
}

TEST(NerikResultModelTextBlocks, NormalisationMovesStampsAndUserData)
{
    // The stamps, the stamps after normalisation, and where the item at 7 goes.
    // clang-format off
    struct Case { Stamps stamps; std::vector<int> expectedStamps; int itemStart; } const cases[] = {
        {{{0, 1}, {1, 9}}, {0, 8}, 6}, {{{0, 0}, {1, 9}}, {0, 9}, 7}, {{}, {}, 7}};
    // clang-format on
    for (auto const& c : cases) {
        SCOPED_TRACE(c.itemStart);
        DataBlock block = textBlock(1, "text", c.stamps);
        block.AddUserData(new UserData(7, 8, Comment, QStringLiteral("n")));
        NerikResultModel().normalizeDataBlock(&block);
        EXPECT_EQ(positions(block), c.expectedStamps);
        EXPECT_EQ(items(block),
                  (std::vector<Item>{{c.itemStart, c.itemStart + 1, Comment, "n", ""}}));
    }
}

TEST(NerikResultModelTextBlocks, FindDataBlockLooksInOneTransmission)
{
    NerikResultModel model;
    QDateTime latest;
    Transmission* const t0 = model.createTransmission(at(0));
    model.addDataBlock(t0, textBlock(1, "t0c1", {{0, 0}}), latest);
    model.addDataBlock(t0, textBlock(2, "t0c2", {{0, 0}}), latest);
    model.addDataBlock(model.createTransmission(at(10000)), textBlock(1, "t10c1", {{10000, 0}}),
                       latest);
    model.addDataBlock(model.createTransmission(at(20000)), textBlock(3, "t20c3", {{20000, 0}}),
                       latest);
    // clang-format off
    struct Case { int channel; QDateTime time; char const* content; } const cases[] = {
        {1, at(0), "t0c1"}, {1, at(9999), "t0c1"}, {1, at(10000), "t10c1"}, {2, at(15000), "none"},
        {2, at(5), "t0c2"}, {1, at(-1), "none"},   {3, {}, "t20c3"},        {1, {}, "none"},
    };
    // clang-format on
    for (auto const& c : cases) {
        SCOPED_TRACE(::testing::Message()
                     << c.channel << " at " << c.time.toString().toStdString());
        DataBlock const* const found = model.findDataBlock(c.channel, c.time);
        EXPECT_EQ(found ? found->GetContent() : QStringLiteral("none"), QString(c.content));
    }
    EXPECT_EQ(NerikResultModel().findDataBlock(1, QDateTime()), nullptr);
}

// User edits

// Channel 4 holds the text and the initial items (placed as they are, not applied); each call
// hands a list of items to setUserData().
// clang-format off
struct EditRow { char const* name; QString content; std::vector<int> stampPositions;
                 std::vector<Item> initialItems; std::vector<std::vector<Item>> calls;
                 QString expectedContent; std::vector<int> expectedStamps;
                 std::vector<Item> expectedItems; };
// clang-format on
using UserEdits = testing::TestWithParam<EditRow>;

TEST_P(UserEdits, AreAppliedRevertedAndMoved)
{
    EditRow const& c = GetParam();
    NerikResultModel model;
    auto* const target = new DataBlock(4, 0, 0);
    target->SetContent(c.content);
    for (int position : c.stampPositions) {
        target->GetTimeStamp().append(TimeStamp(T0, position));
    }
    for (Item const& item : c.initialItems) {
        target->AddUserData(item.make());
    }
    model.createTransmission(T0)->AddDataBlock(target);
    for (auto const& call : c.calls) {
        DataBlock edits = textBlock(4, QString(), {{1000, 0}});
        for (Item const& item : call) {
            edits.AddUserData(item.make());
        }
        EXPECT_TRUE(model.setUserData(edits));
    }
    EXPECT_EQ(target->GetContent(), c.expectedContent);
    EXPECT_EQ(positions(*target), c.expectedStamps);
    EXPECT_EQ(items(*target), c.expectedItems);
}

Item const ThereForWorld{6, 11, Change, "THERE!", "WORLD"};
// clang-format off
INSTANTIATE_TEST_SUITE_P(NerikResultModel, UserEdits, testing::Values(
    EditRow{"same_edit_twice_is_one_edit", "HELLO WORLD", {0, 6, 8}, {},
            {{ThereForWorld}, {ThereForWorld}}, "HELLO THERE!", {0, 6, 9}, {ThereForWorld}},
    EditRow{"overlapping_edit_reverts_the_first_then_applies", "ABCDEFGHIJ", {0}, {},
            {{{2, 5, Change, "x", "CDE"}}, {{4, 7, Change, "123456", "GHI"}}},
            "ABCD123456HIJ", {0}, {{4, 7, Change, "123456", "GHI"}}},
    EditRow{"separate_edits_both_stay", "ABCDEFGHIJ", {0, 5}, {},
            {{{0, 1, Change, "aa", "A"}}, {{5, 6, Change, "", "E"}}},
            "aaBCDFGHIJ", {0, 5}, {{0, 1, Change, "aa", "A"}, {5, 6, Change, "", "E"}}},
    EditRow{"comment_behind_an_edit_moves_with_the_text", "HELLO WORLD", {0},
            {{6, 11, Comment, "n", "WORLD"}}, {{{0, 5, Change, "HI", "HELLO"}}},
            "HI WORLD", {0}, {{3, 8, Comment, "n", "WORLD"}, {0, 5, Change, "HI", "HELLO"}}},
    EditRow{"edit_inside_a_comment_resizes_it_and_falls_past_the_end", "HELLO WORLD", {0},
            {{0, 11, Comment, "all", "HELLO WORLD"}}, {{{6, 11, Change, "X", "WORLD"}}},
            "HELLO X", {0}, {{0, 7, Comment, "all", "HELLO X"}}},
    EditRow{"shrinking_edit_inside_a_comment_keeps_one_character", "ABCDEFGH", {0},
            {{1, 3, Comment, "c", "BC"}}, {{{2, 8, Change, "", "CDEFGH"}}},
            "AB", {0}, {{1, 2, Comment, "c", "B"}}},
    EditRow{"pure_deletion_of_an_edit_restores_the_text", "HELLO WORLD", {0, 6, 8}, {},
            {{ThereForWorld}, {{7, 8, Change, "", ""}}}, "HELLO WORLD", {0, 6, 8}, {}},
    EditRow{"pure_deletion_removes_overlapping_items_of_its_type_only", "HELLO WORLD", {0},
            {{0, 5, Comment, "a", "HELLO"}, {6, 11, Comment, "b", "WORLD"},
             {6, 11, "Mark", "m", "WORLD"}}, {{{10, 11, Comment, "", ""}}},
            "HELLO WORLD", {0}, {{0, 5, Comment, "a", "HELLO"}, {6, 11, "Mark", "m", "WORLD"}}},
    EditRow{"touching_ranges_do_not_overlap", "HELLO WORLD", {0},
            {{0, 5, Comment, "a", "HELLO"}}, {{{5, 6, Comment, "b", " "}}},
            "HELLO WORLD", {0}, {{0, 5, Comment, "a", "HELLO"}, {5, 6, Comment, "b", " "}}},
    EditRow{"insertion_moves_later_stamps_not_the_one_at_its_position", "ABCD", {0, 2, 3}, {},
            {{{2, 2, Change, "xy", ""}}}, "ABxyCD", {0, 2, 5}, {{4, 4, Change, "xy", ""}}},
    EditRow{"several_items_in_one_call_act_in_order", "one two three", {0}, {},
            {{{0, 3, Change, "1", "one"}, {2, 5, Comment, "c", "two"}}},
            "1 two three", {0}, {{0, 3, Change, "1", "one"}, {2, 5, Comment, "c", "two"}}}),
    zelkotest::RowName());
// clang-format on

TEST(NerikResultModelUserData, InRangeIsAnyOverlap)
{
    // clang-format off
    struct Case { int itemStart, itemEnd, start, end; bool overlaps; } const cases[] = {
        {2, 5, 2, 5, true}, {2, 5, 4, 9, true},  {2, 5, 0, 3, true},  {2, 5, 3, 4, true},
        {2, 5, 0, 9, true}, {2, 5, 5, 9, false}, {2, 5, 0, 2, false}, {2, 2, 2, 2, false},
        {2, 2, 1, 3, true}, {2, 5, 5, 5, true},  {2, 5, 3, 3, true},
    };
    // clang-format on
    for (auto const& c : cases) {
        UserData item(c.itemStart, c.itemEnd, Comment);
        EXPECT_EQ(NerikResultModel::userDataInRange(&item, c.start, c.end), c.overlaps)
            << "[" << c.itemStart << "," << c.itemEnd << ") vs [" << c.start << "," << c.end << ")";
    }
}

// The user channel

// expectedItems: the placed ones; unplaced ones are counted apart.
// clang-format off
struct TypedRow { char const* name; Stamps typedStamps; QString typed; std::vector<Item> typedItems;
                  QString expectedContent; std::vector<int> expectedStamps;
                  std::vector<Item> expectedItems; int unplacedKept; };
// clang-format on
using UserChannel = testing::TestWithParam<TypedRow>;

Item const Kept{0, 5, Comment, "k", "HELLO"};
Item const AcrossTheCut{4, 8, Comment, "across the cut", ""};

TEST_P(UserChannel, TypedTextReplacesWhatWasTypedFromItsTimeOn)
{
    // Typed so far: "HELLO WORLD", stamped at 10 s (position 0) and 20 s (position 6).
    TypedRow const& c = GetParam();
    NerikResultModel model;
    Transmission* const tr = model.createTransmission(at(0));
    auto* const typedSoFar = new DataBlock(User, 0, 0);
    typedSoFar->SetContent(QStringLiteral("HELLO WORLD"));
    typedSoFar->GetTimeStamp() << TimeStamp(at(10000), 0) << TimeStamp(at(20000), 6);
    for (Item const& item : {Kept, AcrossTheCut, Item{Unplaced, 3, Comment, "unplaced", ""},
                             Item{Unplaced, 99, Comment, "unplaced, too far", ""}}) {
        typedSoFar->AddUserData(item.make());
    }
    tr->AddDataBlock(typedSoFar);
    model.closeCurrentTransmission();

    DataBlock typed = textBlock(User, c.typed, c.typedStamps);
    for (Item const& item : c.typedItems) {
        typed.AddUserData(item.make());
    }
    ASSERT_TRUE(model.setUserData(typed));
    EXPECT_EQ(tr->GetDataBlock().size(), 1);
    EXPECT_EQ(typedSoFar->GetContent(), c.expectedContent);
    EXPECT_EQ(positions(*typedSoFar), c.expectedStamps);
    // Kept: items wholly before the cut (and the unplaced one that ends before it).
    std::vector<Item> placed = items(*typedSoFar);
    auto const unplaced = std::remove_if(placed.begin(), placed.end(),
                                         [](Item const& item) { return item.start == Unplaced; });
    EXPECT_EQ(placed.end() - unplaced, c.unplacedKept);
    placed.erase(unplaced, placed.end());
    EXPECT_EQ(placed, c.expectedItems);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(NerikResultModel, UserChannel, testing::Values(
    TypedRow{"later_text_is_appended", {{30000, 0}}, "!", {},
             "HELLO WORLD!", {0, 6, 11}, {Kept, AcrossTheCut}, 1},
    TypedRow{"text_at_the_second_stamp_replaces_the_rest", {{20000, 0}}, "THERE",
             {{0, 5, Comment, "c", "THERE"}}, "HELLO THERE", {0, 6},
             {Kept, {6, 11, Comment, "c", "THERE"}}, 1},
    TypedRow{"text_before_everything_replaces_all", {{5000, 0}, {6000, 2}}, "NEW", {}, "NEW",
             {0, 2}, {}, 0},
    TypedRow{"positions_already_counted_from_the_channel_start_stay", {{20000, 6}}, "YOU", {},
             "HELLO YOU", {0, 6}, {Kept}, 1}),
    zelkotest::RowName());
// clang-format on

TEST(NerikResultModelUserChannel, FirstTypedTextMakesBlockAndTransmission)
{
    NerikResultModel model;
    DataBlock typed = textBlock(User, "hi", {{100, 0}});
    ASSERT_TRUE(model.setUserData(typed));
    Transmission* const tr = model.getCurrentTransmission();
    ASSERT_NE(tr, nullptr);
    EXPECT_EQ(tr->GetStartTime(), at(100));
    DataBlock const* const block = NerikResultModel::getDataBlock(tr, User);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(block->GetContent(), QStringLiteral("hi"));

    // Later text goes into the same block, even typed before the transmission began.
    DataBlock early = textBlock(User, "x", {{50, 0}});
    ASSERT_TRUE(model.setUserData(early));
    EXPECT_EQ(block->GetContent(), QStringLiteral("x"));
    DataBlock none = textBlock(User, "x", {});
    EXPECT_FALSE(model.setUserData(none));
    EXPECT_TRUE(model.isChannelSelected(User));
}

// PDU data blocks

/// "id=payload" with "uN" for N user data items and the children in parentheses.
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
    // The document holds 1=p1u2(2 3(4)), stamped at 0; latest starts at 100 ms.
    // clang-format off
    struct Case { char const* name; std::function<PDUDataBlock*()> incoming; QString expected;
                  QDateTime latest; } const cases[] = {
        {"new top-level block is appended whole",
         [] { return pduBlock(9, 500, {}, {pduBlock(10, 500)}); }, "1=p1u2(2 3(4)) 9(10)", at(500)},
        {"same id: payload replaced, children merged one level down",
         [] { return pduBlock(1, 700, "new", {pduBlock(3, 700, {}, {pduBlock(5, 700)})}); },
         "1=new(2 3(4 5))", at(700)},
        {"empty payload keeps the old one; user data replaced",
         [] {
             PDUDataBlock* b = pduBlock(1, 50, {}, {pduBlock(3, 50, {}, {pduBlock(4, 50, "p4")})});
             b->AddUserData(new UserData(0, 1, Comment, QStringLiteral("u")));
             return b;
         }, "1=p1u1(2 3(4=p4))", at(100)},
        {"a child id at the top level is not matched deep", [] { return pduBlock(4, 100); },
         "1=p1u2(2 3(4)) 4", at(100)},
    };
    // clang-format on
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        NerikResultModel model;
        Transmission* const tr = model.createTransmission(at(0));
        PDUDataBlock* const one =
            pduBlock(1, 0, "p1", {pduBlock(2, 0), pduBlock(3, 0, {}, {pduBlock(4, 0)})});
        one->AddUserData(new UserData(0, 1, Comment, QStringLiteral("old")));
        one->AddUserData(new UserData(1, 2, Comment, QStringLiteral("old")));
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
    PDUDataBlock* const oldTwo = pduBlock(2, 0);
    Transmission* const first = model.createTransmission(at(0));
    first->AddPDUDataBlock(oldTwo);
    PDUDataBlock* const deepTwo = pduBlock(2, 0);
    PDUDataBlock* const middle = pduBlock(5, 0, {}, {deepTwo});
    PDUDataBlock* const a = pduBlock(1, 0, {}, {middle});
    PDUDataBlock* const laterTwo = pduBlock(2, 0);
    Transmission* const second = model.createTransmission(at(1000));
    second->AddPDUDataBlock(a);
    second->AddPDUDataBlock(pduBlock(6, 0, {}, {laterTwo}));

    EXPECT_EQ(model.getPDUDataBlock(2), laterTwo); // last top-level block searched first
    EXPECT_EQ(NerikResultModel::getPDUDataBlock(second, 2, false), nullptr);
    EXPECT_EQ(NerikResultModel::getPDUDataBlock(second, 2, true), laterTwo);
    EXPECT_EQ(NerikResultModel::getPDUDataBlock(a, 2, true), deepTwo);
    EXPECT_EQ(NerikResultModel::getPDUDataBlock(a, 2, false), nullptr);
    EXPECT_EQ(NerikResultModel::getPDUDataBlock(first, 2, false), oldTwo);
    EXPECT_EQ(model.getPDUDataBlock(99), nullptr);
    PDUDataBlock* const oldest = pduBlock(8, 0);
    first->AddPDUDataBlock(oldest);
    EXPECT_EQ(model.getPDUDataBlock(8), oldest); // the first transmission is searched too

    // User data of a PDU block are replaced by copies.
    PDUDataBlock edit;
    edit.SetID(5);
    edit.AddUserData(new UserData(1, 2, Comment, QStringLiteral("one")));
    edit.AddUserData(new UserData(2, 3, Comment, QStringLiteral("two")));
    middle->AddUserData(new UserData(0, 9, Comment, QStringLiteral("gone")));
    EXPECT_TRUE(model.setUserData(edit));
    ASSERT_EQ(middle->GetUserData().size(), 2);
    EXPECT_EQ(middle->GetUserData()[0]->text, QStringLiteral("one"));
    EXPECT_EQ(middle->GetUserData()[1]->text, QStringLiteral("two"));
    edit.SetID(99);
    EXPECT_FALSE(model.setUserData(edit));
}

// Size check and message data

TEST(NerikResultModelSize, ExactCountOnlyPastTheThreshold)
{
    // clang-format off
    struct Case { char const* name; int estimate; int characters; QChar character; bool exceeded;
                  bool recounted; } const cases[] = {
        {"estimate at the limit is not rendered", 1024000, 2000000, 'x', false, false},
        {"estimate one past, small document", 1024001, 10, 'x', false, true},
        {"multi-byte text counts in UTF-8 bytes", 1024001, 400000, QChar(0x20AC), true, true},
    };
    // clang-format on
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        NerikResultModel model;
        QDateTime latest;
        model.addDataBlock(model.createTransmission(at(0)),
                           textBlock(1, QString(c.characters, c.character), {{0, 0}}), latest);
        model.getEstimateDataSize() = c.estimate;
        EXPECT_EQ(model.maxDataSizeExceeded(), c.exceeded);
        EXPECT_EQ(model.getEstimateDataSize(),
                  c.recounted ? model.getResultData()->GetXmlString().toUtf8().size() : c.estimate);
    }
    // A document of exactly MaxDataSize bytes has not grown past it; one byte more has.
    for (int const extra : {0, 1}) {
        NerikResultModel model;
        QDateTime latest;
        Transmission* const tr = model.createTransmission(at(0));
        model.addDataBlock(tr, textBlock(1, "x", {{0, 0}}), latest);
        int const frame = model.getResultData()->GetXmlString().toUtf8().size() - 1;
        tr->GetDataBlock()[0]->SetContent(
            QString(NerikResultModel::MaxDataSize - frame + extra, 'x'));
        model.getEstimateDataSize() = NerikResultModel::MaxDataSize + 1;
        EXPECT_EQ(model.maxDataSizeExceeded(), extra == 1) << extra;
        EXPECT_EQ(model.getEstimateDataSize(), NerikResultModel::MaxDataSize + extra);
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
    Transmission read;
    QString error;
    ASSERT_TRUE(read.SetXmlString(QString::fromUtf8(NerikResultModel::getMessageData(tr)), error));
    EXPECT_EQ(read, *tr);

    zelkotest::TraceCapture capture(0x20);
    BrokenTransmission broken;
    EXPECT_TRUE(NerikResultModel::getMessageData(&broken).isEmpty());
    ASSERT_EQ(capture.messages(), QStringList{QStringLiteral("getMessageData: cannot render")});
    EXPECT_EQ(capture.lines()[0].line, 696);
    EXPECT_EQ(capture.lines()[0].sourceFile,
              QStringLiteral("massdatamanagement/zelkodatastreamconverter/nerikresultmodel"));
}

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

TEST(NerikResultModelSettings, JobSettingsReachTheVirtualSettersOnce)
{
    Clock::Override const clock(at(0));
    SpyModel model;
    JobSpec::Settings const settings =
        jobSettings(10000000.0, JobSpec::Demodulator_Settings::USB, {"ITA2"}, "International");
    model.setParameter(settings);
    EXPECT_EQ(model.getFrequency(), 10000000.0);
    EXPECT_EQ(model.getDemodulator(), QStringLiteral("USB"));
    EXPECT_EQ(model.getDecoder(), QStringLiteral("ITA2"));
    EXPECT_EQ(model.alphabets, QStringList{QStringLiteral("International")});
    EXPECT_EQ(model.majorChanges, 3);
    EXPECT_EQ(model.getSettingsChangeTime(), at(0));
    model.setParameter(settings); // the same settings again change nothing
    EXPECT_EQ(model.majorChanges, 3);

    // A frequency of 0 (no frequency in the text) or the stored one is no change.
    EXPECT_TRUE(model.setFFMFrequency(QStringLiteral("<FFM_Settings/>")));
    EXPECT_EQ(model.getFrequency(), 10000000.0);
    EXPECT_EQ(model.majorChanges, 3);
    EXPECT_TRUE(model.setFFMFrequency(QStringLiteral("<FFM_Settings frequency=\"12579000\"/>")));
    EXPECT_FALSE(model.setFFMFrequency(QStringLiteral("<Tuner_Settings/>")));
    EXPECT_FALSE(model.setFFMFrequency(QStringLiteral("<FFM_Settings frequency=\"abc\"/>")));
    EXPECT_EQ(model.getFrequency(), 12579000.0);
    EXPECT_EQ(model.majorChanges, 4);

    // A copy takes the settings and the callback, not the document.
    model.setAlphabetsDirectory(QStringLiteral("/alphabets"));
    model.getEstimateDataSize() = 99;
    model.createTransmission(at(0));
    NerikResultModel copy(model);
    EXPECT_EQ(copy.getFrequency(), 12579000.0);
    EXPECT_EQ(copy.getDemodulator() + copy.getDecoder(), QStringLiteral("USBITA2"));
    EXPECT_EQ(copy.getAlphabetsDirectory(), QStringLiteral("/alphabets"));
    EXPECT_EQ(copy.getCallback(), &model);
    EXPECT_TRUE(copy.getResultData()->GetTransmission().isEmpty());
    EXPECT_EQ(copy.getEstimateDataSize(), 0);
}

TEST(NerikResultModelSettings, DemodulatorSettingsTexts)
{
    // clang-format off
    struct Case { char const* name; QString xml; bool result; QString demodulator; QString decoder;
                  int alphabetCalls; } const cases[] = {
        {"empty text changes nothing", "", true, "old", "old", 0},
        {"not settings", "<FFM_Settings/>", false, "old", "old", 0},
        {"mode only", "<Demodulator_Settings mode=\"CW\"/>", true, "CW", "NONE", 1},
        {"two decoders", "<Demodulator_Settings mode=\"USB\" alphabet=\"Cyrillic\"><Decoder>"
                         "<Value>ITA2</Value><Value>SITOR</Value></Decoder></Demodulator_Settings>",
         true, "USB", "old", 1},
    };
    // clang-format on
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
    // kind: 0 document library, 1 report library, 2 anything else.
    // clang-format off
    struct Case { bool inFFM; int kind; QString message; int line; } const cases[] = {
        {true, 0, "setParameter: doc", 794},
        {true, 1, "setParameter: rep", 798},
        {true, 2, "setParameter: Unknown exception", 802},
        {false, 0, "setDemodulatorSettings: doc", 833},
        {false, 1, "setDemodulatorSettings: rep", 837},
        {false, 2, "setDemodulatorSettings: Unknown exception", 841},
    };
    // clang-format on
    for (auto const& c : cases) {
        SCOPED_TRACE(c.message.toStdString());
        SpyModel model;
        int const kind = c.kind;
        (c.inFFM ? model.beforeFFM : model.beforeDemodulator) = [kind] {
            if (kind == 0) {
                throw NerikResultDataXml::NerikResultDataException(QStringLiteral("doc"));
            }
            if (kind == 1) {
                throw REPORTKIT::RGException(QStringLiteral("rep"));
            }
            throw 1;
        };
        zelkotest::TraceCapture capture(0x20);
        model.setParameter(jobSettings(1e6, JobSpec::Demodulator_Settings::AM, {}, QString()));
        ASSERT_EQ(capture.messages(), QStringList{c.message});
        EXPECT_EQ(capture.lines()[0].line, c.line);
        EXPECT_EQ(model.demodulatorSettingsCalls, c.inFFM ? 0 : 1); // FFM failure skips it
    }
}

TEST(NerikResultModelSettings, ChannelSelectionTexts)
{
    // bits: size of the selection, -1 for the null selection (every channel).
    // clang-format off
    struct Case { char const* name; QStringList values; bool invalidText; std::vector<int> selected;
                  std::vector<int> notSelected; int bits; QStringList readBack; } const cases[] = {
        {"3 and 300", {"3", "300"}, false, {3, 1000}, {0, 2, 4, 255, 300, -1}, 4, {"3"}},
        {"no values selects all", {}, false, {0, 3, 255, 256, 5000, 1000}, {}, -1, {}},
        {"invalid text selects all", {}, true, {0, 77, 1000}, {}, -1, {}},
        {"all skipped selects only the user channel", {"abc", "256", "-1", ""}, false,
         {1000}, {0, 1, 255, 256, -1}, 0, {}},
        {"bounds 0 and 255", {"0", "255", "0"}, false, {0, 255}, {1, 254, 256}, 256, {"0", "255"}},
        {"channel 1 alone", {"1"}, false, {1}, {0, 2}, 2, {"1"}},
    };
    // clang-format on
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
        EXPECT_EQ(model.getChannelSelectionBits().size(), qMax(c.bits, 0));
        QString const text = model.getChannelSelection();
        EXPECT_EQ(NerikResultModel(model).getChannelSelection(), text); // a copy answers alike
        JobSpec::ChannelSelection read;
        EXPECT_EQ(read.SetXmlString(text, 0), !c.readBack.isEmpty());
        EXPECT_EQ(read.GetValue(), c.readBack);
    }
}

// AIS station reports

QString const AISReport = QStringLiteral("AIS Position Report");
// As the PDU decoder writes them; the second one's longitude is past 90 degrees.
QString const NorthEast = QString::fromUtf8("N 53°32'10.5'' E 9°58'0''");
QString const SouthWestFar = QString::fromUtf8("S 33°51'0'' W 151°12'0''");

Field mmsi(QString const& value)
{
    return Field(QStringLiteral("MMSI"), QStringLiteral("int"), value);
}
Field callSign(QString const& value)
{
    return Field(QStringLiteral("Call Sign"), QStringLiteral("string"), value);
}
Field position(QString const& text)
{
    return Field(QStringLiteral("Position"), QStringLiteral("position"), text);
}

// trace: the informational text after the block's time stamp, empty when there is none. The
// station starts as ID 7 "OLD" at 1.5, 2.5; the trace shows it after the scan, its ID as the one
// character of its low 16 bits (65 is "A", 65602 is 0x10042, "B").
// clang-format off
struct ScanRow { char const* name; QString blockName; std::vector<Field> fields; int result;
                 QString trace; };
// clang-format on
using ScanAISData = testing::TestWithParam<ScanRow>;

TEST_P(ScanAISData, FillsTheStationOnlyFromTheFieldsAfterTheMMSIAndTracesIt)
{
    ScanRow const& c = GetParam();
    PDUDataBlock block;
    block.SetTimeStamp(at(250));
    block.SetName(c.blockName);
    for (Field const& field : c.fields) {
        block.AddField(field);
    }
    JobSpec::Station station;
    station.SetValidate(false);
    station.SetStationID(7);
    station.SetName(QStringLiteral("OLD"));
    station.SetLatitude(1.5);
    station.SetLongitude(2.5);
    station.SetTimeStamp(T0);
    zelkotest::TraceCapture capture(0x40);
    EXPECT_EQ(NerikResultModel().scanAISData(&block, station), c.result);
    EXPECT_EQ(station.GetTimeStamp(), c.result < 0 ? T0 : at(250));
    EXPECT_EQ(NerikResultModel().scanAISData(nullptr, station), -1);
    if (c.trace.isEmpty()) {
        EXPECT_TRUE(capture.lines().empty());
        return;
    }
    ASSERT_EQ(capture.lines().size(), 1u);
    EXPECT_EQ(capture.lines()[0].message, "scanAISData: 2024-01-31 12:00:00.250 " + c.trace);
    EXPECT_EQ(capture.lines()[0].line, 1014);
}

QString const Untouched = QStringLiteral("StationName=OLD latitude=1.5 longitude=2.5");
QString u(char const* utf8)
{
    return QString::fromUtf8(utf8);
}
// clang-format off
INSTANTIATE_TEST_SUITE_P(NerikResultModel, ScanAISData, testing::Values(
    ScanRow{"lower_case_ais_name", "ais Position Report", {mmsi("65"), position(NorthEast)}, -1},
    ScanRow{"no_MMSI_field", AISReport, {callSign("DABC"), position(NorthEast)}, -1},
    ScanRow{"MMSI_name_in_lower_case", AISReport, {Field("mmsi", "int", "65")}, -1},
    ScanRow{"MMSI_last_sets_only_ID_and_time", AISReport,
            {callSign("DABC"), position(NorthEast), mmsi("65")}, 65,
            "MMSI=65 StationID=A " + Untouched},
    ScanRow{"non_numeric_MMSI_gives_0", AISReport, {mmsi("n/a")}, 0,
            "MMSI=n/a StationID=" + QString(QChar(0)) + " " + Untouched},
    ScanRow{"full_report", AISReport, {mmsi("211234567"), callSign("DABC"), position(NorthEast)},
            211234567, u("MMSI=211234567 CallSign=DABC position=N 53°32'10.5'' E 9°58'0'' "
                         "StationID=\u2F07 StationName=DABC latitude=53.5362 longitude=9.96667")},
    ScanRow{"longitude_past_90_kept_out_and_only_the_low_16_bits_show", AISReport,
            {mmsi("65602"), position(SouthWestFar)}, 65602,
            u("MMSI=65602 position=S 33°51'0'' W 151°12'0'' StationID=B StationName=OLD "
              "latitude=-33.85 longitude=2.5")},
    ScanRow{"west_within_90_is_negative", AISReport,
            {mmsi("65"), position(u("N 10°0'0'' W 45°30'36''"))}, 65,
            u("MMSI=65 position=N 10°0'0'' W 45°30'36'' StationID=A StationName=OLD latitude=10 "
              "longitude=-45.51")},
    ScanRow{"exactly_90_degrees", AISReport, {mmsi("65"), position(u("N 90°0'0'' E 90°0'0''"))},
            65, u("MMSI=65 position=N 90°0'0'' E 90°0'0'' StationID=A StationName=OLD latitude=90 "
                  "longitude=90")},
    ScanRow{"exactly_90_degrees_south_west", AISReport,
            {mmsi("65"), position(u("S 90°0'0'' W 90°0'0''"))}, 65,
            u("MMSI=65 position=S 90°0'0'' W 90°0'0'' StationID=A StationName=OLD latitude=-90 "
              "longitude=-90")},
    ScanRow{"past_90_north_east", AISReport, {mmsi("65"), position(u("N 90°0'1'' E 90°0'1''"))},
            65, u("MMSI=65 position=N 90°0'1'' E 90°0'1'' StationID=A ") + Untouched},
    ScanRow{"past_90_south_west", AISReport, {mmsi("65"), position(u("S 90°0'1'' W 90°0'1''"))},
            65, u("MMSI=65 position=S 90°0'1'' W 90°0'1'' StationID=A ") + Untouched},
    ScanRow{"type_text_is_case_sensitive", AISReport,
            {mmsi("65"), Field("Position", "Position", NorthEast)}, 65,
            "MMSI=65 StationID=A " + Untouched}),
    zelkotest::RowName());
// clang-format on

} // namespace
