#pragma once

#include <QByteArray>
#include <QString>

namespace zelkorecording {

/// Builds a frame payload in host byte order, the way a model reads it after the reader has
/// converted the frame: 32-bit words, 64-bit values as two words in memory order, doubles,
/// floats, UTF-16 text, raw bytes. RecordingWriter swaps whole words for recordings in the
/// other byte order.
class PayloadBuilder
{
public:
    PayloadBuilder& word(quint32 value);
    PayloadBuilder& int32(qint32 value) { return word(quint32(value)); }
    /// Two 16-bit values sharing one word: first at the lower address.
    PayloadBuilder& halfWords(quint16 first, quint16 second);
    PayloadBuilder& uint64(quint64 value);
    PayloadBuilder& float32(float value);
    PayloadBuilder& float64(double value);
    /// UTF-16 code units in host order, padded with a zero unit to a whole word.
    PayloadBuilder& utf16(QString const& text);
    /// Raw bytes, padded with zero bytes to a whole word.
    PayloadBuilder& bytes(QByteArray const& data);
    /// A text field of exactly `words` words, as receivers pack 8-bit characters: first
    /// character at the lowest address, cut at 4 * words bytes, zero-filled behind it.
    PayloadBuilder& text(QByteArray const& characters, int words);

    int sizeInBytes() const { return m_data.size(); }
    QByteArray const& data() const { return m_data; }

private:
    void padToWord();
    QByteArray m_data;
};

} // namespace zelkorecording
