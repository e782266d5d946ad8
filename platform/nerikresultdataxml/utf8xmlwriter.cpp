#include "utf8xmlwriter.h"

#include <QIODevice>
#include <QtEndian>
#include <algorithm>
#include <array>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace NerikResultDataXml {

namespace {

// Output is gathered up to this size before it goes to the device: large writes are what
// makes a file device fast, and a megabyte is little beside the document itself.
constexpr size_t ChunkBytes = 1 << 20;
// A text or base64 slice is encoded into the buffer in one go; below this much room the
// buffer is handed on first, so that slices stay long.
constexpr size_t MinimumSliceRoom = 16 << 10;
// The longest form of one UTF-16 code unit in element text: <c u="HHHH"/>.
constexpr size_t LongestTextUnit = 13;
// ... and in an attribute: &quot; (six bytes; UTF-8 takes at most three a unit).
constexpr size_t LongestAttributeUnit = 6;

inline char* putLatin1(char* out, char const* text, size_t size)
{
    std::memcpy(out, text, size);
    return out + size;
}

template <size_t N>
inline char* putLiteral(char* out, char const (&text)[N])
{
    return putLatin1(out, text, N - 1);
}

inline char* putUtf8(char* out, uint code)
{
    if (code < 0x80) {
        *out++ = char(code);
    } else if (code < 0x800) {
        *out++ = char(0xC0 | code >> 6);
        *out++ = char(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        *out++ = char(0xE0 | code >> 12);
        *out++ = char(0x80 | ((code >> 6) & 0x3F));
        *out++ = char(0x80 | (code & 0x3F));
    } else {
        *out++ = char(0xF0 | code >> 18);
        *out++ = char(0x80 | ((code >> 12) & 0x3F));
        *out++ = char(0x80 | ((code >> 6) & 0x3F));
        *out++ = char(0x80 | (code & 0x3F));
    }
    return out;
}

inline bool isHighSurrogate(uint u)
{
    return u >= 0xD800 && u <= 0xDBFF;
}

inline bool isLowSurrogate(uint u)
{
    return u >= 0xDC00 && u <= 0xDFFF;
}

inline uint pairCode(uint high, uint low)
{
    return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

// Plain in element text: ASCII that stays as it is (tab, line feed, 0x20 to 0x7F but for
// the three markup characters).
inline bool isPlainAscii(uint u)
{
    return u < 0x80 && (u >= 0x20 || u == '\t' || u == '\n') && u != '<' && u != '>' && u != '&';
}

#ifdef __SSE2__
// The leading run of plain ASCII (isPlainAscii()), narrowed to bytes sixteen at a time;
// returns its length. Packing with unsigned saturation turns every unit above 0xFF into 0xFF
// and every unit from 0x8000 on into 0, so that a single signed comparison with 0x20 catches
// both along with the controls. out has room for size bytes rounded up to sixteen.
inline int copyPlainAscii(ushort const* units, int size, char* out)
{
    __m128i const space = _mm_set1_epi8(0x20);
    __m128i const tab = _mm_set1_epi8('\t');
    __m128i const lineFeed = _mm_set1_epi8('\n');
    __m128i const less = _mm_set1_epi8('<');
    __m128i const greater = _mm_set1_epi8('>');
    __m128i const ampersand = _mm_set1_epi8('&');
    int i = 0;
    for (; i + 16 <= size; i += 16) {
        __m128i const low = _mm_loadu_si128(reinterpret_cast<__m128i const*>(units + i));
        __m128i const high = _mm_loadu_si128(reinterpret_cast<__m128i const*>(units + i + 8));
        __m128i const bytes = _mm_packus_epi16(low, high);
        __m128i const blank =
            _mm_or_si128(_mm_cmpeq_epi8(bytes, tab), _mm_cmpeq_epi8(bytes, lineFeed));
        __m128i const control = _mm_andnot_si128(blank, _mm_cmplt_epi8(bytes, space));
        __m128i const markup = _mm_or_si128(
            _mm_cmpeq_epi8(bytes, less),
            _mm_or_si128(_mm_cmpeq_epi8(bytes, greater), _mm_cmpeq_epi8(bytes, ampersand)));
        int const stops = _mm_movemask_epi8(_mm_or_si128(control, markup));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), bytes);
        if (stops != 0) {
            return i + __builtin_ctz(unsigned(stops));
        }
    }
    return i;
}
#endif

char* putEscapedUnit(char* out, uint u)
{
    static char const hex[] = "0123456789ABCDEF";
    out = putLiteral(out, "<c u=\"");
    for (int shift = 12; shift >= 0; shift -= 4) {
        *out++ = hex[(u >> shift) & 0xF];
    }
    return putLiteral(out, "\"/>");
}

// Two base64 characters for each 12-bit value, the first in the low byte: one lookup per
// half of a byte triple.
struct Base64Pairs
{
    Base64Pairs()
    {
        static char const alphabet[] =
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        for (size_t v = 0; v < pairs.size(); ++v) {
            pairs[v] = quint16(uchar(alphabet[v >> 6]) | uchar(alphabet[v & 63]) << 8);
        }
    }
    std::array<quint16, 4096> pairs;
};

Base64Pairs const base64Pairs;

inline char* putPair(char* out, uint twelveBits)
{
    quint16 const pair = base64Pairs.pairs[twelveBits & 0xFFF];
    out[0] = char(pair & 0xFF);
    out[1] = char(pair >> 8);
    return out + 2;
}

char* putBase64(uchar const* in, size_t size, char* out)
{
    size_t i = 0;
    // Six bytes at a time from one eight-byte load: four lookups, one eight-byte store.
    for (; i + 8 <= size; i += 6) {
        quint64 const bits = qFromBigEndian<quint64>(in + i);
        quint64 const four = quint64(base64Pairs.pairs[(bits >> 52) & 0xFFF]) |
                             quint64(base64Pairs.pairs[(bits >> 40) & 0xFFF]) << 16 |
                             quint64(base64Pairs.pairs[(bits >> 28) & 0xFFF]) << 32 |
                             quint64(base64Pairs.pairs[(bits >> 16) & 0xFFF]) << 48;
        qToLittleEndian(four, out);
        out += 8;
    }
    for (; i + 3 <= size; i += 3) {
        uint const triple = uint(in[i]) << 16 | uint(in[i + 1]) << 8 | in[i + 2];
        out = putPair(putPair(out, triple >> 12), triple);
    }
    if (i < size) { // the padded end
        bool const two = i + 1 < size;
        uint const triple = uint(in[i]) << 16 | (two ? uint(in[i + 1]) << 8 : 0u);
        out = putPair(out, triple >> 12);
        out[0] = two ? char(base64Pairs.pairs[triple & 0xFFF] & 0xFF) : '=';
        out[1] = '=';
        out += 2;
    }
    return out;
}

} // namespace

