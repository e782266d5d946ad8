// Burst emission list speed.
//
//  1. processFrame on 2048-burst frames (bursts per second), beside copying the same records
//     out of the same frames into a vector in the same run (ratio: processFrame's speed over
//     the copy's); heap allocations per frame.
//  2. getFrequencySetForRadioID on a 25 kHz grid of 200 channels with 1, 4 and 16 segments
//     of 2048 bursts, beside sorting the same burst frequencies (its first step), and with
//     16 segments at finer spacing resolutions, that is wider spacing-candidate ranges.
//
//   build/bin/burstemissionlist_bench

#include "ratioreporter.h"

#include <atomic>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/burstemissionlistconverter.h>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/hopperfrequencyalgorithm.h>
#include <new>
#include <recordingwriter/hoppergenerator.h>
#include <string>
#include <support/allocationcounter.h>
#include <vector>

using namespace zelkodatastreamconverter::BurstEmissionList;

namespace {

constexpr int BurstsPerFrame = 2048;
constexpr int FramePool = 32;

zelkorecording::HopperScenario gridScenario()
{
    zelkorecording::HopperRadio radio;
    radio.segments = {{30e6, 25000, 200, {}}};
    radio.jitterHz = 600;
    radio.bandwidthHz = 12000;
    zelkorecording::HopperScenario scenario;
    scenario.radios = {radio};
    scenario.burstsPerFrame = BurstsPerFrame;
    return scenario;
}

std::vector<QByteArray> const& frames()
{
    static std::vector<QByteArray> const pool = [] {
        std::vector<QByteArray> result;
        zelkorecording::HopperGenerator generator(gridScenario());
        for (int i = 0; i < FramePool; ++i) {
            result.push_back(generator.nextFrame().frameBytes());
        }
        return result;
    }();
    return pool;
}

// Moves a frame forward in time so that a long run never looks like a new recording.
void setStartTime(QByteArray& frame, quint64 startTime)
{
    frame.replace(36, int(sizeof startTime), reinterpret_cast<char const*>(&startTime),
                  int(sizeof startTime));
}

void BM_ProcessFrame(benchmark::State& state)
{
    std::vector<QByteArray> pool = frames();
    for (QByteArray& frame : pool) {
        frame.detach();
    }
    BurstEmissionListConverter converter;
    quint64 time = 0;
    std::size_t next = 0;
    long long allocations = 0;
    long long measuredFrames = 0;
    for (auto _ : state) {
        QByteArray& frame = pool[next];
        next = (next + 1) % pool.size();
        setStartTime(frame, time += 100000);
        long long const before = zelkotest::heapAllocations();
        benchmark::DoNotOptimize(converter.processFrame(frame));
        if (time > 100000ull * 40) { // after the queue has its working size
            allocations += zelkotest::heapAllocations() - before;
            ++measuredFrames;
        }
    }
    state.SetItemsProcessed(state.iterations() * BurstsPerFrame);
    state.counters["allocs/frame"] =
        measuredFrames ? double(allocations) / double(measuredFrames) : 0.0;
}

// The floor: read the same records out of the same frames into a reused vector.
void BM_CopyRecordsBaseline(benchmark::State& state)
{
    std::vector<QByteArray> const& pool = frames();
    std::vector<BurstData> bursts;
    bursts.reserve(BurstsPerFrame);
    std::size_t next = 0;
    for (auto _ : state) {
        QByteArray const& frame = pool[next];
        next = (next + 1) % pool.size();
        char const* data = frame.constData();
        quint64 centre, start;
        std::memcpy(&centre, data + 24, 8);
        std::memcpy(&start, data + 36, 8);
        bursts.clear();
        char const* record = data + 60;
        for (int i = 0; i < BurstsPerFrame; ++i, record += 24) {
            quint32 offset, length, bandwidth;
            qint32 frequency;
            float level;
            std::memcpy(&offset, record + 4, 4);
            std::memcpy(&length, record + 8, 4);
            std::memcpy(&frequency, record + 12, 4);
            std::memcpy(&bandwidth, record + 16, 4);
            std::memcpy(&level, record + 20, 4);
            bursts.emplace_back(double(centre) + frequency, double(bandwidth), start + offset,
                                length, level);
        }
        benchmark::DoNotOptimize(bursts.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * BurstsPerFrame);
}

BurstEmissionListConverter& filledConverter(int segments)
{
    static std::map<int, std::unique_ptr<BurstEmissionListConverter>> converters;
    auto& converter = converters[segments];
    if (!converter) {
        converter = std::make_unique<BurstEmissionListConverter>();
        for (int i = 0; i < segments; ++i) {
            converter->processFrame(frames()[std::size_t(i)]);
        }
    }
    return *converter;
}

void BM_FrequencySet(benchmark::State& state)
{
    int const segments = int(state.range(0));
    BurstEmissionListConverter& converter = filledConverter(segments);
    converter.setEstimationParameters(-1.0, 12.0);
    for (auto _ : state) {
        benchmark::DoNotOptimize(converter.getFrequencySetForRadioID(1));
    }
    state.SetItemsProcessed(state.iterations() * segments * BurstsPerFrame);
}

// The first step alone: gather and sort the burst frequencies.
void BM_SortFrequenciesBaseline(benchmark::State& state)
{
    int const segments = int(state.range(0));
    RadioBurstData const& radio = filledConverter(segments).getDataMap().at(1);
    for (auto _ : state) {
        benchmark::DoNotOptimize(radio.sortedFrequencyVector());
    }
    state.SetItemsProcessed(state.iterations() * segments * BurstsPerFrame);
}

// 16 segments; resolution in hertz (0: automatic, 100 Hz here).
void BM_FrequencySetResolution(benchmark::State& state)
{
    BurstEmissionListConverter& converter = filledConverter(16);
    double const resolution = state.range(0) == 0 ? -1.0 : double(state.range(0));
    converter.setEstimationParameters(resolution, 12.0);
    auto const set = converter.getFrequencySetForRadioID(1).first;
    auto const spacings = HopperFrequencyAlgorithm::calculateChannelSpacings(
        set.frequencies.begin(), set.frequencies.end());
    state.counters["candidates"] = double(HopperFrequencyAlgorithm::findSpacingCandidates(
                                              spacings.begin(), spacings.end(), resolution)
                                              .size());
    for (auto _ : state) {
        benchmark::DoNotOptimize(converter.getFrequencySetForRadioID(1));
    }
    converter.setEstimationParameters(-1.0, 12.0);
    state.SetItemsProcessed(state.iterations() * 16 * BurstsPerFrame);
}

BENCHMARK(BM_ProcessFrame);
BENCHMARK(BM_CopyRecordsBaseline);
BENCHMARK(BM_FrequencySet)->Arg(1)->Arg(4)->Arg(16)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SortFrequenciesBaseline)->Arg(1)->Arg(4)->Arg(16)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FrequencySetResolution)
    ->Arg(0)
    ->Arg(50)
    ->Arg(20)
    ->Arg(10)
    ->Arg(5)
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    zelkobench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    auto const& s = reporter.cpuSeconds; // CPU time: the machine is shared
    auto has = [&](char const* name) { return s.count(name) > 0; };
    std::printf("\nSummary (same run)\n");
    if (has("BM_ProcessFrame") && has("BM_CopyRecordsBaseline")) {
        double const frame = BurstsPerFrame / s.at("BM_ProcessFrame");
        double const copy = BurstsPerFrame / s.at("BM_CopyRecordsBaseline");
        std::printf("  processFrame      %12.0f bursts/s   copy into a vector %12.0f bursts/s   "
                    "ratio %.2f (target 0.3)   allocations/frame %.2f\n",
                    frame, copy, frame / copy,
                    reporter.counters.count("BM_ProcessFrame:allocs/frame")
                        ? reporter.counters.at("BM_ProcessFrame:allocs/frame")
                        : -1.0);
    }
    for (int segments : {1, 4, 16}) {
        std::string const set = "BM_FrequencySet/" + std::to_string(segments);
        std::string const sort = "BM_SortFrequenciesBaseline/" + std::to_string(segments);
        if (s.count(set) && s.count(sort)) {
            std::printf("  frequency set, %2d segments (%6d bursts) %8.3f ms   sorted frequencies "
                        "alone %8.3f ms   "
                        "ratio %.2f   vs 1 segment %.2f\n",
                        segments, segments * BurstsPerFrame, 1e3 * s.at(set), 1e3 * s.at(sort),
                        s.at(set) / s.at(sort),
                        s.count("BM_FrequencySet/1") ? s.at(set) / s.at("BM_FrequencySet/1") : 0.0);
        }
    }
    for (int resolution : {0, 50, 20, 10, 5}) {
        std::string const name = "BM_FrequencySetResolution/" + std::to_string(resolution);
        if (s.count(name) && s.count("BM_FrequencySetResolution/0")) {
            std::printf("  16 segments, resolution %-4s %6.0f spacing candidates  %8.3f ms   "
                        "vs automatic %.2f\n",
                        resolution == 0 ? "auto" : std::to_string(resolution).c_str(),
                        reporter.counters.at(name + ":candidates"), 1e3 * s.at(name),
                        s.at(name) / s.at("BM_FrequencySetResolution/0"));
        }
    }
    return 0;
}
