// Arbitrary bytes as a recording: frames of either byte order, garbage, padding, lengths of
// every size, delivered in short reads.
#include "memoryframereader.h"

#include <QtEndian>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    using zelkodatastreamconverter::FrameReader;
    zelkofuzz::forEachFrame(data, size, [](QByteArray const&, QByteArray const& frame) {
        // A frame handed out is whole words, starts with the magic in host order (or is
        // a header-only frame as stored) and is no longer than its header says.
        if (frame.size() < FrameReader::HeaderSize || frame.size() % 4 != 0) {
            std::abort();
        }
    });
    return 0;
}
