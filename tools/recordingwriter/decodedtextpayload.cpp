#include "decodedtextpayload.h"

#include "payloadbuilder.h"

namespace zelkorecording {

QByteArray decodedTextPayload(quint64 microseconds, std::vector<DecodedTextEntry> const& entries,
                              std::optional<qint32> claimedCount)
{
    PayloadBuilder payload;
    payload.uint64(microseconds).word(0).int32(claimedCount.value_or(qint32(entries.size())));
    for (DecodedTextEntry const& entry : entries) {
        payload.int32(entry.channel).halfWords(entry.code, 0);
    }
    return payload.data();
}

} // namespace zelkorecording
