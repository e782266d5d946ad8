// The burst emission list driven by scripts: each tests/data/burstemissionlist/<name>.scenario
// feeds frames and asks questions, one operation a line; the driver echoes each line with the
// answer, ends with everything the converter holds and compares the whole with <name>.dump.
//   frame radio= start= dur= [stride= ext= levels=N first=-100 b=t/len/offset/bw/level
//         word=k:value cut=bytes slack=bytes]   levels=N: N records of falling level
//   every-cut <frame>                        which cuts of the frame are taken
//   hopper spacing= channels= frames= [radio= start= occupancy= jitter= bw= bursts= seed= gauss
//         back-after= warm=]   a generated radio (jitter, bw: fractions of the spacing); the
//         frames after the first `warm` must not allocate.  quality <hopper>: its estimate
//   max-segments N | binning abs|rel V | segmentation abs|rel V | estimation R F | seed N
//   sampling span count lower upper | available radio= t= | erase radio= | set radio=
//   sample radio= | state | restart | dump frames|bursts|text|ftw|grid FILE | show FILE
//   parse frames|bursts FILE | cut-parse frames|bursts FILE | damage FILE offset hex
//   and the calculations below. A value list key=a,b,... runs its line once for each value.

#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTextStream>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/burstemissionlistconverter.h>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/hopperfrequencyalgorithm.h>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/hopperradiosegmentdata.h>
#include <numeric>
#include <recordingwriter/hoppergenerator.h>
#include <support/allocationcounter.h>
#include <support/golden.h>
#include <support/qstringprinter.h>

using namespace zelkodatastreamconverter::BurstEmissionList;
using zelkorecording::BurstListFrame;

namespace {

using Converter = BurstEmissionListConverter;
using Alg = HopperFrequencyAlgorithm;
using Doubles = std::vector<double>;
using Fields = QStringList;

template <typename T>
QByteArray bytesOf(T const& value) // big-endian, as a fresh stream writes
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out << value;
    return bytes;
}

template <typename T>
T readValue(QByteArray const& bytes, bool& good)
{
    QDataStream in(bytes);
    T value;
    in >> value;
    good = in.status() == QDataStream::Ok;
    return value;
}

// Whether the value reads back equal, and how many cuts of its bytes are refused, leaving an
// empty value rather than a half-read one.
template <typename T>
QString roundTrip(T const& value)
{
    QByteArray const bytes = bytesOf(value);
    bool good = false;
    int refused = 0;
    for (int cut = 0; cut < bytes.size(); ++cut) {
        refused += readValue<T>(bytes.left(cut), good) == T() && !good;
    }
    bool const equal = readValue<T>(bytes, good) == value && good;
    return QStringLiteral("%1 bytes read back %2, %3 cuts refused")
        .arg(bytes.size())
        .arg(equal ? "equal" : "DIFFERENT")
        .arg(refused);
}

// Calculations: "name scalars... [| list]..." answers with one result. Records are written
// start/spacing/count/occupied/deviation (grid segments), f/bw/t/len/level, f0/f1/t0/t1.

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

// Numbers as the dumps print them: 15 significant digits.
QString n(double value)
{
    return QString::number(value, 'g', 15);
}

QString describe(FrequencyTimeWindow const& w)
{
    return n(w.startFrequency) + ".." + n(w.stopFrequency) + " Hz, " +
           QString::number(w.startTime) + ".." + QString::number(w.stopTime);
}

