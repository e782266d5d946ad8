#include "frametypenames.h"

namespace zelkotool {

QString frameTypeLabel(quint32 frameType)
{
    switch (frameType) {
    case 64:
        return QStringLiteral("64 decoded text");
    case 304:
        return QStringLiteral("304 symbols");
    case 336:
        return QStringLiteral("336 burst list");
    case 352:
        return QStringLiteral("352 image");
    case 368:
        return QStringLiteral("368 PDU");
    default:
        return QString::number(frameType);
    }
}

} // namespace zelkotool
