// The burst emission list converter driven by scripts: each tests/data/burstemissionlist/
// <name>.scenario feeds frames and asks questions, one operation a line; the driver echoes each
// line with what the converter answered, ends with everything it holds, and compares the whole
// with <name>.dump beside the script. The operations:
//
//   frame radio=9 start=1000 dur=5 [stride= ext= levels=N first=-100 b=t/len/offset/bw/level
//         word=k:value cut=bytes slack=bytes]   one frame; levels=N gives N records of
//                                               falling level, b= one record each
//   frames n=20 step=1000 cycle=1,2,3 <frame>   frame i starts at i·step with cycle[i] records
//   every-cut <frame>                            every cut of the frame, which ones are taken
//   hopper radio= spacing= channels= bursts= jitter= frames=   generated frames of one radio
//   max-segments N | binning abs|rel V | segmentation abs|rel V | estimation R F
//   sampling span count lower upper | seed N
//   available radio= t= | erase radio= | set radio= | sample radio= | state
//   dump frames|bursts|text|ftw|grid FILE | show FILE | parse frames|bursts FILE
//   cut-parse frames|bursts FILE | damage FILE offset hex | restart

#include "burstcalculations.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/burstemissionlistconverter.h>
#include <recordingwriter/hoppergenerator.h>
#include <support/allocationcounter.h>
#include <support/golden.h>
#include <support/qstringprinter.h>

using namespace zelkodatastreamconverter::BurstEmissionList;
using zelkorecording::BurstListFrame;
using zelkorecording::BurstRecord;

namespace {

QString number(double value)
{
    return QString::number(value, 'g', 15);
}

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

class ScenarioDriver
{
public:
    QString run(QString const& script)
    {
        for (QString const& line : script.split(QLatin1Char('\n'))) {
            if (line.trimmed().isEmpty() || line.startsWith(QLatin1Char('#'))) {
                continue;
            }
            m_out << line << '\n';
            apply(line);
        }
        m_out << "state\n";
        state();
        return m_text;
    }

private:
    QTemporaryDir m_dir;
    std::unique_ptr<BurstEmissionListConverter> m_converter =
        std::make_unique<BurstEmissionListConverter>();
    std::vector<QByteArray> m_fed;
    QString m_text;
    QTextStream m_out{&m_text};

    static QString value(QStringList const& args, QString const& key, QString const& fallback = {})
    {
        for (QString const& arg : args) {
            if (arg.startsWith(key + QLatin1Char('='))) {
                return arg.mid(key.size() + 1);
            }
        }
        return fallback;
    }
    static double real(QStringList const& args, QString const& key, double fallback = 0)
    {
        QString const text = value(args, key);
        return text.isEmpty() ? fallback : text.toDouble();
    }
    QString path(QString const& name) const { return m_dir.filePath(name); }

    static QByteArray frameBytes(QStringList const& args, int levelCount = -1)
    {
        BurstListFrame f;
        f.radioID = quint32(real(args, "radio"));
        f.startTime = quint64(real(args, "start"));
        f.duration = quint32(real(args, "dur", 1));
        f.centreFrequency = 100000000;
        f.bandwidth = 25;
        f.strideWords = quint32(real(args, "stride", 6));
        f.headerExtensionWords = quint32(real(args, "ext", 9));
        levelCount = levelCount < 0 ? int(real(args, "levels")) : levelCount;
        for (int i = 0; i < levelCount; ++i) {
            // Levels fall with the index, so level order differs from record order.
            float const level = float(real(args, "first", -100)) - float(i);
            f.records.push_back({quint32(i), 1, qint32(i * 1000), 500, level});
        }
        for (QString const& arg : args) {
            QStringList const v =
                arg.mid(arg.indexOf(QLatin1Char('=')) + 1).split(QLatin1Char('/'));
            if (arg.startsWith(QLatin1String("b="))) {
                f.records.push_back(
                    {v[0].toUInt(), v[1].toUInt(), v[2].toInt(), v[3].toUInt(), v[4].toFloat()});
            }
        }
        QByteArray bytes = f.frameBytes();
        for (QString const& arg : args) {
            if (arg.startsWith(QLatin1String("word="))) {
                QStringList const v = arg.mid(5).split(QLatin1Char(':'));
                quint32 const word = v[1].toUInt(nullptr, 0);
                std::memcpy(bytes.data() + 4 * v[0].toInt(), &word, 4);
            }
        }
        bytes += QByteArray(int(real(args, "slack")), '\0');
        return value(args, "cut").isEmpty() ? bytes : bytes.left(value(args, "cut").toInt());
    }

    void feed(QByteArray const& bytes, bool echo)
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

    static eThresholdMode mode(QString const& word)
    {
        return word == QLatin1String("abs") ? eAbsolute : eRelative;
    }

