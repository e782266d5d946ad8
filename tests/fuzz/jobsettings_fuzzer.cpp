// Arbitrary text as a job settings document, read with and without validation; what reads
// must write and read back to equal settings.
#include <cstdlib>
#include <jobspec/settings.h>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    QString const text = QString::fromUtf8(reinterpret_cast<char const*>(data), int(size));
    for (bool validate : {true, false}) {
        JobSpec::Settings settings;
        settings.SetValidate(validate);
        if (!settings.SetXmlString(text, 0)) {
            continue;
        }
        JobSpec::Settings again;
        again.SetValidate(validate);
        if (!again.SetXmlString(settings.GetXmlString(), 0) || !(again == settings)) {
            std::abort();
        }
    }
    return 0;
}
