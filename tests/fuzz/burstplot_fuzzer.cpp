// Arbitrary bytes as a burst-list recording drawn as `zelko bursts --plot` draws it: levels,
// frequencies and times from a recording become colours, histogram bins and pixel positions.
#include <QGuiApplication>
#include <burstplot.h>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/burstemissionlistconverter.h>
#include <support/memoryframereader.h>
#include <vector>

using namespace zelkodatastreamconverter::BurstEmissionList;

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    // Text drawing needs the application's font database; no display is needed.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static int arguments = 1;
    static char name[] = "burstplot_fuzzer";
    static char* values[] = {name, nullptr};
    static QGuiApplication application(arguments, values);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    BurstEmissionListConverter converter;
    zelkotest::forEachFrame(data, size, [&converter](QByteArray const&, QByteArray const& frame) {
        converter.processFrame(frame);
    });
    std::vector<unsigned int> radios;
    for (auto const& entry : converter.getDataMap()) {
        radios.push_back(entry.first);
    }
    for (unsigned int radioID : radios) {
        auto const [set, meanBandwidth] = converter.getFrequencySetForRadioID(radioID);
        zelkotool::drawBurstPlot(radioID, converter.getDataMap().at(radioID), set, meanBandwidth);
    }
    return 0;
}
