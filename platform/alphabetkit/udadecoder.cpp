#include "udadecoder.h"

namespace AlphabetKit {

UdaDecoder::UdaDecoder() = default;
UdaDecoder::~UdaDecoder() = default;

void UdaDecoder::LoadAlphabets(QString const& directory)
{
    QString const current = GetCurrentAlphabet();
    m_catalog.load(directory);
    AlphabetPtr alphabet = m_catalog.find(current);
    m_translator = CodeTranslator(alphabet ? alphabet : m_catalog.find(Alphabet::noneName()));
}

QStringList UdaDecoder::GetAlphabets() const
{
    return m_catalog.allNames();
}

QStringList UdaDecoder::GetAlphabets(QString const& demodulator) const
{
    return m_catalog.names(demodulator);
}

QString UdaDecoder::GetCurrentAlphabet() const
{
    return m_translator.alphabet()->name();
}

bool UdaDecoder::SelectAlphabet(QString const& name)
{
    AlphabetPtr alphabet = m_catalog.find(name);
    if (!alphabet) {
        return false;
    }
    m_translator = CodeTranslator(alphabet);
    return true;
}

QString UdaDecoder::GetCurrentSettings() const
{
    return GetCurrentAlphabet();
}

bool UdaDecoder::TextDirectionRTL() const
{
    return m_translator.alphabet()->rightToLeft();
}

void UdaDecoder::ClearBuffer()
{
    m_translator.reset();
}

bool UdaDecoder::usable() const
{
    return m_translator.alphabet()->name() != Alphabet::noneName();
}

bool UdaDecoder::DecodeASCII(QString& out, QByteArray& in)
{
    if (!usable()) {
        return false;
    }
    QString text;
    for (char const byte : qAsConst(in)) {
        m_translator.translate(uchar(byte), text);
    }
    out = text;
    return true;
}

bool UdaDecoder::DecodeUnicode(QString& out, QByteArray& in)
{
    if (!usable() || in.size() % 2 != 0) {
        return false;
    }
    QString text;
    for (int i = 0; i + 1 < in.size(); i += 2) {
        m_translator.translate(uchar(in[i]) | (unsigned(uchar(in[i + 1])) << 8), text);
    }
    out = text;
    return true;
}

namespace {

template <typename BitAt>
QString unpack(CodeTranslator& translator, unsigned elements, unsigned bits, BitAt bitAt)
{
    QString text;
    quint64 position = 0;
    for (unsigned element = 0; element < elements; ++element) {
        unsigned code = 0;
        for (unsigned bit = 0; bit < bits; ++bit, ++position) {
            code |= unsigned(bitAt(position)) << bit;
        }
        translator.translate(code, text);
    }
    return text;
}

} // namespace

bool UdaDecoder::DecodeBinary(QString& out, QByteArray& in, unsigned elements, unsigned bits)
{
    if (!usable() || bits < 1 || bits > 32 ||
        (quint64(elements) * bits + 7) / 8 > quint64(in.size())) {
        return false;
    }
    out = unpack(m_translator, elements, bits, [&in](quint64 position) {
        return (uchar(in[int(position / 8)]) >> (position % 8)) & 1u;
    });
    return true;
}

bool UdaDecoder::DecodeBinary(QString& out, unsigned* data, unsigned elements, unsigned bits)
{
    if (!usable() || bits < 1 || bits > 32 || (data == nullptr && elements > 0)) {
        return false;
    }
    out = unpack(m_translator, elements, bits, [data](quint64 position) {
        return (data[position / 32] >> (position % 32)) & 1u;
    });
    return true;
}

void UdaDecoder::ConvertToString(QString& out, QByteArray const& in)
{
    QString text;
    text.reserve(in.size());
    for (char const byte : in) {
        QChar const c = QChar::fromLatin1(byte);
        if (uchar(byte) == 160) {
            text += QLatin1Char('\n');
        } else if (c == QLatin1Char('\n') || c == QLatin1Char('\r') || c.isPrint()) {
            text += c;
        } else {
            text += QLatin1Char('_');
        }
    }
    out = text;
}

} // namespace AlphabetKit
