#include "picture.h"

namespace REPORTKIT {

QString Picture::ElementName() const
{
    return QStringLiteral("Picture");
}

} // namespace REPORTKIT
