// Arbitrary bytes as a burst-list recording: then every radio's frequency set, grid and
// random sample are estimated.
#include <algorithm>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/burstemissionlistconverter.h>
#include <support/memoryframereader.h>
#include <vector>

using namespace zelkodatastreamconverter::BurstEmissionList;

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    BurstEmissionListConverter converter;
    converter.seedRandomEngine(1);
    std::vector<unsigned int> radios;
    zelkotest::forEachFrame(data, size, [&](QByteArray const&, QByteArray const& frame) {
        auto const [held, radioID, window] = converter.processFrame(frame);
        if (held) {
            radios.push_back(radioID);
        }
    });
    std::sort(radios.begin(), radios.end());
    radios.erase(std::unique(radios.begin(), radios.end()), radios.end());
    for (unsigned int radioID : radios) {
        converter.getFrequencySetForRadioID(radioID);
        converter.drawRandomSampleFTWsForRadioID(radioID);
    }
    return 0;
}
