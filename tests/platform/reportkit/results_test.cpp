#include <gtest/gtest.h>
#include <reportkit/results.h>
#include <reportkit/rgexception.h>
#include <support/schemavalidator.h>
#include <support/qstringprinter.h>
#include <support/textrows.h>

using namespace REPORTKIT;

namespace {

template <typename Record>
Record makeRecord(QString const& url, QString const& type, bool complete, int channel = -1)
{
    Record record;
    record.SetValidate(false);
    record.SetURL(url);
    record.SetType(type);
    record.GetMetadata().SetStartTime(
        QDateTime(QDate(2024, 1, 31), QTime(23, 59, 59, 123), Qt::UTC));
    if (complete) {
        record.GetMetadata().SetStopTime(QDateTime(QDate(2024, 2, 1), QTime(0, 0, 1), Qt::UTC));
    }
    record.GetMetadata().GetDetail().GetFrequency().SetValue(10000000.125);
    record.GetMetadata().GetDetail().SetCode(QStringLiteral("WAV"));
    if (channel >= 0) {
        record.GetMetadata().GetDetail().SetChannel(channel);
    }
    return record;
}

Results sampleResults()
{
    Results results;
    results.SetValidate(false);
    results.AppendBinary(
        makeRecord<Binary>(QStringLiteral("/out/a b&c<d>.wav"), QStringLiteral("AudioData"), true));
    results.AppendBinary(makeRecord<Binary>(QStringLiteral("/out/open.bin"), QString(), false));
    results.AppendText(makeRecord<Text>(QStringLiteral("/out/x.xml"), QString(), true, 0));
    results.AppendPicture(
        makeRecord<Picture>(QStringLiteral("/out/p.png"), QStringLiteral("Image"), true));
    return results;
}

TEST(Results, XmlRoundTripGivesEqualObject)
{
    Results const original = sampleResults();
    Results read;
    ASSERT_TRUE(read.SetXmlString(original.GetXmlString(), 0)) << read.LastXmlError().toStdString();
    EXPECT_EQ(read, original);
    EXPECT_TRUE(read.GetText().front().GetMetadata().GetDetail().IsChannelSet());
    EXPECT_FALSE(read.GetBinary()[1].GetMetadata().GetStopTime().isValid());
    for (Results const& results : {original, Results()}) {
        EXPECT_EQ(
            zelkotest::validateXmlText(results.GetXmlString(), QStringLiteral("reportkit.xsd")),
            QString());
    }
}

TEST(Results, SingleRecordRoundTrip)
{
    Text const original = makeRecord<Text>(QStringLiteral("/t.xml"), QString(), false, -5);
    Text read;
    ASSERT_TRUE(read.SetXmlString(original.GetXmlString(), 0));
    EXPECT_EQ(read, original);
    Binary wrongKind;
    EXPECT_FALSE(wrongKind.SetXmlString(original.GetXmlString(), 0));
}

using ResultsRejects = testing::TestWithParam<zelkotest::TextRow>;

TEST_P(ResultsRejects, InvalidTextAndKeepsContent)
{
    Results results = sampleResults();
    results.SetValidate(true);
    Results const before = results;
    EXPECT_FALSE(results.SetXmlString(GetParam().input, 0));
    EXPECT_EQ(results, before);
    EXPECT_EQ(results.LastXmlError(), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, ResultsRejects,
    testing::ValuesIn(zelkotest::readTextRows(QStringLiteral("reportkit/refused.rows"))),
    zelkotest::TextRowName());

TEST(Results, LenientReaderSkipsUnknownElements)
{
    Results results;
    results.SetValidate(false);
    ASSERT_TRUE(results.SetXmlString(
        QStringLiteral("<Results><Audio/><Binary url='u' extra='1'><Metadata><Note/>"
                       "<Detail frequency='5'/></Metadata></Binary></Results>"),
        0));
    ASSERT_EQ(results.GetBinary().size(), 1u);
    EXPECT_EQ(results.GetBinary().front().GetURL(), QStringLiteral("u"));
    EXPECT_EQ(results.GetBinary().front().GetMetadata().GetDetail().GetFrequency().GetValue(), 5.0);
}

TEST(FileRecord, ValidatingSetterThrowsOnEmptyUrl)
{
    Binary record;
    EXPECT_THROW(record.SetURL(QString()), RGException);
    record.SetValidate(false);
    EXPECT_NO_THROW(record.SetURL(QString()));
}

} // namespace
