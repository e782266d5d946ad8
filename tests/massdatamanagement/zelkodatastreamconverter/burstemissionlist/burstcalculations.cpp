// The pure calculations of the burst emission list as scenario operations: a line
// "name scalars... [| list] [| list]" answers with the result of one calculation. Records are
// written with their fields joined by slashes: start/spacing/count/occupied/deviation (grid
// segments), f/bw/t/len/level (bursts), f0/f1/t0/t1 (windows).

#include "burstcalculations.h"

#include <QDataStream>
#include <functional>
#include <map>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/hopperfrequencyalgorithm.h>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/hopperradiosegmentdata.h>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/radioburstdata.h>
#include <numeric>

using namespace zelkodatastreamconverter::BurstEmissionList;
using Alg = HopperFrequencyAlgorithm;
using Doubles = std::vector<double>;
using Fields = QStringList;

namespace {

struct Args
{
    Doubles s;                  // the scalars after the name
    Doubles v, w;               // the first and second "| ..." lists
    std::vector<Doubles> lists; // all of them
    Fields records;
    auto b() const { return v.begin(); }
    auto e() const { return v.end(); }
};
using A = Args const&;

QString n(double value)
{
    return QString::number(value, 'g', 15);
}

template <typename Container>
QString join(Container const& values)
{
    QStringList texts;
    for (auto const& value : values) {
        texts << n(double(value));
    }
    return texts.join(QLatin1Char(' '));
}

template <typename T>
QString text(T const& value) // its text, its big-endian stream bytes and their round trip
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << value;
    return value.toString() + QStringLiteral("\n     ") + QString::fromLatin1(bytes.toHex()) +
           QStringLiteral("\n     ") + burstscenario::roundTrip(value);
}

template <typename T>
QString readFrom(QString const& hex) // a value read from damaged bytes
{
    QDataStream stream(QByteArray::fromHex(hex.toLatin1()));
    T value;
    stream >> value;
    return QStringLiteral("%1, %2").arg(stream.status() == QDataStream::Ok ? "read" : "refused",
                                        value == T() ? "empty" : "NOT EMPTY");
}

QString radio(A a)
{
    RadioBurstData radio;
    for (std::size_t i = 0; i < a.lists.size(); ++i) {
        std::vector<BurstData> bursts;
        for (double f : a.lists[i]) {
            bursts.push_back(BurstData(f, f * 10, 100 * i + 1, unsigned(i), float(-f)));
        }
        radio.appendBurstsOfNewSegment(100 * i, 100 * i + 100, bursts);
    }
    QString result;
    for (bool more = true; more; radio.removeFirstSegment()) {
        result += QStringLiteral("\n     %1 from bursts %2 of %3, mean bandwidth %4, sorted %5; %6")
                      .arg(radio.toString(), join(radio.segmentStartIndices),
                           join(radio.segmentStartTimes), n(radio.meanBandwidth()),
                           join(radio.sortedFrequencyVector()), burstscenario::roundTrip(radio));
        more = radio != RadioBurstData();
    }
    return result;
}

HopperFrequencyGridSegment segment(QString const& record)
{
    Fields const f = record.split(QLatin1Char('/'));
    HopperFrequencyGridSegment s(f.at(0).toDouble(), f.at(1).toDouble(), f.at(2).toUInt());
    s.occupiedChannelCount = f.value(3).toUInt();
    s.squaredDeviationSum = f.value(4).toDouble();
    return s;
}

BurstData burst(QString const& record)
{
    Fields const f = record.split(QLatin1Char('/'));
    return BurstData(f.at(0).toDouble(), f.at(1).toDouble(), f.at(2).toULongLong(),
                     f.at(3).toUInt(), f.at(4).toFloat());
}

FrequencyTimeWindow window(QString const& record)
{
    Fields const f = record.split(QLatin1Char('/'));
    return FrequencyTimeWindow(f.at(0).toDouble(), f.at(1).toDouble(), f.at(2).toULongLong(),
                               f.at(3).toULongLong());
}

} // namespace

QString burstscenario::number(double value)
{
    return QString::number(value, 'g', 15);
}

QString burstscenario::describe(HopperFrequencyGridSegment const& s)
{
    return QStringLiteral("%1 + k * %2, %3 channels, %4 occupied, deviation %5 (stop %6)")
        .arg(n(s.startFrequency), n(s.channelSpacing))
        .arg(s.channelCount)
        .arg(s.occupiedChannelCount)
        .arg(n(s.squaredDeviationSum), n(s.getStopFrequency()));
}

