#include "sampledocument.h"

#include <QRegularExpression>
#include <QXmlStreamReader>
#include <gtest/gtest.h>
#include <nerikresultdataxml/info.h>
#include <nerikresultdataxml/nerikresultdata.h>
#include <nerikresultdataxml/payload.h>
#include <nerikresultdataxml/pdudatablock.h>
#include <nerikresultdataxml/transmission.h>
#include <nerikresultdataxml/userdata.h>
#include <nerikresultdataxml/utf8xmlwriter.h>
#include <nerikresultdataxml/xmltext.h>
#include <support/qstringprinter.h>
#include <support/rowname.h>
#include <support/textrows.h>

using namespace NerikResultDataXml;

namespace {

template <typename T>
bool roundTrips(T const& original)
{
    QByteArray xml;
    {
        Utf8XmlWriter writer(xml);
        original.WriteXml(writer);
    }
    QXmlStreamReader reader(xml);
    reader.readNextStartElement();
    T read;
    QString error;
    bool const ok = read.ReadXml(reader, error);
    EXPECT_TRUE(ok) << error.toStdString() << "\n" << xml.toStdString();
    return ok && read == original;
}

struct FormRow
{
    char const* name;
    QString text;
    char const* element;   // as the content of <t>
    char const* attribute; // as the attribute a of <t/>
};

QChar u(ushort unit)
{
    return QChar(unit);
}

using WrittenForm = testing::TestWithParam<FormRow>;

// The written form is what other tools read: characters XML can carry stay as they are.
TEST_P(WrittenForm, OfElementTextAndAttribute)
{
    QByteArray xml;
    {
        Utf8XmlWriter writer(xml);
        XmlText::writeTextElement(writer, QLatin1String("t"), GetParam().text);
        writer.writeEmptyElement(QLatin1String("t"));
        XmlText::writeTextAttribute(writer, QLatin1String("a"), GetParam().text);
        writer.writeEndDocument();
    }
    EXPECT_EQ(xml.trimmed(),
              QByteArray("<t>") + GetParam().element + "</t><t " + GetParam().attribute + "/>");
}

INSTANTIATE_TEST_SUITE_P(
    Texts, WrittenForm,
    testing::Values(
        FormRow{"blanks tab and line feed", QStringLiteral(" \t\n~"), " \t\n~",
                "a=\" &#9;&#10;~\""},
        FormRow{"markup", QStringLiteral("<>&"), "&lt;&gt;&amp;", "a=\"&lt;&gt;&amp;\""},
        FormRow{"carriage return", QStringLiteral("\r"), "&#13;", "a=\"&#13;\""},
        FormRow{"controls", QStringLiteral("\x01\x1F\x7F"), "<c u=\"0001\"/><c u=\"001F\"/>\x7F",
                "a64=\"AQAfAH8A\""},
        FormRow{"surrogate pairs at the range ends",
                QString(u(0xFFFD)) + u(0xD800) + u(0xDC00) + u(0xDBFF) + u(0xDFFF),
                "\xEF\xBF\xBD\xF0\x90\x80\x80\xF4\x8F\xBF\xBF",
                "a=\"\xEF\xBF\xBD\xF0\x90\x80\x80\xF4\x8F\xBF\xBF\""},
        FormRow{"lone surrogates", QString(u(0xDFFF)) + u(0xDBFF) + u('x') + u(0xD800),
                "<c u=\"DFFF\"/><c u=\"DBFF\"/>x<c u=\"D800\"/>", "a64=\"/9//23gAANg=\""},
        FormRow{"around the surrogates and noncharacters",
                QString(u(0xD7FF)) + u(0xE000) + u(0xFFFD) + u(0xFFFE) + u(0xFFFF),
                "\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBD<c u=\"FFFE\"/><c u=\"FFFF\"/>",
                "a64=\"/9cA4P3//v///w==\""}),
    zelkotest::RowName());

} // namespace

