// Arbitrary bytes as an NMEA log through the AIVDM reader: every message it hands out must
// have the bits it claims, and every line must be counted once.
#include <cstdlib>
#include <recordingwriter/aivdmreader.h>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    QByteArray const log = QByteArray::fromRawData(reinterpret_cast<char const*>(data), int(size));
    zelkorecording::AivdmReader reader;
    qint64 lines = 0;
    for (QByteArray const& line : log.split('\n')) {
        ++lines;
        if (auto message = reader.readLine(line)) {
            if (message->bitCount < 6 || unsigned(message->bits.size()) * 8u < message->bitCount) {
                std::abort();
            }
        }
    }
    reader.finish();
    zelkorecording::AivdmCounts const& counts = reader.counts();
    if (counts.lines != lines || counts.messages > counts.sentences) {
        std::abort();
    }
    return 0;
}
