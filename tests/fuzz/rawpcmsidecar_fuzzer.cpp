// Arbitrary bytes as the sidecar of a raw PCM recording: either refused with a message or
// parameters within their documented ranges.
#include <rawpcmparameters.h>

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    audiofileexport::RawPcmParameters parameters;
    QString error;
    bool const valid =
        parameters.parse(QByteArray::fromRawData(reinterpret_cast<char const*>(data), int(size)), error);
    if (valid != error.isEmpty() ||
        (valid && (parameters.sampleRate < 1 ||
                   parameters.sampleRate > audiofileexport::RawPcmParameters::MaximumSampleRate ||
                   parameters.channels < 1 ||
                   parameters.channels > audiofileexport::RawPcmParameters::MaximumChannels))) {
        std::abort();
    }
    return 0;
}
