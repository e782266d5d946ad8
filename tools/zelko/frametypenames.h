#pragma once

#include <QString>

namespace zelkotool {

/// "64 decoded text", "368 PDU", or the bare number for a type the library does not know.
QString frameTypeLabel(quint32 frameType);

/// The --kind name of the converter for a frame type ("text", "ts", "symbol", "image", and
/// "bursts" for burst lists); empty for a type the library does not know.
QString frameTypeKind(quint32 frameType);

} // namespace zelkotool