    void apply(QString const& line)
    {
        QStringList const args = line.split(QLatin1Char(' '), Qt::SkipEmptyParts);
        QString const op = args[0];
        unsigned const radio = unsigned(real(args, "radio"));
        if (op == QLatin1String("frame")) {
            feed(frameBytes(args), true);
        } else if (op == QLatin1String("frames")) {
            QStringList const cycle = value(args, "cycle", "1").split(QLatin1Char(','));
            for (int i = 0; i < int(real(args, "n")); ++i) {
                QStringList shifted = args;
                shifted << QStringLiteral("start=%1").arg(quint64(i) * quint64(real(args, "step")));
                feed(frameBytes(shifted, cycle[i % cycle.size()].toInt()), false);
            }
        } else if (op == QLatin1String("every-cut")) {
            QByteArray const whole = frameBytes(args);
            QStringList taken;
            for (int cut = 0; cut < whole.size(); ++cut) {
                BurstEmissionListConverter fresh;
                if (std::get<0>(fresh.processFrame(whole.left(cut)))) {
                    taken << QString::number(cut);
                }
            }
            m_out << "  -> " << whole.size() << " bytes, cuts taken: "
                  << (taken.isEmpty() ? QStringLiteral("none") : taken.join(' ')) << '\n';
        } else if (op == QLatin1String("hopper")) {
            zelkorecording::HopperRadio hopper;
            hopper.radioID = radio;
            hopper.segments = {{30e6, real(args, "spacing"), unsigned(real(args, "channels")), {}}};
            hopper.jitterHz = real(args, "jitter");
            hopper.bandwidthHz = 10000;
            zelkorecording::HopperScenario scenario;
            scenario.radios = {hopper};
            scenario.burstsPerFrame = quint32(real(args, "bursts"));
            zelkorecording::HopperGenerator generator(scenario);
            for (int i = 0; i < int(real(args, "frames")); ++i) {
                feed(generator.nextFrame().frameBytes(), false);
            }
        } else if (op == QLatin1String("max-segments")) {
            m_converter->setMaxSegmentsPerRadioID((unsigned short)args[1].toUInt());
        } else if (op == QLatin1String("binning")) {
            m_converter->setBinningTolerance(mode(args[1]), args[2].toDouble());
        } else if (op == QLatin1String("segmentation")) {
            m_converter->setSegmentationParameters(mode(args[1]), args[2].toDouble());
        } else if (op == QLatin1String("estimation")) {
            m_converter->setEstimationParameters(args[1].toDouble(), args[2].toDouble());
        } else if (op == QLatin1String("sampling")) {
            m_converter->setSamplingParameters(args[1].toULongLong(), args[2].toUInt(),
                                               args[3].toFloat(), args[4].toFloat());
        } else if (op == QLatin1String("seed")) {
            m_converter->seedRandomEngine(args[1].toUInt());
        } else if (op == QLatin1String("available")) {
            bool const available =
                m_converter->dataAvailableForTime(radio, quint64(real(args, "t")));
            m_out << "  -> " << (available ? "yes" : "no") << '\n';
        } else if (op == QLatin1String("erase")) {
            m_converter->eraseDataForRadioID(radio);
        } else if (op == QLatin1String("set")) {
            frequencySet(radio);
        } else if (op == QLatin1String("sample")) {
            auto const windows = m_converter->drawRandomSampleFTWsForRadioID(radio);
            m_out << "  -> " << windows.size() << " windows\n";
            for (auto const& window : windows) {
                m_out << "     " << describe(window) << '\n';
            }
        } else if (op == QLatin1String("state")) {
            state();
        } else if (op == QLatin1String("dump")) {
            dump(args[1], path(args[2]));
        } else if (op == QLatin1String("show")) {
            m_out << zelkotest::readFile(path(args[1])) << "  -> (end of " << args[1] << ")\n";
        } else if (op == QLatin1String("parse")) {
            parse(args[1], path(args[2]));
        } else if (op == QLatin1String("cut-parse")) {
            cutParse(args[1], path(args[2]));
        } else if (op == QLatin1String("damage")) {
            QByteArray bytes = zelkotest::readFile(path(args[1]));
            QByteArray const patch = QByteArray::fromHex(args[3].toLatin1());
            bytes.replace(args[2].toInt(), patch.size(), patch);
            write(path(args[1]), bytes);
        } else if (op == QLatin1String("restart")) {
            m_converter = std::make_unique<BurstEmissionListConverter>();
        } else {
            QString const answer = calculate(line);
            m_out << "  -> " << (answer.isEmpty() ? QStringLiteral("UNKNOWN OPERATION") : answer)
                  << '\n';
        }
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
            m_out << "\n     " << set.toString();
        }
        m_out << '\n';
        for (auto const& s : set.gridEstimation.segments) {
            m_out << "     grid " << number(s.startFrequency) << " + k * "
                  << number(s.channelSpacing) << ", " << s.channelCount << " channels, "
                  << s.occupiedChannelCount << " occupied, deviation "
                  << number(s.squaredDeviationSum) << '\n';
        }
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
        std::map<QString, bool (BurstEmissionListConverter::*)(QString const&)> const dumps{
            {"frames", &BurstEmissionListConverter::dumpBinaryFrameData},
            {"bursts", &BurstEmissionListConverter::dumpBinaryBurstData},
            {"text", &BurstEmissionListConverter::dumpTextBurstData},
            {"ftw", &BurstEmissionListConverter::dumpTextFtwSampleData},
            {"grid", &BurstEmissionListConverter::dumpTextGridEstimation}};
        bool const open = ((*m_converter).*dumps.at(kind))(file);
        m_out << "  -> " << (open ? "open" : "off") << '\n';
    }

