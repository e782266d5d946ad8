// The burst emission list converter driven by scripts: each tests/data/burstemissionlist/
// <name>.scenario feeds frames and asks questions, one operation a line; the driver echoes each
// line with what the converter answered, ends with everything it holds, and compares the whole
// with <name>.dump beside the script. The operations:
//
//   frame radio=9 start=1000 dur=5 [stride= ext= levels=N first=-100 b=t/len/offset/bw/level
//         word=k:value cut=bytes slack=bytes]   one frame; levels=N gives N records of
//                                               falling level, b= one record each
//   frames n=20 step=1000 cycle=1:2:3 <frame>   frame i starts at i·step with cycle[i] records
//   every-cut <frame>                            every cut of the frame, which ones are taken
//   hopper spacing= channels= frames= [radio= start= occupancy= jitter= bw= bursts= seed= gauss
//         back-after= warm=]  generated frames of one radio, jitter and bandwidth as fractions
//         of the spacing; the heap allocations of the frames after the first `warm` are counted
//   quality <hopper>                           how well 16 frames of the hopper are estimated
//   max-segments N | binning abs|rel V | segmentation abs|rel V | estimation R F
//   sampling span count lower upper | seed N
//   available radio= t= | erase radio= | set radio= | sample radio= | state
//   dump frames|bursts|text|ftw|grid FILE | show FILE | parse frames|bursts FILE
//   cut-parse frames|bursts FILE | damage FILE offset hex | restart
// A value list key=a,b,... runs its line once for each value.

#include "burstcalculations.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTextStream>
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/burstemissionlistconverter.h>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/hopperfrequencyalgorithm.h>
#include <recordingwriter/hoppergenerator.h>
#include <support/allocationcounter.h>
#include <support/golden.h>
#include <support/qstringprinter.h>

using namespace zelkodatastreamconverter::BurstEmissionList;
using zelkorecording::BurstListFrame;
using zelkorecording::BurstRecord;

namespace {

using burstscenario::number;
using Converter = BurstEmissionListConverter;

QString describe(FrequencyTimeWindow const& w)
{
    return QStringLiteral("%1..%2 Hz, %3..%4")
        .arg(number(w.startFrequency), number(w.stopFrequency))
        .arg(w.startTime)
        .arg(w.stopTime);
}

QString describe(BurstData const& b)
{
    return QStringLiteral("%1 Hz bw %2 t %3 len %4 %5 dBm")
        .arg(number(b.frequency), number(b.bandwidth))
        .arg(b.time)
        .arg(b.length)
        .arg(number(double(b.level_dBm)));
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

QByteArray frameBytes(QStringList const& args, int levelCount)
{
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

QByteArray frameBytes(QStringList const& args)
{
    return frameBytes(args, int(real(args, "levels")));
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

// How far a hopper's estimated spacing and first start lie from the truth, and whether within
// the resolution with every segment starting on the true grid.
QString quality(QStringList const& args)
{
    auto const scenario = hopperScenario(args);
    zelkorecording::HopperGenerator generator(scenario);
    Converter converter;
    for (int i = 0; i < 16; ++i) { // its natural input: 16 segments of 2048 bursts
        converter.processFrame(generator.nextFrame().frameBytes());
    }
    auto const grid = converter.getFrequencySetForRadioID(1).first.gridEstimation.segments;
    auto const& truth = scenario.radios[0].segments[0];
    double const resolution =
        HopperFrequencyAlgorithm::effectiveResolution(-1.0, truth.channelSpacing);
    bool within = !grid.empty();
    double spacingError = 0.0;
    for (auto const& s : grid) {
        spacingError = std::max(spacingError, std::abs(s.channelSpacing - truth.channelSpacing));
        double const channels = (s.startFrequency - truth.startFrequency) / truth.channelSpacing;
        within = within &&
                 std::abs(channels - std::round(channels)) * truth.channelSpacing <= resolution;
    }
    double const startError =
        grid.empty()
            ? 0.0
            : grid.front().startFrequency - scenario.radios[0].usedChannelFrequencies().front();
    within = within && spacingError <= resolution && std::abs(startError) <= resolution;
    return QString::asprintf("%zu of %u channels used; %zu segments, spacing %+.1f, start %+.1f "
                             "(resolution %g)%s",
                             scenario.radios[0].usedChannelFrequencies().size(), truth.channelCount,
                             grid.size(), spacingError, startError, resolution,
                             within ? "" : "  MISSED");
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
        auto const mode = [&args] { return args[1] == "abs" ? eAbsolute : eRelative; };
        if (op == "frame") {
            feed(frameBytes(args), true);
        } else if (op == "frames") {
            QStringList const cycle =
                args.filter(QRegularExpression("^cycle=")).value(0).mid(6).split(':');
            for (int i = 0; i < int(real(args, "n")); ++i) {
                QString const start = QStringLiteral("start=%1").arg(i * real(args, "step"));
                feed(frameBytes(QStringList(args) << start, cycle[i % cycle.size()].toInt()));
            }
        } else if (op == "every-cut") {
            everyCut(frameBytes(args));
        } else if (op == "hopper") {
            hopper(args);
        } else if (op == "max-segments") {
            m_converter->setMaxSegmentsPerRadioID((unsigned short)args[1].toUInt());
        } else if (op == "binning") {
            m_converter->setBinningTolerance(mode(), args[2].toDouble());
        } else if (op == "segmentation") {
            m_converter->setSegmentationParameters(mode(), args[2].toDouble());
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
            QString const answer = burstscenario::calculate(line);
            m_out << "  -> " << (answer.isEmpty() ? "UNKNOWN OPERATION" : answer) << '\n';
        }
    }

    void everyCut(QByteArray const& whole)
    {
        QStringList taken;
        for (int cut = 0; cut < whole.size(); ++cut) {
            if (std::get<0>(Converter().processFrame(whole.left(cut)))) {
                taken << QString::number(cut);
            }
        }
        m_out << "  -> " << whole.size() << " bytes, cuts taken: " << taken.join(' ') << '\n';
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
        m_out << "  -> mean bandwidth " << number(meanBandwidth) << ", " << set.frequencies.size()
              << " frequencies:";
        if (set.frequencies.size() <= 40) { // far more means nothing was merged
            for (double frequency : set.frequencies) {
                m_out << ' ' << number(frequency);
            }
            m_out << "\n     " << set.toString() << "\n     " << burstscenario::roundTrip(set);
        }
        for (auto const& s : set.gridEstimation.segments) {
            m_out << "\n     grid " << burstscenario::describe(s);
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
                  << number(radio->meanBandwidth()) << '\n';
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
