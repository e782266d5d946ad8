// Cost of growing one channel's text through NerikResultModel::addDataBlock with continuation
// blocks of 4096 characters until the channel holds 100 MiB of text (characters), beside a
// plain QString/QVector append of the same text and time stamps in the same run.
//
// Each runs three times; every figure is the best of the three. Printed per mark (1, 10 and 100
// MiB): the average cost per MiB from the start, the cost of the last MiB before the mark, the
// baseline's figures, and the ratios. Linear growth shows as a per-MiB cost that stays flat from 1
// to 100 MiB.
//
//   build/bin/nerikresultmodel_bench
//   ZELKO_BENCH_MB=20 build/bin/nerikresultmodel_bench   (a quicker look, marks 1, 10, 20)

#include <QElapsedTimer>
#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <massdatamanagement/zelkodatastreamconverter/nerikresultmodel.h>
#include <nerikresultdataxml/nerikresultdata.h>
#include <vector>

using NerikResultDataXml::DataBlock;
using NerikResultDataXml::TimeStamp;

namespace {

constexpr int BlockCharacters = 4096;
constexpr qint64 MiB = 1 << 20;
constexpr int BlocksPerMiB = MiB / BlockCharacters;

int totalMiB()
{
    int const fromEnvironment = qEnvironmentVariableIntValue("ZELKO_BENCH_MB");
    return fromEnvironment > 0 ? fromEnvironment : 100;
}

std::vector<int> marks()
{
    std::vector<int> result;
    for (int mark : {1, 10, 100}) {
        if (mark < totalMiB()) {
            result.push_back(mark);
        }
    }
    result.push_back(totalMiB());
    return result;
}

QDateTime const Start(QDate(2024, 1, 31), QTime(12, 0, 0), Qt::UTC);

QString const& chunk()
{
    static QString const text = [] {
        QString characters(BlockCharacters, QChar('x'));
        for (int i = 0; i < characters.size(); ++i) {
            characters[i] = QChar('A' + i % 26);
        }
        return characters;
    }();
    return text;
}

/// Elapsed nanoseconds at the end of every MiB, one list per run.
struct Timelines
{
    std::vector<std::vector<qint64>> runs;

    // Each figure is the best over the runs: the machine is shared, and the first run also
    // pays for fresh memory pages.
    double averagePerMiB(int mark) const
    {
        double best = 1e300;
        for (auto const& run : runs) {
            best = std::min(best, double(run[mark]) / mark);
        }
        return best;
    }
    double lastMiB(int mark) const
    {
        double best = 1e300;
        for (auto const& run : runs) {
            best = std::min(best, double(run[mark] - run[mark - 1]));
        }
        return best;
    }
    bool complete() const { return !runs.empty() && runs.front().size() > size_t(totalMiB()); }
};

Timelines modelRun;
Timelines baselineRun;

void grow(benchmark::State& state, bool model)
{
    for (auto _ : state) {
        std::vector<qint64> timeline{0};
        zelkodatastreamconverter::NerikResultModel resultModel;
        auto* const transmission = resultModel.createTransmission(Start);
        QString plainText;
        QVector<TimeStamp> plainStamps;
        QDateTime latest;
        QElapsedTimer timer;
        timer.start();
        qint64 position = 0;
        for (int mib = 1; mib <= totalMiB(); ++mib) {
            for (int i = 0; i < BlocksPerMiB; ++i) {
                QDateTime const time = Start.addMSecs(position / 64);
                if (model) {
                    DataBlock block(1, 0, 0);
                    block.SetContent(chunk());
                    block.GetTimeStamp().append(TimeStamp(time, int(position)));
                    resultModel.addDataBlock(transmission, block, latest);
                } else {
                    plainText.append(chunk());
                    plainStamps.append(TimeStamp(time, int(position)));
                }
                position += BlockCharacters;
            }
            timeline.push_back(timer.nsecsElapsed());
        }
        qint64 const held =
            model ? transmission->GetDataBlock().front()->GetContent().size() : plainText.size();
        if (held != totalMiB() * MiB) {
            state.SkipWithError("text size differs");
        }
        (model ? modelRun : baselineRun).runs.push_back(timeline);
    }
    state.SetItemsProcessed(state.iterations() * totalMiB() * MiB);
}

} // namespace

int main(int argc, char** argv)
{
    benchmark::RegisterBenchmark("plain_QString_append", grow, false)
        ->Iterations(3)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("NerikResultModel_addDataBlock_continuation", grow, true)
        ->Iterations(3)
        ->Unit(benchmark::kMillisecond);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();

    if (!modelRun.complete() || !baselineRun.complete()) {
        return 0;
    }
    std::printf("\nms per MiB of text  (model | plain append | ratio model/plain)\n");
    for (int mark : marks()) {
        double const model = modelRun.averagePerMiB(mark) / 1e6;
        double const plain = baselineRun.averagePerMiB(mark) / 1e6;
        double const modelLast = modelRun.lastMiB(mark) / 1e6;
        double const plainLast = baselineRun.lastMiB(mark) / 1e6;
        std::printf("at %3d MiB: average %.3f | %.3f | %.2f   last MiB %.3f | %.3f | %.2f\n", mark,
                    model, plain, model / plain, modelLast, plainLast, modelLast / plainLast);
    }
    double const first = modelRun.averagePerMiB(marks().front());
    double const last = modelRun.averagePerMiB(marks().back());
    std::printf("linearity: average per MiB at %d MiB / at %d MiB = %.2f (1.00 = linear)\n",
                marks().back(), marks().front(), last / first);
    benchmark::Shutdown();
    return 0;
}
