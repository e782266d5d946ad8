#pragma once

#include "filerecord.h"

namespace REPORTKIT {

/// Record of a produced text or result document.
class Text : public FileRecord
{
public:
    QString ElementName() const override;
    bool operator==(Text const& other) const { return sameContent(other); }
    bool operator!=(Text const& other) const { return !(*this == other); }
};

} // namespace REPORTKIT