Utf8XmlWriter::Utf8XmlWriter(QIODevice& device) : m_device(&device) {}

Utf8XmlWriter::Utf8XmlWriter(QByteArray& bytes) : m_bytes(&bytes) {}

Utf8XmlWriter::~Utf8XmlWriter()
{
    flush();
}

bool Utf8XmlWriter::flush()
{
    if (m_used > 0 && !m_failed) {
        if (m_device) {
            m_failed = m_device->write(m_buffer.data(), qint64(m_used)) != qint64(m_used);
        } else {
            m_bytes->append(m_buffer.data(), int(m_used));
        }
    }
    m_used = 0; // after a failure, output is dropped
    return !hasError();
}

char* Utf8XmlWriter::room(size_t bytes)
{
    if (m_used > 0 && m_used + bytes > ChunkBytes) {
        flush();
    }
    if (m_used + bytes > m_buffer.size()) {
        size_t const grown = std::min(ChunkBytes, std::max<size_t>(4096, 2 * m_buffer.size()));
        m_buffer.resize(std::max(m_used + bytes, grown));
    }
    return m_buffer.data() + m_used;
}

void Utf8XmlWriter::put(QLatin1String text)
{
    commit(putLatin1(room(size_t(text.size())), text.data(), size_t(text.size())));
}

// A line feed and level indents; nothing but the line feed for a level below one (the end
// of an empty element that was the last one open asks for level -1).
void Utf8XmlWriter::indent(int level)
{
    char* out = room(1 + 4 * size_t(std::max(level, 0)));
    *out++ = '\n';
    for (int i = 0; i < level; ++i) {
        out = putLiteral(out, "    ");
    }
    commit(out);
}

