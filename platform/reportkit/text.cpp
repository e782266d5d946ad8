#include "text.h"

namespace REPORTKIT {

QString Text::ElementName() const
{
    return QStringLiteral("Text");
}

} // namespace REPORTKIT
