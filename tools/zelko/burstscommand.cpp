#include "burstplot.h"
#include "command.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QTextStream>
#include <algorithm>
#include <cmath>
#include <diagnostics/errorhandler.h>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/burstemissionlistconverter.h>
#include <massdatamanagement/zelkodatastreamconverter/filereader.h>
#include <vector>

namespace zelkotool {

using namespace zelkodatastreamconverter::BurstEmissionList;

namespace {

struct FeedCounts
{
    long long frames = 0;
    long long burstFrames = 0; ///< frames the converter accepted
    long long ignored = 0;     ///< frames it ignored (other types, damaged burst lists)
};

QString megahertz(double frequency)
{
    return QString::number(frequency / 1e6, 'f', 6);
}

QString kilohertz(double frequency)
{
    return QString::number(frequency / 1e3, 'f', 3) + QStringLiteral(" kHz");
}

// Reads every frame of the recording into the converter.
FeedCounts feed(zelkodatastreamconverter::FileReader& reader, BurstEmissionListConverter& converter)
{
    FeedCounts counts;
    QByteArray frameType;
    QByteArray frame;
    while (reader.isWorking()) {
        if (!reader.readFrame()) {
            continue;
        }
        reader.takeFrameData(frameType, frame);
        ++counts.frames;
        if (std::get<0>(converter.processFrame(frame))) {
            ++counts.burstFrames;
        } else {
            ++counts.ignored;
        }
    }
    return counts;
}

void printRadio(QTextStream& out, unsigned int radioID, RadioBurstData const& data,
                HopperFrequencySet const& set, double meanBandwidth)
{
    out << "radio " << radioID << '\n';
    out << "  bursts:          " << data.bursts.size() << " in " << data.segmentCount()
        << (data.segmentCount() == 1 ? " segment" : " segments");
    if (!data.segmentStartTimes.empty()) {
        out << ", time " << data.segmentStartTimes.front() << " .. "
            << data.segmentStopTimes.back();
    }
    out << '\n';
    out << "  mean bandwidth:  " << kilohertz(meanBandwidth) << '\n';
    out << "  frequency set:   " << set.frequencies.size() << " frequencies [MHz]\n";
    for (std::size_t i = 0; i < set.frequencies.size(); i += 6) {
        out << "   ";
        for (std::size_t k = i; k < std::min(i + 6, set.frequencies.size()); ++k) {
            out << ' ' << megahertz(set.frequencies[k]);
        }
        out << '\n';
    }
    HopperFrequencyGridEstimation const& grid = set.gridEstimation;
    out << "  grid estimation: " << grid.getSegmentCount()
        << (grid.getSegmentCount() == 1 ? " segment, " : " segments, ")
        << grid.getTotalChannelCount() << " channels, mean spacing "
        << kilohertz(grid.getMeanChannelSpacing());
    if (!grid.isNull()) {
        out << ", occupation " << QString::number(grid.getOccupationRatio(), 'f', 3)
            << ", deviation " << QString::number(grid.getQuadraticMeanDeviation(), 'f', 1) << " Hz";
    }
    out << '\n';
    for (std::size_t s = 0; s < grid.segments.size(); ++s) {
        auto const& segment = grid.segments[s];
        out << "    segment " << (s + 1) << ": start " << megahertz(segment.startFrequency)
            << " MHz, spacing " << kilohertz(segment.channelSpacing) << ", " << segment.channelCount
            << " channels, " << segment.occupiedChannelCount << " occupied, deviation "
            << QString::number(
                   segment.occupiedChannelCount > 0
                       ? std::sqrt(segment.squaredDeviationSum / segment.occupiedChannelCount)
                       : 0.0,
                   'f', 1)
            << " Hz\n";
    }
}

bool openDumps(BurstEmissionListConverter& converter, QString const& directory, QTextStream& err)
{
    if (!QDir().mkpath(directory)) {
        err << "zelko bursts: cannot create the dump directory '" << directory << "'\n";
        return false;
    }
    QDir const dir(directory);
    bool ok = converter.dumpBinaryFrameData(dir.filePath(QStringLiteral("frames.bin")));
    ok = converter.dumpBinaryBurstData(dir.filePath(QStringLiteral("bursts.bin"))) && ok;
    ok = converter.dumpTextBurstData(dir.filePath(QStringLiteral("bursts.txt"))) && ok;
    ok = converter.dumpTextFtwSampleData(dir.filePath(QStringLiteral("ftwsamples.txt"))) && ok;
    ok = converter.dumpTextGridEstimation(dir.filePath(QStringLiteral("gridestimation.txt"))) && ok;
    if (!ok) {
        err << "zelko bursts: cannot write dump files in '" << directory << "'\n";
    }
    return ok;
}

} // namespace

int runBursts(QStringList const& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Feeds every frame of a recording through the burst emission list converter and\n"
        "prints, per radio, the bursts held (the last --max-segments frames of the radio),\n"
        "the mean burst bandwidth, the estimated hop-frequency set and the channel-grid\n"
        "estimation: segments, spacing, channel count, occupation ratio and RMS deviation.\n"
        "Frames of other types are counted and ignored.\n"
        "Exit status: 0 done, 1 recording or radio not found or output not written,\n"
        "2 wrong usage."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("RECORDING"), QStringLiteral("recording file"));
    QCommandLineOption radioOption(QStringLiteral("radio"),
                                   QStringLiteral("only this radio (decimal ID)"),
                                   QStringLiteral("ID"));
    QCommandLineOption plotOption(
        QStringLiteral("plot"),
        QStringLiteral("draw the time-frequency picture of the radio (--radio, or the lowest "
                       "ID) as PNG"),
        QStringLiteral("FILE.png"));
    QCommandLineOption dumpOption(
        QStringLiteral("dump-dir"),
        QStringLiteral("write the converter's dump files (frames.bin, bursts.bin, bursts.txt, "
                       "ftwsamples.txt, gridestimation.txt) into DIR; also draws one random "
                       "sample per radio"),
        QStringLiteral("DIR"));
    QCommandLineOption segmentsOption(QStringLiteral("max-segments"),
                                      QStringLiteral("frames kept per radio (default 16)"),
                                      QStringLiteral("N"));
    parser.addOption(radioOption);
    parser.addOption(plotOption);
    parser.addOption(dumpOption);
    parser.addOption(segmentsOption);
    if (processCommandLine(parser, QStringLiteral("bursts"), arguments)) {
        return 0;
    }

