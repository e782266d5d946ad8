#include "aisbitreader.h"

namespace ais {

AisBitReader::AisBitReader(QByteArray const& message, unsigned bitCount)
    : m_message(message), m_bitCount(qMin(bitCount, unsigned(message.size()) * 8u))
{
}

bool AisBitReader::bitAt(unsigned index) const
{
    return index < m_bitCount && (quint8(m_message[int(index / 8)]) >> (7 - index % 8)) & 1u;
}

unsigned AisBitReader::take(unsigned bits)
{
    unsigned value = 0;
    for (unsigned i = 0; i < bits; ++i) {
        value = (value << 1) | (bitAt(m_position++) ? 1u : 0u);
    }
    return value;
}

int AisBitReader::takeSigned(unsigned bits)
{
    unsigned const value = take(bits);
    if (bits == 0 || bits >= 32) {
        return int(value);
    }
    unsigned const sign = 1u << (bits - 1);
    return int(value ^ sign) - int(sign);
}

QByteArray AisBitReader::takeText(unsigned count)
{
    QByteArray text;
    text.reserve(int(count));
    for (unsigned i = 0; i < count; ++i) {
        unsigned const code = take(6);
        text.append(char(code < 32 ? code + 64 : code));
    }
    return text;
}

QByteArray AisBitReader::takeRest(unsigned& bitCount)
{
    bitCount = remaining();
    QByteArray rest(int((bitCount + 7) / 8), '\0');
    for (unsigned i = 0; i < bitCount; ++i) {
        if (bitAt(m_position + i)) {
            rest[int(i / 8)] = char(quint8(rest[int(i / 8)]) | (0x80u >> (i % 8)));
        }
    }
    m_position += bitCount;
    return rest;
}

} // namespace ais
