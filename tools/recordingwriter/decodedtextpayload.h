#pragma once

#include <QByteArray>
#include <optional>
#include <vector>

namespace zelkorecording {

/// One character of a decoded-text frame: the channel it was received on and its code.
struct DecodedTextEntry
{
    qint32 channel;
    quint16 code;
};

/// The payload of one decoded-text frame: the time stamp in microseconds, a reserved word,
/// the entry count, then per entry its channel and its code (the upper half-word zero).
/// claimedCount, when given, is written as the count instead of the true one, as in a
/// damaged recording.
QByteArray decodedTextPayload(quint64 microseconds, std::vector<DecodedTextEntry> const& entries,
                              std::optional<qint32> claimedCount = std::nullopt);

} // namespace zelkorecording
