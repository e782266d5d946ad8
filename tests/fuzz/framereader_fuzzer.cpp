// Arbitrary bytes as a recording: frames of either byte order, garbage, padding, lengths of
// every size, delivered in short reads; read straight with frames copied out and through the
// read-ahead with frames viewed, which must hand out the same frames.
#include <QByteArrayList>
#include <cstdlib>
#include <massdatamanagement/zelkodatastreamconverter/frameformat.h>
#include <support/memoryframereader.h>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    using Delivery = zelkotest::MemoryFrameReader::Delivery;
    QByteArrayList frames[2];
    for (int way = 0; way < 2; ++way) {
        zelkotest::forEachFrame(
            data, size,
            [&](QByteArray const& type, QByteArray const& frame) {
                // A frame handed out is at least a header and whole words.
                if (frame.size() < zelkodatastreamconverter::FrameHeaderSize ||
                    frame.size() % 4 != 0) {
                    std::abort();
                }
                frames[way] << type + ':' + frame;
            },
            way == 0 ? Delivery::Direct : Delivery::ReadAhead,
            way == 0 ? zelkotest::Access::Take : zelkotest::Access::View);
    }
    if (frames[0] != frames[1]) {
        std::abort();
    }
    return 0;
}