    std::size_t entries(QString const& kind, QString const& file)
    {
        return kind == QLatin1String("frames")
                   ? BurstEmissionListConverter::parseBinaryFrameDataFile(file).size()
                   : BurstEmissionListConverter::parseBinaryBurstData(file).size();
    }

    void parse(QString const& kind, QString const& file)
    {
        if (kind == QLatin1String("frames")) {
            auto const frames = BurstEmissionListConverter::parseBinaryFrameDataFile(file);
            m_out << "  -> " << frames.size()
                  << " frames, the frames fed: " << (frames == m_fed ? "yes" : "no") << '\n';
            return;
        }
        auto const entries = BurstEmissionListConverter::parseBinaryBurstData(file);
        m_out << "  -> " << entries.size() << " entries\n";
        for (auto const& [radio, bursts] : entries) {
            m_out << "     radio " << radio << '\n';
            for (BurstData const& burst : bursts) {
                m_out << "       " << describe(burst) << '\n';
            }
        }
    }

    // Where the count of whole entries read grows, cutting the file byte by byte.
    void cutParse(QString const& kind, QString const& file)
    {
        QByteArray const bytes = zelkotest::readFile(file);
        m_out << "  -> " << bytes.size() << " bytes;";
        std::size_t last = 0;
        for (int cut = 0; cut <= bytes.size(); ++cut) {
            write(path("cut.bin"), bytes.left(cut));
            std::size_t const count = entries(kind, path("cut.bin"));
            if (count != last) {
                m_out << ' ' << count << " from byte " << cut << ';';
                last = count;
            }
        }
        m_out << '\n';
    }

    static void write(QString const& file, QByteArray const& bytes)
    {
        QFile out(file);
        ASSERT_TRUE(out.open(QIODevice::WriteOnly | QIODevice::Truncate));
        out.write(bytes);
    }
};

QStringList scenarioNames()
{
    QStringList names = QDir(QStringLiteral(ZELKO_GOLDEN_DIR "/burstemissionlist"))
                            .entryList({QStringLiteral("*.scenario")}, QDir::Files, QDir::Name);
    names.replaceInStrings(QStringLiteral(".scenario"), QString());
    return names;
}

} // namespace

using BurstScenario = testing::TestWithParam<QString>;

TEST_P(BurstScenario, MatchesItsGoldenDump)
{
    QString const base = QStringLiteral("burstemissionlist/") + GetParam();
    QString const script = QString::fromUtf8(
        zelkotest::readFile(QStringLiteral(ZELKO_GOLDEN_DIR "/") + base + ".scenario"));
    ASSERT_FALSE(script.isEmpty());
    ScenarioDriver driver;
    EXPECT_EQ(zelkotest::compareWithGolden(driver.run(script).toUtf8(), base + ".dump"), QString());
}

INSTANTIATE_TEST_SUITE_P(Scripts, BurstScenario, testing::ValuesIn(scenarioNames()),
                         [](testing::TestParamInfo<QString> const& info) {
                             return QString(info.param).replace('-', '_').toStdString();
                         });

TEST(BurstConverter, SteadyStateFramesDoNotAllocate)
{
    zelkorecording::HopperRadio radio;
    radio.segments = {{30e6, 25000, 200, {}}};
    zelkorecording::HopperScenario scenario;
    scenario.radios = {radio};
    scenario.burstsPerFrame = 2048;
    zelkorecording::HopperGenerator generator(scenario);
    std::vector<QByteArray> frames;
    for (int i = 0; i < 40; ++i) {
        frames.push_back(generator.nextFrame().frameBytes());
    }
    BurstEmissionListConverter converter;
    for (int i = 0; i < 20; ++i) {
        converter.processFrame(frames[std::size_t(i)]); // warm up: 16 segments and a spare
    }
    // The converter promises no heap allocation per frame once the queue has its working size.
    zelkotest::AllocationScope const allocations;
    for (int i = 20; i < 40; ++i) {
        converter.processFrame(frames[std::size_t(i)]);
    }
    EXPECT_EQ(allocations.count(), 0);
    EXPECT_EQ(converter.getDataMap().at(1).bursts.size(), 16u * 2048u);
}
