#include "filemetadata.h"

namespace REPORTKIT {

namespace {
// Null date-times compare equal to each other only; valid ones compare as instants.
bool sameTime(QDateTime const& a, QDateTime const& b)
{
    return a.isValid() == b.isValid() && (!a.isValid() || a == b);
}
} // namespace

bool FileMetadata::operator==(FileMetadata const& other) const
{
    return sameTime(m_startTime, other.m_startTime) && sameTime(m_stopTime, other.m_stopTime) &&
           m_detail == other.m_detail;
}

} // namespace REPORTKIT