TEST(DataBlock, FramesRecordPositionsAndEmptyFramesLeaveNoStamp)
{
    DataBlock block(5, 10, 20); // continues 10 characters / 20 codes of the channel
    block.SetTimeStamp(sample::at(1, 0, 0));
    block.BeginFrame();
    EXPECT_EQ(block.GetTimeStamp().size(), 1) << "a frame in progress has its stamp";
    block.EndFrame();
    EXPECT_TRUE(block.GetTimeStamp().isEmpty()) << "an empty frame leaves no stamp";

    block.SetTimeStamp(sample::at(1, 0, 1));
    block.BeginFrame();
    block.AppendRawData(QChar(0x41));
    block.AppendRawData(QStringLiteral("BC"));
    EXPECT_EQ(block.GetRawFramePos(), 0);
    block.AppendData(QStringLiteral("abc"));
    block.EndFrame();

    block.SetTimeStamp(sample::at(1, 0, 2));
    block.BeginFrame();
    EXPECT_EQ(block.GetRawFramePos(), 3);
    EXPECT_EQ(block.GetContentFramePos(), 3);
    block.AppendRawData(QChar(0x44));
    block.EndFrame();

    block.SetTimeStamp(sample::at(1, 0, 3));
    block.BeginFrame();
    block.EndFrame();
    block.EndFrame(); // a second end is harmless

    ASSERT_EQ(block.GetTimeStamp().size(), 2);
    EXPECT_EQ(block.GetTimeStamp()[0], TimeStamp(sample::at(1, 0, 1), 10, 20));
    EXPECT_EQ(block.GetTimeStamp()[1], TimeStamp(sample::at(1, 0, 2), 13, 23));
    EXPECT_EQ(block.GetRawContent(), QStringLiteral("ABCD"));
}

TEST(DataBlock, EndFrameKeepsStampsTheCallerEditedMeanwhile)
{
    DataBlock block(1);
    block.SetTimeStamp(sample::at(2, 0, 0));
    block.BeginFrame();
    block.GetTimeStamp().last().SetPosition(99);
    block.EndFrame();
    EXPECT_EQ(block.GetTimeStamp().size(), 1);
}

TEST(DataBlock, CopiesAreDeepAndMovesLeaveNoSharedUserData)
{
    DataBlock original(2);
    original.AddUserData(new UserData(0, 1, UserData::ChangeType, QStringLiteral("x")));
    DataBlock copy(original);
    copy.GetUserData()[0]->text = QStringLiteral("changed");
    EXPECT_EQ(original.GetUserData()[0]->text, QStringLiteral("x"));
    EXPECT_FALSE(copy == original);
    copy = original;
    EXPECT_TRUE(copy == original);
    copy = copy; // self-assignment keeps the items
    EXPECT_EQ(copy.GetUserData().size(), 1);
    DataBlock moved(std::move(copy));
    EXPECT_EQ(moved.GetUserData().size(), 1);
    EXPECT_TRUE(copy.GetUserData().isEmpty());
    moved.DeleteUserData();
    EXPECT_TRUE(moved.GetUserData().isEmpty());
    moved.AddUserData(nullptr);
    EXPECT_TRUE(moved.GetUserData().isEmpty());
}

struct ValidityRow
{
    char const* name;
    bool time, named, field, child;
    char const* payloadData;
    char const* payloadContent;
    bool valid;
};

using Validity = testing::TestWithParam<ValidityRow>;

// The type is no part of it: a type of 0 is a type.
TEST_P(Validity, NeedsTimeAndNameOrContent)
{
    ValidityRow const& row = GetParam();
    PDUDataBlock block;
    block.SetTimeStamp(row.time ? sample::at(3, 0, 0) : QDateTime());
    block.SetName(row.named ? QStringLiteral("ACARS") : QString());
    if (row.field) {
        block.AddField(Field("a", "int", "1"));
    }
    if (row.child) {
        block.AddPDUDataBlock(new PDUDataBlock);
    }
    block.GetPayload().SetName(QStringLiteral("Text"));
    block.GetPayload().SetData(row.payloadData, 1, 8);
    block.GetPayload().SetContent(QString::fromLatin1(row.payloadContent));
    PDUDataBlock const* asBase = &block;
    EXPECT_EQ(asBase->IsValid(), row.valid);
}

INSTANTIATE_TEST_SUITE_P(
    Blocks, Validity,
    testing::Values(ValidityRow{"time and name", true, true, false, false, "", "", true},
                    ValidityRow{"nothing", false, false, false, false, "", "", false},
                    ValidityRow{"no time stamp", false, true, true, true, "x", "x", false},
                    ValidityRow{"only a time", true, false, false, false, "", "", false},
                    ValidityRow{"a field", true, false, true, false, "", "", true},
                    ValidityRow{"a child", true, false, false, true, "", "", true},
                    ValidityRow{"payload data", true, false, false, false, "x", "", true},
                    ValidityRow{"payload content", true, false, false, false, "", "x", true}),
    zelkotest::RowName());