namespace {

using burstscenario::describe;

QString describe(HopperFrequencyGridEstimation const& grid, Doubles const& probes)
{
    Doubles channels;
    for (unsigned i = 0; i <= grid.getTotalChannelCount(); ++i) {
        channels.push_back(grid.getFrequencyOfChannelIndex(i));
    }
    return QStringLiteral("%1 channels%2 from %3: %4 | %5..%6 occupation %7 deviation %8 "
                          "spacing mean %9 min %10 | occupied of probes: %11\n     %12")
        .arg(grid.getTotalChannelCount())
        .arg(grid.isNull() ? " (null)" : "", join(grid.getSegmentStartChannelIndices()),
             join(channels), n(grid.getStartFrequency()), n(grid.getStopFrequency()),
             n(double(grid.getOccupationRatio())), n(grid.getQuadraticMeanDeviation()),
             n(grid.getMeanChannelSpacing()))
        .arg(n(grid.getMinChannelSpacing()),
             join(grid.createFrequencyListWithoutUnoccupiedFrequencies(probes)), text(grid));
}

QString merged(A a)
{
    Doubles v = a.v;
    Alg::calculateHopperFrequencySet(v, a.s.at(0));
    return join(v);
}

QString mergedBins(A a)
{
    std::vector<FrequencyMeanAndSampleSize> bins;
    for (std::size_t i = 0; i < a.v.size(); ++i) {
        bins.push_back({a.v[i], unsigned(a.w.at(i))});
    }
    Alg::calculateHopperFrequencySet(bins, a.s.at(0));
    QStringList texts;
    for (auto const& bin : bins) {
        texts << bin.toString();
    }
    return texts.join(' ');
}

QString thinned(A a)
{
    Doubles v(std::size_t(a.s[0]));
    std::iota(v.begin(), v.end(), 0.0);
    Alg::randomlyRemoveFrequenciesFromVector(v, a.s[1], unsigned(a.s[2]));
    std::size_t const kept = v.size();
    v.resize(std::min<std::size_t>(kept, 12)); // enough to tell the draws apart
    return QStringLiteral("%1 kept%2, first: %3")
        .arg(kept)
        .arg(std::is_sorted(v.begin(), v.end()) ? "" : " OUT OF ORDER", join(v));
}

QString segmentStarts(A a)
{
    QStringList starts;
    for (auto const& [index, spacing] :
         Alg::estimateBestChannelSpacingAndSegment(a.b(), a.e(), a.s[0], a.s[1], a.s[2])) {
        starts << QStringLiteral("%1@%2").arg(n(spacing)).arg(index);
    }
    return starts.join(' ');
}

QString uniqueSet(A a)
{
    auto const set = Alg::makeUniqueFrequencySetAndGridEstimation(a.v, a.s[0], a.s[1], a.s[2]);
    QString result = join(set.frequencies) + (set.isEmpty() ? "(empty)" : "");
    for (auto const& s : set.gridEstimation.segments) {
        result += QStringLiteral("\n     ") + describe(s);
    }
    return result;
}

QString segmentData(A a)
{
    HopperRadioSegmentData data;
    std::tie(data.minimumLevel_dBm, data.meanLevel_dBm, data.medianLevel_dBm, data.maximumLevel_dBm,
             data.bandwidth) = std::tie(a.s[0], a.s[1], a.s[2], a.s[3], a.s[4]);
    for (std::size_t i = 0; i < a.v.size(); ++i) {
        data.frequencies.push_back({a.v[i], unsigned(a.w.at(i))});
    }
    return QStringLiteral("%1 samples %2 sorted %3")
        .arg(data.toString())
        .arg(data.sampleCount())
        .arg(join(data.sortedFrequencyVector()));
}

template <typename Parse>
QString equalities(A a, Parse parse) // each record compared with the first
{
    QStringList answers;
    for (int i = 1; i < a.records.size(); ++i) {
        answers << (parse(a.records[0]) == parse(a.records[i]) ? "equal" : "differs");
    }
    return answers.join(' ');
}

std::map<QString, std::function<QString(A)>> const calculations{
    {"merge", merged},
    {"merge-bins", mergedBins},
    {"pooled-mean",
     [](A a) { return n(Alg::calculatePooledMean(a.s[0], a.s[1], a.s[2], a.s[3])); }},
    {"pooled-variance",
     [](A a) {
         auto const r =
             Alg::calculatePooledMeanAndVariance(a.s[0], a.s[1], a.s[2], a.s[3], a.s[4], a.s[5]);
         return n(r.first) + ' ' + n(r.second);
     }},
    {"differ",
     [](A a) { return QString(Alg::significantDifference(a.v, a.w, a.s[0]) ? "yes" : "no"); }},
    {"thin", thinned},
    {"spacings", [](A a) { return join(Alg::calculateChannelSpacings(a.b(), a.e())); }},
    {"spacing-k", [](A a) { return n(Alg::findBestSpacingMultiplicatorK(a.s[0], a.s[1])); }},
    {"frequency-k",
     [](A a) { return n(Alg::findBestFrequencyMultiplicatorK(a.s[0], a.s[1], a.s[2])); }},
    {"spacing-cost",
     [](A a) { return n(Alg::calculateSpacingCostForCandidate(a.b(), a.e(), a.s[0])); }},
    {"frequency-cost",
     [](A a) { return n(Alg::calculateFrequencyCostForCandidate(a.b(), a.e(), a.s[0], a.s[1])); }},
    {"resolution", [](A a) { return n(Alg::effectiveResolution(a.s[0], a.s[1])); }},
    {"start-candidates",
     [](A a) { return join(Alg::findStartFrequencyCandidates(a.s[0], a.s[1], a.s[2])); }},
    {"spacing-candidates",
     [](A a) { return join(Alg::findSpacingCandidates(a.b(), a.e(), a.s[0])); }},
    {"minima", [](A a) { return join(Alg::computeLocalMinima(a.v, a.s[0])); }},
    {"maxima", [](A a) { return join(Alg::computeLocalMaxima(a.v, a.s[0])); }},
    {"best-grid",
     [](A a) { return describe(Alg::estimateBestFrequencyGrid(a.b(), a.e(), a.s[0], a.s[1])); }},
    {"occupation",
     [](A a) {
         return n(Alg::calculateChannelOccupationRatio(a.s[0], a.s[1], unsigned(a.s[2]), a.v));
     }},
    {"deviation",
     [](A a) {
         auto const r =
             Alg::calculateQuadraticMeanOfDeviation(a.s[0], a.s[1], unsigned(a.s[2]), a.v);
         return n(r.first) + QStringLiteral(" over %1").arg(r.second);
     }},
    {"segment-starts", segmentStarts},
    {"unique-set", uniqueSet},
    {"segment-data", segmentData},
    {"segment-from",
     [](A a) {
         return describe(HopperFrequencyGridSegment::fromStartStop(a.s[0], a.s[1], a.s[2]));
     }},
    {"grid-of",
     [](A a) {
         return describe(HopperFrequencyGridEstimation(a.s[0], a.s[1], unsigned(a.s[2])), {});
     }},
    {"grid",
     [](A a) {
         HopperFrequencyGridEstimation grid;
         for (QString const& record : a.records) {
             grid.segments.push_back(segment(record));
         }
         return describe(grid, a.v);
     }},
    {"burst",
     [](A a) {
         FrequencyTimeWindow const w = burst(a.records[0]).toFTW();
         return QStringLiteral("window %1..%2 Hz, %3..%4; ")
                    .arg(n(w.startFrequency), n(w.stopFrequency))
                    .arg(w.startTime)
                    .arg(w.stopTime) +
                text(burst(a.records[0]));
     }},
    {"window", [](A a) { return text(window(a.records[0])); }},
    {"radio", radio},
    {"read-radio", [](A a) { return readFrom<RadioBurstData>(a.records.value(0)); }},
    {"read-grid", [](A a) { return readFrom<HopperFrequencyGridEstimation>(a.records.value(0)); }},
    {"equal-segment", [](A a) { return equalities(a, segment); }},
    {"equal-burst", [](A a) { return equalities(a, burst); }},
    {"equal-window", [](A a) { return equalities(a, window); }},
};

Doubles numbers(QString const& text)
{
    Doubles values;
    for (QString const& value : text.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        values.push_back(value.toDouble());
    }
    return values;
}

} // namespace

QString burstscenario::calculate(QString const& line)
{
    QStringList const parts = line.split(QLatin1Char('|'));
    Args args;
    args.records = parts[0].split(QLatin1Char(' '), Qt::SkipEmptyParts);
    QString const name = args.records.takeFirst();
    auto const found = calculations.find(name);
    if (found == calculations.end()) {
        return QString();
    }
    args.s = numbers(args.records.join(' '));
    for (QString const& part : parts.mid(1)) {
        args.lists.push_back(numbers(part));
    }
    args.v = numbers(parts.value(1));
    args.w = numbers(parts.value(2));
    QString const answer = found->second(args);
    return answer.isEmpty() ? QStringLiteral("(none)") : answer;
}
