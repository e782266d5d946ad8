#pragma once

#include "filerecord.h"

namespace REPORTKIT {

/// Record of a produced binary, audio or result file.
class Binary : public FileRecord
{
public:
    QString ElementName() const override;
    bool operator==(Binary const& other) const { return sameContent(other); }
    bool operator!=(Binary const& other) const { return !(*this == other); }
};

} // namespace REPORTKIT