TEST(PDUDataBlock, CopyIsDeepAndAssignmentFromOwnChildWorks)
{
    auto document = sample::richDocument();
    PDUDataBlock& parent = *document->GetTransmission()[0]->GetPDUDataBlocks()[0];
    PDUDataBlock copy(parent);
    EXPECT_TRUE(copy == parent);
    copy.GetPDUDataBlocks()[0]->SetName(QStringLiteral("other"));
    EXPECT_NE(parent.GetPDUDataBlocks()[0]->GetName(), QStringLiteral("other"));

    PDUDataBlock const child = *copy.GetPDUDataBlocks()[0];
    copy = *copy.GetPDUDataBlocks()[0]; // the source dies during the assignment
    EXPECT_TRUE(copy == child);
    EXPECT_EQ(copy.GetPDUDataBlocks().size(), 1);
}

TEST(ResultParts, EachRoundTripsOnItsOwn)
{
    Payload payload;
    payload.SetName(QStringLiteral("Text"));
    payload.SetContentDirectionRTL(true);
    EXPECT_TRUE(roundTrips(payload));
    for (auto const& data :
         {std::make_tuple(QByteArray(), 0u, 0u), std::make_tuple(QByteArray(), 1u, 0u),
          std::make_tuple(QByteArray("\x05\xFF", 2), 12u, 1u),
          std::make_tuple(QByteArray(3, '\0'), 2u, 12u), std::make_tuple(QByteArray("abc"), 0u, 0u),
          std::make_tuple(QByteArray(1, '\x80'), 0xFFFFFFFFu, 0xFFFFFFFFu)}) {
        Payload p;
        p.SetData(std::get<0>(data), std::get<1>(data), std::get<2>(data));
        EXPECT_TRUE(roundTrips(p)) << std::get<1>(data) << " x " << std::get<2>(data);
    }
    EXPECT_TRUE(roundTrips(Field(QStringLiteral("a\x02"), QString(), QStringLiteral("\r"))));
    EXPECT_TRUE(roundTrips(UserData(2147483647, 0, QString(), QString(), QStringLiteral(" "))));
    Info info;
    EXPECT_TRUE(roundTrips(info));
    info.SetItem(QString(), QStringLiteral("unnamed"));
    EXPECT_TRUE(roundTrips(info));
    EXPECT_EQ(info.GetItem(QString()), QStringLiteral("unnamed"));
    EXPECT_TRUE(info.GetItem(QStringLiteral("none")).isNull());
    DataBlock block(-1, -5, 2147483647);
    EXPECT_TRUE(roundTrips(block));
    PDUDataBlock pdu;
    EXPECT_TRUE(roundTrips(pdu));
}

namespace {

// Each element read on its own (Info, Transmission, Payload, PDUDataBlock, UserData), as a host
// that keeps parts of documents reads them: a refused text answers false with the exact message.
template <typename Element>
QString refusal(QString const& xml)
{
    QXmlStreamReader reader(xml);
    reader.readNextStartElement();
    Element element;
    QString error;
    bool const read = element.ReadXml(reader, error);
    return read ? QStringLiteral("(read)") : error;
}

using RefusedElement = testing::TestWithParam<zelkotest::TextRow>;

TEST_P(RefusedElement, AnswersFalseWithItsMessage)
{
    QString const& xml = GetParam().input;
    QString const root = xml.mid(1, xml.indexOf(QRegularExpression(QStringLiteral("[ />]"))) - 1);
    QString const got = root == QLatin1String("Info")           ? refusal<Info>(xml)
                        : root == QLatin1String("Transmission") ? refusal<Transmission>(xml)
                        : root == QLatin1String("Payload")      ? refusal<Payload>(xml)
                        : root == QLatin1String("PDUDataBlock") ? refusal<PDUDataBlock>(xml)
                                                                : refusal<UserData>(xml);
    EXPECT_EQ(got, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Texts, RefusedElement,
                         testing::ValuesIn(zelkotest::readTextRows(
                             QStringLiteral("nerikresultdataxml/element-refused.rows"))),
                         zelkotest::TextRowName());

} // namespace
