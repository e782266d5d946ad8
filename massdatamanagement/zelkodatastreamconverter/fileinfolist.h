#pragma once

#include <massdatamanagement/zelkodatastreamconverter/fileinfocallback.h>
#include <reportkit/results.h>

namespace zelkodatastreamconverter {

/// Collects the produced-file records of a conversion into a REPORTKIT::Results.
///
/// Each file appears once: a record replaces the latest earlier record of the same URL in
/// its list (Binary, Text or Picture), and the new one goes to the end. The interim record
/// of an open file is thus replaced by its final one.
class FileInfoList : public FileInfoCallback
{
public:
    FileInfoList();
    FileInfoList(FileInfoList const&) = default;
    FileInfoList& operator=(FileInfoList const&) = default;
    void fileInfo(REPORTKIT::IRGObject const& record) override;
    virtual ~FileInfoList();

    REPORTKIT::Results& getResults() { return m_results; }
    REPORTKIT::Results const& getResults() const { return m_results; }

private:
    REPORTKIT::Results m_results;
};

} // namespace zelkodatastreamconverter
