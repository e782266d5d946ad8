#include "symbolpayload.h"

#include "payloadbuilder.h"

namespace zelkorecording {

using namespace zelkodatastreamconverter;

namespace {

PayloadBuilder& header(PayloadBuilder& payload, SymbolRun const& run, quint32 kind)
{
    return payload.uint64(run.microseconds).uint64(run.frequencyHz).word(run.channel).word(kind);
}

quint32 countWord(int trueCount, qint64 claimedCount)
{
    return claimedCount < 0 ? quint32(trueCount) : quint32(claimedCount);
}

} // namespace

QByteArray rawSymbolPayload(SymbolRun const& run, quint32 width, quint32 milliBaud,
                            QVector<quint32> const& symbols, qint64 claimedCount)
{
    PayloadBuilder payload;
    header(payload, run, SymbolKind::RawSymbols)
        .word(width)
        .word(milliBaud)
        .word(countWord(symbols.size(), claimedCount));
    // Symbols enter a 64-bit accumulator from the right; whole words leave it from the left.
    quint64 pending = 0;
    int pendingBits = 0;
    quint64 const mask = width >= 32 ? 0xFFFFFFFFull : (1ull << width) - 1;
    for (quint32 symbol : symbols) {
        pending = (pending << width) | (symbol & mask);
        pendingBits += int(width);
        if (pendingBits >= 32) {
            pendingBits -= 32;
            payload.word(quint32(pending >> pendingBits));
            pending &= (1ull << pendingBits) - 1;
        }
    }
    if (pendingBits > 0) {
        payload.word(quint32(pending << (32 - pendingBits)));
    }
    return payload.data();
}

QByteArray morseElementPayload(SymbolRun const& run, quint32 toneHz, qint32 levelTenthsDb,
                               QVector<KeyElement> const& elements, qint64 claimedCount)
{
    PayloadBuilder payload;
    header(payload, run, SymbolKind::MorseElements)
        .word(toneHz)
        .int32(levelTenthsDb)
        .word(countWord(elements.size(), claimedCount));
    for (KeyElement const& element : elements) {
        payload.word(morseElementWord(element.keyDown, element.microseconds));
    }
    return payload.data();
}

} // namespace zelkorecording
