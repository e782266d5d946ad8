// Decoded-text model: frames into per-channel blocks, entry counts that do not fit the frame,
// alphabet and decoder changes, ITA2 shifts across frames and channels, re-translation.

#include "decodedtexttesting.h"

#include <alphabetkit/codechandler.h>
#include <climits>
#include <gtest/gtest.h>
#include <massdatamanagement/zelkodatastreamconverter/decodedtextmodel.h>
#include <memory>
#include <nerikresultdataxml/datablock.h>
#include <nerikresultdataxml/transmission.h>

using namespace decodedtexttest;
using NerikResultDataXml::DataBlock;
using NerikResultDataXml::Transmission;
using zelkodatastreamconverter::DecodedTextModel;

namespace {

QDateTime timeOf(quint64 microseconds)
{
    return QDateTime::fromMSecsSinceEpoch(qint64(microseconds / 1000), Qt::UTC);
}

QString codes(std::vector<quint16> const& units)
{
    QString text;
    for (quint16 const unit : units) {
        text.append(QChar(unit));
    }
    return text;
}

/// A model with the codec handler, the decoder and (when given) the alphabet set.
std::unique_ptr<DecodedTextModel> makeModel(QString const& decoder = QString(),
                                            QString const& alphabet = QStringLiteral("None"))
{
    auto model = std::make_unique<DecodedTextModel>();
    model->setAlphabetHandler(std::make_shared<CodecHandler>());
    if (!decoder.isEmpty()) {
        model->setDecoder(decoder);
    }
    bool changed = false;
    if (alphabet != QStringLiteral("None") && !model->setAlphabet(alphabet, changed)) {
        ADD_FAILURE() << "alphabet " << alphabet.toStdString();
    }
    return model;
}

class DecodedTextModelTest : public ::testing::Test
{
protected:
    /// Feeds frames one second apart, each a list of entries; false when one is rejected.
    bool feed(std::vector<std::vector<Entry>> const& frames)
    {
        for (size_t i = 0; i < frames.size(); ++i) {
            if (!model.processData(textFrame(BaseTime + i * 1000000u, frames[i]), nullptr)) {
                return false;
            }
        }
        return true;
    }

    DataBlock* block(int channel) const
    {
        return DecodedTextModel::getDataBlock(model.getCurrentTransmission(), channel);
    }

    QString content(int channel) const { return block(channel)->GetContent(); }

