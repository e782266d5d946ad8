#include "binary.h"

namespace REPORTKIT {

QString Binary::ElementName() const
{
    return QStringLiteral("Binary");
}

} // namespace REPORTKIT
