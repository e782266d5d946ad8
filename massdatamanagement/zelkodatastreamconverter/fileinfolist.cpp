#include "fileinfolist.h"

#include <algorithm>

namespace zelkodatastreamconverter {

namespace {

template <typename Record>
void replaceOrAppend(std::vector<Record>& list, Record const& record)
{
    // Newest entries are at the end, so the one to replace is searched from there.
    auto const found = std::find_if(list.rbegin(), list.rend(), [&](Record const& entry) {
        return entry.GetURL() == record.GetURL();
    });
    if (found != list.rend()) {
        list.erase(std::next(found).base());
    }
    list.push_back(record);
}

} // namespace

FileInfoList::FileInfoList()
{
    m_results.SetValidate(false);
}

FileInfoList::~FileInfoList() = default;

void FileInfoList::fileInfo(REPORTKIT::IRGObject const& record)
{
    if (auto const* binary = dynamic_cast<REPORTKIT::Binary const*>(&record)) {
        replaceOrAppend(m_results.GetBinary(), *binary);
    } else if (auto const* text = dynamic_cast<REPORTKIT::Text const*>(&record)) {
        replaceOrAppend(m_results.GetText(), *text);
    } else if (auto const* picture = dynamic_cast<REPORTKIT::Picture const*>(&record)) {
        replaceOrAppend(m_results.GetPicture(), *picture);
    }
}

} // namespace zelkodatastreamconverter