QString describe(BurstData const& b)
{
    return n(b.frequency) + " Hz bw " + n(b.bandwidth) +
           QStringLiteral(" t %1 len %2 ").arg(b.time).arg(b.length) + n(double(b.level_dBm)) +
           " dBm";
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
QString text(T const& value) // its text, its stream bytes and their round trip
{
    return value.toString() + "\n     " + bytesOf(value).toHex() + "\n     " + roundTrip(value);
}

template <typename T>
QString readFrom(QString const& hex) // a value read from damaged bytes
{
    bool good = false;
    bool const empty = readValue<T>(QByteArray::fromHex(hex.toLatin1()), good) == T();
    return QStringLiteral("%1, %2").arg(good ? "read" : "refused", empty ? "empty" : "NOT EMPTY");
}

QString radio(A a)
{
    RadioBurstData radio;
    for (std::size_t i = 0; i < a.lists.size(); ++i) {
        std::vector<BurstData> bursts;
        for (double f : a.lists[i]) {
            bursts.emplace_back(f, f * 10, 100 * i + 1, unsigned(i), float(-f));
        }
        radio.appendBurstsOfNewSegment(100 * i, 100 * i + 100, bursts);
    }
    QString result;
    for (bool more = true; more; radio.removeFirstSegment()) {
        result += QStringLiteral("\n     %1 from bursts %2 of %3, mean bandwidth %4, sorted %5; %6")
                      .arg(radio.toString(), join(radio.segmentStartIndices),
                           join(radio.segmentStartTimes), n(radio.meanBandwidth()),
                           join(radio.sortedFrequencyVector()), roundTrip(radio));
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

QString describe(HopperFrequencyGridSegment const& s)
{
    return QStringLiteral("%1 + k * %2, %3 channels, %4 occupied, deviation %5 (stop %6)")
        .arg(n(s.startFrequency), n(s.channelSpacing))
        .arg(s.channelCount)
        .arg(s.occupiedChannelCount)
        .arg(n(s.squaredDeviationSum), n(s.getStopFrequency()));
}

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

std::vector<FrequencyMeanAndSampleSize> bins(A a) // means | sample sizes
{
    std::vector<FrequencyMeanAndSampleSize> bins;
    for (std::size_t i = 0; i < a.v.size(); ++i) {
        bins.push_back({a.v[i], unsigned(a.w.at(i))});
    }
    return bins;
}

QString mergedBins(A a)
{
    auto bins = ::bins(a);
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
    v.resize(std::min<std::size_t>(kept, 12)); // enough to tell the draws and their order
    return QStringLiteral("%1 kept, first: %2").arg(kept).arg(join(v));
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
    data.frequencies = bins(a);
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
         return "window " + describe(burst(a.records[0]).toFTW()) + "; " +
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

// The answer of a calculation line, or an empty string when the name is no calculation.
QString calculate(QString const& line)
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

// "key=value" of a script line, or the fallback.
double real(QStringList const& args, QString const& key, double fallback = 0)
{
    for (QString const& arg : args) {
        if (arg.startsWith(key + '=')) {
            return arg.mid(key.size() + 1).toDouble();
        }
    }
    return fallback;
}

QByteArray frameBytes(QStringList const& args)
{
    int const levelCount = int(real(args, "levels"));
    BurstListFrame f;
    f.radioID = quint32(real(args, "radio"));
    f.startTime = quint64(real(args, "start"));
    f.duration = quint32(real(args, "dur", 1));
    f.centreFrequency = 100000000;
    f.bandwidth = 25;
    f.strideWords = quint32(real(args, "stride", 6));
    f.headerExtensionWords = quint32(real(args, "ext", 9));
    for (int i = 0; i < levelCount; ++i) {
        // Levels fall with the index, so level order differs from record order.
        float const level = float(real(args, "first", -100)) - float(i);
        f.records.push_back({quint32(i), 1, qint32(i * 1000), 500, level});
    }
    for (QString const& arg : args.filter(QRegularExpression("^b="))) {
        QStringList const v = arg.mid(2).split('/');
        f.records.push_back(
            {v[0].toUInt(), v[1].toUInt(), v[2].toInt(), v[3].toUInt(), v[4].toFloat()});
    }
    QByteArray bytes = f.frameBytes();
    for (QString const& arg : args.filter(QRegularExpression("^word="))) {
        QStringList const v = arg.mid(5).split(':');
        quint32 const word = v[1].toUInt(nullptr, 0);
        std::memcpy(bytes.data() + 4 * v[0].toInt(), &word, 4);
    }
    bytes += QByteArray(int(real(args, "slack")), '\0');
    return bytes.left(int(real(args, "cut", bytes.size())));
}

void write(QString const& file, QByteArray const& bytes)
{
    QFile out(file);
    ASSERT_TRUE(out.open(QIODevice::WriteOnly | QIODevice::Truncate));
    out.write(bytes);
}

// One generated hopper radio on one evenly spaced segment; jitter and bandwidth are fractions
// of the spacing.
zelkorecording::HopperScenario hopperScenario(QStringList const& args)
{
    zelkorecording::HopperRadio radio;
    radio.radioID = quint32(real(args, "radio", 1));
    double const spacing = real(args, "spacing");
    unsigned const channels = unsigned(real(args, "channels"));
    double const occupancy = real(args, "occupancy", -1); // none: every channel used
    auto const use = zelkorecording::HopperGenerator::randomChannelUse(
        channels, occupancy, quint32(real(args, "seed", 1)));
    radio.segments = {
        {real(args, "start", 30e6), spacing, channels, occupancy >= 0 ? use : std::vector<bool>()}};
    radio.jitterHz = real(args, "jitter") * spacing;
    radio.jitterShape = args.contains("gauss") ? zelkorecording::JitterShape::Gaussian
                                               : zelkorecording::JitterShape::Uniform;
    radio.bandwidthHz = real(args, "bw", 0.5) * spacing;
    zelkorecording::HopperScenario scenario;
    scenario.radios = {radio};
    scenario.burstsPerFrame = quint32(real(args, "bursts", 2048));
    scenario.seed = quint32(real(args, "seed", 1));
    scenario.timeRunsBackwardsAfterFrame = int(real(args, "back-after", -1));
    return scenario;
}

// The grid estimated from 16 frames of a generated hopper (the converter's natural input:
// 16 segments of 2048 bursts), beside the truth.
QString quality(QStringList const& args)
{
    auto const scenario = hopperScenario(args);
    zelkorecording::HopperGenerator generator(scenario);
    Converter converter;
    for (int i = 0; i < 16; ++i) {
        converter.processFrame(generator.nextFrame().frameBytes());
    }
    auto const used = scenario.radios[0].usedChannelFrequencies();
    QString result = QStringLiteral("%1 of %2 channels used, the lowest at %3")
                         .arg(used.size())
                         .arg(scenario.radios[0].segments[0].channelCount)
                         .arg(n(used.front()));
    for (auto const& s : converter.getFrequencySetForRadioID(1).first.gridEstimation.segments) {
        result += "\n     grid " + describe(s);
    }
    return result;
}

class ScenarioDriver
{
public:
    QString run(QString const& script)
    {
        for (QString const& line : script.split('\n')) {
            if (!line.trimmed().isEmpty() && !line.startsWith('#')) {
                runOnce(line);
            }
        }
        m_out << "state\n";
        state();
        return m_text;
    }

private:
    QTemporaryDir m_dir;
    std::unique_ptr<Converter> m_converter = std::make_unique<Converter>();
    std::vector<QByteArray> m_fed;
    QString m_text;
    QTextStream m_out{&m_text};

    // A value list key=a,b,... runs the line once for each value, in order.
    void runOnce(QString const& line)
    {
        auto const list = QRegularExpression("(\\w+=)([^ ]*,[^ ]*)").match(line);
        if (!list.hasMatch()) {
            m_out << line << '\n';
            return apply(line, line.split(' ', Qt::SkipEmptyParts));
        }
        for (QString const& value : list.captured(2).split(',')) {
            runOnce(QString(line).replace(list.capturedStart(), list.capturedLength(),
                                          list.captured(1) + value));
        }
    }

    QString path(QString const& name) const { return m_dir.filePath(name); }

    void feed(QByteArray const& bytes, bool echo = false)
    {
        m_fed.push_back(bytes);
        auto const [taken, radio, window] = m_converter->processFrame(bytes);
        if (echo && !taken && radio == 0 && window == FrequencyTimeWindow()) {
            m_out << "  -> ignored\n";
        } else if (echo) {
            m_out << "  -> " << (taken ? "radio " : "NOT TAKEN radio ") << radio << ", "
                  << describe(window) << '\n';
        }
    }

    void apply(QString const& line, QStringList const& args)
    {
        QString const op = args[0];
        unsigned const radio = unsigned(real(args, "radio"));
        if (op == "frame") {
            feed(frameBytes(args), true);
        } else if (op == "every-cut") {
            everyCut(frameBytes(args));
        } else if (op == "hopper") {
            hopper(args);
        } else if (op == "max-segments") {
            m_converter->setMaxSegmentsPerRadioID((unsigned short)args[1].toUInt());
        } else if (op == "binning" || op == "segmentation") {
            (m_converter.get()->*(op == "binning" ? &Converter::setBinningTolerance
                                                  : &Converter::setSegmentationParameters))(
                args[1] == "abs" ? eAbsolute : eRelative, args[2].toDouble());
        } else if (op == "estimation") {
            m_converter->setEstimationParameters(args[1].toDouble(), args[2].toDouble());
        } else if (op == "sampling") {
            m_converter->setSamplingParameters(args[1].toULongLong(), args[2].toUInt(),
                                               args[3].toFloat(), args[4].toFloat());
        } else if (op == "seed") {
            m_converter->seedRandomEngine(args[1].toUInt());
        } else if (op == "available") {
            bool const yes = m_converter->dataAvailableForTime(radio, quint64(real(args, "t")));
            m_out << "  -> " << (yes ? "yes" : "no") << '\n';
        } else if (op == "erase") {
            m_converter->eraseDataForRadioID(radio);
        } else if (op == "set") {
            frequencySet(radio);
        } else if (op == "sample") {
            auto const windows = m_converter->drawRandomSampleFTWsForRadioID(radio);
            m_out << "  -> " << windows.size() << " windows\n";
            for (auto const& window : windows) {
                m_out << "     " << describe(window) << '\n';
            }
        } else if (op == "state") {
            state();
        } else if (op == "dump") {
            dump(args[1], path(args[2]));
        } else if (op == "show") {
            m_out << zelkotest::readFile(path(args[1])) << "  -> (end of " << args[1] << ")\n";
        } else if (op == "parse") {
            parse(args[1], path(args[2]), true);
        } else if (op == "cut-parse") {
            cutParse(args[1], path(args[2]));
        } else if (op == "damage") {
            QByteArray const patch = QByteArray::fromHex(args[3].toLatin1());
            write(path(args[1]),
                  zelkotest::readFile(path(args[1])).replace(args[2].toInt(), patch.size(), patch));
        } else if (op == "quality") {
            m_out << "  -> " << quality(args) << '\n';
        } else if (op == "restart") {
            m_converter = std::make_unique<Converter>();
        } else {
            QString const answer = calculate(line);
            m_out << "  -> " << (answer.isEmpty() ? "UNKNOWN OPERATION" : answer) << '\n';
        }
    }

    void everyCut(QByteArray const& whole)
    {
        int taken = 0;
        for (int cut = 0; cut < whole.size(); ++cut) {
            taken += std::get<0>(Converter().processFrame(whole.left(cut)));
        }
        m_out << "  -> " << whole.size() << " bytes, cuts taken: " << taken << '\n';
    }

    // A generated hopper's frames; those after warm=N must not allocate once the converter
    // has its working size.
    void hopper(QStringList const& args)
    {
        zelkorecording::HopperGenerator generator(hopperScenario(args));
        std::vector<QByteArray> frames;
        for (int i = 0; i < int(real(args, "frames")); ++i) {
            frames.push_back(generator.nextFrame().frameBytes());
        }
        int const warm = int(real(args, "warm", double(frames.size())));
        auto const process = [this](QByteArray const& frame) { m_converter->processFrame(frame); };
        std::for_each(frames.begin(), frames.begin() + warm, process);
        zelkotest::AllocationScope const allocations;
        std::for_each(frames.begin() + warm, frames.end(), process);
        m_out << "  -> allocations after warming up: " << allocations.count() << '\n';
    }

    void frequencySet(unsigned radio)
    {
        auto const [set, meanBandwidth] = m_converter->getFrequencySetForRadioID(radio);
        m_out << "  -> mean bandwidth " << n(meanBandwidth) << ", " << set.frequencies.size()
              << " frequencies:";
        if (set.frequencies.size() <= 40) { // far more means nothing was merged
            for (double frequency : set.frequencies) {
                m_out << ' ' << n(frequency);
            }
            m_out << "\n     " << set.toString() << "\n     " << roundTrip(set);
        }
        for (auto const& s : set.gridEstimation.segments) {
            m_out << "\n     grid " << describe(s);
        }
        m_out << '\n';
    }

    void state()
    {
        std::map<unsigned, RadioBurstData const*> radios;
        for (auto const& [id, radio] : m_converter->getDataMap()) {
            radios[id] = &radio;
        }
        for (auto const& [id, radio] : radios) {
            m_out << "  radio " << id << ": " << radio->toString() << ", mean bandwidth "
                  << n(radio->meanBandwidth()) << '\n';
            for (std::size_t s = 0; s < radio->segmentCount(); ++s) {
                m_out << "    segment " << radio->segmentStartTimes[s] << ".."
                      << radio->segmentStopTimes[s] << " from burst "
                      << radio->segmentStartIndices[s] << '\n';
            }
            // Generated hoppers hold thousands: their first and last stand for them.
            std::size_t const count = radio->bursts.size();
            for (std::size_t b = 0; b < count; b += (count <= 64 || b != 0) ? 1 : count - 1) {
                m_out << "    " << describe(radio->bursts[b]) << '\n';
            }
        }
    }

    void dump(QString const& kind, QString const& file)
    {
        std::map<QString, bool (Converter::*)(QString const&)> const dumps{
            {"frames", &Converter::dumpBinaryFrameData},
            {"bursts", &Converter::dumpBinaryBurstData},
            {"text", &Converter::dumpTextBurstData},
            {"ftw", &Converter::dumpTextFtwSampleData},
            {"grid", &Converter::dumpTextGridEstimation}};
        m_out << "  -> " << (((*m_converter).*dumps.at(kind))(file) ? "open" : "off") << '\n';
    }

    std::size_t parse(QString const& kind, QString const& file, bool print = false)
    {
        if (kind == "frames") {
            auto const frames = Converter::parseBinaryFrameDataFile(file);
            if (print) {
                m_out << "  -> " << frames.size()
                      << " frames, the frames fed: " << (frames == m_fed ? "yes" : "no") << '\n';
            }
            return frames.size();
        }
        auto const entries = Converter::parseBinaryBurstData(file);
        if (print) {
            m_out << "  -> " << entries.size() << " entries\n";
            for (auto const& [radio, bursts] : entries) {
                m_out << "     radio " << radio << '\n';
                for (BurstData const& burst : bursts) {
                    m_out << "       " << describe(burst) << '\n';
                }
            }
        }
        return entries.size();
    }

    // Where the count of whole entries read grows, cutting the file byte by byte.
    void cutParse(QString const& kind, QString const& file)
    {
        QByteArray const bytes = zelkotest::readFile(file);
        m_out << "  -> " << bytes.size() << " bytes;";
        std::size_t last = 0;
        for (int cut = 0; cut <= bytes.size(); ++cut) {
            write(path("cut.bin"), bytes.left(cut));
            std::size_t const count = parse(kind, path("cut.bin"));
            if (count != last) {
                m_out << ' ' << count << " from byte " << cut << ';';
                last = count;
            }
        }
        m_out << '\n';
    }
};

} // namespace

using BurstScenario = testing::TestWithParam<QString>;

TEST_P(BurstScenario, MatchesItsGoldenDump)
{
    QString const base = QStringLiteral(ZELKO_GOLDEN_DIR "/burstemissionlist/") + GetParam();
    QString const script = QString::fromUtf8(zelkotest::readFile(base + ".scenario"));
    ASSERT_FALSE(script.isEmpty());
    QString const dump = "burstemissionlist/" + GetParam() + ".dump";
    EXPECT_EQ(zelkotest::compareWithGolden(ScenarioDriver().run(script).toUtf8(), dump), QString());
}

INSTANTIATE_TEST_SUITE_P(Scripts, BurstScenario,
                         testing::ValuesIn(QDir(ZELKO_GOLDEN_DIR "/burstemissionlist")
                                               .entryList({"*.scenario"}, QDir::Files, QDir::Name)
                                               .replaceInStrings(".scenario", "")),
                         [](testing::TestParamInfo<QString> const& info) {
                             return QString(info.param).replace('-', '_').toStdString();
                         });
