#pragma once

#include <QString>

namespace zelkotool {

/// "64 decoded text", "368 PDU", or the bare number for a type the library does not know.
QString frameTypeLabel(quint32 frameType);

} // namespace zelkotool
