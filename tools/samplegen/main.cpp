// Writes the sample recordings that ship in data/samples/. The output is deterministic, so
// running it again must reproduce the checked-in files byte for byte.

#include "aissamples.h"
#include "imagesamples.h"
#include "symbolsamples.h"
#include "transmissionsystemsamples.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTextStream>
#include <algorithm>
#include <alphabetkit/codechandler.h>
#include <functional>
#include <recordingwriter/decodedtextpayload.h>
#include <recordingwriter/hoppergenerator.h>
#include <recordingwriter/payloadbuilder.h>
#include <recordingwriter/recordingwriter.h>
#include <vector>

using zelkodatastreamconverter::FRAME_MAGIC;
using zelkorecording::ByteOrder;
using zelkorecording::DecodedTextEntry;
using zelkorecording::decodedTextPayload;
using zelkorecording::PayloadBuilder;
using zelkorecording::RecordingWriter;
namespace FrameType = zelkodatastreamconverter::FrameType;

namespace {

QByteArray opaquePayload(int words, quint32 seed)
{
    PayloadBuilder payload;
    for (int i = 0; i < words; ++i) {
        payload.word(seed * 2654435761u + quint32(i));
    }
    return payload.data();
}

// Frames of every kind, all in the machine's own byte order.
void writeMixedHost(RecordingWriter& out)
{
    out.writeFrame(FrameType::DecodedText, opaquePayload(8, 1));
    out.writeFrame(FrameType::Symbols, opaquePayload(16, 2));
    out.writeFrame(FrameType::BurstList, opaquePayload(32, 3));
    out.writeFrame(FrameType::TransmissionSystem, opaquePayload(12, 4));
    out.writeHeader(FRAME_MAGIC, 6, FrameType::DecodedText);
    out.writeFrame(FrameType::DecodedText, opaquePayload(100, 5));
}

// What a recording that went through a bad link looks like: the byte order changes, garbage
// and zero padding lie between frames, one header claims an impossible length, and the
// file ends inside a frame.
void writeMixedDamaged(RecordingWriter& out)
{
    out.writeFrame(FrameType::DecodedText, opaquePayload(8, 11), ByteOrder::Swapped);
    out.writeGarbage(3, 1, false);
    out.writeFrame(FrameType::DecodedText, opaquePayload(8, 12), ByteOrder::Swapped);
    out.writeZeroPadding(48);
    out.writeFrame(FrameType::TransmissionSystem, opaquePayload(20, 13));
    out.writeGarbage(200, 2, false);
    out.writeFrame(FrameType::TransmissionSystem, opaquePayload(20, 14));
    out.writeHeader(FRAME_MAGIC, 0x4000001, FrameType::DecodedText);
    out.writeFrame(FrameType::BurstList, opaquePayload(40, 15), ByteOrder::Swapped);
    out.writeTruncatedFrame(FrameType::DecodedText, opaquePayload(64, 16), 100);
}

// Encodes text with an alphabet of the shipped set, as a teleprinter decoder would deliver it.
QString encode(QString const& alphabetsDirectory, QString const& decoder, QString const& alphabet,
               QString const& text)
{
    CodecHandler handler;
    handler.SetAlphabetsDir(alphabetsDirectory);
    handler.SetDecoder(decoder);
    if (!handler.SetAlphabet(alphabet)) {
        QTextStream(stderr) << "zelko-samplegen: no alphabet " << alphabet << " for " << decoder
                            << " in " << alphabetsDirectory << '\n';
        return QString();
    }
    return handler.Backtranslate(text);
}

// 2024-03-15 10:00:00 UTC, the start of the text samples.
constexpr quint64 TextStart = 1710496800ull * 1000000ull;

// Two teleprinter channels received at once: a weather station on channel 1 and a
// press agency on channel 2, interleaved character by character. Frames are cut every 23
// characters, so letters/figures shifts fall on frame boundaries and the decoder's shift
// state must carry over from one frame to the next.
void writeTeleprinterTwoChannels(RecordingWriter& out, QString const& alphabets)
{
    QString const weather =
        encode(alphabets, QStringLiteral("RTTY"), QStringLiteral("International"),
               QStringLiteral("RYRYRYRY CQ CQ DE DDK9\r\nSMDL01 EDZW 151000\r\n"
                              "AAXX 15101 10400 42960 80205 10042 20017 30112 40153 57010\r\n"
                              "10488 42975 70704 10046 20021 30139 40170 52008=\r\nNNNN\r\n"));
    QString const press = encode(
        alphabets, QStringLiteral("RTTY"), QStringLiteral("International"),
        QStringLiteral("ZCZC 0412 URGENT\r\nHAMBURG, 15 MARCH (PRESS) - THE PORT REPORTED 1.234 "
                       "CONTAINERS (+3 PCT) IN WEEK 11.\r\nNNNN\r\n"));
    std::vector<DecodedTextEntry> interleaved;
    for (int i = 0; i < std::max(weather.size(), press.size()); ++i) {
        if (i < weather.size()) {
            interleaved.push_back({1, weather[i].unicode()});
        }
        if (i < press.size()) {
            interleaved.push_back({2, press[i].unicode()});
        }
    }
    constexpr int perFrame = 23;
    quint64 time = TextStart;
    for (size_t first = 0; first < interleaved.size(); first += perFrame) {
        std::vector<DecodedTextEntry> const frame(
            interleaved.begin() + long(first),
            interleaved.begin() + long(std::min(interleaved.size(), first + perFrame)));
        out.writeFrame(FrameType::DecodedText, decodedTextPayload(time, frame));
        time += 1500000; // 50 baud: 23 characters take about 3.5 s; frames come faster here
    }
}

// A NAVTEX navigational warning in CCIR 476 (SITOR-B), one channel, in the other byte order.
void writeNavtex(RecordingWriter& out, QString const& alphabets)
{
    QString const codes = encode(
        alphabets, QStringLiteral("NAVTEX"), QStringLiteral("CCIR 476"),
        QStringLiteral("ZCZC SA14\r\n151030 UTC MAR 24\r\nPINNEBERG NAVTEX\r\n"
                       "NAV WARN NR 112\r\nGERMAN BIGHT. WRECK POSITION 54-02.3N 007-51.6E.\r\n"
                       "SHIPS REQ TO PASS WITH CAUTION.\r\nNNNN\r\n"));
    constexpr int perFrame = 16;
    quint64 time = TextStart + 30ull * 60ull * 1000000ull;
    for (int first = 0; first < codes.size(); first += perFrame) {
        std::vector<DecodedTextEntry> frame;
        for (int i = first; i < std::min(codes.size(), first + perFrame); ++i) {
            frame.push_back({0, codes[i].unicode()});
        }
        out.writeFrame(FrameType::DecodedText, decodedTextPayload(time, frame), ByteOrder::Swapped);
        time += 1000000;
    }
}

// Two frequency hoppers, interleaved frame by frame: radio 7 on a two-segment 25 kHz grid
// (30-70 MHz region, 70 % of the channels used), radio 12 on a single 12.5 kHz grid.
void writeHoppers(RecordingWriter& out)
{
    using namespace zelkorecording;
    HopperRadio hopper;
    hopper.radioID = 7;
    HopperGridSegment lower;
    lower.startFrequency = 41000000.0;
    lower.channelSpacing = 25000.0;
    lower.channelCount = 40;
    lower.usedChannels = HopperGenerator::randomChannelUse(40, 0.7, 11);
    HopperGridSegment upper = lower;
    upper.startFrequency = 46000000.0;
    upper.usedChannels = HopperGenerator::randomChannelUse(40, 0.7, 12);
    hopper.segments = {lower, upper};
    hopper.jitterHz = 500.0;
    hopper.bandwidthHz = 16000.0;
    hopper.bandwidthSpreadHz = 1000.0;

    HopperRadio narrow;
    narrow.radioID = 12;
    HopperGridSegment band;
    band.startFrequency = 51000000.0;
    band.channelSpacing = 12500.0;
    band.channelCount = 60;
    band.usedChannels = HopperGenerator::randomChannelUse(60, 0.6, 13);
    narrow.segments = {band};
    narrow.jitterHz = 200.0;
    narrow.bandwidthHz = 8000.0;

    HopperScenario scenario;
    scenario.radios = {hopper, narrow};
    scenario.burstsPerFrame = 256;
    scenario.startTime = TextStart;
    scenario.seed = 2024;
    HopperGenerator generator(scenario);
    generator.writeFrames(out, 12);
}

// Decoded text from the 5-bit codes that a demodulator printed, one code a line as '0'/'1'
// characters, first received bit (least significant) first: "minimodem --rx rtty
// --binary-output" writes them so. The codes go out on channel 1 in frames of 16, stamped
// with the time their first character took on air (7.5 bit times a character).
bool writeFromCodes(QString const& codesPath, double baud, QString const& outputPath)
{
    QFile in(codesPath);
    if (!in.open(QIODevice::ReadOnly)) {
        QTextStream(stderr) << "zelko-samplegen: cannot read " << codesPath << ": "
                            << in.errorString() << '\n';
        return false;
    }
    std::vector<DecodedTextEntry> entries;
    int lineNumber = 0;
    while (!in.atEnd()) {
        QByteArray const line = in.readLine().trimmed();
        ++lineNumber;
        quint16 code = 0;
        bool valid = !line.isEmpty() && line.size() <= 16;
        for (int bit = 0; valid && bit < line.size(); ++bit) {
            valid = line[bit] == '0' || line[bit] == '1';
            code |= quint16(line[bit] == '1' ? 1u << bit : 0u);
        }
        if (!valid && !line.isEmpty()) {
            QTextStream(stderr) << "zelko-samplegen: " << codesPath << ':' << lineNumber
                                << ": not a code of '0' and '1': " << line << '\n';
            return false;
        }
        if (valid) {
            entries.push_back({1, code});
        }
    }
    QFile out(outputPath);
    if (!out.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        QTextStream(stderr) << "zelko-samplegen: cannot write " << outputPath << ": "
                            << out.errorString() << '\n';
        return false;
    }
    RecordingWriter writer(&out);
    constexpr size_t perFrame = 16;
    double const microsecondsPerCode = 7.5 * 1e6 / baud;
    for (size_t first = 0; first < entries.size(); first += perFrame) {
        std::vector<DecodedTextEntry> const frame(
            entries.begin() + long(first),
            entries.begin() + long(std::min(entries.size(), first + perFrame)));
        quint64 const time = TextStart + quint64(double(first) * microsecondsPerCode);
        writer.writeFrame(FrameType::DecodedText, decodedTextPayload(time, frame));
    }
    QTextStream(stdout) << outputPath << ": " << entries.size() << " codes, "
                        << writer.bytesWritten() << " bytes\n";
    return out.error() == QFileDevice::NoError;
}

bool writeSample(QDir const& directory, QString const& name,
                 std::function<void(RecordingWriter&)> const& content)
{
    QFile file(directory.filePath(name));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        QTextStream(stderr) << "zelko-samplegen: cannot write " << file.fileName() << ": "
                            << file.errorString() << '\n';
        return false;
    }
    RecordingWriter writer(&file);
    content(writer);
    QTextStream(stdout) << file.fileName() << ": " << writer.bytesWritten() << " bytes\n";
    return file.error() == QFileDevice::NoError;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QStringList const arguments = QCoreApplication::arguments();
    if (arguments.size() == 5 && arguments[1] == QLatin1String("--from-codes")) {
        bool ok = false;
        double const baud = arguments[3].toDouble(&ok);
        if (!ok || baud <= 0) {
            QTextStream(stderr) << "zelko-samplegen: BAUD must be a positive number, not "
                                << arguments[3] << '\n';
            return 2;
        }
        return writeFromCodes(arguments[2], baud, arguments[4]) ? 0 : 1;
    }
    if (arguments.size() < 2 || arguments.size() > 3 || arguments[1].startsWith(QLatin1Char('-'))) {
        QTextStream(stdout) << "Usage: zelko-samplegen DIRECTORY [ALPHABETS]\n"
                            << "Writes the bundled sample recordings into DIRECTORY (normally\n"
                            << "data/samples), encoding text with the alphabet files in ALPHABETS\n"
                            << "(default: data/alphabets of the source tree).\n\n"
                            << "Usage: zelko-samplegen --from-codes CODES BAUD OUTPUT\n"
                            << "Writes a decoded-text recording (channel 1) of the 5-bit codes\n"
                            << "in CODES, one a line as '0'/'1', first bit least significant\n"
                            << "(minimodem --binary-output), timed for BAUD.\n";
        return arguments.contains(QStringLiteral("--help")) ? 0 : 2;
    }
    QDir const directory(arguments[1]);
    if (!directory.exists() && !QDir().mkpath(directory.path())) {
        QTextStream(stderr) << "zelko-samplegen: cannot create " << directory.path() << '\n';
        return 1;
    }
    bool ok = writeSample(directory, QStringLiteral("mixed-host.zdr"), writeMixedHost);
    ok = writeSample(directory, QStringLiteral("mixed-damaged.zdr"), writeMixedDamaged) && ok;
    QString const alphabets =
        arguments.size() == 3 ? arguments[2] : QStringLiteral(ZELKO_SOURCE_DIR "/data/alphabets");
    ok = writeSample(directory, QStringLiteral("teleprinter-two-channels.zdr"),
                     [&](RecordingWriter& out) { writeTeleprinterTwoChannels(out, alphabets); }) &&
         ok;
    ok = writeSample(directory, QStringLiteral("hoppers.zdr"), writeHoppers) && ok;
    ok = writeSample(directory, QStringLiteral("navtex-ccir476.zdr"),
                     [&](RecordingWriter& out) { writeNavtex(out, alphabets); }) &&
         ok;
    for (zelkosamples::TransmissionSystemSample const& sample :
         zelkosamples::transmissionSystemSamples()) {
        ok = writeSample(directory, sample.fileName, sample.write) && ok;
    }
    ok = zelkosamples::writeAisSamples(directory) && ok;
    for (zelkosamples::TransmissionSystemSample const& sample : zelkosamples::imageSamples()) {
        ok = writeSample(directory, sample.fileName, sample.write) && ok;
    }
    for (zelkosamples::TransmissionSystemSample const& sample :
         zelkosamples::symbolSamples(alphabets)) {
        ok = writeSample(directory, sample.fileName, sample.write) && ok;
    }
    return ok ? 0 : 1;
}