    QTextStream out(stdout);
    QTextStream err(stderr);
    QStringList const files = parser.positionalArguments();
    if (files.size() != 1) {
        err << "zelko bursts: give exactly one recording (see --help)\n";
        return 2;
    }
    bool haveRadio = false;
    unsigned int selectedRadio = 0;
    if (parser.isSet(radioOption)) {
        selectedRadio = parser.value(radioOption).toUInt(&haveRadio);
        if (!haveRadio) {
            err << "zelko bursts: --radio needs a decimal radio ID, not '"
                << parser.value(radioOption) << "'\n";
            return 2;
        }
    }
    BurstEmissionListConverter converter;
    if (parser.isSet(segmentsOption)) {
        bool ok = false;
        uint const segments = parser.value(segmentsOption).toUInt(&ok);
        if (!ok || segments == 0 || segments > 65535) {
            err << "zelko bursts: --max-segments needs a number from 1 to 65535, not '"
                << parser.value(segmentsOption) << "'\n";
            return 2;
        }
        converter.setMaxSegmentsPerRadioID(static_cast<unsigned short>(segments));
    }
    QString const path = files.first();
    if (QFileInfo(path).isDir()) {
        err << "zelko bursts: cannot open '" << path << "': is a directory\n";
        return 1;
    }
    zelkodatastreamconverter::FileReader reader(path);
    if (!reader.isWorking()) {
        err << "zelko bursts: cannot open '" << path << "': " << reader.getFile().errorString()
            << '\n';
        return 1;
    }
    if (parser.isSet(dumpOption) && !openDumps(converter, parser.value(dumpOption), err)) {
        return 1;
    }
    // The reader's traces (damaged recordings) go to stderr; the normal end of the file is
    // no news.
    ErrorHandler::Instance().setTraceSink(
        [&err](QString const& message, QString const&, unsigned short) {
            if (!message.endsWith(QLatin1String(": end-of-file"))) {
                err << "zelko bursts: " << message << '\n';
            }
        });
    FeedCounts const counts = feed(reader, converter);
    err.flush();
    ErrorHandler::Instance().setTraceSink({});

    out << path << '\n';
    out << "  " << counts.frames << " frames: " << counts.burstFrames << " burst lists, "
        << counts.ignored << " ignored\n";
    if (reader.fatalError()) {
        out << "  reading stopped early: the recording is damaged\n";
    }
    std::vector<unsigned int> radios;
    for (auto const& entry : converter.getDataMap()) {
        radios.push_back(entry.first);
    }
    std::sort(radios.begin(), radios.end());
    if (haveRadio) {
        if (!std::binary_search(radios.begin(), radios.end(), selectedRadio)) {
            out.flush();
            err << "zelko bursts: radio " << selectedRadio << " has no bursts in '" << path
                << "'\n";
            return 1;
        }
        radios = {selectedRadio};
    }
    out << "  " << radios.size() << (radios.size() == 1 ? " radio\n" : " radios\n");
    for (unsigned int radioID : radios) {
        auto const result = converter.getFrequencySetForRadioID(radioID);
        out << '\n';
        printRadio(out, radioID, converter.getDataMap().at(radioID), result.first, result.second);
        if (parser.isSet(dumpOption)) {
            out << "  random sample:   " << converter.drawRandomSampleFTWsForRadioID(radioID).size()
                << " windows\n";
        }
    }
    if (parser.isSet(plotOption)) {
        QString const plotPath = parser.value(plotOption);
        if (radios.empty()) {
            out.flush();
            err << "zelko bursts: no burst lists in '" << path << "': nothing to plot\n";
            return 1;
        }
        unsigned int const radioID = radios.front();
        auto const result = converter.getFrequencySetForRadioID(radioID);
        QImage const image =
            drawBurstPlot(radioID, converter.getDataMap().at(radioID), result.first, result.second);
        if (!image.save(plotPath, "PNG")) {
            out.flush();
            err << "zelko bursts: cannot write '" << plotPath << "'\n";
            return 1;
        }
        out << "\nplot of radio " << radioID << ": " << plotPath << '\n';
    }
    return 0;
}

} // namespace zelkotool
