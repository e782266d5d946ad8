#pragma once

#include "filerecord.h"

namespace REPORTKIT {

/// Record of a produced image.
class Picture : public FileRecord
{
public:
    QString ElementName() const override;
    bool operator==(Picture const& other) const { return sameContent(other); }
    bool operator!=(Picture const& other) const { return !(*this == other); }
};

} // namespace REPORTKIT
