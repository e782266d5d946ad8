#pragma once
// A frame reader over bytes in memory, for the reader's tests and the fuzz targets: the bytes
// come in reads of a chosen size, as from a slow pipe, a network share or a file still being
// written, so that frame assembly across reads is exercised. They go straight into the frame
// buffer, or through the reader's read-ahead block in blocks of that size, as FileReader
// reads, so that whole frames take the reader's one-step path.

#include <QByteArray>
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <massdatamanagement/zelkodatastreamconverter/framereader.h>
#include <vector>

namespace zelkotest {

class MemoryFrameReader : public zelkodatastreamconverter::FrameReader
{
public:
    /// How many bytes one read hands out when `missing` are wanted (at least 1).
    using ReadSize = std::function<int(int missing)>;
    enum class Delivery
    {
        Direct,
        ReadAhead
    };

    MemoryFrameReader(QByteArray data, ReadSize readSize, Delivery delivery = Delivery::Direct)
        : FrameReader(QStringLiteral("mem")), m_data(std::move(data)),
          m_readSize(std::move(readSize)), m_delivery(delivery)
    {
    }
    explicit MemoryFrameReader(QByteArray data, int chunkSize = 1 << 20,
                               Delivery delivery = Delivery::Direct)
        : MemoryFrameReader(
              std::move(data), [chunkSize](int missing) { return std::min(missing, chunkSize); },
              delivery)
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
        int count = 0;
        if (m_delivery == Delivery::Direct) {
            count = take(fillPosition(), m_readSize(missing));
        } else {
            if (readAheadAvailable() == 0) {
                int const block = std::min(m_readSize(1 << 20), int(m_data.size() - m_offset));
                setReadAheadFilled(take(readAheadBlock(block), block));
            }
            count = takeReadAhead(fillPosition(), missing);
        }
        if (count <= 0) {
            close();
            return false;
        }
        addFilled(count);
        return filledSize() >= expectedSize();
    }

private:
    int take(char* destination, int wanted)
    {
        int const count = std::max(std::min(wanted, int(m_data.size() - m_offset)), 0);
        std::memcpy(destination, m_data.constData() + m_offset, size_t(count));
        m_offset += count;
        return count;
    }

    QByteArray m_data;
    ReadSize m_readSize;
    Delivery m_delivery;
    int m_offset = 0;
    bool m_ended = false;
};

/// How a frame is taken from the reader: copied out, or looked at in place.
enum class Access
{
    Take,
    View
};

/// Drives a reader the way the converters do and calls onFrame(type, frame) for each frame.
/// Stops after maxSteps calls, so that a reader that never ends fails a test instead of
/// hanging it.
template <typename OnFrame>
void forEachFrame(zelkodatastreamconverter::FrameReader& reader, OnFrame onFrame,
                  int maxSteps = 1000000, Access access = Access::Take)
{
    QByteArray type;
    QByteArray frame;
    for (int step = 0; reader.isWorking() && step < maxSteps; ++step) {
        if (!reader.readFrame()) {
            continue;
        }
        if (access == Access::Take) {
            reader.takeFrameData(type, frame);
        } else {
            auto const view = reader.frameView();
            type = QByteArray::number(view.type, 16);
            frame = QByteArray(view.data, view.size);
            reader.removeFrameData();
        }
        onFrame(type, frame);
    }
}

/// The same over raw bytes in reads of 1 to 16 bytes or "all that is missing", chosen by a
/// generator seeded from the first byte: a fuzzer's input chooses its own read pattern.
template <typename OnFrame>
void forEachFrame(uint8_t const* data, size_t size, OnFrame onFrame,
                  MemoryFrameReader::Delivery delivery = MemoryFrameReader::Delivery::Direct,
                  Access access = Access::Take)
{
    unsigned pattern = size > 0 ? data[0] : 0;
    MemoryFrameReader reader(
        QByteArray::fromRawData(reinterpret_cast<char const*>(data), int(size)),
        [pattern](int missing) mutable {
            pattern = pattern * 1103515245u + 12345u;
            unsigned const choice = (pattern >> 16) % 17;
            return choice == 16 ? missing : std::min(missing, int(choice) + 1);
        },
        delivery);
    forEachFrame(reader, onFrame, std::numeric_limits<int>::max(), access);
}

struct Frame
{
    QByteArray type;
    QByteArray data;
};

inline std::vector<Frame> readAllFrames(zelkodatastreamconverter::FrameReader& reader,
                                        int maxSteps = 1000000, Access access = Access::Take)
{
    std::vector<Frame> frames;
    forEachFrame(
        reader,
        [&frames](QByteArray const& type, QByteArray const& data) {
            frames.push_back({type, data});
        },
        maxSteps, access);
    return frames;
}

} // namespace zelkotest
