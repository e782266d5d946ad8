#pragma once

#include <massdatamanagement/zelkodatastreamconverter/framereader.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace zelkofuzz {

/// A frame reader over bytes in memory that hands them out in short reads of varying size,
/// as a file being written or a pipe would, so that frame assembly across reads is exercised.
class MemoryFrameReader : public zelkodatastreamconverter::FrameReader
{
public:
    MemoryFrameReader(uint8_t const* data, size_t size, unsigned readPattern)
        : FrameReader(QStringLiteral("fuzz")), m_data(data), m_size(size), m_pattern(readPattern)
    {
    }

    bool isWorking() override { return FrameReader::isWorking() && !m_ended; }
    void close() override { m_ended = true; }

protected:
    bool readBuffer() override
    {
        int const missing = expectedSize() - filledSize();
        if (missing <= 0) {
            return true;
        }
        if (m_position >= m_size) {
            close();
            return false;
        }
        // Read sizes 1, 2, ... 16 and "all that is missing", chosen by the pattern's bits.
        m_pattern = m_pattern * 1103515245u + 12345u;
        unsigned const choice = (m_pattern >> 16) % 17;
        size_t const wanted = choice == 16 ? size_t(missing) : std::min<size_t>(missing, choice + 1);
        size_t const count = std::min(wanted, m_size - m_position);
        std::memcpy(fillPosition(), m_data + m_position, count);
        m_position += count;
        addFilled(int(count));
        return filledSize() >= expectedSize();
    }

private:
    uint8_t const* m_data;
    size_t m_size;
    size_t m_position = 0;
    unsigned m_pattern;
    bool m_ended = false;
};

/// Calls onFrame(type, frame) for every frame the reader assembles from the bytes.
template <typename OnFrame>
void forEachFrame(uint8_t const* data, size_t size, OnFrame onFrame)
{
    unsigned const pattern = size > 0 ? data[0] : 0;
    MemoryFrameReader reader(data, size, pattern);
    QByteArray type;
    QByteArray frame;
    while (reader.isWorking()) {
        if (reader.readFrame()) {
            reader.takeFrameData(type, frame);
            onFrame(type, frame);
        }
    }
}

} // namespace zelkofuzz