    std::unique_ptr<DecodedTextModel> const owned =
        makeModel(QStringLiteral("RTTY"), QStringLiteral("International"));
    DecodedTextModel& model = *owned;
};

TEST_F(DecodedTextModelTest, FrameWithoutEntriesSetsStopTimeAndClosesAFrameInEveryBlock)
{
    using namespace ita2;
    ASSERT_TRUE(feed({{{1, A}, {1, S}, {2, E}}, {}}));
    Transmission const* transmission = model.getCurrentTransmission();
    ASSERT_NE(transmission, nullptr);
    EXPECT_EQ(transmission->GetStartTime(), timeOf(BaseTime));
    EXPECT_EQ(transmission->GetStopTime(), timeOf(BaseTime + 1000000));
    // The empty frame was begun behind the data and ended without leaving a time stamp.
    for (int const channel : {1, 2}) {
        EXPECT_EQ(block(channel)->GetRawFramePos(), block(channel)->GetRawContent().size());
        EXPECT_EQ(block(channel)->GetTimeStamp().size(), 1);
    }

    ASSERT_TRUE(model.processData(textFrame(BaseTime + 2000000, {{1, T}}), nullptr));
    ASSERT_EQ(block(1)->GetTimeStamp().size(), 2);
    NerikResultDataXml::TimeStamp const& second = block(1)->GetTimeStamp()[1];
    EXPECT_EQ(second.GetTime(), timeOf(BaseTime + 2000000));
    EXPECT_EQ(second.GetPosition(), 2);
    EXPECT_EQ(second.GetRawPosition(), 2);
    EXPECT_EQ(block(2)->GetTimeStamp().size(), 1);
}

// Entries go to the block of their channel, blocks in order of first appearance.
TEST_F(DecodedTextModelTest, EntriesGoToTheBlockOfTheirChannel)
{
    using namespace ita2;
    struct Row
    {
        char const* name;
        std::vector<Entry> entries;
        std::vector<std::pair<int, QString>> blocks; // channel, raw codes
    };
    // Twenty channels in one frame, each named twice: more than are looked up in place.
    Row many{"twenty channels twice", {}, {}};
    for (qint32 k = 0; k < 40; ++k) {
        many.entries.push_back(k < 20 ? Entry{k * 7, A} : Entry{(39 - k) * 7, S});
        if (k < 20) {
            many.blocks.push_back({k * 7, codes({A, S})});
        }
    }
    std::vector<Row> const rows = {
        many,
        {"3, 3, 5, 3", {{3, A}, {3, S}, {5, E}, {3, I}}, {{3, codes({A, S, I})}, {5, codes({E})}}},
        {"extremes",
         {{INT_MIN, A}, {INT_MAX, S}, {INT_MIN, E}},
         {{INT_MIN, codes({A, E})}, {INT_MAX, codes({S})}}},
        {"full 16-bit code", {{7, 0xFFFF}, {7, 0}}, {{7, codes({0xFFFF, 0})}}},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        auto const fresh = makeModel();
        ASSERT_TRUE(fresh->processData(textFrame(BaseTime, row.entries), nullptr));
        QList<DataBlock*> const& blocks = fresh->getCurrentTransmission()->GetDataBlock();
        ASSERT_EQ(blocks.size(), int(row.blocks.size()));
        for (int i = 0; i < blocks.size(); ++i) {
            EXPECT_EQ(blocks[i]->GetChannel(), row.blocks[i].first);
            EXPECT_EQ(blocks[i]->GetRawContent(), row.blocks[i].second);
            // "None" passes every code unit through.
            EXPECT_EQ(blocks[i]->GetContent(), row.blocks[i].second);
            EXPECT_EQ(blocks[i]->GetRawContentType(), DataBlock::sRawData_DecodedText);
        }
    }
}

// The count comes from the recording; only whole entries inside the frame are read.
TEST_F(DecodedTextModelTest, EntryCountIsBoundedByTheFrame)
{
    using namespace ita2;
    struct Row
    {
        char const* name;
        qint32 claimed;
        int expected;
        bool halfEntryBehind = false;
    };
    std::vector<Row> const rows = {
        {"exact", 3, 3},         {"zero", 0, 0},
        {"one", 1, 1},           {"one past the frame", 4, 3},
        {"maximum", INT_MAX, 3}, {"minus one", -1, 0},
        {"minimum", INT_MIN, 0}, {"half an entry behind", 4, 3, true},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        auto const fresh = makeModel();
        QByteArray frame = textFrame(BaseTime + 123456, onChannel(4, {A, S, E}), row.claimed);
        if (row.halfEntryBehind) {
            // One more channel word, no code: the frame ends in the middle of an entry.
            frame.append(QByteArray("\x04\0\0\0", 4));
        }
        ASSERT_TRUE(fresh->processData(frame, nullptr));
        Transmission* const transmission = fresh->getCurrentTransmission();
        ASSERT_NE(transmission, nullptr);
        // Below a millisecond is dropped; an empty frame still opens the transmission.
        EXPECT_EQ(transmission->GetStartTime(), timeOf(BaseTime + 123456));
        EXPECT_EQ(transmission->GetStopTime(), transmission->GetStartTime());
        DataBlock const* four = DecodedTextModel::getDataBlock(transmission, 4);
        EXPECT_EQ(four ? four->GetRawContent().size() : 0, row.expected);
        EXPECT_EQ(transmission->GetDataBlock().size(), row.expected > 0 ? 1 : 0);
    }
}

TEST_F(DecodedTextModelTest, FramesThatAreNoDecodedTextAreRejectedWithoutTrace)
{
    QByteArray const good = textFrame(BaseTime, onChannel(1, {ita2::A}));
    QByteArray wrongMagic = good;
    wrongMagic[0] = char(wrongMagic[0] ^ 0x01);
    QByteArray swapped = good;
    zelkorecording::RecordingWriter::swapWords(swapped);
    struct Row
    {
        char const* name;
        QByteArray frame;
    };
    std::vector<Row> const rows = {
        {"wrong magic", wrongMagic},
        {"PDU frame", zelkorecording::RecordingWriter::frameBytes(
                          zelkodatastreamconverter::FrameType::TransmissionSystem,
                          decodedTextPayload(BaseTime, {}))},
        {"swapped byte order", swapped},
        {"header only", good.left(24)},
        {"count cut short", good.left(38)},
        {"empty", QByteArray()},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        auto const fresh = makeModel();
        EXPECT_FALSE(fresh->processData(row.frame, nullptr));
        EXPECT_EQ(fresh->getCurrentTransmission(), nullptr);
    }
    // A rejected frame leaves an open transmission as it was.
    ASSERT_TRUE(model.processData(good, nullptr));
    EXPECT_FALSE(model.processData(zelkorecording::RecordingWriter::frameBytes(
                                       zelkodatastreamconverter::FrameType::TransmissionSystem,
                                       decodedTextPayload(BaseTime + 5000000, {})),
                                   nullptr));
    EXPECT_EQ(model.getCurrentTransmission()->GetStopTime(), timeOf(BaseTime));
    EXPECT_EQ(content(1), QStringLiteral("A"));
}

// A new block for a channel continues the channel's last block: same ID, positions behind
// its content and its raw data (which differ in length once shifts are involved). Translated
// on its own, it starts in letters and counts its time stamps from the channel's start.
TEST_F(DecodedTextModelTest, CreatedBlockContinuesTheChannel)
{
    using namespace ita2;
    ASSERT_TRUE(feed({{{1, Figures}, {1, T}, {1, Q}}}));
    int const firstId = block(1)->GetID();
    ASSERT_EQ(content(1), QStringLiteral("51"));
    int const nextId = model.getResultData()->PeekNextID();
    QDateTime const later = timeOf(BaseTime + 7000000);
    std::unique_ptr<DataBlock> const unknown(model.createDataBlock(9, later));
    EXPECT_EQ(unknown->GetID(), nextId);

    DataBlock* const second = model.createDataBlock(1, later);
    EXPECT_EQ(second->GetID(), firstId);
    EXPECT_EQ(second->GetContentCode(), QStringLiteral("International"));
    for (quint16 const code : {T, Q, quint16(0), Figures, Q}) {
        if (code == 0) {
            second->EndFrame();
            second->SetTimeStamp(timeOf(BaseTime + 8000000));
            second->BeginFrame();
        } else {
            second->AppendRawData(QChar(code));
        }
    }
    second->EndFrame();
    model.translateBlock(second);
    EXPECT_EQ(second->GetContent(), QStringLiteral("TQ1"));
    ASSERT_EQ(second->GetTimeStamp().size(), 2);
    EXPECT_EQ(second->GetTimeStamp()[0], NerikResultDataXml::TimeStamp(later, 2, 3));
    EXPECT_EQ(second->GetTimeStamp()[1].GetPosition(), 4);
    EXPECT_EQ(second->GetTimeStamp()[1].GetRawPosition(), 5);
    model.getCurrentTransmission()->AddDataBlock(second);

    // The continuation of a continuation starts behind the second block, not at its length.
    std::unique_ptr<DataBlock> const third(model.createDataBlock(1, later));
    EXPECT_EQ(third->GetID(), firstId);
    EXPECT_EQ(third->GetContentStart(), 5);
    EXPECT_EQ(third->GetRawStart(), 7);
}

TEST_F(DecodedTextModelTest, SetAlphabet)
{
    struct Row
    {
        char const* name;
        QString decoder, before, requested;
        bool result;
        QString after;
        bool changed;
    };
    QString const intl = QStringLiteral("International");
    QString const none = QStringLiteral("None");
    std::vector<Row> const rows = {
        {"empty name prefers International", "RTTY", none, "", true, intl, true},
        {"empty name, International not offered", "NAVTEX", none, "", false, none, true},
        {"same name leaves changed alone", "RTTY", intl, intl, true, intl, false},
        {"offered alphabet", "BAUDOT", intl, "US-TTY", true, "US-TTY", true},
        {"alphabet of another decoder", "RTTY", intl, "CCIR 476", false, none, true},
        {"unknown name", "ITA2", intl, "Klingon", false, none, true},
        {"None again", "RTTY", none, none, true, none, false},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        auto const fresh = makeModel(row.decoder, row.before);
        ASSERT_EQ(fresh->getAlphabet(), row.before);
        bool changed = false;
        EXPECT_EQ(fresh->setAlphabet(row.requested, changed), row.result);
        EXPECT_EQ(fresh->getAlphabet(), row.after);
        EXPECT_EQ(changed, row.changed);
    }
    DecodedTextModel withoutHandler;
    bool changed = false;
    EXPECT_FALSE(withoutHandler.setAlphabet(QStringLiteral("International"), changed));
}

TEST_F(DecodedTextModelTest, SetDecoderKeepsTheAlphabetOnlyWhenOffered)
{
    struct Row
    {
        char const* name;
        QString from, alphabet, to, after;
    };
    std::vector<Row> const rows = {
        {"teleprinter to NAVTEX", "RTTY", "International", "NAVTEX", "None"},
        {"teleprinter to teleprinter", "RTTY", "International", "ITA2", "International"},
        {"national alphabet kept", "BAUDOT", "MTK-2", "RTTY", "MTK-2"},
        {"NAVTEX to teleprinter", "NAVTEX", "CCIR 476", "BAUDOT", "None"},
        {"to no decoder", "RTTY", "US-TTY", "NONE", "None"},
        {"same decoder again", "RTTY", "US-TTY", "RTTY", "US-TTY"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        auto const fresh = makeModel(row.from, row.alphabet);
        EXPECT_TRUE(fresh->setDecoder(row.to));
        EXPECT_EQ(fresh->getDecoder(), row.to);
        EXPECT_EQ(fresh->getAlphabet(), row.after);
    }
}

TEST_F(DecodedTextModelTest, AllAlphabetsLeaveTheDecoderAsItWas)
{
    QStringList const before = model.getAvailableAlphabets();
    EXPECT_FALSE(before.contains(QStringLiteral("CCIR 476")));
    QStringList const all = model.getAllAlphabets();
    for (char const* name : {"International", "US-TTY", "MTK-2", "CCIR 476", "None"}) {
        EXPECT_TRUE(all.contains(QString::fromLatin1(name))) << name;
    }
    EXPECT_EQ(model.getAvailableAlphabets(), before);
    EXPECT_EQ(model.getAlphabet(), QStringLiteral("International"));
}

// Each channel is its own teleprinter: the shift state carries across frames and a shift on
// one channel does not touch another; clear() starts every channel in letters again.
TEST_F(DecodedTextModelTest, EachChannelKeepsItsOwnShiftState)
{
    using namespace ita2;
    struct Row
    {
        char const* name;
        std::vector<std::vector<Entry>> frames;
        QString one, two;
        QString alphabet = QString(); // the preferred one when empty
    };
    std::vector<Row> rows = {
        {"within one frame", {{{1, Figures}, {2, T}, {1, T}, {2, T}}}, "5", "TT"},
        {"across frames",
         {{{1, Figures}, {2, T}}, {{2, T}, {1, T}}, {{1, Letters}, {2, Figures}}, {{1, T}, {2, T}}},
         "5T",
         "TT5"},
        {"one channel silent for a frame", {{{1, Figures}, {2, Q}}, {{2, Q}}, {{1, Q}}}, "1", "QQ"},
        {"space unshifts only its own channel",
         {{{1, Figures}, {2, Figures}, {1, SP}}, {{2, T}, {1, T}}},
         " T",
         "5",
         QStringLiteral("International USOS")},
    };
    // The same codes cut into two frames at every place.
    std::vector<quint16> const sequence = {Figures, T, Q, Letters, T, Figures, W, A};
    for (size_t cut = 0; cut <= sequence.size(); ++cut) {
        std::vector<quint16> const head(sequence.begin(), sequence.begin() + long(cut));
        std::vector<quint16> const tail(sequence.begin() + long(cut), sequence.end());
        std::vector<Entry> second = onChannel(1, tail);
        second.push_back({2, A});
        rows.push_back({"cut", {onChannel(1, head), second}, "51T2-", "A"});
    }
    for (size_t r = 0; r < rows.size(); ++r) {
        Row const& row = rows[r];
        SCOPED_TRACE(testing::Message() << row.name << " " << r);
        auto const fresh = makeModel(QStringLiteral("RTTY"), row.alphabet);
        for (size_t i = 0; i < row.frames.size(); ++i) {
            ASSERT_TRUE(fresh->processData(textFrame(BaseTime + i * 1000, row.frames[i]), nullptr));
        }
        Transmission* const transmission = fresh->getCurrentTransmission();
        EXPECT_EQ(DecodedTextModel::getDataBlock(transmission, 1)->GetContent(), row.one);
        EXPECT_EQ(DecodedTextModel::getDataBlock(transmission, 2)->GetContent(), row.two);
        fresh->clear();
        ASSERT_TRUE(fresh->processData(textFrame(BaseTime, {{1, T}, {2, T}}), nullptr));
        EXPECT_EQ(DecodedTextModel::getDataBlock(fresh->getCurrentTransmission(), 1)->GetContent(),
                  QStringLiteral("T"));
    }
}

// Raw data kept under "None" become text once the alphabet is known; the frame positions
// follow the new text, and the next frame continues in the shift of the re-translated text.
TEST_F(DecodedTextModelTest, TranslateBlockAfterAnAlphabetChange)
{
    using namespace ita2;
    bool changed = false;
    ASSERT_FALSE(model.setAlphabet(QStringLiteral("Klingon"), changed));
    ASSERT_TRUE(
        feed({{{1, Figures}, {1, T}, {2, H}}, {{1, Q}, {1, Letters}, {1, T}, {1, Figures}}}));
    DataBlock* const one = block(1);
    QString const raw = codes({Figures, T, Q, Letters, T, Figures});
    ASSERT_EQ(one->GetRawContent(), raw);
    ASSERT_EQ(one->GetContent(), raw);
    one->AddUserData(new NerikResultDataXml::UserData(0, 1, QStringLiteral("Comment"), "x"));

    ASSERT_TRUE(model.setAlphabet(QStringLiteral("International"), changed));
    model.translateBlock(nullptr); // nothing to translate
    model.translateCurrentTransmission();
    EXPECT_EQ(one->GetContent(), QStringLiteral("51T"));
    EXPECT_EQ(one->GetContentCode(), QStringLiteral("International"));
    EXPECT_TRUE(one->GetUserData().isEmpty());
    ASSERT_EQ(one->GetTimeStamp().size(), 2);
    EXPECT_EQ(one->GetTimeStamp()[1].GetPosition(), 1);
    EXPECT_EQ(one->GetTimeStamp()[1].GetRawPosition(), 2);
    EXPECT_EQ(content(2), QStringLiteral("H"));

    // The raw data ended in figures.
    ASSERT_TRUE(model.processData(textFrame(BaseTime + 5000000, {{1, W}, {2, W}}), nullptr));
    EXPECT_EQ(content(1), QStringLiteral("51T2"));
    EXPECT_EQ(content(2), QStringLiteral("HW"));
    EXPECT_EQ(one->GetTimeStamp().last().GetPosition(), 3);
}

// With a transmission given, the frame fills that one and the model's own stays untouched;
// the next frame in a transmission of its own continues each channel's shift.
TEST_F(DecodedTextModelTest, GivenTransmissionIsFilledWithWholeContent)
{
    using namespace ita2;
    Transmission first;
    ASSERT_TRUE(model.processData(textFrame(BaseTime, {{1, Figures}, {2, A}}), &first));
    EXPECT_EQ(model.getCurrentTransmission(), nullptr);
    EXPECT_EQ(first.GetStartTime(), timeOf(BaseTime));
    ASSERT_EQ(first.GetDataBlock().size(), 2);
    Transmission second;
    ASSERT_TRUE(model.processData(textFrame(BaseTime + 1000000, {{2, T}, {1, T}}), &second));
    EXPECT_EQ(DecodedTextModel::getDataBlock(&second, 1)->GetContent(), QStringLiteral("5"));
    EXPECT_EQ(DecodedTextModel::getDataBlock(&second, 2)->GetContent(), QStringLiteral("T"));
}

} // namespace
