#include "symbolsamples.h"

#include <QTextStream>
#include <alphabetkit/codechandler.h>
#include <alphabetkit/simplemorsehandler.h>
#include <recordingwriter/morsekeyer.h>
#include <recordingwriter/recordingwriter.h>
#include <recordingwriter/symbolpayload.h>

namespace zelkosamples {

namespace {

using zelkorecording::ByteOrder;
using zelkorecording::KeyElement;
using zelkorecording::RecordingWriter;
using zelkorecording::SymbolRun;
namespace FrameType = zelkodatastreamconverter::FrameType;

constexpr quint64 SymbolStart = 1710500400ull * 1000000ull; // 2024-03-15 11:00:00 UTC

// Teleprinter text as the 5-bit codes a demodulator delivers: 50 baud, one code every
// 7.5 bit times, 24 codes a frame.
void writeTeleprinter(RecordingWriter& out, QString const& alphabets)
{
    CodecHandler handler;
    handler.SetAlphabetsDir(alphabets);
    handler.SetDecoder(QStringLiteral("RTTY"));
    handler.SetAlphabet(QStringLiteral("International"));
    QString const codes = handler.Backtranslate(
        QStringLiteral("RYRYRYRY CQ CQ DE DDH47\r\nWEATHER GERMAN BIGHT 151100 UTC\r\n"
                       "WIND SW 5 TO 6, LATER 7. SEA 2.5 M.\r\nNNNN\r\n"));
    SymbolRun run{SymbolStart, 147300000, 1};
    constexpr int perFrame = 24;
    for (int first = 0; first < codes.size(); first += perFrame) {
        QVector<quint32> symbols;
        for (int i = first; i < std::min(codes.size(), first + perFrame); ++i) {
            symbols.append(codes[i].unicode());
        }
        run.microseconds = SymbolStart + quint64(first) * 150000u;
        out.writeFrame(FrameType::Symbols,
                       zelkorecording::rawSymbolPayload(run, 5, 50000, symbols));
    }
}

// A channel of bare bits at 100 baud (a modem this converter has no decoder for), 37 bits a
// frame so that frames end inside a payload word, in the swapped byte order.
void writeBits(RecordingWriter& out)
{
    SymbolRun run{SymbolStart, 147300000, 2};
    quint32 state = 0x2C5u;
    for (int frame = 0; frame < 6; ++frame) {
        QVector<quint32> bits;
        for (int i = 0; i < 37; ++i) {
            state = state * 1103515245u + 12345u;
            bits.append((state >> 16) & 1u);
        }
        run.microseconds = SymbolStart + quint64(frame) * 370000u;
        out.writeFrame(FrameType::Symbols, zelkorecording::rawSymbolPayload(run, 1, 100000, bits),
                       ByteOrder::Swapped);
    }
}

void writeRawSymbols(RecordingWriter& out, QString const& alphabets)
{
    writeTeleprinter(out, alphabets);
    writeBits(out);
}

// Text keyed with ideal timing at `wpm` words a minute (PARIS), then `pauseSeconds` of
// silence after the last character's gap.
QVector<KeyElement> keyed(SimpleMorseHandler& morse, QString const& text, double wpm,
                          double pauseSeconds)
{
    zelkorecording::MorseKeying keying;
    keying.wpm = wpm;
    QVector<KeyElement> elements = zelkorecording::keyMorse(morse.Backtranslate(text), keying);
    elements.append({false, quint32(pauseSeconds * 1e6)});
    return elements;
}

// A CW exchange on 7.025 MHz heard at 700 Hz: a call at 20 words a minute, then the answer at
// 30, 20 elements a frame, in the swapped byte order.
void writeMorse(RecordingWriter& out, QString const& alphabets)
{
    SimpleMorseHandler morse;
    morse.SetAlphabetsDir(alphabets);
    if (!morse.SetAlphabet(SimpleMorseHandler::morseName())) {
        QTextStream(stderr) << "zelko-samplegen: no morse.csv in " << alphabets << '\n';
        return;
    }
    QVector<KeyElement> elements =
        keyed(morse, QStringLiteral("CQ CQ CQ DE DL0ZEL DL0ZEL PSE K"), 20, 6);
    elements += keyed(morse, QStringLiteral("DL0ZEL DE PA3XYZ GM UR RST 599 = TNX <SK>"), 30, 2);
    SymbolRun run{SymbolStart, 7025000, 0};
    constexpr int perFrame = 20;
    for (int first = 0; first < elements.size(); first += perFrame) {
        QVector<KeyElement> const frame = elements.mid(first, perFrame);
        out.writeFrame(FrameType::Symbols,
                       zelkorecording::morseElementPayload(run, 700, -235, frame),
                       ByteOrder::Swapped);
        for (KeyElement const& element : frame) {
            run.microseconds += element.microseconds;
        }
    }
}

} // namespace

std::vector<TransmissionSystemSample> symbolSamples(QString const& alphabets)
{
    return {
        {QStringLiteral("symbols-teleprinter.zdr"),
         [alphabets](RecordingWriter& out) { writeRawSymbols(out, alphabets); }},
        {QStringLiteral("morse-exchange.zdr"),
         [alphabets](RecordingWriter& out) { writeMorse(out, alphabets); }},
    };
}

} // namespace zelkosamples
