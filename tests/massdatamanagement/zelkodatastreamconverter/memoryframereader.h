#pragma once

#include <QByteArray>
#include <algorithm>
#include <cstring>
#include <massdatamanagement/zelkodatastreamconverter/framereader.h>
#include <vector>

namespace zelkotest {

/// A FrameReader over bytes in memory that hands them out at most chunkSize at a time, as a
/// slow pipe or a network share would.
class MemoryFrameReader : public zelkodatastreamconverter::FrameReader
{
public:
    MemoryFrameReader(QByteArray data, int chunkSize = 1 << 20)
        : FrameReader(QStringLiteral("mem")), m_data(std::move(data)), m_chunkSize(chunkSize)
    {
    }

    bool isWorking() override { return FrameReader::isWorking() && !m_ended; }
    void close() override { m_ended = true; }
    int bufferCalls() const { return m_calls; }

protected:
    bool readBuffer() override
    {
        ++m_calls;
        int const missing = expectedSize() - filledSize();
        if (missing <= 0) {
            return true;
        }
        int const count = std::min({missing, m_chunkSize, int(m_data.size() - m_offset)});
        if (count == 0) {
            close();
            return false;
        }
        std::memcpy(fillPosition(), m_data.constData() + m_offset, size_t(count));
        m_offset += count;
        addFilled(count);
        return filledSize() >= expectedSize();
    }

private:
    QByteArray m_data;
    int m_chunkSize;
    int m_offset = 0;
    int m_calls = 0;
    bool m_ended = false;
};

struct Frame
{
    QByteArray type;
    QByteArray data;
};

/// Drives a reader the way the converters do and collects what it hands out. Stops after
/// maxSteps calls so that a reader that never ends fails the test instead of hanging it.
inline std::vector<Frame> readAllFrames(zelkodatastreamconverter::FrameReader& reader,
                                        int maxSteps = 10000000)
{
    std::vector<Frame> frames;
    QByteArray type;
    QByteArray data;
    for (int step = 0; reader.isWorking() && step < maxSteps; ++step) {
        if (reader.readFrame()) {
            reader.takeFrameData(type, data);
            frames.push_back({type, data});
        }
    }
    return frames;
}

} // namespace zelkotest
