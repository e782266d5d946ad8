#include "framereader.h"

#include "moduletrace.h"
#include "wordswap.h"

#include <QtEndian>
#include <algorithm>
#include <array>
#include <cstring>

namespace zelkodatastreamconverter {

namespace {

ModuleTrace const& moduleTrace()
{
    static ModuleTrace const trace(QStringLiteral("framereader"));
    return trace;
}

// The lowest bytes of the two forms of the magic word, searched for when resynchronising.
constexpr char NativeMagicFirstByte = char(0x72);
constexpr char SwappedMagicFirstByte = char(0xFB);

// Lower-case hex without prefix, written into the caller's array so that a reused array
// is not reallocated for every frame.
void setHexText(QByteArray& text, quint32 value)
{
    std::array<char, 8> digits;
    int count = 0;
    do {
        digits[size_t(count++)] = "0123456789abcdef"[value & 0xF];
        value >>= 4;
    } while (value != 0);
    text.resize(count);
    char* out = text.data();
    for (int i = 0; i < count; ++i) {
        out[i] = digits[size_t(count - 1 - i)];
    }
}

int indexOf(QByteArray const& buffer, char byte, int from, int to)
{
    if (from >= to) {
        return -1;
    }
    auto const* begin = buffer.constData();
    auto const* found =
        static_cast<char const*>(std::memchr(begin + from, byte, size_t(to - from)));
    return found ? int(found - begin) : -1;
}

} // namespace

FrameReader::FrameReader(QString const& name) : m_name(name) {}

FrameReader::~FrameReader() = default;

bool FrameReader::isWorking()
{
    return !m_fatalError;
}

void FrameReader::trace(QString const& message, int line) const
{
    moduleTrace().warning(message, line);
}

void FrameReader::setExpected(int count)
{
    m_expectedSize = count;
    if (m_buffer.size() < count) {
        m_buffer.resize(count);
    }
}

quint32 FrameReader::headerWord(int index) const
{
    quint32 word;
    std::memcpy(&word, m_buffer.constData() + 4 * index, sizeof word);
    return word;
}

bool FrameReader::readFrame()
{
    if (m_expectedSize == 0 && m_filledSize == 0 && takeWholeFrame()) {
        return true;
    }
    if (m_expectedSize == 0) {
        setExpected(FrameHeaderSize);
    }
    if (!readBuffer()) {
        return false;
    }
    if (m_expectedSize == FrameHeaderSize && !readHeader()) {
        return false;
    }
    if (m_expectedSize > FrameHeaderSize) {
        convertFilledWords();
    }
    return true;
}

// The common case in one step: a frame in the current byte order, longer than a header, lying
// whole in the read-ahead block. The reader ends in the state that assembling it header first
// and body second would leave (buffer, sizes, flags), with one copy instead of two and no
// call into the source. Everything else (another magic word, a change of byte order, a
// header-only or bad length, a frame running past the block) goes the step-by-step way.
bool FrameReader::takeWholeFrame()
{
    int const available = m_readAheadEnd - m_readAheadBegin;
    if (available < FrameHeaderSize) {
        return false;
    }
    char const* const frame = m_readAhead.constData() + m_readAheadBegin;
    quint32 magic;
    quint32 lengthWords;
    std::memcpy(&magic, frame + FrameMagicOffset, sizeof magic);
    std::memcpy(&lengthWords, frame + FrameLengthOffset, sizeof lengthWords);
    if (magic != (m_convertByteOrder ? m_swappedMagic : m_nativeMagic)) {
        return false;
    }
    if (m_convertByteOrder) {
        lengthWords = qbswap(lengthWords);
    }
    if (lengthWords <= quint32(FrameHeaderSize / 4) || lengthWords > MaxFrameLengthWords ||
        int(lengthWords) > available / 4) {
        return false;
    }
    int const size = int(lengthWords * 4);
    setExpected(size);
    if (m_convertByteOrder) {
        WordSwap::swapCopy(m_buffer.data(), frame, size / 4);
    } else {
        std::memcpy(m_buffer.data(), frame, size_t(size));
    }
    m_filledSize = size;
    m_readAheadBegin += size;
    m_magicErrorReported = false;
    return true;
}

// Interprets a complete header. Returns true when a frame is complete (header-only, or the
// body arrived in the same call), false when bytes are missing, dropped or the reader failed.
bool FrameReader::readHeader()
{
    quint32 const magic = headerWord(0);
    if (magic == m_nativeMagic) {
        if (m_convertByteOrder) {
            trace(QStringLiteral("readFrame(%1): setConvertByteOrder(false)").arg(m_name),
                  __LINE__);
            m_convertByteOrder = false;
        }
    } else if (magic == m_swappedMagic) {
        if (!m_convertByteOrder) {
            trace(QStringLiteral("readFrame(%1): setConvertByteOrder(true)").arg(m_name), __LINE__);
            m_convertByteOrder = true;
        }
    } else {
        int const candidate = indexOfMagicWord();
        if (candidate >= 0) {
            m_expectedSize = candidate;
            removeFrameData();
            return false;
        }
        // A zero word is padding, not garbage: dropped without a message.
        if (!m_magicErrorReported && magic != 0) {
            trace(QStringLiteral("readFrame(%1): unknown magic word %2 (expected: %3)")
                      .arg(m_name)
                      .arg(magic)
                      .arg(m_nativeMagic),
                  __LINE__);
            m_magicErrorReported = true;
        }
        m_expectedSize = 0;
        m_filledSize = 0;
        return false;
    }
    m_magicErrorReported = false;

    quint32 lengthWords = headerWord(1);
    if (m_convertByteOrder) {
        lengthWords = qbswap(lengthWords);
    }
    if (lengthWords > MaxFrameLengthWords) {
        trace(QStringLiteral("readFrame(%1): max. frame length exceeded (%2)")
                  .arg(m_name)
                  .arg(lengthWords),
              __LINE__);
        m_expectedSize = 0;
        m_filledSize = 0;
        return false;
    }
    int const frameSize = int(lengthWords * 4);
    if (frameSize > FrameHeaderSize) {
        setExpected(frameSize);
        return readBuffer();
    }
    if (frameSize == FrameHeaderSize) {
        // Handed out as stored, without conversion even in a swapped recording.
        return true;
    }
    trace(QStringLiteral("readFrame(%1): invalid frame length (%2)").arg(m_name).arg(frameSize),
          __LINE__);
    m_fatalError = true;
    return false;
}

void FrameReader::convertFilledWords()
{
    if (m_convertByteOrder) {
        WordSwap::swap(m_buffer.data(), m_filledSize / 4);
    }
}

int FrameReader::indexOfMagicWord() const
{
    // The first native candidate inside the filled bytes wins, unless a swapped candidate
    // lies before it. A swapped candidate counts only when some native candidate lies
    // behind it anywhere in the buffer, stale bytes included, so the stale area is searched
    // only in that case.
    int const filled = m_filledSize;
    int const nativeInFilled = indexOf(m_buffer, NativeMagicFirstByte, 1, filled);
    if (nativeInFilled >= 0) {
        int const swapped = indexOf(m_buffer, SwappedMagicFirstByte, 1, nativeInFilled);
        return swapped >= 1 ? swapped : nativeInFilled;
    }
    int const swapped = indexOf(m_buffer, SwappedMagicFirstByte, 1, filled);
    if (swapped < 0) {
        return -1;
    }
    int const nativeBehind =
        indexOf(m_buffer, NativeMagicFirstByte, std::max(filled, 1), m_buffer.size());
    return nativeBehind >= 0 ? swapped : -1;
}

void FrameReader::takeFrameData(QByteArray& frameType, QByteArray& frameData)
{
    // Without a complete frame there is no type word; hand out what is there all the same.
    setHexText(frameType, m_buffer.size() >= FrameHeaderSize ? headerWord(3) : 0);
    int const size = std::min(m_filledSize, m_expectedSize);
    frameData.resize(size);
    std::memcpy(frameData.data(), m_buffer.constData(), size_t(size));
    removeFrameData();
}

// Moves the bytes behind the current frame to the front, keeping the buffer's capacity;
// removeFrameData() then counts them as the filled ones.
void FrameReader::keepBytesBehindFrame()
{
    int const kept = m_filledSize - m_expectedSize;
    char* data = m_buffer.data();
    std::memmove(data, data + m_expectedSize, size_t(kept));
    m_filledSize = kept;
    m_expectedSize = 0;
}

void FrameReader::clearFrameData()
{
    m_expectedSize = 0;
    m_filledSize = 0;
}

void FrameReader::readDirect(QByteArray& out, int count)
{
    m_filledSize = 0;
    m_expectedSize = std::max(count, 0);
    m_buffer.resize(m_expectedSize);
    readBuffer();
    out = m_buffer.left(m_filledSize);
}

char* FrameReader::readAheadBlock(int size)
{
    if (m_readAhead.size() < size) {
        m_readAhead.resize(size);
    }
    m_readAheadBegin = m_readAheadEnd = 0;
    return m_readAhead.data();
}

void FrameReader::setReadAheadFilled(int count)
{
    m_readAheadBegin = 0;
    m_readAheadEnd = count;
}

int FrameReader::takeReadAhead(char* destination, int count)
{
    int const served = std::max(std::min(count, m_readAheadEnd - m_readAheadBegin), 0);
    std::memcpy(destination, m_readAhead.constData() + m_readAheadBegin, size_t(served));
    m_readAheadBegin += served;
    return served;
}

} // namespace zelkodatastreamconverter
