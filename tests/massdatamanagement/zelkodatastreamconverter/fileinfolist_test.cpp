#include <gtest/gtest.h>
#include <massdatamanagement/zelkodatastreamconverter/fileinfolist.h>

using zelkodatastreamconverter::FileInfoList;

namespace {

// A record of url; "!" after the URL marks a completed one (with a stop time).
template <typename Record>
Record record(QString url)
{
    Record r;
    r.SetValidate(false);
    if (url.endsWith('!')) {
        url.chop(1);
        r.GetMetadata().SetStopTime(QDateTime::fromMSecsSinceEpoch(1000, Qt::UTC));
    }
    r.SetURL(url);
    return r;
}

// The URLs of a list, each with "!" when completed.
template <typename Record>
QStringList urls(std::vector<Record> const& list)
{
    QStringList result;
    for (auto const& r : list) {
        result << r.GetURL() + (r.GetMetadata().GetStopTime().isValid() ? "!" : "");
    }
    return result;
}

TEST(FileInfoList, LaterRecordOfTheSameUrlAndKindReplacesTheLastEarlierOneAndMovesToTheEnd)
{
    FileInfoList list;
    // Duplicates cannot arise through fileInfo itself, but a host may fill the list directly.
    for (char const* url : {"a", "b", "a"}) {
        list.getResults().AppendBinary(record<REPORTKIT::Binary>(url));
    }
    for (char const* url : {"A", "a ", "a!"}) {
        list.fileInfo(record<REPORTKIT::Binary>(url));
    }
    list.fileInfo(record<REPORTKIT::Text>("a"));
    list.fileInfo(record<REPORTKIT::Picture>("a"));
    list.fileInfo(record<REPORTKIT::Text>("a!"));
    REPORTKIT::Results const& results = list.getResults();
    EXPECT_EQ(urls(results.GetBinary()), (QStringList{"a", "b", "A", "a ", "a!"}));
    EXPECT_EQ(urls(results.GetText()), QStringList{"a!"});
    EXPECT_EQ(urls(results.GetPicture()), QStringList{"a"});
    EXPECT_FALSE(results.GetValidate()); // hosts fill records without every field
}

} // namespace
