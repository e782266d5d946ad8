#include "payloadbuilder.h"

#include <cstring>

namespace zelkorecording {

namespace {
template <typename T>
void appendRaw(QByteArray& data, T const& value)
{
    data.append(reinterpret_cast<char const*>(&value), int(sizeof value));
}
} // namespace

PayloadBuilder& PayloadBuilder::word(quint32 value)
{
    appendRaw(m_data, value);
    return *this;
}

PayloadBuilder& PayloadBuilder::halfWords(quint16 first, quint16 second)
{
    appendRaw(m_data, first);
    appendRaw(m_data, second);
    return *this;
}

PayloadBuilder& PayloadBuilder::uint64(quint64 value)
{
    appendRaw(m_data, value);
    return *this;
}

PayloadBuilder& PayloadBuilder::float32(float value)
{
    appendRaw(m_data, value);
    return *this;
}

PayloadBuilder& PayloadBuilder::float64(double value)
{
    appendRaw(m_data, value);
    return *this;
}

PayloadBuilder& PayloadBuilder::utf16(QString const& text)
{
    m_data.append(reinterpret_cast<char const*>(text.utf16()), text.size() * 2);
    padToWord();
    return *this;
}

PayloadBuilder& PayloadBuilder::bytes(QByteArray const& data)
{
    m_data.append(data);
    padToWord();
    return *this;
}

PayloadBuilder& PayloadBuilder::text(QByteArray const& characters, int words)
{
    int const size = 4 * words;
    m_data.append(characters.left(size));
    m_data.append(QByteArray(size - qMin(size, characters.size()), '\0'));
    return *this;
}

void PayloadBuilder::padToWord()
{
    while (m_data.size() % 4 != 0) {
        m_data.append('\0');
    }
}

} // namespace zelkorecording
