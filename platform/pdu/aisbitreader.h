#pragma once
// Reads the fields of an AIS message: unsigned and two's-complement numbers of any width up to
// 32 bits, most significant bit first, and six-bit characters. Bits past the end of the
// message read as zero, so that a short message still yields every field.

#include <QByteArray>

namespace ais {

class AisBitReader
{
public:
    /// `bits` bits of `message`, the first in the most significant bit of byte 0.
    AisBitReader(QByteArray const& message, unsigned bitCount);

    unsigned take(unsigned bits);
    int takeSigned(unsigned bits);
    /// `count` six-bit characters in their ASCII form ('@' for 0, blank for 32).
    QByteArray takeText(unsigned count);
    unsigned remaining() const { return m_position < m_bitCount ? m_bitCount - m_position : 0; }
    /// The bits from here to the end, packed from the most significant bit of byte 0.
    QByteArray takeRest(unsigned& bitCount);

private:
    bool bitAt(unsigned index) const;

    QByteArray m_message;
    unsigned m_bitCount;
    unsigned m_position = 0;
};

} // namespace ais