// Closes a pending start tag; answers whether anything was written into the element
// before, and notes whether the caller writes content now.
bool Utf8XmlWriter::finishStartElement(bool contents)
{
    bool const hadSomethingWritten = m_wroteSomething;
    m_wroteSomething = contents;
    if (!m_inStartElement) {
        return hadSomethingWritten;
    }
    if (m_inEmptyElement) {
        put(QLatin1String("/>"));
        m_tags.pop_back();
        m_lastWasStartElement = false;
    } else {
        put(QLatin1String(">"));
    }
    m_inStartElement = m_inEmptyElement = false;
    return hadSomethingWritten;
}

void Utf8XmlWriter::writeStartDocument(bool declareEncoding)
{
    finishStartElement(false);
    put(declareEncoding ? QLatin1String("<?xml version=\"1.0\" encoding=\"UTF-8\"?>")
                        : QLatin1String("<?xml version=\"1.0\"?>"));
}

void Utf8XmlWriter::writeStartElement(QLatin1String name)
{
    if (!finishStartElement(false) && m_autoFormatting) {
        indent(int(m_tags.size()));
    }
    m_tags.push_back(name);
    char* out = room(size_t(name.size()) + 1);
    *out++ = '<';
    commit(putLatin1(out, name.data(), size_t(name.size())));
    m_inStartElement = m_lastWasStartElement = true;
}

void Utf8XmlWriter::writeEmptyElement(QLatin1String name)
{
    writeStartElement(name);
    m_inEmptyElement = true;
}

void Utf8XmlWriter::writeAttribute(QLatin1String name, QString const& value)
{
    char* out = room(size_t(name.size()) + 2);
    *out++ = ' ';
    out = putLatin1(out, name.data(), size_t(name.size()));
    *out++ = '=';
    commit(out);
    writeAttributeValue(value);
}

void Utf8XmlWriter::writeAttribute(QLatin1String name, qint64 value)
{
    char digits[24];
    char* end = digits + sizeof digits;
    char* first = end;
    quint64 magnitude = value < 0 ? 0 - quint64(value) : quint64(value);
    do {
        *--first = char('0' + magnitude % 10);
        magnitude /= 10;
    } while (magnitude != 0);
    if (value < 0) {
        *--first = '-';
    }
    char* out = room(size_t(name.size()) + 4 + size_t(end - first));
    *out++ = ' ';
    out = putLatin1(out, name.data(), size_t(name.size()));
    out = putLiteral(out, "=\"");
    out = putLatin1(out, first, size_t(end - first));
    *out++ = '"';
    commit(out);
}

// The value in quotes, escaped as QXmlStreamWriter escapes attribute values.
void Utf8XmlWriter::writeAttributeValue(QString const& value)
{
    int const size = value.size();
    ushort const* units = value.utf16();
    char* out = room(LongestAttributeUnit * size_t(size) + 2);
    *out++ = '"';
    for (int i = 0; i < size; ++i) {
        uint const u = units[i];
        if (u >= 0x20 && u < 0x7F && u != '"' && u != '<' && u != '>' && u != '&') {
            *out++ = char(u); // numbers, times, names: nearly every attribute
            continue;
        }
        switch (u) {
        case '<':
            out = putLiteral(out, "&lt;");
            continue;
        case '>':
            out = putLiteral(out, "&gt;");
            continue;
        case '&':
            out = putLiteral(out, "&amp;");
            continue;
        case '"':
            out = putLiteral(out, "&quot;");
            continue;
        case '\t':
            out = putLiteral(out, "&#9;");
            continue;
        case '\n':
            out = putLiteral(out, "&#10;");
            continue;
        case '\r':
            out = putLiteral(out, "&#13;");
            continue;
        default:
            break;
        }
        if (u < 0x20 || u >= 0xFFFE || isLowSurrogate(u)) {
            m_badCharacter = true;
        } else if (!isHighSurrogate(u)) {
            out = putUtf8(out, u);
        } else if (i + 1 < size && isLowSurrogate(units[i + 1])) {
            out = putUtf8(out, pairCode(u, units[i + 1]));
            ++i;
        } else {
            m_badCharacter = true;
        }
    }
    *out++ = '"';
    commit(out);
}

