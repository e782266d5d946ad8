#pragma once

#include "filedetail.h"

#include <QDateTime>

namespace REPORTKIT {

/// Time span and detail of a produced file. A null stop time marks a file still open.
class FileMetadata
{
public:
    void SetStartTime(QDateTime const& time) { m_startTime = time; }
    QDateTime const& GetStartTime() const { return m_startTime; }
    void SetStopTime(QDateTime const& time) { m_stopTime = time; }
    QDateTime const& GetStopTime() const { return m_stopTime; }

    FileDetail& GetDetail() { return m_detail; }
    FileDetail const& GetDetail() const { return m_detail; }

    bool operator==(FileMetadata const& other) const;
    bool operator!=(FileMetadata const& other) const { return !(*this == other); }

private:
    QDateTime m_startTime;
    QDateTime m_stopTime;
    FileDetail m_detail;
};

} // namespace REPORTKIT
