#pragma once

#include <functional>
#include <massdatamanagement/zelkodatastreamconverter/idatastreamconverter.h>

namespace zelkodatastreamconverter {

/// A converter that tells a progress display how far convertFile() has come.
class ProgressReportingConverter : public IDataStreamConverter
{
public:
    /// What has been converted so far and the whole (bytes of the recording, or frames of
    /// audio); total is 0 when unknown.
    using Progress = std::function<void(qint64 done, qint64 total)>;

    /// Told now and then during convertFile(); none by default.
    void setProgressCallback(Progress progress) { m_progress = std::move(progress); }

protected:
    Progress const& progress() const { return m_progress; }

private:
    Progress m_progress;
};

} // namespace zelkodatastreamconverter
