// Arbitrary bytes as a recording: frames of either byte order, garbage, padding, lengths of
// every size, delivered in short reads.
#include <cstdlib>
#include <massdatamanagement/zelkodatastreamconverter/frameformat.h>
#include <support/memoryframereader.h>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    zelkotest::forEachFrame(data, size, [](QByteArray const&, QByteArray const& frame) {
        // A frame handed out is at least a header and whole words.
        if (frame.size() < zelkodatastreamconverter::FrameHeaderSize || frame.size() % 4 != 0) {
            std::abort();
        }
    });
    return 0;
}
