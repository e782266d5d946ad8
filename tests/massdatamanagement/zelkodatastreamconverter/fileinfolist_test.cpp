#include <gtest/gtest.h>
#include <massdatamanagement/zelkodatastreamconverter/fileinfolist.h>

using zelkodatastreamconverter::FileInfoList;

namespace {

template <typename Record>
Record record(QString const& url, bool complete)
{
    Record r;
    r.SetValidate(false);
    r.SetURL(url);
    if (complete) {
        r.GetMetadata().SetStopTime(QDateTime::fromMSecsSinceEpoch(1000, Qt::UTC));
    }
    return r;
}

QStringList urls(std::vector<REPORTKIT::Binary> const& list)
{
    QStringList result;
    for (auto const& r : list) {
        result << r.GetURL();
    }
    return result;
}

TEST(FileInfoList, LaterRecordReplacesEarlierAndMovesToEnd)
{
    FileInfoList list;
    list.fileInfo(record<REPORTKIT::Binary>(QStringLiteral("a"), false));
    list.fileInfo(record<REPORTKIT::Binary>(QStringLiteral("b"), false));
    list.fileInfo(record<REPORTKIT::Binary>(QStringLiteral("a"), true));
    auto const& binary = list.getResults().GetBinary();
    EXPECT_EQ(urls(binary), (QStringList{QStringLiteral("b"), QStringLiteral("a")}));
    EXPECT_TRUE(binary.back().GetMetadata().GetStopTime().isValid());
}

TEST(FileInfoList, UrlComparisonIsExactAndCaseSensitive)
{
    FileInfoList list;
    list.fileInfo(record<REPORTKIT::Binary>(QStringLiteral("/out/A.xml"), false));
    list.fileInfo(record<REPORTKIT::Binary>(QStringLiteral("/out/a.xml"), false));
    list.fileInfo(record<REPORTKIT::Binary>(QStringLiteral("/out/a.xml "), false));
    EXPECT_EQ(list.getResults().GetBinary().size(), 3u);
}

TEST(FileInfoList, KindsAreKeptApart)
{
    FileInfoList list;
    list.fileInfo(record<REPORTKIT::Binary>(QStringLiteral("same"), false));
    list.fileInfo(record<REPORTKIT::Text>(QStringLiteral("same"), false));
    list.fileInfo(record<REPORTKIT::Picture>(QStringLiteral("same"), false));
    list.fileInfo(record<REPORTKIT::Text>(QStringLiteral("same"), true));
    REPORTKIT::Results const& results = list.getResults();
    EXPECT_EQ(results.GetBinary().size(), 1u);
    EXPECT_EQ(results.GetPicture().size(), 1u);
    ASSERT_EQ(results.GetText().size(), 1u);
    EXPECT_TRUE(results.GetText().front().GetMetadata().GetStopTime().isValid());
}

TEST(FileInfoList, OnlyTheLastOfDuplicatesIsReplaced)
{
    // Duplicates cannot arise through fileInfo itself, but a host may fill the list directly.
    FileInfoList list;
    list.getResults().AppendBinary(record<REPORTKIT::Binary>(QStringLiteral("x"), false));
    list.getResults().AppendBinary(record<REPORTKIT::Binary>(QStringLiteral("y"), false));
    list.getResults().AppendBinary(record<REPORTKIT::Binary>(QStringLiteral("x"), false));
    list.fileInfo(record<REPORTKIT::Binary>(QStringLiteral("x"), true));
    auto const& binary = list.getResults().GetBinary();
    EXPECT_EQ(urls(binary),
              (QStringList{QStringLiteral("x"), QStringLiteral("y"), QStringLiteral("x")}));
    EXPECT_FALSE(binary.front().GetMetadata().GetStopTime().isValid());
    EXPECT_TRUE(binary.back().GetMetadata().GetStopTime().isValid());
}

class OtherRecord : public REPORTKIT::IRGObject
{
public:
    QString GetXmlString() const override { return QString(); }
    bool SetXmlString(QString const&, int) override { return false; }
};

TEST(FileInfoList, OtherRecordTypesAreIgnored)
{
    FileInfoList list;
    list.fileInfo(OtherRecord());
    EXPECT_TRUE(list.getResults().IsEmpty());
    EXPECT_FALSE(list.getResults().GetValidate());
}

} // namespace
