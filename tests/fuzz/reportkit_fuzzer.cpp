// Arbitrary text as a results list (the produced-file records a conversion reports); what
// reads must write and read back to an equal list.
#include <cstdlib>
#include <reportkit/results.h>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    QString const text = QString::fromUtf8(reinterpret_cast<char const*>(data), int(size));
    REPORTKIT::Results results;
    if (!results.SetXmlString(text, 0)) {
        return 0;
    }
    REPORTKIT::Results again;
    if (!again.SetXmlString(results.GetXmlString(), 0) || !(again == results)) {
        std::abort();
    }
    return 0;
}
