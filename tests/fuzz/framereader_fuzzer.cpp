// Arbitrary bytes as a recording: frames of either byte order, garbage, padding, lengths of
// every size, delivered in short reads. Read twice, straight into the frame buffer with frames
// copied out and through the read-ahead with frames looked at in place: both must hand out
// the same frames.
#include <cstdlib>
#include <massdatamanagement/zelkodatastreamconverter/frameformat.h>
#include <support/memoryframereader.h>
#include <vector>

namespace {
std::vector<QByteArray> readFrames(uint8_t const* data, size_t size,
                                   zelkotest::MemoryFrameReader::Delivery delivery,
                                   zelkotest::Access access)
{
    std::vector<QByteArray> frames;
    zelkotest::forEachFrame(
        data, size,
        [&frames](QByteArray const& type, QByteArray const& frame) {
            // A frame handed out is at least a header and whole words.
            if (frame.size() < zelkodatastreamconverter::FrameHeaderSize ||
                frame.size() % 4 != 0) {
                std::abort();
            }
            frames.push_back(type + ':' + frame);
        },
        delivery, access);
    return frames;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    using Delivery = zelkotest::MemoryFrameReader::Delivery;
    if (readFrames(data, size, Delivery::Direct, zelkotest::Access::Take) !=
        readFrames(data, size, Delivery::ReadAhead, zelkotest::Access::View)) {
        std::abort();
    }
    return 0;
}