void Utf8XmlWriter::writeEndElement()
{
    if (m_tags.empty()) {
        return;
    }
    if (m_inStartElement && !m_inEmptyElement) { // nothing inside: an empty tag
        put(QLatin1String("/>"));
        m_lastWasStartElement = m_inStartElement = false;
        m_tags.pop_back();
        return;
    }
    if (!finishStartElement(false) && !m_lastWasStartElement && m_autoFormatting) {
        indent(int(m_tags.size()) - 1);
    }
    if (m_tags.empty()) { // the pending empty element was the last one open
        return;
    }
    m_lastWasStartElement = false;
    QLatin1String const name = m_tags.back();
    m_tags.pop_back();
    char* out = room(size_t(name.size()) + 3);
    out = putLiteral(out, "</");
    out = putLatin1(out, name.data(), size_t(name.size()));
    *out++ = '>';
    commit(out);
}

void Utf8XmlWriter::writeEndDocument()
{
    while (!m_tags.empty()) {
        writeEndElement();
    }
    put(QLatin1String("\n"));
}

// units[0, size) as escaped UTF-8 at out, which has room for LongestTextUnit bytes a unit.
// A surrogate pair is one character only when both halves are in the slice.
char* Utf8XmlWriter::textSlice(ushort const* units, int size, char* out)
{
    int i = 0;
    while (i < size) {
#ifdef __SSE2__
        int const plain = copyPlainAscii(units + i, size - i, out);
        i += plain;
        out += plain;
        if (i == size) {
            break;
        }
#endif
        do {
            uint const u = units[i++];
            if (isPlainAscii(u)) {
                *out++ = char(u);
            } else if (u == '<') {
                out = putLiteral(out, "&lt;");
            } else if (u == '>') {
                out = putLiteral(out, "&gt;");
            } else if (u == '&') {
                out = putLiteral(out, "&amp;");
            } else if (u == '\r') { // a reference survives a parser's line-end handling
                out = putLiteral(out, "&#13;");
            } else if (u < 0x20 || u >= 0xFFFE || isLowSurrogate(u)) {
                out = putEscapedUnit(out, u);
            } else if (!isHighSurrogate(u)) {
                out = putUtf8(out, u);
            } else if (i < size && isLowSurrogate(units[i])) {
                out = putUtf8(out, pairCode(u, units[i]));
                ++i;
            } else {
                out = putEscapedUnit(out, u);
            }
        } while (i < size && (size - i < 16 || !isPlainAscii(units[i])));
    }
    return out;
}

void Utf8XmlWriter::writeText(QString const& text)
{
    int const size = text.size();
    if (size == 0) {
        return;
    }
    finishStartElement();
    ushort const* const units = text.utf16();
    for (int begin = 0; begin < size;) {
        size_t const free = std::max(MinimumSliceRoom, ChunkBytes - std::min(m_used, ChunkBytes));
        int end = begin + int(std::min<size_t>(size_t(size - begin), free / LongestTextUnit));
        if (end < size && isHighSurrogate(units[end - 1])) {
            --end; // a pair stays in one slice
        }
        char* const out = room(LongestTextUnit * size_t(end - begin));
        commit(textSlice(units + begin, end - begin, out));
        begin = end;
    }
}

void Utf8XmlWriter::writeBase64(char const* data, qint64 size)
{
    if (size <= 0) {
        return;
    }
    finishStartElement();
    uchar const* const in = reinterpret_cast<uchar const*>(data);
    for (qint64 begin = 0; begin < size;) {
        size_t const free = std::max(MinimumSliceRoom, ChunkBytes - std::min(m_used, ChunkBytes));
        // Whole byte triples, so that padding comes only at the very end.
        qint64 const end = begin + std::min<qint64>(size - begin, qint64(free / 4 * 3));
        char* const out = room(size_t(end - begin + 2) / 3 * 4);
        commit(putBase64(in + begin, size_t(end - begin), out));
        begin = end;
    }
}

} // namespace NerikResultDataXml
