#include "symbolrecord.h"

#include "framevalues.h"

namespace zelkodatastreamconverter {

namespace {

quint32 wordAt(char const* data, int word)
{
    quint32 value;
    std::memcpy(&value, data + 4 * word, sizeof value);
    return value;
}

quint64 pairAt(char const* data, int lowWord)
{
    return quint64(wordAt(data, lowWord)) | (quint64(wordAt(data, lowWord + 1)) << 32);
}

// Symbols leave the packed words from the most significant bit on; a symbol may straddle two
// words, so the bits run through a 64-bit window.
void unpack(char const* packed, quint32 count, quint32 width, QVector<quint32>& symbols)
{
    symbols.resize(int(count));
    quint64 const mask = (quint64(1) << width) - 1;
    quint64 window = 0;
    int bits = 0;
    int next = 0;
    for (quint32 i = 0; i < count; ++i) {
        if (bits < int(width)) {
            window = (window << 32) | wordAt(packed, next++);
            bits += 32;
        }
        bits -= int(width);
        symbols[int(i)] = quint32((window >> bits) & mask);
        window &= (quint64(1) << bits) - 1;
    }
}

} // namespace

bool SymbolRecord::read(char const* data, int bytes, SymbolRecord& record, QString& reason)
{
    if (bytes < SymbolFrameHeaderBytes) {
        reason = QStringLiteral("%1 bytes, a symbol header has %2")
                     .arg(bytes)
                     .arg(SymbolFrameHeaderBytes);
        return false;
    }
    using W = SymbolFrameWord::Value;
    quint32 const kind = wordAt(data, W::Kind);
    quint32 const width = wordAt(data, W::WidthOrTone);
    quint32 const count = wordAt(data, W::Count);
    qint64 const room = bytes - SymbolFrameHeaderBytes;
    quint64 dataWords = count;
    if (kind == SymbolKind::RawSymbols) {
        if (width == 0 || width > MaxSymbolWidth) {
            reason = QStringLiteral("symbol width %1").arg(width);
            return false;
        }
        dataWords = packedSymbolWords(count, width);
        if (dataWords * 4 > quint64(room)) {
            reason =
                QStringLiteral("%1 symbols of %2 bits in %3 bytes").arg(count).arg(width).arg(room);
            return false;
        }
    } else if (kind == SymbolKind::MorseElements) {
        if (dataWords * 4 > quint64(room)) {
            reason = QStringLiteral("%1 elements in %2 bytes").arg(count).arg(room);
            return false;
        }
    } else {
        reason = QStringLiteral("kind %1").arg(kind);
        return false;
    }
    record.microseconds = pairAt(data, W::TimeLow);
    record.frequencyHz = pairAt(data, W::FrequencyLow);
    record.channel = qint32(wordAt(data, W::Channel));
    record.kind = kind;
    record.widthOrTone = width;
    record.rateOrLevel = wordAt(data, W::RateOrLevel);
    char const* const first = data + SymbolFrameHeaderBytes;
    if (kind == SymbolKind::RawSymbols) {
        unpack(first, count, width, record.values);
    } else {
        record.values.resize(int(count));
        std::memcpy(record.values.data(), first, std::size_t(count) * 4);
    }
    record.words = QByteArray(data, SymbolFrameHeaderBytes + int(dataWords) * 4);
    return true;
}

} // namespace zelkodatastreamconverter
